// What goes over the wire between a client of ODBC and the TDS end: types, values, results, parameters, errors.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "tests/odbc/odbcClient.h"

namespace qrel {
namespace {

struct TypeCase {
  std::string declared;
  std::string literal;
  std::string described;  // number of the type, size, digits
  std::string text;
};

TEST_F(TdsFixture, EveryTypeHasItsFormOnTheWire) {
  const std::vector<TypeCase> cases = {
      {"tinyint", "255", "-6 3 0", "255"},
      {"smallint", "-32768", "5 5 0", "-32768"},
      {"int", "-2147483648", "4 10 0", "-2147483648"},
      {"bigint", "-9223372036854775808", "-5 19 0", "-9223372036854775808"},
      {"bit", "1", "-7 1 0", "1"},
      {"decimal(9,2)", "-0.05", "2 9 2", "-0.05"},
      {"decimal(19,0)", "9999999999999999999", "2 19 0", "9999999999999999999"},
      {"decimal(28,7)", "123456789012345678901.2345678", "2 28 7", "123456789012345678901.2345678"},
      {"numeric(38,10)", "-1234567890123456789012345678.0123456789", "2 38 10",
       "-1234567890123456789012345678.0123456789"},
      {"money", "-922337203685477.5808", "3 19 4", "-922337203685477.5808"},
      {"smallmoney", "-0.5", "3 10 4", "-0.5000"},
      {"float", "0.1", "8 53 0", "0.10000000000000001"},
      {"real", "0.1", "7 24 0", "0.100000001"},
      {"datetime", "'17530101 00:00:00.003'", "93 23 3", "1753-01-01 00:00:00.003"},
      {"datetime", "'20240229 23:59:59.997'", "93 23 3", "2024-02-29 23:59:59.997"},
      {"smalldatetime", "'20790606 23:59'", "93 16 0", "2079-06-06 23:59:00"},
      {"date", "'9999-12-31'", "91 10 0", "9999-12-31"},
      {"time(0)", "'23:59:59'", "-154 8 0", "23:59:59"},
      {"time(7)", "'00:00:00.0000001'", "-154 16 7", "00:00:00.0000001"},
      {"datetime2(3)", "'1000-01-01 12:34:56.789'", "93 23 3", "1000-01-01 12:34:56.789"},
      {"datetime2(7)", "'9999-12-31 23:59:59.9999999'", "93 27 7", "9999-12-31 23:59:59.9999999"},
      {"datetimeoffset(7)", "'2024-03-01 01:30:00.5 +02:00'", "-155 34 7", "2024-03-01 01:30:00.5000000 +02:00"},
      {"datetimeoffset(0)", "'2024-02-29 23:30:00 -05:30'", "-155 26 0", "2024-02-29 23:30:00 -05:30"},
      {"char(5)", "'ab'", "1 5 0", "ab   "},
      {"varchar(20)", "'café €'", "12 20 0", "café €"},
      {"nchar(3)", "N'ж'", "-8 3 0", "ж  "},
      {"nvarchar(10)", "N'zü中😀'", "-9 10 0", "zü中😀"},
      {"nvarchar(10)", "N''", "-9 10 0", ""},
      {"varchar(max)", "'é'", "12 0 0", "é"},
      {"nvarchar(max)", "N'中😀'", "-9 0 0", "中😀"},
      {"text", "'café'", "-1 2147483647 0", "café"},
      {"ntext", "N'中😀'", "-10 1073741823 0", "中😀"},
      {"xml", "N'<a>中</a>'", "-152 0 0", "<a>中</a>"},
      {"binary(4)", "0x0001FE", "-2 4 0", "0001fe00"},
      {"varbinary(8)", "0xDEAD", "-3 8 0", "dead"},
      {"varbinary(max)", "0xDEAD", "-3 0 0", "dead"},
      {"image", "0x000102", "-4 2147483647 0", "000102"},
      {"uniqueidentifier", "'00112233-4455-6677-8899-aabbccddeeff'", "-11 36 0",
       "00112233-4455-6677-8899-AABBCCDDEEFF"},
      {"sql_variant", "42", "-150 8000 0", "42"},
      {"sql_variant", "N'h€'", "-150 8000 0", "h€"},
      {"sysname", "N'who'", "-9 128 0", "who"},
  };
  std::string script;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const std::string table = "T" + std::to_string(i);
    script += "CREATE TABLE " + table + " (Id int NOT NULL, V " + cases[i].declared + " NULL)\nGO\nINSERT " + table +
              " VALUES (1, " + cases[i].literal + ")\nINSERT " + table + " VALUES (2, NULL)\nGO\n";
  }
  load(script);
  serve();
  OdbcClient client(connectionString());
  ASSERT_TRUE(client.connected) << client.errors << client.errorText;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    ASSERT_EQ(client.run("SELECT V FROM T" + std::to_string(i) + " ORDER BY Id"), SQL_SUCCESS) << client.errorText;
    EXPECT_EQ(client.describe(1), cases[i].described) << cases[i].declared;
    ASSERT_EQ(client.fetch(), SQL_SUCCESS) << cases[i].declared << client.errorText;
    EXPECT_EQ(client.text(1), cases[i].text) << cases[i].declared;
    ASSERT_EQ(client.fetch(), SQL_SUCCESS) << cases[i].declared << client.errorText;
    EXPECT_EQ(client.text(1), "NULL") << cases[i].declared;
    EXPECT_EQ(client.fetch(), SQL_NO_DATA);
  }
}

