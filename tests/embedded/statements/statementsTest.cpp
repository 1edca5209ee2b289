// Rows, control flow and what is skipped.
#include <gtest/gtest.h>

#include "embedded/session/session.h"
#include "platform/error.h"
#include "tests/embedded/loading.h"

namespace qrel {
namespace {

constexpr const char* typedTable =
    "CREATE TABLE t (i int, s smallint, bi bigint, b bit, d decimal(9,2), m money, f float, c char(4), v varchar(10), "
    "n nvarchar(10), dt datetime, da date, g uniqueidentifier, x varbinary(8), y binary(3))\n";

// Literals go straight into their columns; in brackets and with "+ 0" they take the way through an expression.
TEST(Insert, LiteralsAndExpressionsGiveTheSameRows) {
  const struct {
    const char* column;
    const char* literal;
    const char* expression;
  } cases[] = {
      {"i", "-12", "(-12)"},
      {"i", "'7'", "('7')"},
      {"bi", "9223372036854775807", "(9223372036854775807)"},
      {"b", "3", "(3)"},
      {"b", "'true'", "('true')"},
      {"d", "1.005", "(1.005)"},
      {"d", "-.5", "(-.5)"},
      {"d", "12", "(12)"},
      {"m", "$1,234.56", "('1234.56')"},
      {"m", "-0.00005", "(-0.00005)"},
      {"f", "1.5e3", "(1.5e3)"},
      {"c", "N'ab'", "('a' + 'b')"},
      {"v", "'it''s'", "('it''s')"},
      {"v", "12.50", "('12.50')"},
      {"n", "N'\xC3\xA9\xE2\x82\xAC'", "(N'\xC3\xA9\xE2\x82\xAC')"},
      {"n", "''", "('')"},
      {"dt", "'20240229 13:14:15.5'", "('20240229 13:14:15.5')"},
      {"da", "'2024-02-29'", "('2024-02-29')"},
      {"g", "'0e984725-c51c-4bf4-9960-e1c80e27aba0'", "('0e984725-c51c-4bf4-9960-e1c80e27aba0')"},
      {"x", "0xABC", "(0x0ABC)"},
      {"y", "0x01", "(0x01)"},
      {"i", "NULL", "(NULL)"},
      {"i", "'abc'", "('abc')"},
      {"s", "40000", "(40000)"},
      {"v", "'12345678901'", "('12345678901')"},
  };
  std::string fast = typedTable;
  std::string slow = typedTable;
  for (const auto& each : cases) {
    fast += std::string("INSERT t (") + each.column + ") VALUES (" + each.literal + ");\n";
    slow += std::string("INSERT t (") + each.column + ") VALUES (" + each.expression + ");\n";
  }
  Loading direct;
  Loading evaluated;
  const auto directReport = direct.load(fast);
  const auto evaluatedReport = evaluated.load(slow);
  std::string all = "select rowid";
  for (const char* column : {"i", "s", "bi", "b", "d", "m", "f", "c", "v", "n", "dt", "da", "g", "x", "y"})
    all += std::string(", quote(") + column + "), typeof(" + column + ")";
  EXPECT_EQ(direct.rows(all + " from \"dbo.t\""), evaluated.rows(all + " from \"dbo.t\""));
  ASSERT_EQ(directReport.failed.size(), 3u) << reasons(directReport.failed);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(directReport.failed[i].reason, evaluatedReport.failed[i].reason);
  EXPECT_EQ(directReport.rows, 22);
  EXPECT_EQ(direct.rows("select d, c from \"dbo.t\" where d is not null or c is not null"),
            "1.01|-\n-0.50|-\n12.00|-\n-|ab  \n");
}

TEST(Insert, AllForms) {
  Loading s;
  const auto report = s.load(
      "CREATE TABLE t (id int IDENTITY(10,5), a int NOT NULL DEFAULT (7), b varchar(9) DEFAULT ('x'), c AS a * 2, v "
      "timestamp)\n"
      "INSERT INTO dbo.t (a, b) VALUES (1, 'a'), (2, DEFAULT), (DEFAULT, NULL)\n"
      "INSERT t DEFAULT VALUES\nINSERT t VALUES (4, 'd', DEFAULT)\n"
      "INSERT t (b) SELECT b FROM t WHERE a <= 2 ORDER BY id\n"
      "SET IDENTITY_INSERT t ON\nINSERT t (id, a) VALUES (100, 5)\nSET IDENTITY_INSERT t OFF\n"
      "INSERT t (a) VALUES (6)\n"
      "INSERT t (id, a) VALUES (1, 1)\n"
      "INSERT t (a) VALUES (8), (NULL)\n"
      "INSERT t (a, b) VALUES (9)\n"
      "INSERT nothing VALUES (1)\n");
  EXPECT_EQ(s.rows("select id, a, b from \"dbo.t\""),
            "10|1|a\n15|2|x\n20|7|-\n25|7|x\n30|4|d\n35|7|a\n40|7|x\n100|5|x\n105|6|x\n");
  EXPECT_EQ(s.rows("select count(distinct v), min(length(v)) from \"dbo.t\""), "9|8\n");
  EXPECT_EQ(report.rows, 9);
  ASSERT_EQ(report.failed.size(), 4u) << reasons(report.failed) << reasons(report.skipped);
  EXPECT_EQ(report.failed[0].reason,
            "Cannot insert explicit value for identity column in table 't' when IDENTITY_INSERT is set to OFF.");
  EXPECT_EQ(
      report.failed[1].reason,
      "Cannot insert the value NULL into column 'a', table 'Db.dbo.t'; column does not allow nulls. INSERT fails.");
  EXPECT_EQ(report.failed[3].reason, "Invalid object name 'nothing'.");
}

TEST(UpdateAndDelete, WithAndWithoutFrom) {
  Loading s;
  const auto report = s.load(
      "CREATE TABLE a (id int PRIMARY KEY, n varchar(20) NOT NULL, d decimal(5,1))\nCREATE TABLE b (id int, n "
      "varchar(9))\n"
      "INSERT a VALUES (1, 'x', 1), (2, 'y', 2), (3, 'z', 3)\nINSERT b VALUES (1, 'one'), (3, 'three')\n"
      "DECLARE @k int = 2\nUPDATE dbo.a SET n = n + '!', d += 0.25 WHERE a.id = @k\n"
      "UPDATE q SET q.n = b.n FROM a AS q INNER JOIN b ON b.id = q.id WHERE b.id > 1\n"
      "UPDATE a SET n = NULL\nUPDATE a SET nothing = 1\n"
      "DELETE FROM a WHERE id = 1\nINSERT b SELECT id, n FROM a\nDELETE b FROM b JOIN a ON a.id = b.id AND a.n = "
      "b.n\n");
  EXPECT_EQ(reasons(report.skipped), "");
  EXPECT_EQ(report.failed.size(), 2u) << reasons(report.failed);
  EXPECT_EQ(s.rows("select * from \"dbo.a\""), "2|y!|2.3\n3|three|3.0\n");
  EXPECT_EQ(s.rows("select * from \"dbo.b\""), "1|one\n");
}

TEST(ControlFlow, RunsWhatIsMeant) {
  Loading s;
  const auto report = s.load(
      "CREATE TABLE t (a int)\n"
      "DECLARE @i int = 0, @s varchar(10); SET @s = 'a'; SET @s += 'b'\n"
      "WHILE @i < 10 BEGIN SET @i = @i + 1; IF @i = 2 CONTINUE; IF @i > 3 BREAK; INSERT t VALUES (@i) END\n"
      "IF EXISTS (SELECT * FROM sys.tables WHERE name = 'T') INSERT t VALUES (10) ELSE DROP TABLE t\n"
      "IF OBJECT_ID('missing') IS NOT NULL\n  DROP TABLE missing\nELSE BEGIN\n  INSERT t VALUES (11)\nEND\n"
      "IF 1 = 0 BEGIN INSERT missing VALUES (1); CREATE TABLE u (a int) END ELSE IF @s = 'ab' INSERT t VALUES (12)\n"
      "SELECT @i = MAX(a) FROM t\nINSERT t VALUES (@i)\n"
      "BEGIN TRY INSERT t VALUES (13) END TRY BEGIN CATCH DROP TABLE t END CATCH\n"
      "EXEC ('INSERT t VALUES (14) IF 1 = 1 INSERT t VALUES (' + '15)')\n"
      "EXEC sp_executesql N'INSERT t VALUES (@x)', N'@x int', @x = 16\n"
      "BEGIN TRAN INSERT t VALUES (17) SAVE TRAN p INSERT t VALUES (18) ROLLBACK TRAN p COMMIT\n"
      "BEGIN TRANSACTION; INSERT t VALUES (19); CREATE TABLE gone (a int); ROLLBACK\n"
      "RETURN\nINSERT t VALUES (20)\nGO 2\nINSERT t VALUES (21)\n");
  EXPECT_EQ(reasons(report.skipped) + reasons(report.failed),
            "1: CREATE TABLE t (a int) | There is already an object named 't' in the database.\n");
  EXPECT_EQ(s.rows("select group_concat(a) from (select * from \"dbo.t\" limit 11)"),
            "1,3,10,11,12,12,13,14,15,16,17\n");
  EXPECT_EQ(s.rows("select max(a), count(*) from \"dbo.t\""), "21|23\n");
  EXPECT_EQ(s.objects(), "t|U\n");
}

TEST(Skipping, WhatIsNotUnderstoodIsToldAndTheRestRuns) {
  Loading s;
  const auto report = s.load(
      "SET NOCOUNT ON\nCREATE TABLE t (a int)\n"
      "FROBNICATE the (\n  widget;\n)\nINSERT t VALUES (1)\n"
      "DECLARE @x TABLE (\n  a int\n)\nINSERT t VALUES (2); MERGE t USING t AS s ON 1 = 0\nWHEN NOT MATCHED THEN\n"
      "INSERT VALUES (9);\nINSERT t VALUES (3)\n"
      "CREATE TABLE u (\n  a int,\n  b wonder(5) NOT NULL\n)\nUPDATE STATISTICS t\nRESTORE done\n"
      "IF some.function(1) = 2\nBEGIN\n  INSERT t VALUES (9)\nEND\nELSE\n  INSERT t VALUES (9)\n"
      "EXEC dbo.doIt 1, @b = 'x'\nINSERT t VALUES (4)\nEND\n"
      "CREATE FULLTEXT STOPLIST c\n  FROM SYSTEM STOPLIST\nINSERT t VALUES (5)\ndone:\nINSERT t\nSELECT 6\n"
      "INSERT t VALUES (some.function(1))\nEXEC ('INSERT t VALUES (7)')\n");
  EXPECT_EQ(s.rows("select group_concat(a) from \"dbo.t\""), "1,2,3,4,5,6,7\n");
  std::string lines;
  for (const auto& each : report.skipped)
    lines += std::to_string(each.line) + " " + each.firstWords.substr(0, 9) + "\n";
  EXPECT_EQ(lines,
            "3 FROBNICAT\n10 MERGE t U\n14 CREATE TA\n19 RESTORE d\n20 IF some.f\n26 EXEC dbo.\n28 END\n"
            "29 CREATE FU\n35 INSERT t \n");
  EXPECT_EQ(reasons(report.failed), "");
  EXPECT_EQ(report.skipped[2].reason, "unknown type wonder");
}

TEST(Session, WithoutAListenerTheFirstErrorEndsTheBatch) {
  Loading s;
  s.load("CREATE TABLE t (a int)");
  const auto open = [&] {
    tsql::ServerFacts facts{"S", "Db", "11.0.2100.60", s.servers.folder("S")};
    return std::make_shared<tsql::OpenDatabase>(s.file(), facts, 11, sqlite::OpenMode::ReadWrite);
  };
  tsql::Session session(open());
  EXPECT_EQ(session.run("INSERT t VALUES (1), (2); UPDATE t SET a = a + 1 WHERE a = 2", nullptr).recordsAffected, 1);
  EXPECT_THROW(session.run("FROBNICATE; INSERT t VALUES (3)", nullptr), DataError);
  EXPECT_THROW(session.run("INSERT nothing VALUES (1)\nINSERT t VALUES (3)", nullptr), DataError);
  const std::vector<Value> parameters = {Value::ofInteger(5)};
  session.run("IF NOT EXISTS (SELECT 1 FROM t WHERE a = @p1) INSERT t VALUES (@p1)", nullptr, &parameters);
  EXPECT_EQ(s.rows("select group_concat(a) from \"dbo.t\""), "1,3,5\n");
  EXPECT_TRUE(session.run("PRINT 'x'; SELECT a FROM t; SELECT 1", nullptr).rows);
  EXPECT_EQ(session.run("RETURN 7", nullptr).returnValue, 7);
  session.run("CREATE DATABASE Other", nullptr);
  session.run("USE other; CREATE TABLE o (a int); INSERT o VALUES (1)", nullptr);
  EXPECT_EQ(s.servers.databases("S"), (std::vector<std::string>{"Db", "master", "Other"}));
  EXPECT_THROW(session.run("DROP DATABASE Other", nullptr), DataError);
  session.run("USE Db; DROP DATABASE Other", nullptr);
  EXPECT_EQ(s.servers.databases("S"), (std::vector<std::string>{"Db", "master"}));
  session.run("EXEC sp_attach_db 'Copy', '" + s.file().string() + "'", nullptr);
  EXPECT_THROW(session.run("EXEC sp_attach_single_file_db @dbname = 'No', @physname = '/nothing'", nullptr), DataError);
  EXPECT_EQ(s.servers.databases("S"), (std::vector<std::string>{"Copy", "Db", "master"}));
}

}  // namespace
}  // namespace qrel
