#include "embedded/catalogue/typeNames.h"

#include <charconv>

#include "embedded/catalogue/catalogue.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// The words of a type name: one, or several as in "national character varying".
std::string readTypeWords(TokenReader& reader) {
  const bool bare = reader.peek().kind == TokenKind::Word;
  std::string words = reader.expectIdentifier();
  if (!bare) return words;
  const std::string first = lowerCase(words);
  const auto append = [&](std::string_view word) {
    if (!reader.acceptWord(word)) return false;
    words += ' ';
    words += word;
    return true;
  };
  if (first == "double") append("precision");
  if (first == "national") append("character") || append("char") || append("text");
  if (first == "national" || first == "character" || first == "char" || first == "binary") append("varying");
  return words;
}

int readSize(TokenReader& reader) {
  if (reader.acceptWord("max")) return -1;
  const Token& token = reader.peek();
  int value = 0;
  const auto [end, error] = std::from_chars(token.raw.data(), token.raw.data() + token.raw.size(), value);
  if (token.kind != TokenKind::Number || error != std::errc() || end != token.raw.data() + token.raw.size())
    throw NotUnderstood{"a size is expected before '" + std::string(token.raw.substr(0, 40)) + "'", token.line};
  reader.next();
  return value;
}

}  // namespace

TypeRef readType(TokenReader& reader, const Catalogue* catalogue) {
  const std::size_t line = reader.peek().line;
  std::string schema;
  std::string name = readTypeWords(reader);
  if (reader.acceptSymbol(".")) {
    schema = name;
    name = reader.expectIdentifier();
  }
  const SystemType* system = schema.empty() || equalNoCase(schema, "sys") ? findSystemType(name) : nullptr;
  if (!system) {
    if (catalogue)
      if (auto alias = catalogue->aliasType(schema, name)) return *alias;
    if (equalNoCase(schema, "dbo")) system = findSystemType(name);
    if (!system) throw NotUnderstood{"unknown type " + (schema.empty() ? "" : schema + ".") + name, line};
  }
  if (system->xtype == xtype::Xml) {  // xml(CONTENT collection): the collection isn't kept
    if (reader.peek().isSymbol("(")) reader.skipParentheses();
    return systemTypeRef(*system);
  }
  int size = 0;
  int scale = -1;
  const Sizing sizing = system->xusertype == sysnameXusertype ? Sizing::None : sizingOf(system->xtype);
  if (sizing != Sizing::None && reader.acceptSymbol("(")) {
    size = readSize(reader);
    if (size == 0 && sizing != Sizing::Fraction) badSize(*system, size);
    if (sizing == Sizing::Fraction)
      scale = size;
    else if (sizing == Sizing::Decimal && reader.acceptSymbol(","))
      scale = readSize(reader);
    reader.expectSymbol(")");
  }
  return systemTypeRef(*system, size, scale);
}

}  // namespace qrel::tsql
