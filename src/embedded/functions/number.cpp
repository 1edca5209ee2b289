// Arithmetic, conversion and a few functions without a family.
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "embedded/functions/functionCall.h"
#include "embedded/types/decimals.h"
#include "embedded/types/types.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

Value FunctionCall::value(int i) const {
  Value out;
  if (isNull(i)) return out;
  switch (type(i)) {
    case SQLITE_INTEGER:
      return Value::ofInteger(integer(i));
    case SQLITE_FLOAT:
      return Value::ofDouble(real(i));
    default:
      out = Value::ofText(std::string(text(i)));
      if (type(i) == SQLITE_BLOB) out.type = DataType::Binary;
      return out;
  }
}

void FunctionCall::result(const Value& value) {
  if (value.null) return sqlite3_result_null(context_);
  switch (value.type) {
    case DataType::Boolean:
    case DataType::Integer:
      return result(value.integer);
    case DataType::Double:
      return result(value.real);
    case DataType::Binary:
      return sqlite3_result_blob64(context_, value.text.empty() ? "" : value.text.data(), value.text.size(),
                                   SQLITE_TRANSIENT);
    default:
      return result(std::string_view(value.text));
  }
}

namespace {

// A number of a text; raises the server's error when it is none.
double numberOf(const Value& value) {
  if (value.type == DataType::Integer) return static_cast<double>(value.integer);
  if (value.type == DataType::Double) return value.real;
  if (value.type == DataType::Binary) {
    std::uint32_t bits = 0;
    for (const char c : value.text) bits = bits << 8 | static_cast<unsigned char>(c);
    return static_cast<std::int32_t>(bits);
  }
  const std::string_view text = trimBlanks(value.text);
  double number = 0;
  if (text.empty()) return number;
  const auto [end, error] = std::from_chars(text.data() + (text.front() == '+'), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size())
    throw DataError(errorNumber::badSql,
                    "Conversion failed when converting the varchar value '" + std::string(text) + "' to data type int.",
                    "22018");
  return number;
}
double numberOf(const FunctionCall& call, int i) {
  return call.type(i) == SQLITE_TEXT ? numberOf(call.value(i)) : call.real(i);
}

bool bothWhole(const Value& a, const Value& b) { return a.type == DataType::Integer && b.type == DataType::Integer; }

// The operators of two values that aren't Null.

// "+" where the types of its sides aren't known before the query runs: two texts are joined, all else is added.
Value add(const Value& a, const Value& b) {
  const auto isText = [](const Value& value) { return value.type == DataType::Text || value.type == DataType::Binary; };
  if (isText(a) && isText(b)) {
    if (static_cast<std::int64_t>(a.text.size() + b.text.size()) > sqlite::longestValue) sqlite::failTooLong();
    return Value::ofText(a.text + b.text);
  }
  std::int64_t sum = 0;
  if (bothWhole(a, b)) {
    if (__builtin_add_overflow(a.integer, b.integer, &sum))
      throw DataError(errorNumber::badSql, "Arithmetic overflow error converting expression to data type bigint.");
    return Value::ofInteger(sum);
  }
  const double number = numberOf(a) + numberOf(b);
  const bool whole = a.type != DataType::Double && b.type != DataType::Double && std::abs(number) < 9e15 &&
                     number == std::floor(number);
  return whole ? Value::ofInteger(static_cast<std::int64_t>(number)) : Value::ofDouble(number);
}

Value divide(const Value& a, const Value& b) {
  const double divisor = numberOf(b);
  if (divisor == 0) throw DataError(errorNumber::badSql, "Divide by zero error encountered.", "22012");
  if (!bothWhole(a, b)) return Value::ofDouble(numberOf(a) / divisor);
  if (b.integer == -1) return Value::ofInteger(static_cast<std::int64_t>(0 - static_cast<std::uint64_t>(a.integer)));
  return Value::ofInteger(a.integer / b.integer);
}

Value modulo(const Value& a, const Value& b) {
  const double divisor = numberOf(b);
  if (divisor == 0) throw DataError(errorNumber::badSql, "Divide by zero error encountered.", "22012");
  if (!bothWhole(a, b)) return Value::ofDouble(std::fmod(numberOf(a), divisor));
  return Value::ofInteger(b.integer == -1 ? 0 : a.integer % b.integer);
}

// What SQLite's own operators take for a number: of a text its beginning that is one.
Value asNumber(const Value& value) {
  if (value.type == DataType::Integer || value.type == DataType::Double) return value;
  const std::string_view text = trimLeftBlanks(value.text);
  const char* begin = text.data() + (!text.empty() && text.front() == '+');
  const char* end = text.data() + text.size();
  std::int64_t whole = 0;
  const auto [behind, error] = std::from_chars(begin, end, whole);
  if (error == std::errc() && (behind == end || (*behind != '.' && *behind != 'e' && *behind != 'E')))
    return Value::ofInteger(whole);
  double real = 0;
  std::from_chars(begin, end, real);
  return Value::ofDouble(real);
}

// "+", "-" and "*" of numbers, and the bits, as SQLite's own operators have them: what overflows goes on as a real.
Value plain(char operation, const Value& left, const Value& right) {
  const Value a = asNumber(left);
  const Value b = asNumber(right);
  const auto whole = [](const Value& value) {
    return value.type == DataType::Integer ? value.integer : static_cast<std::int64_t>(value.real);
  };
  if (operation == '&') return Value::ofInteger(whole(a) & whole(b));
  if (operation == '|') return Value::ofInteger(whole(a) | whole(b));
  std::int64_t result = 0;
  if (bothWhole(a, b)) {
    const bool over = operation == '+'   ? __builtin_add_overflow(a.integer, b.integer, &result)
                      : operation == '-' ? __builtin_sub_overflow(a.integer, b.integer, &result)
                                         : __builtin_mul_overflow(a.integer, b.integer, &result);
    if (!over) return Value::ofInteger(result);
  }
  const double x = numberOf(a);
  const double y = numberOf(b);
  return Value::ofDouble(operation == '+' ? x + y : operation == '-' ? x - y : x * y);
}

Value operated(char operation, const Value& a, const Value& b) {
  if (a.null || b.null) return {};
  switch (operation) {
    case 'a':
      return add(a, b);
    case '/':
      return divide(a, b);
    case '%':
      return modulo(a, b);
    case '^': {
      const Value left = plain('|', a, Value::ofInteger(0));
      return Value::ofInteger(left.integer ^ plain('|', b, Value::ofInteger(0)).integer);
    }
    default:
      return plain(operation, a, b);
  }
}

template <char operation>
void operate(FunctionCall& call) {
  if (!call.anyNull()) call.result(operated(operation, call.value(0), call.value(1)));
}

// Long chains of operators: q_pack writes its arguments one behind the other, q_chain('+-+', packs...) carries the
// operators out from left to right. So SQLite sees no deep expression, and its limit of arguments isn't met.
template <typename Number>
void appendNumber(std::string& out, Number number) {
  char bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  out.append(bytes, sizeof number);
}

void pack(FunctionCall& call) {
  std::string out;
  for (int i = 0; i < call.count(); ++i) {
    const int type = call.type(i);
    out += static_cast<char>(type);
    if (type == SQLITE_NULL) continue;
    if (type == SQLITE_INTEGER) {
      appendNumber(out, call.integer(i));
    } else if (type == SQLITE_FLOAT) {
      appendNumber(out, call.real(i));
    } else {
      appendNumber(out, call.text(i).size());
      out += call.text(i);
    }
  }
  sqlite3_result_blob64(call.context(), out.data(), out.size(), SQLITE_TRANSIENT);
}

// Reads what q_pack has written.
class Unpacker {
 public:
  explicit Unpacker(std::string_view packed) : packed_(packed) {}
  bool atEnd() const { return packed_.empty(); }
  Value next() {
    const auto type = static_cast<unsigned char>(packed_.front());
    packed_.remove_prefix(1);
    if (type == SQLITE_NULL) return {};
    if (type == SQLITE_INTEGER) return Value::ofInteger(number<std::int64_t>());
    if (type == SQLITE_FLOAT) return Value::ofDouble(number<double>());
    const auto size = number<std::size_t>();
    Value value = Value::ofText(std::string(packed_.substr(0, size)));
    if (type == SQLITE_BLOB) value.type = DataType::Binary;
    packed_.remove_prefix(size);
    return value;
  }

