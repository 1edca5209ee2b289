#include "embedded/language/lexer.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace qrel::tsql {
namespace {

std::string shown(const Token& token) {
  static const char* const kinds[] = {"end",   "word",   "name",     "string", "number",
                                      "money", "binary", "variable", "symbol"};
  std::string out = kinds[static_cast<int>(token.kind)];
  out += ":" + std::string(token.name());
  return token.national ? "N" + out : out;
}

TEST(Lexer, TokensOfEveryKind) {
  const std::vector<std::tuple<std::string, std::string>> cases = {
      {"a[b]]c]\"d\"\"e\"", "word:a name:b]c name:d\"e"},
      {"N'it''s' n'x' 'y'", "Nstring:it's Nstring:x string:y"},
      {"0x1F 0x 1.5 .5 1e-3 2.", "binary:0x1F binary:0x number:1.5 number:.5 number:1e-3 number:2."},
      {"$12.50 @@ROWCOUNT @a #t t$x", "money:$12.50 variable:@@ROWCOUNT variable:@a word:#t word:t$x"},
      {"a<>b!=c<=d+=e::f",
       "word:a symbol:<> word:b symbol:!= word:c symbol:<= word:d symbol:+= word:e symbol::: word:f"},
      {"a/* x /* y */ ' */b--c\nd", "word:a word:b word:d"},
      {"COUNT(*)=1", "word:COUNT symbol:( symbol:* symbol:) symbol:= number:1"},
      {"Größe\xC2\xA0x", "word:Größe word:x"},
      {"'never closed", "string:never closed"},
      {"/* never /* closed */ a", ""},
      {"[never closed", "name:never closed"}};
  for (const auto& [text, expected] : cases) {
    std::string found;
    for (const Token& token : lex(text))
      if (token.kind != TokenKind::End) found += (found.empty() ? "" : " ") + shown(token);
    EXPECT_EQ(found, expected) << text;
  }
}

TEST(Lexer, LinesAndFirstTokens) {
  const std::string text = "a 'x\r\ny' b\r\n/* c\n */ d\re\n\nf";
  std::string found;
  for (const Token& token : lex(text))
    found += std::to_string(token.line) + (token.firstOnLine ? "!" : "") + std::string(token.raw.substr(0, 1)) + " ";
  EXPECT_EQ(found, "1!a 1' 2b 4!d 5!e 7!f 7 ");
}

TEST(TokenReader, ReadsNamesAndTellsWhatItMisses) {
  const std::string text = "srv.db..[t x] (a (b) c) rest";
  const auto tokens = lex(text);
  TokenReader reader(text, tokens);
  const ObjectName name = readObjectName(reader);
  EXPECT_EQ(name.server + "/" + name.database + "/" + name.schema + "/" + name.name, "srv/db//t x");
  const std::size_t from = reader.position();
  reader.skipParentheses();
  EXPECT_EQ(reader.sourceBetween(from, reader.position()), "(a (b) c)");
  try {
    reader.expectWord("select");
    FAIL();
  } catch (const NotUnderstood& error) {
    EXPECT_EQ(error.reason, "expected select before 'rest'");
  }
}

}  // namespace
}  // namespace qrel::tsql
