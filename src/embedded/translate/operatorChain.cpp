#include "embedded/translate/operatorChain.h"

#include <algorithm>

#include "embedded/sqlite/quoting.h"
#include "platform/error.h"

namespace qrel::tsql {

namespace {

// Up to here a chain is written as it stands.
constexpr std::size_t shortChain = 40;
// The same where each operator is a call, which takes SQLite more room.
constexpr std::size_t shortTypedChain = 10;
constexpr std::size_t operandsPerPack = 100;
constexpr std::size_t mostPacks = 120;

bool isTextKind(DataType kind) { return kind == DataType::Text || kind == DataType::Guid; }

// Two texts behind each other.
Expression joinedTexts(const Expression& left, const Expression& right) {
  Expression out;
  out.kind = DataType::Text;
  out.width = joined(left.width, right.width);
  out.sql = cutToWidth("(" + left.sql + " || " + right.sql + ")", out.width);
  out.enclosed = true;
  return out;
}

std::string exactSide(const Expression& side) { return side.exact.empty() ? side.sql : quoteText(side.exact); }

// In a type whose arithmetic is known. False: the kinds decide, or the values.
bool typedArithmetic(const Expression& left, std::string_view symbol, const Expression& right, Expression& out) {
  const char operation = symbol.front();
  const bool bits = operation == '&' || operation == '|' || operation == '^';
  if (out.type.isExact() && !bits) {
    out.sql = std::string("q_decimal('") + operation + "', " + exactSide(left) + ", " + exactSide(right) + ", " +
              std::to_string(out.type.prec) + ", " + std::to_string(out.type.scale) + ")";
    out.kind = DataType::Decimal;
    return true;
  }
  const bool whole = left.type.isWhole() && right.type.isWhole();
  if (!whole || bits || operation == '/' || operation == '%') return false;
  out.sql = "q_whole(" + quoteText(typeRef(out.type).name) + ", " + left.sql + " " + operation + " " + right.sql + ")";
  out.kind = DataType::Integer;
  return true;
}

// "+" joins texts and adds numbers; where the kinds don't tell, it decides at run time.
Expression sum(const Expression& left, const Expression& right) {
  Expression out;
  out.enclosed = true;
  if (left.kind == DataType::Date || right.kind == DataType::Date) {
    const Expression& date = left.kind == DataType::Date ? left : right;
    const Expression& days = left.kind == DataType::Date ? right : left;
    if (isTextKind(days.kind)) return joinedTexts(left, right);
    out.sql = "q_dateplus(" + date.sql + ", " + days.sql + ")";
    out.kind = DataType::Date;
  } else if (isTextKind(left.kind) && isTextKind(right.kind)) {
    return joinedTexts(left, right);
  } else if (isNumericKind(left.kind) && isNumericKind(right.kind)) {
    out.sql = "(" + left.sql + " + " + right.sql + ")";
    const bool whole = commonKind(left.kind, right.kind) == DataType::Integer;
    out.kind = whole ? DataType::Integer : DataType::Double;
  } else {
    out.sql = "q_add(" + left.sql + ", " + right.sql + ")";
    if (left.kind != DataType::Empty && right.kind != DataType::Empty && left.kind != right.kind)
      out.kind = isNumericKind(left.kind) ? left.kind : isNumericKind(right.kind) ? right.kind : DataType::Empty;
  }
  return out;
}

bool isDateStep(const Expression& left, std::string_view symbol, const Expression& right) {
  if (symbol == "+") return left.kind == DataType::Date || right.kind == DataType::Date;
  return symbol == "-" && left.kind == DataType::Date && right.kind != DataType::Date;
}

bool joinsTexts(const Expression& left, std::string_view symbol, const Expression& right) {
  return symbol == "+" && isTextKind(left.kind) && isTextKind(right.kind);
}

Expression arithmetic(const Expression& left, std::string_view symbol, const Expression& right) {
  Expression out;
  out.enclosed = true;
  out.type = resultType(symbol.front(), left.type, right.type);
  if (typedArithmetic(left, symbol, right, out)) return out;
  if (symbol == "+") {
    const ExpressionType type = out.type;
    out = sum(left, right);
    out.type = type;
    return out;
  }
  if (isDateStep(left, symbol, right)) {
    out.sql = "q_dateplus(" + left.sql + ", -(" + right.sql + "))";
    out.kind = DataType::Date;
    return out;
  }
  const char* function = symbol == "/" ? "q_divide" : symbol == "%" ? "q_modulo" : symbol == "^" ? "q_xor" : nullptr;
  if (function)
    out.sql = std::string(function) + "(" + left.sql + ", " + right.sql + ")";
  else
    out.sql = "(" + left.sql + " " + std::string(symbol) + " " + right.sql + ")";
  const bool bits = symbol == "&" || symbol == "|" || symbol == "^";
  const DataType kind = commonKind(left.kind, right.kind);
  if (bits)
    out.kind = DataType::Integer;
  else if (isNumericKind(kind))
    out.kind = kind == DataType::Decimal ? DataType::Double : kind;
  return out;
}

// What q_chain calls an operator: "a" where "+" decides at run time, else the operator itself.
// One in a type that is exact has precision and scale: "[+38,2]".
std::string codeOf(const Expression& left, std::string_view symbol, const Expression& right) {
  const ExpressionType type = resultType(symbol.front(), left.type, right.type);
  if (type.isExact())
    return "[" + std::string(symbol) + std::to_string(type.prec) + "," + std::to_string(type.scale) + "]";
  const bool open = symbol == "+" && !(isNumericKind(left.kind) && isNumericKind(right.kind));
  return {open ? 'a' : symbol.front()};
}

// What decides about the operator behind: everything but the SQL.
Expression withoutSql(const Expression& from) {
  Expression out;
  out.kind = from.kind;
  out.width = from.width;
  out.type = from.type;
  return out;
}

std::string balanced(std::string_view word, const std::string* begin, const std::string* end) {
  if (end - begin == 1) return *begin;
  const std::string* middle = begin + (end - begin) / 2;
  std::string sql = "(" + balanced(word, begin, middle);
  sql += word;
  return sql + balanced(word, middle, end) + ")";
}

}  // namespace

void refuseNesting() {
  throw DataError(
      errorNumber::badSql,
      "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller queries.",
      "42000");
}

std::string joinedBy(std::string_view word, const std::vector<std::string>& parts) {
  if (parts.size() > shortChain) return balanced(word, parts.data(), parts.data() + parts.size());
  std::string sql = parts.front();
  for (std::size_t i = 1; i < parts.size(); ++i) {
    sql += word;
    sql += parts[i];
  }
  return sql;
}

// Texts from this link on, as far as they can be joined before anything must be cut.
Expression OperatorChain::joinTexts(Expression left, std::size_t& link) {
  std::vector<std::string> parts{std::move(left.sql)};
  TextWidth width = left.width;
  for (; link < links_.size() && joinsTexts(left, links_[link].symbol, links_[link].right); ++link) {
    const TextWidth longer = joined(width, links_[link].right.width);
    // What was cut stays cut, also before a longer type comes.
    if (width.exceeds() && longer.kind != width.kind) break;
    width = longer;
    parts.push_back(std::move(links_[link].right.sql));
    left.kind = DataType::Text;
  }
  Expression out;
  out.kind = DataType::Text;
  out.type = typeOf(width);
  out.sql = cutToWidth(balanced(" || ", parts.data(), parts.data() + parts.size()), width);
  out.width = width;
  return out;
}

// Numbers, and what may be either, from this link on.
Expression OperatorChain::carryOut(const Expression& left, std::size_t& link) {
  std::string operators;
  std::string packs = "q_pack(" + exactSide(left);
  std::size_t operands = 1;
  Expression out = withoutSql(left);
  for (; link < links_.size(); ++link) {
    const auto& [symbol, right] = links_[link];
    if (isDateStep(out, symbol, right) || joinsTexts(out, symbol, right)) break;
    packs += operands % operandsPerPack == 0 ? "), q_pack(" : ", ";
    packs += exactSide(right);
    ++operands;
    operators += codeOf(out, symbol, right);
    out = withoutSql(arithmetic(out, symbol, withoutSql(right)));
  }
  if (operands > operandsPerPack * mostPacks) refuseNesting();
  out.sql = "q_chain('" + operators + "', " + packs + "))";
  if (out.type.isWhole()) out.sql = "q_whole(" + quoteText(typeRef(out.type).name) + ", " + out.sql + ")";
  return out;
}

Expression OperatorChain::result() && {
  Expression left = std::move(first_);
  const bool typed = std::any_of(links_.begin(), links_.end(), [](const Link& link) {
    return link.right.type.isExact() || link.right.type.isWhole();
  });
  const std::size_t nested = typed ? shortTypedChain : shortChain;
  for (std::size_t link = 0; link < links_.size();) {
    const auto& [symbol, right] = links_[link];
    if (links_.size() <= nested || isDateStep(left, symbol, right)) {
      left = arithmetic(left, symbol, right);
      ++link;
    } else if (joinsTexts(left, symbol, right)) {
      left = joinTexts(std::move(left), link);
    } else {
      left = carryOut(left, link);
    }
  }
  return left;
}

}  // namespace qrel::tsql
