#include "embedded/types/dates.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <vector>

#include "embedded/types/types.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr std::array<std::string_view, 12> monthNames = {"january",   "february", "march",    "april",
                                                         "may",       "june",     "july",     "august",
                                                         "september", "october",  "november", "december"};

bool isLetter(char c) { return lowerAscii(c) >= 'a' && lowerAscii(c) <= 'z'; }

// A number, a word or a mark of a date text.
struct Part {
  enum class Kind { Number, Word, Mark } kind = Kind::Mark;
  std::string_view text;
  int value = 0;
  bool blankBefore = false;
};

bool split(std::string_view text, std::vector<Part>& parts) {
  bool blank = false;
  for (std::size_t i = 0; i < text.size();) {
    const char c = text[i];
    if (c == ' ' || c == '\t') {
      blank = true;
      ++i;
      continue;
    }
    Part part;
    part.blankBefore = blank;
    blank = false;
    std::size_t end = i + 1;
    if (isDigit(c)) {
      while (end < text.size() && isDigit(text[end])) ++end;
      part.kind = Part::Kind::Number;
      std::from_chars(text.data() + i, text.data() + std::min(end, i + 9), part.value);
    } else if (isLetter(c)) {
      while (end < text.size() && isLetter(text[end])) ++end;
      part.kind = Part::Kind::Word;
    } else if (std::string_view("-/.:,+").find(c) == std::string_view::npos) {
      return false;
    }
    part.text = text.substr(i, end - i);
    parts.push_back(part);
    i = end;
  }
  return true;
}

int monthOf(std::string_view word) {
  std::string lower(word);
  std::transform(lower.begin(), lower.end(), lower.begin(), lowerAscii);
  for (std::size_t i = 0; i < monthNames.size(); ++i)
    if (lower == monthNames[i] || (lower.size() == 3 && lower == monthNames[i].substr(0, 3)))
      return static_cast<int>(i) + 1;
  return 0;
}

int fullYear(const Part& part) {
  if (part.text.size() > 2) return part.value;
  return part.value < 50 ? 2000 + part.value : 1900 + part.value;
}

// Reads the parts of one date text.
class DateReader {
 public:
  explicit DateReader(const std::vector<Part>& parts) : parts_(parts) {}

  bool read(Moment& moment, bool& outOfRange) {
    moment.hasDate = readDatePart();
    if (position_ < parts_.size() && moment.hasDate && is("t", position_)) ++position_;
    if (position_ < parts_.size() && !readTimePart(moment)) return false;
    if (position_ != parts_.size()) return false;
    if (!moment.hasDate) date_ = {1900, 1, 1};
    outOfRange = date_.year < 1 || date_.year > 9999 || date_.month < 1 || date_.month > 12 || date_.day < 1 ||
                 date_.day > daysInMonth(date_.year, date_.month) || moment.units < 0 || moment.units >= unitsPerDay;
    if (outOfRange) return false;
    moment.day = dayNumber(date_);
    return true;
  }

 private:
  bool isNumber(std::size_t at) const { return at < parts_.size() && parts_[at].kind == Part::Kind::Number; }
  bool is(std::string_view mark, std::size_t at) const {
    return at < parts_.size() && parts_[at].text.size() == mark.size() &&
           std::equal(mark.begin(), mark.end(), parts_[at].text.begin(),
                      [](char a, char b) { return a == lowerAscii(b); });
  }
  bool isDateMark(std::size_t at) const { return is("-", at) || is("/", at) || is(".", at); }
  int month(std::size_t at) const {
    return at < parts_.size() && parts_[at].kind == Part::Kind::Word ? monthOf(parts_[at].text) : 0;
  }

  bool readDatePart() {
    if (isNumber(0) && isDateMark(1) && isNumber(2) && isDateMark(3) && isNumber(4)) {
      const bool yearFirst = parts_[0].text.size() > 2;
      date_ = yearFirst ? CivilDate{parts_[0].value, parts_[2].value, parts_[4].value}
                        : CivilDate{fullYear(parts_[4]), parts_[0].value, parts_[2].value};
      position_ = 5;
      return true;
    }
    if (isNumber(0) && !is(":", 1)) {
      const int digits = parts_[0].value;
      const std::size_t size = parts_[0].text.size();
      if (size == 8 || size == 6) {
        const int year = size == 8 ? digits / 10000 : fullYear({Part::Kind::Number, "00", digits / 10000, false});
        date_ = {year, digits / 100 % 100, digits % 100};
        position_ = 1;
        return true;
      }
      if (size == 4 && month(1) == 0 && !is("am", 1) && !is("pm", 1)) {
        date_ = {digits, 1, 1};
        position_ = 1;
        return true;
      }
    }
    return readNamedMonth();
  }

