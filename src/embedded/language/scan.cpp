#include "embedded/language/scan.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace qrel::tsql {

namespace {

// Behind the closing mark of a part that `close` ends; a doubled `close` stands for one.
std::size_t skipTo(std::string_view text, std::size_t at, char close) {
  for (++at; at < text.size(); ++at) {
    if (text[at] != close) continue;
    if (at + 1 < text.size() && text[at + 1] == close) {
      ++at;
      continue;
    }
    return at + 1;
  }
  return text.size();
}

std::size_t skipBlockComment(std::string_view text, std::size_t at) {
  int depth = 0;
  while (at < text.size()) {
    if (text.substr(at, 2) == "/*") {
      ++depth;
      at += 2;
    } else if (text.substr(at, 2) == "*/") {
      at += 2;
      if (--depth == 0) return at;
    } else {
      ++at;
    }
  }
  return text.size();
}

bool isWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '@' || c == '#' || c == '$' ||
         static_cast<unsigned char>(c) >= 0x80;
}

// What findCut keeps in mind while it goes through the words.
class CutFinder {
 public:
  explicit CutFinder(std::string_view text) : text_(text) {}

  std::size_t find(std::size_t least) {
    bool lineStart = true;
    for (std::size_t at = 0; at < text_.size();) {
      const char c = text_[at];
      if (c == '\n' || c == '\r') lineStart = true;
      if (std::isspace(static_cast<unsigned char>(c)) != 0) {
        ++at;
        continue;
      }
      const std::size_t behind = skipQuotedOrComment(text_, at);
      if (behind != at) {
        if (c != '-' && c != '/') see('x'), lineStart = false;
        at = behind;
        continue;
      }
      if (!isWordCharacter(c)) {
        see(c);
        lineStart = false;
        ++at;
        continue;
      }
      const std::size_t end = wordEnd(at);
      const std::string word = upper(text_.substr(at, end - at));
      if (lineStart && at >= least && word == "INSERT" && canCut()) return at;
      seeWord(word);
      lineStart = false;
      at = end;
    }
    return text_.size();
  }

 private:
  std::size_t wordEnd(std::size_t at) const {
    while (at < text_.size() && isWordCharacter(text_[at])) ++at;
    return at;
  }
  static std::string upper(std::string_view word) {
    std::string result;
    for (const char c : word.substr(0, 16)) result += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return result;
  }
  bool canCut() const { return parentheses_ == 0 && blocks_ == 0 && (last_ == ';' || (last_ == ')' && inValues_)); }
  void see(char c) {
    if (c == '(') ++parentheses_;
    if (c == ')') --parentheses_;
    if (c == ';' && parentheses_ == 0) inValues_ = false;
    last_ = c;
    afterBegin_ = false;
  }
  void seeWord(const std::string& word) {
    const bool transaction = word == "TRAN" || word == "TRANSACTION" || word == "DISTRIBUTED";
    if (afterBegin_ && transaction) --blocks_;
    afterBegin_ = word == "BEGIN";
    if (word == "BEGIN" || word == "CASE") ++blocks_;
    if (word == "END" && blocks_ > 0) --blocks_;
    if (parentheses_ == 0) inValues_ = word == "VALUES";
    last_ = 'x';
  }

  std::string_view text_;
  int parentheses_ = 0;
  int blocks_ = 0;
  char last_ = ';';
  bool inValues_ = false;
  bool afterBegin_ = false;
};

}  // namespace

std::size_t skipQuotedOrComment(std::string_view text, std::size_t at) {
  switch (text[at]) {
    case '\'':
      return skipTo(text, at, '\'');
    case '"':
      return skipTo(text, at, '"');
    case '[':
      return skipTo(text, at, ']');
    case '-':
      if (text.substr(at, 2) != "--") return at;
      return lineEnd(text, at);
    case '/':
      return text.substr(at, 2) == "/*" ? skipBlockComment(text, at) : at;
    default:
      return at;
  }
}

OpenPart openPartAt(std::string_view text, std::size_t begin, std::size_t end, OpenPart open) {
  text =
      text.substr(0, end);  // nothing behind it is looked for: that would cost a script's length for each of its parts
  std::size_t at = begin;
  while (at < end) {
    const auto matters = [&](char c) {
      return open.mark == '*' ? c == '*' || c == '/' : c == '\'' || c == '"' || c == '[' || c == '-' || c == '/';
    };
    if (open.mark == 0 || open.mark == '*')
      while (at < end && !matters(text[at])) ++at;
    const std::string_view two = text.substr(at, std::min<std::size_t>(2, end - at));
    if (two.empty()) break;
    if (open.mark == '*') {
      if (two == "/*") ++open.depth;
      if (two == "*/" && --open.depth == 0) open = {};
      at += two == "/*" || two == "*/" ? 2 : 1;
    } else if (open.mark != 0) {
      const char close = open.mark == '[' ? ']' : open.mark;
      at = text.find(close, at);
      if (at >= end) return open;
      const bool doubled = at + 1 < end && text[at + 1] == close;
      at += doubled ? 2 : 1;
      if (!doubled) open = {};
    } else if (two == "--") {
      at = nextLine(text, at);
    } else if (two == "/*") {
      open = {'*', 1, at};
      at += 2;
    } else {
      if (two[0] == '\'' || two[0] == '"' || two[0] == '[') open = {two[0], 0, at};
      ++at;
    }
  }
  return open;
}

std::size_t skipBlanksAndComments(std::string_view text, std::size_t at) {
  while (at < text.size()) {
    if (std::isspace(static_cast<unsigned char>(text[at])) != 0) {
      ++at;
      continue;
    }
    if (text[at] != '-' && text[at] != '/') break;
    const std::size_t behind = skipQuotedOrComment(text, at);
    if (behind == at) break;
    at = behind;
  }
  return at;
}

// Scripts are gone through line by line several times: looking for one character, a stretch at a time, takes a tenth of
// what looking for either of two takes.
std::size_t lineEnd(std::string_view text, std::size_t at) {
  constexpr std::size_t stretch = 512;
  for (at = std::min(at, text.size()); at < text.size(); at += stretch) {
    const std::string_view part = text.substr(at, stretch);
    const std::size_t feed = part.find('\n');
    const std::size_t either = std::min(part.substr(0, feed).find('\r'), feed);
    if (either != std::string_view::npos) return at + either;
  }
  return text.size();
}

std::size_t nextLine(std::string_view text, std::size_t at) {
  at = lineEnd(text, at);
  if (at == text.size()) return at;
  return text.substr(at, 2) == "\r\n" ? at + 2 : at + 1;
}

std::size_t findCut(std::string_view text, std::size_t least) {
  return text.size() <= least ? text.size() : CutFinder(text).find(least);
}

}  // namespace qrel::tsql
