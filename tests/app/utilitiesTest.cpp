// Words, replacements, dates, buffers and arrays at their edges.
#include <random>

#include "app/CCommandArgs.h"
#include "app/CConCat.h"
#include "app/modArrays.h"
#include "app/modDates.h"
#include "app/modStrings.h"
#include "platform/data/recordset.h"
#include "platform/text.h"
#include "tests/support.h"

namespace qrel {
namespace {

TEST(Words, AreCountedWithOverlappingDelimiters) {
  const std::tuple<const char*, const char*, long> cases[] = {{"", " ", 1},     {"a", " ", 1},    {"a b", " ", 2},
                                                              {"a b ", " ", 3}, {"---", "--", 3}, {"----", "--", 4},
                                                              {"abc", "", 1}};
  for (const auto& [text, delimiter, words] : cases) EXPECT_EQ(CountDelimitedWords(text, delimiter), words) << text;
}

TEST(Words, WrapRoundBehindTheLastOne) {
  const std::tuple<const char*, long, const char*> cases[] = {{"a b c", 1, "a"}, {"a b c", 3, "c"}, {"a b c", 4, "a"},
                                                              {"a b c", 5, "b"}, {"a b ", 3, ""},   {" a b", 1, " a b"},
                                                              {" a b", 2, "a"},  {" a b", 3, "b"},  {" a b", 4, " a b"},
                                                              {"", 1, ""},       {"", 7, ""}};
  for (const auto& [text, index, word] : cases) EXPECT_EQ(GetDelimitedWord(text, index, " "), word) << text << index;
  EXPECT_EQ(GetDelimitedWord("a<>b", 2, "<>"), "b");
  EXPECT_EQ(GetDelimitedWord("a<>b", 3, "<>"), "a");
}

TEST(Words, ComeOneByOneAsTheyAreNumbered) {
  OneBased<std::string> words;
  EXPECT_EQ(StringToArray(" a  b ", words, " "), 5);
  for (long i = 1; i <= 5; ++i) EXPECT_EQ(words[i], GetDelimitedWord(" a  b ", i, " ")) << i;
  EXPECT_THROW(words[0], RuntimeError);
  EXPECT_THROW(words[6], RuntimeError);
}

TEST(Words, FirstAndLastSplitATrimmedText) {
  TestProgram test;
  std::string rest = "kept";
  EXPECT_EQ(GetFirstWord(test.host, "  a.  b. c ", rest, "."), "a");
  EXPECT_EQ(rest, "b. c");
  EXPECT_EQ(GetFirstWord(test.host, rest, rest, "."), "b");
  EXPECT_EQ(rest, "c");
  EXPECT_TRUE(test.host.boxes.empty());
  EXPECT_EQ(GetFirstWord(test.host, " c ", rest, "."), "c");
  EXPECT_EQ(rest, "c");
  ASSERT_EQ(test.host.boxes.size(), 1u);
  EXPECT_EQ(test.host.boxes[0].text, "Error: 94. Invalid use of Null");
  EXPECT_EQ(test.host.boxes[0].title, "GetFirstWord");
  EXPECT_EQ(GetFirstWord(test.host, "  ", rest, "."), "");
  EXPECT_EQ(rest, "");
  EXPECT_EQ(test.host.boxes.size(), 1u);

  const std::tuple<const char*, const char*, const char*> cases[] = {
      {" dbo.v ", "v", "dbo"}, {"a. b .c", "c", "a. b"}, {"v", "v", ""}, {".v", ".v", ""},
      {"v.", "", "v"},         {"..", "", "."},          {"", "", ""}};
  for (const auto& [text, word, before] : cases) {
    rest = "old";
    EXPECT_EQ(GetLastWord(text, rest, "."), word) << text;
    EXPECT_EQ(rest, before) << text;
  }
}

TEST(Replacements, GoOnBehindWhatTheyInserted) {
  EXPECT_EQ(ReplaceString("a dbo.b DBO.c Dbo.", "DBO.", "", false), "a b c ");
  EXPECT_EQ(ReplaceString("aAa", "a", "aa", false), "aaaaaa");
  EXPECT_EQ(ReplaceString("aAa", "a", "-", true), "-A-");
  EXPECT_EQ(ReplaceString("x", "", "-", false), "x");
  // Upper and lower case of one letter may take different numbers of bytes.
  EXPECT_EQ(ReplaceString("\u023A-\u2C65\u023A=", "\u2C65", "<\u023A>", false), "<\u023A>-<\u023A><\u023A>=");
  EXPECT_EQ(ReplaceString("\u023Ax\u2C65Xy", "X", ".", false), "\u023A.\u2C65.y");
  EXPECT_EQ(ReplaceChars("a\nb\n", "\n", "\r\n"), "a\r\nb\r\n");
  EXPECT_EQ(ReplaceChars("abab", "ab", "-"), "abab");
  EXPECT_EQ(StripChars("a\u00E9b\u00E9", "\u00E9"), "ab");
  EXPECT_EQ(StripRightChars("ab\u00E9\u00E8", 3), "a");
  EXPECT_EQ(StripRightChars("ab", 3), "");
  EXPECT_EQ(StripFirstChar("\u00E9a"), "a");
  EXPECT_EQ(StripFirstChar(""), "");
  EXPECT_EQ(EnsureTrailingCrLf("a\r\n"), "a\r\n\r\n");
}

TEST(CatalogueArrays, HaveNamesakesInTheOrderOfTheirIds) {
  std::vector<TwoStr> items;
  for (const auto& [name, id] : {std::pair("a", 9), {"B", 7}, {"b", 3}, {"B", 5}, {"c", 1}})
    items.push_back({name, "", id, 0, ""});
  OrderNamesakesById(items);
  std::string order;
  for (const TwoStr& item : items) order += item.strName + std::to_string(item.lngId) + " ";
  EXPECT_EQ(order, "a9 b3 B5 B7 c1 ");
  std::vector<TwoStr> none;
  OrderNamesakesById(none);
}

TEST(Dates, AreWrittenFromNumbersOfTheRightLength) {
  EXPECT_EQ(LongToDateString(20040503, true, false, false), "May 03, 2004");
  EXPECT_EQ(LongToDateString(20040903, false, false, true), "Sep 03, 04");
  EXPECT_EQ(LongToDateString(20041231, true, true, false), "31-December-2004");
  EXPECT_EQ(LongToDateString(20040201, false, true, true), "01-Feb-04");
  EXPECT_EQ(LongToDateString(2004050, true, true, true), "");
  EXPECT_EQ(LongToDateString(-2004050, true, true, true), "");
  const std::tuple<int, bool, const char*> times[] = {
      {930, false, ""},       {9301, false, "00:93:01"},   {93015, false, "09:30:15"},
      {93015, true, "09:30"}, {235959, false, "23:59:59"}, {1235959, false, ""},
      {-23595, false, ""}};
  for (const auto& [number, noSeconds, text] : times) EXPECT_EQ(LongToTimeString(number, noSeconds), text) << number;
}

TEST(Dates, AreReadAsNumbers) {
  const std::pair<const char*, int> cases[] = {
      {"", 0}, {"2004-05-03", 20040503}, {"2004-5-3 10:11:12", 20040503}, {"12/31/1999", 19991231}};
  for (const auto& [text, number] : cases) EXPECT_EQ(DateToLong(text), number) << text;
  for (const char* text : {"soon", "2004-13-01", "2004-05-32", "2004-05", "2004--5-03", "2004-05-03-"}) {
    EXPECT_THROW(DateToLong(text), RuntimeError) << text;
  }
}

TEST(ConCat, JoinsInABufferThatGrowsInSteps) {
  CConCat text;
  EXPECT_THROW(text.CutLastChar(), RuntimeError);
  text.SetText("ab");
  EXPECT_EQ(text.BufferLength(), 2u);
  text.Append("c");
  EXPECT_EQ(text.BufferLength(), 50002u);
  text.Append(std::string(60000, 'x'));
  EXPECT_EQ(text.BufferLength(), 110002u);
  text.Append("\u00E9");
  text.CutLastChar();
  text.CutLastChar();
  text.Append("!");
  EXPECT_EQ(text.Text(), "abc" + std::string(59999, 'x') + "!");
}

TEST(CommandArgs, SplitAtTheFirstBlank) {
  CCommandArgs args;
  args.Delim = "/";
  args.TestString = "lost /RunSavedComp  12 b /Quiet/p a/ x";
  args.Parse();
  ASSERT_EQ(args.Count(), 4);
  const std::pair<const char*, const char*> expected[] = {
      {"RunSavedComp", "12 b"}, {"Quiet", "Quiet"}, {"p", "a"}, {"", "x"}};
  for (long i = 1; i <= 4; ++i) {
    EXPECT_EQ(args.Key(i), expected[i - 1].first);
    EXPECT_EQ(args.Value(i), expected[i - 1].second);
  }
  const std::pair<const char*, const char*> items[] = {
      {"runsavedcomp", "12 b"}, {"2", "Quiet"}, {"0", ""}, {"5", ""}, {"none", ""}, {"", "x"}};
  for (const auto& [key, value] : items) EXPECT_EQ(args.Item(key), value) << key;
  EXPECT_THROW(args.Key(5), RuntimeError);
  args.TestString = "";
  args.Parse();
  EXPECT_EQ(args.Count(), 4);
}

std::vector<TwoStr> entries(const std::vector<std::pair<const char*, int>>& list) {
  std::vector<TwoStr> items;
  for (const auto& [name, type] : list) items.push_back({name, "", 0, type, ""});
  return items;
}

std::string names(const std::vector<TwoStr>& items) {
  std::string all;
  for (const TwoStr& item : items) all += item.strName;
  return all;
}

TEST(Arrays, ShellSortMakesTwoPassesPerGap) {
  TestProgram test;
  auto items = entries({{"a", 3}, {"b", 1}, {"c", 2}, {"d", 4}});
  ShellSortArray_TwoStr_ByLongEl(test.host, items, false);
  EXPECT_EQ(names(items), "bcad");
  ShellSortArray_TwoStr_ByLongEl(test.host, items, true);
  EXPECT_EQ(names(items), "dacb");
  items = entries({{"a", 1}, {"b", 1}, {"c", 1}});
  ShellSortArray_TwoStr_ByLongEl(test.host, items, true);
  EXPECT_EQ(names(items), "abc");
  // The gap of 3 finds nothing to do; one walk up and one down with the gap of 1 don't suffice.
  items = entries({{"e", 5}, {"c", 3}, {"a", 1}, {"f", 6}, {"d", 4}, {"b", 2}, {"g", 7}});
  ShellSortArray_TwoStr_ByLongEl(test.host, items, false);
  EXPECT_EQ(names(items), "acbedfg");
  EXPECT_TRUE(test.host.boxes.empty());
  items.resize(32769);
  ShellSortArray_TwoStr_ByLongEl(test.host, items, false);
  ASSERT_EQ(test.host.boxes.size(), 1u);
  EXPECT_EQ(test.host.boxes[0].text, "Error: 6. Overflow");
}

TEST(Arrays, QuickSortOrdersTheGivenPart) {
  TestProgram test;
  std::mt19937 random(5);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::string> texts(1 + random() % 40);
    for (auto& text : texts) text = std::string(random() % 3, 'a') + std::string(random() % 2, 'B');
    auto expected = texts;
    const long last = static_cast<long>(texts.size()) - 1;
    const long first = std::min<long>(last, static_cast<long>(random() % 3));
    std::sort(expected.begin() + first, expected.end());
    QuickSortStringArray(test.host, texts, first, last);
    ASSERT_EQ(texts, expected);
  }
  std::vector<std::string> many(20000, "x");
  EXPECT_TRUE(test.host.boxes.empty());
  QuickSortStringArray(test.host, many, 0, 19999);
  EXPECT_FALSE(test.host.boxes.empty());  // the second half's indices add up to more than 16 bits
}

TEST(Arrays, KeepToTheirCounts) {
  auto a = entries({{"a", 1}, {"a", 2}, {"b", 3}});
  EXPECT_TRUE(AreDuplicatesInArr_TwoStr(a, 3));
  EXPECT_FALSE(AreDuplicatesInArr_TwoStr(a, 1));
  EXPECT_EQ(GetElIndexInArr_TwoStr(a, 3, "b"), 2);
  EXPECT_EQ(GetElIndexInArr_TwoStr(a, 2, "b"), -1);
  EXPECT_EQ(GetElIndexInArr_TwoStr(a, 3, "A"), -1);
  ConcatenateArrays_TwoStr(a, a, 3, 0);
  EXPECT_EQ(names(a), "aab");
  ConcatenateArrays_TwoStr(a, a, 1, 3);
  EXPECT_EQ(names(a), "aaab");
  ConcatenateArrays_TwoStr(a, entries({{"c", 0}, {"d", 0}}), 0, 1);
  EXPECT_EQ(names(a), "c");
}

TEST(Arrays, TakeTheFirstFieldsOfEachRecord) {
  TestProgram test;
  test.load("s", "Shop",
            "CREATE TABLE t (n varchar(9), d varchar(9), i int)\nGO\n"
            "INSERT INTO t VALUES ('b', 'x', 2)\nINSERT INTO t VALUES ('a', 'y', -1)\n");
  const auto connection = std::make_shared<Connection>(test.data);
  connection->ConnectionString = "Provider=SQLOLEDB.1;Data Source=s;Initial Catalog=Shop";
  connection->Open();
  const auto open = [&](const char* sql) {
    Command command;
    command.ActiveConnection = connection;
    command.CommandText = sql;
    Recordset rs;
    rs.Open(command);
    return rs;
  };
  std::vector<TwoStr> items;
  std::vector<std::string> texts;
  long count = 9;
  Recordset rs = open("SELECT n, d, i FROM t ORDER BY n");
  rs.MoveLast();
  EXPECT_TRUE(ConvertRecordsetToTwoStrArray(test.host, rs, items, count, 50));
  ASSERT_EQ(count, 2);
  EXPECT_EQ(names(items), "ab");
  EXPECT_EQ(items[0].strRefDate, "y");
  EXPECT_EQ(items[0].lngId, -1);
  EXPECT_EQ(items[1].lngType, 50);
  EXPECT_TRUE(ConvertRecordsetToStrArray(test.host, rs, texts, count));
  EXPECT_EQ(texts, (std::vector<std::string>{"a", "b"}));
  rs.Close();
  EXPECT_TRUE(ConvertRecordsetToStrArray(test.host, rs, texts, count));
  EXPECT_EQ(count, 0);
  rs = open("SELECT n FROM t WHERE i > 5");
  EXPECT_TRUE(ConvertRecordsetToTwoStrArray(test.host, rs, items, count, 0));
  EXPECT_EQ(count, 0);
  EXPECT_TRUE(test.host.boxes.empty());
  rs = open("SELECT NULL");
  EXPECT_FALSE(ConvertRecordsetToStrArray(test.host, rs, texts, count));
  ASSERT_EQ(test.host.boxes.size(), 1u);
  EXPECT_EQ(test.host.boxes[0].title, "ConvertRecordsetToStrArray");
}

}  // namespace
}  // namespace qrel
