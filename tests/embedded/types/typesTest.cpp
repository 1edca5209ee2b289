#include "embedded/catalogue/typeNames.h"
#include "embedded/types/types.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "embedded/sqlite/sqlite.h"
#include "platform/error.h"

namespace qrel::tsql {
namespace {

TypeRef typeOf(const std::string& text) {
  const auto tokens = lex(text);
  TokenReader reader(text, tokens);
  TypeRef type = readType(reader, nullptr);
  EXPECT_TRUE(reader.atEnd()) << text;
  return type;
}

TEST(Types, DeclarationsAsTheCatalogueShowsThem) {
  // declaration, name, xtype, xusertype, length, prec, scale
  const std::vector<std::tuple<std::string, std::string, int, int, int, int, int>> cases = {
      {"int", "int", 56, 56, 4, 10, 0},
      {"[INTEGER]", "int", 56, 56, 4, 10, 0},
      {"varchar(50)", "varchar", 167, 167, 50, 50, 0},
      {"nvarchar (50)", "nvarchar", 231, 231, 100, 50, 0},
      {"[nvarchar](max)", "nvarchar", 231, 231, -1, -1, 0},
      {"national character varying(7)", "nvarchar", 231, 231, 14, 7, 0},
      {"character varying(7)", "varchar", 167, 167, 7, 7, 0},
      {"char", "char", 175, 175, 1, 1, 0},
      {"sysname", "sysname", 231, 256, 256, 128, 0},
      {"decimal", "decimal", 106, 106, 9, 18, 0},
      {"dec(5, 2)", "decimal", 106, 106, 5, 5, 2},
      {"numeric(38,10)", "numeric", 108, 108, 17, 38, 10},
      {"float(24)", "real", 59, 59, 4, 24, 0},
      {"double precision", "float", 62, 62, 8, 53, 0},
      {"datetime2(3)", "datetime2", 42, 42, 7, 23, 3},
      {"time", "time", 41, 41, 5, 16, 7},
      {"sys.datetimeoffset(0)", "datetimeoffset", 43, 43, 8, 26, 0},
      {"rowversion", "timestamp", 189, 189, 8, 8, 0},
      {"xml(CONTENT dbo.things)", "xml", 241, 241, -1, -1, 0},
      {"varbinary(16)", "varbinary", 165, 165, 16, 16, 0}};
  for (const auto& [text, name, xtype, xusertype, length, prec, scale] : cases) {
    const TypeRef type = typeOf(text);
    EXPECT_EQ(type.name, name) << text;
    EXPECT_EQ(type.xtype, xtype) << text;
    EXPECT_EQ(type.xusertype, xusertype) << text;
    EXPECT_EQ(type.length, length) << text;
    EXPECT_EQ(type.prec, prec) << text;
    EXPECT_EQ(type.scale, scale) << text;
  }
  EXPECT_THROW(typeOf("dbo.unheard"), NotUnderstood);
  EXPECT_THROW(typeOf("nvarchar(4001)"), DataError);
  EXPECT_THROW(typeOf("decimal(5,6)"), DataError);
}

TEST(Types, DeclarationsComeBackFromSqliteWithTheRightAffinity) {
  // type, what typeof() gives for a stored '5', type name, DataType, precision, scale
  const std::vector<std::tuple<std::string, std::string, std::string, DataType, int, int>> cases = {
      {"bit", "integer", "bit", DataType::Boolean, 1, 0},
      {"bigint", "integer", "bigint", DataType::Integer, 19, 0},
      {"float", "real", "float", DataType::Double, 53, 0},
      {"decimal(18,2)", "text", "decimal", DataType::Decimal, 18, 2},
      {"money", "text", "money", DataType::Decimal, 19, 4},
      {"datetime2(3)", "text", "datetime2", DataType::Date, 27, 3},
      {"uniqueidentifier", "text", "uniqueidentifier", DataType::Guid, 36, 0},
      {"nvarchar(max)", "text", "nvarchar", DataType::Text, -1, 0},
      {"sysname", "text", "nvarchar", DataType::Text, 128, 0},
      {"varbinary(8)", "text", "varbinary", DataType::Binary, 8, 0}};  // BLOB affinity leaves what it gets
  for (const auto& [text, stored, typeName, dataType, precision, scale] : cases) {
    std::string declaration = storageDeclaration(typeOf(text));
    declaration.resize(std::min(declaration.find(" COLLATE"), declaration.size()));
    sqlite::Database database(":memory:", sqlite::OpenMode::Create);
    database.execute("create table t(c " + declaration + "); insert into t values('5')");
    sqlite::Statement query(database, "select c, typeof(c) from t");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.text(1), stored) << text;
    const ColumnInfo column = columnFromDeclaration("c", sqlite3_column_decltype(query.get(), 0));
    EXPECT_EQ(column.typeName, typeName) << text;
    EXPECT_EQ(column.type, dataType) << text;
    EXPECT_EQ(column.precision, precision) << text;
    EXPECT_EQ(column.scale, scale) << text;
  }
}

Value bytes(std::string raw) {
  Value value = Value::ofText(std::move(raw));
  value.type = DataType::Binary;
  return value;
}

TEST(ConvertTo, BringsValuesIntoTheStoredForm) {
  const std::vector<std::tuple<std::string, Value, std::string>> cases = {
      {"int", Value::ofText(" +42 "), "42"},
      {"int", Value::ofDouble(-2.9), "-2"},
      {"bit", Value::ofText("TRUE"), "True"},
      {"bit", Value::ofInteger(7), "True"},
      {"decimal(9,2)", Value::ofText("1.005"), "1.01"},
      {"decimal(9,2)", Value::ofText("-0.005"), "-0.01"},
      {"decimal(9,2)", Value::ofText("-0.004"), "0.00"},
      {"decimal(9,2)", Value::ofText("9.999"), "10.00"},
      {"decimal(9,2)", Value::ofDouble(1e-7), "0.00"},
      {"decimal(38,0)", Value::ofText("12345678901234567890123456789012345678"),
       "12345678901234567890123456789012345678"},
      {"money", Value::ofText("$1,234.56789"), "1234.5679"},
      {"real", Value::ofText("0.1"), "0.1"},
      {"float", Value::ofText("1.5e3"), "1500"},
      {"varchar(3)", Value::ofText("abc  "), "abc"},
      {"char(4)", Value::ofText("é"), "é   "},
      {"nvarchar(10)", Value::ofInteger(-5), "-5"},
      {"binary(4)", bytes("\x01"), "0x01000000"},
      {"binary(4)", Value::ofInteger(258), "0x00000102"},
      {"varbinary(8)", Value::ofText("0xABC"), "0x0ABC"},
      {"uniqueidentifier", Value::ofText("0123abcd-0000-0000-0000-00000000000a"),
       "{0123ABCD-0000-0000-0000-00000000000A}"},
      {"uniqueidentifier", bytes("\x01\x23\x45\x67\x89\xab\xcd\xef\x01\x23\x45\x67\x89\xab\xcd\xef"),
       "{67452301-AB89-EFCD-0123-456789ABCDEF}"},
      {"datetime", Value::ofText("20200229 13:05:06.498"), "2020-02-29 13:05:06.497"},
      {"datetime", Value::ofText("2020-12-31T23:59:59.999"), "2021-01-01"},
      {"datetime", Value::ofText("2/29/2020 1:05 pm"), "2020-02-29 13:05:00"},
      {"datetime", Value::ofText("Feb 29, 2020 10:00AM"), "2020-02-29 10:00:00"},
      {"datetime", Value::ofText("29 February 2020"), "2020-02-29"},
      {"datetime", Value::ofText("10:30"), "1900-01-01 10:30:00"},
      {"datetime", Value::ofText("1/2/49"), "2049-01-02"},
      {"datetime", Value::ofText("1/2/50"), "1950-01-02"},
      {"datetime", Value::ofText(""), "1900-01-01"},
      {"datetime", Value::ofInteger(-1), "1899-12-31"},
      {"datetime", bytes(std::string("\x00\x00\x8E\xAC\x00\x00\x01\x2C", 8)), "2000-01-01 00:00:01"},
      {"smalldatetime", Value::ofText("2020-01-01 10:00:29.998"), "2020-01-01 10:00:00"},
      {"smalldatetime", Value::ofText("2020-01-01 10:00:29.999"), "2020-01-01 10:01:00"},
      {"date", Value::ofText("2020-01-01 23:59:59"), "2020-01-01"},
      {"date", bytes("\x5B\x95\x0A"), "1900-01-01"},
      {"time(1)", Value::ofText("10:30:00.26"), "10:30:00.3"},
      {"datetime2(7)", Value::ofText("2020-01-01 00:00:00.1234567"), "2020-01-01 00:00:00.1234567"},
      {"datetimeoffset(0)", Value::ofText("2020-01-01T10:00:00-05:30"), "2020-01-01 10:00:00 -05:30"}};
  for (const auto& [type, value, expected] : cases) {
    const Value result = convertTo(typeOf(type), value);
    EXPECT_EQ(textOf(result.cell()), expected) << type << " from " << textOf(value.cell());
    EXPECT_EQ(result.type, typeOf(type).dataType) << type;
  }
  EXPECT_TRUE(convertTo(typeOf("int"), Value()).null);
}

TEST(ConvertTo, RefusesInTheServersWords) {
  const std::vector<std::tuple<std::string, Value, std::string>> cases = {
      {"int", Value::ofText("x1"), "Conversion failed when converting the varchar value 'x1' to data type int."},
      {"int", Value::ofInteger(2147483648), "Arithmetic overflow error converting expression to data type int."},
      {"tinyint", Value::ofInteger(-1), "Arithmetic overflow error for data type tinyint, value = -1."},
      {"decimal(4,2)", Value::ofInteger(100), "Arithmetic overflow error converting numeric to data type numeric."},
      {"decimal(4,2)", Value::ofText("99.995"), "Arithmetic overflow error converting varchar to data type numeric."},
      {"varchar(3)", Value::ofText("abcd"), "String or binary data would be truncated."},
      {"binary(1)", bytes("ab"), "String or binary data would be truncated."},
      {"datetime", Value::ofText("2021-02-29"),
       "The conversion of a varchar data type to a datetime data type resulted in an out-of-range value."},
      {"datetime", Value::ofText("1752-12-31"),
       "The conversion of a varchar data type to a datetime data type resulted in an out-of-range value."},
      {"datetime", Value::ofText("soon"), "Conversion failed when converting date and/or time from character string."},
      {"uniqueidentifier", Value::ofText("12"),
       "Conversion failed when converting from a character string to uniqueidentifier."}};
  for (const auto& [type, value, expected] : cases) {
    try {
      convertTo(typeOf(type), value);
      ADD_FAILURE() << type << " took " << textOf(value.cell());
    } catch (const DataError& error) {
      EXPECT_EQ(error.number, errorNumber::badSql);
      EXPECT_EQ(error.description, expected);
    }
  }
}

}  // namespace
}  // namespace qrel::tsql