TEST_F(TdsFixture, ValuesAreTheirCTypes) {
  load(
      "CREATE TABLE T (B bigint, F float, R real, D datetime2(7), O datetimeoffset(3), G uniqueidentifier, M money, "
      "V timestamp, H hierarchyid)\nGO\n"
      "INSERT T (B, F, R, D, O, G, M, H) VALUES (-9223372036854775807, 0.1, 0.5, '2020-02-29 13:05:06.1234567', "
      "'2024-02-29 12:30:00.123 +02:00', '00112233-4455-6677-8899-aabbccddeeff', 12.5, 0x58)");
  serve();
  OdbcClient client(connectionString());
  ASSERT_EQ(client.run("SELECT * FROM T"), SQL_SUCCESS) << client.errorText;
  ASSERT_EQ(client.fetch(), SQL_SUCCESS);
  const auto get = [&](int column, SQLSMALLINT type, auto& value) {
    SQLLEN length = 0;
    EXPECT_EQ(SQLGetData(client.statement, static_cast<SQLUSMALLINT>(column), type, &value, sizeof value, &length),
              SQL_SUCCESS)
        << column;
    return length;
  };
  SQLBIGINT big = 0;
  double real = 0;
  float narrow = 0;
  SQL_TIMESTAMP_STRUCT moment{}, utc{};
  SQLGUID guid{};
  char version[8], node[8];
  get(1, SQL_C_SBIGINT, big);
  get(2, SQL_C_DOUBLE, real);
  get(3, SQL_C_FLOAT, narrow);
  get(4, SQL_C_TYPE_TIMESTAMP, moment);
  get(5, SQL_C_TYPE_TIMESTAMP, utc);
  get(6, SQL_C_GUID, guid);
  EXPECT_EQ(client.text(7), "12.5000");
  EXPECT_EQ(get(8, SQL_C_BINARY, version), 8);
  EXPECT_EQ(get(9, SQL_C_BINARY, node), 1);
  EXPECT_EQ(node[0], 0x58);
  EXPECT_EQ(big, -9223372036854775807);
  EXPECT_EQ(real, 0.1);
  EXPECT_EQ(narrow, 0.5F);
  EXPECT_EQ(moment.day, 29);
  EXPECT_EQ(moment.fraction, 123456700u);
  EXPECT_EQ(utc.hour, 10);
  EXPECT_EQ(utc.minute, 30);
  EXPECT_EQ(guid.Data1, 0x00112233u);
  EXPECT_EQ(guid.Data3, 0x6677);
  EXPECT_EQ(guid.Data4[7], 0xFF);
}

