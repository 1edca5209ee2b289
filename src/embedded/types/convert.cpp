#include <charconv>
#include <cmath>
#include <limits>

#include "embedded/types/dates.h"
#include "embedded/types/decimals.h"
#include "embedded/types/types.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

[[noreturn]] void fail(std::string message) { throw DataError(errorNumber::badSql, std::move(message), "22018"); }

[[noreturn]] void failConversion(const TypeRef& type, const Value& value) {
  if (value.type == DataType::Text)
    fail("Conversion failed when converting the varchar value '" + value.text + "' to data type " + type.baseName +
         ".");
  fail("Operand type clash: the value is incompatible with " + type.baseName + ".");
}

[[noreturn]] void failOverflow(const TypeRef& type) {
  fail("Arithmetic overflow error converting expression to data type " + type.baseName + ".");
}

Value made(DataType type, std::string text) {
  Value value;
  value.type = type;
  value.null = false;
  value.text = std::move(text);
  return value;
}

bool isText(const Value& value) { return value.type == DataType::Text || value.type == DataType::Empty; }

// Whole numbers -------------------------------------------------------------------------------------------------------

std::int64_t bigEndian(std::string_view bytes) {
  if (bytes.size() > 8) bytes.remove_prefix(bytes.size() - 8);
  std::uint64_t number = 0;
  for (const char c : bytes) number = number << 8 | static_cast<unsigned char>(c);
  return static_cast<std::int64_t>(number);
}

std::int64_t wholeNumber(const TypeRef& type, const Value& value) {
  switch (value.type) {
    case DataType::Boolean:
    case DataType::Integer:
      return value.integer;
    case DataType::Double:
      if (!(std::abs(value.real) < 9.2e18)) failOverflow(type);
      return static_cast<std::int64_t>(value.real);
    case DataType::Binary:
      return bigEndian(value.text);
    case DataType::Decimal: {
      const auto parts = readDecimal(value.text);
      if (!parts) failConversion(type, value);
      std::int64_t number = 0;
      const std::string whole = decimalText({parts->negative, parts->whole, {}}, 0);
      if (std::from_chars(whole.data(), whole.data() + whole.size(), number).ec != std::errc()) failOverflow(type);
      return number;
    }
    default:
      break;
  }
  if (!isText(value)) failConversion(type, value);
  std::string_view text = trimBlanks(value.text);
  if (text.empty()) return 0;
  if (text.front() == '+') text.remove_prefix(1);
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::result_out_of_range)
    fail("The conversion of the varchar value '" + value.text + "' overflowed an " + type.baseName + " column.");
  if (error != std::errc() || end != text.data() + text.size()) failConversion(type, value);
  return number;
}

Value toInteger(const TypeRef& type, const Value& value) {
  const std::int64_t number = wholeNumber(type, value);
  using Limits32 = std::numeric_limits<std::int32_t>;
  const bool fits = type.xtype == xtype::TinyInt    ? number >= 0 && number <= 255
                    : type.xtype == xtype::SmallInt ? number >= -32768 && number <= 32767
                    : type.xtype == xtype::Int      ? number >= Limits32::min() && number <= Limits32::max()
                                                    : true;
  if (!fits && type.xtype == xtype::Int) failOverflow(type);
  if (!fits)
    fail("Arithmetic overflow error for data type " + type.baseName + ", value = " + std::to_string(number) + ".");
  return Value::ofInteger(number);
}

Value toBoolean(const TypeRef& type, const Value& value) {
  if (isText(value)) {
    const std::string_view text = trimBlanks(value.text);
    if (equalNoCase(text, "true")) return Value::ofBoolean(true);
    if (equalNoCase(text, "false")) return Value::ofBoolean(false);
  }
  if (value.type == DataType::Double) return Value::ofBoolean(value.real != 0);
  if (value.type == DataType::Decimal) {
    const auto parts = readDecimal(value.text);
    return Value::ofBoolean(parts && !(parts->whole.empty() && parts->fraction.empty()));
  }
  return Value::ofBoolean(wholeNumber(type, value) != 0);
}