 private:
  template <typename Number>
  Number number() {
    Number result{};
    std::memcpy(&result, packed_.data(), sizeof result);
    packed_.remove_prefix(sizeof result);
    return result;
  }

  std::string_view packed_;
};

// Arithmetic in a type that is known: q_decimal(operator, a, b, prec, scale), where '=' only brings `a` into the type,
// and q_whole(type, result).
DecimalParts exactOf(const Value& value) {
  const std::string text = value.type == DataType::Binary ? std::to_string(numberOf(value)) : textOf(value.cell());
  auto parts = readDecimal(text);
  if (!parts && trimBlanks(text).empty()) parts = DecimalParts{};
  if (!parts) throw DataError(errorNumber::badSql, "Error converting data type varchar to numeric.", "22018");
  return *parts;
}

Value exactly(char operation, const Value& a, const Value& b, int prec, int scale) {
  if (a.null || b.null) return {};
  DecimalParts result = exactOf(a);
  if (operation == '=') {
    roundDecimal(result, scale);
  } else {
    auto made = decimalResult(operation, result, exactOf(b), scale);
    if (!made) throw DataError(errorNumber::badSql, "Divide by zero error encountered.", "22012");
    result = std::move(*made);
  }
  if (static_cast<int>(result.whole.size()) > prec - scale)
    throw DataError(errorNumber::badSql, "Arithmetic overflow error converting expression to data type numeric.",
                    "22003");
  return Value::ofText(decimalText(result, scale));
}

// An operator of a chain; prec 0: as the values have it.
struct ChainStep {
  char operation = 0;
  int prec = 0, scale = 0;
};

std::vector<ChainStep> chainSteps(std::string_view codes) {
  std::vector<ChainStep> steps;
  for (std::size_t at = 0; at < codes.size(); ++at) {
    ChainStep& step = steps.emplace_back();
    step.operation = codes[at];
    if (codes[at] != '[') continue;
    step.operation = codes[at + 1];
    const std::size_t comma = codes.find(',', at);
    const std::size_t end = codes.find(']', at);
    std::from_chars(codes.data() + at + 2, codes.data() + comma, step.prec);
    std::from_chars(codes.data() + comma + 1, codes.data() + end, step.scale);
    at = end;
  }
  return steps;
}

void chain(FunctionCall& call) {
  const std::vector<ChainStep> steps = chainSteps(call.text(0));
  std::size_t done = 0;
  Value result;
  for (int i = 1; i < call.count(); ++i) {
    for (Unpacker operands(call.text(i)); !operands.atEnd(); ++done) {
      Value operand = operands.next();
      if (done == 0) {
        result = std::move(operand);
        continue;
      }
      const ChainStep& step = steps[done - 1];
      result = step.prec > 0 ? exactly(step.operation, result, operand, step.prec, step.scale)
                             : operated(step.operation, result, operand);
    }
  }
  call.result(result);
}

template <double (*function)(double)>
void real(FunctionCall& call) {
  if (!call.isNull(0)) call.result(function(numberOf(call, 0)));
}

template <double (*function)(double)>
void rounding(FunctionCall& call) {
  if (call.isNull(0)) return;
  if (call.type(0) == SQLITE_INTEGER) return call.resultArgument(0);
  const double number = function(numberOf(call, 0));
  if (call.type(0) == SQLITE_TEXT && std::abs(number) < 9e15)
    call.result(static_cast<std::int64_t>(number));
  else
    call.result(number);
}

void absolute(FunctionCall& call) {
  if (call.isNull(0)) return;
  if (call.type(0) == SQLITE_INTEGER) return call.result(call.integer(0) < 0 ? -call.integer(0) : call.integer(0));
  if (call.type(0) == SQLITE_FLOAT) return call.result(std::abs(call.real(0)));
  const std::string_view text = trimBlanks(call.text(0));
  call.result(text.substr(!text.empty() && text.front() == '-'));
}

void sign(FunctionCall& call) {
  if (call.isNull(0)) return;
  const double number = numberOf(call, 0);
  call.result(std::int64_t{number > 0 ? 1 : number < 0 ? -1 : 0});
}

void round(FunctionCall& call) {
  if (call.anyNull()) return;
  const bool cut = call.count() > 2 && call.integer(2) != 0;
  const auto digits = static_cast<int>(std::clamp<std::int64_t>(call.integer(1), -30, 30));
  if (call.type(0) == SQLITE_TEXT && digits >= 0) {
    const std::size_t point = call.text(0).find('.');
    auto number = readDecimal(call.text(0));
    if (!number) (void)numberOf(call, 0);
    if (!number) return;
    const std::size_t scale = point == std::string_view::npos ? 0 : call.text(0).size() - point - 1;
    if (cut && number->fraction.size() > static_cast<std::size_t>(digits))
      number->fraction.resize(static_cast<std::size_t>(digits));
    roundDecimal(*number, digits);
    return call.result(decimalText(*number, static_cast<int>(scale)));
  }
  const double factor = std::pow(10.0, digits);
  const double scaled = numberOf(call, 0) * factor;
  const double number = (cut ? std::trunc(scaled) : std::round(scaled)) / factor;
  if (call.type(0) == SQLITE_INTEGER)
    call.result(static_cast<std::int64_t>(number));
  else
    call.result(number);
}

void power(FunctionCall& call) {
  if (call.anyNull()) return;
  const double number = std::pow(numberOf(call, 0), numberOf(call, 1));
  if (call.type(0) == SQLITE_INTEGER && std::abs(number) < 9e15)
    call.result(static_cast<std::int64_t>(number));
  else
    call.result(number);
}

void square(FunctionCall& call) {
  if (!call.isNull(0)) call.result(numberOf(call, 0) * numberOf(call, 0));
}

void isNumeric(FunctionCall& call) {
  const bool number = call.type(0) == SQLITE_INTEGER || call.type(0) == SQLITE_FLOAT ||
                      (call.type(0) == SQLITE_TEXT && readDecimal(call.text(0), true));
  call.result(std::int64_t{number});
}

std::string hexText(std::string_view bytes, bool prefix) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string out = prefix ? "0x" : "";
  for (const char c : bytes) {
    out += digits[static_cast<unsigned char>(c) >> 4];
    out += digits[static_cast<unsigned char>(c) & 15];
  }
  return out;
}