  // A month's name with a day and a year around it in any order; the day may be absent.
  bool readNamedMonth() {
    std::size_t at = 0;
    int monthNumber = 0;
    std::vector<const Part*> numbers;
    while (at < parts_.size() && !is(":", at + 1)) {
      if (isNumber(at) && numbers.size() < 2 && !is("am", at + 1) && !is("pm", at + 1))
        numbers.push_back(&parts_[at]);
      else if (month(at) != 0 && monthNumber == 0)
        monthNumber = month(at);
      else if (!(is(",", at) || isDateMark(at)) || numbers.empty())
        break;
      ++at;
    }
    if (monthNumber == 0 || numbers.empty()) return false;
    const bool firstIsYear = numbers[0]->text.size() == 4;
    if (numbers.size() == 1) {
      date_ = {fullYear(*numbers[0]), monthNumber, 1};
    } else {
      const Part& year = firstIsYear ? *numbers[0] : *numbers[1];
      date_ = {fullYear(year), monthNumber, (firstIsYear ? numbers[1] : numbers[0])->value};
    }
    position_ = at;
    return true;
  }

  bool readTimePart(Moment& moment) {
    if (!isNumber(position_)) return false;
    std::int64_t hour = parts_[position_++].value;
    std::int64_t minute = 0;
    std::int64_t second = 0;
    std::int64_t fraction = 0;
    const bool colon = is(":", position_);
    if (colon) {
      if (!isNumber(position_ + 1)) return false;
      minute = parts_[position_ + 1].value;
      position_ += 2;
      if (is(":", position_) && isNumber(position_ + 1)) {
        second = parts_[position_ + 1].value;
        position_ += 2;
        if (!readFraction(fraction)) return false;
      }
    }
    const bool morning = is("am", position_);
    if (morning || is("pm", position_)) {
      ++position_;
      if (hour < 0 || hour > 23 || (morning && hour > 12)) return false;
      if (morning && hour == 12) hour = 0;
      if (!morning && hour < 12) hour += 12;
    } else if (!colon) {
      return false;
    }
    if (!readOffset(moment)) return false;
    const bool valid = hour < 24 && minute < 60 && second < 60;
    moment.units = valid ? ((hour * 60 + minute) * 60 + second) * unitsPerSecond + fraction : unitsPerDay;
    return true;
  }

  // ".5" is half a second, ":500" 500 thousandths.
  bool readFraction(std::int64_t& units) {
    const bool point = is(".", position_);
    if (!point && !is(":", position_)) return true;
    if (!isNumber(position_ + 1)) return false;
    std::string digits(parts_[position_ + 1].text.substr(0, 9));
    if (!point) {
      if (digits.size() > 3) return false;
      digits.insert(0, 3 - digits.size(), '0');
    }
    position_ += 2;
    digits.resize(9, '0');
    std::int64_t nanoseconds = 0;
    std::from_chars(digits.data(), digits.data() + 9, nanoseconds);
    units = (nanoseconds + 50) / 100;
    return true;
  }

  bool readOffset(Moment& moment) {
    if (is("z", position_)) {
      moment.offsetMinutes = 0;
      ++position_;
    } else if (is("+", position_) || is("-", position_)) {
      const int sign = is("-", position_) ? -1 : 1;
      if (!isNumber(position_ + 1) || !is(":", position_ + 2) || !isNumber(position_ + 3)) return false;
      moment.offsetMinutes = sign * (parts_[position_ + 1].value * 60 + parts_[position_ + 3].value);
      position_ += 4;
      return *moment.offsetMinutes >= -840 && *moment.offsetMinutes <= 840;
    }
    return true;
  }

  const std::vector<Part>& parts_;
  std::size_t position_ = 0;
  CivilDate date_;
};

void appendTime(std::string& out, std::int64_t units) {
  const std::int64_t seconds = units / unitsPerSecond;
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d", static_cast<int>(seconds / 3600),
                static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
  out += buffer;
  const auto fraction = static_cast<int>(units % unitsPerSecond);
  if (fraction == 0) return;
  std::snprintf(buffer, sizeof buffer, ".%07d", fraction);
  std::string_view digits = buffer;
  out += digits.substr(0, digits.find_last_not_of('0') + 1);
}

void appendDate(std::string& out, std::int64_t day) {
  const CivilDate date = civilDate(day);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", date.year, date.month, date.day);
  out += buffer;
}