// Numbers with a fraction ---------------------------------------------------------------------------------------------

Value toDouble(const TypeRef& type, const Value& value) {
  double number = value.real;
  if (value.type == DataType::Boolean || value.type == DataType::Integer) {
    number = static_cast<double>(value.integer);
  } else if (value.type != DataType::Double) {
    if (!isText(value) && value.type != DataType::Decimal) failConversion(type, value);
    std::string_view text = trimBlanks(value.text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    number = 0;
    if (!text.empty()) {
      const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
      if (error == std::errc::result_out_of_range) failOverflow(type);
      if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
        fail("Error converting data type varchar to " + type.baseName + ".");
    }
  }
  if (type.xtype == xtype::Real) {
    // A real keeps the shortest number that means the same float, so that 0.1 stays 0.1.
    const auto narrow = static_cast<float>(number);
    if (!std::isfinite(narrow)) failOverflow(type);
    char buffer[32];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, narrow).ptr;
    std::from_chars(buffer, end, number);
  }
  return Value::ofDouble(number);
}

Value toDecimal(const TypeRef& type, const Value& value) {
  const bool money = type.xtype == xtype::Money || type.xtype == xtype::SmallMoney;
  std::string source;
  if (value.type == DataType::Boolean || value.type == DataType::Integer)
    source = std::to_string(value.integer);
  else if (value.type == DataType::Double)
    source = textOf(value.cell());
  else if (value.type == DataType::Binary)
    source = std::to_string(bigEndian(value.text));
  const std::string& text = source.empty() ? value.text : source;
  auto parts = readDecimal(text, money);
  if (!parts && money && trimBlanks(text).empty()) parts = DecimalParts{};
  if (!parts && money) fail("Cannot convert a char value to money. The char value has incorrect syntax.");
  if (!parts) fail("Error converting data type varchar to " + type.baseName + ".");
  roundDecimal(*parts, type.scale);
  const auto most = static_cast<std::size_t>(type.prec - type.scale);
  if (parts->whole.size() > most)
    fail("Arithmetic overflow error converting " + std::string(isText(value) ? "varchar" : "numeric") +
         " to data type " + (money ? type.baseName : "numeric") + ".");
  return made(DataType::Decimal, decimalText(*parts, type.scale));
}

// Dates ---------------------------------------------------------------------------------------------------------------

std::uint64_t littleEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[i]);
  return number;
}

// The bytes that the server's own script writers emit for dates.
std::optional<Moment> momentFromBytes(const TypeRef& type, std::string_view bytes) {
  Moment moment;
  if (type.xtype == xtype::DateTime && bytes.size() == 8) {
    moment.day = dayOf1900 + static_cast<std::int32_t>(bigEndian(bytes.substr(0, 4)));
    moment.units = bigEndian(bytes.substr(4)) * unitsPerSecond / 300;
  } else if (type.xtype == xtype::SmallDateTime && bytes.size() == 4) {
    moment.day = dayOf1900 + bigEndian(bytes.substr(0, 2));
    moment.units = bigEndian(bytes.substr(2)) * 60 * unitsPerSecond;
  } else if (type.xtype == xtype::Date && bytes.size() == 3) {
    moment.day = static_cast<std::int64_t>(littleEndian(bytes));
  } else if ((type.xtype == xtype::Time || type.xtype == xtype::DateTime2) && bytes.size() >= 4 &&
             static_cast<unsigned char>(bytes[0]) <= 7) {
    const std::size_t dayBytes = type.xtype == xtype::DateTime2 ? 3 : 0;
    if (bytes.size() < dayBytes + 4 || bytes.size() > dayBytes + 6) return {};
    moment.units = static_cast<std::int64_t>(littleEndian(bytes.substr(1, bytes.size() - 1 - dayBytes)));
    for (int digits = static_cast<unsigned char>(bytes[0]); digits < 7 && moment.units < unitsPerDay; ++digits)
      moment.units *= 10;
    if (dayBytes) moment.day = static_cast<std::int64_t>(littleEndian(bytes.substr(bytes.size() - 3)));
  } else {
    return {};
  }
  const bool valid = moment.day >= 0 && moment.day <= lastDay && moment.units >= 0 && moment.units < unitsPerDay;
  return valid ? std::optional(moment) : std::nullopt;
}

