// Values as they come over ODBC, in the program's one text form.
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/data/odbc/columnPlan.h"
#include "platform/text.h"

namespace qrel::odbc {

namespace {

template <typename T>
T read(std::string_view bytes) {
  T value{};
  std::memcpy(&value, bytes.data(), std::min(sizeof value, bytes.size()));
  return value;
}

std::string fromWide(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() / 2);
  SQLWCHAR units[512];
  // The bytes stand anywhere, and a pair must not be cut in two.
  for (std::size_t at = 0; at + 1 < bytes.size();) {
    std::size_t count = std::min<std::size_t>((bytes.size() - at) / sizeof(SQLWCHAR), 512);
    std::memcpy(units, bytes.data() + at, count * sizeof(SQLWCHAR));
    const bool cuts = count > 1 && units[count - 1] >= 0xD800 && units[count - 1] < 0xDC00 &&
                      at + count * sizeof(SQLWCHAR) + 1 < bytes.size();
    if (cuts) --count;
    appendNarrow(text, units, count);
    at += count * sizeof(SQLWCHAR);
  }
  return text;
}

void appendPadded(std::string& out, unsigned number, int digits) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%0*u", digits, number);
  out += buffer;
}

void appendDay(std::string& out, int year, unsigned month, unsigned day) {
  appendPadded(out, static_cast<unsigned>(year), 4);
  out += '-';
  appendPadded(out, month, 2);
  out += '-';
  appendPadded(out, day, 2);
}

// Without the zeros at the end, and without a point when there is nothing else.
void appendFraction(std::string& out, std::string_view digits) {
  while (digits.ends_with('0')) digits.remove_suffix(1);
  if (!digits.empty()) (out += '.') += digits;
}

void appendClock(std::string& out, const SQL_TIMESTAMP_STRUCT& value, int scale) {
  appendPadded(out, value.hour, 2);
  out += ':';
  appendPadded(out, value.minute, 2);
  out += ':';
  appendPadded(out, value.second, 2);
  // Nanoseconds; drivers differ in how they fill up what the type doesn't hold.
  std::uint32_t step = 1'000'000'000;
  for (int i = 0; i < std::clamp(scale, 0, 7); ++i) step /= 10;
  const std::uint32_t rounded = (value.fraction + step / 2) / step * step;
  std::string digits;
  appendPadded(digits, std::min<std::uint32_t>(rounded, 999'999'999), 9);
  appendFraction(out, digits);
}

std::string momentForm(const SQL_TIMESTAMP_STRUCT& value, int scale) {
  std::string text;
  appendDay(text, value.year, value.month, value.day);
  if (value.hour == 0 && value.minute == 0 && value.second == 0 && value.fraction == 0) return text;
  text += ' ';
  appendClock(text, value, scale);
  return text;
}

// "1-01-01 12:30:00.1200000 +02:00" as a driver writes it: the year in four digits, the fraction without zeros.
std::string offsetForm(const std::string& text) {
  const std::size_t year = text.find('-');
  if (year == std::string::npos || year > 4) return text;
  std::string out(4 - year, '0');
  const std::size_t point = text.find('.');
  if (point == std::string::npos) return out + text;
  const std::size_t end = std::min(text.find_first_not_of("0123456789", point + 1), text.size());
  out += text.substr(0, point);
  appendFraction(out, std::string_view(text).substr(point + 1, end - point - 1));
  return out + text.substr(end);
}

// ".5" and "-.5" as some drivers write them; as many digits behind the point as the column has.
std::string decimalForm(std::string text, int scale) {
  const std::size_t sign = text.starts_with('-') ? 1 : 0;
  if (text.size() > sign && text[sign] == '.') text.insert(sign, 1, '0');
  const std::size_t point = text.find('.');
  std::size_t digits = point == std::string::npos ? 0 : text.size() - point - 1;
  if (point == std::string::npos && scale > 0) text += '.';
  for (; digits < static_cast<std::size_t>(std::max(scale, 0)); ++digits) text += '0';
  return text;
}

std::string guidForm(const SQLGUID& guid) {
  char buffer[48];
  const auto* rest = guid.Data4;
  std::snprintf(buffer, sizeof buffer, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned>(guid.Data1), guid.Data2, guid.Data3, rest[0], rest[1], rest[2], rest[3], rest[4],
                rest[5], rest[6], rest[7]);
  return buffer;
}

// A real is the shortest number that means the same float, so that 0.1 stays 0.1.
double realForm(double value) {
  char buffer[40];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, static_cast<float>(value)).ptr;
  double shortest = value;
  std::from_chars(buffer, end, shortest);
  return shortest;
}

}  // namespace

void appendValue(ColumnStore& store, std::size_t column, const ColumnPlan& plan, int scale, std::string_view bytes) {
  switch (plan.form) {
    case Form::Boolean:
      return store.appendInteger(column, read<unsigned char>(bytes) != 0 ? 1 : 0, DataType::Boolean);
    case Form::Integer:
      return store.appendInteger(column, read<std::int64_t>(bytes));
    case Form::Real:
      return store.appendDouble(column, realForm(read<double>(bytes)));
    case Form::Double:
      return store.appendDouble(column, read<double>(bytes));
    case Form::Decimal:
      return store.appendText(column, DataType::Decimal, decimalForm(fromWide(bytes), scale));
    case Form::Date: {
      const auto date = read<SQL_DATE_STRUCT>(bytes);
      std::string text;
      appendDay(text, date.year, date.month, date.day);
      return store.appendText(column, DataType::Date, text);
    }
    case Form::Time: {
      std::string text;
      appendClock(text, read<SQL_TIMESTAMP_STRUCT>(bytes), scale);
      return store.appendText(column, DataType::Date, text);
    }
    case Form::Moment:
      return store.appendText(column, DataType::Date, momentForm(read<SQL_TIMESTAMP_STRUCT>(bytes), scale));
    case Form::Offset:
      return store.appendText(column, DataType::Date, offsetForm(fromWide(bytes)));
    case Form::Guid:
      return store.appendText(column, DataType::Guid, guidForm(read<SQLGUID>(bytes)));
    case Form::Text:
      return store.appendText(column, DataType::Text, fromWide(bytes));
    case Form::Binary:
      return store.appendText(column, DataType::Binary, bytes);
  }
}

}  // namespace qrel::odbc
