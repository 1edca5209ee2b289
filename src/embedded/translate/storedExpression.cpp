// Expressions in the form in which the server keeps them.
#include <algorithm>
#include <array>

#include "embedded/translate/storedTree.h"
#include "embedded/translate/translation.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr std::array<std::string_view, 13> lowerWords = {
    "case", "when", "then", "else", "end", "like", "escape", "as", "in", "is", "collate", "exists", "distinct"};
constexpr std::array<std::string_view, 5> upperWords = {"AND", "OR", "NOT", "NULL", "BETWEEN"};

// Writes the tokens of an expression one after the other in the server's form.
class Normalizer {
 public:
  explicit Normalizer(const std::vector<Token>& tokens, std::size_t first, std::size_t last)
      : tokens_(tokens), position_(first), last_(last) {}

  std::string run() {
    while (position_ < last_) writeToken();
    return out_;
  }

 private:
  const Token& at(std::size_t index) const { return tokens_[std::min(index, tokens_.size() - 1)]; }

  // Whether the token before stands for a value, so that a minus behind it subtracts.
  bool valueBefore() const {
    if (position_ == 0 || out_.empty()) return false;
    const Token& before = at(position_ - 1);
    if (before.kind == TokenKind::Symbol) return before.isSymbol(")");
    return before.kind != TokenKind::Word || !isKeyword(before);
  }

  static bool isKeyword(const Token& token) {
    const auto matches = [&](std::string_view word) { return token.is(word); };
    return std::any_of(lowerWords.begin(), lowerWords.end(), matches) ||
           std::any_of(upperWords.begin(), upperWords.end(), matches);
  }

  // Brackets that hold this number alone, and not the arguments of a function.
  bool bracketed(std::size_t first, std::size_t behind) const {
    if (first == 0 || !at(first - 1).isSymbol("(") || !at(behind).isSymbol(")") || behind >= last_) return false;
    return first < 2 || !at(first - 2).isIdentifier() || isKeyword(at(first - 2));
  }

  void writeNumber(std::size_t first, std::size_t behind) {
    std::string number;
    for (std::size_t i = first; i < behind; ++i) number += at(i).raw;
    out_ += bracketed(first, behind) ? number : "(" + number + ")";
    position_ = behind;
  }

  void writeWord(std::string_view word) {
    if (!out_.empty() && out_.back() != ' ' && out_.back() != '(') out_ += ' ';
    out_ += word;
    out_ += ' ';
  }

  void writeToken() {
    const Token& token = at(position_);
    const bool number = token.kind == TokenKind::Number || token.kind == TokenKind::Money;
    if (number) return writeNumber(position_, position_ + 1);
    if ((token.isSymbol("-") || token.isSymbol("+")) && at(position_ + 1).kind == TokenKind::Number && !valueBefore())
      return writeNumber(position_, position_ + 2);
    if (token.kind == TokenKind::Name)
      out_ += bracket(token.text);
    else if (token.kind == TokenKind::Word)
      return writeIdentifier();
    else if (token.isSymbol("!="))
      out_ += "<>";
    else if (token.isSymbol(")")) {
      if (!out_.empty() && out_.back() == ' ') out_.pop_back();
      out_ += ')';
    } else
      out_ += token.raw;
    ++position_;
  }

  static std::string bracket(std::string_view name) { return "[" + replaceAll(name, "]", "]]") + "]"; }

  void writeIdentifier() {
    const Token& token = at(position_);
    const std::string lower = lowerCase(token.raw);
    for (const std::string_view word : upperWords) {
      if (!token.is(word)) continue;
      ++position_;
      const bool value = word == "NULL" && !at(position_ - 2).is("is") && !at(position_ - 2).is("not");
      if (value)
        out_ += word;
      else
        writeWord(word);
      if (position_ == last_ && !out_.empty() && out_.back() == ' ') out_.pop_back();
      return;
    }
    if (isKeyword(token)) {
      const bool upper = lower == "is" || lower == "in" || lower == "collate";
      writeWord(upper ? upperCase(lower) : lower);
      ++position_;
      if (position_ == last_) out_.pop_back();
      return;
    }
    if (at(position_ + 1).isSymbol("(") && isBuiltInFunction(lower)) return writeFunction(lower);
    if (lower == "current_timestamp")
      out_ += "getdate()";
    else if (lower == "current_user" || lower == "user" || lower == "session_user")
      out_ += "user_name()";
    else if (lower == "system_user")
      out_ += "suser_sname()";
    else
      out_ += bracket(token.raw);
    ++position_;
  }

