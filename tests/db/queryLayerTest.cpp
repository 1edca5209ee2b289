// What the query layer asks of the data access layer, command by command.
#include "app/mdlMain.h"
#include "db/mdlData.h"
#include "db/modSchema.h"
#include "tests/db/scriptedServer.h"

namespace qrel {
namespace {

TEST(QueryLayerCommands, CarryTheTimeout) {
  ScriptedServer test;
  test.load("S", "Db", "CREATE TABLE t (a int)");
  test.program.settings.Timeout = 7;
  const tServer server = ScriptedServer::record();
  RecordsetPtr rs;
  ConnectionPtr connection;
  ASSERT_TRUE(ADO_Connection_Open(test.program, connection, server, "Db"));
  GetAdoRS(test.program, server, adCmdText, "SELECT a FROM t", rs, "Db");
  GetAdoRS_Conn(test.program, connection, server, adCmdText, "SELECT a FROM t", rs);
  ExecAdoCmd(test.program, server, adCmdText, "SELECT a FROM t", "Db");
  ASSERT_EQ(test.sent.size(), 3U);
  for (const auto& each : test.sent) EXPECT_EQ(each.timeoutSeconds, 7);
  EXPECT_EQ(test.opened.size(), 3U) << "the one that is handed in serves its own query alone";
}

TEST(QueryLayerCommands, CursorAndCacheSizeSayWhereTheRowsAre) {
  ScriptedServer test;
  test.load("S", "Db", "");
  const tServer server = ScriptedServer::record();
  std::vector<FakeRow> rows;
  for (int i = 0; i < 12; ++i) rows.push_back({std::to_string(i)});
  struct Case {
    bool serversCursor;
    int cacheSize;
    std::size_t rowsHeld;
  };
  for (const Case& each : {Case{true, 5, 5}, Case{true, 3, 3}, Case{false, 3, 12}})
    for (const bool onConnection : {false, true}) {
      SCOPED_TRACE(each.rowsHeld);
      test.program.settings.glngCursorLocation = each.serversCursor ? adUseServer : adUseClient;
      test.program.settings.CacheSize = each.cacheSize;
      const auto use = std::make_shared<FakeUse>();
      test.answer("SELECT n", {"n"}, rows, use);
      RecordsetPtr rs;
      ConnectionPtr connection;
      if (onConnection) {
        ASSERT_TRUE(ADO_Connection_Open(test.program, connection, server, "Db"));
        EXPECT_EQ(connection->CursorLocation, test.program.settings.glngCursorLocation);
        EXPECT_EQ(GetAdoRS_Conn(test.program, connection, server, adCmdText, "SELECT n", rs), 0);
        EXPECT_EQ(connection->State(), adStateOpen) << "it stays open";
        connection->Close();
      } else {
        EXPECT_EQ(GetAdoRS(test.program, server, adCmdText, "SELECT n", rs, "Db"), 0);
      }
      EXPECT_EQ(rs->MarshalOptions, each.serversCursor ? 0 : 1);
      EXPECT_EQ(use->ended, !each.serversCursor) << "a disconnected record set has let go of its source";
      int walked = 0;
      for (; !rs->Eof(); rs->MoveNext()) EXPECT_EQ(rs->Fields(0).Text(), std::to_string(walked++));
      EXPECT_EQ(walked, 12);
      EXPECT_EQ(use->mostAtOnce, each.rowsHeld);
    }
}

TEST(QueryLayerCommands, AreSentToTheLetter) {
  ScriptedServer test;
  test.load("S", "Db", "CREATE TABLE t (a int)\nGO\nCREATE SCHEMA s\nGO\nCREATE TABLE s.far (a int)");
  tServer server = ScriptedServer::record();
  RecordsetPtr rs;
  EXPECT_EQ(GetAdoRS(test.program, server, adCmdText, "", rs, "Db"), 0);
  EXPECT_EQ(test.opened, std::vector<std::string>{"-"}) << "an empty text tests the connection";
  EXPECT_EQ(test.said(), "");
  GetServerVersion(test.program, server);
  EXPECT_EQ(test.said(), "Master: SELECT serverproperty('ProductVersion') AS ServerVer");
  EXPECT_FALSE(NullExistsInColumn(test.program, server, "Db", "t", "a"));
  EXPECT_EQ(test.said(), "Db: IF EXISTS (SELECT TOP (1) [a] FROM [t] WHERE [a]  IS NULL) SELECT 1 ELSE SELECT 0");
  for (const char* name : {"t", "[t]"}) {
    std::string table = name;
    EXPECT_EQ(GetNumberOfRecordsInTable(test.program, server, table, "Db"), 0);
    EXPECT_EQ(test.said(), "Db: SELECT COUNT(*) AS RecsCount FROM [t]");
    EXPECT_EQ(table, name) << "the name is changed by a second attempt alone";
  }
  std::string far = "far";
  EXPECT_EQ(GetNumberOfRecordsInTable(test.program, server, far, "Db"), 0);
  EXPECT_EQ(test.said(),
            "Db: SELECT COUNT(*) AS RecsCount FROM [far]\n"
            "Db: SELECT TABLE_SCHEMA FROM INFORMATION_SCHEMA.TABLES WHERE TABLE_NAME = 'far'\n"
            "Db: SELECT COUNT(*) AS RecsCount FROM [s].[far]");
  EXPECT_EQ(far, "[s].[far]");
  std::string none;
  EXPECT_EQ(GetNumberOfRecordsInTable(test.program, server, none, "Db"), -1);
  EXPECT_EQ(test.said(), "");
  EXPECT_TRUE(test.host.boxes.empty());
}

TEST(QueryLayerCommands, ASecondAttemptNeedsTheRightErrorVersionAndHope) {
  ScriptedServer test;
  test.load("S", "Db", "CREATE SCHEMA s\nGO\nCREATE TABLE s.far (a int)");
  struct Case {
    std::int32_t error;
    const char* version;
    bool performed, add;  // SchemaCheckPerformed and AddSchema before
    const char* table;
    const char* out;           // what comes of it; the table itself: no second attempt
    bool performedAfterwards;  // SchemaCheckPerformed
  };
  const std::int32_t right = errorNumber::invalidObjectName;
  const Case cases[] = {
      {right, "11.0.2100.60", false, false, "far", "[s].[far]", true},
      {right, "9.00.1399.06", false, false, "far", "[s].[far]", true},
      {right, "8.00.2039", false, false, "far", "far", false},
      {errorNumber::badSql, "11.0.2100.60", false, false, "far", "far", false},
      {errorNumber::cannotConnect, "11.0.2100.60", false, false, "far", "far", false},
      {right, "11.0.2100.60", true, false, "far", "far", true},
      {right, "11.0.2100.60", true, true, "far", "[s].[far]", true},
      {right, "11.0.2100.60", false, false, "nowhere", "nowhere", true},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(std::string(each.version) + " " + std::to_string(each.error) + " " + each.table);
    tServer server = ScriptedServer::record(each.version);
    server.SchemaCheckPerformed = each.performed;
    server.AddSchema = each.add;
    std::string out = "before";
    const bool needed = SchemaPrefixNeeded(test.program, server, each.table, out, "Db", each.error);
    EXPECT_EQ(out, each.out);
    EXPECT_EQ(needed, out != each.table);
    EXPECT_EQ(server.SchemaCheckPerformed, each.performedAfterwards);
    EXPECT_EQ(server.AddSchema, needed);
  }
}

}  // namespace
}  // namespace qrel
