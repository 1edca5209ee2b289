#include "embedded/embeddedProvider.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <tuple>

#include "embedded/sqlite/sqlite.h"
#include "tests/embedded/embeddedServer.h"

namespace qrel {
namespace {

constexpr const char* endless =
    "WITH c (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < 2000000000) SELECT COUNT(*) FROM c";

ErrorInfo openError(EmbeddedServer& server, const std::string& database) {
  try {
    server.connect(database);
  } catch (const DataError& error) {
    return {error.number, error.description};
  }
  return {};
}

TEST(EmbeddedProvider, SaysWhyADatabaseCannotBeHad) {
  EmbeddedServer server;
  const auto folder = server.servers.folder("S");
  std::ofstream(folder / "text.mdf") << "this is no database at all, whatever its name may say";
  std::ofstream(folder / "empty.mdf");
  EXPECT_EQ(openError(server, "shop").number, 0);
  EXPECT_EQ(openError(server, "SHOP").number, 0);
  EXPECT_EQ(openError(server, "").number, 0);
  for (const auto& [database, words] : {std::pair{"nope", "Cannot open database \"nope\" requested by the login."},
                                        {"text", "text.mdf' is not a database"},
                                        {"empty", "empty.mdf' is not a database"}}) {
    const ErrorInfo error = openError(server, database);
    EXPECT_EQ(error.number, errorNumber::cannotConnect) << database;
    EXPECT_NE(error.description.find(words), std::string::npos) << error.description;
  }
  EXPECT_FALSE(std::filesystem::exists(folder / "nope.mdf"));
}

TEST(EmbeddedProvider, FilesThatCannotBeHadAreToldWithTheirFolder) {
  TemporaryFolder folder;
  const auto message = [&](const std::string& name, sqlite::OpenMode mode) -> std::string {
    try {
      sqlite::Database database(folder.path() / name, mode);
      database.execute("create table t (a)");
    } catch (const DataError& error) {
      return error.description;
    }
    return "";
  };
  std::filesystem::create_directory(folder.path() / "folder.mdf");
  const std::string where = folder.path().string();
  const std::tuple<const char*, sqlite::OpenMode, std::string> cases[] = {
      {"a.mdf", sqlite::OpenMode::ReadOnly, "The database file '" + where + "/a.mdf' does not exist."},
      {"none/a.mdf", sqlite::OpenMode::ReadOnly, "there is no folder '" + where + "/none'. Make the folder"},
      {"none/a.mdf", sqlite::OpenMode::Create, "there is no folder '" + where + "/none'. Make the folder"},
      {"folder.mdf", sqlite::OpenMode::ReadWrite, "it is a folder."},
      {"none/a.mdf.loading-4711", sqlite::OpenMode::Create, "The database file '" + where + "/none/a.mdf' cannot be"},
  };
  for (const auto& [name, mode, words] : cases) {
    const std::string told = message(name, mode);
    EXPECT_NE(told.find(words), std::string::npos) << name << ": " << told;
    EXPECT_EQ(told.find("loading"), std::string::npos) << told;
  }
}

TEST(EmbeddedProvider, SeesTheFileThatTookTheOldOnesPlace) {
  EmbeddedServer server;
  server.load("CREATE TABLE a (id int)");
  server.servers.createDatabase("S", "other");
  server.load("CREATE TABLE b (id int)", "other");
  EXPECT_EQ(server.line("SELECT COUNT(*) FROM a"), "0");
  const auto folder = server.servers.folder("S");
  std::filesystem::rename(folder / "other.mdf", folder / "shop.mdf");
  EXPECT_EQ(server.line("SELECT COUNT(*) FROM b"), "0");
  EXPECT_EQ(server.error("SELECT COUNT(*) FROM a").number, errorNumber::invalidObjectName);
}

TEST(EmbeddedProvider, NoticesWhatBecameOfAFileItHadOpen) {
  EmbeddedServer server;
  const auto folder = server.servers.folder("S");
  const std::string version = "SELECT CAST(SERVERPROPERTY('ProductVersion') AS varchar(20))";
  EXPECT_EQ(server.line(version), defaultProductVersion);
  server.servers.setVersion("S", "8.0.194");
  EXPECT_EQ(server.line(version), "8.0.194");
  std::filesystem::resize_file(folder / "shop.mdf", 0);
  EXPECT_EQ(openError(server, "shop").number, errorNumber::cannotConnect) << "emptied";
  server.line("SELECT 1", "master");
  std::filesystem::remove(folder / "master.mdf");
  EXPECT_EQ(openError(server, "master").number, errorNumber::cannotConnect) << "gone";
  server.servers.createDatabase("S", "last");
  server.line("SELECT 1", "last");
  std::filesystem::remove(folder / "instance.txt");
  EXPECT_EQ(openError(server, "last").number, errorNumber::cannotConnect) << "no server any more";
}

TEST(EmbeddedProvider, ARunReadsOneStateOfADatabase) {
  EmbeddedServer server;
  server.load("CREATE TABLE a (n int)\nINSERT a VALUES (1)");
  const auto count = [&](const char* table) {
    const ErrorInfo error = server.error("SELECT COUNT(*) FROM " + std::string(table));
    return error.number == 0 ? server.line("SELECT COUNT(*) FROM " + std::string(table)) : "none";
  };
  auto held = server.provider.holdState();
  EXPECT_EQ(count("a"), "1");
  server.load("DROP TABLE a\nCREATE TABLE b (n int)");
  {
    const auto inner = server.provider.holdState();
    // More connections at once than were open before the change.
    const auto first = server.connect();
    const auto second = server.connect();
    const CommandResult one = first->execute({"SELECT n FROM a", 30, {}});
    const CommandResult two = second->execute({"SELECT n FROM a", 30, {}});
    EXPECT_EQ(one.rows->count() + two.rows->count(), 2);
    EXPECT_EQ(count("a") + count("b"), "1none");
    EXPECT_EQ(server.line("SELECT COUNT(*) FROM shop.dbo.a", "master"), "1") << "by another database's connection";
    EXPECT_EQ(server.line("EXEC ('USE shop SELECT COUNT(*) FROM a')", "master"), "1");
  }
  EXPECT_EQ(count("a"), "1") << "the outer run goes on";
  std::filesystem::remove(server.servers.databaseFile("S", "shop"));
  EXPECT_EQ(count("a"), "1") << "although it was dropped";
  server.servers.createDatabase("S", "shop");
  EXPECT_EQ(count("a"), "1");
  held.reset();
  EXPECT_EQ(count("a"), "none");
  server.load("CREATE TABLE b (n int)");
  EXPECT_EQ(count("b"), "0");
  held = server.provider.holdState();
  EXPECT_EQ(count("b"), "0") << "a new run, a new state";
}

TEST(EmbeddedProvider, TimeOutAndInterruptEndAQuery) {
  EmbeddedServer server;
  const auto connection = server.connect();
  try {
    connection->execute({endless, 1, {}});
    ADD_FAILURE() << "no time-out";
  } catch (const DataError& error) {
    EXPECT_EQ(error.number, errorNumber::timeout);
    EXPECT_EQ(error.sql, endless);
  }
  std::thread other([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    connection->interrupt();
  });
  try {
    connection->execute({endless, 0, {}});
    ADD_FAILURE() << "not interrupted";
  } catch (const DataError& error) {
    EXPECT_EQ(error.description, "Operation canceled.");
  }
  other.join();
  EXPECT_EQ(connection->execute({"SELECT 1", 30, {}}).rows->count(), 1);
}

TEST(EmbeddedProvider, ALockedFileIsToldInWords) {
  EmbeddedServer server;
  server.load("CREATE TABLE a (id int)");
  sqlite::Database holder(server.servers.databaseFile("S", "shop"), sqlite::OpenMode::ReadWrite);
  holder.execute("begin exclusive");
  const ErrorInfo error = server.error("SELECT id FROM a");
  EXPECT_EQ(error.number, errorNumber::cannotConnect);
  EXPECT_NE(error.description.find("is in use by another program"), std::string::npos) << error.description;
}

TEST(EmbeddedProvider, UseWithinExecEndsWithIt) {
  EmbeddedServer server;
  for (const char* name : {"other", "third"}) server.servers.createDatabase("S", name);
  server.load("CREATE TABLE a (n int)\nINSERT a VALUES (1)");
  server.load("CREATE TABLE b (n int)\nINSERT b VALUES (2)", "other");
  EXPECT_EQ(server.line("EXEC ('USE other') SELECT DB_NAME() + (SELECT 'a' FROM a)"), "shopa");
  EXPECT_EQ(server.line("EXEC ('USE other EXEC (''USE third'') SELECT n FROM b')"), "2");
  const char* const recursion =
      "DECLARE @s nvarchar(99) SET @s = N'USE other USE third EXEC sp_executesql @s, N''@s nvarchar(99)'', @s' "
      "EXEC sp_executesql @s, N'@s nvarchar(99)', @s";
  EXPECT_NE(server.error(recursion).description.find("nesting level exceeded"), std::string::npos);
}

}  // namespace
}  // namespace qrel
