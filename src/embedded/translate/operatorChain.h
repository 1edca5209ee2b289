// Operators of one rank between many operands, as in a + b - c, in SQL that isn't nested deep: SQLite takes a hundred
// brackets within each other and a thousand operators, the server many more.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "embedded/translate/translation.h"

namespace qrel::tsql {

// Operands from left to right; the result is that of carrying the operators out in this order.
class OperatorChain {
 public:
  explicit OperatorChain(Expression first) : first_(std::move(first)) {}
  void add(std::string_view symbol, Expression right) { links_.push_back({symbol, std::move(right)}); }
  // Raises the server's error for a chain that is longer than can be carried out.
  Expression result() &&;

 private:
  struct Link {
    std::string_view symbol;
    Expression right;
  };

  Expression joinTexts(Expression left, std::size_t& link);
  Expression carryOut(const Expression& left, std::size_t& link);

  Expression first_;
  std::vector<Link> links_;
};

// The parts with a word between them, " or ", nested in brackets where there are many.
std::string joinedBy(std::string_view word, const std::vector<std::string>& parts);

[[noreturn]] void refuseNesting();

}  // namespace qrel::tsql
