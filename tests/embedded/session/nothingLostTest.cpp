// A load loses nothing without a word: what a script holds is made, run or told.
#include <gtest/gtest.h>

#include <random>

#include "tests/embedded/loading.h"
#include "tests/thorough.h"

namespace qrel {
namespace {

TEST(ExecuteSql, KeepsWhatItsTextMakes) {
  const char* const calls[] = {
      "EXEC dbo.sp_executesql @statement = N'%'",
      "EXECUTE sys.sp_executesql N'%'",
      "EXEC [sys].[sp_executesql] @stmt = N'%'",
      "IF 1 = 1 EXEC [dbo].[sp_executesql] @statement = N'%';",
      "DECLARE @s nvarchar(max) SET @s = N'%' EXEC sp_executesql @s",
      "DECLARE @s nvarchar(max) SELECT @s = N'%' EXEC sp_executesql @anything = @s, @params = N'@x int', @x = 5",
      "sp_executesql N'%'",
      "EXEC (N'%')",
      "DECLARE @r int EXEC @r = sp_executesql N'%' IF @r <> 0 SELECT frob.nic(1)",
  };
  // To the byte: blanks and line ends at both ends, quotes, comments.
  const std::string text = "\r\n-- it's\r\nCREATE VIEW [dbo].[v]\r\nAS\r\n  SELECT 'a''b' AS x /* GO */ \r\n\r\n";
  for (std::string script : calls) {
    std::string quoted;
    for (const char c : text) quoted += std::string(c == '\'' ? 2 : 1, c);
    script.replace(script.find('%'), 1, quoted);
    Loading s;
    const auto report = s.load(script + "\nGO\nCREATE TABLE t (a int)");
    EXPECT_EQ(s.objects(), "v|V\nt|U\n") << script << reasons(report.skipped) << reasons(report.failed);
    EXPECT_EQ(s.source("v"), text + "\n") << script;
    EXPECT_EQ(report.skipped.size() + report.failed.size(), 0u) << script;
    expectAddsUp(report, script);
  }
}

TEST(ExecuteSql, WhatCannotRunIsTold) {
  const struct {
    const char* script;
    const char* reason;
  } cases[] = {
      {"EXEC sp_executesql N'SELECT 1' + N'; SELECT 2'", "Incorrect syntax near '+'."},
      {"EXEC sp_executesql",
       "Procedure or function 'sp_executesql' expects parameter '@statement', which was not "
       "supplied."},
      {"EXEC other.dbo.sp_executesql N'CREATE VIEW v AS SELECT 1 AS a'", "another database"},
      {"EXEC app.sp_executesql N'CREATE VIEW v AS SELECT 1 AS a'", "the procedure app.sp_executesql isn't run"},
      {"DECLARE @x int = 1 EXEC ('SELECT @x = 2')", "Must declare the scalar variable \"@x\"."},
      {"EXEC ('PRINT ''open')",
       "Unclosed quotation mark: the text that begins here is never closed. Nothing of its "
       "batch is run."},
      {"EXEC sp_msforeachtable 'DROP TABLE ?', '*'", "sp_msforeachtable with more than a command"},
      {"DBCC CHECKIDENT ('t', RESEED, 7)", "'t' does not contain an identity column."},
      {"ALTER XML SCHEMA COLLECTION s ADD '<a/>'", "ALTER XML isn't carried out"},
      {"SET DATEFORMAT dmy", "SET DATEFORMAT dmy isn't carried out"},
      {"GO 0\nSELECT 1\nGO 0", "the batch that begins here is to be run no time at all"},
  };
  for (const auto& each : cases) {
    Loading s;
    const auto report = s.load(std::string("CREATE TABLE t (a int)\nGO\n") + each.script);
    ASSERT_EQ(report.skipped.size() + report.failed.size(), 1u) << each.script << reasons(report.failed);
    EXPECT_EQ((report.skipped.empty() ? report.failed : report.skipped)[0].reason, each.reason);
    EXPECT_EQ(s.objects(), "t|U\n");
    expectAddsUp(report, each.script);
  }
}

TEST(SameLine, StatementsEndWhereTheNextBegins) {
  Loading s;
  const auto report = s.load(
      "CREATE TABLE t (a int) INSERT nothing VALUES (1) CREATE TABLE u (a int)\n"
      "DISABLE TRIGGER x ON t INSERT t VALUES (1) SET NOCOUNT ON INSERT t VALUES (2) CHECKPOINT INSERT t VALUES (3)\n"
      "PRINT 'x' INSERT t VALUES (4) USE master INSERT t VALUES (5) CREATE USER x FOR LOGIN y INSERT t VALUES (6)\n"
      "CREATE SEQUENCE s START WITH 5 CREATE TABLE v (a int) ALTER DATABASE Db SET RECOVERY SIMPLE INSERT t VALUES "
      "(7)\n"
      "DECLARE @f int SELECT @f = 8\nFETCH NEXT FROM c INTO @f\nEXEC sp_help INSERT t VALUES (9);;INSERT t VALUES "
      "(10)\n"
      "RESTORE x DROP TABLE t\n");
  EXPECT_EQ(s.rows("select group_concat(a) from \"dbo.t\""), "1,2,3,4,5,6,7,9,10\n");
  EXPECT_EQ(s.objects(), "t|U\nu|U\ns|SO\nv|U\n");
  EXPECT_EQ(reasons(report.failed),
            "1: INSERT nothing VALUES (1) | Invalid object name 'nothing'.\n"
            "2: DISABLE TRIGGER x ON t | Trigger 'x' does not exist on 't'.\n"
            "6: FETCH NEXT FROM c INTO @f | A cursor with the name 'c' does not exist.\n");
  EXPECT_EQ(reasons(report.skipped),
            "8: RESTORE x DROP TABLE t | RESTORE isn't carried out; left out up to line 8 of its batch\n");
  EXPECT_EQ(report.statementsWithoutEffect, 6);
  expectAddsUp(report, "");
}

TEST(OpenQuotes, CostTheirBatchAlone) {
  for (const char* open : {"/* never", "PRINT 'never", "SELECT [never", "SELECT \"never"}) {
    Loading s;
    const auto report = s.load("CREATE TABLE a (x int)\nGO\nDROP TABLE a\n" + std::string(open) +
                               "\nCREATE TABLE b (x int)\nGO\nCREATE TABLE c (x int)");
    EXPECT_EQ(s.objects(), "a|U\nc|U\n") << open;
    ASSERT_EQ(report.failed.size(), 1u) << open;
    EXPECT_EQ(report.failed[0].line, 4u) << open;
    EXPECT_NE(report.failed[0].reason.find("Nothing of its batch is run."), std::string::npos);
  }
}

// A module that can't be kept is told once, and its body is nobody's statement.
TEST(Modules, ThatCannotBeKeptRunNothing) {
  const char* const modules[] = {
      "CREATE PROC #p AS\nDROP TABLE victim",
      "CREATE PROC victim AS\nDROP TABLE victim",
      "CREATE PROC 5 AS\nDROP TABLE victim",
      "CREATE OR PROC p AS\nDROP TABLE victim",
      "ALTER PROC missing AS\nDROP TABLE victim",
      "CREATE TRIGGER r ON DATABASE FOR DROP_TABLE AS\nDROP TABLE victim",
      "CREATE TRIGGER r ON missing FOR INSERT AS\nDROP TABLE victim",
      "CREATE VIEW v AS SELECT CASE WHEN 1 = 1 THEN 1 END AS a\nDROP TABLE victim",
      "CREATE PROC p AS SELECT 1\nCREATE VIEW v AS SELECT 1 AS a",
      "SELECT 1\nCREATE VIEW v AS SELECT 1 AS a\nDROP TABLE victim",
      "BEGIN\nCREATE PROC p AS\nDROP TABLE victim\nEND",
      "EXEC ('CREATE PROC #p AS DROP TABLE victim')",
  };
  for (const std::string module : modules) {
    Loading s;
    const auto report = s.load("CREATE TABLE victim (a int)\nGO\n" + module + "\nGO\nCREATE TABLE u (a int)");
    EXPECT_EQ(s.objects(), "victim|U\nu|U\n") << module;
    EXPECT_EQ(report.skipped.size() + report.failed.size(), 1u) << module;
    expectAddsUp(report, module);
  }
  Loading s;  // what only looks like it
  const auto report = s.load(
      "CREATE /* " + std::string(20000, 'x') +
      " */ PROC p AS\nGRANT CREATE VIEW, CREATE PROCEDURE TO public\nINSERT "
      "victim VALUES (1);\nINSERT victim VALUES (2)\nGO\nCREATE VIEW v AS WITH c (a) AS (SELECT 1)\nSELECT a FROM c\n"
      "UNION ALL\nSELECT 2\nGO\nCREATE VIEW w WITH SCHEMABINDING AS (SELECT 1 AS a)");
  EXPECT_EQ(s.objects(), "p|P\nv|V\nw|V\n") << reasons(report.failed) << reasons(report.skipped);
}

// Scripts cut and torn at random: the load ends, its numbers add up, and no token is outside of every statement.
TEST(TornScripts, AddUp) {
  const std::string script =
      "CREATE TABLE t (a int PRIMARY KEY, b varchar(9) DEFAULT 'x')\nINSERT t (a) VALUES (1), (2)\nGO\n"
      "IF EXISTS (SELECT * FROM t WHERE a = 1)\nBEGIN\n  UPDATE t SET b = CASE WHEN a = 1 THEN 'y' ELSE 'z' END\nEND\n"
      "ELSE IF 1 = 0 DELETE t\nDECLARE @i int = 0, @s nvarchar(99) = N'SELECT 1'\nWHILE @i < 3\nBEGIN\n  SET @i += 1\n"
      "  IF @i = 2 CONTINUE\n  EXEC sp_executesql @s\nEND\nGO\nBEGIN TRY BEGIN TRAN INSERT t VALUES (1, 'a') COMMIT "
      "END "
      "TRY\nBEGIN CATCH ROLLBACK END CATCH\nGOTO done\nDROP TABLE t\ndone:\nPRINT 'x'\nGO\nCREATE VIEW v AS SELECT a "
      "FROM "
      "t\nGO\nDECLARE c CURSOR FOR SELECT a FROM t\nOPEN c\nDECLARE @a int\nFETCH NEXT FROM c INTO @a\nWHILE "
      "@@FETCH_STATUS = 0 FETCH NEXT FROM c INTO @a\nCLOSE c DEALLOCATE c\nGRANT SELECT ON t TO public WITH GRANT "
      "OPTION\n/* a /* b */ */ MERGE t USING t AS s ON 1 = 0 WHEN MATCHED THEN DELETE;\nEXEC ('INSERT t VALUES (9, "
      "''q'')')\nRETURN\nSELECT 1\n";
  const std::string marks[] = {"'", "[", "(", ")", "END", "BEGIN", "CASE", ";", "ELSE", "/*", "*/", "\n", "IF", "GO\n"};
  std::mt19937 random(7);
  const auto upTo = [&](std::size_t size) { return random() % (size + 1); };
  for (int round = 0; round < rounds(120, 30); ++round) {
    std::string torn = script;
    const std::size_t from = upTo(torn.size());
    if (round % 3 == 0) torn.erase(from, upTo(torn.size() - from));
    if (round % 3 != 0) torn.insert(from, " " + marks[random() % std::size(marks)] + " ");
    if (round % 3 == 2) torn.insert(upTo(torn.size()), " " + marks[random() % std::size(marks)] + " ");
    Loading s;
    const auto report = s.load(torn);
    expectAddsUp(report, torn);
    EXPECT_EQ(reasons(report.skipped).find("| not read"), std::string::npos) << torn;
  }
}

}  // namespace
}  // namespace qrel
