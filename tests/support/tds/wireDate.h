// Dates and times on the wire and in the text form of value.h.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/data/value.h"
#include "tests/support/tds/wireType.h"

namespace qrel::tds {

// Without the length in front. `width` tells smalldatetime (4 bytes) from datetime; `scale` is the number of digits of
// the second's fraction. Raises DataError for what is no date.
std::string dateBytes(WireKind kind, std::size_t width, int scale, const Cell& cell);
std::string dateText(WireKind kind, int scale, std::string_view bytes);

}  // namespace qrel::tds
