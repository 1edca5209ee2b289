#include "embedded/language/lexer.h"

#include <algorithm>

#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool isHexDigit(char c) { return isDigit(c) || (lowerAscii(c) >= 'a' && lowerAscii(c) <= 'f'); }
bool isLetter(char c) {
  return (lowerAscii(c) >= 'a' && lowerAscii(c) <= 'z') || c == '_' || c == '#' ||
         static_cast<unsigned char>(c) >= 0x80;
}
bool isNameCharacter(char c) { return isLetter(c) || isDigit(c) || c == '@' || c == '$'; }

class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) { tokens_.reserve(text.size() / 5 + 2); }

  std::vector<Token> run() {
    while (skipBlanksAndComments()) readToken();
    Token end;
    end.begin = end.end = text_.size();
    end.raw = text_.substr(text_.size());
    end.line = line_;
    end.firstOnLine = firstOnLine_;
    tokens_.push_back(std::move(end));
    return std::move(tokens_);
  }

 private:
  char at(std::size_t offset) const { return offset < text_.size() ? text_[offset] : '\0'; }

  // Moves one byte on and counts line ends: LF, CR LF and a lone CR.
  void step() {
    const char c = text_[position_++];
    if (c == '\n' || (c == '\r' && at(position_) != '\n')) {
      ++line_;
      firstOnLine_ = true;
    }
  }

  // Length of the blank at the position: ASCII controls, a no-break space, a byte order mark.
  std::size_t blankLength() const {
    const auto c = static_cast<unsigned char>(text_[position_]);
    if (c <= 0x20) return 1;
    if (c == 0xC2 && at(position_ + 1) == '\xA0') return 2;
    if (c == 0xEF && at(position_ + 1) == '\xBB' && at(position_ + 2) == '\xBF') return 3;
    return 0;
  }

  void skipBlockComment() {
    int depth = 0;
    while (position_ < text_.size()) {
      const bool opens = at(position_) == '/' && at(position_ + 1) == '*';
      const bool closes = at(position_) == '*' && at(position_ + 1) == '/';
      if (opens || closes) {
        position_ += 2;
        depth += opens ? 1 : -1;
        if (depth == 0) return;
      } else {
        step();
      }
    }
  }

  bool skipBlanksAndComments() {
    while (position_ < text_.size()) {
      if (const std::size_t blank = blankLength()) {
        if (blank == 1)
          step();
        else
          position_ += blank;
      } else if (at(position_) == '-' && at(position_ + 1) == '-') {
        while (position_ < text_.size() && at(position_) != '\n' && at(position_) != '\r') ++position_;
      } else if (at(position_) == '/' && at(position_ + 1) == '*') {
        skipBlockComment();
      } else {
        return true;
      }
    }
    return false;
  }

  void readToken() {
    Token token;
    token.begin = position_;
    token.line = line_;
    token.firstOnLine = firstOnLine_;
    firstOnLine_ = false;
    const char c = at(position_);
    if (c == '\'' || ((c == 'N' || c == 'n') && at(position_ + 1) == '\'')) {
      token.kind = TokenKind::String;
      token.national = c != '\'';
      readQuoted(token, token.national ? 1 : 0, '\'');
    } else if (c == '[' || c == '"') {
      token.kind = TokenKind::Name;
      readQuoted(token, 0, c == '[' ? ']' : '"');
    } else if (isDigit(c) || (c == '.' && isDigit(at(position_ + 1)))) {
      readNumber(token);
    } else if (c == '$' && !isLetter(at(position_ + 1)) && at(position_ + 1) != '(') {
      token.kind = TokenKind::Money;
      ++position_;
      if (at(position_) == '-') ++position_;
      while (isDigit(at(position_)) || at(position_) == '.' || at(position_) == ',') {
        if (at(position_) == ',' && !isDigit(at(position_ + 1))) break;
        ++position_;
      }
    } else if (c == '@' || isLetter(c) || c == '$') {
      token.kind = c == '@' ? TokenKind::Variable : TokenKind::Word;
      ++position_;
      while (position_ < text_.size() && isNameCharacter(at(position_)) && blankLength() == 0) ++position_;
      token.label = token.kind == TokenKind::Word && colonFollows();
    } else {
      token.kind = TokenKind::Symbol;
      position_ += symbolLength();
    }
    token.end = position_;
    token.raw = text_.substr(token.begin, token.end - token.begin);
    firstOnLine_ = false;
    tokens_.push_back(std::move(token));
  }

  bool colonFollows() const {
    std::size_t next = position_;
    while (at(next) == ' ' || at(next) == '\t') ++next;
    return at(next) == ':' && at(next + 1) != ':';
  }

  // Reads up to the closing mark; a doubled one stands for itself.
  void readQuoted(Token& token, std::size_t prefix, char closing) {
    position_ += prefix + 1;
    std::size_t from = position_;
    while (position_ < text_.size()) {
      if (at(position_) != closing) {
        step();
        continue;
      }
      if (at(position_ + 1) != closing) break;
      token.text.append(text_.substr(from, position_ + 1 - from));
      position_ += 2;
      from = position_;
    }
    token.text.append(text_.substr(from, position_ - from));
    if (position_ < text_.size()) ++position_;
  }

  void readNumber(Token& token) {
    if (at(position_) == '0' && lowerAscii(at(position_ + 1)) == 'x') {
      token.kind = TokenKind::Binary;
      position_ += 2;
      while (isHexDigit(at(position_))) ++position_;
      return;
    }
    token.kind = TokenKind::Number;
    while (isDigit(at(position_))) ++position_;
    if (at(position_) == '.') {
      ++position_;
      while (isDigit(at(position_))) ++position_;
    }
    if (lowerAscii(at(position_)) == 'e') {
      const bool sign = at(position_ + 1) == '+' || at(position_ + 1) == '-';
      position_ += sign ? 2 : 1;
      while (isDigit(at(position_))) ++position_;
    }
  }

  std::size_t symbolLength() const {
    static constexpr std::string_view pairs[] = {
        "<>", "!=", "<=", ">=", "!<", "!>", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "::"};
    const std::string_view two = text_.substr(position_, 2);
    return std::find(std::begin(pairs), std::end(pairs), two) != std::end(pairs) ? 2 : 1;
  }

  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t line_ = 1;
  bool firstOnLine_ = true;
  std::vector<Token> tokens_;
};

}  // namespace