// Styles 3 to 5 and 103 to 105 put the day first.
std::string monthFirst(const std::string& text, int style) {
  const int form = style % 100;
  const std::size_t first = text.find_first_of("/.-");
  const std::size_t second = first == std::string::npos ? first : text.find_first_of("/.-", first + 1);
  if (form < 3 || form > 5 || style > 105 || second == std::string::npos || first > 2) return text;
  return text.substr(first + 1, second - first - 1) + text[first] + text.substr(0, first) + text.substr(second);
}

// q_convert(value, type, prec, scale, style): style Null for CAST. prec -1 is max, 0 the type's default.
Value converted(const FunctionCall& call) {
  const SystemType* system = findSystemType(call.text(1));
  if (!system)
    throw DataError(errorNumber::badSql, "Type " + std::string(call.text(1)) + " is not a defined system type.");
  const TypeRef type = systemTypeRef(*system, static_cast<int>(call.integer(2)), static_cast<int>(call.integer(3)));
  Value value = call.value(0);
  const auto style = static_cast<int>(call.integer(4));
  if (type.dataType == DataType::Text && value.type == DataType::Binary && (style == 1 || style == 2))
    value = Value::ofText(hexText(value.text, style == 1));
  else if (type.dataType == DataType::Binary && value.type == DataType::Text && style == 2)
    value.text = "0x" + value.text;
  else if (type.dataType == DataType::Binary && value.type == DataType::Text && style == 0)
    value.type = DataType::Binary;
  if (type.dataType == DataType::Date && value.type == DataType::Text) value.text = monthFirst(value.text, style);
  const bool sized = isCharacter(type.xtype) && type.prec > 0;
  // An explicit conversion cuts what is too long without a word.
  if (sized && (value.type == DataType::Text))
    value.text.resize(byteOffset(value.text, static_cast<std::size_t>(type.prec)));
  if (value.type == DataType::Binary && isBinary(type.xtype) && type.length > 0)
    value.text.resize(std::min(value.text.size(), static_cast<std::size_t>(type.length)));
  return convertTo(type, value);
}

