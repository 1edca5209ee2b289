#include "platform/data/value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/data/numberText.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {
namespace {

// A decimal text taken apart, without the zeros that don't count.
struct DecimalParts {
  bool negative = false;
  std::string_view whole;
  std::string_view fraction;
};

DecimalParts partsOf(std::string_view text) {
  DecimalParts parts;
  parts.negative = text.starts_with('-');
  if (parts.negative || text.starts_with('+')) text.remove_prefix(1);
  const std::size_t point = text.find('.');
  parts.whole = text.substr(0, point);
  if (point != std::string_view::npos) parts.fraction = text.substr(point + 1);
  while (parts.whole.starts_with('0')) parts.whole.remove_prefix(1);
  while (parts.fraction.ends_with('0')) parts.fraction.remove_suffix(1);
  if (parts.whole.empty() && parts.fraction.empty()) parts.negative = false;
  return parts;
}

std::int32_t narrowed(double number) {
  // Halves go to the even neighbour.
  const double rounded = std::nearbyint(number);
  if (!(rounded >= std::numeric_limits<std::int32_t>::min() && rounded <= std::numeric_limits<std::int32_t>::max())) {
    throw RuntimeError(errorNumber::overflow, "Overflow");
  }
  return static_cast<std::int32_t>(rounded);
}

void appendHexadecimal(std::string& out, std::string_view bytes) {
  constexpr char digits[] = "0123456789ABCDEF";
  out += "0x";
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    out += digits[value >> 4];
    out += digits[value & 15];
  }
}

}  // namespace

Value::Value(const Cell& cell)
    : type(cell.type), null(cell.null), integer(cell.integer), real(cell.real), text(cell.text) {}

Value Value::ofText(std::string text) {
  Value value;
  value.type = DataType::Text;
  value.null = false;
  value.text = std::move(text);
  return value;
}

Value Value::ofInteger(std::int64_t number) {
  return Value(Cell{.type = DataType::Integer, .null = false, .integer = number});
}

Value Value::ofDouble(double number) { return Value(Cell{.type = DataType::Double, .null = false, .real = number}); }

Value Value::ofBoolean(bool flag) {
  return Value(Cell{.type = DataType::Boolean, .null = false, .integer = flag ? 1 : 0});
}

Cell Value::cell() const { return Cell{.type = type, .null = null, .integer = integer, .real = real, .text = text}; }

std::string textOf(const Cell& cell) {
  std::string text;
  appendText(text, cell);
  return text;
}

void appendText(std::string& out, const Cell& cell) {
  if (cell.null) return;
  switch (cell.type) {
    case DataType::Empty:
      break;
    case DataType::Boolean:
      out += cell.integer != 0 ? "True" : "False";
      break;
    case DataType::Integer: {
      char buffer[24];
      out.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, cell.integer).ptr);
      break;
    }
    case DataType::Double:
      appendShortest(out, cell.real);
      break;
    case DataType::Binary:
      appendHexadecimal(out, cell.text);
      break;
    case DataType::Decimal:
    case DataType::Date:
    case DataType::Guid:
    case DataType::Text:
      out.append(cell.text);
      break;
  }
}

std::int32_t integerOf(const Cell& cell) {
  if (cell.null) throw RuntimeError(errorNumber::invalidUseOfNull, "Invalid use of Null");
  switch (cell.type) {
    case DataType::Boolean:
      return cell.integer != 0 ? -1 : 0;
    case DataType::Integer:
      return narrowed(static_cast<double>(cell.integer));
    case DataType::Double:
      return narrowed(cell.real);
    case DataType::Decimal:
    case DataType::Text:
      if (const std::optional<double> number = doubleOf(cell.text)) return narrowed(*number);
      break;
    default:
      break;
  }
  throw RuntimeError(errorNumber::typeMismatch, "Type mismatch");
}

int compareDecimals(std::string_view a, std::string_view b) {
  const DecimalParts left = partsOf(a);
  const DecimalParts right = partsOf(b);
  if (left.negative != right.negative) return left.negative ? -1 : 1;
  int result = 0;
  if (left.whole.size() != right.whole.size()) {
    result = left.whole.size() < right.whole.size() ? -1 : 1;
  } else {
    result = left.whole.compare(right.whole);
    if (result == 0) result = left.fraction.compare(right.fraction);
  }
  if (result == 0) return 0;
  return (result < 0) != left.negative ? -1 : 1;
}

}  // namespace qrel
