// Date functions and dates as text.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>

#include "embedded/functions/functionCall.h"
#include "embedded/types/dates.h"
#include "embedded/types/types.h"
#include "platform/error.h"
#include "platform/system.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr std::array<const char*, 12> months = {"January", "February", "March",     "April",   "May",      "June",
                                                "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<const char*, 7> weekdays = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                 "Friday", "Saturday", "Sunday"};

enum class DatePart {
  Year,
  Quarter,
  Month,
  DayOfYear,
  Day,
  Week,
  Weekday,
  Hour,
  Minute,
  Second,
  Millisecond,
  Microsecond,
  Nanosecond,
  IsoWeek,
  Offset
};

DatePart partOf(std::string_view word) {
  struct Name {
    std::string_view name;
    DatePart part;
  };
  static constexpr Name names[] = {{"year", DatePart::Year},       {"yy", DatePart::Year},
                                   {"yyyy", DatePart::Year},       {"quarter", DatePart::Quarter},
                                   {"qq", DatePart::Quarter},      {"q", DatePart::Quarter},
                                   {"month", DatePart::Month},     {"mm", DatePart::Month},
                                   {"m", DatePart::Month},         {"dayofyear", DatePart::DayOfYear},
                                   {"dy", DatePart::DayOfYear},    {"y", DatePart::DayOfYear},
                                   {"day", DatePart::Day},         {"dd", DatePart::Day},
                                   {"d", DatePart::Day},           {"week", DatePart::Week},
                                   {"wk", DatePart::Week},         {"ww", DatePart::Week},
                                   {"weekday", DatePart::Weekday}, {"dw", DatePart::Weekday},
                                   {"w", DatePart::Weekday},       {"hour", DatePart::Hour},
                                   {"hh", DatePart::Hour},         {"minute", DatePart::Minute},
                                   {"mi", DatePart::Minute},       {"n", DatePart::Minute},
                                   {"second", DatePart::Second},   {"ss", DatePart::Second},
                                   {"s", DatePart::Second},        {"millisecond", DatePart::Millisecond},
                                   {"ms", DatePart::Millisecond},  {"microsecond", DatePart::Microsecond},
                                   {"mcs", DatePart::Microsecond}, {"nanosecond", DatePart::Nanosecond},
                                   {"ns", DatePart::Nanosecond},   {"iso_week", DatePart::IsoWeek},
                                   {"isowk", DatePart::IsoWeek},   {"isoww", DatePart::IsoWeek},
                                   {"tzoffset", DatePart::Offset}, {"tz", DatePart::Offset}};
  const std::string lower = lowerCase(word);
  for (const Name& entry : names)
    if (entry.name == lower) return entry.part;
  throw DataError(errorNumber::badSql, "'" + std::string(word) + "' is not a recognized datepart option.");
}

// A date argument; a whole number counts days from 1900 on.
Moment momentOf(const FunctionCall& call, int i) {
  if (call.type(i) == SQLITE_INTEGER || call.type(i) == SQLITE_FLOAT) {
    const double days = call.real(i);
    Moment moment;
    moment.day = dayOf1900 + static_cast<std::int64_t>(std::clamp(days, -2e6, 4e6));
    return moment;
  }
  bool outOfRange = false;
  auto moment = readDate(call.text(i), &outOfRange);
  if (outOfRange)
    throw DataError(errorNumber::badSql,
                    "The conversion of a varchar data type to a datetime data type resulted in an "
                    "out-of-range value.",
                    "22007");
  if (!moment)
    throw DataError(errorNumber::badSql, "Conversion failed when converting date and/or time from character string.",
                    "22007");
  return *moment;
}

std::string textOf(const Moment& moment) { return moment.offsetMinutes ? offsetText(moment) : momentText(moment); }

int weekdayOf(std::int64_t day) { return static_cast<int>((day % 7 + 7) % 7); }  // 0: Monday

int isoWeek(std::int64_t day) {
  const std::int64_t thursday = day - weekdayOf(day) + 3;
  return static_cast<int>((thursday - dayNumber({civilDate(thursday).year, 1, 1})) / 7) + 1;
}

