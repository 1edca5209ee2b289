// Table text to the blank, on servers of both kinds.
#include "db/mdlData.h"
#include "db/mdlQueryCode.h"
#include "platform/controls/form.h"
#include "tests/support.h"

namespace qrel {
namespace {

constexpr const char* tableTextScript = R"(
EXEC sp_addtype 'phone', 'varchar(20)', 'NOT NULL'
GO
CREATE TABLE t (
  id int IDENTITY (1,1) NOT NULL CONSTRAINT PK_t PRIMARY KEY CLUSTERED,
  name varchar(50) NOT NULL,
  wide nvarchar(30) NULL,
  amount decimal(18,2),
  part numeric(9),
  price money DEFAULT 0,
  created datetime NOT NULL CONSTRAINT DF_t_created DEFAULT GETDATE(),
  tag char(3) NOT NULL CONSTRAINT DF_t_tag DEFAULT ('x y'),
  bits binary(4) NULL,
  guid uniqueidentifier NULL,
  note text,
  fon phone,
  flag bit NOT NULL,
  neg int CONSTRAINT DF_t_neg DEFAULT -1
)
CREATE INDEX IX_t_name ON t (name, wide)
CREATE UNIQUE INDEX UX_t_guid ON t (guid DESC)
)";

std::string tableText(TestProgram& test, tServer server, const std::string& table, long id = 0) {
  return GetTableText(test.program, server, {"Db", table, id});
}

TEST(TableText, IsRightToTheBlank) {
  TestProgram test;
  test.load("New", "Db", tableTextScript);
  const std::string text = tableText(test, TestProgram::server("New"), "t");
  // The default without a name gets one from the server; it is the only part that can't be told beforehand.
  const std::size_t made = text.find("[price] [money] NULL CONSTRAINT [DF__t__price__");
  ASSERT_NE(made, std::string::npos) << text;
  const std::size_t end = text.find("] DEFAULT ", made);
  const std::string expected =
      "[id] [int] IDENTITY(1,1) NOT NULL\r\n"
      "[name] [varchar] (50) NOT NULL\r\n"
      "[wide] [nvarchar] (30) NULL\r\n"
      "[amount] [decimal](18,2) NULL\r\n"
      "[part] [numeric](9,0) NULL\r\n" +
      text.substr(made, end - made) +
      "] DEFAULT ((0))\r\n"
      "[created] [datetime] NOT NULL CONSTRAINT [DF_t_created] DEFAULT (getdate())\r\n"
      "[tag] [char] (3) NOT NULL CONSTRAINT [DF_t_tag] DEFAULT ('x y')\r\n"
      "[bits] [binary] (4) NULL\r\n"
      "[guid] [uniqueidentifier] NULL\r\n"
      "[note] [text] NULL\r\n"
      "[fon] [phone] NOT NULL\r\n"
      "[flag] [bit] NOT NULL\r\n"
      "[neg] [int] NULL CONSTRAINT [DF_t_neg] DEFAULT ((-1))\r\n"
      "\r\n"
      "CONSTRAINT [PK_t] PRIMARY KEY CLUSTERED ([id])\r\n"
      "INDEX [IX_t_name] ([name], [wide])\r\n"
      "INDEX [UX_t_guid] ([guid])\r\n";
  EXPECT_EQ(text, expected);

  test.program.settings.IgnoreIndexes = true;
  EXPECT_EQ(tableText(test, TestProgram::server("New"), "t"), expected.substr(0, expected.find("\r\n\r\n")));
}

TEST(TableText, OfAnOldServerShowsNoDefaults) {
  TestProgram test;
  test.load("Old", "Db", "CREATE TABLE t (a int NOT NULL DEFAULT 5, b varchar(7) PRIMARY KEY NONCLUSTERED)",
            "8.00.2039");
  const std::string text = tableText(test, TestProgram::server("Old", "8.00.2039"), "t");
  EXPECT_TRUE(text.starts_with("[a] [int] NOT NULL\r\n[b] [varchar] (7) NOT NULL\r\n\r\nINDEX [PK__t__")) << text;
  EXPECT_TRUE(text.ends_with("] ([b])\r\n")) << text;
}

TEST(TableText, KeepsTheOddities) {
  TestProgram test;
  test.load("New", "Db", R"(
CREATE TABLE bare (a int, m varchar(max), nm nvarchar(max))
CREATE CLUSTERED INDEX CX ON bare (a)
CREATE TABLE heap (a int CONSTRAINT CK_a CHECK (a > 0), b int)
CREATE CLUSTERED INDEX pkish ON heap (b)
CREATE TABLE other (b int NOT NULL CONSTRAINT UQ_b UNIQUE CLUSTERED)
GO
CREATE SCHEMA sales
GO
CREATE TABLE sales.far (a int IDENTITY(5,2) NOT NULL)
)");
  const tServer server = TestProgram::server("New");
  EXPECT_EQ(tableText(test, server, "bare"), "[a] [int] NULL\r\n[m] [varchar] (-1) NULL\r\n[nm] [nvarchar] (-1) NULL")
      << "a table without a child object shows no index";
  EXPECT_EQ(tableText(test, server, "heap"),
            "[a] [int] NULL\r\n[b] [int] NULL\r\n\r\nCONSTRAINT [pkish] PRIMARY KEY CLUSTERED ([b])\r\n")
      << "the name alone makes it a primary key";
  EXPECT_EQ(tableText(test, server, "other"), "[b] [int] NOT NULL\r\n\r\nCLUSTERED INDEX [UQ_b] ([b])\r\n");
  EXPECT_EQ(tableText(test, server, "far"), "[a] [int] IDENTITY NOT NULL") << "a bare name's seed is looked up in dbo";
  EXPECT_EQ(tableText(test, server, "missing"), "");
}

TEST(TableText, OfOneNameInTwoSchemasNeedsTheId) {
  TestProgram test;
  test.load("New", "Db", "CREATE TABLE t (a int)\nGO\nCREATE SCHEMA s\nGO\nCREATE TABLE s.t (b int)");
  const tServer server = TestProgram::server("New");
  EXPECT_EQ(tableText(test, server, "t"), "[a] [int] NULL\r\n[b] [int] NULL");
  RecordsetPtr rs;
  GetAdoRS(test.program, server, adCmdText, "SELECT id FROM sysobjects WHERE name = 't' ORDER BY id", rs, "Db");
  ASSERT_TRUE(hasRecords(rs));
  rs->MoveLast();
  EXPECT_EQ(tableText(test, server, "t", integerOf(rs->Fields(0).cell)), "[b] [int] NULL");
}

TEST(GetIndexes, FillsOneEntryPerIndex) {
  TestProgram test;
  test.load("New", "Db", tableTextScript);
  std::vector<tTableColumn> entries;
  long count = 0;
  GetIndexes(test.program, TestProgram::server("New"), "t", "Db", false, "_x", true, entries, count);
  EXPECT_EQ(count, 3);
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(entries[0].strDefinition, "CONSTRAINT [PK_t_x] PRIMARY KEY CLUSTERED ([id])");
  const auto& two = entries[1];
  EXPECT_EQ(two.strName + " " + two.strLine, "IX_t_name wide") << "its last column";
  EXPECT_EQ(two.strDefinition, "INDEX [IX_t_name] ([name], [wide])");
}

TEST(TableText, OfABrokenDatabaseIsReported) {
  TestProgram test;
  test.load("New", "Db", "CREATE TABLE t (a int)");
  std::ofstream(test.servers.databaseFile("New", "Db"), std::ios::binary) << std::string(5000, 'x');
  std::vector<std::string> reports;
  for (int i = 0; i < 3; ++i)
    test.host.windows.push_back(
        [&](Form& form) { reports.push_back(dynamic_cast<TextBox*>(form.find("txtErrDesc"))->text()); });
  EXPECT_EQ(tableText(test, TestProgram::server("New"), "t"), "");
  ASSERT_EQ(reports.size(), 3U) << "the structure, then the indexes' query and what follows from it";
  EXPECT_NE(
      reports[0].find("(mdlQueryCode:GetTableStructure)\r\n\r\nError occured while attempting to get the structure of "
                      "table\r\n\r\n't'\r\n\r\nin SQL Server database\r\n\r\n'New.Db'\r\n\r\nError -2147467259 ("),
      std::string::npos)
      << reports[0];
}

}  // namespace
}  // namespace qrel
