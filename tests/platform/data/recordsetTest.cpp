#include "platform/data/recordset.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/error.h"
#include "tests/platform/data/fakeRows.h"

namespace qrel {
namespace {

// One column of numbers 0, 1, 2, ... and one of texts.
Recordset numbers(int count, int location, std::size_t cacheSize, std::shared_ptr<FakeUse> use = nullptr) {
  std::vector<FakeRow> rows;
  for (int i = 0; i < count; ++i) rows.push_back({std::to_string(i), "text " + std::to_string(i)});
  Recordset rs;
  rs.CursorLocation = location;
  rs.CacheSize = cacheSize;
  rs.Open(std::make_unique<FakeRows>(
      std::vector<ColumnInfo>{fakeColumn("N", DataType::Integer), fakeColumn("T", DataType::Text)}, std::move(rows),
      std::move(use)));
  return rs;
}

// First column of all records from the current one on.
std::string rest(Recordset& rs) {
  std::string text;
  for (; !rs.Eof(); rs.MoveNext()) text += (text.empty() ? "" : " ") + rs.Fields(0).Text();
  return text;
}

std::string all(Recordset& rs) {
  rs.MoveFirst();
  return rest(rs);
}

template <typename Action>
std::int32_t errorOf(Action action) {
  try {
    action();
  } catch (const RuntimeError& error) {
    return error.number;
  }
  return 0;
}

struct Cursor {
  int location;
  std::size_t cacheSize;
};

class Cursors : public ::testing::TestWithParam<Cursor> {
 protected:
  Recordset open(int count, std::shared_ptr<FakeUse> use = nullptr) {
    return numbers(count, GetParam().location, GetParam().cacheSize, std::move(use));
  }
};
INSTANTIATE_TEST_SUITE_P(All, Cursors,
                         ::testing::Values(Cursor{adUseClient, 1}, Cursor{adUseServer, 1}, Cursor{adUseServer, 3},
                                           Cursor{adUseServer, 4}, Cursor{adUseServer, 100}));

TEST_P(Cursors, ScrollAlike) {
  Recordset rs = open(8);
  EXPECT_EQ(rest(rs), "0 1 2 3 4 5 6 7");
  EXPECT_TRUE(rs.Eof());
  EXPECT_FALSE(rs.Bof());
  EXPECT_EQ(errorOf([&] { rs.MoveNext(); }), errorNumber::noCurrentRecord);
  EXPECT_EQ(errorOf([&] { rs.Fields(0); }), errorNumber::noCurrentRecord);
  EXPECT_EQ(all(rs), "0 1 2 3 4 5 6 7");
  rs.MoveFirst();
  rs.MoveNext();
  EXPECT_EQ(rs.RecordCount(), 8);
  EXPECT_EQ(rs.Fields("t").Text(), "text 1");
  rs.MoveLast();
  EXPECT_EQ(rs.Fields("T").Text(), "text 7");
  EXPECT_FALSE(rs.Eof());
  rs.MoveNext();
  EXPECT_TRUE(rs.Eof());
  EXPECT_EQ(rs.RecordCount(), 8);
  EXPECT_EQ(errorOf([&] { rs.Fields("none"); }), errorNumber::itemNotFound);
  EXPECT_EQ(errorOf([&] { rs.Fields(2); }), errorNumber::itemNotFound);
  EXPECT_EQ(rs.FieldIndex("none"), -1);
  rs.Close();
  EXPECT_EQ(rs.State(), adStateClosed);
  EXPECT_EQ(errorOf([&] { rs.MoveFirst(); }), errorNumber::objectClosed);
}

TEST_P(Cursors, AnEmptySetIsAtBothEnds) {
  Recordset rs = open(0);
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(rs.Bof() && rs.Eof());
    EXPECT_EQ(rs.RecordCount(), 0);
    EXPECT_EQ(rs.State(), adStateOpen);
    EXPECT_EQ(errorOf([&] { rs.MoveNext(); }), errorNumber::noCurrentRecord);
    rs.MoveFirst();
    rs.MoveLast();
  }
  EXPECT_EQ(rs.FieldCount(), 2u);
}

TEST_P(Cursors, WhatNeedsAllRowsKeepsThePlace) {
  const std::vector<std::pair<const char*, void (*)(Recordset&)>> uses = {
      {"bookmark", [](Recordset& rs) { rs.MoveToBookmark(rs.Bookmark()); }},
      {"clone", [](Recordset& rs) { rs.Clone().MoveLast(); }},
      {"find", [](Recordset& rs) { rs.Find("N = 5"); }},
      {"delete", [](Recordset& rs) { rs.Clone().Delete(); }}};
  for (const auto& [name, use] : uses) {
    Recordset rs = open(8);
    for (int i = 0; i < 5; ++i) rs.MoveNext();
    use(rs);
    EXPECT_EQ(rs.Fields(1).Text(), "text 5") << name;
    EXPECT_EQ(rest(rs), "5 6 7") << name;
    EXPECT_EQ(all(rs).back(), '7') << name;
  }
}

TEST(Recordset, AWindowHoldsNoMoreThanCacheSize) {
  const auto use = std::make_shared<FakeUse>();
  Recordset rs = numbers(1000, adUseServer, 5, use);
  EXPECT_EQ(errorOf([&] { rs.Disconnect(); }), errorNumber::operationNotAllowed);
  rest(rs);
  rs.MoveLast();
  EXPECT_EQ(rs.RecordCount(), 1000);
  EXPECT_EQ(use->mostAtOnce, 5u);
  EXPECT_LE(use->rewinds, 1);
  EXPECT_FALSE(use->ended);
  rs.Filter("N = 999");
  EXPECT_EQ(rest(rs), "999");
  EXPECT_TRUE(use->ended);  // nothing holds the connection any more
  rs.Disconnect();
}

TEST(Recordset, AClientSetIsDisconnectedAtOnce) {
  const auto use = std::make_shared<FakeUse>();
  Recordset rs = numbers(1000, adUseClient, 5, use);
  EXPECT_TRUE(use->ended);
  EXPECT_EQ(use->rewinds + use->counts, 0);
  rs.Disconnect();
  EXPECT_EQ(rs.RecordCount(), 1000);
}

// Every type with values and the literals that mean them.
class Literals : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::vector<ColumnInfo> columns = {
        fakeColumn("Id", DataType::Integer),    fakeColumn("Whole", DataType::Integer),
        fakeColumn("Exact", DataType::Decimal), fakeColumn("Real", DataType::Double),
        fakeColumn("Flag", DataType::Boolean),  fakeColumn("When", DataType::Date),
        fakeColumn("Mark", DataType::Guid),     fakeColumn("Raw", DataType::Binary),
        fakeColumn("My Text]", DataType::Text), fakeColumn("None", DataType::Empty)};
    const std::string guid = "{0123ABCD-0000-0000-0000-00000000000A}";
    rs_.Open(std::make_unique<FakeRows>(
        columns, std::vector<FakeRow>{
                     {"1", "1000", "1000.5000", "0.1", "1", "2020-02-29 13:05:06.5", guid, "\x0F\xFF", "O'Brien ", {}},
                     {"2", "-1", "-0.0100", "100000", "0", "2020-02-29", {}, "", "Null", {}},
                     {"3", {}, {}, {}, {}, {}, {}, {}, {}, {}},
                     {"4", "7", "0.0000", "-2.5", "1", "1999-01-01", {}, {}, "", {}}}));
  }
  std::string matches(const std::string& conditions) {
    rs_.Filter("");
    rs_.Filter(conditions);
    return rest(rs_);
  }

  Recordset rs_;
};

