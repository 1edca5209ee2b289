// Dates and times of the embedded server: reading literals, the stored text form, arithmetic.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qrel::tsql {

// Days since 0001-01-01 and 100-nanosecond units since midnight.
struct Moment {
  std::int64_t day = 0;
  std::int64_t units = 0;
  std::optional<int> offsetMinutes;
  bool hasDate = true;  // false: a time alone
};

inline constexpr std::int64_t unitsPerSecond = 10'000'000;
inline constexpr std::int64_t unitsPerDay = 86'400 * unitsPerSecond;
inline constexpr std::int64_t dayOf1900 = 693'595;  // 1900-01-01
inline constexpr std::int64_t lastDay = 3'652'058;  // 9999-12-31

struct CivilDate {
  int year = 1;
  int month = 1;
  int day = 1;
};
std::int64_t dayNumber(const CivilDate& date);
CivilDate civilDate(std::int64_t day);
int daysInMonth(int year, int month);

// Reads any of the server's literal forms (month before day, two-digit years from 50 on are 19xx); empty text is
// 1900-01-01. Empty result: no date. A day or hour out of range gives no date as well and sets `outOfRange`.
std::optional<Moment> readDate(std::string_view text, bool* outOfRange = nullptr);

// The stored forms: yyyy-mm-dd with " hh:mm:ss" unless it is midnight and a fraction unless it is zero;
// hh:mm:ss with such a fraction; the full form with the offset behind it.
std::string momentText(const Moment& moment);
std::string timeText(std::int64_t units);
std::string offsetText(const Moment& moment);

// Rounds to units of 10^-digits seconds; to 1/300 second as datetime does; to the minute as smalldatetime does. A time
// that reaches the next midnight carries into the day.
void roundToDigits(Moment& moment, int digits);
void roundToTicks(Moment& moment);
void roundToMinute(Moment& moment);

}  // namespace qrel::tsql
