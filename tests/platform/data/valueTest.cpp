#include "platform/data/value.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "platform/data/columnStore.h"
#include "platform/data/dateText.h"
#include "platform/data/matchKey.h"
#include "platform/data/numberText.h"
#include "platform/error.h"

namespace qrel {
namespace {

std::string doubleText(double number) { return textOf(Value::ofDouble(number).cell()); }

TEST(Value, DoublesTakeTheShortestText) {
  const std::vector<std::pair<double, std::string>> cases = {{0, "0"},
                                                             {-0.0, "0"},
                                                             {1, "1"},
                                                             {0.1, "0.1"},
                                                             {-12.5, "-12.5"},
                                                             {0.1 + 0.2, "0.30000000000000004"},
                                                             {100, "100"},
                                                             {123456789012345678.0, "1.2345678901234568E+17"},
                                                             {1e15, "1000000000000000"},
                                                             {1e16, "1E+16"},
                                                             {0.00001, "0.00001"},
                                                             {0.000001, "1E-06"},
                                                             {-1.5e300, "-1.5E+300"}};
  for (const auto& [number, text] : cases) EXPECT_EQ(doubleText(number), text);
  std::mt19937_64 random(7);
  for (int i = 0; i < 2000; ++i) {
    const auto number = std::bit_cast<double>(random());
    if (number != number || number - number != 0) continue;
    EXPECT_EQ(doubleOf(doubleText(number)).value_or(0), number);
  }
}

TEST(Value, TextFormsOfTheOtherTypes) {
  EXPECT_EQ(textOf(Value::ofBoolean(true).cell()) + textOf(Value::ofBoolean(false).cell()), "TrueFalse");
  EXPECT_EQ(textOf(Value::ofInteger(std::numeric_limits<std::int64_t>::min()).cell()), "-9223372036854775808");
  EXPECT_EQ(textOf(Cell{}), "");
  EXPECT_EQ(textOf(Cell{.type = DataType::Binary, .null = false, .text = {"\x0F\xFF\0", 3}}), "0x0FFF00");
}

std::int32_t integerError(const Cell& cell) {
  try {
    integerOf(cell);
  } catch (const RuntimeError& error) {
    return error.number;
  }
  return 0;
}

TEST(Value, NumericValues) {
  const std::vector<std::pair<std::string, int>> texts = {{"12", 12},   {" -3 ", -3},    {"2.5", 2},   {"3.5", 4},
                                                          {"-2.5", -2}, {"1,000", 1000}, {"1e3", 1000}};
  for (const auto& [text, number] : texts) EXPECT_EQ(integerOf(Value::ofText(text).cell()), number) << text;
  EXPECT_EQ(integerOf(Value::ofBoolean(true).cell()), -1);
  EXPECT_EQ(integerOf(Value::ofDouble(2147483647.4).cell()), INT32_MAX);
  EXPECT_EQ(integerError(Cell{}), errorNumber::invalidUseOfNull);
  EXPECT_EQ(integerError(Value::ofText("12x").cell()), errorNumber::typeMismatch);
  EXPECT_EQ(integerError(Value::ofText("").cell()), errorNumber::typeMismatch);
  EXPECT_EQ(integerError(Value::ofDouble(2147483647.5).cell()), errorNumber::overflow);
  EXPECT_EQ(integerError(Value::ofInteger(-2147483649).cell()), errorNumber::overflow);
}

TEST(Value, DecimalsCompareExactly) {
  // Each group holds one value in several spellings; groups ascend.
  const std::vector<std::vector<std::string>> groups = {{"-100.5", "-0100.50"},
                                                        {"-100"},
                                                        {"-0.001"},
                                                        {"0", "-0", "0.000", "+0", "00"},
                                                        {"0.12345678901234567890123456789012345678"},
                                                        {"0.12345678901234567890123456789012345679"},
                                                        {"9", "9.0", "+9"},
                                                        {"10", "010.00"},
                                                        {"10.01"}};
  for (std::size_t i = 0; i < groups.size(); ++i) {
    for (std::size_t j = 0; j < groups.size(); ++j) {
      for (const std::string& a : groups[i]) {
        for (const std::string& b : groups[j]) {
          const int result = compareDecimals(a, b);
          EXPECT_EQ(result < 0, i < j) << a << " " << b;
          EXPECT_EQ(result > 0, i > j) << a << " " << b;
          EXPECT_EQ(plainDecimal(a) == plainDecimal(b), i == j) << a << " " << b;
        }
      }
    }
  }
}

TEST(Value, NumbersOfAnyTypeAreTheSameByValue) {
  const auto decimal = [](const char* text) {
    Value value = Value::ofText(text);
    value.type = DataType::Decimal;
    return value;
  };
  // Each group holds one number; no number is in two groups.
  const std::vector<std::vector<Value>> groups = {
      {decimal("1.50"), decimal("1.5000"), decimal("+01.5"), Value::ofDouble(1.5)},
      {decimal("1.0"), decimal("1"), Value::ofInteger(1), Value::ofDouble(1)},
      {decimal("0.1"), Value::ofDouble(0.1)},
      {decimal("0.10000000000000001")},
      {decimal("100000000000000000000"), Value::ofDouble(1e20)},
      {decimal("9007199254740993"), Value::ofInteger(9007199254740993)},
      {Value::ofDouble(9007199254740992), Value::ofInteger(9007199254740992)},
      {decimal("-0.00"), Value::ofInteger(0), Value::ofDouble(-0.0), Value::ofDouble(0)},
      {decimal("-0.0000001"), Value::ofDouble(-1e-7)}};
  for (std::size_t i = 0; i < groups.size(); ++i)
    for (std::size_t j = 0; j < groups.size(); ++j)
      for (const Value& a : groups[i])
        for (const Value& b : groups[j]) {
          EXPECT_EQ(sameNumber(a.cell(), b.cell()), i == j) << textOf(a.cell()) << " " << textOf(b.cell());
          EXPECT_EQ(compareCells(a.cell(), b.cell()) == 0, i == j) << textOf(a.cell()) << " " << textOf(b.cell());
        }
  EXPECT_LT(compareCells(Value::ofDouble(1e20).cell(), decimal("100000000000000000001").cell()), 0);
  for (const Value& other : {Value{}, Value::ofText("1"), Value::ofBoolean(true)})
    EXPECT_FALSE(sameNumber(Value::ofInteger(1).cell(), other.cell())) << textOf(other.cell());
}

TEST(Value, PlainDecimals) {
  const std::vector<std::pair<std::string, std::string>> good = {
      {"1,000.50", "1000.5"}, {"1.0005e3", "1000.5"}, {"5E-3", "0.005"}, {".5", "0.5"}, {"7.", "7"},
      {"1e2", "100"},         {"-0.0", "0"},          {"1.25e1", "12.5"}};
  for (const auto& [text, plain] : good) EXPECT_EQ(plainDecimal(text).value_or("none"), plain) << text;
  for (const char* bad : {"", ".", "-", "1x", "1e", "1e999", "1,", ",1", "1 2", "0x10", "1.2.3", "e5"}) {
    EXPECT_FALSE(plainDecimal(bad)) << bad;
  }
}

TEST(Value, DatesCompareByMoment) {
  const std::vector<std::vector<std::string>> groups = {
      {"1899-12-30 10:00", "10:00:00"},
      {"2020-02-29", "20200229", "2/29/2020", "2020/02/29 00:00", "2020-02-29 12:00:00 AM"},
      {"2020-02-29 13:05:06.5", "2020-02-29T13:05:06.5000000", "2/29/2020 1:05:06.5 PM",
       "2020-02-29 15:05:06.5 +02:00"},
      {"9999-12-31 23:59:59.9999999"}};
  for (std::size_t i = 0; i < groups.size(); ++i) {
    for (const std::string& text : groups[i]) {
      ASSERT_TRUE(dateTicks(text)) << text;
      EXPECT_EQ(*dateTicks(text), *dateTicks(groups[i][0])) << text;
      if (i > 0) {
        EXPECT_GT(*dateTicks(text), *dateTicks(groups[i - 1][0])) << text;
      }
    }
  }
  for (const char* bad :
       {"", "2021-02-29", "2020-13-01", "2020-1", "Null", "24:00", "2020-01-01 ", "12", "2020-01-01x"}) {
    EXPECT_EQ(dateTicks(bad).has_value(), std::string(bad) == "2020-01-01 ") << bad;
  }
}

TEST(ColumnStore, KeepsRowsAndRewritesMixedColumns) {
  ColumnStore store(std::vector<DataType>{DataType::Empty, DataType::Text});
  const std::string longText(3'000'000, 'z');
  for (int round = 0; round < 2; ++round) {
    store.appendNull(0);
    store.appendText(1, DataType::Text, "");
    store.appendInteger(0, 7);
    store.appendText(1, DataType::Text, longText);
    EXPECT_EQ(store.type(0), DataType::Integer);
    store.appendDouble(0, 1.5);
    EXPECT_EQ(store.rowCount(), 2u);  // the third row isn't whole yet
    store.appendNull(1);
    store.appendText(0, DataType::Binary, "\x01");
    store.appendText(1, DataType::Text, "end");
    EXPECT_EQ(store.type(0), DataType::Text);
    EXPECT_TRUE(store.cell(0, 0).null && store.isNull(1, 2));
    EXPECT_EQ(textOf(store.cell(0, 1)) + "|" + textOf(store.cell(0, 2)) + "|" + textOf(store.cell(0, 3)), "7|1.5|0x01");
    EXPECT_FALSE(store.cell(1, 0).null);
    EXPECT_EQ(store.cell(1, 1).text, longText);
    EXPECT_EQ(store.cell(1, 3).text, "end");
    store.clear();
    EXPECT_EQ(store.rowCount(), 0u);
  }
}

// More rows than one piece of a column holds, texts of every length up to where the length takes more room, each twice.
TEST(ColumnStore, KeepsManyRows) {
  ColumnStore store(std::vector<DataType>{DataType::Integer, DataType::Text});
  constexpr std::size_t rows = 600'000;
  const std::string text(300, 't');
  const auto textOfRow = [&](std::size_t row) { return std::string_view(text).substr(0, row / 2 % (text.size() + 1)); };
  for (int round = 0; round < 2; ++round) {
    for (std::size_t row = 0; row < rows; ++row) {
      store.appendInteger(0, static_cast<std::int64_t>(row) - 5);
      if (row % 7 == 3) {
        store.appendNull(1);
      } else {
        store.appendText(1, DataType::Text, textOfRow(row));
      }
    }
    ASSERT_EQ(store.rowCount(), rows);
    for (std::size_t row = 0; row < rows; ++row) {
      ASSERT_EQ(store.cell(0, row).integer, static_cast<std::int64_t>(row) - 5);
      ASSERT_EQ(store.isNull(1, row), row % 7 == 3);
      ASSERT_EQ(store.cell(1, row).text, row % 7 == 3 ? "" : textOfRow(row)) << row;
    }
    store.clear();
  }
}

}  // namespace
}  // namespace qrel