  // Position behind the argument that begins at `from`: its comma or the closing bracket. `word` stops it as well.
  std::size_t argumentEnd(std::size_t from, std::string_view word = {}) const {
    int depth = 0;
    std::size_t i = from;
    for (; i < last_; ++i) {
      const bool ends = at(i).isSymbol(",") || (!word.empty() && at(i).is(word));
      if (depth == 0 && (ends || at(i).isSymbol(")"))) break;
      if (at(i).isSymbol("(")) ++depth;
      if (at(i).isSymbol(")")) --depth;
    }
    return i;
  }

  std::string typeText(std::size_t from, std::size_t behind) const {
    std::string out;
    for (std::size_t i = from; i < behind; ++i) {
      const Token& token = at(i);
      out += token.isIdentifier() && !token.is("max") ? bracket(lowerCase(token.name())) : std::string(token.raw);
    }
    return out;
  }

  void writeFunction(const std::string& lower) {
    const std::size_t first = position_ + 2;
    if (lower == "cast") {
      const std::size_t as = argumentEnd(first, "as");
      const std::size_t end = argumentEnd(as + 1);
      out_ += "CONVERT(" + typeText(as + 1, end) + "," + Normalizer(tokens_, first, as).run() + ")";
      position_ = end + 1;
    } else if (lower == "convert") {
      const std::size_t end = argumentEnd(first);
      out_ += "CONVERT(" + typeText(first, end);
      position_ = end;
    } else if (lower.rfind("date", 0) == 0 && lower != "datefromparts" && lower != "datalength") {
      out_ += lower + "(" + lowerCase(at(first).name());
      position_ = first + 1;
    } else {
      out_ += lower;
      ++position_;
    }
  }

  const std::vector<Token>& tokens_;
  std::size_t position_;
  std::size_t last_;
  std::string out_;
};

// Whether the brackets that open at `first` close at the last token before `last`.
bool enclosed(const std::vector<Token>& tokens, std::size_t first, std::size_t last) {
  if (last - first < 2 || !tokens[first].isSymbol("(")) return false;
  int depth = 0;
  for (std::size_t i = first; i < last; ++i) {
    if (tokens[i].isSymbol("(")) ++depth;
    if (tokens[i].isSymbol(")") && --depth == 0) return i + 1 == last;
  }
  return false;
}

}  // namespace

std::string storedExpression(std::string_view text, int serverMajor, bool filter) {
  const std::vector<Token> tokens = lex(text);
  std::size_t first = 0;
  std::size_t last = tokens.size() - 1;
  if (serverMajor < 9) {
    const std::string_view written =
        last == 0 ? text : text.substr(tokens[0].begin, tokens[last - 1].end - tokens[0].begin);
    return enclosed(tokens, first, last) ? std::string(written) : "(" + std::string(written) + ")";
  }
  try {
    return storedTree(readExpressionTree(text), filter);
  } catch (const NotUnderstood&) {
    // word by word, then
  }
  while (enclosed(tokens, first, last)) {
    ++first;
    --last;
  }
  // The brackets that are taken off here must not count as those of a number inside.
  const std::vector<Token> inner(tokens.begin() + static_cast<std::ptrdiff_t>(first),
                                 tokens.begin() + static_cast<std::ptrdiff_t>(last));
  if (inner.empty()) return "()";
  std::vector<Token> closed = inner;
  closed.push_back(tokens.back());
  return "(" + Normalizer(closed, 0, inner.size()).run() + ")";
}

}  // namespace qrel::tsql