std::int64_t partValue(const Moment& moment, DatePart part) {
  const CivilDate date = civilDate(moment.day);
  const std::int64_t newYear = dayNumber({date.year, 1, 1});
  const std::int64_t units = moment.units;
  switch (part) {
    case DatePart::Year:
      return date.year;
    case DatePart::Quarter:
      return (date.month + 2) / 3;
    case DatePart::Month:
      return date.month;
    case DatePart::DayOfYear:
      return moment.day - newYear + 1;
    case DatePart::Day:
      return date.day;
    // Weeks begin on Sunday; the one with 1 January is the first.
    case DatePart::Week:
      return (moment.day - newYear + (weekdayOf(newYear) + 1) % 7) / 7 + 1;
    case DatePart::Weekday:
      return (weekdayOf(moment.day) + 1) % 7 + 1;
    case DatePart::Hour:
      return units / unitsPerSecond / 3600;
    case DatePart::Minute:
      return units / unitsPerSecond / 60 % 60;
    case DatePart::Second:
      return units / unitsPerSecond % 60;
    case DatePart::Millisecond:
      return units % unitsPerSecond / 10'000;
    case DatePart::Microsecond:
      return units % unitsPerSecond / 10;
    case DatePart::Nanosecond:
      return units % unitsPerSecond * 100;
    case DatePart::IsoWeek:
      return isoWeek(moment.day);
    case DatePart::Offset:
      return moment.offsetMinutes.value_or(0);
  }
  return 0;
}

// 100-nanosecond units of a part that is a fixed length of time; 0 for the others.
std::int64_t unitsOf(DatePart part) {
  switch (part) {
    case DatePart::Week:
      return 7 * unitsPerDay;
    case DatePart::DayOfYear:
    case DatePart::Day:
    case DatePart::Weekday:
      return unitsPerDay;
    case DatePart::Hour:
      return 3600 * unitsPerSecond;
    case DatePart::Minute:
      return 60 * unitsPerSecond;
    case DatePart::Second:
      return unitsPerSecond;
    case DatePart::Millisecond:
      return 10'000;
    case DatePart::Microsecond:
      return 10;
    default:
      return 0;
  }
}

[[noreturn]] void failRange() {
  throw DataError(errorNumber::badSql, "Adding a value to a 'datetime' column caused an overflow.", "22003");
}

void addUnits(Moment& moment, std::int64_t count, std::int64_t each) {
  std::int64_t units = 0;
  if (__builtin_mul_overflow(count, each, &units)) failRange();
  std::int64_t days = units / unitsPerDay;
  moment.units += units % unitsPerDay;
  if (moment.units < 0) {
    moment.units += unitsPerDay;
    --days;
  } else if (moment.units >= unitsPerDay) {
    moment.units -= unitsPerDay;
    ++days;
  }
  moment.day += days;
  if (moment.day < 0 || moment.day > lastDay) failRange();
}

