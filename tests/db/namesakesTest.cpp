// Objects of one name in several schemas: the order in which they come, and what is found under their name.
#include "app/Workspace.h"
#include "db/mdlObjects.h"
#include "db/mdlQueryCode.h"
#include "db/modObjectText.h"
#include "db/modSchema.h"
#include "tests/support.h"

namespace qrel {
namespace {

// The order of the ids is neither that of the schemas nor that of their names.
constexpr const char* namesakesScript = R"(
CREATE SCHEMA zeta
GO
CREATE SCHEMA alpha
GO
CREATE TABLE zeta.T (z int NOT NULL CONSTRAINT PK_T PRIMARY KEY)
CREATE TABLE alpha.T (a int NOT NULL, a2 int NOT NULL)
CREATE TABLE dbo.t (d int NOT NULL CONSTRAINT PK_T PRIMARY KEY)
ALTER TABLE alpha.T ADD CONSTRAINT PK_T PRIMARY KEY (a2, a)
CREATE TABLE zeta.C (x int, CONSTRAINT FK_C FOREIGN KEY (x) REFERENCES zeta.T (z))
CREATE TABLE dbo.C (x int, CONSTRAINT FK_C FOREIGN KEY (x) REFERENCES dbo.t (d))
GO
CREATE PROCEDURE zeta.P AS SELECT 'z'
GO
CREATE PROCEDURE dbo.P AS SELECT 'd'
GO
CREATE PROCEDURE alpha.P AS SELECT 'a'
GO
CREATE VIEW zeta.V AS SELECT 1 AS z
GO
CREATE VIEW dbo.V AS SELECT 1 AS d
)";

struct Namesakes : testing::Test {
  Namesakes() { test.load("New", "Db", namesakesScript); }

  std::string list(long type) {
    CheckList objects("pvlSqlObj(0)");
    TextPane pane("txtTXProc(0)");
    LoadObjects(test.program, server, objects, pane, type, "Db", false, "", 0, false);
    std::string text;
    for (std::size_t row = 0; row < objects.count(); ++row) text += objects.cell(row, 0) + " ";
    return text;
  }

  TestProgram test;
  tServer server = TestProgram::server("New");
};

TEST_F(Namesakes, ComeInTheOrderOfTheirIds) {
  EXPECT_EQ(list(objTables), "zeta.C dbo.C zeta.T alpha.T t ") << "the last one is written otherwise";
  EXPECT_EQ(list(objProcedures), "zeta.P dbo.P alpha.P ");
  EXPECT_EQ(list(objViews), "zeta.V dbo.V ");
  EXPECT_EQ(list(objRelationships), "zeta.FK_C dbo.FK_C ");
  EXPECT_EQ(list(objConstraints), "zeta.PK_T alpha.PK_T dbo.PK_T ");

  EXPECT_EQ(GetObjectText(test.program, server, "P", "Db", objProcedures),
            "CREATE PROCEDURE zeta.P AS SELECT 'z'\nCREATE PROCEDURE dbo.P AS SELECT 'd'\n"
            "CREATE PROCEDURE alpha.P AS SELECT 'a'");
  EXPECT_EQ(GetTableText(test.program, server, {"Db", "T"}, nullptr, true).substr(0, 38),
            "[z] [int] NOT NULL\r\n[a] [int] NOT NULL");
  EXPECT_EQ(GetRelationshipText(test.program, server, "FK_C", "Db"),
            "TABLE C\r\nCONSTRAINT [FK_C]\r\nFOREIGN KEY [x]\r\nREFERENCES [T] [z]");
  EXPECT_NE(GetConstraintText(test.program, server, "PK_T", "Db").find("ON COLUMN [z]"), std::string::npos);
  for (const auto& [name, type] : {std::pair("P", objProcedures), {"V", objViews}, {"T", objTables}}) {
    EXPECT_EQ(GetSchemaForObject(test.program, server, "Db", name, type), "zeta") << name;
    EXPECT_EQ(GetOwner(test.program, server, "Db", name, type), "zeta") << name;
  }
}

TEST_F(Namesakes, AreToldApartByARecordWhoseVersionWasNeverTurnedIntoANumber) {
  std::vector<TwoStr> tables;
  long count = 0;
  ASSERT_TRUE(GetAllObjectsOfType(test.program, objTables, server, "Db", tables, count, 0));
  server.VersionNum = 0;
  std::string schema;
  EXPECT_TRUE(Db_GetObjSchemaById(test.program, server, objTables, "Db", tables[0].lngId, schema));
  EXPECT_EQ(schema, "zeta");
  EXPECT_GE(server.VersionNum, 9) << "the number is kept";
}

TEST(Constraints, ShowTheFirstColumnOfTheKey) {
  TestProgram test;
  test.load("New", "Db",
            "CREATE TABLE t (a int NOT NULL, b int NOT NULL, CONSTRAINT PK_t PRIMARY KEY (b, a))\n"
            "ALTER TABLE t ADD CONSTRAINT DF_a DEFAULT 1 FOR a");
  EXPECT_EQ(GetConstraintText(test.program, TestProgram::server("New"), "PK_t", "Db"),
            "CONSTRAINT [PK_t] \r\nPRIMARY KEY CLUSTERED \r\nON COLUMN [b]\r\nON TABLE [t]");
}

TEST(AllObjects, HoldPermissionsWithoutAnId) {
  TestProgram test;
  test.load("New", "Db", "CREATE TABLE T (a int)\nGO\nGRANT SELECT ON T TO public\nGRANT INSERT ON T TO public");
  std::vector<TwoStr> objects;
  long count = 0;
  ASSERT_TRUE(GetListOfAllObjects(test.program, TestProgram::server("New"), "Db", objects, count, 0));
  ASSERT_EQ(count, 3);
  EXPECT_EQ(objects[0].strName, "T");
  for (const std::size_t permission : {1u, 2u}) {
    EXPECT_EQ(objects[permission].lngType, objPermissions);
    EXPECT_EQ(objects[permission].lngId, 0);
    EXPECT_EQ(objects[permission].strRefDate, "USER_TABLE");
  }
  EXPECT_TRUE(test.host.boxes.empty());

  std::vector<TwoStr> names(2);
  names[0].strName = "t";
  const std::tuple<const char*, bool> cases[] = {{" T ", true}, {"[t]", false}, {"", false}, {"  ", false}};
  for (const auto& [name, known] : cases) EXPECT_EQ(IsItDbObject(name, names, 2), known) << name;
  EXPECT_FALSE(IsItDbObject("t", {}, 0));
}

}  // namespace
}  // namespace qrel
