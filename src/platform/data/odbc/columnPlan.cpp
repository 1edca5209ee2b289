#include "platform/data/odbc/columnPlan.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace qrel::odbc {

namespace {

// SQL Server's own numbers of types.
constexpr SQLSMALLINT ssVariant = -150, ssUdt = -151, ssXml = -152, ssTime = -154, ssOffset = -155;

struct TypeRow {
  SQLSMALLINT sqlType;
  const char* name;  // where the driver gives none
  DataType type;
  int precision;  // 0: the size of the column
  Form form;
  SQLSMALLINT cType;
  std::size_t room;  // 0: goes by the size
};

constexpr std::size_t decimalRoom = 48 * sizeof(SQLWCHAR);  // 38 digits, sign, point, zero, and the end
constexpr std::size_t offsetRoom = 48 * sizeof(SQLWCHAR);

constexpr std::array<TypeRow, 27> typeRows = {{
    {SQL_BIT, "bit", DataType::Boolean, 1, Form::Boolean, SQL_C_BIT, 1},
    {SQL_TINYINT, "tinyint", DataType::Integer, 3, Form::Integer, SQL_C_SBIGINT, 8},
    {SQL_SMALLINT, "smallint", DataType::Integer, 5, Form::Integer, SQL_C_SBIGINT, 8},
    {SQL_INTEGER, "int", DataType::Integer, 10, Form::Integer, SQL_C_SBIGINT, 8},
    {SQL_BIGINT, "bigint", DataType::Integer, 19, Form::Integer, SQL_C_SBIGINT, 8},
    {SQL_REAL, "real", DataType::Double, 24, Form::Real, SQL_C_DOUBLE, 8},
    {SQL_FLOAT, "float", DataType::Double, 53, Form::Double, SQL_C_DOUBLE, 8},
    {SQL_DOUBLE, "float", DataType::Double, 53, Form::Double, SQL_C_DOUBLE, 8},
    {SQL_DECIMAL, "decimal", DataType::Decimal, 0, Form::Decimal, SQL_C_WCHAR, decimalRoom},
    {SQL_NUMERIC, "numeric", DataType::Decimal, 0, Form::Decimal, SQL_C_WCHAR, decimalRoom},
    {SQL_TYPE_DATE, "date", DataType::Date, 10, Form::Date, SQL_C_TYPE_DATE, sizeof(SQL_DATE_STRUCT)},
    {SQL_TYPE_TIMESTAMP, "datetime", DataType::Date, 23, Form::Moment, SQL_C_TYPE_TIMESTAMP,
     sizeof(SQL_TIMESTAMP_STRUCT)},
    {ssTime, "time", DataType::Date, 16, Form::Time, SQL_C_TYPE_TIMESTAMP, sizeof(SQL_TIMESTAMP_STRUCT)},
    // As a structure it would lose its offset, as a text it keeps all.
    {ssOffset, "datetimeoffset", DataType::Date, 34, Form::Offset, SQL_C_WCHAR, offsetRoom},
    {SQL_GUID, "uniqueidentifier", DataType::Guid, 36, Form::Guid, SQL_C_GUID, sizeof(SQLGUID)},
    {SQL_CHAR, "char", DataType::Text, 0, Form::Text, SQL_C_WCHAR, 0},
    {SQL_VARCHAR, "varchar", DataType::Text, 0, Form::Text, SQL_C_WCHAR, 0},
    {SQL_LONGVARCHAR, "text", DataType::Text, 0, Form::Text, SQL_C_WCHAR, 0},
    {SQL_WCHAR, "nchar", DataType::Text, 0, Form::Text, SQL_C_WCHAR, 0},
    {SQL_WVARCHAR, "nvarchar", DataType::Text, 0, Form::Text, SQL_C_WCHAR, 0},
    {SQL_WLONGVARCHAR, "ntext", DataType::Text, 0, Form::Text, SQL_C_WCHAR, 0},
    {ssXml, "xml", DataType::Text, 0, Form::Text, SQL_C_WCHAR, 0},
    {SQL_BINARY, "binary", DataType::Binary, 0, Form::Binary, SQL_C_BINARY, 0},
    {SQL_VARBINARY, "varbinary", DataType::Binary, 0, Form::Binary, SQL_C_BINARY, 0},
    {SQL_LONGVARBINARY, "", DataType::Binary, 0, Form::Binary, SQL_C_BINARY, 0},
    {ssUdt, "", DataType::Binary, 0, Form::Binary, SQL_C_BINARY, 0},
    // Its values are of any type, and the drivers agree on no way to ask for it: it comes as text.
    {ssVariant, "sql_variant", DataType::Empty, 0, Form::Text, SQL_C_WCHAR, 0},
}};

const TypeRow& rowOf(SQLSMALLINT sqlType) {
  const auto found =
      std::find_if(typeRows.begin(), typeRows.end(), [&](const TypeRow& row) { return row.sqlType == sqlType; });
  // What nobody knows yet comes as text.
  return found == typeRows.end() ? typeRows.back() : *found;
}

std::string typeNameOf(SQLHSTMT statement, SQLUSMALLINT number, const TypeRow& row, SQLULEN size) {
  SQLWCHAR buffer[130] = {};
  SQLSMALLINT bytes = 0;
  std::string name;
  if (SQL_SUCCEEDED(SQLColAttributeW(statement, number, SQL_DESC_TYPE_NAME, buffer, sizeof buffer, &bytes, nullptr)))
    name = lowerCase(narrow(buffer, static_cast<std::size_t>(std::clamp<int>(bytes, 0, 258)) / sizeof(SQLWCHAR)));
  name.resize(std::min(name.find_first_of(" ("), name.size()));  // "int identity", "numeric() identity"
  if (name.empty()) return row.name;
  // FreeTDS calls the small ones by the name of the large ones.
  if (name == "money" && size == 10) return "smallmoney";
  if (name == "datetime" && size == 16) return "smalldatetime";
  return name;
}

int precisionOf(const TypeRow& row, const std::string& typeName, SQLULEN size) {
  if (typeName == "smalldatetime") return 16;
  if (typeName == "datetime2") return 27;
  if (row.type == DataType::Empty) return 0;
  if (row.precision != 0) return row.precision;
  const bool sized = row.type == DataType::Decimal || row.room != 0 || (size > 0 && size <= 8000);
  if (sized) return static_cast<int>(size);
  return typeName == "text" || typeName == "ntext" || typeName == "image" ? 0 : -1;
}

std::size_t roomOf(const TypeRow& row, SQLULEN size) {
  constexpr SQLULEN most = 8000;  // longer ones have no bound that would be worth a buffer
  if (row.room != 0) return row.room;
  const bool bounded =
      size > 0 && size <= most && row.sqlType != ssVariant && row.sqlType != ssXml && row.sqlType != ssUdt;
  if (!bounded) return 0;
  return row.cType == SQL_C_WCHAR ? (static_cast<std::size_t>(size) + 1) * sizeof(SQLWCHAR)
                                  : static_cast<std::size_t>(size);
}

}  // namespace