TEST_F(Literals, MatchByValue) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"Whole = '1000'", "1"},
      {"Whole = '1,000'", "1"},
      {"whole=1e3", "1"},
      {"Whole = ' 1000.00 '", "1"},
      {"Whole = 1000.5", ""},
      {"Whole < 7.5", "2 4"},
      {"Whole = 99999999999999999999", ""},
      {"Whole <> 7", "1 2"},
      {"Exact = '1,000.50'", "1"},
      {"Exact = -.01", "2"},
      {"Exact = 0", "4"},
      {"Exact >= 0", "1 4"},
      {"Real = '0.1'", "1"},
      {"Real = 1E+05", "2"},
      {"Real <= 0.1", "1 4"},
      {"Flag = 'True'", "1 4"},
      {"Flag = 0", "2"},
      {"Flag = -1", "1 4"},
      {"When = '2020-02-29 13:05:06.500'", "1"},
      {"When = #2/29/2020#", "2"},
      {"When > 2020-02-29 00:00", "1"},
      {"Mark = '{0123abcd-0000-0000-0000-00000000000a}'", "1"},
      {"Mark = '0123ABCD-0000-0000-0000-00000000000A'", "1"},
      {"Raw = '0x0fff'", "1"},
      {"Raw = '0x'", "2"},
      {"[My Text]]] = 'o''BRIEN'", "1"},
      {"[My Text]]] = 'Null'", "2"},
      {"[My Text]]] = ''", "4"},
      {"[My Text]]] = '   '", "4"},
      {"[My Text]]] LIKE 'o*'", "1"},
      {"[My Text]]] like '%RI%'", "1"},
      {"[My Text]]] LIKE '*'", "1 2 4"},
      {"[My Text]]] = 5", ""},
      {"Whole = NULL", "3"},
      {"Whole <> null", "1 2 4"},
      {"[My Text]]] = NULL", "3"},
      {"None = NULL", "1 2 3 4"},
      {"None = 'x'", ""},
      {"Flag = 1 AND Whole > 5 and When = NULL", ""},
      {"Flag = 1 AND Whole > 5 AND Mark = NULL", "4"},
      {"Flag = 1 AND Flag = 0", ""},
      {"Whole = 7 AND Exact = 0 AND Real = -2.5", "4"},
      {"Real = '-25E-1'", "4"},
      {"Real = '-2.500000000000000001'", ""},  // more digits than a double tells
      {"Real > -2.500000000000000001 AND Id = 4", "4"}};
  for (const auto& [conditions, expected] : cases) EXPECT_EQ(matches(conditions), expected) << conditions;
}

