// The sort of line arrays keeps the order of equal keys that the exchange of all pairs gives.
#include <gtest/gtest.h>

#include <random>

#include "compare/structure/modIgnoreColumnsOrder.h"
#include "compare/structure/modSortTypeArrays.h"
#include "platform/controls/textPane.h"
#include "platform/text.h"
#include "tests/support.h"

namespace qrel {
namespace {

CompLineArray arrayOf(const std::vector<std::string>& lines) {
  CompLineArray arr;
  for (const auto& line : lines) arr.add({line, static_cast<std::int32_t>(arr.count()), 0, 0});
  return arr;
}

void exchangeAllPairs(CompLineArray& arr, bool ascending, bool ignoreCase) {
  const auto key = [&](long i) { return ignoreCase ? lowerCase(arr[i].strLine) : arr[i].strLine; };
  for (long i = 1; i <= arr.count(); ++i) {
    for (long j = 1; j <= arr.count(); ++j) {
      const int compared = compareBinary(key(i), key(j));
      if (ascending ? compared < 0 : compared > 0) std::swap(arr[i], arr[j]);
    }
  }
}

std::string orderOf(const CompLineArray& arr) {
  std::string order;
  for (const CompLine& line : arr) order += line.strLine + std::to_string(line.lngMark) + " ";
  return order;
}

// Both directions, with and without case. False after the first failure.
bool sortsAsExchanging(Program& program, const std::vector<std::string>& lines) {
  for (const bool ascending : {true, false}) {
    for (const bool ignoreCase : {true, false}) {
      CompLineArray expected = arrayOf(lines);
      CompLineArray sorted = arrayOf(lines);
      exchangeAllPairs(expected, ascending, ignoreCase);
      if (!SortArray_CompLine(program, sorted, ascending, ignoreCase) || orderOf(sorted) != orderOf(expected)) {
        ADD_FAILURE() << orderOf(arrayOf(lines)) << "gave " << orderOf(sorted) << "not " << orderOf(expected)
                      << ascending << ignoreCase;
        return false;
      }
    }
  }
  return true;
}

TEST(SortArray, GivesTheOrderOfTheExchangesForAllSmallArrays) {
  TestProgram test;
  const std::vector<std::string> keys = {"a", "A", "b", "c"};
  for (std::size_t length = 0; length <= 6; ++length) {
    const auto cases = static_cast<std::size_t>(1) << (2 * length);
    for (std::size_t number = 0; number < cases; ++number) {
      std::vector<std::string> lines;
      for (std::size_t i = 0; i < length; ++i) lines.push_back(keys[number >> (2 * i) & 3]);
      if (!sortsAsExchanging(test.program, lines)) return;
    }
  }
}

TEST(SortArray, GivesTheOrderOfTheExchangesForLongRunsOfTies) {
  TestProgram test;
  std::mt19937 random(1);
  const std::vector<std::string> keys = {"x", "X", "", "Y", "y", "é", "É", "\xEF\xBD\x81", "\xF0\x9F\x98\x80", "zz"};
  for (int round = 0; round < 200; ++round) {
    std::vector<std::string> lines(random() % 90);
    const std::size_t kinds = 1 + random() % keys.size();
    for (auto& line : lines) line = keys[random() % kinds];
    if (!sortsAsExchanging(test.program, lines)) return;
  }
}

TEST(SortArray, TakesTheGreatestArrayAndRefusesOneLineMore) {
  TestProgram test;
  CompLineArray arr = arrayOf(std::vector<std::string>(32767, "same"));
  const std::string before = orderOf(arr);
  EXPECT_TRUE(SortArray_CompLine(test.program, arr, true, true));
  EXPECT_EQ(orderOf(arr), before);

  TextPane pane("txtTXProc(0)");
  pane.setText(std::string(32767, '\n'));  // 32,768 lines
  test.host.windows.push_back([](Form&) {});
  EXPECT_FALSE(CompareProcs_IgnoreColumnsOrder(test.program, pane, pane));
  EXPECT_EQ(test.host.shown, std::vector<std::string>{"frmErrorReport"});
}

TEST(IgnoreColumnsOrder, ComparesLinesAsACollection) {
  struct Case {
    const char* source;
    const char* target;
    bool same;
  };
  // The lines a, A and b, in the orders given, are sorted to A a b, to a A b and to A a b.
  const Case cases[] = {{"a\r\nb\r\nc", "b\r\na\r\nc", true},
                        {"a\r\nb\r\nc", "c\nb\ra", true},
                        {"a\r\nb\r\n", "b\r\na\r\n", true},
                        {"a\nA\nb", "a\nb\nA", false},
                        {"a\nA\nb", "b\nA\na", true},
                        {"a\na\nb", "a\nb\nb", false},
                        {"a\nb", "A\nb", false},
                        {"a\nb", "a\nb\n", false},
                        {"", "", true}};
  TestProgram test;
  for (const Case& each : cases) {
    TextPane source("s"), target("t");
    source.setText(each.source);
    target.setText(each.target);
    EXPECT_EQ(CompareProcs_IgnoreColumnsOrder(test.program, source, target), each.same)
        << each.source << " and " << each.target;
  }
}

}  // namespace
}  // namespace qrel
