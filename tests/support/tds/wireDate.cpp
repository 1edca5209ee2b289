#include "tests/support/tds/wireDate.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "platform/text.h"
#include "tests/support/tds/bytes.h"
#include "tests/support/tds/wireValue.h"

namespace qrel::tds {

namespace {

constexpr std::int64_t unitsPerSecond = 10'000'000;  // of 100 nanoseconds
constexpr std::int64_t unitsPerDay = 86'400 * unitsPerSecond;
constexpr std::int64_t daysTo1900 = 693'595;  // from 0001-01-01
constexpr int mostDigits = 7;

std::int64_t power(int digits) {
  std::int64_t result = 1;
  for (; digits > 0; --digits) result *= 10;
  return result;
}

struct Moment {
  std::int64_t day = 0;    // from 0001-01-01
  std::int64_t units = 0;  // since midnight
  int offset = 0;          // minutes
};

std::int64_t dayOf(int year, unsigned month, unsigned day) {
  using namespace std::chrono;
  const sys_days first{std::chrono::year{1} / 1 / 1};
  return (sys_days{std::chrono::year{year} / month / day} - first).count();
}

std::string dateOf(std::int64_t day) {
  using namespace std::chrono;
  const year_month_day date{sys_days{std::chrono::year{1} / 1 / 1} + days{day}};
  char text[16];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()));
  return text;
}

// Reads the parts of a value's text form one after the other.
class DateText {
 public:
  DateText(const Cell& cell, std::string text) : cell_(cell), text_(std::move(text)) {}

  Moment read() {
    Moment moment;
    if (text_.size() > 2 && text_[2] != ':') {
      const int year = number(4);
      expect('-');
      const int month = number(2);
      expect('-');
      moment.day = dayOf(year, static_cast<unsigned>(month), static_cast<unsigned>(number(2)));
      if (ended()) return moment;
      expect(' ');
    }
    if (text_[at_] != '+' && text_[at_] != '-') {
      readTime(moment);
      if (!ended()) expect(' ');
    }
    if (!ended()) {
      const int sign = text_[at_++] == '-' ? -1 : 1;
      const int hours = number(2);
      expect(':');
      moment.offset = sign * (60 * hours + number(2));
    }
    return moment;
  }

 private:
  void readTime(Moment& moment) {
    std::int64_t seconds = 3600 * number(2);
    expect(':');
    seconds += 60 * number(2);
    expect(':');
    seconds += number(2);
    moment.units = seconds * unitsPerSecond;
    if (ended() || text_[at_] != '.') return;
    std::int64_t unit = unitsPerSecond / 10;
    for (++at_; !ended() && isDigit(text_[at_]); ++at_, unit /= 10) moment.units += unit * (text_[at_] - '0');
  }
  bool ended() const { return at_ >= text_.size(); }
  void expect(char c) {
    if (ended() || text_[at_++] != c) notOfType(cell_);
  }
  int number(std::size_t digits) {
    int value = 0;
    const char* const begin = text_.data() + std::min(at_, text_.size());
    const char* const end = text_.data() + std::min(at_ + digits, text_.size());
    if (std::from_chars(begin, end, value).ptr != begin + digits) notOfType(cell_);
    at_ += digits;
    return value;
  }

  const Cell& cell_;
  std::string text_;
  std::size_t at_ = 0;
};

std::size_t timeWidth(int scale) { return scale <= 2 ? 3 : scale <= 4 ? 4 : 5; }

void appendTime(std::string& out, const Moment& moment, int scale) {
  appendNumber(out, static_cast<std::uint64_t>(moment.units / power(mostDigits - scale)), timeWidth(scale));
}

