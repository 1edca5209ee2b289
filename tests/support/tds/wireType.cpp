#include "tests/support/tds/wireType.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "platform/error.h"
#include "platform/text.h"
#include "tests/support/tds/bytes.h"
#include "tests/support/tds/tokens.h"
#include "tests/support/tds/wireValue.h"

namespace qrel::tds {

namespace {

constexpr std::uint32_t largestText = 0x7FFFFFFF, largestWideText = 0x7FFFFFFE, largestVariant = 8009;
constexpr std::size_t chunk = 8000;

struct NamedKind {
  std::string_view name;
  WireKind kind;
  std::uint16_t size;  // bytes; 0: as declared
};

constexpr std::array namedKinds = std::to_array<NamedKind>({
    {"tinyint", WireKind::Integer, 1},
    {"smallint", WireKind::Integer, 2},
    {"int", WireKind::Integer, 4},
    {"bigint", WireKind::Integer, 8},
    {"bit", WireKind::Bit, 1},
    {"decimal", WireKind::Decimal, 0},
    {"numeric", WireKind::Numeric, 0},
    {"smallmoney", WireKind::Money, 4},
    {"money", WireKind::Money, 8},
    {"real", WireKind::Float, 4},
    {"float", WireKind::Float, 8},
    {"smalldatetime", WireKind::DateTime, 4},
    {"datetime", WireKind::DateTime, 8},
    {"date", WireKind::Date, 0},
    {"time", WireKind::Time, 0},
    {"datetime2", WireKind::DateTime2, 0},
    {"datetimeoffset", WireKind::DateTimeOffset, 0},
    {"uniqueidentifier", WireKind::Guid, 16},
    {"char", WireKind::Char, 0},
    {"varchar", WireKind::VarChar, 0},
    {"nchar", WireKind::NChar, 0},
    {"nvarchar", WireKind::NVarChar, 0},
    {"sysname", WireKind::NVarChar, 0},
    {"binary", WireKind::Binary, 0},
    {"varbinary", WireKind::VarBinary, 0},
    {"timestamp", WireKind::Binary, 8},
    {"text", WireKind::Text, 0},
    {"ntext", WireKind::NText, 0},
    {"image", WireKind::Image, 0},
    {"xml", WireKind::Xml, 0},
    {"sql_variant", WireKind::Variant, 0},
    {"hierarchyid", WireKind::Udt, 892},
    {"geometry", WireKind::Udt, 0},
    {"geography", WireKind::Udt, 0},
});

bool isWide(WireKind kind) {
  return kind == WireKind::NChar || kind == WireKind::NVarChar || kind == WireKind::NText || kind == WireKind::Xml;
}

bool isNarrow(WireKind kind) { return kind == WireKind::Char || kind == WireKind::VarChar || kind == WireKind::Text; }

bool hasDeclaredSize(WireKind kind) {
  return kind == WireKind::Char || kind == WireKind::VarChar || kind == WireKind::NChar || kind == WireKind::NVarChar ||
         kind == WireKind::Binary || kind == WireKind::VarBinary;
}

}  // namespace

WireType WireType::of(const ColumnInfo& column, bool isShort) {
  const std::uint16_t untypedSize = isShort ? 8000 : maximal;
  const auto named = std::find_if(namedKinds.begin(), namedKinds.end(),
                                  [&](const NamedKind& each) { return each.name == column.typeName; });
  if (named == namedKinds.end()) {
    switch (column.type) {
      case DataType::Boolean:
        return {WireKind::Bit, 1};
      case DataType::Integer:
        return {WireKind::Integer, 8};
      case DataType::Double:
        return {WireKind::Float, 8};
      case DataType::Binary:
        return {WireKind::VarBinary, untypedSize};
      default:
        return {WireKind::NVarChar, untypedSize};
    }
  }
  WireType type(named->kind, named->size, column.precision, column.scale);
  if (hasDeclaredSize(type.kind_) && type.size_ == 0) {
    const int bytes = column.precision * (isWide(type.kind_) ? 2 : 1);
    type.size_ = bytes <= 0 ? maximal : static_cast<std::uint16_t>(std::min(bytes, 8000));
  }
  type.rowVersion_ = column.typeName == "timestamp";
  if (type.kind_ == WireKind::Udt) {
    type.udtName_ = column.typeName;
    if (type.size_ == 0) type.size_ = maximal;
  }
  return type;
}

std::uint32_t WireType::userType() const { return rowVersion_ ? 80 : 0; }

bool WireType::namesTable() const {
  return kind_ == WireKind::Text || kind_ == WireKind::NText || kind_ == WireKind::Image;
}

bool WireType::isLong() const {
  return namesTable() || kind_ == WireKind::Xml || kind_ == WireKind::Udt || size_ == maximal;
}

std::string WireType::info() const {
  ByteWriter out;
  out.u8(static_cast<std::uint8_t>(kind_));
  switch (kind_) {
    case WireKind::Integer:
    case WireKind::Bit:
    case WireKind::Float:
    case WireKind::Money:
    case WireKind::DateTime:
    case WireKind::Guid:
      return out.u8(size_).bytes();
    case WireKind::Decimal:
    case WireKind::Numeric:
      return out.u8(decimalWidth(precision_) + 1).u8(precision_).u8(scale_).bytes();
    case WireKind::Time:
    case WireKind::DateTime2:
    case WireKind::DateTimeOffset:
      return out.u8(scale_).bytes();
    case WireKind::Char:
    case WireKind::VarChar:
    case WireKind::NChar:
    case WireKind::NVarChar:
      return out.u16(size_).raw(collation).bytes();
    case WireKind::Binary:
    case WireKind::VarBinary:
      return out.u16(size_).bytes();
    case WireKind::Text:
      return out.u32(largestText).raw(collation).bytes();
    case WireKind::NText:
      return out.u32(largestWideText).raw(collation).bytes();
    case WireKind::Image:
      return out.u32(largestText).bytes();
    case WireKind::Variant:
      return out.u32(largestVariant).bytes();
    case WireKind::Udt:
      return out.u16(size_).shortText("master").shortText("sys").shortText(udtName_).longText("Types").bytes();
    case WireKind::Xml:
      return out.u8(0).bytes();
    case WireKind::Date:
      return out.bytes();
  }
  return out.bytes();
}

void WireType::appendNull(std::string& out) const {
  if (kind_ == WireKind::Variant) return appendNumber(out, 0, 4);
  if (kind_ == WireKind::Xml || kind_ == WireKind::Udt || size_ == maximal)
    return appendNumber(out, static_cast<std::uint64_t>(-1), 8);
  appendNumber(out, hasDeclaredSize(kind_) ? 0xFFFF : 0, hasDeclaredSize(kind_) ? 2 : 1);
}

// Of texts and binary values, with their length in the form that the type has.
void WireType::appendBytes(std::string& out, std::string_view bytes) const {
  if (namesTable()) {
    constexpr std::string_view pointer = "pointer of text..stamp..";  // 16 and 8 bytes that nobody follows
    static_assert(pointer.size() == 24);
    appendNumber(out, 16, 1);
    out += pointer;
    appendNumber(out, bytes.size(), 4);
    out += bytes;
  } else if (isLong()) {
    appendNumber(out, bytes.size(), 8);
    for (std::size_t at = 0; at < bytes.size(); at += chunk) {
      const std::string_view piece = bytes.substr(at, chunk);
      appendNumber(out, piece.size(), 4);
      out += piece;
    }
    appendNumber(out, 0, 4);
  } else {
    if (bytes.size() > size_) throw DataError(errorNumber::badSql, "String or binary data would be truncated.");
    appendNumber(out, bytes.size(), 2);
    out += bytes;
  }
}

void WireType::append(std::string& out, const Cell& cell) const {
  if (cell.null) return appendNull(out);
  if (isWide(kind_))
    return appendBytes(out, toUtf16(cell.type == DataType::Text ? std::string(cell.text) : textOf(cell)));
  if (isNarrow(kind_))
    return appendBytes(out, toCodePage(cell.type == DataType::Text ? std::string(cell.text) : textOf(cell)));
  switch (kind_) {
    case WireKind::Binary:
    case WireKind::VarBinary:
    case WireKind::Image:
    case WireKind::Udt:
      return appendBytes(out, cell.text);
    case WireKind::Variant: {
      const std::string value = variantValue(cell);
      appendNumber(out, value.size(), 4);
      out += value;
      return;
    }
    default: {
      const std::string value = scalarValue(
          kind_, kind_ == WireKind::Decimal || kind_ == WireKind::Numeric ? decimalWidth(precision_) : size_, scale_,
          cell);
      appendNumber(out, value.size(), 1);
      out += value;
    }
  }
}

}  // namespace qrel::tds