// Longer than a packet, in pieces that cut letters in two, as values and as parameters.
TEST_F(TdsFixture, LongValuesComeInPieces) {
  load(
      "CREATE TABLE T (N int, W nvarchar(max), T text, B varbinary(max))\nGO\n"
      "INSERT T VALUES (1, REPLICATE(CAST(N'中😀' AS nvarchar(max)), 50000), "
      "REPLICATE(CAST('é' AS varchar(max)), 100000), CAST(REPLICATE(CAST('x' AS varchar(max)), 9001) AS "
      "varbinary(max)))");
  serve();
  OdbcClient client(connectionString());
  std::string wide;
  for (int i = 0; i < 50000; ++i) wide += "中😀";
  std::string narrow;
  for (int i = 0; i < 100000; ++i) narrow += "é";
  for (const std::size_t room : {std::size_t{1002}, std::size_t{2000000}}) {
    ASSERT_EQ(client.run("SELECT * FROM T"), SQL_SUCCESS) << client.errorText;
    ASSERT_EQ(client.fetch(), SQL_SUCCESS);
    EXPECT_TRUE(client.text(2, room) == wide) << room;
    EXPECT_TRUE(client.text(3, room) == narrow) << room;
    std::string bytes;
    for (std::size_t i = 0; i < 9001; ++i) bytes += "78";
    EXPECT_EQ(client.text(4, room), bytes) << room;
  }
  client.bindText(1, wide);
  EXPECT_EQ(client.run("SELECT N FROM T WHERE W = ?"), SQL_SUCCESS) << client.errorText;
  EXPECT_EQ(client.rows(), "1");
  // A batch that takes many packets.
  client.unbind();
  EXPECT_EQ(client.run("SELECT LEN(N'" + std::string(100000, 'x') + "')"), SQL_SUCCESS) << client.errorText;
  EXPECT_EQ(client.rows(), "100000");
}

TEST_F(TdsFixture, BatchesGiveAllTheirResults) {
  load("CREATE TABLE T (N int)\nGO\nINSERT T VALUES (1), (2), (3)");
  serve();
  OdbcClient client(connectionString());
  EXPECT_EQ(client.run("SET NOCOUNT ON"), SQL_NO_DATA);
  ASSERT_EQ(client.run("DECLARE @n int; SELECT @n = COUNT(*) FROM T SELECT @n SELECT N FROM T WHERE N < @n UNION ALL "
                       "SELECT 9; SET @n = 7 SELECT CASE WHEN @n > 1 THEN 'x' END AS a"),
            SQL_SUCCESS)
      << client.errorText;
  EXPECT_EQ(client.rows(), "3");
  ASSERT_EQ(client.nextResult(), SQL_SUCCESS);
  EXPECT_EQ(client.rows(), "1 2 9");
  ASSERT_EQ(client.nextResult(), SQL_SUCCESS);
  EXPECT_EQ(client.rows(), "x");
  EXPECT_EQ(client.nextResult(), SQL_NO_DATA);
  ASSERT_EQ(client.run("IF EXISTS (SELECT * FROM T) SELECT 'some' ELSE SELECT 'none'"), SQL_SUCCESS);
  EXPECT_EQ(client.rows(), "some");

  // Counts and messages stand in front of the rows where a server gives them.
  server_->switches().countsFirst = 2;
  server_->switches().messageFirst = true;
  EXPECT_EQ(client.run("SELECT N FROM T ORDER BY N"), SQL_SUCCESS);
  SQLLEN count = 0;
  for (SQLLEN expected = 1; expected <= 2; ++expected) {
    SQLRowCount(client.statement, &count);
    EXPECT_EQ(count, expected);
    EXPECT_EQ(client.nextResult(), expected == 2 ? SQL_SUCCESS_WITH_INFO : SQL_SUCCESS);
  }
  EXPECT_NE(client.errorText.find("A message of the server."), std::string::npos) << client.errorText;
  EXPECT_EQ(client.rows(), "1 2 3");
}

