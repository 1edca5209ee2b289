// The scanner: which tokens a text gives, and what ended each.
#include "compare/script/CTokenizer.h"
#include "platform/host/scriptedHost.h"

#include <gtest/gtest.h>

namespace qrel {
namespace {

// Each token as TOKEN, "'" when it is reported as quoted, and its delimiter in "<>"; LF and CR as \n and \r.
std::string tokensOf(CTokenizer& tokenizer) {
  std::string all, token, delimiter;
  bool quoted = false, found = false;
  for (;;) {
    tokenizer.GetNextToken(token, delimiter, quoted, found);
    if (!found) {
      EXPECT_EQ(token + delimiter, "");
      return all;
    }
    if (delimiter == "\n") delimiter = "\\n";
    if (delimiter == "\r") delimiter = "\\r";
    all += (all.empty() ? "" : " ") + token + (quoted ? "'" : "") + "<" + delimiter + ">";
  }
}

TEST(Tokenizer, CutsAsItsTableSays) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"a", ""},  // a last character alone is never seen
      {"ab", "ab<>"},
      {"ab,", "ab<,>"},
      {"a,b", "a<,>"},
      {"a,,bc", "a<,> <,> bc<>"},
      {"   ", "<>"},
      {"ab\tcd  ", "ab<> cd<>"},
      {"ab ,cd", "ab<,> cd<>"},
      {"ab\r\ncd", "ab<\\n> cd<>"},
      {"ab\n\rcd", "ab<\\r> cd<>"},
      {"\nab\n", "<\\n> ab<\\n>"},
      {"ab \ncd", "ab<\\n> cd<>"},
      {"\"ab\"cd", "ab'<> cd<>"},
      {"ab\"cd\"", "ab'<\"> cd'<>"},
      {"\"a,b  c\"", "a,b  c'<>"},
      {"\"a'b\"", "a'b'<>"},
      {"\"a \"\"b\" cd", "a '<\"> b'<> cd<>"},
      {"\"ab\"  ,cd", "ab'<,> cd<>"},
      {"\"ab\ncd\" ef", "ab'<\\n> cd'<\">  ef'<>"},
      {"'ab cd", "ab cd'<>"},  // runs to the end
      {"\xC3\xA9", ""},        // one character, whatever its bytes
      {"ab\xC3\xA9", "ab\xC3\xA9<>"},
      {"ab \xC3\xA9", "ab<>"},
  };
  ScriptedHost host;
  CTokenizer tokenizer(host);
  tokenizer.QuoteChars = "\"'";
  tokenizer.SeparatorChars = ",";
  for (const auto& [text, expected] : cases) {
    tokenizer.SetText(text);
    EXPECT_EQ(tokensOf(tokenizer), expected) << text;
  }
  EXPECT_TRUE(host.boxes.empty());
}

TEST(Tokenizer, GoesByItsCharacterSets) {
  ScriptedHost host;
  CTokenizer tokenizer(host);
  const auto tokens = [&](const char* text) {
    tokenizer.SetText(text);
    return tokensOf(tokenizer);
  };
  EXPECT_EQ(tokens("Ab,\"c d\""), "Ab,\"c<> d\"<>") << "no quotes and no separators at first";
  tokenizer.QuoteChars = "\"";
  tokenizer.ConvertCase = 2;
  EXPECT_EQ(tokens("A\xC3\x89 \"C D\""), "a\xC3\xA9'<\"> C D'<>");
  tokenizer.ConvertCase = 1;
  EXPECT_EQ(tokens("ab \"c d\""), "AB'<\"> c d'<>");
  tokenizer.ConvertCase = 3;
  EXPECT_EQ(tokens("Ab"), "Ab<>");
  // In two sets: quote before separator before blank before line end.
  tokenizer.QuoteChars = "q";
  tokenizer.SeparatorChars = "qs";
  tokenizer.WhiteSpaceChars = "qsw";
  tokenizer.EOLChars = "qswe";
  EXPECT_EQ(tokens("aaqbbqccsddweeffegg"), "aa'<q> bb'<> cc<s> dd<e> ff<e> gg<>");
}

TEST(Tokenizer, ATextStartsItOver) {
  ScriptedHost host;
  CTokenizer tokenizer(host);
  std::string token, delimiter;
  bool quoted = false, found = false;
  tokenizer.SetText("one two");
  tokenizer.GetNextToken(token, delimiter, quoted, found);
  tokenizer.SetText(tokenizer.Text());
  EXPECT_EQ(tokensOf(tokenizer), "one<> two<>");
}

}  // namespace
}  // namespace qrel
