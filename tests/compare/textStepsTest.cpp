// Comments, white space, words and the details list, each against a plain version that works on whole strings.
#include <gtest/gtest.h>

#include "app/modStrings.h"
#include "app/modTextPane.h"
#include "compare/structure/modCompareObjects.h"
#include "compare/structure/modDetails.h"
#include "compare/structure/modIgnoreComments.h"
#include "compare/structure/modIgnoreWhiteSpaces.h"
#include "platform/controls/textPane.h"
#include "platform/text.h"
#include "tests/compare/basicText.h"
#include "tests/support.h"

namespace qrel {
namespace {

using basic::inStr;
using basic::left;
using basic::mid;

// The part of the text before a comment at p, without a LF that ends it.
std::string before(const std::string& text, long p) {
  return p > 1 && text[static_cast<std::size_t>(p - 2)] == '\n' ? left(text, p - 2) : left(text, p - 1);
}

std::string stripPlainly(std::string text) {
  const long blocks = CountOccurrences(text, "/*");
  const long lines = CountOccurrences(text, "--");
  if (blocks == 0 && lines == 0) return text;
  text = replaceAll(text, "\n", "\r\n");
  for (long i = 0; i < blocks; ++i) {
    const long p = inStr(1, text, "/*");
    if (p == 0) break;
    const long q = inStr(p, text, "*/");
    text = before(text, p) + mid(text, q + 2);
  }
  for (long i = 0; i < lines; ++i) {
    const long p = inStr(1, text, "--");
    if (p == 0) break;
    long end = inStr(p, text, "\r\n");
    if (end == 0) end = inStr(p, text, "\n");
    if (end == 0) end = static_cast<long>(text.size());
    text = before(text, p) + mid(text, end + 1);
  }
  return text;
}

TEST(StripComments, DoesWhatRepeatedSearchesDo) {
  std::mt19937 random(2);
  for (const std::string letters : {"/*-\r\na", "/*", "/*\na", "-\r\n", "/**//**/ab", "*/ab\n-"}) {
    for (int round = 0; round < 20000; ++round) {
      const std::string text = basic::randomText(random, letters, 14);
      ASSERT_EQ(StripCommentsFromProc(text), stripPlainly(text)) << testing::PrintToString(text);
    }
  }
}

TEST(StripComments, KnowsItsCornerCases) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"a\nb", "a\nb"},         // no mark: LF stays as it is
      {"a --x\r\nb", "a \nb"},  // CR LF has become CR CR LF, and its first part goes with the comment
      {"a\n--x\nb", "a\r\nb"},
      {"a/*x*/b", "ab"},
      {"a\n/*x*/b", "a\rb"},
      {"a/*/b", "ab"},
      {"'--' x", "'"},
      {"ab/*c", "abb/*c"},  // no end: what precedes it comes twice
      {"a/*c", "a/*c"},
      {"/*c", "*c"},
  };
  for (const auto& [text, stripped] : cases) {
    EXPECT_EQ(StripCommentsFromProc(text), stripped) << text;
  }
}

TEST(StripComments, DropsAWholeCharacterOfATextWithoutEnd) {
  EXPECT_EQ(StripCommentsFromProc("\xC3\xA4"
                                  "b/*c"),
            "\xC3\xA4"
            "bb/*c");
  EXPECT_EQ(StripCommentsFromProc("\xC3\xA4/*c"), "\xC3\xA4/*c");
}

bool sameStrippedPlainly(Program& program, const std::string& a, const std::string& b, bool views) {
  std::string strippedA = stripPlainly(a), strippedB = stripPlainly(b);
  if (views) AdjustCreateViewStatements(program, strippedA, strippedB);
  return program.settings.IgnoreWhitespace ? CompareProcs_IgnoreWhiteSpaces(program, strippedA, strippedB)
                                           : strippedA == strippedB;
}

TEST(SameWithoutComments, DecidesAsTheWrittenOutTextsDo) {
  TestProgram test;
  std::mt19937 random(4);
  long same = 0;
  for (const std::string letters : {"/*-\r\na ", "/*", "/*\na", " \n\taA", "/**//**/ab", "*/ab\n-"}) {
    for (int round = 0; round < 3000; ++round) {
      test.program.settings.CaseSensitive = random() % 2 == 0;
      test.program.settings.IgnoreWhitespace = random() % 2 == 0;
      const std::string a = basic::randomText(random, letters, 12);
      std::string b = random() % 2 == 0 ? basic::randomText(random, letters, 12) : a;
      if (!b.empty() && random() % 2 == 0) b[random() % b.size()] = letters[random() % letters.size()];
      const bool expected = sameStrippedPlainly(test.program, a, b, false);
      same += expected;
      ASSERT_EQ(SameWithoutComments(test.program, a, b, false), expected)
          << testing::PrintToString(a) << testing::PrintToString(b);
    }
  }
  EXPECT_GT(same, 3000);
}

