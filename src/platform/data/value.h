// Values of the data access layer: their types, the view of one cell, an owned value, and their one text form.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qrel {

enum class DataType : std::uint8_t {
  Empty,    // nothing known yet: a column that has held only Nulls
  Boolean,  // integer 0 or 1
  Integer,  // 64 bits
  Double,
  Decimal,  // text, exact, in the text form below (decimal, numeric, money)
  Date,     // text in the text form below (date, time, datetime, datetime2, datetimeoffset, smalldatetime)
  Guid,     // text in the text form below
  Text,
  Binary,  // raw bytes
};

// One cell as it stands in a record set. `text` holds the bytes for Decimal, Date, Guid, Text and Binary and belongs to
// the record set: it lives until the record set moves to other rows or closes.
struct Cell {
  DataType type = DataType::Empty;
  bool null = true;
  std::int64_t integer = 0;
  double real = 0;
  std::string_view text{};
};

// A value that owns its text: parameters and results.
struct Value {
  DataType type = DataType::Empty;
  bool null = true;
  std::int64_t integer = 0;
  double real = 0;
  std::string text{};

  Value() = default;
  explicit Value(const Cell& cell);
  static Value ofText(std::string text);
  static Value ofInteger(std::int64_t number);
  static Value ofDouble(double number);
  static Value ofBoolean(bool flag);
  Cell cell() const;
};

// The text form, the same whichever provider read the value. Null gives an empty string: test `null` first.
// Booleans True/False; integers plain; decimals with their column's scale; doubles in the shortest form that reads back
// the same; dates yyyy-mm-dd and, where there is a time, " hh:mm:ss" with a fraction only when it isn't zero; GUIDs
// {...} in upper case; binary 0x and upper-case hexadecimal digits.
std::string textOf(const Cell& cell);
void appendText(std::string& out, const Cell& cell);

// The numeric value of a cell as 32 bits (booleans: True is -1). Null raises error 94, text that is no number 13, a
// number out of range 6.
std::int32_t integerOf(const Cell& cell);

// Orders two decimal texts by value, exactly: negative, 0, positive. Leading zeros, signs and trailing zeros of the
// fraction don't count.
int compareDecimals(std::string_view a, std::string_view b);

}  // namespace qrel
