#include "compare/script/sqlScan.h"

#include <algorithm>
#include <cctype>
#include <tuple>
#include <utility>

#include "platform/text.h"

namespace qrel {

namespace {

bool beginsName(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return std::isalpha(byte) || c == '_' || byte >= 0x80;
}

bool continuesName(char c) { return beginsName(c) || isDigit(c) || c == '@' || c == '#' || c == '$'; }

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  std::vector<SqlItem> run() {
    for (skipBlanks(); at_ < text_.size(); skipBlanks()) {
      SqlItem item;
      item.line = line_;
      read(item);
      items_.push_back(std::move(item));
    }
    items_.emplace_back().line = line_;
    return std::move(items_);
  }

 private:
  char current(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }

  void moveTo(std::size_t position) {
    const std::size_t end = std::min(position, text_.size());
    line_ += std::count(text_.begin() + static_cast<std::ptrdiff_t>(at_),
                        text_.begin() + static_cast<std::ptrdiff_t>(end), '\n');
    at_ = end;
  }

  void skipBlanks() {
    while (at_ < text_.size()) {
      if (std::isspace(static_cast<unsigned char>(text_[at_])))
        moveTo(at_ + 1);
      else if (current() == '-' && current(1) == '-')
        moveTo(std::min(text_.find('\n', at_), text_.size()));
      else if (current() == '/' && current(1) == '*')
        skipBlockComment();
      else
        return;
    }
  }

  // Comments nest.
  void skipBlockComment() {
    int depth = 0;
    do {
      if (current() == '/' && current(1) == '*') {
        ++depth;
        moveTo(at_ + 2);
      } else if (current() == '*' && current(1) == '/') {
        --depth;
        moveTo(at_ + 2);
      } else {
        moveTo(at_ + 1);
      }
    } while (depth > 0 && at_ < text_.size());
  }

  // What stands between the delimiter at the current place and `close`; a doubled `close` is one of them.
  std::string delimited(char close) {
    std::string inside;
    for (moveTo(at_ + 1); at_ < text_.size(); moveTo(at_ + 1)) {
      if (current() == close) {
        moveTo(at_ + 1);
        if (current() != close) break;
      }
      inside += current();
    }
    return inside;
  }

  std::string_view run(bool (*belongs)(char)) {
    std::size_t end = at_;
    while (end < text_.size() && belongs(text_[end])) ++end;
    const std::string_view found = text_.substr(at_, end - at_);
    moveTo(end);
    return found;
  }

  void read(SqlItem& item) {
    const char c = current();
    const bool national = (c == 'N' || c == 'n') && current(1) == '\'';
    if (c == '\'' || national) {
      if (national) moveTo(at_ + 1);
      delimited('\'');
      item.kind = SqlItem::Kind::Literal;
    } else if (c == '@') {
      run(continuesName);
      item.kind = SqlItem::Kind::Variable;
    } else if (isDigit(c) || (c == '.' && isDigit(current(1))) || c == '$') {
      run([](char each) { return continuesName(each) || each == '.'; });
      item.kind = SqlItem::Kind::Literal;
    } else if (beginsName(c) || c == '[' || c == '"' || c == '#') {
      readName(item);
    } else {
      item.kind = SqlItem::Kind::Sign;
      item.word = std::string(1, c);
      moveTo(at_ + 1);
    }
  }

  void readName(SqlItem& item) {
    item.kind = current() == '#' ? SqlItem::Kind::Temporary : SqlItem::Kind::Name;
    const bool plain = current() != '[' && current() != '"';
    item.quoted = current() == '"';
    readPart(item);
    // Blanks may stand around the points.
    for (;;) {
      const auto before = std::pair(at_, line_);
      skipBlanks();
      if (current() != '.') {
        std::tie(at_, line_) = before;
        break;
      }
      moveTo(at_ + 1);
      skipBlanks();
      readPart(item);
    }
    if (item.parts.size() > 1) item.quoted = false;
    // A temporary table may be named with its database: tempdb..#t.
    if (item.parts.back().starts_with("#")) item.kind = SqlItem::Kind::Temporary;
    item.bare = plain && item.parts.size() == 1 && item.kind == SqlItem::Kind::Name;
    if (item.bare) item.word = lowerCase(item.parts.front());
  }

  void readPart(SqlItem& item) {
    if (current() == '[')
      item.parts.push_back(delimited(']'));
    else if (current() == '"')
      item.parts.push_back(delimited('"'));
    else if (beginsName(current()) || current() == '#')
      item.parts.emplace_back(run(continuesName));
    else
      item.parts.emplace_back();  // "db..table", "alias.*"
  }

  std::string_view text_;
  std::size_t at_ = 0;
  long line_ = 1;
  std::vector<SqlItem> items_;
};

}  // namespace

std::vector<SqlItem> ScanSql(std::string_view text) { return Scanner(text).run(); }

}  // namespace qrel
