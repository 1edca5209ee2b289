#include "embedded/language/words.h"

#include <algorithm>
#include <array>

namespace qrel::tsql {

namespace {

template <std::size_t count>
bool isOneOf(const Token& token, const std::array<std::string_view, count>& words) {
  return token.kind == TokenKind::Word &&
         std::any_of(words.begin(), words.end(), [&](std::string_view word) { return token.is(word); });
}

}  // namespace

bool startsStatement(const Token& token) {
  return token.kind == TokenKind::Word &&
         std::any_of(statementWords.begin(), statementWords.end(),
                     [&](const auto& each) { return each.anywhere && token.is(each.word); });
}

bool isModuleWord(const Token& token) {
  static constexpr std::array<std::string_view, 5> words{"PROC", "PROCEDURE", "VIEW", "FUNCTION", "TRIGGER"};
  return isOneOf(token, words);
}

bool opensBlock(const Token& begin, const Token& behind) {
  static constexpr std::array<std::string_view, 5> others{"TRAN", "TRANSACTION", "DISTRIBUTED", "DIALOG",
                                                          "CONVERSATION"};
  return begin.is("BEGIN") && !isOneOf(behind, others);
}

}  // namespace qrel::tsql
