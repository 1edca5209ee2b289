#include "tests/support/tds/wireValue.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <chrono>
#include <optional>

#include "platform/error.h"
#include "platform/text.h"
#include "tests/support/tds/bytes.h"
#include "tests/support/tds/tokens.h"

namespace qrel::tds {

namespace {

__extension__ typedef unsigned __int128 Wide;

constexpr std::int64_t unitsPerSecond = 10'000'000;  // of 100 nanoseconds
constexpr std::int64_t unitsPerDay = 86'400 * unitsPerSecond;
constexpr std::int64_t daysTo1900 = 693'595;  // from 0001-01-01
constexpr int mostDigits = 7;

[[noreturn]] void notOfType(const Cell& cell) {
  throw DataError(errorNumber::badSql, "Error converting the value '" + textOf(cell) + "' to the column's data type.");
}

std::int64_t power(int digits) {
  std::int64_t result = 1;
  for (; digits > 0; --digits) result *= 10;
  return result;
}

// The digits of a decimal text as one number of `scale` digits behind the point, without its sign.
Wide magnitude(const Cell& cell, const std::string& text, int scale, bool& negative) {
  Wide number = 0;
  int behindPoint = -1;
  negative = text.starts_with('-');
  for (const char c : std::string_view(text).substr(negative ? 1 : 0)) {
    if (c == '.' && behindPoint < 0) {
      behindPoint = 0;
      continue;
    }
    if (!isDigit(c)) notOfType(cell);
    if (behindPoint >= scale) {
      if (c != '0') notOfType(cell);
      continue;
    }
    number = number * 10 + static_cast<unsigned>(c - '0');
    if (behindPoint >= 0) ++behindPoint;
  }
  for (int digits = std::max(behindPoint, 0); digits < scale; ++digits) number *= 10;
  return number;
}

std::string bytesOf(Wide number, std::size_t width) {
  std::string out;
  for (std::size_t i = 0; i < width; ++i, number >>= 8) out += static_cast<char>(number & 0xFF);
  return out;
}

std::string decimalText(Wide number, int scale, bool negative) {
  std::string digits;
  for (; number > 0; number /= 10) digits += static_cast<char>('0' + static_cast<int>(number % 10));
  while (digits.size() <= static_cast<std::size_t>(scale)) digits += '0';
  std::reverse(digits.begin(), digits.end());
  if (scale > 0) digits.insert(digits.size() - static_cast<std::size_t>(scale), 1, '.');
  return (negative ? "-" : "") + digits;
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

std::string dateValue(WireKind kind, std::size_t width, int scale, const Cell& cell) {
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

std::string momentOf(WireKind kind, int scale, std::string_view bytes) {
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

constexpr int guidOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

std::string guidBytes(const Cell& cell) {
  std::string digits;
  for (const char c : textOf(cell))
    if (c != '{' && c != '}' && c != '-') digits += c;
  if (digits.size() != 32) notOfType(cell);
  std::string out;
  for (const int at : guidOrder) {
    unsigned value = 0;
    const char* const begin = digits.data() + 2 * at;
    if (std::from_chars(begin, begin + 2, value, 16).ptr != begin + 2) notOfType(cell);
    out += static_cast<char>(value);
  }
  return out;
}

std::string guidText(std::string_view bytes) {
  constexpr std::string_view hex = "0123456789ABCDEF";
  std::string ordered(16, '\0'), out = "{";
  for (std::size_t i = 0; i < 16; ++i) ordered[static_cast<std::size_t>(guidOrder[i])] = bytes[i];
  for (std::size_t i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) out += '-';
    out += hex[static_cast<unsigned char>(ordered[i]) >> 4];
    out += hex[static_cast<unsigned char>(ordered[i]) & 15];
  }
  return out + "}";
}

std::int64_t integerValue(const Cell& cell) {
  if (cell.type == DataType::Integer || cell.type == DataType::Boolean) return cell.integer;
  const std::string text = textOf(cell);
  std::int64_t value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ptr != text.data() + text.size() || text.empty())
    notOfType(cell);
  return value;
}

double realValue(const Cell& cell) {
  if (cell.type == DataType::Double) return cell.real;
  const std::string text = textOf(cell);
  double value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ptr != text.data() + text.size() || text.empty())
    notOfType(cell);
  return value;
}

std::string moneyValue(const Cell& cell, std::size_t width) {
  bool negative = false;
  auto number = static_cast<std::uint64_t>(magnitude(cell, textOf(cell), 4, negative));
  if (negative) number = 0 - number;
  std::string out;
  if (width == 8) appendNumber(out, number >> 32, 4);  // the high half stands first
  appendNumber(out, number, 4);
  return out;
}

}  // namespace

std::string scalarValue(WireKind kind, std::size_t width, int scale, const Cell& cell) {
  std::string out;
  switch (kind) {
    case WireKind::Integer:
    case WireKind::Bit:
      appendNumber(out, static_cast<std::uint64_t>(integerValue(cell)), width);
      return out;
    case WireKind::Float:
      appendNumber(out,
                   width == 4 ? std::bit_cast<std::uint32_t>(static_cast<float>(realValue(cell)))
                              : std::bit_cast<std::uint64_t>(realValue(cell)),
                   width);
      return out;
    case WireKind::Money:
      return moneyValue(cell, width);
    case WireKind::Decimal:
    case WireKind::Numeric: {
      bool negative = false;
      const Wide number = magnitude(cell, textOf(cell), scale, negative);
      return std::string(1, negative ? '\0' : '\1') + bytesOf(number, width);
    }
    case WireKind::Guid:
      return guidBytes(cell);
    default:
      return dateValue(kind, width, scale, cell);
  }
}

std::string variantValue(const Cell& cell) {
  ByteWriter out;
  switch (cell.type) {
    case DataType::Boolean:
      return out.u8(0x32).u8(0).u8(static_cast<std::uint64_t>(cell.integer)).bytes();
    case DataType::Integer:
      if (cell.integer == static_cast<std::int32_t>(cell.integer))
        return out.u8(0x38).u8(0).u32(static_cast<std::uint64_t>(cell.integer)).bytes();
      return out.u8(0x7F).u8(0).u64(static_cast<std::uint64_t>(cell.integer)).bytes();
    case DataType::Double:
      return out.u8(0x3E).u8(0).u64(std::bit_cast<std::uint64_t>(cell.real)).bytes();
    case DataType::Binary:
      return out.u8(0xA5).u8(2).u16(8000).raw(cell.text).bytes();
    default:
      return out.u8(0xE7).u8(7).raw(collation).u16(8000).raw(toUtf16(textOf(cell))).bytes();
  }
}

Value valueOfScalar(WireKind kind, int scale, std::string_view bytes) {
  Value value;
  value.null = false;
  switch (kind) {
    case WireKind::Bit:
      return Value::ofBoolean(numberOf(bytes) != 0);
    case WireKind::Integer: {
      const unsigned unused = 64 - 8 * static_cast<unsigned>(bytes.size());
      // One byte alone has no sign.
      const auto shifted = static_cast<std::int64_t>(numberOf(bytes) << unused);
      return Value::ofInteger(bytes.size() == 1 ? static_cast<std::int64_t>(numberOf(bytes)) : shifted >> unused);
    }
    case WireKind::Float:
      if (bytes.size() == 4) return Value::ofDouble(std::bit_cast<float>(static_cast<std::uint32_t>(numberOf(bytes))));
      return Value::ofDouble(std::bit_cast<double>(numberOf(bytes)));
    case WireKind::Money: {
      const std::uint64_t number =
          bytes.size() == 8 ? numberOf(bytes.substr(0, 4)) << 32 | numberOf(bytes.substr(4)) : numberOf(bytes);
      const auto exact = bytes.size() == 8 ? static_cast<std::int64_t>(number) : static_cast<std::int32_t>(number);
      value.type = DataType::Decimal;
      value.text = decimalText(exact < 0 ? 0 - static_cast<std::uint64_t>(exact) : static_cast<std::uint64_t>(exact), 4,
                               exact < 0);
      return value;
    }
    case WireKind::Decimal:
    case WireKind::Numeric: {
      Wide number = 0;
      for (std::size_t i = bytes.size(); i > 1; --i) number = number << 8 | static_cast<unsigned char>(bytes[i - 1]);
      value.type = DataType::Decimal;
      value.text = decimalText(number, scale, bytes[0] == 0);
      return value;
    }
    case WireKind::Guid:
      value.type = DataType::Guid;
      value.text = guidText(bytes);
      return value;
    default:
      value.type = DataType::Date;
      value.text = momentOf(kind, scale, bytes);
      return value;
  }
}

}  // namespace qrel::tds
