// Translated queries, run: what they answer counts, not how they read.
#include "embedded/translate/translator.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/embedded/embeddedServer.h"

namespace qrel {
namespace {

class Translate : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    server_ = std::make_unique<EmbeddedServer>();
    server_->load(
        "CREATE TABLE t (id int, name varchar(20), price decimal(9,2), born datetime, flag bit, blob varbinary(4))"
        " INSERT INTO t VALUES (1, 'Anna', 9.50, '20200101', 1, 0x0102)"
        " INSERT INTO t VALUES (2, 'bob', 10.00, '20200101 12:00', 0, NULL)"
        " INSERT INTO t VALUES (3, 'CARL  ', 100, NULL, 1, 0x)");
    server_->load("CREATE SCHEMA sales");
    server_->load(
        "CREATE TABLE sales.orders (id int, t_id int) INSERT INTO sales.orders VALUES (7, 1), (8, 1), (9, 3)");
    server_->load("CREATE TABLE sales.t (id int, note nvarchar(10)) INSERT INTO sales.t VALUES (1, N'x')");
  }
  static void TearDownTestSuite() { server_.reset(); }

  void expect(const std::vector<std::pair<std::string, std::string>>& cases) {
    for (const auto& [sql, expected] : cases) {
      try {
        EXPECT_EQ(server_->line(sql), expected) << sql;
      } catch (const RuntimeError& error) {
        ADD_FAILURE() << sql << ": " << error.description;
      }
    }
  }

  static std::unique_ptr<EmbeddedServer> server_;
};
std::unique_ptr<EmbeddedServer> Translate::server_;

TEST_F(Translate, ExpressionsMeanWhatTheServerMeans) {
  expect(
      {{"SELECT 1 + 2 * 3, 7 / 2, -7 / 2, 7 % 3, 7.0 / 2", "7|3|-3|1|3.500000"},
       {"SELECT 6 & 3 | 8, 6 ^ 3, ~5, - -2", "10|5|-6|2"},
       {"SELECT 1 + 2 & 3", "3"},
       {"SELECT 'a' + 'b', N'it''s' + '!', 'n=' + CAST(5 AS varchar)", "ab|it's!|n=5"},
       {"SELECT name + '!' FROM t WHERE id = 1", "Anna!"},
       {"SELECT price + 1 FROM t WHERE id = 1", "10.50"},
       {"SELECT CASE WHEN id = 1 THEN 'one' WHEN id < 3 THEN 'two' ELSE 'many' END FROM t ORDER BY id", "one two many"},
       {"SELECT CASE name WHEN 'ANNA' THEN 1 ELSE 0 END FROM t WHERE id = 1", "1"},
       {"SELECT IIF(1 > 2, 'a', 'b'), ISNULL(NULL, 3), COALESCE(NULL, NULL, 'c'), NULLIF('x', 'X')", "b|3|c|-"},
       {"SELECT CONVERT(varchar(3), 'abcdef'), CAST('12' AS int) + 1, TRY_CONVERT(int, 'x')", "abc|13|-"},
       {"SELECT CONVERT(varchar(10), born, 120), CONVERT(char(8), born, 112) FROM t WHERE id = 2",
        "2020-01-01|20200101"},
       {"SELECT CAST(price AS int), CAST(1.239 AS decimal(9,2)) FROM t WHERE id = 1", "9|1.24"},
       {"SELECT DATEADD(month, 1, '20200131'), DATEDIFF(day, '20191231', born), YEAR(born) FROM t WHERE id = 2",
        "2020-02-29|1|2020"},
       {"SELECT LEFT('abc', 2), RIGHT('abc', 2), LEN('ab  '), CHARINDEX('C', 'abc'), STUFF('abc', 2, 1, 'XY'), "
        "REPLICATE('ab', 2), UPPER('é')",
        "ab|bc|2|3|aXYc|abab|É"},
       {"SELECT 0x0aF, blob FROM t WHERE blob = 0x0102", "0x00AF|0x0102"}});
}

TEST_F(Translate, ConditionsCompareLikeTheServer) {
  expect({{"SELECT id FROM t WHERE name = 'ANNA'", "1"},
          {"SELECT id FROM t WHERE name = 'carl' AND UPPER(name) = 'carl'", "3"},
          {"SELECT id FROM t WHERE 'ANNA' IN (name, 'x') OR LOWER(name) IN ('BOB')", "1 2"},
          {"SELECT 'same' WHERE 'abc' = 'ABC  '", "same"},
          {"SELECT id FROM t WHERE price = 10 OR price > 99.5 ORDER BY price", "2 3"},
          {"SELECT id FROM t WHERE price BETWEEN '9.5' AND 10.0 ORDER BY id", "1 2"},
          {"SELECT id FROM t WHERE CAST(price AS decimal(9,1)) > 9.75 ORDER BY id", "2 3"},
          {"SELECT id FROM t WHERE born = '2020-01-01'", "1"},
          {"SELECT id FROM t WHERE born > '1/1/2020 11:59 AM'", "2"},
          {"SELECT id FROM t WHERE flag = 'True' AND id = '3'", "3"},
          {"SELECT id FROM t WHERE NOT (id = 1 OR (id = 2)) AND ((id) = 3)", "3"},
          {"SELECT id FROM t WHERE ((SELECT COUNT(*) FROM sales.orders WHERE t_id = t.id) > 1)", "1"},
          {"SELECT id FROM t WHERE EXISTS (SELECT * FROM sales.orders o WHERE o.t_id = t.id) ORDER BY id DESC", "3 1"},
          {"SELECT id FROM t WHERE id NOT IN (SELECT t_id FROM sales.orders) AND born IS NOT NULL", "2"},
          {"SELECT id FROM t WHERE LEN(name) > '3' AND id !> 1", "1"},
          {"SELECT id FROM t WHERE LEFT('10x', 2) > 9", "1 2 3"}});
}

