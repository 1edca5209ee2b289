// SQL as it is sent to a server: the program's own pieces with values between them, in the order in which they stand.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qrel {

// Values between the pieces, made by the functions below. They refer to their text.
struct SqlValue {
  enum class Kind { Quotes, Brackets, Name, List } kind;
  std::string_view text;
};

// 'text': an object's name, or a pattern for LIKE.
inline SqlValue inQuotes(std::string_view text) { return {SqlValue::Kind::Quotes, text}; }
// [text], of a bare name.
inline SqlValue inBrackets(std::string_view text) { return {SqlValue::Kind::Brackets, text}; }
// A name as GetExtendedObjectName gives it, "[name]" or "[schema].[name]", or a bare one, which gets its brackets.
inline SqlValue asName(std::string_view text) { return {SqlValue::Kind::Name, text}; }
// What stands behind IN, as WrapStringIntoQuotes gives it: 'a','b'.
inline SqlValue asList(std::string_view text) { return {SqlValue::Kind::List, text}; }

// Whether a bare name can stand in brackets that are added only where they are missing, and still be that name.
bool FitsInBrackets(std::string_view strName);

// The only way in which a value comes into SQL. Values go in as they are, nothing is doubled. One that would end the
// literal or the brackets it stands in spoils the text: it is never sent, and asking for it raises the server's error.
class SqlText {
 public:
  SqlText() = default;
  // Pieces of the program's own are literals in the source; no other text is taken for one.
  template <std::size_t Size>
  SqlText(const char (&piece)[Size]) : text_(piece) {}
  template <std::size_t Size>
  SqlText& operator<<(const char (&piece)[Size]) {
    text_ += piece;
    return *this;
  }
  SqlText& operator<<(long number);
  SqlText& operator<<(const SqlValue& value);
  SqlText& operator<<(const SqlText& other);

  // A statement that WrapSqlInExec made for strDb: its quotes are quadrupled, the database's name stands bare.
  static SqlText ofExec(std::string strWrapped, std::string_view strDb);

  bool empty() const { return text_.empty(); }
  // What is sent. Raises DataError 0x80040E14, "Incorrect syntax near ...", for a spoiled text.
  const std::string& text() const;
  // How it reads, spoiled or not: for messages.
  const std::string& shown() const { return text_; }

 private:
  void spoil(std::string strDescription);

  std::string text_;
  std::string strSpoiled_;  // the error's description; empty: the text can be sent
};

}  // namespace qrel
