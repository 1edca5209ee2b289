#include "platform/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/error.h"

namespace qrel {
namespace {

using namespace std::string_literals;

TEST(Text, ChangesCaseLetterByLetter) {
  struct Case {
    std::string lower, upper;
  };
  const std::vector<Case> bothWays = {{"abc_09", "ABC_09"}, {"éàç", "ÉÀÇ"}, {"ÿ", "Ÿ"}, {"ж", "Ж"},
                                      {"ω", "Ω"},           {"ā", "Ā"},     {"ⱥ", "Ⱥ"}, {"𐐨", "𐐀"}};
  for (const Case& c : bothWays) {
    EXPECT_EQ(upperCase(c.lower), c.upper);
    EXPECT_EQ(lowerCase(c.upper), c.lower);
  }
  for (const char* alone : {"ß", "ı", "ς", "ſ", "µ", "×", "÷", "\xFF", "\xC3", "\xE2\x82"}) {
    EXPECT_EQ(upperCase(alone), alone);
    EXPECT_EQ(lowerCase(alone), alone);
  }
  EXPECT_EQ(upperCase("a\xC3z"), "A\xC3Z");
}

TEST(Text, TrimsBlanksOnly) {
  EXPECT_EQ(trimBlanks("  \ta b\r\n  "), "\ta b\r\n");
  EXPECT_EQ(trimBlanks("    "), "");
  EXPECT_EQ(trimLeftBlanks("  a "), "a ");
  EXPECT_EQ(trimRightBlanks("  a "), "  a");
}

TEST(Text, OrdersByUtf16Units) {
  // Each is before the next. A character beyond U+FFFF starts with a unit of 0xD800 to 0xDBFF.
  const std::vector<std::string> ascending = {"",   "A", "A\x7F", "B", "_", "a",      "aé",    "é",
                                              "éa", "ê", "中",    "😀", "😁", "\uE000", "\uFF21"};
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      const int result = compareBinary(ascending[i], ascending[j]);
      EXPECT_EQ(result < 0, i < j) << ascending[i] << " " << ascending[j];
      EXPECT_EQ(result > 0, i > j) << ascending[i] << " " << ascending[j];
    }
  }
  EXPECT_NE(compareBinary("\xFF", "\xFE"), 0);
  EXPECT_NE(compareBinary("\xFF", "\uFFFD"), 0);
}

TEST(Text, CollatesWithoutCaseAndTrailingBlanks) {
  const std::vector<std::vector<std::string>> classes = {{"", "   "},   {" a", " A "}, {"a", "A", "a  "},
                                                         {"ab", "AB "}, {"a b"},       {"é", "É"},
                                                         {"ж", "Ж "},   {"\xFF"},      {"\xFE"}};
  for (const auto& one : classes) {
    for (const auto& other : classes) {
      for (const std::string& a : one) {
        for (const std::string& b : other) {
          EXPECT_EQ(compareCollated(a, b) == 0, &one == &other) << a << "|" << b;
          EXPECT_EQ(collationKey(a) == collationKey(b), &one == &other) << a << "|" << b;
          EXPECT_EQ(compareCollated(a, b) < 0, compareCollated(b, a) > 0) << a << "|" << b;
        }
      }
    }
  }
  EXPECT_LT(compareCollated("apple", "BANANA"), 0);
  EXPECT_GT(compareCollated("Cherry", "banana"), 0);
  EXPECT_TRUE(equalNoCase("Straße", "STRAßE"));
  EXPECT_FALSE(equalNoCase("a", "a "));
}

TEST(Text, CountsCharacters) {
  EXPECT_EQ(characterCount("aé中😀"), 4u);
  EXPECT_EQ(characterCount("\xFF\xC3"), 2u);
  EXPECT_EQ(byteOffset("aé中😀b", 3), 6u);
  EXPECT_EQ(byteOffset("aé", 9), 3u);
  EXPECT_EQ(leftCharacters("aé中😀b", 2), "aé");
  std::size_t offset = 0;
  EXPECT_EQ(nextCodePoint("\xF0\x9F\x98\x80", offset), U'\U0001F600');
  EXPECT_EQ(offset, 4u);
  // Overlong, surrogate, beyond U+10FFFF, cut short: one byte each.
  for (const char* malformed : {"\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82"}) {
    offset = 0;
    EXPECT_EQ(nextCodePoint(malformed, offset), U'\uFFFD');
    EXPECT_EQ(offset, 1u);
  }
}

TEST(Text, ReplacesBehindTheInsertion) {
  EXPECT_EQ(replaceAll("aaa", "a", "aa"), "aaaaaa");
  EXPECT_EQ(replaceAll("aaa", "aa", "b"), "ba");
  EXPECT_EQ(replaceAll("it's 'it'", "'", "''"), "it''s ''it''");
  EXPECT_EQ(replaceAll("abc", "", "x"), "abc");
}

TEST(Text, ReadsTheNumberInFront) {
  EXPECT_EQ(numericPrefix("  -12abc"), -12);
  EXPECT_EQ(numericPrefix("+7"), 7);
  EXPECT_EQ(numericPrefix("abc"), 0);
  EXPECT_EQ(numericPrefix("\t5"), 0);
  EXPECT_EQ(numericPrefix("-2147483648"), INT32_MIN);
  EXPECT_THROW(numericPrefix("2147483648"), RuntimeError);
  EXPECT_THROW(numericPrefix("99999999999999999999999"), RuntimeError);
}

TEST(Text, DecodesFiles) {
  struct Case {
    std::string bytes, text, encoding;
  };
  const std::vector<Case> cases = {
      {"", "", "UTF-8"},
      {"plain é", "plain é", "UTF-8"},
      {"\xEF\xBB\xBFmarked", "marked", "UTF-8"},
      {"\xEF\xBB\xBF\xFFx", "\uFFFDx", "UTF-8"},
      {"\uFFFD is a valid character", "\uFFFD is a valid character", "UTF-8"},
      {"caf\xE9 \x80", "café €", "Windows-1252"},
      {"\xFF\xFE"s + "a\0=\xD8\0\xDE"s, "a😀", "UTF-16LE"},
      {"\xFE\xFF"s + "\0a\xD8=\xDE\0"s, "a😀", "UTF-16BE"},
      {"\xFF\xFE"s + "a\0=\xD8"s, "a\uFFFD", "UTF-16LE"},         // half a pair
      {"\xFF\xFE"s + "\0\xDE"s + "b\0"s, "\uFFFDb", "UTF-16LE"},  // the other half
      {"\xFF\xFE"s + "a\0b"s, "a\uFFFD", "UTF-16LE"},             // an odd byte
  };
  for (const Case& c : cases) {
    std::string encoding;
    EXPECT_EQ(decodeText(c.bytes, &encoding), c.text);
    EXPECT_EQ(encoding, c.encoding) << c.text;
  }
  EXPECT_EQ(decodeText("x"), "x");
}

TEST(Text, CodePageGoesThereAndBack) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(toCodePage(fromCodePage(all)), all);
  EXPECT_EQ(fromCodePage("\x80\x9F\xE9"), "€Ÿé");
  EXPECT_EQ(toCodePage("a中€😀\xFF"), "a?\x80??");
}

}  // namespace
}  // namespace qrel
