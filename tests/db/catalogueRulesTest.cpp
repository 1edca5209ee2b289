// Which objects a list holds and under which names, and the schemas and owners behind them.
#include <algorithm>
#include <map>

#include "db/mdlObjects.h"
#include "db/modSchema.h"
#include "tests/db/scriptedServer.h"

namespace qrel {
namespace {

constexpr const char* schemaById = "SELECT OBJECT_SCHEMA_NAME([object_id]) FROM sys.objects WHERE [object_id] = ";
constexpr const char* ownerById = "SELECT USER_NAME(uid) FROM sysobjects WHERE [id] = ";

TEST(ObjectTypes, ConstraintsAreOfferedOnDemand) {
  TestProgram test;
  const std::string always = "50 Tables,10 Procedures,20 Functions,30 Views,40 Triggers,60 Relationships";
  for (const bool analyze : {false, true}) {
    test.program.settings.AnalyzeConstraints = analyze;
    ComboBox combo("cmbType");
    combo.onClick = [] { ADD_FAILURE() << "filling is muted"; };
    FillObjectTypes(test.program, combo);
    std::string offered;
    for (std::size_t row = 0; row < combo.count(); ++row)
      offered += (row == 0 ? "" : ",") + std::to_string(combo.itemData(row)) + " " + combo.row(row);
    EXPECT_EQ(offered, analyze ? always + ",80 Constraints" : always);
    EXPECT_EQ(combo.selected(), 0);
    EXPECT_EQ(combo.tag, "");
  }
}

// A list of views: each letter is one, its id is its place from 1 on.
class ListedNames : public ::testing::Test {
 protected:
  void serve(const std::string& letters, const std::map<int, std::optional<std::string>>& schemas) {
    test.forgetAnswers();
    std::vector<FakeRow> rows;
    for (std::size_t i = 0; i < letters.size(); ++i)
      rows.push_back({std::string(1, letters[i]), "2026-01-02", std::to_string(i + 1)});
    test.answer("select name, refdate, id from sysobjects", {"name", "refdate", "id"}, rows);
    for (const char* query : {schemaById, ownerById}) {
      test.refuse(query);
      for (const auto& [id, schema] : schemas) test.answer(query + std::to_string(id), {""}, {{schema}});
    }
  }
  std::string listed(tServer& server) {
    CheckList objects("pvlSqlObj(0)");
    TextPane pane("txtTXProc(0)");
    LoadObjects(test.program, server, objects, pane, objViews, "Db", false, "", 0, false);
    std::string text;
    for (std::size_t row = 0; row < objects.count(); ++row) text += (row == 0 ? "" : " ") + objects.cell(row, 0);
    return text;
  }
  std::size_t lookUps() const {
    return static_cast<std::size_t>(std::count_if(test.sent.begin(), test.sent.end(), [](const auto& each) {
      return each.text.starts_with(schemaById) || each.text.starts_with(ownerById);
    }));
  }