TEST_F(Literals, RefusesWhatItCannotReadAndKeepsTheFilter) {
  rs_.Filter("Id > 2");
  for (const char* bad : {"Whole = 'x'",
                          "Whole = ''",
                          "Whole = 'Null'",
                          "Exact = 'abc'",
                          "Real = '1.5.2'",
                          "When = 'soon'",
                          "Flag = 'maybe'",
                          "Mark = 'x'",
                          "Raw = 'x'",
                          "Raw = '0x0'",
                          "Id",
                          "Id =",
                          "Id = 1 AND",
                          "Id = 1 OR Id = 2",
                          "= 1",
                          "Id = '1",
                          "[Id = 1",
                          "My Text] = 'x'",
                          "Id == 1",
                          "Id = 1 Id = 2",
                          "[My Text]]] = bare",
                          "Whole LIKE '1*'",
                          "Whole < NULL",
                          "Id = 'a' b"}) {
    EXPECT_EQ(errorOf([&] { rs_.Filter(bad); }), errorNumber::argumentsOutOfRange) << bad;
    EXPECT_EQ(errorOf([&] { rs_.Find(bad); }), errorNumber::argumentsOutOfRange) << bad;
  }
  EXPECT_EQ(errorOf([&] { rs_.Filter("Missing = 1"); }), errorNumber::itemNotFound);
  EXPECT_EQ(errorOf([&] { rs_.Find("Id = 1 AND Flag = 1"); }), errorNumber::argumentsOutOfRange);
  EXPECT_EQ(errorOf([&] { rs_.Find(""); }), errorNumber::argumentsOutOfRange);
  EXPECT_EQ(errorOf([&] { rs_.Sort("Id UP"); }), errorNumber::argumentsOutOfRange);
  EXPECT_EQ(all(rs_), "3 4");
}

TEST_F(Literals, SortsByValueWithNullsFirst) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"Whole", "3 2 4 1"},       {"Exact DESC", "1 4 2 3"},           {"Real asc", "3 4 1 2"},  {"When", "3 4 2 1"},
      {"[My Text]]]", "3 4 2 1"}, {"Flag DESC, [Id] DESC", "4 1 2 3"}, {"Flag DESC", "1 4 2 3"}, {"", "1 2 3 4"}};
  for (const auto& [columns, expected] : cases) {
    rs_.Sort(columns);
    EXPECT_EQ(rest(rs_), expected) << columns;
  }
}

