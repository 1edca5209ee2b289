#include "tests/support/tds/wireValue.h"

#include <algorithm>
#include <bit>
#include <charconv>

#include "platform/error.h"
#include "platform/text.h"
#include "tests/support/tds/bytes.h"
#include "tests/support/tds/tokens.h"
#include "tests/support/tds/wireDate.h"

namespace qrel::tds {

namespace {

__extension__ typedef unsigned __int128 Wide;

// The digits of a decimal text as one number of `scale` digits behind the point, without its sign.
Wide magnitude(const Cell& cell, const std::string& text, int scale, bool& negative) {
  Wide number = 0;
  int behindPoint = -1;
  negative = text.starts_with('-');
  for (const char c : std::string_view(text).substr(negative ? 1 : 0)) {
    if (c == '.' && behindPoint < 0) {
      behindPoint = 0;
      continue;
    }
    if (!isDigit(c)) notOfType(cell);
    if (behindPoint >= scale) {
      if (c != '0') notOfType(cell);
      continue;
    }
    number = number * 10 + static_cast<unsigned>(c - '0');
    if (behindPoint >= 0) ++behindPoint;
  }
  for (int digits = std::max(behindPoint, 0); digits < scale; ++digits) number *= 10;
  return number;
}

std::string bytesOf(Wide number, std::size_t width) {
  std::string out;
  for (std::size_t i = 0; i < width; ++i, number >>= 8) out += static_cast<char>(number & 0xFF);
  return out;
}

std::string decimalText(Wide number, int scale, bool negative) {
  std::string digits;
  for (; number > 0; number /= 10) digits += static_cast<char>('0' + static_cast<int>(number % 10));
  while (digits.size() <= static_cast<std::size_t>(scale)) digits += '0';
  std::reverse(digits.begin(), digits.end());
  if (scale > 0) digits.insert(digits.size() - static_cast<std::size_t>(scale), 1, '.');
  return (negative ? "-" : "") + digits;
}

constexpr int guidOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

std::string guidBytes(const Cell& cell) {
  std::string digits;
  for (const char c : textOf(cell))
    if (c != '{' && c != '}' && c != '-') digits += c;
  if (digits.size() != 32) notOfType(cell);
  std::string out;
  for (const int at : guidOrder) {
    unsigned value = 0;
    const char* const begin = digits.data() + 2 * at;
    if (std::from_chars(begin, begin + 2, value, 16).ptr != begin + 2) notOfType(cell);
    out += static_cast<char>(value);
  }
  return out;
}

std::string guidText(std::string_view bytes) {
  constexpr std::string_view hex = "0123456789ABCDEF";
  std::string ordered(16, '\0'), out = "{";
  for (std::size_t i = 0; i < 16; ++i) ordered[static_cast<std::size_t>(guidOrder[i])] = bytes[i];
  for (std::size_t i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) out += '-';
    out += hex[static_cast<unsigned char>(ordered[i]) >> 4];
    out += hex[static_cast<unsigned char>(ordered[i]) & 15];
  }
  return out + "}";
}

std::int64_t integerValue(const Cell& cell) {
  if (cell.type == DataType::Integer || cell.type == DataType::Boolean) return cell.integer;
  const std::string text = textOf(cell);
  std::int64_t value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ptr != text.data() + text.size() || text.empty())
    notOfType(cell);
  return value;
}

double realValue(const Cell& cell) {
  if (cell.type == DataType::Double) return cell.real;
  const std::string text = textOf(cell);
  double value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ptr != text.data() + text.size() || text.empty())
    notOfType(cell);
  return value;
}

std::string moneyValue(const Cell& cell, std::size_t width) {
  bool negative = false;
  auto number = static_cast<std::uint64_t>(magnitude(cell, textOf(cell), 4, negative));
  if (negative) number = 0 - number;
  std::string out;
  if (width == 8) appendNumber(out, number >> 32, 4);  // the high half stands first
  appendNumber(out, number, 4);
  return out;
}

}  // namespace

void notOfType(const Cell& cell) {
  throw DataError(errorNumber::badSql, "Error converting the value '" + textOf(cell) + "' to the column's data type.");
}