  ListedNames() { test.load("S", "Db", ""); }
  ScriptedServer test;
};

TEST_F(ListedNames, EqualNeighboursGetTheirSchema) {
  struct Case {
    const char* version;
    const char* letters;
    std::map<int, std::optional<std::string>> schemas;  // an id without one can't be looked up
    const char* listed;
    std::size_t lookUps;
  };
  const std::string version9 = "9.00.3042";
  const Case cases[] = {
      {"11.0.2100.60", "vvv", {{1, "dbo"}, {2, "r"}, {3, "s"}}, "dbo.v r.v s.v", 4},
      {"11.0.2100.60", "avvz", {{2, "dbo"}, {3, "s"}}, "a dbo.v s.v z", 2},
      {"11.0.2100.60", "Vv", {}, "V v", 0},
      {"11.0.2100.60", "Vvv", {{1, "x"}, {2, "dbo"}, {3, "s"}}, "V dbo.v s.v", 2},
      {"11.0.2100.60", "vv", {{1, "dbo"}, {2, std::nullopt}}, "dbo.v v", 2},
      {version9.c_str(), "vv", {{1, "dbo"}, {2, "s"}}, "dbo.v s.v", 2},
      {"8.00.2039", "vv", {{1, "dbo"}, {2, "s"}}, "v v", 0},
      {"", "vv", {{1, "dbo"}, {2, "s"}}, "v v", 0},
      // Each failing look-up asks in both ways and ends the whole loop.
      {"11.0.2100.60", "aabb", {{2, "s"}, {3, "dbo"}, {4, "s"}}, "a a b b", 2},
      {"11.0.2100.60", "aabb", {{1, "dbo"}, {3, "dbo"}, {4, "s"}}, "a a b b", 3},
      {"11.0.2100.60", "aabb", {{1, "dbo"}, {2, "s"}, {4, "s"}}, "dbo.a s.a b b", 4},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(std::string(each.version) + " " + each.letters + " " + each.listed);
    serve(each.letters, each.schemas);
    tServer server = ScriptedServer::record(each.version);
    const bool fails = std::string(each.letters) == "aabb";
    if (fails) test.expectReports(2);
    test.sent.clear();
    EXPECT_EQ(listed(server), each.listed);
    EXPECT_EQ(lookUps(), each.lookUps);
    EXPECT_TRUE(test.host.windows.empty());
  }
}

TEST_F(ListedNames, OfOldServersStayBareWithTwoOwnersOfOneName) {
  test.load("S", "Two", "CREATE SCHEMA s\nGO\nCREATE VIEW v AS SELECT 1 AS a\nGO\nCREATE VIEW s.v AS SELECT 2 AS a");
  for (const char* version : {"8.00.2039", "9.00.3042", defaultProductVersion}) {
    tServer server = ScriptedServer::record(version);
    CheckList objects("pvlSqlObj(0)");
    TextPane pane("txtTXProc(0)");
    LoadObjects(test.program, server, objects, pane, objViews, "Two", false, "", 0, false);
    ASSERT_EQ(objects.count(), 2U);
    EXPECT_EQ(objects.cell(0, 0) + " " + objects.cell(1, 0),
              server.VersionNum == 8 && *version == '8' ? "v v" : "dbo.v s.v");
  }
}

TEST_F(ListedNames, OfOneNameComeInOrderOfTheirIds) {
  test.load("S", "Ids",
            "CREATE SCHEMA r\nGO\nCREATE SCHEMA s\nGO\nCREATE VIEW s.v AS SELECT 1 AS a\nGO\n"
            "CREATE VIEW v AS SELECT 2 AS a\nGO\nCREATE VIEW r.v AS SELECT 3 AS a\nGO\nCREATE VIEW r.A AS SELECT 4 "
            "AS a");
  const tServer server = ScriptedServer::record();
  RecordsetPtr rs;
  std::vector<std::string> ids;
  GetAdoRS(test.program, server, adCmdText, "SELECT id FROM sysobjects WHERE name = 'v' ORDER BY id", rs, "Ids");
  for (; !rs->Eof(); rs->MoveNext()) ids.push_back(rs->Fields(0).Text());
  ASSERT_EQ(ids.size(), 3U);
  std::vector<TwoStr> arr;
  long count = 0;
  ASSERT_TRUE(GetAllObjectsOfType(test.program, objViews, server, "Ids", arr, count, 0));
  ASSERT_EQ(count, 4);
  EXPECT_EQ(arr[0].strName, "A");
  for (std::size_t i = 0; i < ids.size(); ++i) EXPECT_EQ(std::to_string(arr[i + 1].lngId), ids[i]);
}

TEST(SchemaFilter, NarrowsByTypeAndSide) {
  TestProgram test;
  auto& filter = test.program.state<modSchemaState>();
  filter.gblnSchemaFilter[0] = true;
  filter.gstrSchemaFilter[0] = " dbo,sales ";
  filter.gstrSchemaFilter[1] = "left over";
  const auto of = [&](long type, int side) -> std::string {
    SqlText join("x"), where("x");
    const bool applies = GetSchemaFilter(test.program, type, side, join, where);
    return applies ? join.shown() + "|" + where.shown() : "none" + join.shown() + where.shown();
  };
  const auto narrowed = [](const std::string& view, const std::string& kind) {
    return "LEFT JOIN INFORMATION_SCHEMA." + view + " ON INFORMATION_SCHEMA." + view + "." + kind +
           "_NAME = [name]|AND INFORMATION_SCHEMA." + view + "." + kind + "_SCHEMA IN ('dbo','sales')";
  };
  const std::pair<long, std::string> cases[] = {
      {objProcedures, narrowed("ROUTINES", "ROUTINE")},
      {objFunctions, narrowed("ROUTINES", "ROUTINE")},
      {objViews, narrowed("VIEWS", "TABLE")},
      {objTables, narrowed("TABLES", "TABLE")},
      {objTriggers, "none"},
      {objRelationships, "none"},
      {objConstraints, "none"},
      {objPermissions, "|"},
  };
  for (const auto& [type, text] : cases) {
    EXPECT_EQ(of(type, 0), text) << type;
    EXPECT_EQ(of(type, 1), "none") << type;
  }
  EXPECT_EQ(BuildObjSQLString(test.program, objTriggers, true, "", "", 0).shown(),
            "select name, refdate, id from sysobjects where OBJECTPROPERTY(id, N'IsTrigger') = 1 and xtype <> 'S'  "
            "order by name");
  filter.gstrSchemaFilter[0] = "'a,b','c'";
  EXPECT_TRUE(of(objTables, 0).ends_with(" IN ('a,b','c')")) << "a list that is quoted already stays as it is";
}

TEST(Owners, AreAskedForByTypeAndName) {
  ScriptedServer test;
  test.load("S", "Db", "");
  const tServer server = ScriptedServer::record();
  test.answer("AS ObjectName", {"ObjectName", "Owner"}, {{"x", "anna"}, {"x", "bert"}});
  const std::pair<long, const char*> letters[] = {{objProcedures, "P"}, {objFunctions, "FN"}, {objViews, "V"},
                                                  {objTriggers, "TR"},  {objTables, "U"},     {objRelationships, "F"}};
  for (const auto& [type, letter] : letters) {
    EXPECT_EQ(GetOwner(test.program, server, "Db", "x", type), "anna");
    EXPECT_EQ(test.said(),
              std::string("Db: SELECT so.name AS ObjectName, su.name AS Owner FROM sysobjects so INNER JOIN sysusers "
                          "su ON so.uid = su.uid WHERE so.name = 'x' AND so.xtype = '") +
                  letter + "'");
  }
  test.answer("SELECT DISTINCT su.name", {"Owner"}, {{"anna"}, {""}, {std::nullopt}, {"bert"}});
  std::string list;
  EXPECT_EQ(GetAllOwners(test.program, server, "Db", objTables, list), 2);
  EXPECT_EQ(list, "anna,bert,");
  std::vector<std::string> arrOwners;
  EXPECT_EQ(GetAllOwnersIntoArray(test.program, server, "Db", arrOwners), 2);
  const std::string query =
      "Db: SELECT DISTINCT su.name AS Owner FROM sysobjects so INNER JOIN sysusers su ON so.uid = su.uid ";
  EXPECT_EQ(test.said(), query + "\n" + query + "ORDER BY su.name");
}

TEST(Schemas, OfTheServerItselfAreLeftOut) {
  ScriptedServer test;
  test.load("S", "Db", "CREATE SCHEMA sales\nGO\nCREATE SCHEMA Archive\nGO\nCREATE SCHEMA db_own");
  const tServer server = ScriptedServer::record();
  std::vector<std::string> schemas;
  EXPECT_EQ(GetAllSchemas(test.program, server, "Db", schemas), 4);
  EXPECT_EQ(schemas, (std::vector<std::string>{"Archive", "db_own", "dbo", "sales"}));
  EXPECT_EQ(test.said(),
            "Db: SELECT SCHEMA_NAME FROM INFORMATION_SCHEMA.schemata WHERE SCHEMA_NAME NOT IN "
            "('INFORMATION_SCHEMA', 'sys', 'db_owner', 'db_accessadmin', 'db_securityadmin', 'db_ddladmin', "
            "'db_backupoperator', 'db_datareader', 'db_datawriter', 'db_denydatareader', 'db_denydatawriter', 'guest') "
            "ORDER BY SCHEMA_NAME");
}

TEST(Schemas, OfAnObjectAreFoundByName) {
  ScriptedServer test;
  test.load("S", "Db", "");
  const tServer server = ScriptedServer::record();
  test.answer("INFORMATION_SCHEMA.", {"SCHEMA"}, {{"first"}, {"second"}});
  const std::string routines = "Db: SELECT ROUTINE_SCHEMA FROM INFORMATION_SCHEMA.ROUTINES WHERE ROUTINE_NAME = 'x'";
  const std::pair<long, std::string> queries[] = {
      {objProcedures, routines},
      {objFunctions, routines},
      {objViews, "Db: SELECT TABLE_SCHEMA FROM INFORMATION_SCHEMA.VIEWS WHERE TABLE_NAME = 'x'"},
      {objTables, "Db: SELECT TABLE_SCHEMA FROM INFORMATION_SCHEMA.TABLES WHERE TABLE_NAME = 'x'"},
      {objRelationships, ""}};
  for (const auto& [type, query] : queries) {
    EXPECT_EQ(GetSchemaForObject(test.program, server, "Db", "x", type), query.empty() ? "" : "first");
    EXPECT_EQ(test.said(), query);
  }
  const std::pair<const char*, const char*> triggers[] = {{"CREATE TRIGGER [sales].[tr] ON [dbo].[t]", "sales"},
                                                          {"/* [x] */ CREATE TRIGGER [a] ON t", "a"},
                                                          {"CREATE TRIGGER tr ON [dbo].t", ""},
                                                          {"create trigger [a].tr ON t", ""},
                                                          {"CREATE TRIGGER [a].tr on t", ""},
                                                          {"CREATE TRIGGER [a ON t", ""},
                                                          {"CREATE TRIGGER [MONEY].[tr] ON t", ""}};
  for (const auto& [source, schema] : triggers) {
    test.answer("SELECT text FROM syscomments", {"text"}, {{source}});
    EXPECT_EQ(GetSchemaForObject(test.program, server, "Db", "x", objTriggers), schema) << source;
  }
}

TEST(Schemas, OfAnObjectAreFoundByIdInOneOfTwoWays) {
  struct Case {
    const char* version;
    int number;  // VersionNum
    long id;
    bool newerFails, olderFails;
    const char* asked;  // n the newer query, o the older one
    bool result;
    const char* schema;
    int numberAfterwards;
  };
  const Case cases[] = {
      {"11.0.2100.60", 11, 5, false, false, "n", true, "new", 11},
      {"11.0.2100.60", 11, 5, true, false, "no", true, "old", 8},
      {"11.0.2100.60", 11, 5, true, true, "no", false, "", 8},
      {"11.0.2100.60", 8, 5, false, false, "o", true, "old", 8},
      {"11.0.2100.60", 0, 5, false, false, "n", true, "new", 11},
      {"9.00.5000", 9, 5, false, false, "n", true, "new", 9},
      {"9.00.1399.06", 9, 5, false, false, "o", true, "old", 8},
      {"9.00.1399.06", 9, 5, false, true, "o", false, "", 8},
      {"8.00.2039", 8, 5, false, true, "o", false, "", 8},
      {"11.0.2100.60", 11, 0, false, false, "", false, "", 11},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(std::string(each.version) + " " + std::to_string(each.number) + " " + each.asked);
    ScriptedServer test;
    test.load("S", "Db", "");
    test.answer(schemaById, {""}, {{"new"}, {"second"}});
    test.answer(ownerById, {""}, {{"old"}});
    if (each.newerFails) test.refuse(schemaById);
    if (each.olderFails) test.refuse(ownerById);
    test.expectReports((each.newerFails ? 1 : 0) + (each.olderFails ? 1 : 0));
    tServer server = ScriptedServer::record(each.version);
    server.VersionNum = each.number;
    std::string schema = "before";
    EXPECT_EQ(Db_GetObjSchemaById(test.program, server, objTables, "Db", each.id, schema), each.result);
    EXPECT_EQ(schema, each.schema);
    EXPECT_EQ(server.VersionNum, each.numberAfterwards);
    std::string expected;
    for (const char way : std::string(each.asked))
      expected += std::string(expected.empty() ? "" : "\n") + "Db: " + (way == 'n' ? schemaById : ownerById) + "5";
    EXPECT_EQ(test.said(), expected);
  }
}

TEST(Schemas, FunctionIsThereByTheWholeVersionText) {
  struct Case {
    const char* version;
    long number;  // -1: from the text
    bool there;
  };
  const Case cases[] = {
      {"9.00.3042", -1, true},    {"9.00.4035", 9, true},  {"9.00.5000", -1, true}, {"9.00.5000.00", -1, false},
      {"9.00.1399.06", 9, false}, {"9.00.3042", 8, false}, {"9.00.2047", 10, true}, {"8.00.3042", 9, false},
      {"10.0.123", -1, true},     {"10.0.12", -1, false},  {"", 11, false}};
  for (const Case& each : cases)
    EXPECT_EQ(Is_OBJECT_SCHEMA_NAME_Implemented(each.version, each.number), each.there)
        << each.version << " " << each.number;
}

}  // namespace
}  // namespace qrel
