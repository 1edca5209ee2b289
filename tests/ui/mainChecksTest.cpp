// The main window's checks and filters.
#include "db/frmFilterBySchema.h"
#include "tests/ui/mainWindow.h"

namespace qrel {
namespace {

constexpr const char* tablesOnly =
    "This functionality is enabled only when Tables are selected as active objects.\r\n\r\nTo set Tables as active "
    "objects "
    "set focus to Objects Type combo box (using mouse or by pressing key F6) and select first item from the list.";

TEST(Checks, TellWhatIsMissing) {
  MainWindow test;
  test.makeServers();
  test.open();
  CheckedObject found;
  struct Case {
    std::function<bool()> check;
    const char* noDatabase;
    const char* noObject;  // with procedures active; no text: passes
    const char* title;
    Icon icon;
  };
  const std::vector<Case> cases = {
      {[&] { return test.form.CanSearchForObject(1, found); },
       "Cannot search for object - the list of databases is empty.",
       "Cannot search for object - the list of procedures is empty.", "Cannot Search", Icon::Warning},
      {[&] { return test.form.CanViewAnalyzeData(0, 1, found); }, "Cannot view - the list of databases is empty.",
       tablesOnly, "Cannot View", Icon::Information},
      {[&] { return test.form.CanViewAnalyzeData(1, 1, found); }, "Cannot analyze - the list of databases is empty.",
       tablesOnly, "Cannot Analyze", Icon::Information},
      {[&] { return test.form.CanFilter(1, 1, found); }, "Cannot filter by schema - the list of databases is empty.",
       "Cannot filter by schema - the list of procedures is empty.", "Cannot Filter", Icon::Warning},
      {[&] { return test.form.CanFilter(1, 2, found); }, "Cannot filter by owner - the list of databases is empty.",
       "Cannot filter by owner - the list of procedures is empty.", "Cannot Filter", Icon::Warning}};
  const auto expectRefusals = [&](const char* Case::*text) {
    for (const Case& each : cases) {
      EXPECT_FALSE(each.check());
      ASSERT_FALSE(test.host.boxes.empty());
      EXPECT_EQ(test.host.boxes.back().title, each.title);
      EXPECT_EQ(test.host.boxes.back().icon, each.icon);
      EXPECT_EQ(test.lastBox(), each.*text);
    }
  };
  expectRefusals(&Case::noDatabase);
  test.form.cmdConnect.personClicks();
  test.chooseType(objProcedures);
  const std::size_t focus = test.work.cmbType.focusRequests();
  expectRefusals(&Case::noObject);
  EXPECT_EQ(test.work.cmbType.focusRequests(), focus + 2);

  test.chooseType(objTables);
  for (const Case& each : cases) EXPECT_TRUE(each.check());
  EXPECT_TRUE(found.strDb == "Archive" && found.enmType == objTables);
  EXPECT_TRUE(test.host.boxes.empty());
  test.program.main.gtypSelServ[1].VersionNum = 8;
  EXPECT_TRUE(test.form.CanFilter(1, 2, found));
  EXPECT_FALSE(test.form.CanFilter(1, 1, found));
  EXPECT_EQ(test.lastBox(), "Cannot filter by schema - schemas were introduced in SQL Server 2005.");
}

TEST(Checks, OfDataGiveTheTableInAllItsNames) {
  MainWindow test;
  test.makeServers();
  test.load("One", "Shop", "CREATE TABLE sales.Orders (s int)");
  test.connect();
  CheckedObject found;
  test.work.pvlSqlObj[0].tag = "OFF";
  test.work.pvlSqlObj[0].clear();
  test.work.pvlSqlObj[0].tag.clear();
  EXPECT_FALSE(test.form.CanViewAnalyzeData(1, 0, found));
  EXPECT_EQ(test.lastBox(), "Cannot analyze - the list of tables is empty.");
  test.chooseDb(0, "Shop");
  test.chooseObject(0, "sales.Orders");
  EXPECT_TRUE(test.form.CanViewAnalyzeData(0, 0, found));
  EXPECT_EQ(found.strTable, "Orders");
  EXPECT_EQ(found.strExtended, "[sales].[Orders]");
  EXPECT_EQ(std::to_string(found.lngId), test.work.pvlSqlObj[0].cell(2, 2));

  // A wrong action is told, and the check goes on without words.
  EXPECT_TRUE(test.form.CanViewAnalyzeData(2, 0, found));
  EXPECT_EQ(test.host.boxes.back().title, "Cannot ");
  EXPECT_EQ(test.lastBox(), "Function CanViewAnalyzeData - wrong parameter passed.");
}

TEST(Checks, OfModulesTakeProceduresFunctionsAndViews) {
  MainWindow test;
  test.makeServers();
  test.connect();
  std::string passed;
  for (const long type : {objTables, objProcedures, objFunctions, objViews, objTriggers, objRelationships}) {
    test.chooseType(type);
    if (test.form.CanUseModules()) passed += std::to_string(type) + " ";
  }
  EXPECT_EQ(passed, "10 20 30 ");
  EXPECT_EQ(test.work.cmbType.focusRequests(), 3U);
  EXPECT_EQ(
      test.lastBox(),
      "This functionality is enabled only when procedures, functions or views are selected as active "
      "objects.\r\n\r\nTo set active objects, set focus to Objects Type combo box (using mouse or by pressing key "
      "F6) and select the desired item from the list.");
}

TEST(Checks, NamesAreEmptyForAnotherSide) {
  MainWindow test;
  test.makeServers();
  test.connect();
  for (const int side : {-1, 0, 1, 2}) {
    std::string strServer = "x", strDb = "x", strObject = "x";
    long lngId = 5;
    test.form.GetNamesOfSelServerDbAndObject(side, strServer, strDb, strObject, lngId);
    const bool panel = side == 0 || side == 1;
    EXPECT_EQ(strServer + strDb + strObject, panel ? "OneArchiveOld" : "");
    EXPECT_EQ(lngId != 0, panel);
  }
}

TEST(Filters, AreNamedInTheTips) {
  MainWindow test;
  test.makeServers();
  test.connect();
  modSchemaState& filters = test.filters();
  const auto tips = [&](long type) {
    test.form.Filtering_UpdateDisplay(type);
    std::string text;
    for (const Button& each : test.form.srtFiltering) text += each.toolTip() + (each.visible() ? "|" : "-");
    return text;
  };
  EXPECT_EQ(tips(1), "Click to remove Schema filter-Click to remove Schema filter-");
  filters.gblnSchemaFilter = {true, true};
  filters.gstrSchemaFilter = {"dbo", "sales"};
  EXPECT_EQ(
      tips(1),
      "Click to remove Schema filter (applied filter: dbo)|Click to remove Schema filter(applied filter: sales)|");
  filters.gblnSchemaFilter = {false, true};
  filters.gblnOwnerFilter = {true, true};
  filters.gstrOwnerFilter = {"joe", "ann"};
  EXPECT_EQ(tips(2),
            "Click to remove Owner filter (applied filter: joe)|Click to remove Owner filter(applied filter: sales)|");
  EXPECT_EQ(test.form.srtFiltering[0].toolTip(), "Click to remove Owner filter (applied filter: joe)");
  tips(3);
  EXPECT_EQ(test.lastBox(), "Sub Filtering_UpdateDisplay - wrong parameter passed (penmFilterType = 3).");
  CheckedObject found;
  EXPECT_FALSE(test.form.CanFilter(0, 3, found));
  EXPECT_EQ(test.lastBox(), "Function CanFilter - wrong parameter passed (penmFilterType = 3).");
}

// Ticks one name alone in the dialog's next showing.
void chooseName(MainWindow& test, const std::string& name) {
  test.host.windows.push_back([&test, name](Form& window) {
    auto& form = dynamic_cast<frmFilterBySchema&>(window);
    test.form.cmdFilterBySchema[0].personClicks();  // a second click while the dialog is open
    form.grdNames.personTicks(0, false);
    const int row = form.grdNames.find(name);
    ASSERT_GT(row, 0) << name;
    form.grdNames.personTicks(static_cast<std::size_t>(row), true);
    form.personPressesEnter();
  });
}

TEST(Filters, NarrowOneSideUntilTheIndicatorIsClicked) {
  MainWindow test;
  test.makeServers();
  test.connect();
  for (const int side : {0, 1}) test.chooseDb(side, "Shop");
  chooseName(test, "sales");
  test.form.cmdFilterBySchema[0].personClicks();
  EXPECT_EQ(test.objects(0), "*Rates ");
  EXPECT_EQ(test.objects(1), "*Customers Orders Rates ");
  EXPECT_TRUE(test.form.srtFiltering[0].visible() && !test.form.srtFiltering[1].visible());
  EXPECT_EQ(test.form.srtFiltering[0].toolTip(), "Click to remove Schema filter (applied filter: sales)");

  test.form.RefreshDisplayForPanel(1);
  EXPECT_EQ(test.objects(0), "*Rates ");
  test.form.srtFiltering[0].personClicks();
  EXPECT_EQ(test.objects(0), "Customers Orders *Rates ") << "and the object stays selected";
  EXPECT_FALSE(test.form.srtFiltering[0].visible());

  // Choosing a server, a database or an owner ends a filter without that click.
  const std::vector<std::function<void()>> choices = {[&] { test.chooseDb(0, "Shop"); },
                                                      [&] { test.work.cmbServer[0].select(0); },
                                                      [&] {
                                                        test.work.cmbOwners[0].add("All Owners");
                                                        test.work.cmbOwners[0].select(0);
                                                      }};
  for (const auto& choose : choices) {
    chooseName(test, "sales");
    test.form.cmdFilterBySchema[0].personClicks();
    EXPECT_EQ(test.objects(0), "*Rates ");
    choose();
    EXPECT_FALSE(test.form.srtFiltering[0].visible() || test.filters().gblnSchemaFilter[0]);
    EXPECT_NE(test.objects(0).find("Customers"), std::string::npos);
  }
}

TEST(Filters, OfOwnersGoIntoTheSchemaFilter) {
  MainWindow test;
  test.makeServers();
  test.connect();
  test.chooseDb(0, "Shop");
  test.form.cmdFilterByOwner[0].personClicks();
  EXPECT_TRUE(test.host.shown.empty()) << "its button never shows";
  chooseName(test, "dbo");
  test.form.cmdFilterByOwner_Click(0);
  const modSchemaState& filters = test.filters();
  EXPECT_TRUE(filters.gblnSchemaFilter[0] && !filters.gblnOwnerFilter[0]);
  EXPECT_EQ(filters.gstrSchemaFilter[0] + filters.gstrOwnerFilter[0], "dbo");
  EXPECT_EQ(test.form.srtFiltering[0].toolTip(), "Click to remove Owner filter (applied filter: dbo)");

  // Nothing is touched when the choice is the same again.
  test.form.srtFiltering[0].setVisible(false);
  chooseName(test, "dbo");
  test.form.cmdFilterByOwner_Click(0);
  EXPECT_FALSE(test.form.srtFiltering[0].visible());
}

}  // namespace
}  // namespace qrel