TEST_F(Translate, ShapesOfQueries) {
  expect(
      {{"SELECT TOP 2 id FROM t ORDER BY id DESC", "3 2"},
       {"SELECT TOP (1) [id] FROM [dbo].[t] WHERE [flag]  IS NOT NULL", "1"},
       {"SELECT [n]=name, big = case when id&2=0 then '' else 'Y' end FROM t ORDER BY n DESC", "CARL  |Y bob|Y Anna|"},
       {"SELECT id AS 'the id' FROM t ORDER BY [the id] OFFSET 1 ROWS FETCH NEXT 1 ROWS ONLY", "2"},
       {"SELECT TOP 1 id FROM t UNION ALL SELECT id FROM sales.orders ORDER BY id DESC", "9 8 7 1"},
       {"SELECT a.id, o.id FROM t a LEFT OUTER JOIN sales.orders AS o ON o.t_id = a.id ORDER BY 1, 2",
        "1|7 1|8 2|- 3|9"},
       {"SELECT t.id, sales.t.note FROM dbo.t, sales.t WHERE dbo.t.id = sales.t.id", "1|x"},
       {"SELECT a.id FROM t a JOIN t b JOIN sales.orders o ON o.t_id = b.id ON a.id = b.id WHERE o.id = 9", "3"},
       {"SELECT t.* FROM (SELECT id, UPPER(name) AS n FROM t) AS t WHERE n = 'anna'", "1|ANNA"},
       {"SELECT v.b FROM (VALUES (1, 'x'), (2, 'y')) AS v(a, b) WHERE v.a = 2", "y"},
       {"WITH c (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < 4) SELECT SUM(n), MAX(n) FROM c", "10|4"},
       {"SELECT flag, COUNT (*), SUM(price), AVG(id) FROM t GROUP BY flag HAVING COUNT(*) > 1", "True|2|109.50|2"},
       {"SELECT COUNT(DISTINCT born), COUNT_BIG(*) FROM t WITH (NOLOCK)", "2|3"},
       {"SELECT ROW_NUMBER() OVER (PARTITION BY flag ORDER BY id DESC) FROM t ORDER BY id", "2 1 1"},
       {"SELECT DISTINCT LOWER(name) FROM t WHERE id IN (1, 2) ORDER BY LOWER(name)", "anna bob"},
       {"SELECT id FROM shop.dbo.t WHERE id = 1; SELECT 2", "1"}});
}

TEST_F(Translate, LeavesTheReaderBehindTheQuery) {
  expect(
      {{"IF EXISTS (SELECT TOP (1) [id] FROM [t] WHERE [id]  IS NULL) SELECT 1 ELSE SELECT 0", "0"},
       {"DECLARE @n int SELECT @n = COUNT(*) FROM t SELECT @n + 1", "4"},
       {"DECLARE @n varchar(9), @m int SELECT @n = name, @m = id FROM t WHERE id = 2 SELECT @n + 'x', @m", "bobx|2"}});
}

TEST_F(Translate, ErrorsCarryTheServersNumbers) {
  const std::vector<std::tuple<std::string, std::int32_t, std::string>> cases = {
      {"SELECT * FROM orders", errorNumber::invalidObjectName, "Invalid object name 'orders'."},
      {"SELECT * FROM dbo.nope", errorNumber::invalidObjectName, "Invalid object name 'dbo.nope'."},
      {"SELECT nope FROM t", errorNumber::badSql, "Invalid column name 'nope'."},
      {"SELECT [id],[nope] FROM [t]  ORDER BY [id] ", errorNumber::badSql, "Invalid column name 'nope'."},
      {"SELECT @x", errorNumber::badSql, "Must declare the scalar variable \"@x\"."},
      {"SELECT 1 / 0", errorNumber::badSql, "Divide by zero error encountered."},
      {"SELECT CAST('x' AS int)", errorNumber::badSql,
       "Conversion failed when converting the varchar value 'x' to data type int."}};
  for (const auto& [sql, number, description] : cases) {
    const ErrorInfo error = server_->error(sql);
    EXPECT_EQ(error.number, number) << sql;
    EXPECT_EQ(error.description, description) << sql;
  }
  const std::string deep(20000, '(');
  for (const std::string& sql : {std::string("SELECT id FROM t FOR XML AUTO"), std::string("SELECT * FROM t PIVOT (x)"),
                                 std::string("SELECT FROM t"), std::string("SELECT (1"), "SELECT 1 WHERE " + deep,
                                 "SELECT " + deep, "SELECT * FROM " + deep, "SELECT " + std::string(20000, '~') + "1"})
    EXPECT_EQ(server_->error(sql).number, errorNumber::badSql) << sql.substr(0, 40);
}