void addMonths(Moment& moment, std::int64_t count) {
  if (std::abs(count) > 120'000) failRange();
  const CivilDate date = civilDate(moment.day);
  const std::int64_t month = date.year * 12LL + date.month - 1 + count;
  if (month < 12 || month >= 120'000) failRange();
  CivilDate moved{static_cast<int>(month / 12), static_cast<int>(month % 12) + 1, date.day};
  moved.day = std::min(moved.day, daysInMonth(moved.year, moved.month));
  moment.day = dayNumber(moved);
}

void dateAdd(FunctionCall& call) {
  if (call.anyNull()) return;
  const DatePart part = partOf(call.text(0));
  Moment moment = momentOf(call, 2);
  const std::int64_t count = call.integer(1);
  if (std::abs(count) > 100'000'000'000) failRange();
  if (part == DatePart::Year || part == DatePart::Quarter || part == DatePart::Month)
    addMonths(moment, count * (part == DatePart::Year ? 12 : part == DatePart::Quarter ? 3 : 1));
  else if (part == DatePart::Nanosecond)
    addUnits(moment, count / 100, 1);
  else if (unitsOf(part) != 0)
    addUnits(moment, count, unitsOf(part));
  call.result(textOf(moment));
}

// A date plus or minus a number of days, which may have a fraction.
void datePlus(FunctionCall& call) {
  if (call.anyNull()) return;
  Moment moment = momentOf(call, 0);
  const double days = call.real(1);
  if (!(std::abs(days) < 4e6)) failRange();
  addUnits(moment, static_cast<std::int64_t>(days * static_cast<double>(unitsPerDay)), 1);
  call.result(textOf(moment));
}

// Counts the borders that lie between two moments.
void dateDiff(FunctionCall& call) {
  if (call.anyNull()) return;
  const DatePart part = partOf(call.text(0));
  const Moment from = momentOf(call, 1);
  const Moment to = momentOf(call, 2);
  const auto monthsOf = [](const Moment& moment) {
    const CivilDate date = civilDate(moment.day);
    return date.year * 12LL + date.month - 1;
  };
  const std::int64_t days = to.day - from.day;
  std::int64_t result = 0;
  switch (part) {
    case DatePart::Year:
      result = monthsOf(to) / 12 - monthsOf(from) / 12;
      break;
    case DatePart::Quarter:
      result = monthsOf(to) / 3 - monthsOf(from) / 3;
      break;
    case DatePart::Month:
      result = monthsOf(to) - monthsOf(from);
      break;
    case DatePart::Week:
      result = (to.day + 1) / 7 - (from.day + 1) / 7;
      break;
    case DatePart::Nanosecond:
      result = (days * unitsPerDay + to.units - from.units) * 100;
      break;
    default: {
      const std::int64_t each = unitsOf(part);
      if (each == unitsPerDay)
        result = days;
      else if (each != 0)
        result = days * (unitsPerDay / each) + to.units / each - from.units / each;
    }
  }
  if (result != static_cast<std::int32_t>(result))
    throw DataError(errorNumber::badSql, "The datediff function resulted in an overflow.", "22003");
  call.result(result);
}

void datePart(FunctionCall& call) {
  if (!call.anyNull()) call.result(partValue(momentOf(call, 1), partOf(call.text(0))));
}

void dateName(FunctionCall& call) {
  if (call.anyNull()) return;
  const DatePart part = partOf(call.text(0));
  const Moment moment = momentOf(call, 1);
  const std::int64_t value = partValue(moment, part);
  if (part == DatePart::Month) return call.result(std::string_view(months.at(static_cast<std::size_t>(value - 1))));
  if (part == DatePart::Weekday)
    return call.result(std::string_view(weekdays.at(static_cast<std::size_t>(weekdayOf(moment.day)))));
  call.result(std::to_string(value));
}

template <DatePart part>
void fixedPart(FunctionCall& call) {
  if (!call.isNull(0)) call.result(partValue(momentOf(call, 0), part));
}

void endOfMonth(FunctionCall& call) {
  if (call.isNull(0)) return;
  Moment moment = momentOf(call, 0);
  if (call.count() > 1 && !call.isNull(1)) addMonths(moment, call.integer(1));
  CivilDate date = civilDate(moment.day);
  date.day = daysInMonth(date.year, date.month);
  call.result(momentText({dayNumber(date), 0, {}, true}));
}

void dateFromParts(FunctionCall& call) {
  if (call.anyNull()) return;
  const CivilDate date{static_cast<int>(call.integer(0)), static_cast<int>(call.integer(1)),
                       static_cast<int>(call.integer(2))};
  if (date.year < 1 || date.year > 9999 || date.month < 1 || date.month > 12 || date.day < 1 ||
      date.day > daysInMonth(date.year, date.month))
    throw DataError(errorNumber::badSql,
                    "Cannot construct data type date, some of the arguments have values which are "
                    "not valid.");
  call.result(momentText({dayNumber(date), 0, {}, true}));
}

void isDate(FunctionCall& call) {
  call.result(std::int64_t{call.type(0) == SQLITE_TEXT && !trimBlanks(call.text(0)).empty() && readDate(call.text(0))});
}

Moment now(bool local) {
  const auto time = std::chrono::system_clock::now();
  const std::int64_t nanoseconds =
      std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
  const std::time_t seconds = nanoseconds / 1'000'000'000;
  const std::tm parts = local ? system::localTime(seconds) : system::utcTime(seconds);
  Moment moment;
  moment.day = dayNumber({parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday});
  moment.units = ((parts.tm_hour * 60 + parts.tm_min) * 60 + std::min(parts.tm_sec, 59)) * unitsPerSecond +
                 nanoseconds % 1'000'000'000 / 100;
  return moment;
}

template <bool local, bool ticks>
void presentTime(FunctionCall& call) {
  Moment moment = now(local);
  if (ticks) roundToTicks(moment);
  call.result(momentText(moment));
}

void presentOffset(FunctionCall& call) {
  Moment moment = now(true);
  const Moment utc = now(false);
  moment.offsetMinutes = static_cast<int>(
      ((moment.day - utc.day) * unitsPerDay + moment.units - utc.units + 30 * unitsPerSecond) / (60 * unitsPerSecond));
  call.result(offsetText(moment));
}

// What CONVERT's styles are made of: y and Y the year with two and four digits, m d the numbers, M the month's short
// name, D the day with a blank in front, t hh:mm:ss, f :mmm, F .mmm, a "hh:miAM", A "hh:mi:ss:mmmAM".
const char* styleForm(int style) {
  switch (style) {
    case 1:
      return "m/d/y";
    case 101:
      return "m/d/Y";
    case 2:
      return "y.m.d";
    case 102:
      return "Y.m.d";
    case 3:
      return "d/m/y";
    case 103:
      return "d/m/Y";
    case 4:
      return "d.m.y";
    case 104:
      return "d.m.Y";
    case 5:
      return "d-m-y";
    case 105:
      return "d-m-Y";
    case 6:
      return "d M y";
    case 106:
      return "d M Y";
    case 7:
      return "M d, y";
    case 107:
      return "M d, Y";
    case 8:
    case 24:
    case 108:
      return "t";
    case 9:
    case 109:
      return "M D Y A";
    case 10:
      return "m-d-y";
    case 110:
      return "m-d-Y";
    case 11:
      return "y/m/d";
    case 111:
      return "Y/m/d";
    case 12:
      return "ymd";
    case 112:
      return "Ymd";
    case 13:
    case 113:
      return "d M Y tf";
    case 14:
    case 114:
      return "tf";
    case 20:
    case 120:
      return "Y-m-d t";
    case 21:
    case 25:
    case 121:
      return "Y-m-d tF";
    case 126:
    case 127:
      return "Y-m-dTtG";
    case 23:
      return "Y-m-d";
    default:
      return "M D Y a";
  }
}

void dateTextFunction(FunctionCall& call) {
  if (call.isNull(0)) return;
  // What isn't in the stored form is no date and stays as it is.
  const std::string_view text = call.text(0);
  const bool stored = text.size() >= 8 && (text[4] == '-' || text[2] == ':');
  if (stored)
    call.result(dateText(text, static_cast<int>(call.integer(1))));
  else
    call.resultArgument(0);
}

}  // namespace

std::string dateText(std::string_view storedDate, int style) {
  const auto moment = readDate(storedDate);
  if (!moment) return std::string(storedDate);
  const CivilDate date = civilDate(moment->day);
  const auto seconds = static_cast<int>(moment->units / unitsPerSecond);
  const auto milliseconds = static_cast<int>(moment->units % unitsPerSecond / 10'000);
  const int hour = seconds / 3600;
  const int hour12 = hour % 12 == 0 ? 12 : hour % 12;
  const char* half = hour < 12 ? "AM" : "PM";
  std::string out;
  const auto put = [&out](const char* format, auto... values) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, values...);
    out += buffer;
  };
  for (const char* form = styleForm(style); *form; ++form) {
    switch (*form) {
      case 'y':
        put("%02d", date.year % 100);
        break;
      case 'Y':
        put("%04d", date.year);
        break;
      case 'm':
        put("%02d", date.month);
        break;
      case 'M':
        out += std::string_view(months.at(static_cast<std::size_t>(date.month - 1))).substr(0, 3);
        break;
      case 'd':
        put("%02d", date.day);
        break;
      case 'D':
        put("%2d", date.day);
        break;
      case 't':
        put("%02d:%02d:%02d", hour, seconds / 60 % 60, seconds % 60);
        break;
      case 'f':
        put(":%03d", milliseconds);
        break;
      case 'F':
        put(".%03d", milliseconds);
        break;
      case 'G':
        if (milliseconds) put(".%03d", milliseconds);
        break;
      case 'a':
        put("%2d:%02d%s", hour12, seconds / 60 % 60, half);
        break;
      case 'A':
        put("%2d:%02d:%02d:%03d%s", hour12, seconds / 60 % 60, seconds % 60, milliseconds, half);
        break;
      default:
        out += *form;
    }
  }
  return out;
}

namespace {

using enum Function::Trait;

constexpr Function dateTable[] = {
    {"getdate", 0, 0, DataType::Date, callFunction<presentTime<true, true>>},
    {"getutcdate", 0, 0, DataType::Date, callFunction<presentTime<false, true>>},
    {"sysdatetime", 0, 0, DataType::Date, callFunction<presentTime<true, false>>},
    {"sysutcdatetime", 0, 0, DataType::Date, callFunction<presentTime<false, false>>},
    {"sysdatetimeoffset", 0, 0, DataType::Date, callFunction<presentOffset>},
    {"dateadd", 3, 3, DataType::Date, callFunction<dateAdd>, Pure | PartFirst},
    {"dateplus", 2, 2, DataType::Empty, callFunction<datePlus>, Pure | Inside},
    {"datediff", 3, 3, DataType::Integer, callFunction<dateDiff>, Pure | PartFirst},
    {"datepart", 2, 2, DataType::Integer, callFunction<datePart>, Pure | PartFirst},
    {"datename", 2, 2, DataType::Text, callFunction<dateName>, Pure | PartFirst},
    {"year", 1, 1, DataType::Integer, callFunction<fixedPart<DatePart::Year>>, Pure},
    {"month", 1, 1, DataType::Integer, callFunction<fixedPart<DatePart::Month>>, Pure},
    {"day", 1, 1, DataType::Integer, callFunction<fixedPart<DatePart::Day>>, Pure},
    {"eomonth", 1, 2, DataType::Date, callFunction<endOfMonth>, Pure},
    {"datefromparts", 3, 3, DataType::Date, callFunction<dateFromParts>, Pure},
    {"isdate", 1, 1, DataType::Integer, callFunction<isDate>, Pure},
    {"datetext", 2, 2, DataType::Empty, callFunction<dateTextFunction>, Pure | Inside},
};

}  // namespace

std::span<const Function> dateFunctions() { return dateTable; }

}  // namespace qrel::tsql
