// CREATE statements and update scripts.
#include "compare/script/modScript.h"
#include "compare/script/modSql.h"
#include "compare/script/updateScript.h"
#include "db/mdlObjects.h"
#include "db/readFailures.h"
#include "platform/text.h"
#include "tests/db/scriptedServer.h"

namespace qrel {
namespace {

tTableColumn column(const char* name, const char* line) {
  tTableColumn made;
  made.strName = name;
  made.strLine = line;
  return made;
}
tTableColumn index(const char* name, const char* definition) {
  tTableColumn made;
  made.strName = name;
  made.strDefinition = definition;
  return made;
}

// The statuses in order.
std::string statuses(const std::vector<tTableColumn>& list) {
  std::string text;
  for (const tTableColumn& each : list) text += std::to_string(each.lngScriptStatus);
  return text;
}
std::string countsText(const ScriptCounts& counts) {
  return std::to_string(counts.lngDropped) + std::to_string(counts.lngAdded) + std::to_string(counts.lngChanged) +
         std::to_string(counts.lngSame);
}

TEST(Scripts, ColumnsAreMatchedByNameAndComparedByLine) {
  TestProgram test;
  std::vector<tTableColumn> source = {column("Id", "[Id] [int] NOT NULL"), column("note", "[note] [text] NULL"),
                                      column("New", "[New] [int] NULL"), column("Sum", "[Sum] [money] NULL")};
  std::vector<tTableColumn> target = {column("Gone", "[Gone] [bit] NULL"), column("NOTE", "[NOTE] [text] NULL"),
                                      column("Id", "[Id] [int] NOT NULL"), column("Sum", "[Sum] [int] NULL")};
  ScriptCounts counts;
  std::string script;
  ASSERT_TRUE(UpdateScript_Tables(test.program, "Orders", source, target, counts, script));
  EXPECT_EQ(script,
            "ALTER TABLE Orders ALTER COLUMN [note] [text] NULL\r\nADD [New] [int] NULL\r\n"
            "ALTER COLUMN [Sum] [money] NULL\r\n DROP COLUMN [Gone] [bit] NULL\r\n");
  EXPECT_EQ(statuses(source), "4323");
  EXPECT_EQ(statuses(target), "1343");
  EXPECT_EQ(countsText(counts), "1121");

  // In another order: nothing to do.
  source = {column("A", "[A] [int] NULL"), column("B", "[B] [int] NULL")};
  target = {source[1], source[0]};
  ASSERT_TRUE(UpdateScript_Tables(test.program, "Orders", source, target, counts, script));
  EXPECT_EQ(script, "");
  EXPECT_EQ(countsText(counts), "0002");
}

TEST(Scripts, IndexesAreMatchedByTheirExactName) {
  const std::vector<tTableColumn> none;
  const std::vector<tTableColumn> one = {index("IX", "INDEX [IX] ([a])"), index("iy", "INDEX [iy] ([b])")};
  const std::vector<tTableColumn> other = {index("IY", "INDEX [IY] ([b])"), index("IX", "INDEX [IX] ([c])"),
                                           index("iy", "INDEX [iy] ([b])")};
  struct Case {
    std::vector<tTableColumn> source, target;
    bool identical;
    const char *expectedSource, *expectedTarget, *counts;
  } cases[] = {{none, none, false, "", "", "0000"},      {one, one, true, "44", "44", "0002"},
               {one, none, false, "22", "", "0200"},     {none, one, false, "", "11", "2000"},
               {one, other, false, "34", "134", "1011"}, {other, one, false, "234", "34", "0111"}};
  TestProgram test;
  for (Case& each : cases) {
    ScriptCounts counts;
    EXPECT_TRUE(CompareIndexes(test.program, each.source, each.target, each.identical, counts));
    EXPECT_EQ(statuses(each.source), each.expectedSource);
    EXPECT_EQ(statuses(each.target), each.expectedTarget);
    EXPECT_EQ(countsText(counts), each.counts);
  }
}

TEST(Scripts, AnIndexStatementNeedsAllItsParts) {
  TestProgram test;
  Program& program = test.program;
  const tTableColumn key = index("PK_t", "CONSTRAINT [PK_t] PRIMARY KEY CLUSTERED ([a])");
  EXPECT_EQ(BuildIndexDropStatement(program, key, "t"), "ALTER TABLE [t] DROP CONSTRAINT [PK_t]");
  EXPECT_EQ(BuildIndexCreateStatement(program, key, "t"),
            "ALTER TABLE [t] ADD CONSTRAINT [PK_t] PRIMARY KEY CLUSTERED ([a])");
  for (const auto& [part, table] : {std::pair(index("", "INDEX x"), "t"), std::pair(index("x", ""), "t"), {key, ""}}) {
    EXPECT_EQ(BuildIndexDropStatement(program, part, table), "");
    EXPECT_EQ(BuildIndexCreateStatement(program, part, table), "");
  }
}

class UpdateScripts : public testing::Test, public TestProgram {
 protected:
  // Of table t, loaded from two scripts.
  UpdateScript of(const std::string& source, const std::string& target) {
    const std::string number = std::to_string(++count_);
    load("S", "Source" + number, source);
    load("S", "Target" + number, target);
    return BuildUpdateScript(
        program, {tScriptTable{server_, "Source" + number, "t", 0}, tScriptTable{server_, "Target" + number, "t", 0}});
  }