TEST(SameWithoutComments, ViewsLoseTheirHeaders) {
  TestProgram test;
  const std::string body = " SELECT '/*' AS a, '/* ' AS b /* FROM t";
  for (const char* name : {"[v]", "w"}) {
    const std::string a = "  CREATE VIEW dbo.v AS" + body, b = "CREATE VIEW " + std::string(name) + " AS" + body;
    EXPECT_EQ(SameWithoutComments(test.program, a, b, true), sameStrippedPlainly(test.program, a, b, true)) << name;
  }
}

TEST(SameWithoutComments, TellsTextsApartThatNoMemoryHolds) {
  TestProgram test;
  std::string text = "CREATE PROCEDURE p AS";
  for (int i = 0; i < 50; ++i) text += " '/*'";
  EXPECT_TRUE(SameWithoutComments(test.program, text, replaceAll(text, " ", "\t"), false));
  EXPECT_FALSE(SameWithoutComments(test.program, text, replaceAll(text, "AS", "As"), false));
  EXPECT_FALSE(SameWithoutComments(test.program, text, text + " x", false));
  EXPECT_FALSE(SameWithoutComments(test.program, text, text + " '/*'", false)) << "twice as long";
  for (int i = 0; i < 50; ++i) text += " '/*'";
  EXPECT_THROW(SameWithoutComments(test.program, text, text + " x", false), RuntimeError) << "beyond counting";
}

TEST(StripComments, EndsWhenATextWouldOutgrowAllMemory) {
  std::string text = "ab";
  for (int i = 0; i < 60; ++i) text += "/* ";
  EXPECT_THROW(StripCommentsFromProc(text), RuntimeError);
}

bool sameWordsPlainly(bool caseSensitive, std::string a, std::string b) {
  a = trimBlanks(a);
  b = trimBlanks(b);
  if (!caseSensitive) a = upperCase(a), b = upperCase(b);
  if (a == b) return true;
  if (a.empty() || b.empty()) return false;
  a = ReplaceNonPrintableChars(a, " ");
  b = ReplaceNonPrintableChars(b, " ");
  if (a == b) return true;
  const long count = CountDelimitedWords(a, " ");
  if (count != CountDelimitedWords(b, " ")) return false;
  for (long word = 1; word <= count; ++word) {
    if (GetDelimitedWord_Extended(a, word, " ") != GetDelimitedWord_Extended(b, word, " ")) return false;
  }
  return true;
}

TEST(IgnoreWhiteSpaces, TakesWordsOneByOne) {
  TestProgram test;
  std::mt19937 random(3);
  for (int round = 0; round < 20000; ++round) {
    test.program.settings.CaseSensitive = random() % 2 == 0;
    const std::string a = basic::randomText(random, " \r\n\tabA", 7);
    const std::string b = basic::randomText(random, " \r\n\tabA", 7);
    ASSERT_EQ(CompareProcs_IgnoreWhiteSpaces(test.program, a, b),
              sameWordsPlainly(test.program.settings.CaseSensitive, a, b))
        << testing::PrintToString(a) << testing::PrintToString(b);
  }
}

TEST(IgnoreWhiteSpaces, CountsALineEndAtTheEnd) {
  TestProgram test;
  const std::tuple<std::string, std::string, bool> cases[] = {
      {"a b", "a\tb  ", true},       {"a b", "a\tb\r\n", false},
      {"a  b", " a \r\n\v b", true}, {"", "   ", true},
      {"", "\r\n", false},           {"a\fb", "a b", false},
      {"a b", "ab", false},          {"a b", std::string("a\0b", 3), true}};
  for (const auto& [a, b, same] : cases) {
    EXPECT_EQ(CompareProcs_IgnoreWhiteSpaces(test.program, a, b), same) << testing::PrintToString(b);
  }
}

TEST(ReplaceNonPrintable, LeavesOneBlankOfEachRun) {
  const std::tuple<std::string, std::string, std::string> cases[] = {{"", " ", ""},
                                                                     {"\r\n", " ", " "},
                                                                     {"  a", " ", " a"},
                                                                     {"a \r\n\t b\r\n", " ", "a b "},
                                                                     {"a\r\n  b", "#", "a## b"}};
  for (const auto& [text, replacement, result] : cases) EXPECT_EQ(ReplaceNonPrintableChars(text, replacement), result);
}

