#include "app/modDates.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::array<const char*, 12> monthNames = {"January",   "February", "March",    "April",
                                                    "May",       "June",     "July",     "August",
                                                    "September", "October",  "November", "December"};

// Reads three numbers with the separator between them; false for any other text.
bool readThree(std::string_view text, char separator, std::array<std::int32_t, 3>& numbers) {
  const char* at = text.data();
  const char* const end = at + text.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0 && (at == end || *at++ != separator)) return false;
    const auto [next, failed] = std::from_chars(at, end, numbers[i]);
    if (failed != std::errc() || next - at > 4 || *at == '-') return false;
    at = next;
  }
  return at == end;
}

std::string monthName(std::int32_t month, bool blnLongMonth) {
  if (month < 1 || month > 12) return {};
  const std::string name = monthNames[static_cast<std::size_t>(month - 1)];
  return blnLongMonth ? name : name.substr(0, 3);
}

}  // namespace

std::int32_t DateToLong(std::string_view strDate) {
  if (strDate.empty()) return 0;
  std::string_view text = trimBlanks(strDate);
  text = text.substr(0, text.find(' '));
  std::array<std::int32_t, 3> numbers{};
  std::int32_t year = 0, month = 0, day = 0;
  if (readThree(text, '-', numbers)) {
    year = numbers[0], month = numbers[1], day = numbers[2];
  } else if (readThree(text, '/', numbers)) {
    month = numbers[0], day = numbers[1], year = numbers[2];
  }
  constexpr std::array<std::int32_t, 12> days = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12 || day < 1 || day > days[static_cast<std::size_t>(month - 1)]) {
    throw RuntimeError(errorNumber::typeMismatch, "Type mismatch");
  }
  return year * 10000 + month * 100 + day;
}

std::string LongToDateString(std::int32_t lngDate, bool blnLongMonth, bool blnDashes, bool blnShortYear) {
  const std::string digits = std::to_string(lngDate);
  if (lngDate < 0 || digits.size() != 8) return {};
  const std::string year = blnShortYear ? digits.substr(2, 2) : digits.substr(0, 4);
  const std::string month = monthName(lngDate / 100 % 100, blnLongMonth);
  const std::string day = digits.substr(6);
  return blnDashes ? day + "-" + month + "-" + year : month + " " + day + ", " + year;
}

std::string LongToTimeString(std::int32_t lngTime, bool blnNoSeconds) {
  std::string digits = std::to_string(lngTime);
  if (lngTime < 0) return {};
  if (digits.size() == 4) digits.insert(0, "00");
  if (digits.size() == 5) digits.insert(0, "0");
  if (digits.size() != 6) return {};
  const std::string time = digits.substr(0, 2) + ":" + digits.substr(2, 2);
  return blnNoSeconds ? time : time + ":" + digits.substr(4);
}

}  // namespace qrel