 private:
  tServer server_ = server("S");
  int count_ = 0;
};

const std::string keyed = "CREATE TABLE t (Id int NOT NULL CONSTRAINT PK_t PRIMARY KEY, a int NULL, b int NULL)\n";

TEST_F(UpdateScripts, DropIndexesBeforeTheColumnsAndAddThemBehind) {
  // IX_b stays as it is, but its last column changes; IX_a changes; IX_old goes; IX_new gets no statement.
  const UpdateScript script =
      of("CREATE TABLE t (Id int NOT NULL CONSTRAINT PK_t PRIMARY KEY, a int NULL, b bigint NULL)\n"
         "CREATE INDEX IX_b ON t (a, b)\nCREATE INDEX IX_a ON t (a)\nCREATE INDEX IX_new ON t (a)",
         keyed + "CREATE INDEX IX_b ON t (a, b)\nCREATE INDEX IX_a ON t (a, Id)\nCREATE INDEX IX_old ON t (a)");
  EXPECT_TRUE(script.blnRead);
  EXPECT_TRUE(script.blnResult);
  EXPECT_EQ(
      script.strScript,
      "ALTER TABLE [t] DROP INDEX [IX_b]\r\nALTER TABLE [t] DROP INDEX [IX_a]\r\nALTER TABLE [t] DROP INDEX [IX_old]"
      "\r\nALTER TABLE t ALTER COLUMN [b] [bigint] NULL\r\n"
      "ALTER TABLE [t] ADD INDEX [IX_b] ([a], [b])\r\nALTER TABLE [t] ADD INDEX [IX_a] ([a])\r\n");
  EXPECT_EQ(script.arrNewIndexes, std::vector<std::string>{"IX_new"});
}

TEST_F(UpdateScripts, EndWhereThereIsNoMoreToDo) {
  const UpdateScript withoutIndex = of("CREATE TABLE t (a int NULL)", "CREATE TABLE t (a bit NULL)");
  EXPECT_FALSE(withoutIndex.blnResult);
  EXPECT_EQ(withoutIndex.strScript, "ALTER TABLE t ALTER COLUMN [a] [int] NULL\r\n");

  const UpdateScript order =
      of(keyed, "CREATE TABLE t (b int NULL, a int NULL, Id int NOT NULL CONSTRAINT PK_t PRIMARY KEY)");
  EXPECT_TRUE(order.blnRead);
  EXPECT_FALSE(order.blnResult);
  EXPECT_EQ(order.strScript, "");

  const UpdateScript added = of(keyed + "CREATE INDEX IX ON t (a)", keyed);
  EXPECT_TRUE(added.blnResult);
  EXPECT_EQ(added.strScript, "") << "a new index gets no ADD";
  EXPECT_EQ(added.arrNewIndexes.size(), 1U);
}

TEST_F(UpdateScripts, TakeTheSourcesIndexAtTheSamePlace) {
  // Target's second index changes; Source's second one is another.
  const UpdateScript moved =
      of(keyed + "CREATE INDEX IX_x ON t (b)\nCREATE INDEX IX_a ON t (b)", keyed + "CREATE INDEX IX_a ON t (a)");
  EXPECT_EQ(moved.strScript, "ALTER TABLE [t] DROP INDEX [IX_a]\r\nALTER TABLE [t] ADD INDEX [IX_x] ([b])\r\n");
  try {
    of(keyed + "CREATE INDEX IX_a ON t (b)", keyed + "CREATE INDEX IX_y ON t (b)\nCREATE INDEX IX_a ON t (a)");
    FAIL() << "Source has no index at that place";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.number, errorNumber::subscript);
  }
}

TEST(Scripts, AFailedReadIsNoScript) {
  for (const char* part : {"ORDER BY sk.indid, sk.keyno", "ORDER BY sco.colorder", "FROM syscomments"}) {
    ScriptedServer test;
    test.load("S", "A", "CREATE TABLE t (a int DEFAULT 1)\nCREATE INDEX IX ON t (a)");
    tServer server = ScriptedServer::record();
    test.refuse(part);
    test.program.mdlData.gblnNoConnErrMsg = true;
    if (std::string(part) != "FROM syscomments") test.expectReports(1);
    const UpdateScript script =
        BuildUpdateScript(test.program, {tScriptTable{server, "A", "t", 0}, tScriptTable{server, "A", "t", 0}});
    EXPECT_FALSE(script.blnRead) << part;
    EXPECT_EQ(script.strScript, "") << part;
  }
}

class CreateStatements : public testing::Test, public TestProgram {
 protected:
  CreateStatements() {
    host.time = {2024, 2, 3, 4, 5, 6};
    load("S", "Db",
         "CREATE TABLE Orders (Id int NOT NULL, Note varchar(9) NULL)\nGO\nCREATE SCHEMA sales\nGO\n"
         "CREATE TABLE sales.Rates (r int NOT NULL CONSTRAINT PK_Rates PRIMARY KEY)\nGO\n"
         "CREATE VIEW V AS SELECT Id FROM Orders\nGO\nCREATE PROCEDURE GetOrders AS SELECT 1 FROM orders\nGO\n");
  }
  std::string of(long type, const std::string& name, const char* delimiter = ",", bool noHeader = true,
                 const char* from = "", const char* to = "") {
    tServer record = server("S");
    return GetSqlCreateStatement(program, record, {"S", "Db", name, type, 0, delimiter, from, to, noHeader}, drop);
  }
  std::string drop;
};

TEST_F(CreateStatements, BeginWithAGuardedDrop) {
  EXPECT_EQ(of(objTables, "Orders", ",", false),
            "USE [Db]\r\nGO\r\n/****** Object: Table [Orders]      ---- Script Date: 2024-02-03 04:05:06 ******/\r\n"
            "SET ANSI_NULLS ON\r\nGO\r\nSET QUOTED_IDENTIFIER ON\r\nGO\r\n"
            "IF EXISTS (SELECT * FROM dbo.sysobjects\r\nWHERE id = object_id('[Orders]') AND "
            "OBJECTPROPERTY(id, 'IsTable') = 1)\r\nDROP Table[Orders]\r\nGO\r\n"
            "CREATE TABLE [Orders] (\r\n[Id] [int] NOT NULL,\r\n[Note] [varchar] (9) NULL \r\n)");
  EXPECT_EQ(drop,
            "IF EXISTS (SELECT * FROM dbo.sysobjects\r\nWHERE id = object_id('[Orders]') AND "
            "OBJECTPROPERTY(id, 'IsTable') = 1)\r\nDROP Table[Orders]");
}

TEST_F(CreateStatements, HaveTheObjectsOwnText) {
  EXPECT_EQ(of(objTables, "Orders", ""),
            "CREATE TABLE [Orders] (\r\n[Id] [int] NOT NULL\r\n[Note] [varchar] (9) NULL \r\n)");
  EXPECT_EQ(of(objTables, "Rates"),
            "CREATE TABLE [sales].[Rates] (\r\n[r] [int] NOT NULL,\r\n\r\n"
            "CONSTRAINT [PK_Rates] PRIMARY KEY CLUSTERED ([r])\r\n \r\n)")
      << "the comma stays before an index";
  program.settings.IgnoreIndexes = true;
  EXPECT_EQ(of(objTables, "Rates"), "CREATE TABLE [sales].[Rates] (\r\n[r] [int] NOT NULL \r\n)");
  EXPECT_EQ(of(objViews, "V"), "\r\nCREATE VIEW V AS SELECT Id FROM Orders \r\n");
  EXPECT_EQ(of(objConstraints, "PK_Rates"), "\r\n \r\n") << "no text of its own";
  // In the name and in a stored source, whatever the case; a table's columns stay.
  EXPECT_EQ(of(objProcedures, "GetOrders", ",", true, "ORDERS", "Parcels"),
            "\r\nCREATE PROCEDURE GetParcels AS SELECT 1 FROM Parcels \r\n");
  EXPECT_NE(drop.find("DROP Procedure[GetParcels]"), std::string::npos) << drop;
  EXPECT_TRUE(of(objTables, "Orders", ",", true, "o", "0").starts_with("CREATE TABLE [0rders] (\r\n[Id]"));
}

TEST_F(CreateStatements, NeedAnObject) {
  EXPECT_EQ(of(objTables, ""), "");
  EXPECT_EQ(of(0, "Orders"), "");
  ASSERT_EQ(host.boxes.size(), 2U);
  EXPECT_EQ(host.boxes[0].text, "Cannot build SQL CREATE statement - wrong parameters passed");
  EXPECT_EQ(host.boxes[0].title, "Error");
}

}  // namespace
}  // namespace qrel