void differencesPlainly(const Program& program, std::string s, std::string t, std::string& result) {
  result.clear();
  if (s == t) return;
  s += "\r\n";
  t += "\r\n";
  std::string inSource = "Differences in Source:\r\n", inTarget = "Differences in Target:\r\n";
  bool sourceFilled = false, targetFilled = false;
  long p = 0, q = 0;
  while (p < static_cast<long>(s.size())) {
    const long start = p + 1;
    const long nextP = inStr(p + 2, s, "\r\n");
    if (nextP == 0) {
      inTarget += mid(t, q + 2) + "\r\n";
      targetFilled = true;
      break;
    }
    const long nextQ = inStr(q + 2, t, "\r\n");
    if (nextQ == 0) {
      inSource += mid(s, start + 1) + "\r\n";
      sourceFilled = true;
      break;
    }
    std::string a = mid(s, start, nextP - start), b = mid(t, q + 1, nextQ - q - 1);
    p = nextP;
    q = nextQ;
    if (!program.settings.CaseSensitive) a = upperCase(a), b = upperCase(b);
    if (a != b && program.settings.IgnoreWhitespace) {
      a = ReplaceNonPrintableChars(a, " ");
      b = ReplaceNonPrintableChars(b, " ");
    }
    if (a == b || LinesDifferOnlyByComma(a, b)) continue;
    inSource += a + "\r\n";
    inTarget += b + "\r\n";
    sourceFilled = targetFilled = true;
  }
  if (sourceFilled) result = targetFilled ? inSource + "\r\n" + inTarget : inSource;
  if (!sourceFilled) result = inTarget;
}

TEST(LineDifferences, AreThoseOfThePlainWalk) {
  TestProgram test;
  std::mt19937 random(4);
  for (int round = 0; round < 30000; ++round) {
    test.program.settings.CaseSensitive = random() % 2 == 0;
    test.program.settings.IgnoreWhitespace = random() % 2 == 0;
    std::string s = basic::randomText(random, "\r\n;;;aA, ", 9), t = basic::randomText(random, "\r\n;;;aA, ", 9);
    s = replaceAll(s, ";", "\r\n");
    t = replaceAll(t, ";", "\r\n");
    std::string result, expected;
    GetLineDifferences(test.program, s, t, result);
    differencesPlainly(test.program, s, t, expected);
    ASSERT_EQ(result, expected) << testing::PrintToString(s) << testing::PrintToString(t);
  }
}

TEST(Details, AreHeadedOnceAndNumbered) {
  TestProgram test;
  std::string details = "left over";
  AddDifferencesToDetails(test.program, details, "tables", "Orders", 1, "a int,\r\nb int", "a int,\r\nb char");
  AddDifferencesToDetails(test.program, details, "tables", "Lines", 2, "a,", " a ");
  EXPECT_EQ(details,
            "\r\n===========================================\r\n\r\n"
            "Detailed list of differences between compared tables\r\n"
            "\r\n1. Orders\r\n\r\n"
            "Differences in Source:\r\n b int\r\n\r\nDifferences in Target:\r\n b char\r\n\r\n"
            "\r\n2. Lines\r\n\r\n"
            "Differences in Target:\r\n\r\n");
}

TEST(Details, PrintTheLineEndBeforeALineAndForgiveTheLastComma) {
  TestProgram test;
  test.program.settings.IgnoreWhitespace = false;
  std::string result;
  GetLineDifferences(test.program, "same\r\nb\r\nmore", "same\r\nc", result);
  EXPECT_EQ(result,
            "Differences in Source:\r\n\nb\r\nmore\r\n\r\n\r\n"
            "Differences in Target:\r\n\nc\r\n");
  GetLineDifferences(test.program, "", "éa\r\nb", result);
  EXPECT_EQ(result, "Differences in Target:\r\na\r\nb\r\n\r\n") << "a whole character is left out";
  EXPECT_TRUE(LinesDifferOnlyByComma(" a ,", "a"));
  EXPECT_FALSE(LinesDifferOnlyByComma("a, ", "a"));  // the comma isn't last
  EXPECT_FALSE(LinesDifferOnlyByComma("a,,", "a"));
}

TEST(TextPaneLines, EndWithOneCharacterWhateverWasPutIn) {
  TextPane pane("txtTXProc(0)");
  pane.setText("é\r\n\rb\n");
  CompLineArray arr;
  std::int32_t error = 5;
  EXPECT_EQ(pane.text(), "é\n\nb\n");
  EXPECT_EQ(pane.givenText(), "é\r\n\rb\n");
  ASSERT_EQ(TXText_ConvTextToArray(pane, arr, error), 4);
  EXPECT_EQ(error, 0);
  const std::tuple<const char*, int, int> lines[] = {{"é", 0, 2}, {"", 3, 3}, {"b", 4, 5}, {"", 6, 6}};
  for (long n = 1; n <= 4; ++n) {
    const auto& [text, start, end] = lines[n - 1];
    EXPECT_EQ(arr[n].strLine, text) << n;
    EXPECT_EQ(arr[n].lngStart, start) << n;
    EXPECT_EQ(arr[n].lngEnd, end) << n;
  }
  EXPECT_EQ(TXText_ConvArrayToText(arr, 3, error), "é\r\n\r\nb\r\n");
  EXPECT_EQ(TXText_ConvArrayToText(arr, 0, error), "");
  pane.setText("plain\n");
  EXPECT_EQ(pane.givenText(), "plain\n");
}

}  // namespace
}  // namespace qrel
