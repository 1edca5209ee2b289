// A server's record between the list and those who use it.
#include "db/frmAddServer.h"
#include "db/mdlServers.h"
#include "tests/support.h"

namespace qrel {
namespace {

TEST(ServerRecord, IsFoundByItsExactName) {
  TestProgram test;
  const char* const names[] = {"shop", "Shop", "other"};
  for (const char* name : names) {
    tServer server = TestProgram::server(name, "9.00.3042.00");
    server.MRUDb = std::string("db of ") + name;
    server.SQLAuth = *name == 'S';
    server.LoginName = "sa";
    server.Password = " p w ";
    server.LocalDb = *name == 'o';
    AppendServer(test.program, server);
  }
  for (std::int32_t i = 0; i < 3; ++i) {
    tServer found;
    found.Name = names[i];
    found.VersionNum = 8;
    found.SchemaCheckPerformed = found.AddSchema = true;
    GetServerData(test.program, found);
    EXPECT_EQ(found.Name, names[i]);
    EXPECT_EQ(found.MRUDb, std::string("db of ") + names[i]);
    EXPECT_EQ(found.RegIndex, i + 1);
    EXPECT_EQ(found.SQLAuth, i == 1);
    EXPECT_EQ(found.LocalDb, i == 2);
    EXPECT_EQ(found.LoginName + found.Password + found.Version, "sa p w 9.00.3042.00");
    EXPECT_TRUE(found.VersionNum == 8 && found.SchemaCheckPerformed && found.AddSchema)
        << "these the list doesn't know";
  }
  EXPECT_TRUE(test.host.boxes.empty());
  for (const char* name : {"SHOP", "shop ", ""}) {
    tServer missing;
    missing.Name = name;
    GetServerData(test.program, missing);
    ASSERT_FALSE(test.host.boxes.empty()) << name;
    EXPECT_EQ(test.host.boxes.back().text, std::string("Server '") + name + "' not found.");
    EXPECT_EQ(test.host.boxes.back().icon, Icon::Warning);
    EXPECT_TRUE(missing.MRUDb.empty() && missing.RegIndex == 0 && missing.Version.empty());
    test.host.boxes.clear();
  }
}

TEST(ServerRecord, IsTrimmedOnItsWayIntoTheList) {
  TestProgram test;
  test.servers.create("Local");
  test.load("Local", "Shop", "");
  test.host.windows.push_back([](Form& window) {
    auto& form = dynamic_cast<frmAddServer&>(window);
    form.txtServer.personTypes("  Local ");
    form.txtDatabase.personTypes(" Shop ");
    form.optGen1.choose();
    form.txtLogin.personTypes(" sa ");
    form.txtPassword.personTypes("  p  w ");
    form.cmdOK.personClicks();
    EXPECT_TRUE(form.closed());
  });
  EXPECT_TRUE(MenuAddServer(test.program));
  ASSERT_EQ(test.program.servers.gtypServers.size(), 1U);
  const tServer& added = test.program.servers.gtypServers[0];
  EXPECT_EQ(added.Name + "|" + added.MRUDb + "|" + added.LoginName + "|" + added.Password, "Local|Shop|sa|p  w");
  EXPECT_EQ(ReadServerValue(test.program, 1, "Pwd"), "p  w") << "kept as it is otherwise";
  EXPECT_EQ(added.Version, "");
}

}  // namespace
}  // namespace qrel