void describeColumns(SQLHSTMT statement, std::vector<ColumnInfo>& columns, std::vector<ColumnPlan>& plans) {
  SQLSMALLINT count = 0;
  SQLNumResultCols(statement, &count);
  for (SQLUSMALLINT number = 1; number <= static_cast<SQLUSMALLINT>(std::max<SQLSMALLINT>(count, 0)); ++number) {
    SQLWCHAR name[300] = {};
    SQLSMALLINT length = 0;
    SQLSMALLINT type = 0;
    SQLSMALLINT digits = 0;
    SQLSMALLINT nullable = 0;
    SQLULEN size = 0;
    SQLDescribeColW(statement, number, name, 300, &length, &type, &size, &digits, &nullable);
    const TypeRow& row = rowOf(type);
    ColumnInfo column;
    column.name = narrow(name, static_cast<std::size_t>(std::clamp<int>(length, 0, 299)));
    column.typeName = typeNameOf(statement, number, row, size);
    column.type = row.type;
    column.precision = precisionOf(row, column.typeName, size);
    column.scale = row.type == DataType::Decimal || row.type == DataType::Date ? digits : 0;
    columns.push_back(std::move(column));
    plans.push_back({row.form, row.cType, roomOf(row, size)});
  }
}

}  // namespace qrel::odbc
