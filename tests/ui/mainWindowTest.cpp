// The main window's start, its panels and what follows a choice.
#include "tests/ui/mainWindow.h"

#include "app/mdlMain.h"
#include "db/frmAddServer.h"
#include "platform/files.h"
#include "ui/startUp.h"

namespace qrel {
namespace {

TEST(MainWindow, StartsUnconnectedAndActsOnItsFirstActivationOnly) {
  MainWindow test;
  test.makeServers();
  test.set("ShowTipOfDay", 1);
  test.program.main.glngRunSavedCompId = 7;
  test.form.load();
  EXPECT_EQ(test.host.pointer(), Pointer::Hourglass);
  test.form.cmdConnect.personClicks();
  EXPECT_EQ(test.databases(0), "") << "nothing connects before the window is on screen";
  test.host.windows.push_back([](Form&) {});
  test.form.activate();
  test.form.activate();
  EXPECT_EQ(test.host.pointer(), Pointer::Default);
  EXPECT_EQ(test.host.shown, std::vector<std::string>{"frmTip"});
  ASSERT_EQ(test.host.boxes.size(), 1U);
  EXPECT_EQ(test.host.boxes[0].text, "There are no saved processes to run.");
  EXPECT_EQ(test.work.cmbServer[1].text(), "One");
  EXPECT_EQ(test.form.cmdConnect.image(), imageIdle);
  for (const char* name : {"srtFiltering(1)", "cmdFilterByOwner(0)", "cmdNonExistent(1)", "cmbOwners(0)"})
    EXPECT_FALSE(test.form.find(name)->visible()) << name;
}

TEST(MainWindow, ConnectsBothPanels) {
  MainWindow test;
  test.makeServers();
  test.open();
  test.work.mblnBusy = true;
  test.form.cmdConnect.personClicks();
  EXPECT_EQ(test.databases(0), "") << "busy";
  test.work.mblnBusy = false;
  std::vector<int> images;
  test.host.onDoEvents = [&] {
    images.push_back(test.form.cmdConnect.image());
    EXPECT_TRUE(test.work.mblnBusy);
  };
  test.form.cmdConnect.personClicks();
  EXPECT_EQ(images, std::vector<int>(6, imageConnecting));
  EXPECT_EQ(test.form.cmdConnect.image(), imageConnected);
  EXPECT_FALSE(test.work.mblnBusy);
  for (const int side : {0, 1}) {
    EXPECT_EQ(test.databases(side), "*Archive master Shop ");
    EXPECT_EQ(test.objects(side), "*Old Orders ");
    EXPECT_NE(test.text(side).find("[a]"), std::string::npos) << test.text(side);
  }
}

TEST(MainWindow, IsConnectedWhenOnePanelIs) {
  MainWindow test;
  test.makeServers();
  test.addServer("Gone");
  test.connect();
  test.host.windows.push_back([](Form& report) { EXPECT_EQ(report.name, "frmErrorReport"); });
  test.work.cmbServer[0].select(2);
  EXPECT_EQ(test.databases(0), "*Archive master Shop ") << "a failed choice leaves the panel as it was";
  test.host.windows.push_back([](Form& report) { EXPECT_EQ(report.name, "frmErrorReport"); });
  test.form.cmdConnect.personClicks();
  EXPECT_EQ(test.databases(0), "") << "connecting clears first";
  EXPECT_EQ(test.databases(1), "*Archive master Shop ");
  EXPECT_EQ(test.form.cmdConnect.image(), imageConnected);
}

TEST(MainWindow, OpensAllTheSameWhenAutoConnectReachesNothing) {
  MainWindow test;
  test.addServer("Gone");
  test.set("AutoConnect", 1);
  for (int i = 0; i < 2; ++i)
    test.host.windows.push_back([](Form& report) { EXPECT_EQ(report.name, "frmErrorReport"); });
  test.open();
  EXPECT_EQ(test.form.cmdConnect.image(), imageIdle);
  EXPECT_EQ(test.databases(0) + test.objects(0) + test.text(0), "");
  EXPECT_EQ(test.form.srtFiltering[0].toolTip(), "Click to remove Schema filter") << "the load went to its end";
}

TEST(MainWindow, AutoConnectReturnsToTheDatabaseUsedLast) {
  MainWindow test;
  test.makeServers();
  test.set("AutoConnect", 1);
  SaveServerValue(test.program, 1, "MRUDb", "Shop");
  LoadServers(test.program);
  test.form.load();
  EXPECT_EQ(test.databases(0), "Archive master *Shop ");
  EXPECT_EQ(test.objects(1), "*Customers Orders Rates ");
}

TEST(MainWindow, EmptiesPanesAndOwnersWithTheLists) {
  MainWindow test;
  test.makeServers();
  test.connect();
  for (std::size_t side : {0U, 1U}) {
    EXPECT_TRUE(test.work.txtTXProc[side].readOnly) << "a person can't type";
    EXPECT_NE(test.text(static_cast<int>(side)), "");
    test.work.cmbOwners[side].add("dbo");
    test.program.main.gtypSelServ[side].Name.clear();
  }
  test.host.windows.push_back([](Form& add) { add.personPressesEsc(); });
  test.form.InitializeDisplay(true);
  EXPECT_EQ(test.host.boxes.back().text,
            "There is no SQL server to connect to.\r\n\r\nPlease add server by filling in following form or by "
            "clicking menu item 'Tools' -> 'Add Server' and specifying info for the server.");
  for (int side : {0, 1}) {
    EXPECT_EQ(test.databases(side) + test.objects(side) + test.text(side), "");
    EXPECT_EQ(test.work.cmbOwners[static_cast<std::size_t>(side)].count(), 0U);
  }
}

TEST(MainWindow, AsksForAServerWhenThereIsNoneAndShowsTheOneAdded) {
  MainWindow test;
  test.load("One", "Shop", MainWindow::shop);
  test.program.main.glngRunSavedCompId = 7;
  test.host.windows.push_back([](Form& add) {
    dynamic_cast<frmAddServer&>(add).txtServer.personTypes("One");
    add.personPressesEnter();
  });
  test.open();
  EXPECT_EQ(test.host.boxes.back().title, "No SQL Server");
  EXPECT_EQ(test.host.boxes.size(), 1U) << "no process is run: the answer stays False, whatever the dialog did";
  EXPECT_EQ(test.work.cmbServer[1].text(), "One");
  EXPECT_EQ(test.databases(1), "*master Shop ") << "the database typed in the dialog isn't applied";
  EXPECT_EQ(test.form.cmdConnect.image(), imageConnected);

  test.host.answers = {Answer::Yes};
  test.host.windows.push_back([](Form& remove) {
    dynamic_cast<CheckList*>(remove.find("lstServers"))->personSelects({0});
    remove.personPressesEnter();
  });
  test.host.windows.push_back([](Form& add) { add.personPressesEsc(); });
  test.form.MenuRemoveServer();
  EXPECT_EQ(test.host.boxes.back().title, "No SQL Server");
  EXPECT_EQ(test.databases(0) + test.work.cmbServer[0].text(), "");
  EXPECT_EQ(test.form.cmdConnect.image(), imageIdle);
}

TEST(Panels, RememberADatabaseWhenItIsChosenAndNotWithTheServer) {
  MainWindow test;
  test.makeServers();
  test.connect();
  EXPECT_EQ(ReadServerValue(test.program, 1, "MRUDb"), "");
  test.chooseDb(1, "Shop");
  EXPECT_EQ(test.objects(1), "*Customers Orders Rates ");
  EXPECT_EQ(ReadServerValue(test.program, 1, "MRUDb"), "Shop");
  EXPECT_EQ(test.program.servers.gtypServers[0].MRUDb, "Shop");
  EXPECT_EQ(test.objects(0), "*Old Orders ");

  test.work.cmbServer[0].select(0);
  EXPECT_EQ(Workspace::selectedText(test.work.pvlDb[0]), "Shop") << "its last database, whoever chose it";
  test.work.cmbServer[0].select(1);
  EXPECT_EQ(test.databases(0), "*master Shop ");
  EXPECT_EQ(ReadServerValue(test.program, 2, "MRUDb"), "");

  // A database that is gone isn't forgotten.
  SaveServerValue(test.program, 2, "MRUDb", "Dropped");
  test.work.cmbServer[0].select(1);
  EXPECT_EQ(test.databases(0), "*master Shop ");
  EXPECT_EQ(ReadServerValue(test.program, 2, "MRUDb"), "Dropped");
  EXPECT_TRUE(test.host.boxes.empty());
}

TEST(Panels, KeepTheVersionNumberOfTheServerBefore) {
  MainWindow test;
  test.makeServers();
  test.connect();
  tServer& target = test.program.main.gtypSelServ[1];
  target.VersionNum = 8;
  test.work.cmbServer[1].select(1);
  EXPECT_EQ(target.Name, "Two");
  EXPECT_EQ(target.VersionNum, 8);
  test.chooseDb(1, "Shop");
  test.form.cmdFilterBySchema[1].personClicks();
  EXPECT_EQ(test.lastBox(), "Cannot filter by schema - schemas were introduced in SQL Server 2005.");
}

TEST(Panels, TellOfAServerThatIsNotInTheList) {
  MainWindow test;
  test.makeServers();
  test.connect();
  test.work.cmbServer[1].select(-1);
  EXPECT_EQ(test.program.main.gtypSelServ[1].Name, "One") << "no row is no choice";
  test.work.cmbServer[1].add("Nobody");
  for (int i = 0; i < 2; ++i)
    test.host.windows.push_back([](Form& report) { EXPECT_EQ(report.name, "frmErrorReport"); });
  test.work.cmbServer[1].select(2);
  ASSERT_EQ(test.host.boxes.size(), 1U);
  EXPECT_EQ(test.host.boxes.front().text, "Server 'Nobody' not found.");
  EXPECT_EQ(test.host.boxes.front().icon, Icon::Warning);
  EXPECT_EQ(test.program.main.gtypSelServ[1].RegIndex, 0);
  test.chooseDb(1, "Shop");
  EXPECT_EQ(ReadServerValue(test.program, 1, "MRUDb"), "") << "without a place in the list nothing is remembered";
}

TEST(ObjectType, ReloadsBothListsAndLeavesFiltersAlone) {
  MainWindow test;
  test.makeServers();
  test.connect();
  test.chooseDb(0, "Shop");
  test.filters().gblnSchemaFilter[0] = true;
  test.filters().gstrSchemaFilter[0] = "dbo";
  test.chooseType(objProcedures);
  EXPECT_EQ(test.objects(0), "*GetA GetB ");
  EXPECT_EQ(test.objects(1), "");
  EXPECT_EQ(test.text(1), "<<Nothing to show>>");
  EXPECT_TRUE(test.filters().gblnSchemaFilter[0]);
  EXPECT_EQ(test.form.cmdCompare.toolTip(), "Compare selected procedures (F7)");
  EXPECT_EQ(test.work.pvlSqlObj[1].toolTip(), "List of all procedures");

  test.work.mblnBusy = true;
  test.chooseType(objTables);
  EXPECT_EQ(test.objects(0), "*GetA GetB ") << "busy";
  test.work.mblnBusy = false;
  test.form.ObjectTypeChanged(10, -1, 2);
  EXPECT_EQ(test.objects(0), "*GetA GetB ");
  EXPECT_EQ(test.objects(1), "*Old Orders ");
  EXPECT_FALSE(test.work.mblnBusy);
}

TEST(ObjectType, OptionButtonsLeaveTheComboBehindAndTheLastOneNamesNoType) {
  MainWindow test;
  test.makeServers();
  test.connect();
  test.chooseDb(0, "Shop");
  test.form.optType[1].choose();
  EXPECT_EQ(test.objects(0), "*GetA GetB ");
  EXPECT_EQ(test.work.cmbType.text(), "Tables");
  test.form.optType[6].choose();
  EXPECT_EQ(test.lastBox(), "BuildObjSQLString, wrong object type passed");
  EXPECT_EQ(test.objects(0), "");
  EXPECT_EQ(test.form.cmdCompare.toolTip(), "Compare selected objects (F7)");
  test.form.optType[5].choose();
  EXPECT_EQ(test.work.pvlSqlObj[0].toolTip(), "List of all relationships");
}

TEST(ObjectType, RebuildsAnEmptyDisplayWithoutTheDatabaseUsedLast) {
  MainWindow test;
  test.makeServers();
  SaveServerValue(test.program, 1, "MRUDb", "Shop");
  LoadServers(test.program);
  test.open();
  test.chooseType(objProcedures);
  EXPECT_EQ(test.databases(0), "*Archive master Shop ");
  EXPECT_FALSE(test.work.mblnBusy);
  test.form.cmdConnect.personClicks();
  EXPECT_EQ(test.databases(0), "Archive master *Shop ");
  EXPECT_EQ(test.objects(0), "*GetA GetB ");
}

TEST(Selection, ShowsTheTextAndTargetFollowsSource) {
  MainWindow test;
  test.makeServers();
  test.connect();
  test.work.cmbServer[1].select(1);
  test.chooseDb(1, "Shop");
  test.chooseDb(0, "Shop");
  test.chooseObject(1, "Parcels");
  test.chooseObject(0, "Orders");
  EXPECT_NE(test.text(0).find("[b]"), std::string::npos) << test.text(0);
  EXPECT_EQ(test.selectedObject(1), "Parcels") << "not asked for";

  test.program.settings.AutoSelTargetObj = true;
  test.work.mblnBusy = true;
  test.chooseObject(0, "Orders");
  EXPECT_EQ(test.selectedObject(1), "Parcels") << "busy";
  test.work.mblnBusy = false;
  test.chooseObject(0, "Orders");
  EXPECT_EQ(test.selectedObject(1), "Orders");
  EXPECT_NE(test.text(1).find("[c]"), std::string::npos) << test.text(1);

  test.chooseObject(0, "Customers");
  EXPECT_EQ(test.selectedObject(1), "Orders") << "no namesake";
  EXPECT_NE(test.text(1).find("[c]"), std::string::npos);
  test.chooseObject(1, "Orders");
  EXPECT_EQ(test.selectedObject(0), "Customers") << "Target never leads";
  test.work.pvlSqlObj[0].tag = "OFF";
  test.chooseObject(0, "Orders");
  EXPECT_NE(test.text(0).find("[a]"), std::string::npos) << "muted";
}

TEST(Selection, TellsWhatTheListKnows) {
  MainWindow test;
  CheckList& list = test.work.pvlSqlObj[1];
  test.form.pvlSqlObj_RowEvent(1, 7);
  for (const std::int32_t id : {2105058535, 885578193, 999, -1000, 0}) {
    const std::size_t row = list.add("T");
    list.setId(row, id);
    list.setCell(row, 1, "2024-01-02");
  }
  list.tag = "OFF";
  std::string ids;
  for (std::size_t row = 0; row < list.count(); ++row) {
    list.select(row);
    test.form.pvlSqlObj_RowEvent(1, 3);  // without Alt
    test.form.pvlSqlObj_RowEvent(1, 7);
    EXPECT_EQ(test.host.boxes.size(), 1U);
    ids += test.lastBox() + "\n";
  }
  const std::string rest = ", Name: T, Ref. Date: 2024-01-02\n";
  EXPECT_EQ(ids, "Id: 2,105,058,535" + rest + "Id: 885,578,193" + rest + "Id: 999" + rest + "Id: -1,000" + rest +
                     "Id: " + rest);
}

TEST(Refresh, ReadsTheListAnewAndReturnsToTheObject) {
  MainWindow test;
  test.makeServers();
  test.connect();
  test.chooseObject(0, "Orders");
  test.load("One", "Archive", "CREATE TABLE Fresh (f int)");
  test.work.mblnBusy = true;
  test.form.RefreshSourceTarget(0);
  EXPECT_EQ(test.objects(0), "Fresh Old *Orders ");
  EXPECT_NE(test.text(0).find("[b]"), std::string::npos) << test.text(0);
  EXPECT_EQ(test.objects(1), "*Old Orders ");
  EXPECT_FALSE(test.work.mblnBusy);
  EXPECT_EQ(test.form.mlngPopupPanel, 0);

  test.load("One", "Archive", "DROP TABLE Orders");
  test.form.RefreshDisplayForPanel(0);
  EXPECT_EQ(test.objects(0), "*Fresh Old ");
  test.form.RefreshSourceTarget(1);
  EXPECT_EQ(test.objects(1), "Fresh *Old ");
  EXPECT_EQ(test.form.mlngPopupPanel, 1);
}

TEST(Refresh, CommandsAreDeadOnceAContextMenuHasClosed) {
  MainWindow test;
  test.makeServers();
  test.connect();
  test.form.mlngPopupPanel = -1;
  test.load("One", "Archive", "CREATE TABLE Fresh (f int)");
  test.form.RefreshSourceTarget(0);
  test.form.RefreshSourceTarget(1);
  EXPECT_EQ(test.objects(0) + test.objects(1), "*Old Orders *Old Orders ");
  EXPECT_EQ(test.form.mlngPopupPanel, -1);
  test.form.RefreshDisplayForPanel(1);
  EXPECT_EQ(test.objects(1), "Fresh *Old Orders ") << "the context menu's own command lives on";
}

TEST(Owners, NarrowTheListToWhatTheyOwn) {
  MainWindow test;
  test.makeServers();
  test.set("ShowOwners", 1);
  test.connect();
  test.chooseDb(0, "Shop");
  ComboBox& owners = test.work.cmbOwners[0];
  EXPECT_TRUE(owners.visible());
  EXPECT_EQ(owners.text(), "All Owners");
  test.filters().gblnSchemaFilter[0] = true;
  test.filters().gstrSchemaFilter[0] = "sales";
  const std::string all = "*Customers Orders Rates ";
  std::string seen;
  for (int row = 1; row < static_cast<int>(owners.count()); ++row) {
    owners.select(row);
    seen += owners.text() + ": " + test.objects(0);
    EXPECT_TRUE(!test.work.pvlSqlObj[0].muted() && !test.filters().gblnSchemaFilter[0]);
  }
  EXPECT_NE(seen.find("dbo: *Customers Orders "), std::string::npos) << seen;
  owners.add("nobody");
  owners.select(static_cast<int>(owners.count()) - 1);
  EXPECT_EQ(test.objects(0), "");
  EXPECT_EQ(test.text(0), "<<Nothing to show>>");
  owners.select(0);
  EXPECT_EQ(test.objects(0), all);
}

TEST(StartUp, MakesAndShowsTheMainWindow) {
  TestProgram test;
  tServer record;
  record.Name = "One";
  AppendServer(test.program, record);
  StartUp steps(test.program);
  Main(test.program, steps);
  ASSERT_NE(steps.mainWindow(), nullptr);
  EXPECT_EQ(test.host.shown, std::vector<std::string>{"frmMain"});
  EXPECT_EQ(steps.mainWindow()->caption, "Quorrel");
  EXPECT_EQ(steps.mainWindow()->workspace.cmbServer[1].text(), "One") << "the list was read before";
  EXPECT_TRUE(steps.mainWindow()->mblnActivated);
  EXPECT_EQ(steps.mainWindow()->helpFile, test.program.main.gstrAppPath + "qrel.chm");
}

}  // namespace
}  // namespace qrel
