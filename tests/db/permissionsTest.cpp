// Permissions as objects of a list.
#include "db/mdlObjects.h"
#include "db/mdlPermissions.h"
#include "db/modObjectText.h"
#include "platform/text.h"
#include "tests/db/scriptedServer.h"

namespace qrel {
namespace {

// A panel that shows the permissions of a database.
class PermissionList : public ScriptedServer {
 public:
  // Each row of the list as "name|state|id", one a line.
  std::string load(int side, const std::string& database) {
    tServer server = record();
    LoadObjects(program, server, list, pane, objPermissions, database, true, "", side, false);
    std::string text;
    for (std::size_t row = 0; row < list.count(); ++row)
      text += (row == 0 ? "" : "\n") + list.cell(row, 0) + "|" + list.cell(row, 1) + "|" + list.cell(row, 2);
    return text;
  }
  using TestServers::load;
  CheckList list{"pvlSqlObj(0)"};
  TextPane pane{"txtTXProc(0)"};
};

const std::vector<std::string> columns = {"object_id",  "type_desc",  "schema_name",     "name",       "minor_id",
                                          "minor_name", "state_desc", "permission_name", "object_type"};

TEST(Permissions, AreNotOffered) {
  TestProgram test;
  EXPECT_FALSE(gblnPermissionsEnabled);
  test.program.settings.AnalyzeConstraints = true;
  ComboBox combo("cmbType");
  FillObjectTypes(test.program, combo);
  for (std::size_t row = 0; row < combo.count(); ++row) EXPECT_NE(combo.itemData(row), objPermissions);
}

TEST(Permissions, QueryLeavesSystemObjectsOutWhenTold) {
  const std::string head =
      "SELECT b.object_id, b.[type_desc], c.[name] AS schema_name, b.[name], a.[minor_id], CASE WHEN a.[minor_id] > 0 "
      "THEN (SELECT NAME    FROM sys.Columns    WHERE object_id = a.major_id    AND column_id = a.minor_id) ELSE '' "
      "END AS minor_name, a.[state_desc], a.[permission_name], b.[type] as object_type, * FROM "
      "sys.database_permissions a LEFT JOIN sys.objects b ON b.object_id = a.major_id INNER JOIN sys.schemas c ON "
      "b.schema_id = c.schema_id ";
  const std::string tail = " ORDER BY b.[type_desc], schema_name, b.[name] ";
  TestProgram test;
  EXPECT_EQ(BuildObjSQLString(test.program, objPermissions, false, "x", "y", 0).shown(), head + tail);
  EXPECT_EQ(BuildObjSQLString(test.program, objPermissions, true, "", "", 1).shown(),
            head + "WHERE major_id > 0 " + tail);
}

TEST(Permissions, AreListedAndShownByType) {
  PermissionList test;
  test.load("S", "Db", "");
  test.answer("sys.database_permissions", columns,
              {{"1", "USER_TABLE", "dbo", "Orders", "0", "", "GRANT", "SELECT", "U"},
               {"1", "USER_TABLE", "dbo", "Orders", "2", "Total", "deny", "UPDATE", "U"},
               {"2", "A VIEW", "sales", "V", "0", "", "GRANT", "SELECT", "V"},
               {"3", "SQL_INLINE_TABLE_VALUED_FUNCTION", "", "F", "0", "", "GRANT", "SELECT", "IF"},
               {"4", "SQL_STORED_PROCEDURE", "dbo", "P", "3", "", "GRANT", "EXECUTE", "P "},
               {"5", "USER_TABLE", "dbo", "Padded", "1", "c", "GRANT", "SELECT", "U "}});
  EXPECT_EQ(test.load(1, "Db"),
            "SELECT TABLE Orders|GRANT|1\nUPDATE TABLE COLUMN Orders|DENY|2\nSELECT VIEW V|GRANT|3\n"
            "SELECT FUNCTION F|GRANT|4\nEXECUTE SQL_STORED_PROCEDURE P|GRANT|5\nSELECT USER_TABLE Padded|GRANT|6");
  EXPECT_EQ(replaceAll(test.pane.text(), "\r\n", "\n"), "SELECT\nUSER_TABLE dbo.Orders\nGRANT") << "the first row's";

  const auto& rows = test.program.state<mdlPermissionsState>().arrPermissions;
  EXPECT_TRUE(rows[0].empty()) << "each side has its own";
  ASSERT_EQ(rows[1].size(), 6U);
  EXPECT_EQ(rows[1][4].Id, 5);
  EXPECT_EQ(rows[1][4].ObjectId, 4);
  const std::pair<long, const char*> texts[] = {{0, ""},
                                                {-1, ""},
                                                {2, "UPDATE\r\nUSER_TABLE dbo.Orders.Total\r\ndeny"},
                                                {3, "SELECT\r\nA VIEW sales.V\r\nGRANT"},
                                                {4, "SELECT\r\nSQL_INLINE_TABLE_VALUED_FUNCTION F\r\nGRANT"},
                                                {5, "EXECUTE\r\nSQL_STORED_PROCEDURE dbo.P.\r\nGRANT"}};
  for (const auto& [id, text] : texts) EXPECT_EQ(GetPermissionText(test.program, 1, id), text) << id;
  EXPECT_TRUE(test.host.boxes.empty());
  for (const int side : {-1, 2}) {
    EXPECT_EQ(GetPermissionText(test.program, side, 1), "");
    EXPECT_EQ(test.host.boxes.back().text, "GetPermissionText - wrong parameter passed.");
  }
}

TEST(Permissions, OfADatabaseWithoutAnyShowNothing) {
  PermissionList test;
  test.load("S", "Db", "CREATE TABLE Orders (a int)");
  test.pane.setText("before");
  test.program.state<mdlPermissionsState>().arrPermissions[0].resize(3);
  EXPECT_EQ(test.load(0, "Db"), "");
  EXPECT_EQ(test.pane.text(), "<<Nothing to show>>");
  EXPECT_TRUE(test.program.state<mdlPermissionsState>().arrPermissions[0].empty());

  RecordsetPtr none;
  std::vector<tPermission> rows(2);
  EXPECT_TRUE(ConvertRecordsetToPermissionsArray(test.program, none, rows));
  EXPECT_TRUE(rows.empty());
}

TEST(Permissions, OfADatabaseAsAWholeHaveNoPlaceInTheList) {
  PermissionList test;
  test.load("S", "Db",
            "CREATE TABLE Orders (a int, b int)\nGO\nCREATE PROCEDURE P AS SELECT 1\nGO\n"
            "GRANT SELECT ON Orders TO public\nGRANT EXECUTE ON P TO public\nGRANT CREATE TABLE TO public");
  for (const bool ignoreSystem : {true, false}) {
    test.program.settings.IgnoreSysObjects = ignoreSystem;
    EXPECT_EQ(test.load(0, "Db"), "EXECUTE SQL_STORED_PROCEDURE P|GRANT|1\nSELECT TABLE Orders|GRANT|2");
  }
}

TEST(Permissions, ThatCanNotBeConvertedAreReported) {
  PermissionList test;
  test.load("S", "Db", "");
  test.answer("sys.database_permissions", columns,
              {{std::nullopt, "VIEW", "dbo", "V", "0", "", "GRANT", "SELECT", "V"}});
  std::string report;
  test.host.windows.push_back([&](Form& form) { report = dynamic_cast<TextBox*>(form.find("txtErrDesc"))->text(); });
  EXPECT_EQ(test.load(0, "Db"), "");
  EXPECT_NE(report.find(":ConvertRecordsetToPermissionsArray)"), std::string::npos) << report;
}

}  // namespace
}  // namespace qrel
