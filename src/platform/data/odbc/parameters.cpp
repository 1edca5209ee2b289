#include "platform/data/odbc/parameters.h"

#include <chrono>

#include "platform/data/dateText.h"

namespace qrel::odbc {

namespace {

constexpr std::size_t longestShortText = 4000;  // units; beyond, a driver would cut an nvarchar without a word
constexpr std::size_t roomForAnswers = 4000;

// From 100-nanosecond units since 1 January of year 1.
SQL_TIMESTAMP_STRUCT timestampOf(std::int64_t ticks) {
  using namespace std::chrono;
  constexpr std::int64_t perSecond = 10'000'000;
  constexpr std::int64_t perDay = 86'400 * perSecond;
  const year_month_day date{sys_days(year(1) / January / 1) + days(ticks / perDay)};
  const std::int64_t clock = ticks % perDay;
  const std::int64_t seconds = clock / perSecond;
  SQL_TIMESTAMP_STRUCT moment{};
  moment.year = static_cast<SQLSMALLINT>(static_cast<int>(date.year()));
  moment.month = static_cast<SQLUSMALLINT>(static_cast<unsigned>(date.month()));
  moment.day = static_cast<SQLUSMALLINT>(static_cast<unsigned>(date.day()));
  moment.hour = static_cast<SQLUSMALLINT>(seconds / 3600);
  moment.minute = static_cast<SQLUSMALLINT>(seconds / 60 % 60);
  moment.second = static_cast<SQLUSMALLINT>(seconds % 60);
  moment.fraction = static_cast<SQLUINTEGER>(clock % perSecond * 100);
  return moment;
}

}  // namespace

SQLPOINTER Parameters::One::data() {
  switch (cType) {
    case SQL_C_SBIGINT:
      return &integer;
    case SQL_C_DOUBLE:
      return &real;
    case SQL_C_BIT:
      return &bit;
    case SQL_C_TYPE_TIMESTAMP:
      return &moment;
    default:
      return text.data();
  }
}

Parameters::One Parameters::made(const Value& value, bool comesBack) {
  One one;
  one.value = value;
  one.comesBack = comesBack;
  std::optional<std::int64_t> ticks;
  if (value.type == DataType::Date && !value.null) ticks = dateTicks(value.text);
  if (value.type == DataType::Integer) {
    const bool small = value.integer >= INT32_MIN && value.integer <= INT32_MAX;
    one.cType = SQL_C_SBIGINT;
    one.sqlType = small ? SQL_INTEGER : SQL_BIGINT;
    one.integer = value.integer;
  } else if (value.type == DataType::Double) {
    one.cType = SQL_C_DOUBLE;
    one.sqlType = SQL_DOUBLE;
    one.real = value.real;
  } else if (value.type == DataType::Boolean) {
    one.cType = SQL_C_BIT;
    one.sqlType = SQL_BIT;
    one.bit = value.integer != 0 ? 1 : 0;
  } else if (ticks) {
    one.cType = SQL_C_TYPE_TIMESTAMP;
    one.sqlType = SQL_TYPE_TIMESTAMP;
    one.size = 27;
    one.digits = 7;
    one.moment = timestampOf(*ticks);
  } else {
    one.text = wide(value.text);
    one.length = static_cast<SQLLEN>(one.text.size() * sizeof(SQLWCHAR));
    const bool isLong = one.text.size() > longestShortText;
    one.sqlType = isLong ? SQL_WLONGVARCHAR : SQL_WVARCHAR;
    one.size = isLong ? 0 : std::max<SQLULEN>(one.text.size(), 1);
    if (comesBack && !isLong) one.size = roomForAnswers;
    one.text.resize(std::max(one.text.size(), comesBack ? roomForAnswers : 0) + 1);
  }
  if (value.null) one.length = SQL_NULL_DATA;
  return one;
}

Parameters::Parameters(const CommandRequest& request) : text_(request.text), isProcedure_(request.isProcedure) {
  for (std::size_t i = 0; i < request.parameters.size(); ++i)
    values_.push_back(
        made(request.parameters[i], isProcedure_ && i < request.comesBack.size() && request.comesBack[i]));
  if (!isProcedure_) return;
  std::string marks;
  for (std::size_t i = 0; i < values_.size(); ++i) marks += marks.empty() ? "(?" : ",?";
  text_ = "{?=call " + request.text + marks + (marks.empty() ? "}" : ")}");
}

bool Parameters::bind(SQLHSTMT statement) {
  SQLUSMALLINT number = 1;
  if (isProcedure_ && !SQL_SUCCEEDED(SQLBindParameter(statement, number++, SQL_PARAM_OUTPUT, SQL_C_SLONG, SQL_INTEGER,
                                                      0, 0, &returnValue_, 0, &returnLength_)))
    return false;
  for (One& one : values_) {
    const SQLSMALLINT direction = one.comesBack ? SQL_PARAM_INPUT_OUTPUT : SQL_PARAM_INPUT;
    if (!SQL_SUCCEEDED(SQLBindParameter(statement, number++, direction, one.cType, one.sqlType, one.size, one.digits,
                                        one.data(), static_cast<SQLLEN>(one.text.size() * sizeof(SQLWCHAR)),
                                        &one.length)))
      return false;
  }
  return true;
}

std::vector<Value> Parameters::outputs() const {
  std::vector<Value> values;
  for (const One& one : values_) {
    Value value = one.value;
    if (one.comesBack) {
      value.null = one.length == SQL_NULL_DATA;
      value.integer = one.cType == SQL_C_BIT ? one.bit : one.integer;
      value.real = one.real;
      if (one.cType == SQL_C_WCHAR && !value.null) {
        const auto units = static_cast<std::size_t>(std::max<SQLLEN>(one.length, 0)) / sizeof(SQLWCHAR);
        value.text = narrow(one.text.data(), std::min(units, one.text.size()));
        if (value.type == DataType::Empty) value.type = DataType::Text;
      }
    }
    values.push_back(std::move(value));
  }
  return values;
}

}  // namespace qrel::odbc
