#include "platform/data/dateText.h"

#include <chrono>

#include "platform/text.h"

namespace qrel {
namespace {

constexpr std::int64_t ticksPerSecond = 10'000'000;
constexpr std::int64_t ticksPerDay = 86'400 * ticksPerSecond;

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  bool atEnd() const { return text_.empty(); }
  bool take(char c) {
    if (!text_.starts_with(c)) return false;
    text_.remove_prefix(1);
    return true;
  }
  bool takeAny(std::string_view characters, char& taken) {
    if (text_.empty() || characters.find(text_.front()) == std::string_view::npos) return false;
    taken = text_.front();
    text_.remove_prefix(1);
    return true;
  }
  bool takeWord(std::string_view word) {
    if (!equalNoCase(text_.substr(0, word.size()), word)) return false;
    text_.remove_prefix(word.size());
    return true;
  }
  void skipBlanks() { text_ = trimLeftBlanks(text_); }
  std::size_t digitCount() const {
    std::size_t count = 0;
    while (count < text_.size() && text_[count] >= '0' && text_[count] <= '9') ++count;
    return count;
  }
  // A number of least to most digits.
  bool takeNumber(std::size_t least, std::size_t most, int& number) {
    const std::size_t count = digitCount();
    if (count < least || count > most) return false;
    number = takeDigits(count);
    return true;
  }
  int takeDigits(std::size_t count) {
    int number = 0;
    for (std::size_t i = 0; i < count; ++i) number = number * 10 + (text_[i] - '0');
    text_.remove_prefix(count);
    return number;
  }
  bool looksLikeTime() const {
    const std::size_t count = digitCount();
    return count > 0 && count < 3 && count < text_.size() && text_[count] == ':';
  }

 private:
  std::string_view text_;
};

std::optional<std::int64_t> daysOf(int year, int month, int day) {
  using namespace std::chrono;
  const year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                            std::chrono::day(static_cast<unsigned>(day))};
  if (year < 1 || year > 9999 || !date.ok()) return std::nullopt;
  constexpr sys_days first = std::chrono::year(1) / January / 1;
  return (sys_days(date) - first).count();
}

std::optional<std::int64_t> scanDate(Scanner& scanner) {
  int first = 0;
  int month = 0;
  int day = 0;
  if (scanner.digitCount() == 8) {
    first = scanner.takeDigits(4);
    month = scanner.takeDigits(2);
    return daysOf(first, month, scanner.takeDigits(2));
  }
  const bool yearFirst = scanner.digitCount() == 4;
  char separator = 0;
  if (!scanner.takeNumber(1, 4, first) || !scanner.takeAny(yearFirst ? "-/" : "/", separator)) return std::nullopt;
  if (!scanner.takeNumber(1, 2, month) || !scanner.take(separator)) return std::nullopt;
  if (yearFirst) {
    if (!scanner.takeNumber(1, 2, day)) return std::nullopt;
    return daysOf(first, month, day);
  }
  int year = 0;
  if (!scanner.takeNumber(4, 4, year)) return std::nullopt;
  return daysOf(year, first, month);
}

std::optional<std::int64_t> scanTime(Scanner& scanner) {
  int hour = 0;
  int minute = 0;
  int second = 0;
  std::int64_t fraction = 0;
  if (!scanner.takeNumber(1, 2, hour) || !scanner.take(':') || !scanner.takeNumber(2, 2, minute)) return std::nullopt;
  if (scanner.take(':') && !scanner.takeNumber(2, 2, second)) return std::nullopt;
  if (scanner.take('.')) {
    const std::size_t digits = scanner.digitCount();
    if (digits < 1 || digits > 7) return std::nullopt;
    fraction = scanner.takeDigits(digits);
    for (std::size_t i = digits; i < 7; ++i) fraction *= 10;
  }
  scanner.skipBlanks();
  const bool afternoon = scanner.takeWord("PM");
  if (afternoon || scanner.takeWord("AM")) {
    if (hour < 1 || hour > 12) return std::nullopt;
    hour = hour % 12 + (afternoon ? 12 : 0);
  }
  if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
  return ((hour * 60 + minute) * 60 + second) * ticksPerSecond + fraction;
}

// The offset from UTC in ticks; 0 without one.
std::optional<std::int64_t> scanOffset(Scanner& scanner) {
  scanner.skipBlanks();
  if (scanner.atEnd() || scanner.takeWord("Z")) return 0;
  char sign = 0;
  int hour = 0;
  int minute = 0;
  if (!scanner.takeAny("+-", sign) || !scanner.takeNumber(2, 2, hour) || !scanner.take(':') ||
      !scanner.takeNumber(2, 2, minute) || hour > 14 || minute > 59) {
    return std::nullopt;
  }
  const std::int64_t minutes = hour * 60 + minute;
  return (sign == '-' ? -minutes : minutes) * 60 * ticksPerSecond;
}

}  // namespace

std::optional<std::int64_t> dateTicks(std::string_view text) {
  Scanner scanner(trimBlanks(text));
  const bool timeAlone = scanner.looksLikeTime();
  const std::optional<std::int64_t> days = timeAlone ? daysOf(1899, 12, 30) : scanDate(scanner);
  if (!days) return std::nullopt;
  const std::int64_t midnight = *days * ticksPerDay;
  char separator = 0;
  if (!timeAlone && scanner.atEnd()) return midnight;
  if (!timeAlone && !scanner.takeAny(" T", separator)) return std::nullopt;
  scanner.skipBlanks();
  const std::optional<std::int64_t> time = scanTime(scanner);
  const std::optional<std::int64_t> offset = time ? scanOffset(scanner) : std::nullopt;
  if (!offset || !scanner.atEnd()) return std::nullopt;
  return midnight + *time - *offset;
}

}  // namespace qrel
