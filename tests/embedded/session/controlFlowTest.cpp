// Branches, loops, jumps and cursors: what isn't to run doesn't, whatever stands in it, and everything ends.
#include <gtest/gtest.h>

#include <chrono>

#include "tests/embedded/loading.h"

namespace qrel {
namespace {

constexpr const char* victimTables =
    "CREATE TABLE t (a int)\nCREATE TABLE victim (a int)\nCREATE TABLE src (n int, s varchar(9))\n"
    "INSERT src VALUES (1, 'a'), (2, 'b'), (3, 'c')\nGO\n";

// A script behind these tables: the rows of t in order, and how many entries are told. The victim must live.
void expectRun(const std::string& script, const std::string& rows, std::size_t told) {
  Loading s;
  const auto report = s.load(victimTables + script);
  EXPECT_EQ(s.rows("select ifnull(group_concat(a), '') from \"dbo.t\""), rows + "\n") << script;
  EXPECT_EQ(report.skipped.size() + report.failed.size(), told) << script << "\n"
                                                                << reasons(report.skipped) << reasons(report.failed);
  EXPECT_EQ(s.rows("select count(*) from cat_objects where name = 'victim'"), "1\n") << script;
  expectAddsUp(report, script);
}

TEST(UntakenBranch, RunsNothingWhateverStandsInIt) {
  const struct {
    const char* script;
    const char* rows;
    std::size_t told;
  } cases[] = {
      {"IF 1 = 0\nBEGIN\n  SELECT a.b.c.d.e, CASE WHEN 1 = 1 THEN 2\n  END, PIVOT\n  DROP TABLE victim\nEND\nINSERT t "
       "VALUES (1)",
       "1", 0},
      {"IF 1 = 0\n  SELECT frob.nic(1), CASE a WHEN 1 THEN 2\nEND FROM t\nINSERT t VALUES (1)", "1", 0},
      {"WHILE 1 = 0 BEGIN IF 1 = 1 BEGIN FROBNICATE CASE\nEND\nDROP TABLE victim END END\nINSERT t VALUES (1)", "1", 0},
      {"IF 1 = 0 FROBNICATE x BEGIN\nDROP TABLE victim\nEND\nINSERT t VALUES (1)", "1", 0},
      {"IF 1 = 0 BEGIN TRY DROP TABLE victim END TRY\nBEGIN CATCH DROP TABLE victim END CATCH INSERT t VALUES (1)", "1",
       0},
      {"IF 1 = 0 SELECT 1 ELSE IF 1 = 0 SELECT 2; ELSE IF 1 = 1 INSERT t VALUES (1) ELSE DROP TABLE victim", "1", 0},
      {"IF 1 = 0 IF 1 = 1 DROP TABLE victim ELSE DROP TABLE victim INSERT t VALUES (1)", "1", 0},
      {"IF 1 = 0 WHILE 1 = 1 DROP TABLE victim\nINSERT t VALUES (1)", "1", 0},
      {"IF 1 = 0 GOTO x DROP TABLE src\nx:\nINSERT t VALUES (1)", "1", 0},
      {"IF 1 = 0 DECLARE @v int SET @v = 4 INSERT t VALUES (@v)", "4", 0},
      // No condition can be had: neither branch.
      {"IF frob.nic(CASE WHEN 1 = 1 THEN 2 END) = 1 DROP TABLE victim ELSE DROP TABLE victim\nINSERT t VALUES (1)", "1",
       1},
      {"IF CASE WHEN frob.nic(1) = 2 THEN 1\nEND = 1\nDROP TABLE victim\nINSERT t VALUES (1)", "1", 1},
      // What the server takes for no statement at all.
      {"IF 1 = 0; DROP TABLE victim\nINSERT t VALUES (1)", "1", 1},
      {"IF 1 = 0 PRINT 'x'; INSERT t VALUES (1) ELSE DROP TABLE victim\nINSERT t VALUES (2)", "1,2", 1},
      {"INSERT t VALUES (1)\nIF 1 = 0 BEGIN\nDROP TABLE victim\nGO\nINSERT t VALUES (2)", "1,2", 1},
      {"INSERT t VALUES (1)\nIF 1 = 0 CREATE PROC q AS\nDROP TABLE victim\nGO\nINSERT t VALUES (2)", "1,2", 1},
      {"PRINT 'x'\nIFF 1 = 0\nBEGIN\n  DROP TABLE victim\nEND\nINSERT t VALUES (1)", "1", 1},
      {"RETURN\nDROP TABLE victim", "", 0},
      {"SET NOEXEC ON\nGO\nDROP TABLE victim\nDROP TABLE t\nGO\nCREATE PROC p AS DROP TABLE t\nGO\nSET NOEXEC "
       "OFF\nINSERT t VALUES (1)",
       "1", 2},
  };
  for (const auto& each : cases) expectRun(each.script, each.rows, each.told);
}

// What a statement that wasn't carried out would have set is no longer known, and nothing is decided by it.
TEST(UnknownValues, DecideNothing) {
  const struct {
    const char* script;
    const char* rows;
    std::size_t told;
  } cases[] = {
      {"DECLARE @v int = frob.nic(1)\nIF @v IS NULL DROP TABLE victim\nSET @v = 3 INSERT t VALUES (@v)", "3", 2},
      {"DECLARE @v int = 7\nSELECT @v = n FROM src CROSS APPLY x\nDELETE victim WHERE a < @v\nINSERT t VALUES (1)", "1",
       2},
      {"DECLARE @v int\nEXEC dbo.ask @v OUTPUT\nIF @v IS NULL DROP TABLE victim", "", 2},
      {"MERGE t USING src ON 1 = 0 WHEN NOT MATCHED THEN INSERT VALUES (1);\nIF @@ROWCOUNT = 0 DROP TABLE victim", "",
       2},
      {"IF @@WONDER = 0 DROP TABLE victim\nDECLARE @v int SET @v = @@WONDER SELECT @v = @@WONDER", "", 3},
      {"INSERT nothing VALUES (1)\nIF @@ERROR = 0 DROP TABLE victim\nIF @@ERROR = 0 INSERT t VALUES (1)", "1", 1},
      {"DECLARE @n int EXEC sp_executesql N'SELECT @c = COUNT(*) FROM src', N'@c int OUTPUT', @c = @n OUTPUT INSERT t "
       "VALUES (@n)",
       "3", 0},
      {"SET ROWCOUNT 1 DELETE src\nSET ROWCOUNT 0\nINSERT t SELECT n FROM src", "1,2,3", 2},
  };
  for (const auto& each : cases) expectRun(each.script, each.rows, each.told);
}

TEST(Loops, RunOrAreRefusedAsAWhole) {
  const struct {
    const char* script;
    const char* rows;
    std::size_t told;
  } cases[] = {
      {"DECLARE @i int = 0 WHILE @i < 3 BEGIN SET @i += 1; INSERT nothing VALUES (1) END INSERT t VALUES (@i)", "3", 1},
      {"DECLARE @i int = 0 WHILE @i < 3 BEGIN SET @i += 1 INSERT t VALUES (@i)\nEXEC dbo.doIt @i\nEND\nINSERT t VALUES "
       "(9)\nIF @i = 0 DROP TABLE victim",
       "9", 2},
      {"DECLARE @i int = 0 WHILE @i < 3 BEGIN SET @i += 1 WHILE 1 = 1 BEGIN INSERT t VALUES (1) EXEC ('FROBNICATE') "
       "END END INSERT t VALUES (9)",
       "9", 1},
      {"BEGIN TRAN DECLARE @i int = 0 WHILE @i < 2 BEGIN SET @i += 1 BEGIN TRAN INSERT t VALUES (@i) COMMIT END "
       "ROLLBACK "
       "INSERT t VALUES (9)",
       "9", 0},
      {"WHILE frob.nic(1) = 1 DROP TABLE victim\nINSERT t VALUES (1)", "1", 1},
      {"DECLARE @i int = 0 WHILE @i < 10 INSERT t VALUES (1)\nINSERT t VALUES (2)", "2", 1},
      {"DECLARE @i int = 0 WHILE 1 = 1 BEGIN IF @i > 5 BREAK END INSERT t VALUES (2)", "2", 1},
      {"DECLARE @a int = 2 WHILE @a > 0 BEGIN DECLARE @b int IF @b IS NULL SET @b = 0 SET @b += 1 SET @a -= 1 INSERT t "
       "VALUES (@b) END",
       "1,2", 0},
      {"again:\nIF (SELECT COUNT(*) FROM t) < 2\nBEGIN\n  INSERT t VALUES (1)\n  GOTO again\nEND\nGOTO done\nDROP "
       "TABLE "
       "victim\ndone: INSERT t VALUES (2)",
       "1,1,2", 0},
      {"INSERT t VALUES (1) GOTO nowhere\nDROP TABLE victim", "1", 1},
      {"GOTO inside\nBEGIN\ninside: DROP TABLE victim\nEND\nDROP TABLE victim", "", 1},
      {"x: GOTO x\nDROP TABLE victim", "", 1},
      {"SELECT 1\nx:\nINSERT t VALUES (1) IF 1 = 0 GOTO x", "1", 0},
  };
  for (const auto& each : cases) expectRun(each.script, each.rows, each.told);
}

TEST(TryCatch, ErrorsLeadToTheCatch) {
  const struct {
    const char* script;
    const char* rows;
    std::size_t told;
  } cases[] = {
      {"BEGIN TRY INSERT t VALUES (1) INSERT nothing VALUES (1) DROP TABLE victim END TRY\nBEGIN CATCH INSERT t VALUES "
       "(2) END CATCH INSERT t VALUES (3)",
       "1,2,3", 1},
      {"BEGIN TRY RAISERROR('note', 10, 1) RAISERROR('no', 16, 1) DROP TABLE victim END TRY BEGIN CATCH INSERT t "
       "VALUES "
       "(2) END CATCH",
       "2", 1},
      {"BEGIN TRY EXEC ('THROW 50000, ''x'', 1; DROP TABLE victim') END TRY BEGIN CATCH INSERT t VALUES (2); THROW END "
       "CATCH\nDROP TABLE victim\nGO\nINSERT t VALUES (3)",
       "2,3", 2},
      {"INSERT t VALUES (1); THROW 50000, 'x', 1\nDROP TABLE victim", "1", 1},
      {"BEGIN TRY DROP TABLE victim END TRY\nDROP TABLE victim", "", 1},
  };
  for (const auto& each : cases) expectRun(each.script, each.rows, each.told);
}

TEST(Cursors, HandOutTheirRows) {
  const struct {
    const char* script;
    const char* rows;
    std::size_t told;
  } cases[] = {
      {"DECLARE @n int = 3, @s varchar(9) DECLARE c CURSOR LOCAL FAST_FORWARD FOR SELECT n, s FROM src WHERE n < @n "
       "ORDER BY n DESC FOR READ ONLY\nSELECT @n = 0\nOPEN c\nFETCH NEXT FROM c INTO @n, @s\nWHILE @@FETCH_STATUS = "
       "0\nBEGIN\n  INSERT t VALUES (@n)\n  FETCH NEXT FROM c INTO @n, @s\nEND\nCLOSE c\nDEALLOCATE c\nGO\nOPEN c",
       "2,1", 1},
      {"DECLARE @n int DECLARE c SCROLL CURSOR FOR SELECT n FROM src OPEN c FETCH LAST FROM c INTO @n INSERT t VALUES "
       "(@n) FETCH PRIOR FROM c INTO @n INSERT t VALUES (@n) FETCH ABSOLUTE 1 FROM c INTO @n INSERT t VALUES (@n)\nGO\n"
       "DECLARE @n int FETCH RELATIVE 1 FROM c INTO @n INSERT t VALUES (@n + 10) DEALLOCATE c FETCH c",
       "3,2,1,12", 1},
      // Not kept: what hangs on it is refused, each once.
      {"DECLARE @n int DECLARE c CURSOR FOR SELECT n FROM src CROSS APPLY x\nOPEN c\nFETCH NEXT FROM c INTO @n\nWHILE "
       "@@FETCH_STATUS = 0\nBEGIN\n  DROP TABLE victim\n  FETCH NEXT FROM c INTO @n\nEND\nCLOSE c\nINSERT t VALUES (1)",
       "1", 5},
      {"DECLARE @n int DECLARE c CURSOR FOR SELECT n FROM src OPEN c FETCH c INTO @n WHILE @@FETCH_STATUS = 0 BEGIN "
       "INSERT t VALUES (@n) UPDATE src SET n = 0 WHERE CURRENT OF c FETCH c INTO @n END\nINSERT t SELECT n FROM src",
       "1,2,3", 1},
  };
  for (const auto& each : cases) expectRun(each.script, each.rows, each.told);
}

TEST(Nesting, EndsWithASentence) {
  const auto many = [](int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
  };
  const std::string scripts[] = {
      many(4000, "IF 1=1 ") + "DROP TABLE victim",
      "IF 1=0 " + many(4000, "IF 1=1 ") + "DROP TABLE victim\nDROP TABLE victim",
      many(20000, "BEGIN ") + "DROP TABLE victim" + many(20000, " END"),
      "IF 1 = " + many(30000, "(") + "1" + many(30000, ")") + " DROP TABLE victim",
      "DECLARE @s varchar(max) = 'EXEC (@s)' EXEC sp_executesql N'EXEC sp_executesql @s, N''@s nvarchar(max)'', @s',"
      " N'@s nvarchar(max)', N'EXEC sp_executesql @s, N''@s nvarchar(max)'', @s'",
  };
  for (const std::string& script : scripts) {
    Loading s;
    const auto report = s.load(victimTables + script);
    EXPECT_EQ(report.skipped.size() + report.failed.size(), 1u) << script.substr(0, 60) << reasons(report.failed);
    EXPECT_EQ(s.rows("select count(*) from cat_objects where name = 'victim'"), "1\n") << script.substr(0, 60);
  }
  std::string chain = "IF 1 = 0 DROP TABLE victim" + many(2000, "\nELSE IF 1 = 0 DROP TABLE victim");
  expectRun(chain + "\nELSE INSERT t VALUES (1)", "1", 0);
}

TEST(StopRequest, EndsWhatRuns) {
  const char* const cross =
      "(SELECT COUNT(*) FROM src a, src b, src c, src d, src e, src f, src g, src h, src i, src j, "
      "src k, src l, src m, src n, src o, src p, src q, src r)";
  const std::string scripts[] = {
      std::string("UPDATE src SET n = ") + cross,
      std::string("INSERT t SELECT ") + cross,
      std::string("DECLARE @n int = ") + cross,
      std::string("IF 1 < ") + cross + " DROP TABLE victim",
      std::string("DELETE src WHERE n < ") + cross,
      std::string("EXEC ('BEGIN TRAN; UPDATE src SET n = ") + cross + "')",
      "DECLARE @i bigint = 0 WHILE 1 = 1 BEGIN SET @i += 1 IF @i < 0 BREAK END",
      "x: INSERT t VALUES (1) GOTO x",
      "INSERT t VALUES (1)\nGO 100000000",
  };
  for (const std::string& script : scripts) {
    Loading s;
    s.load("CREATE TABLE old (a int)");
    using Clock = std::chrono::steady_clock;
    const auto asked = Clock::now() + std::chrono::milliseconds(150);
    LoadOptions options;
    options.replace = true;
    options.stop = [&] { return Clock::now() >= asked; };
    EXPECT_TRUE(s.load(victimTables + script, options).stopped) << script;
    EXPECT_LT(Clock::now() - asked, std::chrono::milliseconds(1500)) << script;
    EXPECT_EQ(s.objects(), "old|U\n") << script;
  }
}

}  // namespace
}  // namespace qrel
