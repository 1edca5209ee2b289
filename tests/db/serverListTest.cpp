// The server list and its two windows.
#include "app/modRegistry.h"
#include "db/frmAddServer.h"
#include "db/frmDeleteServer.h"
#include "db/mdlServers.h"
#include "db/modPanels.h"
#include "db/mdlObjects.h"
#include "tests/support.h"

namespace qrel {
namespace {

std::string names(Program& program) {
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
  EXPECT_EQ(names(test.program), "1A 2B 3CL ");
  RemoveServer(test.program, "B");
  EXPECT_EQ(names(test.program), "1A 2CL ");
  const tServer& moved = test.program.servers.gtypServers[1];
  EXPECT_TRUE(moved.SQLAuth && moved.LoginName == "sa" && moved.Password == "p;w" && moved.MRUDb == "db" &&
              moved.Version == "9.00.3042.00");
  EXPECT_FALSE(test.store.get("Software\\Qrel\\Servers\\Server3", "Name").has_value());
  RemoveServer(test.program, "a");
  EXPECT_EQ(names(test.program), "1A 2CL ") << "removal compares exactly";
  SaveSettingDWord(test.store, HKEY_CURRENT_USER, "Software\\Qrel\\Servers", "Count", -3);
  EXPECT_EQ(GetServersCount(test.program), 0) << "a negative count reads as 0";
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
    EXPECT_EQ(press(), "Cannot connect to the server - server does not exist or access denied.\r\n\r\n"
                       "Please enter correct server data.");
    EXPECT_EQ(test.host.boxes.back().title, "Cannot Connect To The Server");
    form.txtServer.personTypes("(localdb)\\local");
    form.personPressesEnter();
    EXPECT_TRUE(form.closed());
  });
  EXPECT_TRUE(MenuAddServer(test.program));
  EXPECT_EQ(names(test.program), "1(localdb)\\localL ");
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
  EXPECT_EQ(names(test.program), "1A 2CL ");
}

TEST(Panels, LoadTheServerAndRememberTheDatabase) {
  TestProgram test;
  test.load("One", "Shop", "CREATE TABLE T (a int)\nGO\nCREATE TABLE S (a int)");
  test.load("One", "Bar", "CREATE TABLE Only (a int)");
  tServer server;
  server.Name = "One";
  server.MRUDb = "Shop";
  AppendServer(test.program, server);
  LoadServers(test.program);
  InitSelectedServers(test.program);
  Workspace workspace;
  FillObjectTypes(test.program, workspace.cmbType);
  EXPECT_EQ(workspace.cmbType.count(), 6U);
  FillServerCombo(test.program, workspace.cmbServer[0], 0);
  SelectServer(test.program, workspace, 0, false);
  EXPECT_EQ(workspace.pvlDb[0].count(), 3U) << "master, Bar, Shop";
  EXPECT_EQ(Workspace::selectedText(workspace.pvlDb[0]), "Shop");
  EXPECT_EQ(workspace.pvlSqlObj[0].cell(0, 0), "S");
  EXPECT_EQ(workspace.pvlSqlObj[0].count(), 2U);
  EXPECT_EQ(ReadServerValue(test.program, 1, "Version"), defaultProductVersion) << "the answer is kept";

  workspace.pvlDb[0].onClick = [&] { SelectDatabase(test.program, workspace, 0, false); };
  workspace.pvlDb[0].personSelects({0});
  EXPECT_EQ(workspace.pvlSqlObj[0].cell(0, 0), "Only");
  EXPECT_EQ(ReadServerValue(test.program, 1, "MRUDb"), "Bar");
  EXPECT_EQ(test.program.servers.gtypServers[0].MRUDb, "Bar");

  // A broken database is left out of the list when it is asked for.
  std::ofstream(test.servers.databaseFile("One", "Shop"), std::ios::binary) << std::string(5000, 'x');
  test.program.settings.FilterOfflineDbs = true;
  SelectServer(test.program, workspace, 0, false);
  EXPECT_EQ(workspace.pvlDb[0].find("Shop"), -1);
  EXPECT_TRUE(test.host.boxes.empty());
}

TEST(ServerInfoSet, OffersToAddAServerWhenThereIsNone) {
  TestProgram test;
  test.host.windows.push_back([](Form& form) { form.personPressesEsc(); });
  EXPECT_FALSE(ServerInfoSet(test.program));
  EXPECT_EQ(test.host.boxes.back().title, "No SQL Server");
  EXPECT_EQ(test.host.shown.back(), "frmAddServer");
}

}  // namespace
}  // namespace qrel