TEST_F(TdsFixture, ParametersOfEveryKindArrive) {
  load(
      "CREATE TABLE T (N int, Name nvarchar(20), Price decimal(18,4), Born datetime2, Mark uniqueidentifier, Bytes "
      "varbinary(20), Ratio float)\nGO\nINSERT T VALUES (1, N'é中😀', -12.5, '2020-02-29 13:05:06.1234567', "
      "'00112233-4455-6677-8899-aabbccddeeff', 0x00FF, 0.1)");
  serve();
  OdbcClient client(connectionString());
  SQLINTEGER one = 1;
  double ratio = 0.1;
  unsigned char bytes[] = {0x00, 0xFF};
  SQL_TIMESTAMP_STRUCT born{2020, 2, 29, 13, 5, 6, 123456700};
  SQLGUID mark{0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
  SQLLEN two = 2, none = SQL_NULL_DATA;
  const auto bind = [&](int number, SQLSMALLINT cType, SQLSMALLINT sqlType, SQLULEN size, SQLSMALLINT digits,
                        void* value, SQLLEN* length) {
    EXPECT_TRUE(SQL_SUCCEEDED(SQLBindParameter(client.statement, static_cast<SQLUSMALLINT>(number), SQL_PARAM_INPUT,
                                               cType, sqlType, size, digits, value, 0, length)));
  };
  bind(1, SQL_C_LONG, SQL_INTEGER, 0, 0, &one, nullptr);
  client.bindText(2, "é中😀");
  client.bindText(3, "-12.5000", SQL_DECIMAL, 18, 4);
  bind(4, SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 27, 7, &born, nullptr);
  bind(5, SQL_C_GUID, SQL_GUID, 16, 0, &mark, nullptr);
  bind(6, SQL_C_BINARY, SQL_LONGVARBINARY, 0, 0, bytes, &two);
  bind(7, SQL_C_DOUBLE, SQL_DOUBLE, 0, 0, &ratio, nullptr);
  EXPECT_TRUE(SQL_SUCCEEDED(
      SQLBindParameter(client.statement, 8, SQL_PARAM_INPUT_OUTPUT, SQL_C_LONG, SQL_INTEGER, 0, 0, &one, 0, &none)));
  const std::string sql =
      "SELECT N FROM T WHERE N = ? AND Name = ? AND Price = ? AND Born = ? AND Mark = ? AND Bytes = ? AND Ratio = ? "
      "AND "
      "? IS NULL";
  EXPECT_EQ(client.run(sql), SQL_SUCCESS) << client.errorText;
  EXPECT_EQ(client.rows(), "1");
  const tds::Request request = server_->traffic().requests().back();
  EXPECT_EQ(request.procedure, "sp_executesql");
  const std::vector<std::string> sent = {
      "1",      "é中😀", "-12.5000", "2020-02-29 13:05:06.1234567", "{00112233-4455-6677-8899-AABBCCDDEEFF}",
      "0x00FF", "0.1",  "NULL"};
  EXPECT_EQ(request.parameters, sent);

  // Prepared: its columns are known before, the first execution prepares, the second goes by the handle.
  ASSERT_TRUE(SQL_SUCCEEDED(client.prepare(sql)));
  SQLSMALLINT columns = 0;
  EXPECT_TRUE(SQL_SUCCEEDED(SQLNumResultCols(client.statement, &columns)));
  EXPECT_EQ(columns, 1);
  for (const char* expected : {"1", ""}) {
    ASSERT_TRUE(SQL_SUCCEEDED(client.execute())) << client.errorText;
    EXPECT_EQ(client.rows(), expected);
    SQLFreeStmt(client.statement, SQL_CLOSE);
    one = 2;
  }
  EXPECT_EQ(server_->traffic().requests().back().procedure, "sp_execute");
}

TEST_F(TdsFixture, ProceduresAreCalledByName) {
  load("CREATE TABLE T (N int)\nGO\nINSERT T VALUES (5)");
  serve();
  OdbcClient client(connectionString());
  const std::string file = servers_.databaseFile("S", "shop").string();
  client.bindText(1, "copy");
  client.bindText(2, file);
  EXPECT_EQ(client.run("{call sp_attach_db(?, ?)}"), SQL_NO_DATA) << client.errorText;
  client.unbind();
  EXPECT_TRUE(SQL_SUCCEEDED(client.run("USE copy"))) << client.errorText;
  EXPECT_EQ(client.run("SELECT DB_NAME(), N FROM T"), SQL_SUCCESS) << client.errorText;
  EXPECT_EQ(client.rows(), "copy|5");
  EXPECT_EQ(client.run("{call sp_nothing}"), SQL_ERROR);
}

TEST_F(TdsFixture, ErrorsHaveTheNumbersOfAServer) {
  load("CREATE TABLE T (N int)");
  serve();
  OdbcClient client(connectionString());
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"SELECT * FROM Missing", "42S02 208"},   {"SELECT Missing FROM T", "42S22 207"},
      {"SELECT 1 FROM T WHERE", "42000 102"},   {"SELECT 1/0", "22012 8134"},
      {"SELECT CAST('x' AS int)", "22018 245"}, {"SELECT @x", "42000 137"},
      {"INSERT T VALUES (1)", "42000 262"},     {"USE nowhere", "08004 911"},
      {"EXEC nothing", "42000 2812"},           {"SELECT 'open", "42000 105"},
      {"SELECT 1 SELECT * FROM Missing", ""},
  };
  for (const auto& [sql, errors] : cases) {
    client.run(sql);
    EXPECT_EQ(client.errors, errors) << sql << client.errorText;
  }
  // The error of a later statement belongs to its result.
  EXPECT_EQ(client.rows(), "1");
  EXPECT_EQ(client.nextResult(), SQL_ERROR);
  EXPECT_EQ(client.errors, "42S02 208");
  // So does one in the middle of the rows.
  EXPECT_EQ(client.run("SELECT 6/V.N FROM (SELECT 1 AS N UNION ALL SELECT 2 UNION ALL SELECT 0) AS V"), SQL_SUCCESS);
  EXPECT_EQ(client.rows(), "6 3");
  EXPECT_EQ(client.errors, "22012 8134");
  server_->switches().failNext({.number = 1205, .text = "Chosen as the deadlock victim.", .severity = 13}, "SELECT 1");
  EXPECT_EQ(client.run("SELECT 2"), SQL_SUCCESS);
  EXPECT_EQ(client.run("SELECT 1"), SQL_ERROR);
  EXPECT_EQ(client.errors, "42000 1205");
  EXPECT_EQ(client.run("SELECT 1"), SQL_SUCCESS);
}