TEST(Recordset, DeleteLeavesEofUntilTheNextMove) {
  Recordset rs = numbers(3, adUseClient, 1);
  Recordset clone = rs.Clone();
  rs.MoveLast();
  rs.Delete();
  EXPECT_FALSE(rs.Eof());
  EXPECT_EQ(errorOf([&] { rs.Fields(0); }), errorNumber::noCurrentRecord);
  EXPECT_EQ(errorOf([&] { rs.Delete(); }), errorNumber::noCurrentRecord);
  EXPECT_EQ(rs.RecordCount(), 2);
  rs.MoveNext();
  EXPECT_TRUE(rs.Eof());
  EXPECT_EQ(all(clone), "0 1");
  for (int i = 0; i < 2; ++i) {
    rs.MoveFirst();
    rs.Delete();
    EXPECT_FALSE(rs.Eof());
  }
  rs.MoveFirst();
  EXPECT_TRUE(rs.Bof() && rs.Eof());
}

TEST(Recordset, ABookmarkLeadsToARecordThatTheFilterHides) {
  Recordset rs = numbers(6, adUseClient, 1);
  rs.MoveNext();
  rs.MoveNext();
  const std::int64_t two = rs.Bookmark();
  rs.Filter("T LIKE '*1' ");
  rs.MoveToBookmark(two);
  EXPECT_EQ(rs.Fields(0).Text(), "2");
  rs.MoveNext();
  EXPECT_TRUE(rs.Eof());
  rs.Filter("N > 2");
  rs.MoveToBookmark(two);
  EXPECT_EQ(rest(rs), "2 3 4 5");
  EXPECT_EQ(errorOf([&] { rs.Find("N = 2"); }), errorNumber::noCurrentRecord);
  rs.Find("N = 4", true);
  EXPECT_EQ(rest(rs), "4 5");
  rs.MoveToBookmark(two);
  rs.Delete();
  EXPECT_EQ(errorOf([&] { rs.MoveToBookmark(two); }), errorNumber::noCurrentRecord);
  EXPECT_EQ(errorOf([&] { rs.MoveToBookmark(6); }), errorNumber::noCurrentRecord);
}

// A search per record with a deletion behind each match, as a comparison by key does it: all keys alike, keys that are
// found from the end on, and every second key missing. A walk per search would take minutes.
TEST(Recordset, KeyedSearchesStayCheapUnderDeletion) {
  const auto start = std::chrono::steady_clock::now();
  constexpr int count = 40'000;
  for (const char* kind : {"same", "reverse", "missing"}) {
    std::vector<FakeRow> rows;
    for (int i = 0; i < count; ++i) rows.push_back({kind == std::string("same") ? "7" : std::to_string(i), "x"});
    Recordset rs;
    rs.CursorLocation = adUseClient;
    rs.Open(std::make_unique<FakeRows>(
        std::vector<ColumnInfo>{fakeColumn("K", DataType::Integer), fakeColumn("T", DataType::Text)}, std::move(rows)));
    int found = 0;
    for (int i = 0; i < count && !rs.Eof(); ++i, rs.MoveFirst()) {
      const int key = kind == std::string("same")      ? 7
                      : kind == std::string("reverse") ? count - 1 - i
                                                       : -(i % 2) * 2 - i;
      const std::string condition = "K = '" + std::to_string(key < 0 && key % 2 == 0 ? -key : key) + "'";
      if (i % 2 == 0) {
        rs.Find(condition);
      } else {
        Recordset clone = rs.Clone();
        clone.Filter(condition + " AND T = 'X'");
        if (clone.Eof()) {
          rs.MoveLast();
          rs.MoveNext();
        } else {
          rs.MoveToBookmark(clone.Bookmark());
        }
      }
      if (rs.Eof()) continue;
      ++found;
      rs.Delete();
    }
    EXPECT_EQ(rs.RecordCount(), count - found) << kind;
    if (kind != std::string("missing")) {
      EXPECT_EQ(found, count) << kind;
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

}  // namespace
}  // namespace qrel
