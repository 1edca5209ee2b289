// Names in SQL, table lines and script parts, from rows as a server may give them.
#include "db/mdlObjects.h"
#include "db/mdlQueryCode.h"
#include "db/modObjectText.h"
#include "tests/db/scriptedServer.h"

namespace qrel {
namespace {

TEST(ExtendedName, ComesByIdOrByName) {
  struct Case {
    const char* version;
    const char* name;
    long id;
    std::optional<std::string> byId;  // "-": the look-up fails
    const char* byName;
    const char* extended;
  };
  const Case cases[] = {
      {"11.0.2100.60", "t", 5, "dbo", "other", "[dbo].[t]"},
      {"11.0.2100.60", "sales.t", 5, "sales", "other", "[sales].[t]"},
      {"11.0.2100.60", "t", 5, std::nullopt, "other", "[t]"},
      {"11.0.2100.60", "t", 5, "-", "other", ""},
      {"11.0.2100.60", "a.b.t", 0, "other", "sales", "[sales].[t]"},
      {"11.0.2100.60", "t", 0, "other", "dbo", "[t]"},
      {"11.0.2100.60", "t", 0, "other", "", "[t]"},
      {"11.0.2100.60", "[t", 0, "other", "[sales]", "[sales].[t]"},
      {"9.00.3042", "t", 5, "sales", "other", "[sales].[t]"},
      {"9.00.3042", "t", 0, "other", "sales", "[sales].[t]"},
      {"8.00.2039", "t", 5, "sales", "other", "[t]"},
      {"8.00.2039", "sales.t", 0, "sales", "other", "[t]"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(std::string(each.version) + " " + each.name + " " + std::to_string(each.id));
    ScriptedServer test;
    test.load("S", "Db", "");
    const bool fails = each.byId == "-";
    for (const char* query : {"OBJECT_SCHEMA_NAME", "USER_NAME"}) {
      if (fails)
        test.refuse(query);
      else
        test.answer(query, {""}, {{each.byId}});
    }
    test.expectReports(fails ? 2 : 0);
    test.answer("INFORMATION_SCHEMA.TABLES", {"TABLE_SCHEMA"}, {{each.byName}});
    tServer server = ScriptedServer::record(each.version);
    server.VersionNum = 0;
    EXPECT_EQ(GetExtendedObjectName(test.program, server, "Db", each.name, objTables, each.id), each.extended);
    EXPECT_EQ(test.sent.empty(), *each.version == '8') << "an old server isn't asked";
  }
}

// A table of one column "c", as the server may describe it.
class ColumnLine : public ::testing::Test {
 protected:
  ColumnLine() { test.load("S", "Db", ""); }

  tTableColumn column(const std::string& version = defaultProductVersion) {
    test.answer("sco.[name] AS [column]",
                {"column", "isnullable", "prec", "scale", "datatype", "identityseed", "identityincrement", "isID",
                 "cdefault", "table_id", "col_id"},
                {{"c", nullable, prec, scale, datatype, seed, "3", isId, cdefault, "77", colId}});
    tServer server = TestProgram::server("S", version);
    tTableStructure table;
    EXPECT_TRUE(GetTableStructure(test.program, server, {"Db", "t"}, table));
    EXPECT_EQ(table.arrColumns.size(), 1U);
    if (table.arrColumns.empty()) return {};
    EXPECT_EQ(table.strText, table.arrColumns[0].strLine);
    return table.arrColumns[0];
  }

  ScriptedServer test;
  std::string datatype = "int", prec = "10", isId, nullable = "1";
  std::optional<std::string> scale = "0", seed, cdefault = "0", colId = "1";
};

TEST_F(ColumnLine, SizesFollowTheType) {
  struct Case {
    const char* datatype;
    const char* prec;
    const char* scale;
    const char* line;
    const char* typeText;
    const char* precText;
  };
  const Case cases[] = {
      {"nvarchar", "50", "0", "[c] [nvarchar] (50) NULL", "nvarchar (50)", "50"},
      {"varchar", "-1", "0", "[c] [varchar] (-1) NULL", "varchar (-1)", "-1"},
      {"binary", "8", "0", "[c] [binary] (8) NULL", "binary (8)", "8"},
      {"char", "3", "0", "[c] [char] (3) NULL", "char (3)", "3"},
      {"nchar", "7", "0", "[c] [nchar] (7) NULL", "nchar (7)", "7"},
      {"varbinary", "9", "0", "[c] [varbinary] (9) NULL", "varbinary (9)", "9"},
      {"NVarChar", "5", "0", "[c] [NVarChar] (5) NULL", "NVarChar (5)", "5"},
      {"decimal", "18", "2", "[c] [decimal](18,2) NULL", "decimal (18,2) ", "18"},
      {"NUMERIC", "9", "0", "[c] [NUMERIC](9,0) NULL", "NUMERIC (9,0) ", "9"},
      {"ntext", "1073741823", "0", "[c] [ntext] NULL", "ntext", ""},
      {"float", "53", "0", "[c] [float] NULL", "float", ""},
      {"sysname", "128", "0", "[c] [sysname] NULL", "sysname", ""},
  };
  for (const Case& each : cases) {
    datatype = each.datatype;
    prec = each.prec;
    scale = each.scale;
    const tTableColumn read = column();
    EXPECT_EQ(read.strLine, each.line);
    EXPECT_EQ(read.strType, each.datatype);
    EXPECT_EQ(read.strTypeText, each.typeText);
    EXPECT_EQ(read.strPrec, each.precText);
  }
}

TEST_F(ColumnLine, IdentityAndNullability) {
  isId = "Y";
  nullable = "0";
  EXPECT_EQ(column().strLine, "[c] [int] IDENTITY NOT NULL");
  seed = "5";
  EXPECT_EQ(column().strLine, "[c] [int] IDENTITY(5,3) NOT NULL");
  isId = "y";
  EXPECT_EQ(column().strLine, "[c] [int] NOT NULL") << "the mark is exact";
}

TEST_F(ColumnLine, DefaultsNeedVersion9AndBothIds) {
  test.answer("SELECT [ctext] FROM syscomments", {"ctext"}, {{"((1))"}});
  test.answer("AND type_desc LIKE 'DEFAULT_CONSTRAINT'", {"name"}, {{"DF_c"}});
  const std::string bare = "[c] [int] NULL", whole = bare + " CONSTRAINT [DF_c] DEFAULT ((1))";
  cdefault = "88";
  EXPECT_EQ(column("8.00.2039").strLine, bare);
  EXPECT_EQ(column("9.00.1399.06").strLine, whole);
  test.said();
  EXPECT_EQ(column("10.50.1600.1").strLine, whole);
  const std::string said = test.said();
  EXPECT_TRUE(
      said.ends_with("\nDb: SELECT [ctext] FROM syscomments WHERE id IN (SELECT cdefault FROM syscolumns WHERE "
                     "id = 77 AND colid = 1 AND cdefault > 0)\n"
                     "Db: SELECT [name] FROM sys.objects WHERE parent_object_id = 77 AND object_id = 88 AND "
                     "type_desc LIKE 'DEFAULT_CONSTRAINT'"))
      << said;
  for (const auto& none : {std::optional<std::string>("0"), std::optional<std::string>()}) {
    cdefault = none;
    EXPECT_EQ(column().strLine, bare);
  }
  cdefault = "88";
  colId = "0";
  EXPECT_EQ(column().strLine, bare);
}

TEST(ScriptParts, DefaultsOfATable) {
  ScriptedServer test;
  test.load("S", "Db", "");
  const tServer server = ScriptedServer::record();
  const std::string query =
      "Db: SELECT so.name AS [constraint], sc.text AS [default], sl.name as [column] FROM sysobjects so INNER JOIN "
      "syscomments sc ON so.id = sc.id INNER JOIN syscolumns sl ON so.parent_obj = sl.id AND so.id = sl.cdefault "
      "WHERE so.parent_obj IN (SELECT id FROM sysobjects WHERE name = 't') ORDER BY info";
  test.answer("AS [constraint]", {"constraint", "default", "column"}, {});
  EXPECT_EQ(GetTableConstraints(test.program, server, "t", "Db"), "");
  EXPECT_EQ(test.said(), query);
  test.answer("AS [constraint]", {"constraint", "default", "column"},
              {{"DF_a", "((0))", "a"}, {"DF_b", "('')", "b"}, {"DF_c", "('0')", "c"}, {"DF_d", "('it')", "d"}});
  EXPECT_EQ(GetTableConstraints(test.program, server, "t", "Db"),
            "EXEC('ALTER TABLE ' + @Database + '.[dbo].[t] WITH NOCHECK ADD\r\n"
            "CONSTRAINT [DF_a] DEFAULT ((0)) FOR [a],\r\n"
            "CONSTRAINT [DF_b] DEFAULT ('''') FOR [b],\r\n"
            "CONSTRAINT [DF_c] DEFAULT (''0'') FOR [c],\r\n"
            "CONSTRAINT [DF_d] DEFAULT (''''it'''') FOR [d]')"
            "\r\nIF @@ERROR <> 0 SET @ErrorVal = @@ERROR\r\n\r\n");
}

TEST(ScriptParts, DefaultsOfATableThatIsThere) {
  TestProgram test;
  test.load("New", "Db", "CREATE TABLE t (a int CONSTRAINT DF_a DEFAULT 4)\nCREATE TABLE u (a int DEFAULT 5)");
  EXPECT_EQ(GetTableConstraints(test.program, TestProgram::server("New"), "t", "Db"),
            "EXEC('ALTER TABLE ' + @Database + '.[dbo].[t] WITH NOCHECK ADD\r\n"
            "CONSTRAINT [DF_a] DEFAULT ((4)) FOR [a]')\r\nIF @@ERROR <> 0 SET @ErrorVal = @@ERROR\r\n\r\n");
}

TEST(ScriptParts, IndexesOfAView) {
  ScriptedServer test;
  test.load("S", "Db", "");
  const tServer server = ScriptedServer::record();
  const auto rows = [&](std::vector<FakeRow> given) {
    test.answer("SELECT si.name AS [index], sk.indid", {"index", "indid", "column"}, std::move(given));
  };
  const std::string end = " ON [PRIMARY] ')\r\nIF @@ERROR <> 0 SET @ErrorVal = @@ERROR\r\n\r\n";
  rows({{"IX_c", "1", "a"}, {"IX_c", "1", "b"}, {"IX_d", "2", "c"}, {"IX_e", "3", "a"}});
  EXPECT_EQ(GetExtras(test.program, server, "v", "Db", objViews),
            "EXEC('CREATE UNIQUE CLUSTERED INDEX [IX_c] ON ' + @Database + '.[dbo].[v]\r\n([a], [b])" + end +
                "EXEC('CREATE INDEX [IX_d] ON ' + @Database + '.[dbo].[v]\r\n([c])" + end +
                "EXEC('CREATE INDEX [IX_e] ON ' + @Database + '.[dbo].[v]\r\n([a])" + end);
  EXPECT_EQ(test.said(),
            "Db: SELECT si.name AS [index], sk.indid, sc.[name] AS [column] FROM sysindexkeys sk INNER JOIN sysindexes "
            "si ON sk.id = si.id AND sk.indid = si.indid INNER JOIN syscolumns sc ON sk.id = sc.id AND sk.colid = "
            "sc.colid INNER JOIN sysobjects so ON so.id = sk.id WHERE so.[name] = 'v' ORDER BY sk.indid");
  rows({{"IX_d", "2", "c"}});
  EXPECT_EQ(GetExtras(test.program, server, "v", "Db", objViews),
            "EXEC('CREATE INDEX [IX_d] ON ' + @Database + '.[dbo].[v]\r\n([c])" + end);
  test.said();
  EXPECT_EQ(GetExtras(test.program, server, "v", "Db", objTables), "");
  EXPECT_EQ(test.said(), "") << "views alone are asked for";
  rows({});
  EXPECT_EQ(GetExtras(test.program, server, "v", "Db", objViews), "");
}

}  // namespace
}  // namespace qrel
