// The server list and its two windows.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "app/modRegistry.h"
#include "app/settings.h"
#include "db/frmAddServer.h"
#include "db/frmDeleteServer.h"
#include "db/mdlObjects.h"
#include "db/mdlServers.h"
#include "db/modPanels.h"
#include "platform/fileFaults.h"
#include "tests/support.h"

namespace qrel {
namespace {

std::string serverNames(Program& program) {
  LoadServers(program);
  std::string text;
  for (const tServer& server : program.servers.gtypServers)
    text += std::to_string(server.RegIndex) + server.Name + (server.LocalDb ? "L" : "") + " ";
  return text;
}

void addThree(Program& program) {
  for (const char* name : {"A", "B", "C"}) {
    tServer server;
    server.Name = name;
    server.SQLAuth = server.LocalDb = *name == 'C';
    server.LoginName = "sa";
    server.Password = "p;w";
    server.MRUDb = "db";
    server.Version = "9.00.3042.00";
    AppendServer(program, server);
  }
  LoadServers(program);
}

TEST(ServerList, ClosesTheGapWhenAServerGoes) {
  TestProgram test;
  addThree(test.program);
  EXPECT_EQ(serverNames(test.program), "1A 2B 3CL ");
  RemoveServer(test.program, "B");
  EXPECT_EQ(serverNames(test.program), "1A 2CL ");
  const tServer& moved = test.program.servers.gtypServers[1];
  EXPECT_TRUE(moved.SQLAuth && moved.LoginName == "sa" && moved.Password == "p;w" && moved.MRUDb == "db" &&
              moved.Version == "9.00.3042.00");
  EXPECT_FALSE(test.store.get("Software\\Qrel\\Servers\\Server3", "Name").has_value());
  RemoveServer(test.program, "a");
  EXPECT_EQ(serverNames(test.program), "1A 2CL ") << "removal compares exactly";
}

// What is stored as the count is believed as far as there are keys.
TEST(ServerList, ACountBeyondTheKeysEndsWithThem) {
  const struct {
    std::int32_t count;
    std::vector<int> keys;
    const char* list;
  } cases[] = {{2147483647, {}, ""},      {2147483647, {1, 2}, "1N1 2N2 "},      {1, {1, 2}, "1N1 "},
               {3, {1, 3}, "1N1 2 3N3 "}, {2147483647, {1, 2147483647}, "1N1 "}, {-3, {1}, ""}};
  for (const auto& each : cases) {
    TestProgram test;
    const std::string servers = "Software\\Qrel\\Servers";
    SaveSettingDWord(test.store, HKEY_CURRENT_USER, servers, "Count", each.count);
    for (const int key : each.keys)
      SaveSettingString(test.store, HKEY_CURRENT_USER, servers + "\\Server" + std::to_string(key), "Name",
                        "N" + std::to_string(key));
    EXPECT_EQ(serverNames(test.program), each.list) << each.count;
    EXPECT_EQ(GetServersCount(test.program), std::count(each.list, each.list + std::strlen(each.list), ' '));
  }
}

class StoredServers : public ::testing::Test {
 protected:
  StoredServers() { addThree(program); }
  static int failWriting(files::Operation operation, const std::filesystem::path&) {
    return operation == files::Operation::Write ? ENOSPC : 0;
  }

