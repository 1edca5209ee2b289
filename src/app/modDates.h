// Dates and times as numbers: yyyymmdd and hhmmss.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qrel {

// yyyymmdd of a date text: year-month-day, or month/day/year; what follows a blank (a time) doesn't count. 0 for an
// empty text; a text that is no date raises error 13.
std::int32_t DateToLong(std::string_view strDate);

// A number of exactly 8 digits as "May 03, 2004", with blnDashes as "03-May-2004"; any other number gives an empty
// text. blnLongMonth spells the month out, blnShortYear keeps the year's last two digits.
std::string LongToDateString(std::int32_t lngDate, bool blnLongMonth, bool blnDashes, bool blnShortYear);

// A number of 4 to 6 digits as hh:mm:ss, or hh:mm with blnNoSeconds; four digits are minutes and seconds. Any other
// number gives an empty text.
std::string LongToTimeString(std::int32_t lngTime, bool blnNoSeconds);

}  // namespace qrel
