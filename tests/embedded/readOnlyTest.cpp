// Query connections change nothing, whatever they are sent and wherever the files lie.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "embedded/session/session.h"
#include "tests/embedded/embeddedServer.h"
#include "tests/embedded/folderState.h"

namespace qrel {
namespace {

TEST(ReadOnly, RefusesWhateverChangesSomething) {
  EmbeddedServer server;
  server.load("CREATE TABLE t (a int)\nINSERT t VALUES (1)\nGO\nCREATE PROCEDURE p AS SELECT 1");
  server.servers.createDatabase("S", "other");
  const auto before = stateOf(server.folder.path());
  const char* const changes[] = {
      "DROP TABLE t",
      "SELECT a FROM t WHERE a = ''; drop table t; --'",
      "CREATE TABLE u (a int)",
      "ALTER TABLE t ADD b int",
      "TRUNCATE TABLE t",
      "INSERT t VALUES (2)",
      "UPDATE t SET a = 2",
      "DELETE FROM t",
      "SELECT a INTO u FROM t",
      "WITH c AS (SELECT a FROM t) SELECT a INTO u FROM c",
      "CREATE DATABASE fresh",
      "DROP DATABASE other",
      "USE other DROP TABLE t",
      "EXEC ('DROP TABLE t')",
      "EXEC ('USE other EXEC (''CREATE TABLE u (a int)'')')",
      "EXEC sp_executesql N'DELETE FROM t'",
      "EXEC sp_rename 't', 'u'",
      "sp_rename 't', 'u'",
      "EXEC sp_attach_db 'fresh', '/tmp/some.mdf'",
      "EXEC sp_executesql N'EXEC sp_attach_single_file_db ''fresh'', ''/tmp/some.mdf'''",
      "EXEC sp_configure 'x', 1",
      "GRANT SELECT ON t TO public",
      "BEGIN TRANSACTION INSERT t VALUES (2) COMMIT",
      "SET IDENTITY_INSERT t ON",
      "IF 1 = 1 BEGIN DROP PROCEDURE p END",
      "MERGE t USING t AS s ON 1 = 1 WHEN MATCHED THEN DELETE;",
      "BACKUP DATABASE shop TO DISK = 'x'",
  };
  for (const char* sql : changes) {
    const ErrorInfo error = server.error(sql);
    EXPECT_EQ(error.number, tsql::permissionDenied) << sql << ": " << error.description;
    EXPECT_NE(error.description.find("a connection for queries reads and changes nothing"), std::string::npos)
        << error.description;
  }
  EXPECT_EQ(server.line("DECLARE @n int SET @n = 4 WHILE @n < 6 SET @n = @n + 1 SELECT @n"), "6");
  EXPECT_EQ(server.line("BEGIN TRANSACTION SELECT a FROM t COMMIT"), "1");
  EXPECT_EQ(server.line("IF 1 = 2 DROP TABLE t ELSE SELECT a FROM t"), "1");
  EXPECT_EQ(stateOf(server.folder.path()), before);
}

TEST(ReadOnly, OnlyAProcedureCommandAttaches) {
  EmbeddedServer server;
  server.load("CREATE TABLE t (a int)");
  const auto copy = server.folder.path() / "elsewhere.mdf";
  std::filesystem::copy_file(server.servers.databaseFile("S", "shop"), copy);
  const auto connection = server.connect("master");
  const auto attach = [&](const std::string& procedure, const std::string& name, const std::string& file) {
    CommandRequest request{procedure, 30, {Value::ofText(name), Value::ofText(file)}};
    request.isProcedure = true;
    try {
      connection->execute(request);
    } catch (const DataError& error) {
      return error.description;
    }
    return std::string();
  };
  EXPECT_EQ(attach("sp_attach_db", "Second", copy.string()), "");
  EXPECT_EQ(attach("[dbo].[SP_ATTACH_SINGLE_FILE_DB]", "Third", copy.string()), "");
  EXPECT_EQ(server.line("SELECT COUNT(*) FROM t", "Second") + server.line("SELECT COUNT(*) FROM t", "third"), "00");
  EXPECT_NE(attach("sp_attach_db", "Second", copy.string()), "") << "there is one of this name";
  const auto changing = server.folder.write("changing.mdf", "");
  std::filesystem::copy_file(copy, changing, std::filesystem::copy_options::overwrite_existing);
  server.folder.write("changing.mdf-journal", "half of a change");
  EXPECT_NE(attach("sp_attach_db", "Fourth", changing.string()).find("It is being changed"), std::string::npos);
  EXPECT_NE(attach("sp_rename", "t", "u").find("EXECUTE permission was denied"), std::string::npos);
  EXPECT_NE(attach("sp_executesql", "EXEC sp_attach_db 'Fourth', '" + copy.string() + "'", "@x int").find("denied"),
            std::string::npos);
  EXPECT_NE(attach("sp_attach_db 'x', 'y'; --", "a", "b").find("Could not find stored procedure"), std::string::npos);
  EXPECT_EQ(server.servers.databases("S"), (std::vector<std::string>{"master", "Second", "shop", "Third"}));
}

// A transaction that was going on when its program was killed, as it lies on the disk.
TEST(ReadOnly, AFileInTheMiddleOfAChangeIsToldInWords) {
  EmbeddedServer server;
  server.load("CREATE TABLE t (a int)\nINSERT t VALUES (1)");
  const auto file = server.servers.databaseFile("S", "shop");
  const auto killed = server.servers.folder("S") / "killed.mdf";
  {
    sqlite::Database writer(file, sqlite::OpenMode::ReadWrite);
    writer.execute(
        "pragma cache_size = 1; begin; create table filler (a); insert into filler values (zeroblob(90000))");
    std::filesystem::copy_file(file, killed);
    std::filesystem::copy_file(file.string() + "-journal", killed.string() + "-journal");
    writer.execute("rollback");
  }
  const auto before = stateOf(server.folder.path());
  const ErrorInfo error = server.error("SELECT a FROM t", "killed");
  EXPECT_EQ(error.number, errorNumber::cannotConnect);
  EXPECT_NE(error.description.find("a program that ended before it was done"), std::string::npos) << error.description;
  EXPECT_EQ(stateOf(server.folder.path()), before);
  EXPECT_EQ(server.line("SELECT a FROM t"), "1");
  // And what is said to help does.
  LoadOptions replace;
  replace.replace = true;
  loadScripts(server.servers, "S", "killed", {server.folder.write("s.sql", "CREATE TABLE u (a int)")}, replace);
  EXPECT_EQ(server.line("SELECT COUNT(*) FROM u", "killed"), "0");
}

// Another user for the length of a scope; root may read and write everything.
class AsNobody {
 public:
  AsNobody() : changed(geteuid() == 0 && seteuid(65534) == 0) {}
  ~AsNobody() {
    if (changed && seteuid(0) != 0) std::abort();
  }
  const bool changed;
};

TEST(ReadOnly, ReadsWhatMayOnlyBeRead) {
  namespace fs = std::filesystem;
  EmbeddedServer server;
  server.load("CREATE TABLE t (a int)\nINSERT t VALUES (1)");
  const auto folder = server.servers.folder("S");
  const fs::perms readAll = fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read;
  const fs::perms enterAll = readAll | fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
  const auto unreadable = folder / "unreadable.mdf";
  fs::copy_file(folder / "shop.mdf", unreadable);
  for (const auto& entry : fs::directory_iterator(folder)) fs::permissions(entry.path(), readAll);
  fs::permissions(unreadable, fs::perms::none);
  for (const auto& each : {folder, folder.parent_path(), server.folder.path()}) fs::permissions(each, enterAll);
  {
    const AsNobody nobody;
    EXPECT_EQ(server.line("SELECT a FROM t"), "1");
    if (nobody.changed || geteuid() != 0) {
      const ErrorInfo error = server.error("SELECT a FROM t", "unreadable");
      EXPECT_EQ(error.number, errorNumber::cannotConnect);
      EXPECT_NE(error.description.find("you have no right to read it"), std::string::npos) << error.description;
    }
  }
  for (const auto& each : {server.folder.path(), folder.parent_path(), folder})
    fs::permissions(each, enterAll | fs::perms::owner_write);
}

}  // namespace
}  // namespace qrel