Moment momentOf(const TypeRef& type, const Value& value) {
  const auto outOfRange = [&]() {
    fail("The conversion of a varchar data type to a " + type.baseName +
         " data type resulted in an out-of-range value.");
  };
  std::optional<Moment> moment;
  bool beyond = false;
  if (value.type == DataType::Integer || value.type == DataType::Boolean || value.type == DataType::Double) {
    if (type.xtype != xtype::DateTime && type.xtype != xtype::SmallDateTime) failConversion(type, value);
    const double days = value.type == DataType::Double ? value.real : static_cast<double>(value.integer);
    if (!(std::abs(days) < 4e6)) outOfRange();
    moment.emplace();
    moment->day = dayOf1900 + static_cast<std::int64_t>(std::floor(days));
    moment->units = static_cast<std::int64_t>((days - std::floor(days)) * static_cast<double>(unitsPerDay));
    beyond = moment->day < 0 || moment->day > lastDay;
  } else if (value.type == DataType::Binary) {
    moment = momentFromBytes(type, value.text);
  } else {
    moment = readDate(value.text, &beyond);
  }
  if (beyond) outOfRange();
  if (!moment) fail("Conversion failed when converting date and/or time from character string.");
  return *moment;
}

Value toDate(const TypeRef& type, const Value& value) {
  Moment moment = momentOf(type, value);
  const auto least = [&](int year) {
    if (moment.day < dayNumber({year, 1, 1}))
      fail("The conversion of a varchar data type to a " + type.baseName +
           " data type resulted in an out-of-range value.");
  };
  switch (type.xtype) {
    case xtype::Date:
      moment.units = 0;
      break;
    case xtype::Time:
      roundToDigits(moment, type.scale);
      return made(DataType::Date, timeText(moment.units % unitsPerDay));
    case xtype::DateTime2:
      roundToDigits(moment, type.scale);
      break;
    case xtype::DateTimeOffset:
      roundToDigits(moment, type.scale);
      return made(DataType::Date, offsetText(moment));
    case xtype::SmallDateTime:
      least(1900);
      roundToMinute(moment);
      if (moment.day > dayNumber({2079, 6, 6})) least(10000);
      break;
    default:
      least(1753);
      roundToTicks(moment);
      break;
  }
  return made(DataType::Date, momentText(moment));
}

// GUIDs, bytes and text -----------------------------------------------------------------------------------------------

