// Words of a text that name nothing: the coarse search, and the one that explains what it can.
#include "compare/script/modNonExistObjects.h"
#include "compare/script/sureReferences.h"
#include "db/mdlObjects.h"
#include "tests/db/scriptedServer.h"

namespace qrel {
namespace {

TEST(References, AreTheWordsThatPassEveryFilter) {
  struct Case {
    long type;
    const char* text;
    const char* expected;
  } const cases[] = {
      {objProcedures, "SELECT missing FROM missing", ""},
      {objProcedures, "CREATE PROCEDURE gone AS SELECT count(*) FROM orders", "count *"},
      {objProcedures, "CREATE PROCEDURE p @a int AS DECLARE @b int SELECT @b FROM orders", ""},
      {objProcedures, "CREATE PROCEDURE p AS SELECT @b FROM orders", "@b"},
      {objViews, "CREATE VIEW v AS SELECT @x FROM orders", "@x"},
      {objTriggers, "CREATE TRIGGER t ON orders (@p) AS SELECT @p FROM orders", "@p"},
      {objViews, "CREATE VIEW v AS SELECT x1, x1 FROM orders AS o1 WHERE x1 = 1", "x1 x1 o1 x1"},
      {objViews, "CREATE VIEW v AS SELECT 1 FROM dbo.orders, dbo.rates", "dbo.orders"},
      {objViews, "CREATE VIEW v AS SELECT 1 FROM [orders], [my thing], Orders", "my thing"},
      {objViews, "CREATE VIEW v AS SELECT 1 FROM Customers, \"Customers\", \"ORDERS\"", "customers Customers"},
      {objViews, "CREATE VIEW v AS SELECT \"Two Words\", \"Select\" FROM orders", "Two Words"},
      {objViews, "CREATE VIEW v AS SELECT 12.5 .5 5. +3 -1e5 1E-3 1x 1.2.3 e5 . - FROM orders", "1x 1.2.3 e5 ."},
      {objViews, "CREATE VIEW v AS a1 = 1 <> 2 > 3 < 4 - 5 + 6 * 7 / 8 >= 9 FROM orders", "a1 * / >="},
      {objViews, "CREATE VIEW v AS int varchar(5) NVARCHAR smallint Datetime2 table FROM orders",
       "varchar nvarchar smallint"},
      {objViews, "CREATE VIEW v AS Unique UniquOe dummy DBO NoCount ; within FROM orders", "unique within"},
      {objViews, "CREATE VIEW v AS SELECT /* gone */ 1 -- gone\r\nFROM orders", ""},
      {objViews, "CREATE VIEW v AS SELECT '--' gone\r\nFROM orders", "'"},
      {objViews, "CREATE VIEW v AS SELECT 1 FROM q", ""},
      {objViews, "  ", ""},
  };
  TestProgram test;
  std::vector<TwoStr> objects(3);
  objects[0].strName = "orders";
  objects[1].strName = "dbo.rates";
  objects[2].strName = "Customers";
  for (const Case& each : cases) {
    for (const bool ignoreComments : {true, false}) {
      test.program.settings.IgnoreComments = ignoreComments;
      long count = 7;
      std::vector<std::string> refs = {"old"};
      const bool any = FindRefToNonExistentObjects(test.program, each.type, each.text, objects, 3, count, refs);
      std::string all;
      for (const std::string& ref : refs) all += (all.empty() ? "" : " ") + ref;
      EXPECT_EQ(all, each.expected) << each.text;
      EXPECT_EQ(any, !refs.empty()) << each.text;
      EXPECT_EQ(count, static_cast<long>(refs.size())) << each.text;
    }
  }
}

TEST(References, ATextThatCanNotBeSearchedIsReported) {
  TestProgram test;
  test.host.windows.push_back([](Form& form) { EXPECT_EQ(form.name, "frmErrorReport"); });
  std::string text = "CREATE VIEW v AS ";
  for (int i = 0; i < 60; ++i) text += "/* ";  // never closed: each repeats what stands before it
  long count = 0;
  std::vector<std::string> refs;
  EXPECT_FALSE(FindRefToNonExistentObjects(test.program, objViews, text, {}, 0, count, refs));
}

class SureReferences : public testing::Test, public ScriptedServer {
 protected:
  SureReferences() {
    load("S", "Db", R"(
CREATE TABLE dbo.Orders (Id int, Total money, Customer nvarchar(50))
GO
CREATE SCHEMA sales
GO
CREATE TABLE sales.Rates (Rate float)
GO
CREATE FUNCTION dbo.Twice (@n int) RETURNS int AS BEGIN RETURN @n * 2 END
GO
CREATE TYPE dbo.Code FROM varchar(5)
GO
CREATE VIEW dbo.Big AS SELECT Id AS Number FROM Orders
)");
    EXPECT_TRUE(ReadKnownNames(program, record(), "Db", known));
  }
  std::string of(const std::string& text) const {
    std::string all;
    for (const SureReference& each : FindSureReferences(text, known))
      all += (all.empty() ? "" : " ") + each.name + ":" + std::to_string(each.line);
    return all;
  }
  KnownNames known;
};

TEST_F(SureReferences, LeaveOutWhatCanBeExplained) {
  for (const char* text :
       {"CREATE PROCEDURE p @a int, @b nvarchar(10) = N'Missing' WITH RECOMPILE AS SET NOCOUNT ON -- FROM Missing",
        "/* FROM Missing /* nested */ */ SELECT [Id], o.Total FROM [dbo].[Orders] AS o WITH (NOLOCK, INDEX(ix))",
        "DECLARE @t TABLE (Own int, Other dbo.Code) SELECT t.Own FROM @t t WHERE Other = 'Missing'",
        "DECLARE c CURSOR LOCAL FAST_FORWARD FOR SELECT Id FROM Orders OPEN c FETCH NEXT FROM c INTO @a",
        ";WITH n (No, What) AS (SELECT ROW_NUMBER() OVER (PARTITION BY Total ORDER BY Id DESC), Id FROM Orders),"
        " m AS (SELECT No Nr FROM n x) SELECT m.Nr FROM m JOIN n ON n.What = m.Nr",
        "SELECT Sums = SUM(Total), 'x' Label, DATEADD(day, 1, GETDATE()) Tomorrow, dbo.Twice(Id) FROM Orders",
        "CREATE TABLE #w (Tmp int) SELECT w.Tmp, Id Fresh INTO #z FROM #w w, dbo.Orders SELECT z.Fresh FROM #z z",
        "SELECT d.ra FROM Orders CROSS APPLY (SELECT TOP 1 Rate r FROM sales.Rates) AS d (ra)",
        "UPDATE o SET Total = 0 FROM Orders o DELETE FROM Orders WHERE Id = CAST('1' AS int)",
        "EXEC sp_executesql N'SELECT * FROM Missing' EXEC @rc = dbo.Twice @n = 1",
        "MERGE Orders AS t USING (SELECT 1 AS K) s ON t.Id = s.K WHEN MATCHED THEN UPDATE SET Total = 1 WHEN NOT "
        "MATCHED BY TARGET THEN INSERT (Id) VALUES (s.K) OUTPUT $action, inserted.Id;",
        "BEGIN TRY SELECT 1 END TRY BEGIN CATCH SELECT ERROR_MESSAGE(); THROW END CATCH GOTO done done: RETURN 0",
        "SELECT p.[1] FROM Orders PIVOT (SUM(Total) FOR Customer IN ([1], [2])) p",
        "SELECT geography::Point(1, 2, 4326).STAsText() FROM Orders CROSS APPLY Customer.nodes('/a') AS T(c) "
        "WHERE T.c.value('.', 'int') = 1 DBCC CHECKIDENT (Orders, RESEED, 1)",
        "SELECT Id, [Sum of all] = SUM(Total), CASE Id WHEN 1 THEN 2 END kind FROM Orders FOR JSON PATH, ROOT('x')",
        "SELECT v.n FROM (VALUES (1, 'a')) AS v (n, t) ORDER BY v.t COLLATE Latin1_General_CI_AS OPTION (MAXDOP 1)",
        "CREATE TRIGGER t ON Orders FOR INSERT AS SELECT i.Id FROM inserted i JOIN deleted ON deleted.Id = i.Id "
        "IF UPDATE(Total) PRINT \"a b\"",
        "SELECT Id INTO Copy FROM Db.dbo.Orders SELECT Id FROM Copy TRUNCATE TABLE Copy",
        "SELECT * FROM Elsewhere.dbo.Things SELECT * FROM INFORMATION_SCHEMA.TABLES",
        // Columns that can't be known: of a system view, another database, a view that lists none, a stranger's table.
        "SELECT s.session_id FROM sys.dm_exec_sessions s", "SELECT x.Foo, Bar FROM Elsewhere..Things x",
        "SELECT Number FROM dbo.Big", "SELECT Foo FROM #theirs", "SELECT value FROM OPENJSON(@j)"})
    EXPECT_EQ(of(text), "") << text;
}

TEST_F(SureReferences, ListWhatNamesNothing) {
  const std::pair<const char*, const char*> cases[] = {
      {"SELECT o.Id,\n o.Nmae, Totl, o.nmae\nFROM dbo.Orders o JOIN Custmers c ON c.Id = o.Id",
       "o.Nmae:2 Totl:2 Custmers:3"},
      {"SELECT dbo.Thrice(1), Nowhere(2), q.Id FROM Orders", "dbo.Thrice:1 Nowhere:1 q.Id:1"},
      {"EXEC Gone 1 EXEC @rc = dbo.Gone2", "Gone:1 dbo.Gone2:1"},
      {"EXEC sp_executesql @s EXEC @rc = sys.sp_who SELECT Totl FROM Orders", "Totl:1"},
      {"DROP VIEW IF EXISTS dbo.Old DROP VIEW dbo.Gone SELECT 1 FROM Orders WHERE CURRENT OF cur1", "dbo.Gone:1"},
      {"UPDATE dbo.Rates SET Rate = 1 INSERT sales.Orders (Id) VALUES (1)", "dbo.Rates:1 sales.Orders:1"},
      {"DELETE x FROM Orders o INSERT INTO Total SELECT 1", "x:1 Total:1"},  // a column is no table
      {"TRUNCATE TABLE [Old Stuff] MERGE INTO \"Gone\" USING Gone2 g ON 1 = 1", "Old Stuff:1 Gone:1 Gone2:1"},
      {"SELECT Id FROM Db.dbo.Gone, Db..Gone2, Db..Orders", "Db.dbo.Gone:1 Db..Gone2:1"},
      // Objects and functions are listed even where columns can't be known.
      {"SELECT Foo, Nowhere(1) FROM sys.objects JOIN Gone ON 1 = 1", "Nowhere:1 Gone:1"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(of(text), expected) << text;
}

TEST_F(SureReferences, NeedEveryListOfTheDatabase) {
  for (const char* part :
       {"sys.objects o", "FROM sys.schemas", "FROM syscolumns", "FROM systypes", "FROM sysindexes"}) {
    forgetAnswers();
    refuse(part);
    expectReports(1);
    EXPECT_FALSE(ReadKnownNames(program, record(), "Db", known)) << part;
  }
}

}  // namespace
}  // namespace qrel