void roundTo(Moment& moment, std::int64_t step) {
  moment.units = (moment.units + step / 2) / step * step;
  if (moment.units < unitsPerDay) return;
  if (moment.day < lastDay) {
    ++moment.day;
    moment.units -= unitsPerDay;
  } else {
    moment.units = unitsPerDay - step;
  }
}

// The stored form itself, "2020-01-31 10:20:30.5": most values come in it.
std::optional<Moment> readStored(std::string_view text) {
  if (text.size() < 10 || text[4] != '-' || text[7] != '-') return {};
  const auto digits = [&text](std::size_t at, std::size_t count) {
    int value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
      if (!isDigit(text[i])) return -1;
      value = value * 10 + (text[i] - '0');
    }
    return value;
  };
  const CivilDate date{digits(0, 4), digits(5, 2), digits(8, 2)};
  if (date.year < 1 || date.month < 1 || date.month > 12 || date.day < 1 ||
      date.day > daysInMonth(date.year, date.month))
    return {};
  Moment moment;
  moment.day = dayNumber(date);
  if (text.size() == 10) return moment;
  if (text.size() < 19 || text.size() > 27 || (text[10] != ' ' && text[10] != 'T') || text[13] != ':' ||
      text[16] != ':')
    return {};
  const int hour = digits(11, 2);
  const int minute = digits(14, 2);
  const int second = digits(17, 2);
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) return {};
  moment.units = ((hour * 60 + minute) * 60 + second) * unitsPerSecond;
  if (text.size() == 19) return moment;
  if (text[19] != '.' || text.size() == 20) return {};
  std::int64_t fraction = digits(20, text.size() - 20);
  if (fraction < 0) return {};
  for (std::size_t i = text.size(); i < 27; ++i) fraction *= 10;
  moment.units += fraction;
  return moment;
}

}  // namespace

std::int64_t dayNumber(const CivilDate& date) {
  const std::int64_t year = date.month <= 2 ? date.year - 1 : date.year;
  const std::int64_t era = year / 400;
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t dayOfYear = (153 * (date.month + (date.month > 2 ? -3 : 9)) + 2) / 5 + date.day - 1;
  return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 306;
}

CivilDate civilDate(std::int64_t day) {
  const std::int64_t shifted = day + 306;
  const std::int64_t era = shifted / 146097;
  const std::int64_t dayOfEra = shifted - era * 146097;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
  CivilDate date;
  date.day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
  date.month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
  date.year = static_cast<int>(yearOfEra + era * 400 + (date.month <= 2 ? 1 : 0));
  return date;
}

int daysInMonth(int year, int month) {
  constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : days[month - 1];
}

std::optional<Moment> readDate(std::string_view text, bool* outOfRange) {
  if (outOfRange) *outOfRange = false;
  if (auto stored = readStored(text)) return stored;
  std::vector<Part> parts;
  if (!split(text, parts)) return {};
  Moment moment;
  moment.day = dayOf1900;
  if (parts.empty()) return moment;
  bool beyond = false;
  if (DateReader(parts).read(moment, beyond)) return moment;
  if (outOfRange) *outOfRange = beyond;
  return {};
}

std::string momentText(const Moment& moment) {
  std::string out;
  appendDate(out, moment.day);
  if (moment.units == 0) return out;
  out += ' ';
  appendTime(out, moment.units);
  return out;
}

std::string timeText(std::int64_t units) {
  std::string out;
  appendTime(out, units);
  return out;
}

std::string offsetText(const Moment& moment) {
  std::string out;
  appendDate(out, moment.day);
  out += ' ';
  appendTime(out, moment.units);
  const int offset = moment.offsetMinutes.value_or(0);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, " %c%02d:%02d", offset < 0 ? '-' : '+', std::abs(offset) / 60,
                std::abs(offset) % 60);
  return out + buffer;
}

void roundToDigits(Moment& moment, int digits) {
  std::int64_t step = unitsPerSecond;
  for (int i = 0; i < digits; ++i) step /= 10;
  if (step > 1) roundTo(moment, step);
}

void roundToTicks(Moment& moment) {
  // 300 ticks a second, shown in thousandths: .000, .003, .007.
  const std::int64_t ticks = (moment.units * 3 + 50'000) / 100'000;
  moment.units = (ticks / 3 * 10 + (ticks % 3 == 1 ? 3 : ticks % 3 == 2 ? 7 : 0)) * 10'000;
  if (moment.units >= unitsPerDay && moment.day < lastDay) {
    ++moment.day;
    moment.units -= unitsPerDay;
  }
}

void roundToMinute(Moment& moment) {
  moment.units += 10'000;  // 29.998 seconds round down, 29.999 up
  roundTo(moment, 60 * unitsPerSecond);
}

}  // namespace qrel::tsql