Value toGuid(const Value& value) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const auto refuse = [] { fail("Conversion failed when converting from a character string to uniqueidentifier."); };
  std::string out = "{";
  if (value.type == DataType::Binary) {
    if (value.text.size() < 16) refuse();
    constexpr int order[] = {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
    for (const int index : order) {
      const auto byte = index < 0 ? 0U : static_cast<unsigned char>(value.text[static_cast<std::size_t>(index)]);
      if (index < 0)
        out += '-';
      else
        out.append({digits[byte >> 4], digits[byte & 15]});
    }
    return made(DataType::Guid, out + "}");
  }
  std::string_view text = value.text;
  if (!text.empty() && text.front() == '{') text.remove_prefix(1);
  if (text.size() < 36) refuse();
  for (std::size_t i = 0; i < 36; ++i) {
    const char c = text[i];
    const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
    const char upper = c >= 'a' && c <= 'f' ? static_cast<char>(c - 32) : c;
    if (dash ? c != '-' : digits.find(upper) == std::string_view::npos) refuse();
    out += upper;
  }
  return made(DataType::Guid, out + "}");
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

std::optional<std::string> hexBytes(std::string_view text) {
  if (text.size() < 2 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X')) return {};
  text.remove_prefix(2);
  std::string bytes;
  bytes.reserve(text.size() / 2 + 1);
  std::size_t i = 0;
  if (text.size() % 2 == 1) {
    if (hexValue(text[0]) < 0) return {};
    bytes += static_cast<char>(hexValue(text[i++]));
  }
  for (; i < text.size(); i += 2) {
    const int high = hexValue(text[i]);
    const int low = hexValue(text[i + 1]);
    if (high < 0 || low < 0) return {};
    bytes += static_cast<char>(high << 4 | low);
  }
  return bytes;
}

Value toBinary(const TypeRef& type, const Value& value) {
  if (type.xtype == xtype::Clr && value.type == DataType::Text) return value;
  std::string bytes;
  bool number = false;
  if (value.type == DataType::Integer || value.type == DataType::Boolean) {
    number = true;
    const bool wide = value.integer != static_cast<std::int32_t>(value.integer);
    for (int shift = wide ? 56 : 24; shift >= 0; shift -= 8)
      bytes += static_cast<char>(static_cast<std::uint64_t>(value.integer) >> shift & 0xFF);
  } else if (value.type == DataType::Binary) {
    bytes = value.text;
  } else if (auto hex = hexBytes(value.text)) {
    bytes = std::move(*hex);
  } else {
    bytes = value.type == DataType::Double ? textOf(value.cell()) : value.text;
  }
  if (isBinary(type.xtype) && type.length >= 0) {
    const auto most = static_cast<std::size_t>(type.length);
    if (number && bytes.size() > most) bytes.erase(0, bytes.size() - most);
    if (bytes.size() > most) fail("String or binary data would be truncated.");
    if (type.xtype == xtype::Binary && number)
      bytes.insert(0, most - bytes.size(), '\0');
    else if (type.xtype == xtype::Binary)
      bytes.resize(most, '\0');
  }
  return made(DataType::Binary, std::move(bytes));
}

Value toText(const TypeRef& type, const Value& value) {
  std::string text;
  if (isText(value))
    text = value.text;
  else if (value.type == DataType::Boolean)
    text = value.integer ? "1" : "0";
  else if (value.type == DataType::Binary)
    text = fromCodePage(value.text);
  else if (value.type == DataType::Guid)
    text = value.text.substr(1, value.text.size() - 2);
  else
    text = textOf(value.cell());
  const bool fixed = type.xtype == xtype::Char || type.xtype == xtype::NChar;
  if (!isCharacter(type.xtype) || type.prec < 0) return Value::ofText(std::move(text));
  const auto most = static_cast<std::size_t>(type.prec);
  if (!fixed && text.size() <= most) return Value::ofText(std::move(text));
  const std::size_t count = characterCount(text);
  if (count > most) {
    // Blanks beyond the end go without a word.
    const std::size_t end = byteOffset(text, most);
    if (text.find_first_not_of(' ', end) != std::string::npos)
      throw DataError(errorNumber::badSql, "String or binary data would be truncated.", "22001");
    text.resize(end);
  } else if (fixed) {
    text.append(most - count, ' ');
  }
  return Value::ofText(std::move(text));
}

}  // namespace

Value convertTo(const TypeRef& type, const Value& value) {
  if (value.null) return {};
  switch (type.dataType) {
    case DataType::Boolean:
      return toBoolean(type, value);
    case DataType::Integer:
      return toInteger(type, value);
    case DataType::Double:
      return toDouble(type, value);
    case DataType::Decimal:
      return toDecimal(type, value);
    case DataType::Date:
      return toDate(type, value);
    case DataType::Guid:
      return toGuid(value);
    case DataType::Binary:
      return toBinary(type, value);
    case DataType::Text:
      return toText(type, value);
    case DataType::Empty:
      break;
  }
  return value;
}

}  // namespace qrel::tsql