bool Token::is(std::string_view keyword) const {
  if (kind != TokenKind::Word || raw.size() != keyword.size()) return false;
  return std::equal(raw.begin(), raw.end(), keyword.begin(),
                    [](char a, char b) { return lowerAscii(a) == lowerAscii(b); });
}

std::vector<Token> lex(std::string_view text) { return Lexer(text).run(); }

const Token& TokenReader::peek(std::size_t ahead) const {
  return (*tokens_)[std::min(position_ + ahead, tokens_->size() - 1)];
}

const Token& TokenReader::next() {
  const Token& token = peek();
  if (position_ + 1 < tokens_->size()) ++position_;
  return token;
}

bool TokenReader::acceptWord(std::string_view keyword) {
  if (!peek().is(keyword)) return false;
  next();
  return true;
}

bool TokenReader::acceptSymbol(std::string_view symbol) {
  if (!peek().isSymbol(symbol)) return false;
  next();
  return true;
}

namespace {

[[noreturn]] void refuse(const Token& token, std::string_view wanted) {
  std::string reason = "expected " + std::string(wanted);
  reason += token.kind == TokenKind::End ? " at the end" : " before '" + std::string(token.raw.substr(0, 40)) + "'";
  throw NotUnderstood{std::move(reason), token.line};
}

}  // namespace

void TokenReader::expectWord(std::string_view keyword) {
  if (!acceptWord(keyword)) refuse(peek(), keyword);
}

void TokenReader::expectSymbol(std::string_view symbol) {
  if (!acceptSymbol(symbol)) refuse(peek(), "'" + std::string(symbol) + "'");
}

std::string TokenReader::expectIdentifier() {
  if (!peek().isIdentifier()) refuse(peek(), "a name");
  return std::string(next().name());
}

void TokenReader::skipParentheses() {
  const Token& opening = peek();
  expectSymbol("(");
  for (int depth = 1; depth > 0;) {
    const Token& token = next();
    if (token.kind == TokenKind::End) throw NotUnderstood{"a bracket isn't closed", opening.line};
    if (token.isSymbol("("))
      ++depth;
    else if (token.isSymbol(")"))
      --depth;
  }
}

std::string_view TokenReader::sourceBetween(std::size_t first, std::size_t last) const {
  const std::size_t begin = (*tokens_)[std::min(first, tokens_->size() - 1)].begin;
  std::size_t end = (*tokens_)[std::min(last, tokens_->size() - 1)].begin;
  while (end > begin && static_cast<unsigned char>(source_[end - 1]) <= 0x20) --end;
  return source_.substr(begin, end > begin ? end - begin : 0);
}

ObjectName readObjectName(TokenReader& reader) {
  std::vector<std::string> parts{reader.expectIdentifier()};
  while (reader.peek().isSymbol(".")) {
    const std::size_t line = reader.next().line;
    if (parts.size() == 4) throw NotUnderstood{"a name has more than four parts", line};
    parts.push_back(reader.peek().isSymbol(".") ? std::string() : reader.expectIdentifier());
  }
  ObjectName name;
  std::string* const targets[] = {&name.name, &name.schema, &name.database, &name.server};
  for (std::size_t i = 0; i < parts.size(); ++i) *targets[i] = std::move(parts[parts.size() - 1 - i]);
  return name;
}

ObjectName readTableName(TokenReader& reader) {
  if (reader.peek().kind == TokenKind::Variable) return {"", "", "", variableMark + std::string(reader.next().raw)};
  return readObjectName(reader);
}

}  // namespace qrel::tsql
