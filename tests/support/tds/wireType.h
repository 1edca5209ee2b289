// How the values of a column stand in an answer: the type that a column of a result has on the wire, and its values.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/data/provider.h"
#include "platform/data/value.h"

namespace qrel::tds {

// The first byte of a type.
enum class WireKind : std::uint8_t {
  Image = 0x22,
  Text = 0x23,
  Guid = 0x24,
  Integer = 0x26,
  Date = 0x28,
  Time = 0x29,
  DateTime2 = 0x2A,
  DateTimeOffset = 0x2B,
  Variant = 0x62,
  NText = 0x63,
  Bit = 0x68,
  Decimal = 0x6A,
  Numeric = 0x6C,
  Float = 0x6D,
  Money = 0x6E,
  DateTime = 0x6F,
  VarBinary = 0xA5,
  VarChar = 0xA7,
  Binary = 0xAD,
  Char = 0xAF,
  NVarChar = 0xE7,
  NChar = 0xEF,
  Udt = 0xF0,
  Xml = 0xF1,
};

class WireType {
 public:
  // As the server reports the column. What has no type name is an expression: integers are bigint, numbers float, bytes
  // varbinary, all else nvarchar; of any length unless `isShort` says that no text has over 4,000 characters and no
  // binary value over 8,000 bytes.
  static WireType of(const ColumnInfo& column, bool isShort = false);

  WireKind kind() const { return kind_; }
  std::uint32_t userType() const;
  // The type with its sizes, as it stands in front of a column's name.
  std::string info() const;
  // text, ntext and image tell their table.
  bool namesTable() const;
  // Whether a value may be longer than 8,000 bytes.
  bool isLong() const;

  // Appends a value as it stands in a row. Raises DataError for one that isn't of the type.
  void append(std::string& out, const Cell& cell) const;

 private:
  WireType(WireKind kind, std::uint16_t size, int precision = 0, int scale = 0)
      : kind_(kind), size_(size), precision_(precision), scale_(scale) {}

  void appendNull(std::string& out) const;
  void appendBytes(std::string& out, std::string_view bytes) const;

  static constexpr std::uint16_t maximal = 0xFFFF;

  WireKind kind_;
  std::uint16_t size_;  // bytes; maximal: any number
  int precision_;
  int scale_;
  bool rowVersion_ = false;
  std::string udtName_;
};

}  // namespace qrel::tds
