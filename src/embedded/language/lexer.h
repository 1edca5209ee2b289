// T-SQL tokens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/language/refusal.h"

namespace qrel::tsql {

enum class TokenKind : std::uint8_t {
  End,
  Word,      // keyword or bare identifier, also #temp
  Name,      // [bracketed] or "quoted" identifier; `text` is the name itself
  String,    // 'text' or N'text'; `text` is the value, `national` tells the N
  Number,    // 12, 1.5, 1e3, .5
  Money,     // $12.5
  Binary,    // 0x...
  Variable,  // @x, @@x
  Symbol,    // one operator or punctuation mark: ( ) , ; . = <> != < > <= >= + - * / % & | ^ ~ += ...
};

// `begin` and `end` are byte offsets into the lexed text; `line` is 1-based within it.
struct Token {
  TokenKind kind = TokenKind::End;
  bool national = false;
  bool label = false;        // a word with a single ":" behind it: GOTO's target
  bool firstOnLine = false;  // only blanks and comments stand before it on its line
  std::string_view raw;      // as written
  std::string text;          // names and strings without their quotes; else empty: use raw
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t line = 1;

  // The name or word without brackets, as written.
  std::string_view name() const { return kind == TokenKind::Name || kind == TokenKind::String ? text : raw; }
  bool isIdentifier() const { return kind == TokenKind::Word || kind == TokenKind::Name; }
  bool is(std::string_view keyword) const;  // a Word equal to it without case
  bool isSymbol(std::string_view symbol) const { return kind == TokenKind::Symbol && raw == symbol; }
};

// Splits a text into tokens; comments (nested blocks, line comments) and blanks are left out. The last token is End.
// An unterminated string, bracket or comment runs to the end of the text. `text` must outlive the tokens.
std::vector<Token> lex(std::string_view text);

// A reading position in a token list. Reading past the end gives the End token again and again.
class TokenReader {
 public:
  TokenReader(std::string_view source, const std::vector<Token>& tokens) : source_(source), tokens_(&tokens) {}

  const Token& peek(std::size_t ahead = 0) const;
  const Token& next();
  bool atEnd() const { return peek().kind == TokenKind::End; }
  std::size_t position() const { return position_; }
  void moveTo(std::size_t position) { position_ = position; }

  bool acceptWord(std::string_view keyword);
  bool acceptSymbol(std::string_view symbol);
  // Raise NotUnderstood when the next token is another.
  void expectWord(std::string_view keyword);
  void expectSymbol(std::string_view symbol);
  std::string expectIdentifier();
  // Skips a balanced "( ... )" whose "(" is the next token.
  void skipParentheses();
  // The source text from one token's begin to another's begin (positions as of position()), trailing blanks cut.
  std::string_view sourceBetween(std::size_t first, std::size_t last) const;
  std::string_view source() const { return source_; }

 private:
  std::string_view source_;
  const std::vector<Token>* tokens_;
  std::size_t position_ = 0;
};

// server.database.schema.object, the absent parts empty.
struct ObjectName {
  std::string server, database, schema, name;
};
// Reads a one- to four-part name; "a..b" has an empty schema.
ObjectName readObjectName(TokenReader& reader);
// The same of what holds rows, which may be a variable: its name has variableMark in front, since a table may be called
// [@v] as well.
constexpr char variableMark = '\x01';
ObjectName readTableName(TokenReader& reader);

}  // namespace qrel::tsql