void convert(FunctionCall& call) {
  if (!call.isNull(0)) call.result(converted(call));
}

void tryConvert(FunctionCall& call) {
  if (call.isNull(0)) return;
  try {
    call.result(converted(call));
  } catch (const DataError&) {
    sqlite3_result_null(call.context());
  }
}

// A float as text without a style: six digits, and where it is written with an exponent three digits of that.
void floatText(FunctionCall& call) {
  if (call.isNull(0)) return;
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.6g", numberOf(call, 0));
  std::string text = buffer;
  const std::size_t exponent = text.find('e');
  if (exponent != std::string::npos && text.size() - exponent == 4) text.insert(exponent + 2, "0");
  call.result(text);
}

void newId(FunctionCall& call) {
  std::array<unsigned char, 16> bytes{};
  sqlite3_randomness(static_cast<int>(bytes.size()), bytes.data());
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  std::string text = hexText({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, false);
  for (const std::size_t at : {20U, 16U, 12U, 8U}) text.insert(at, "-");
  call.result("{" + text + "}");
}

void random(FunctionCall& call) {
  std::uint64_t bits = 0;
  sqlite3_randomness(sizeof bits, &bits);
  call.result(static_cast<double>(bits >> 11) / 9007199254740992.0);
}

void decimal(FunctionCall& call) {
  if (call.isNull(1) || call.isNull(2)) return;
  call.result(exactly(call.text(0).front(), call.value(1), call.value(2), static_cast<int>(call.integer(3)),
                      static_cast<int>(call.integer(4))));
}

void whole(FunctionCall& call) {
  if (call.isNull(1)) return;
  const SystemType* type = findSystemType(call.text(0));
  const std::int64_t number = call.integer(1);
  const bool small = type && (type->xtype == xtype::TinyInt || type->xtype == xtype::SmallInt);
  const std::int64_t most = !type || type->xtype == xtype::BigInt ? std::numeric_limits<std::int64_t>::max()
                            : type->xtype == xtype::TinyInt       ? 255
                            : small                               ? 32767
                                                                  : 2147483647;
  const std::int64_t least = type && type->xtype == xtype::TinyInt ? 0 : -most - 1;
  // What left the range of SQLite's own whole numbers has become a real.
  if (call.type(1) == SQLITE_FLOAT || number > most || number < least)
    throw DataError(errorNumber::badSql,
                    "Arithmetic overflow error converting expression to data type " + std::string(call.text(0)) + ".",
                    "22003");
  call.result(number);
}

// SUM and AVG: whole numbers stay whole, decimals keep their scale. A second argument is the result's, and what is no
// decimal becomes one.
struct Total {
  std::int64_t count;
  std::int64_t whole;
  double real;
  int scale;
  bool anyReal, anyDecimal, typed;
  DecimalParts* exact;  // owned: freed with the result
};

void count(sqlite3_context* context, int given, sqlite3_value** arguments, bool add) {
  const int type = sqlite3_value_type(arguments[0]);
  if (type == SQLITE_NULL) return;
  auto* total = static_cast<Total*>(sqlite3_aggregate_context(context, sizeof(Total)));
  if (!total) return sqlite3_result_error_nomem(context);
  total->count += add ? 1 : -1;
  total->typed = given > 1;
  if (total->typed) total->scale = sqlite3_value_int(arguments[1]);
  if (type == SQLITE_INTEGER) {
    const std::int64_t number = sqlite3_value_int64(arguments[0]);
    const bool over = add ? __builtin_add_overflow(total->whole, number, &total->whole)
                          : __builtin_sub_overflow(total->whole, number, &total->whole);
    if (over)
      throw DataError(errorNumber::badSql, "Arithmetic overflow error converting expression to data type bigint.");
    return;
  }
  if (type == SQLITE_FLOAT && given < 2) {
    total->anyReal = true;
    total->real += add ? sqlite3_value_double(arguments[0]) : -sqlite3_value_double(arguments[0]);
    return;
  }
  const FunctionCall call(context, given, arguments);
  const DecimalParts number = exactOf(call.value(0));
  total->anyDecimal = true;
  if (!total->exact) total->exact = new DecimalParts();
  const int places = static_cast<int>(std::max(number.fraction.size(), total->exact->fraction.size()));
  *total->exact = *decimalResult(add ? '+' : '-', *total->exact, number, places);
  if (given > 1) return;
  const std::string_view text = call.text(0);
  const std::size_t point = text.find('.');
  if (point != std::string_view::npos) total->scale = std::max(total->scale, static_cast<int>(text.size() - point - 1));
}

template <bool add>
void countOne(sqlite3_context* context, int given, sqlite3_value** arguments) {
  try {
    count(context, given, arguments, add);
  } catch (const std::exception& error) {
    failCall(context, std::current_exception(), error.what());
  }
}

void setTotal(sqlite3_context* context, const Total& total, bool average) {
  if (total.count == 0) return sqlite3_result_null(context);
  const auto count = static_cast<double>(total.count);
  const auto whole = readDecimal(std::to_string(total.whole));
  if (total.anyReal) {
    const double decimals = total.exact ? std::strtod(decimalText(*total.exact, 30).c_str(), nullptr) : 0;
    const double sum = total.real + decimals + static_cast<double>(total.whole);
    return sqlite3_result_double(context, average ? sum / count : sum);
  }
  if (!total.anyDecimal && !total.typed)
    return sqlite3_result_int64(context, average ? total.whole / total.count : total.whole);
  constexpr int mostDigits = 38;
  const DecimalParts exact = total.exact ? *total.exact : DecimalParts();
  const int scale = average && !total.typed ? std::max(total.scale, 6) : total.scale;
  const auto sum = decimalResult('+', exact, *whole, std::max(scale, static_cast<int>(exact.fraction.size())));
  if (sum->whole.size() + static_cast<std::size_t>(scale) > mostDigits)
    throw DataError(errorNumber::badSql, "Arithmetic overflow error converting expression to data type numeric.");
  const std::string text =
      decimalText(average ? *decimalResult('/', *sum, *readDecimal(std::to_string(total.count)), scale) : *sum, scale);
  sqlite3_result_text(context, text.c_str(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

template <bool average, bool last>
void totalResult(sqlite3_context* context) {
  auto* total = static_cast<Total*>(sqlite3_aggregate_context(context, 0));
  if (!total) return sqlite3_result_null(context);
  try {
    setTotal(context, *total, average);
  } catch (const std::exception& error) {
    failCall(context, std::current_exception(), error.what());
  }
  if (last) delete std::exchange(total->exact, nullptr);
}

// The value of a query that gives one row at most.
struct Single {
  int rows;
  sqlite3_value* value;
};

void singleRow(sqlite3_context* context, int, sqlite3_value** arguments) {
  auto* single = static_cast<Single*>(sqlite3_aggregate_context(context, sizeof(Single)));
  if (!single) return sqlite3_result_error_nomem(context);
  if (single->rows++ == 0) {
    single->value = sqlite3_value_dup(arguments[0]);
    return;
  }
  const DataError error(errorNumber::badSql,
                        "Subquery returned more than 1 value. This is not permitted when the subquery follows =, !=, "
                        "<, <= , >, >= or when the subquery is used as an expression.",
                        "21000");
  failCall(context, std::make_exception_ptr(error), "more than one row");
}

void singleResult(sqlite3_context* context) {
  auto* single = static_cast<Single*>(sqlite3_aggregate_context(context, 0));
  if (!single || !single->value) return sqlite3_result_null(context);
  sqlite3_result_value(context, single->value);
  sqlite3_value_free(std::exchange(single->value, nullptr));
}

using enum Function::Trait;

constexpr Function numberTable[] = {
    {"add", 2, 2, DataType::Empty, callFunction<operate<'a'>>, Pure | Inside},
    {"divide", 2, 2, DataType::Empty, callFunction<operate<'/'>>, Pure | Inside},
    {"modulo", 2, 2, DataType::Empty, callFunction<operate<'%'>>, Pure | Inside},
    {"xor", 2, 2, DataType::Empty, callFunction<operate<'^'>>, Pure | Inside},
    {"pack", 1, manyArguments, DataType::Empty, callFunction<pack>, Pure | Inside},
    {"chain", 1, manyArguments, DataType::Empty, callFunction<chain>, Pure | Inside},
    {"decimal", 5, 5, DataType::Decimal, callFunction<decimal>, Pure | Inside},
    {"floattext", 1, 1, DataType::Text, callFunction<floatText>, Pure | Inside},
    {"whole", 2, 2, DataType::Integer, callFunction<whole>, Pure | Inside},
    {"abs", 1, 1, DataType::Empty, callFunction<absolute>, Pure},
    {"ceiling", 1, 1, DataType::Integer, callFunction<rounding<std::ceil>>, Pure},
    {"floor", 1, 1, DataType::Integer, callFunction<rounding<std::floor>>, Pure},
    {"sign", 1, 1, DataType::Integer, callFunction<sign>, Pure},
    {"round", 2, 3, DataType::Empty, callFunction<round>, Pure},
    {"power", 2, 2, DataType::Empty, callFunction<power>, Pure},
    {"square", 1, 1, DataType::Double, callFunction<square>, Pure},
    {"sqrt", 1, 1, DataType::Double, callFunction<real<std::sqrt>>, Pure},
    {"exp", 1, 1, DataType::Double, callFunction<real<std::exp>>, Pure},
    {"log", 1, 1, DataType::Double, callFunction<real<std::log>>, Pure},
    {"log10", 1, 1, DataType::Double, callFunction<real<std::log10>>, Pure},
    {"isnumeric", 1, 1, DataType::Integer, callFunction<isNumeric>, Pure},
    {"convert", 5, 5, DataType::Empty, callFunction<convert>, Pure | Inside},
    {"try_convert", 5, 5, DataType::Empty, callFunction<tryConvert>, Pure | Inside},
    {"newid", 0, 0, DataType::Guid, callFunction<newId>},
    {"newsequentialid", 0, 0, DataType::Guid, callFunction<newId>},
    {"rand", 0, 1, DataType::Double, callFunction<random>},
};

}  // namespace

std::span<const Function> numberFunctions() { return numberTable; }

void addAggregates(FunctionSurroundings& to) {
  const auto add = [&](const char* name, int arguments, auto step, auto last, auto now, auto back) {
    const int code = sqlite3_create_window_function(to.database.get(), name, arguments, SQLITE_UTF8, &to, step, last,
                                                    now, back, nullptr);
    if (code != SQLITE_OK) to.database.fail(code, name);
  };
  for (const int arguments : {1, 2}) {
    add("q_sum", arguments, countOne<true>, totalResult<false, true>, totalResult<false, false>, countOne<false>);
    add("q_avg", arguments, countOne<true>, totalResult<true, true>, totalResult<true, false>, countOne<false>);
  }
  const int code = sqlite3_create_function_v2(to.database.get(), "q_single", 1, SQLITE_UTF8, &to, nullptr, singleRow,
                                              singleResult, nullptr);
  if (code != SQLITE_OK) to.database.fail(code, "q_single");
}

}  // namespace qrel::tsql
