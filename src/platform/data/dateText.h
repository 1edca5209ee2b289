// Dates in text form, by value.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace qrel {

// The moment that a text tells, as a count of 100 nanoseconds from 1 January of year 1 on; with an offset from UTC, the
// moment in UTC. Read are yyyy-mm-dd, yyyy/mm/dd, yyyymmdd and m/d/yyyy, with or without a time behind a blank or "T"
// (hh:mm, hh:mm:ss, a fraction of up to seven digits, AM and PM, Z or +hh:mm), and a time alone, which is taken on 30
// December 1899. Empty for any other text.
std::optional<std::int64_t> dateTicks(std::string_view text);

}  // namespace qrel