  TestProgram test;
  KeyStore store{test.folder.path() / "settings.txt"};
  Program program{test.host, test.data, store};
};

TEST_F(StoredServers, ADatabaseThatCannotBeRememberedIsToldOnce) {
  const files::FaultScope full(failWriting);
  SaveServerValue(program, 1, "MRUDb", "db");
  EXPECT_TRUE(test.host.boxes.empty()) << "nothing to write";
  SaveServerValue(program, 1, "MRUDb", "other");
  SaveServerValue(program, 2, "Version", "10.0");
  ASSERT_EQ(test.host.boxes.size(), 1u);
  EXPECT_NE(test.host.boxes[0].text.find("settings.txt"), std::string::npos);
  EXPECT_EQ(ReadServerValue(program, 1, "MRUDb"), "db");
}

TEST_F(StoredServers, AnotherProcessesChangeOfTheListIsNotWrittenOver) {
  KeyStore others(test.folder.path() / "settings.txt");
  Program other(test.host, test.data, others);
  RemoveServer(other, "A");
  SaveServerValue(program, 1, "MRUDb", "of A");
  LoadServers(other);
  EXPECT_EQ(ReadServerValue(other, 1, "MRUDb"), "db") << "number 1 is B by now";
  EXPECT_EQ(ReadServerValue(program, 1, "Version"), "") << "and what is stored of B is none of A's";
  EXPECT_EQ(serverNames(program), "1B 2CL ");
}

TEST_F(StoredServers, TheWindowsTellAListThatCannotBeWritten) {
  test.servers.create("Local");
  const files::FaultScope full(failWriting);
  const auto leaveReport = [](Form& form) { EXPECT_EQ(form.name, "frmErrorReport"); };
  test.host.windows.push_back([&](Form& window) {
    test.host.windows.push_front(leaveReport);
    dynamic_cast<frmAddServer&>(window).txtServer.personTypes("Local");
    window.personPressesEnter();
    EXPECT_FALSE(window.closed());
  });
  EXPECT_FALSE(MenuAddServer(program));
  test.host.windows.push_back([&](Form& window) {
    test.host.windows.push_front(leaveReport);
    test.host.answers = {Answer::Yes};
    dynamic_cast<frmDeleteServer&>(window).lstServers.personSelects({1});
    window.personPressesEnter();
    EXPECT_FALSE(window.closed());
  });
  EXPECT_FALSE(MenuRemoveServer(program));
  EXPECT_EQ(serverNames(program), "1A 2B 3CL ");
}

TEST_F(StoredServers, AServerThatAnotherProcessAddedMeanwhileIsNotAddedTwice) {
  test.servers.create("Local");
  KeyStore others(test.folder.path() / "settings.txt");
  Program other(test.host, test.data, others);
  test.host.windows.push_back([&](Form& window) {
    dynamic_cast<frmAddServer&>(window).txtServer.personTypes("Local");
    AppendServer(other, TestServers::server("LOCAL"));
    window.personPressesEnter();
  });
  EXPECT_FALSE(MenuAddServer(program));
  EXPECT_EQ(test.host.boxes.back().text, "This server is already added to the list.");
  EXPECT_EQ(serverNames(program), "1A 2B 3CL 4LOCAL ");
}

TEST(ServerList, PanelsTakeTheFirstServer) {
  TestProgram test;
  InitSelectedServers(test.program);
  EXPECT_TRUE(test.program.main.gtypSelServ[1].Name.empty());
  addThree(test.program);
  InitSelectedServers(test.program);
  EXPECT_EQ(test.program.main.gtypSelServ[1].Name, "A");
  EXPECT_EQ(test.program.main.gtypSelServ[1].VersionNum, 9);
  ComboBox combo("cmbServer(0)");
  bool clicked = false;
  combo.onClick = [&] { clicked = true; };
  FillServerCombo(test.program, combo, 0);
  EXPECT_EQ(combo.text(), "A");
  EXPECT_FALSE(clicked) << "filling is muted";
}

TEST(AddServer, RefusesInTheToldOrderAndAddsAServerThatAnswers) {
  TestProgram test;
  test.servers.create("Local");
  test.host.windows.push_back([&](Form& window) {
    auto& form = dynamic_cast<frmAddServer&>(window);
    ASSERT_EQ(form.cmbKnown.count(), 1U) << "the servers that are there are offered";
    form.cmbKnown.select(0);
    EXPECT_EQ(form.txtServer.text(), "Local");
    form.txtServer.personTypes("");
    const auto press = [&] {
      form.personPressesEnter();
      return test.host.boxes.empty() ? std::string() : test.host.boxes.back().text;
    };
    form.txtDatabase.personTypes(" ");
    EXPECT_EQ(press(), "Please enter server name.");
    form.txtServer.personTypes(" Local ");
    EXPECT_EQ(press(), "Please enter database name.");
    form.txtDatabase.personTypes("MASTER");
    form.optGen1.choose();
    EXPECT_EQ(press(), "Please enter Login name.");
    EXPECT_EQ(form.txtLogin.focusRequests(), 1U);
    form.chkLocalDb.personSets(true);
    EXPECT_TRUE(form.optGen0.chosen() && !form.txtLogin.enabled());
    EXPECT_EQ(form.txtServer.text(), "(localdb)\\InstanceName");
    EXPECT_TRUE(press().starts_with(
        "Cannot connect to the server - server does not exist or access denied.\r\n\r\n"
        "Please enter correct server data.\r\n\r\nSQL Server 'InstanceName' does not exist or access denied."))
        << "the provider's own sentence stands below";
    EXPECT_EQ(test.host.boxes.back().title, "Cannot Connect To The Server");
    form.txtServer.personTypes("(localdb)\\local");
    form.personPressesEnter();
    EXPECT_TRUE(form.closed());
  });
  EXPECT_TRUE(MenuAddServer(test.program));
  EXPECT_EQ(serverNames(test.program), "1(localdb)\\localL ");
  EXPECT_EQ(test.program.main.gtypSelServ[0].Name, "(localdb)\\local");
  EXPECT_FALSE(test.program.mdlData.gblnNoConnErrMsg);

  test.host.windows.push_back([&](Form& window) {
    dynamic_cast<frmAddServer&>(window).txtServer.personTypes("(LOCALDB)\\Local");
    window.personPressesEnter();
    window.personPressesEsc();
  });
  EXPECT_FALSE(MenuAddServer(test.program));
  EXPECT_EQ(test.host.boxes.back().text, "This server is already added to the list.");
}

TEST(AddServer, RepairsACountWithoutServers) {
  TestProgram test;
  test.servers.create("Local");
  SaveSettingDWord(test.store, HKEY_CURRENT_USER, "Software\\Qrel\\Servers", "Count", 3);
  test.host.windows.push_back([&](Form& window) {
    dynamic_cast<frmAddServer&>(window).txtServer.personTypes("Local");
    window.personPressesEnter();
  });
  EXPECT_TRUE(MenuAddServer(test.program));
  EXPECT_EQ(serverNames(test.program), "1Local ");
}

TEST(RemoveServer, AsksFirst) {
  TestProgram test;
  EXPECT_FALSE(MenuRemoveServer(test.program));
  EXPECT_EQ(test.host.boxes.back().text, "There are no servers stored in the list.");
  addThree(test.program);
  test.host.answers = {Answer::No, Answer::Yes};
  test.host.windows.push_back([&](Form& window) {
    auto& form = dynamic_cast<frmDeleteServer&>(window);
    form.cmdRemove.personClicks();
    EXPECT_EQ(test.host.boxes.back().text, "Please select the server to be removed from the list.");
    form.lstServers.personSelects({1});
    form.cmdRemove.personClicks();
    EXPECT_FALSE(form.closed());
    form.cmdRemove.personClicks();
  });
  EXPECT_TRUE(MenuRemoveServer(test.program));
  EXPECT_EQ(test.host.boxes.back().text,
            "Are you sure that you want to remove\r\n\r\nB\r\n\r\nfrom the list of servers?");
  EXPECT_EQ(serverNames(test.program), "1A 2CL ");
}

TEST(Panels, LoadAServerWithTheDatabaseUsedLast) {
  TestProgram test;
  test.load("One", "Shop", "CREATE TABLE T (a int)\nGO\nCREATE TABLE S (a int)");
  test.load("One", "Bar", "CREATE TABLE Other (a int)");
  tServer server;
  server.Name = "One";
  AppendServer(test.program, server);
  LoadServers(test.program);
  InitSelectedServers(test.program);
  tServer& selected = test.program.main.gtypSelServ[1];
  Workspace workspace;
  FillObjectTypes(test.program, workspace.cmbType);
  const auto load = [&](const char* strMRUDb, bool pblnLoadMRUDb) {
    selected.MRUDb = strMRUDb;
    EXPECT_TRUE(LoadServer(test.program, workspace, pblnLoadMRUDb, 1, false));
    return SelectedDatabase(workspace, 1) + ": " + workspace.pvlSqlObj[1].cell(0, 0);
  };
  EXPECT_EQ(load("Shop", true), "Shop: S");
  EXPECT_NE(workspace.txtTXProc[1].text(), "") << "the first object's text is shown";
  EXPECT_EQ(workspace.pvlDb[1].count(), 3U) << "Bar, master, Shop";
  EXPECT_EQ(load("Shop", false), "Bar: Other");
  EXPECT_EQ(load("shop", true), "Bar: Other") << "by its exact name";
  SaveSetting(test.program, *findSetting("PreserveDbSel"), 0);
  EXPECT_EQ(load("Shop", true), "Bar: Other");

  // A database that can't be opened is left out when that is asked for, without a message.
  std::ofstream(test.servers.databaseFile("One", "Bar"), std::ios::binary) << std::string(5000, 'x');
  test.program.settings.FilterOfflineDbs = true;
  EXPECT_TRUE(LoadServer(test.program, workspace, false, 1, false));
  EXPECT_EQ(workspace.pvlDb[1].find("Bar"), -1);
  EXPECT_TRUE(test.host.boxes.empty() && !test.program.mdlData.gblnNoConnErrMsg);
}

TEST(Panels, StayAsTheyWereWhenTheServerIsGone) {
  TestProgram test;
  Workspace workspace;
  FillObjectTypes(test.program, workspace.cmbType);
  workspace.pvlDb[0].add("Old");
  test.program.main.gtypSelServ[0].Name = "Nowhere";
  test.program.main.gtypSelServ[0].Version = "9.00.3042.00";
  test.host.windows.push_back([](Form& form) { EXPECT_EQ(form.name, "frmErrorReport"); });
  EXPECT_FALSE(LoadServer(test.program, workspace, true, 0, false));
  EXPECT_EQ(workspace.pvlDb[0].cell(0, 0), "Old");
}

TEST(Panels, AskTheServerForItsVersionOnceAndNeverAgain) {
  TestProgram test;
  test.servers.create("One", "10.50.1600.1");
  tServer server;
  server.Name = "One";
  AppendServer(test.program, server);
  server.RegIndex = 1;
  CheckSQLServerVersion(test.program, server);
  EXPECT_EQ(server.Version, "10.50.1600.1");
  EXPECT_EQ(ReadServerValue(test.program, 1, "Version"), "10.50.1600.1");
  test.servers.setVersion("One", "11.0.2100.60");
  server.Version.clear();
  CheckSQLServerVersion(test.program, server);
  EXPECT_EQ(server.Version, "10.50.1600.1") << "an upgraded server keeps its old version until it is added anew";
  server.Name = "Nowhere";
  server.RegIndex = 0;
  server.Version.clear();
  CheckSQLServerVersion(test.program, server);
  EXPECT_EQ(server.Version, "") << "an unknown version is no error";
}

TEST(ServerInfoSet, OffersToAddAServerWhenThereIsNone) {
  TestProgram test;
  test.host.windows.push_back([](Form& form) { form.personPressesEsc(); });
  EXPECT_FALSE(ServerInfoSet(test.program));
  EXPECT_EQ(test.host.boxes.back().title, "No SQL Server");
  EXPECT_EQ(test.host.shown.back(), "frmAddServer");
}

// The database that each panel used last goes with its server when the numbers close up.
TEST(ServerList, PanelsKeepTheirDatabasesWhenAServerGoes) {
  TestProgram test;
  for (const char* name : {"A", "B"}) AppendServer(test.program, TestProgram::server(name));
  LoadServers(test.program);
  SaveServerValue(test.program, 2, panelDatabaseValues[1], "Shop");
  RemoveServer(test.program, "A");
  LoadServers(test.program);
  EXPECT_EQ(ReadServerValue(test.program, 1, panelDatabaseValues[1]), "Shop");
  EXPECT_EQ(ReadServerValue(test.program, 1, panelDatabaseValues[0]), "");
}

}  // namespace
}  // namespace qrel