// Whatever is wrong with a query, it is told in the server's words.
TEST_F(Translate, ErrorsNeverSpeakOfWhatLiesBehind) {
  std::string wide = "SELECT 0", tables = "SELECT 1 FROM t a0";
  for (int i = 1; i < 2500; ++i) wide += ", " + std::to_string(i);
  for (int i = 1; i < 80; ++i) tables += ", t a" + std::to_string(i);
  for (const std::string& sql : {wide,
                                 tables,
                                 std::string("SELECT id FROM t UNION SELECT id, name FROM t"),
                                 std::string("SELECT id FROM t UNION SELECT id FROM t ORDER BY name"),
                                 std::string("SELECT id FROM t ORDER BY 9"),
                                 std::string("SELECT (SELECT id, name FROM t)"),
                                 std::string("SELECT id FROM t WHERE (SELECT id, name FROM t) = 1"),
                                 std::string("SELECT id FROM t WHERE COUNT(*) > 1"),
                                 std::string("SELECT id FROM t a, t b"),
                                 std::string("SELECT SUM(SUM(id)) FROM t"),
                                 std::string("SELECT ROW_NUMBER() OVER (ORDER BY nope) FROM t"),
                                 std::string("SELECT id FROM t WHERE ROW_NUMBER() OVER (ORDER BY id) = 1"),
                                 std::string("SELECT a.* FROM t"),
                                 std::string("SELECT * FROM (VALUES (1, 2), (3)) AS v(a, b)"),
                                 std::string("SELECT LEFT('a')"),
                                 std::string("SELECT id FROM t HAVING id > 1"),
                                 std::string("SELECT id FROM t GROUP BY 1, 7"),
                                 std::string("SELECT MIN(*) FROM t"),
                                 std::string("SELECT MAX() FROM t"),
                                 std::string("SELECT STRING_AGG(name) FROM t"),
                                 std::string("SELECT NTILE(0) OVER (ORDER BY id) FROM t"),
                                 std::string("SELECT LAG(id, 1, 2, 3) OVER (ORDER BY id) FROM t"),
                                 std::string("SELECT id FROM t OFFSET 'x' ROWS"),
                                 std::string("SELECT TOP (name) id FROM t"),
                                 std::string("WITH c AS (SELECT n FROM c) SELECT n FROM c"),
                                 std::string("WITH c (a, b) AS (SELECT 1) SELECT a FROM c"),
                                 std::string("SELECT SUM(CAST(9223372036854775807 AS bigint)) OVER () FROM t"),
                                 std::string("SELECT name COLLATE nothing FROM t UNION"),
                                 std::string("SELECT 1 FROM t JOIN t b"),
                                 std::string("SELECT COUNT(DISTINCT id, name) FROM t")}) {
    const ErrorInfo error = server_->error(sql);
    EXPECT_NE(error.number, 0) << sql.substr(0, 80);
    for (const char* word :
         {"sql logic", "sqlite", "SQLite", "q_", "syntax error", "cat_", "\x01", "parser", "compound", "misuse"})
      EXPECT_EQ(error.description.find(word), std::string::npos) << sql.substr(0, 80) << ": " << error.description;
    EXPECT_NE(error.description, "The embedded server can't carry out this statement.") << sql.substr(0, 80);
  }
}

TEST(StoredExpression, AsTheServerKeepsIt) {
  const std::vector<std::tuple<int, std::string, std::string>> cases = {
      {11, "1", "((1))"},
      {11, "((0))", "((0))"},
      {11, "-1", "((-1))"},
      {11, "(-1.50)", "((-1.50))"},
      {11, "'x'", "('x')"},
      {11, "N'it''s'", "(N'it''s')"},
      {11, "GetDate()", "(getdate())"},
      {11, "NULL", "(NULL)"},
      {11, "a * b", "([a]*[b])"},
      {11, "[Qty] > 0 AND Price >= 1.5", "([Qty]>(0) AND [Price]>=(1.5))"},
      {11, "a IS NOT NULL", "([a] IS NOT NULL)"},
      {11, "Convert(varchar(10), GETDATE(), 101)", "(CONVERT([varchar](10),getdate(),(101)))"},
      {11, "CAST(x AS int)", "(CONVERT([int],[x]))"},
      {11, "a - 1", "([a]-(1))"},
      {11, "dateadd(DAY, 1, CURRENT_TIMESTAMP)", "(dateadd(day,(1),getdate()))"},
      {8, "1", "(1)"},
      {8, "(1)", "(1)"},
      {8, "GetDate()", "(GetDate())"},
      {8, "(a) + (b)", "((a) + (b))"}};
  for (const auto& [major, text, expected] : cases) EXPECT_EQ(tsql::storedExpression(text, major), expected) << text;
}

}  // namespace
}  // namespace qrel
