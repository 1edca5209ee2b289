// The bytes of values that have a length of one byte in front, and of variants.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/data/value.h"
#include "tests/support/tds/wireType.h"

namespace qrel::tds {

// Bytes of a decimal's digits, without its sign.
constexpr std::size_t decimalWidth(int precision) {
  return precision <= 9 ? 4 : precision <= 19 ? 8 : precision <= 28 ? 12 : 16;
}

// Raises the DataError of a value that isn't of its column's type.
[[noreturn]] void notOfType(const Cell& cell);

// Without the length in front. `width` is that of the type in bytes (for decimals decimalWidth), `scale` the digits of
// a decimal's or second's fraction. Raises DataError for a value that isn't of the type.
std::string scalarValue(WireKind kind, std::size_t width, int scale, const Cell& cell);

// A value with its type in front. Not Null.
std::string variantValue(const Cell& cell);

// Reads back what scalarValue makes, as a parameter of a call brings it: the value in the text form of value.h.
Value valueOfScalar(WireKind kind, int scale, std::string_view bytes);

}  // namespace qrel::tds