// As the text form has it: " hh:mm:ss", the fraction without trailing zeros; nothing at midnight.
std::string timeOf(std::int64_t units, bool always) {
  if (units == 0 && !always) return "";
  const std::int64_t seconds = units / unitsPerSecond;
  char text[32];
  const int length = std::snprintf(text, sizeof text, "%02d:%02d:%02d.%07d", static_cast<int>(seconds / 3600),
                                   static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60),
                                   static_cast<int>(units % unitsPerSecond));
  std::string shown(text, static_cast<std::size_t>(length));
  shown.resize(shown.find_last_not_of('0') + 1);
  // "12:30:" and "12:30:00." alike
  if (units % unitsPerSecond == 0) shown = std::string(text, 8);
  return shown;
}

}  // namespace

std::string dateBytes(WireKind kind, std::size_t width, int scale, const Cell& cell) {
  Moment moment = DateText(cell, textOf(cell)).read();
  std::string out;
  if (kind == WireKind::DateTime) {
    const auto days = static_cast<std::uint64_t>(moment.day - daysTo1900);
    if (width == 4) {
      appendNumber(out, days, 2);
      appendNumber(out, static_cast<std::uint64_t>(moment.units / (60 * unitsPerSecond)), 2);
    } else {
      appendNumber(out, days, 4);
      appendNumber(out, static_cast<std::uint64_t>((moment.units * 300 + unitsPerSecond / 2) / unitsPerSecond), 4);
    }
    return out;
  }
  if (kind == WireKind::DateTimeOffset) {
    moment.units -= 60 * unitsPerSecond * moment.offset;
    if (moment.units < 0) --moment.day;
    if (moment.units >= unitsPerDay) ++moment.day;
    moment.units = (moment.units + unitsPerDay) % unitsPerDay;
  }
  if (kind != WireKind::Date) appendTime(out, moment, scale);
  if (kind != WireKind::Time) appendNumber(out, static_cast<std::uint64_t>(moment.day), 3);
  if (kind == WireKind::DateTimeOffset) appendNumber(out, static_cast<std::uint64_t>(moment.offset), 2);
  return out;
}

std::string dateText(WireKind kind, int scale, std::string_view bytes) {
  Moment moment;
  if (kind == WireKind::DateTime) {
    const bool isShort = bytes.size() == 4;
    const std::string_view days = bytes.substr(0, bytes.size() / 2);
    const auto rest = static_cast<std::int64_t>(numberOf(bytes.substr(days.size())));
    moment.day =
        daysTo1900 + (isShort ? static_cast<std::int64_t>(numberOf(days)) : static_cast<std::int32_t>(numberOf(days)));
    // A 1/300 second is told in thousandths.
    moment.units = isShort ? rest * 60 * unitsPerSecond : (rest * 10 + 1) / 3 * (unitsPerSecond / 1000);
  } else {
    ByteReader reader(bytes);
    if (kind != WireKind::Date)
      moment.units = static_cast<std::int64_t>(reader.number(timeWidth(scale))) * power(mostDigits - scale);
    if (kind == WireKind::Time) return timeOf(moment.units, true);
    moment.day = static_cast<std::int64_t>(reader.number(3));
    if (kind == WireKind::DateTimeOffset) {
      moment.offset = static_cast<std::int16_t>(reader.u16());
      moment.units += 60 * unitsPerSecond * moment.offset;
      if (moment.units < 0) --moment.day;
      if (moment.units >= unitsPerDay) ++moment.day;
      moment.units = (moment.units + unitsPerDay) % unitsPerDay;
    }
  }
  const std::string time = timeOf(moment.units, kind == WireKind::DateTimeOffset);
  std::string text = dateOf(moment.day) + (time.empty() ? "" : " ") + time;
  if (kind == WireKind::DateTimeOffset) {
    char offset[16];
    const int minutes = std::abs(moment.offset);
    std::snprintf(offset, sizeof offset, " %c%02d:%02d", moment.offset < 0 ? '-' : '+', minutes / 60, minutes % 60);
    text += offset;
  }
  return text;
}

}  // namespace qrel::tds
