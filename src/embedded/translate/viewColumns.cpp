// The columns of a view, told by its text alone.
#include "embedded/translate/translator.h"

namespace qrel::tsql {

namespace {

// The name of one item of a select list, the tokens [first, last).
std::string itemName(const std::vector<Token>& tokens, std::size_t first, std::size_t last) {
  const Token& end = tokens[last - 1];
  if (end.isSymbol("*")) throw NotUnderstood{"the columns of a view with SELECT * aren't kept", end.line};
  if (last - first > 2 && tokens[first].isIdentifier() && tokens[first + 1].isSymbol("="))
    return std::string(tokens[first].name());
  const bool named = end.isIdentifier() || (end.kind == TokenKind::String && last - first > 1);
  if (!named || (last - first > 1 && end.is("END"))) return "";
  return std::string(end.name());
}

}  // namespace

std::vector<std::string> columnsOfView(const std::string& text) {
  const std::vector<Token> tokens = lex(text);
  TokenReader reader(text, tokens);
  while (!reader.atEnd() && !reader.acceptWord("VIEW")) reader.next();
  if (reader.atEnd()) throw NotUnderstood{"the text of the view isn't kept", 1};
  readObjectName(reader);
  std::vector<std::string> names;
  if (reader.acceptSymbol("(")) {
    do names.push_back(reader.expectIdentifier());
    while (reader.acceptSymbol(","));
    return names;
  }
  while (!reader.atEnd() && !reader.acceptWord("SELECT")) reader.next();
  if (!reader.acceptWord("ALL")) reader.acceptWord("DISTINCT");
  int brackets = 0;
  std::size_t first = reader.position();
  const auto finish = [&](std::size_t last) {
    if (last > first) names.push_back(itemName(tokens, first, last));
    first = last + 1;
  };
  for (std::size_t at = first; at < tokens.size(); ++at) {
    const Token& token = tokens[at];
    if (token.isSymbol("(")) ++brackets;
    if (token.isSymbol(")")) --brackets;
    const bool ends = token.is("FROM") || token.isSymbol(";") || token.kind == TokenKind::End;
    if (brackets == 0 && (ends || token.isSymbol(","))) finish(at);
    if (brackets == 0 && ends) break;
  }
  return names;
}

}  // namespace qrel::tsql
