// The object catalogue, object texts and the query layer.
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "db/modSchema.h"
#include "platform/controls/form.h"
#include "platform/error.h"
#include "tests/support.h"

namespace qrel {
namespace {

constexpr const char* objectsScript = R"(
CREATE TABLE Parent (a int NOT NULL, b int NOT NULL, CONSTRAINT PK_Parent PRIMARY KEY (a, b))
CREATE TABLE Child (x int NOT NULL CONSTRAINT pk_child PRIMARY KEY, y int,
  CONSTRAINT FK_Child FOREIGN KEY (x, y) REFERENCES Parent (a, b))
CREATE TABLE Heap (n int)
CREATE CLUSTERED INDEX ix_heap ON Heap (n)
GO

-- leading comment
CREATE PROCEDURE P1 AS
  SELECT 1

GO
CREATE FUNCTION F1 () RETURNS int AS BEGIN RETURN 1 END
GO
CREATE FUNCTION F2 () RETURNS TABLE AS RETURN (SELECT 1 AS a)
GO
CREATE VIEW V1 AS SELECT a FROM Parent
GO
CREATE TRIGGER [dbo].[T1] ON Parent FOR INSERT AS PRINT 'x'
GO
CREATE PROCEDURE Hidden WITH ENCRYPTION AS SELECT 2
GO
CREATE SCHEMA sales
GO
CREATE VIEW sales.V1 AS SELECT b FROM Parent
GO
CREATE VIEW sales.Only AS SELECT b FROM Parent
)";

std::string list(TestProgram& test, const tServer& server, long type) {
  tServer record = server;
  record.VersionNum = GetVersionNumber(record.Version);
  CheckList objects("pvlSqlObj(0)");
  TextPane pane("txtTXProc(0)");
  LoadObjects(test.program, record, objects, pane, type, "Db", false, "", 0, false);
  std::string text;
  for (std::size_t row = 0; row < objects.count(); ++row) text += objects.cell(row, 0) + " ";
  return text;
}

TEST(Catalogue, ListsEachTypeInOrderOfName) {
  TestProgram test;
  test.load("New", "Db", objectsScript);
  const tServer server = TestProgram::server("New");
  EXPECT_EQ(list(test, server, objTables), "Child Heap Parent ");
  EXPECT_EQ(list(test, server, objProcedures), "Hidden P1 ");
  EXPECT_EQ(list(test, server, objFunctions), "F1 F2 ");
  EXPECT_EQ(list(test, server, objViews), "Only dbo.V1 sales.V1 ") << "only names that occur twice get their schema";
  EXPECT_EQ(list(test, server, objTriggers), "T1 ");
  EXPECT_EQ(list(test, server, objRelationships), "FK_Child ") << "a key of two columns is one relationship";
  EXPECT_EQ(list(test, server, objConstraints), "pk_child PK_Parent ") << "clustered and called pk";
  EXPECT_EQ(list(test, server, 70), "");
  EXPECT_EQ(test.host.boxes.back().text, "BuildObjSQLString, wrong object type passed");

  RecordsetPtr rs;
  CountObjects(test.program, server, "Db", objFunctions, rs);
  EXPECT_EQ(integerOf(rs->Fields(0).cell), 2);
  CountObjects(test.program, server, "Db", objRelationships, rs);
  EXPECT_EQ(integerOf(rs->Fields(0).cell), 1);
}

TEST(Catalogue, BelowVersion9HasNoPrefixes) {
  TestProgram test;
  test.load("Old", "Db", "CREATE TABLE T (a int)\nGO\nCREATE VIEW V AS SELECT a FROM T", "8.00.2039");
  EXPECT_EQ(list(test, TestProgram::server("Old", "8.00.2039"), objViews), "V ");
  EXPECT_FALSE(DbCheckSqlSelect(test.program, TestProgram::server("Old"), "Db", "SELECT name FROM sys.objects"));
}

TEST(Catalogue, FilterBindsToTheLastTermOfFunctions) {
  TestProgram test;
  EXPECT_EQ(
      BuildObjSQLString(test.program, objFunctions, true, "f", SqlText("LIKE ") << inQuotes("a%"), 0).text(),
      "select name, refdate, id from sysobjects where OBJECTPROPERTY(id, N'IsInlineFunction') = 1 or "
      "OBJECTPROPERTY(id, N'IsScalarFunction') = 1  or OBJECTPROPERTY(id, N'IsTableFunction') = 1 and xtype <> 'S'  "
      "and name = 'f'  and [name] LIKE 'a%' order by name");
  auto& filter = test.program.state<modSchemaState>();
  filter.gblnSchemaFilter[1] = true;
  filter.gstrSchemaFilter[1] = "dbo,sales";
  EXPECT_EQ(BuildObjSQLString(test.program, objViews, false, "", "", 1).text(),
            "select name, refdate, id from sysobjects LEFT JOIN INFORMATION_SCHEMA.VIEWS ON "
            "INFORMATION_SCHEMA.VIEWS.TABLE_NAME = [name] where OBJECTPROPERTY(id, N'IsView') = 1AND "
            "INFORMATION_SCHEMA.VIEWS.TABLE_SCHEMA IN ('dbo','sales') order by name");
}

TEST(ObjectText, OfEachType) {
  TestProgram test;
  test.load("New", "Db", objectsScript);
  tServer server = TestProgram::server("New");
  const auto text = [&](long type, const char* name) {
    return GetTextOfObject(test.program, server, "Db", type, name, 0, 0);
  };
  EXPECT_EQ(text(objProcedures, "P1"), "-- leading comment\nCREATE PROCEDURE P1 AS\n  SELECT 1");
  EXPECT_EQ(text(objProcedures, "Hidden"), "");
  EXPECT_EQ(text(objProcedures, "Missing"), "");
  EXPECT_EQ(text(objRelationships, "FK_Child"),
            "TABLE Child\r\nCONSTRAINT [FK_Child]\r\nFOREIGN KEY [x]\r\nREFERENCES [Parent] [a]");
  EXPECT_EQ(text(objConstraints, "pk_child"),
            "CONSTRAINT [pk_child] \r\nPRIMARY KEY CLUSTERED \r\nON COLUMN [x]\r\nON TABLE [Child]");
  EXPECT_EQ(GetSchemaForObject(test.program, server, "Db", "T1", objTriggers), "dbo");
  EXPECT_EQ(GetExtendedObjectName(test.program, server, "Db", "x.Only", objViews, 0), "[sales].[Only]");
  EXPECT_EQ(GetExtendedObjectName(test.program, server, "Db", "Parent", objTables, 0), "[Parent]");
}

TEST(ObjectText, OfALongProcedureIsJoinedWithoutGaps) {
  TestProgram test;
  std::string body = "CREATE PROCEDURE Long AS\n";
  for (int i = 0; i < 2000; ++i) body += "SELECT 'ä" + std::to_string(i) + "'\n";
  test.load("New", "Db", body);
  EXPECT_EQ(GetObjectText(test.program, TestProgram::server("New"), "Long", "Db", objProcedures),
            body.substr(0, body.size() - 1));
}

TEST(ObjectText, PanelShowsOneObjectOrNothing) {
  TestProgram test;
  test.load("New", "Db", objectsScript);
  tServer server = TestProgram::server("New");
  CheckList objects("pvlSqlObj(0)");
  objects.multipleSelection = true;
  TextPane pane("txtTXProc(0)");
  LoadObjects(test.program, server, objects, pane, objProcedures, "Db", true, "", 0, false);
  EXPECT_EQ(pane.text(), "") << "Hidden comes first and has no text";
  pane.setText("before");
  objects.personSelects({0});
  UpdateProcedureTextBox(test.program, server, pane, objects, objProcedures, "Db", "", 0, 0, true);
  EXPECT_EQ(pane.text(), "before") << "an empty text leaves the panel as it was";
  objects.clearSelection();
  objects.remove(0);
  UpdateProcedureTextBox(test.program, server, pane, objects, objProcedures, "Db", "", 0, 0, true);
  EXPECT_TRUE(objects.isSelected(0) && pane.text().ends_with("SELECT 1"));
  objects.add("x");
  objects.personSelects({0, 1});
  UpdateProcedureTextBox(test.program, server, pane, objects, objProcedures, "Db", "", 0, 0, true);
  EXPECT_EQ(pane.text(), "<<Nothing to show>>");
}

TEST(ObjectText, FailuresAreReportedUnderTheNameOfTheirProcedure) {
  TestProgram test;
  test.load("New", "Db", objectsScript);
  tServer server = TestProgram::server("New");
  const std::tuple<long, const char*, const char*> cases[] = {
      {objProcedures, "(modObjectText:UpdateProcedureTextBox)", "\r\n\r\nLine num = 300"},
      {objRelationships, "(modObjectText:GetRelationshipText)", ""},
      {objConstraints, "(modObjectText:GetConstraintText)", ""}};
  for (const auto& [type, name, extra] : cases) {
    CheckList objects("pvlSqlObj(0)");
    TextPane pane("txtTXProc(0)");
    objects.select(objects.add("x"));
    std::vector<std::string> reports;
    for (int i = 0; i < 2; ++i)
      test.host.windows.push_back(
          [&](Form& form) { reports.push_back(dynamic_cast<TextBox*>(form.find("txtErrDesc"))->text()); });
    UpdateProcedureTextBox(test.program, server, pane, objects, type, "Missing", "", 1, 0, true);
    ASSERT_EQ(reports.size(), 2U) << "the query layer's, then this one";
    EXPECT_NE(reports[1].find(name), std::string::npos) << reports[1];
    EXPECT_TRUE(reports[1].ends_with(std::string("block variable not set") + extra)) << reports[1];
  }
  EXPECT_EQ(GetTextOfObject(test.program, server, "Db", 70, "x", 1, 0), "");
  EXPECT_EQ(test.host.boxes.back().text, "SHOULDN't HAPPEN");
}

TEST(Scripts, HeaderAndExec) {
  TestProgram test;
  std::string drop;
  const std::string header = GetScriptHeader(test.program, "Db", objViews, "[v]", drop);
  EXPECT_EQ(drop,
            "IF EXISTS (SELECT * FROM dbo.sysobjects\r\nWHERE id = object_id('[v]') AND OBJECTPROPERTY(id, 'IsView') "
            "= 1)\r\nDROP View[v]");
  EXPECT_EQ(header,
            "USE [Db]\r\nGO\r\n/****** Object: View [v]      ---- Script Date: 2026-01-02 03:04:05 ******/\r\n"
            "SET ANSI_NULLS ON\r\nGO\r\nSET QUOTED_IDENTIFIER ON\r\nGO\r\n" +
                drop + "\r\nGO");
  std::string sql = "-- x\nCreate VIEW v AS SELECT 'a'";
  EXPECT_EQ(WrapSqlInExec(sql, "Db"), "EXEC ('USE Db EXEC (''Create VIEW v AS SELECT ''''a'''''')')");
  EXPECT_EQ(sql, "Create VIEW v AS SELECT 'a'");
  EXPECT_EQ(WrapSqlInExec(sql = "x", ""),
            "EXEC ('USE ' + @Database + ' EXEC (''x'')')\r\nIF @@ERROR <> 0 SET @ErrorVal = @@ERROR\r\n\r\n");
}

TEST(QueryLayer, ConnectionStringsToTheLetter) {
  tServer server;
  server.Name = "S";
  EXPECT_EQ(connectionStringForQuery(server, "d", true),
            "Provider=SQLOLEDB.1;Persist Security Info=False;Data Source=S;Initial Catalog=d;Integrated Security=SSPI");
  server.SQLAuth = true;
  server.LoginName = "l";
  server.Password = "p";
  EXPECT_EQ(connectionStringForRun(server, ""),
            "Provider=SQLOLEDB.1;Persist Security Info=False;Data Source=S;Initial Catalog=;Password=p;User ID=l");
  server.LocalDb = true;
  EXPECT_EQ(connectionStringForQuery(server, "d", false), "Provider=SQLNCLI11;Server=S;Password=p;User ID=l");
  EXPECT_EQ(connectionStringForRun(server, "d").substr(0, 19), "Provider=SQLOLEDB.1") << "knows no LocalDb";
}

TEST(QueryLayer, FailuresSpeakUnlessToldToBeSilent) {
  TestProgram test;
  test.load("New", "Db", "CREATE TABLE t (a int NULL)\nINSERT t VALUES (NULL)\nINSERT t VALUES (1)");
  tServer server = TestProgram::server("New");
  std::vector<std::string> reports;
  const auto expectReport = [&] {
    test.host.windows.push_back(
        [&](Form& form) { reports.push_back(dynamic_cast<TextBox*>(form.find("txtErrDesc"))->text()); });
  };
  RecordsetPtr rs;
  AdoExtras extras;
  expectReport();
  EXPECT_EQ(GetAdoRS(test.program, server, adCmdText, "SELECT 1 FROM nowhere", rs, "Db", &extras), -1);
  EXPECT_FALSE(rs);
  EXPECT_EQ(extras.errNumber, errorNumber::invalidObjectName);
  EXPECT_TRUE(reports.back().ends_with("\r\n\r\nServer connection failed; cursor location = 2")) << reports.back();
  EXPECT_NE(reports.back().find("(mdlData:GetAdoRS)"), std::string::npos);

  EXPECT_FALSE(DbCheckSqlSelect(test.program, server, "Db", "SELEC 1"));
  EXPECT_FALSE(test.program.mdlData.gblnNoConnErrMsg) << "the region ended";

  ConnectionPtr connection;
  tServer nowhere = server;
  nowhere.Name = "Nowhere";
  test.program.mdlData.gblnNoConnErrMsg = true;
  expectReport();
  EXPECT_FALSE(ADO_Connection_Open(test.program, connection, nowhere, "Db")) << "and it reports all the same";
  test.program.mdlData.gblnNoConnErrMsg = false;
  ASSERT_TRUE(ADO_Connection_Open(test.program, connection, server, "Db"));
  EXPECT_EQ(GetAdoRS_Conn(test.program, connection, server, adCmdText, "SELECT x FROM t", rs), -1);
  EXPECT_TRUE(test.host.boxes.back().text.starts_with("Server connection failed.\r\n\r\nRun time error: -21472"));
  EXPECT_TRUE(test.host.boxes.back().text.ends_with("\r\n\r\nCommand failed: \r\n\r\nSELECT x FROM t"));
  EXPECT_EQ(GetAdoRS_Conn(test.program, connection, server, adCmdText, "SELECT a FROM t", rs), 0);
  EXPECT_EQ(rs->RecordCount(), 2);

  EXPECT_TRUE(NullExistsInColumn(test.program, server, "Db", "t", "a"));
  EXPECT_EQ(GetServerVersion(test.program, server), defaultProductVersion);
  EXPECT_EQ(GetVersionNumber(" 9.00.3042.00"), 9);
  EXPECT_EQ(GetVersionNumber(""), 0);
}

TEST(QueryLayer, CountsRecordsWithTheSchemaOnASecondAttempt) {
  TestProgram test;
  test.load("New", "Db",
            "CREATE SCHEMA s\nGO\nCREATE TABLE s.far (a int)\nINSERT s.far VALUES (1)\nCREATE TABLE s.far2 (a int)");
  tServer server = TestProgram::server("New");
  std::string table = "far";
  EXPECT_EQ(GetNumberOfRecordsInTable(test.program, server, table, "Db"), 1);
  EXPECT_EQ(table, "[s].[far]");
  EXPECT_TRUE(server.SchemaCheckPerformed && server.AddSchema);
  std::string missing = "missing";
  EXPECT_EQ(GetNumberOfRecordsInTable(test.program, server, missing, "Db"), -1);
  EXPECT_TRUE(test.host.boxes.back().text.starts_with("Error while attempting to count records in table: "));
  server = TestProgram::server("New");
  server.SchemaCheckPerformed = true;
  table = "far2";
  EXPECT_EQ(GetNumberOfRecordsInTable(test.program, server, table, "Db"), -1) << "checked before without help";
}

TEST(QueryLayer, ParametersAreSizedAndMinusOneIsNull) {
  TestProgram test;
  Command command;
  const auto add = [&](const ParamValue& value, int direction) {
    const std::string name = AddParameter(test.program, command, value, direction);
    return name.substr(0, 3) +
           (command.Parameters.empty() || name.empty()
                ? ""
                : std::to_string(command.Parameters.back().Size) + (command.Parameters.back().Value.null ? "n" : "v"));
  };
  EXPECT_EQ(add(std::string("abc"), adParamInput), "str3v");
  EXPECT_EQ(add(std::string(), adParamInput), "str1v");
  EXPECT_EQ(add(std::string("abc"), adParamInputOutput), "str255v");
  EXPECT_EQ(add(std::string(300, 'x'), adParamInputOutput), "str300v");
  EXPECT_EQ(add(std::int32_t{-1}, adParamInput), "lng0n");
  EXPECT_EQ(add(2.5, adParamInput), "dbl0v");
  EXPECT_EQ(add(-1.0, adParamInput), "dbl0n");
  EXPECT_EQ(add(tDate{}, adParamInput), "dtm0n");
  EXPECT_EQ(add(ParamValue{}, adParamInput), "");
}

TEST(Schema, FunctionIsKnownToSomeBuildsOfVersion9) {
  const std::pair<const char*, bool> cases[] = {{"9.00.3042", true},    {"9.00.3042.00", false}, {"9.00.2047", false},
                                                {"11.0.2100.60", true}, {"8.00.2039", false},    {"10.0", false}};
  for (const auto& [version, known] : cases)
    EXPECT_EQ(Is_OBJECT_SCHEMA_NAME_Implemented(version, -1), known) << version;

  TestProgram test;
  test.load("Nine", "Db", "CREATE SCHEMA s\nGO\nCREATE TABLE s.t (a int)", "9.00.3042.00");
  tServer server = TestProgram::server("Nine", "9.00.3042.00");
  server.VersionNum = 9;
  RecordsetPtr rs;
  GetAdoRS(test.program, server, adCmdText, "SELECT id FROM sysobjects WHERE name = 't'", rs, "Db");
  std::string schema;
  EXPECT_TRUE(Db_GetObjSchemaById(test.program, server, objTables, "Db", integerOf(rs->Fields(0).cell), schema));
  EXPECT_EQ(schema, "s") << "through the owner's name";
  EXPECT_EQ(server.VersionNum, 8) << "and the record remembers it";
  EXPECT_FALSE(Db_GetObjSchemaById(test.program, server, objTables, "Db", 0, schema));
}

}  // namespace
}  // namespace qrel
