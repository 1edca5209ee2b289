// Which files of an instance's folder are databases, for everybody who asks.
#include "embedded/instance/databaseFiles.h"

#include <string>
#include <utility>
#include <vector>

#include "embedded/session/session.h"
#include "tests/embedded/loading.h"
#include "tests/support.h"

namespace qrel {
namespace {

TEST(DatabaseFiles, OneAnswerForAllWhoLook) {
  TemporaryFolder folder;
  for (const char* name : {"shop.mdf", "Shop.MDF", "Web.Mdf", ".hidden.mdf", "a:b.mdf", "notes.txt", ".mdf"})
    folder.write(name, "");
  EXPECT_EQ(databaseNames(folder.path()).size(), 3U) << "shop, Shop, Web";
  const std::pair<const char*, const char*> cases[] = {
      {"shop", "shop.mdf"}, {"WEB", "Web.Mdf"}, {".hidden", ""}, {"a:b", ""}, {"notes", ""}, {"", ""}, {"../x", ""},
  };
  for (const auto& [name, file] : cases)
    EXPECT_EQ(findDatabaseFile(folder.path(), name).filename().string(), file) << name;
  EXPECT_EQ(databaseFileFor(folder.path(), "wEB").filename(), "Web.Mdf");
  EXPECT_EQ(databaseFileFor(folder.path(), "New").filename(), "New.mdf");
  EXPECT_THROW(databaseNames(folder.path() / "nothing"), RuntimeError);
  EXPECT_THROW(findDatabaseFile(folder.path() / "nothing", "shop"), RuntimeError);
}

TEST(DatabaseFiles, WorkCopiesLeadBackToTheirDatabase) {
  const std::filesystem::path file = "/servers/S/Web.Mdf";
  const std::filesystem::path copy = workCopyOf(file);
  for (const char* ending : {"", "-journal"}) EXPECT_EQ(databaseFileOfWorkCopy(copy.string() + ending), file);
  for (const char* other : {"/servers/S/Web.Mdf", "/servers/S/.T.loading", "/servers/S/x.txt.loading-1"})
    EXPECT_EQ(databaseFileOfWorkCopy(other), "") << other;
}

TEST(DatabaseFiles, NewDatabasesNeedALegalNameOfTheirOwn) {
  Loading s;
  s.load("CREATE TABLE t (a int)");
  tsql::ServerFacts facts{"S", "Db", "11.0.2100.60", s.servers.folder("S")};
  tsql::Session session(std::make_shared<tsql::OpenDatabase>(s.file(), facts, 11, sqlite::OpenMode::ReadWrite));
  const auto before = s.servers.databases("S");
  for (const std::string& name : {std::string(129, 'n'), std::string("a\tb"), std::string("../x"), std::string("DB")}) {
    EXPECT_THROW(session.run("EXEC sp_attach_db '" + name + "', '" + s.file().string() + "'", nullptr), DataError);
    EXPECT_THROW(session.run("CREATE DATABASE [" + name + "]", nullptr), DataError) << name;
  }
  EXPECT_EQ(s.servers.databases("S"), before);
}

}  // namespace
}  // namespace qrel