TEST_F(TdsFixture, TransactionsAndTheDatabaseAreTold) {
  load("CREATE TABLE T (N int)\nGO\nINSERT T VALUES (5)");
  serve();
  OdbcClient client(connectionString("PWD=secret;"));
  const auto catalog = [&] {
    SQLWCHAR name[128] = {};
    SQLINTEGER length = 0;
    SQLGetConnectAttrW(client.connection(), SQL_ATTR_CURRENT_CATALOG, name, sizeof name, &length);
    return tds::fromUtf16({reinterpret_cast<char*>(name), static_cast<std::size_t>(length)});
  };
  EXPECT_EQ(catalog(), "master");
  EXPECT_EQ(client.run("use SHOP"), SQL_SUCCESS_WITH_INFO);
  EXPECT_EQ(catalog(), "shop");
  SQLSetConnectAttr(client.connection(), SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
  EXPECT_EQ(client.run("SELECT N FROM T"), SQL_SUCCESS) << client.errorText;
  EXPECT_EQ(client.rows(), "5");
  EXPECT_EQ(SQLEndTran(SQL_HANDLE_DBC, client.connection(), SQL_COMMIT), SQL_SUCCESS);
  EXPECT_EQ(SQLEndTran(SQL_HANDLE_DBC, client.connection(), SQL_ROLLBACK), SQL_SUCCESS);
  EXPECT_EQ(client.run("SELECT N FROM T"), SQL_SUCCESS) << client.errorText;
}

}  // namespace
}  // namespace qrel