std::string scalarValue(WireKind kind, std::size_t width, int scale, const Cell& cell) {
  std::string out;
  switch (kind) {
    case WireKind::Integer:
    case WireKind::Bit:
      appendNumber(out, static_cast<std::uint64_t>(integerValue(cell)), width);
      return out;
    case WireKind::Float:
      appendNumber(out,
                   width == 4 ? std::bit_cast<std::uint32_t>(static_cast<float>(realValue(cell)))
                              : std::bit_cast<std::uint64_t>(realValue(cell)),
                   width);
      return out;
    case WireKind::Money:
      return moneyValue(cell, width);
    case WireKind::Decimal:
    case WireKind::Numeric: {
      bool negative = false;
      const Wide number = magnitude(cell, textOf(cell), scale, negative);
      return std::string(1, negative ? '\0' : '\1') + bytesOf(number, width);
    }
    case WireKind::Guid:
      return guidBytes(cell);
    default:
      return dateBytes(kind, width, scale, cell);
  }
}

std::string variantValue(const Cell& cell) {
  ByteWriter out;
  switch (cell.type) {
    case DataType::Boolean:
      return out.u8(0x32).u8(0).u8(static_cast<std::uint64_t>(cell.integer)).bytes();
    case DataType::Integer:
      if (cell.integer == static_cast<std::int32_t>(cell.integer))
        return out.u8(0x38).u8(0).u32(static_cast<std::uint64_t>(cell.integer)).bytes();
      return out.u8(0x7F).u8(0).u64(static_cast<std::uint64_t>(cell.integer)).bytes();
    case DataType::Double:
      return out.u8(0x3E).u8(0).u64(std::bit_cast<std::uint64_t>(cell.real)).bytes();
    case DataType::Binary:
      return out.u8(0xA5).u8(2).u16(8000).raw(cell.text).bytes();
    default:
      return out.u8(0xE7).u8(7).raw(collation).u16(8000).raw(toUtf16(textOf(cell))).bytes();
  }
}

Value valueOfScalar(WireKind kind, int scale, std::string_view bytes) {
  const std::size_t most = kind == WireKind::Guid                                   ? 16
                           : kind == WireKind::Decimal || kind == WireKind::Numeric ? 17
                                                                                    : 10;
  const bool isNumber = kind == WireKind::Integer || kind == WireKind::Float || kind == WireKind::Money;
  if (bytes.size() > most || (kind == WireKind::Guid && bytes.size() < most) || (isNumber && bytes.size() > 8))
    throw BadMessage("a parameter's value is of another length than its type");
  Value value;
  value.null = false;
  switch (kind) {
    case WireKind::Bit:
      return Value::ofBoolean(numberOf(bytes) != 0);
    case WireKind::Integer: {
      const unsigned unused = 64 - 8 * static_cast<unsigned>(bytes.size());
      // One byte alone has no sign.
      const auto shifted = static_cast<std::int64_t>(numberOf(bytes) << unused);
      return Value::ofInteger(bytes.size() == 1 ? static_cast<std::int64_t>(numberOf(bytes)) : shifted >> unused);
    }
    case WireKind::Float:
      if (bytes.size() == 4) return Value::ofDouble(std::bit_cast<float>(static_cast<std::uint32_t>(numberOf(bytes))));
      return Value::ofDouble(std::bit_cast<double>(numberOf(bytes)));
    case WireKind::Money: {
      const std::uint64_t number =
          bytes.size() == 8 ? numberOf(bytes.substr(0, 4)) << 32 | numberOf(bytes.substr(4)) : numberOf(bytes);
      const auto exact = bytes.size() == 8 ? static_cast<std::int64_t>(number) : static_cast<std::int32_t>(number);
      value.type = DataType::Decimal;
      value.text = decimalText(exact < 0 ? 0 - static_cast<std::uint64_t>(exact) : static_cast<std::uint64_t>(exact), 4,
                               exact < 0);
      return value;
    }
    case WireKind::Decimal:
    case WireKind::Numeric: {
      Wide number = 0;
      for (std::size_t i = bytes.size(); i > 1; --i) number = number << 8 | static_cast<unsigned char>(bytes[i - 1]);
      value.type = DataType::Decimal;
      value.text = decimalText(number, scale, bytes[0] == 0);
      return value;
    }
    case WireKind::Guid:
      value.type = DataType::Guid;
      value.text = guidText(bytes);
      return value;
    default:
      value.type = DataType::Date;
      value.text = dateText(kind, scale, bytes);
      return value;
  }
}

}  // namespace qrel::tds
