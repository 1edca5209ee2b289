// Loading whole files: what comes in, what goes wrong, and what is on disk afterwards.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "platform/error.h"
#include "tests/embedded/loading.h"

namespace qrel {
namespace {

std::size_t filesIn(const std::filesystem::path& folder) {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) ++count;
  return count;
}

TEST(Load, FoldersInNameOrderWithWhatLaterFilesMake) {
  Loading s;
  std::filesystem::create_directory(s.folder.path() / "scripts");
  s.write("scripts/a.sql",
          "CREATE TABLE child (a int REFERENCES parent)\nGO\nINSERT parent VALUES (5)\nDROP TABLE parent\n");
  s.write("scripts/B.SQL", "ALTER TABLE parent ADD b int\nGO\n-- t\nCREATE TRIGGER t ON child FOR INSERT AS PRINT 1");
  s.write("scripts/c.sql", ":setvar n parent\nCREATE TABLE $(n) (a int PRIMARY KEY)\nALTER TABLE missing ADD c int");
  s.write("scripts/readme.txt", "no script");
  const auto report = loadScripts(s.servers, "S", "Db", {s.folder.path() / "scripts"}, {});
  EXPECT_EQ(report.tables, 2);
  EXPECT_EQ(report.relationships, 1);
  EXPECT_EQ(report.triggers, 1);
  EXPECT_EQ(report.rows, 1);
  ASSERT_EQ(report.failed.size(), 2u) << reasons(report.failed);
  EXPECT_EQ(report.failed[0].firstWords, "DROP TABLE parent");
  EXPECT_EQ(report.failed[1].file, (s.folder.path() / "scripts" / "c.sql").string());
  EXPECT_EQ(report.failed[1].line, 3u);
  EXPECT_EQ(s.source("t"), "-- t\nCREATE TRIGGER t ON child FOR INSERT AS PRINT 1\n");
}

TEST(Load, AddsOrReplacesAndStaysInOneDatabase) {
  Loading s;
  s.load("CREATE TABLE a (x int)\nINSERT a VALUES (1)");
  const auto added = s.load(
      "IF EXISTS (SELECT name FROM master.dbo.sysdatabases WHERE name = N'Shop') DROP DATABASE [Shop]\nGO\n"
      "CREATE DATABASE [Shop] ON PRIMARY (NAME = 'x')\nGO\nUSE Shop\nGO\nCREATE TABLE Shop.dbo.b (x int)\nINSERT "
      "Shop..b VALUES (2)\n"
      "DROP TABLE a\nINSERT Other.dbo.b VALUES (2)");
  EXPECT_EQ(added.tables, 1);
  EXPECT_EQ(added.skipped.size(), 1u) << reasons(added.skipped) << reasons(added.failed);
  EXPECT_EQ(s.objects(), "b|U\n");
  LoadOptions replace;
  replace.replace = true;
  s.load("CREATE TABLE c (x int)", replace);
  EXPECT_EQ(s.objects(), "c|U\n");
  EXPECT_EQ(s.servers.databases("S"), (std::vector<std::string>{"Db", "master"}));
}

TEST(Load, EncodingsGiveTheSameNames) {
  const std::string utf8 = "CREATE TABLE \xC3\xA9 (a int)";
  std::string utf16 = "\xFF\xFE";
  for (const char c : std::string("CREATE TABLE \xE9 (a int)")) (utf16 += c) += '\0';
  for (const std::string& script : {utf8, "\xEF\xBB\xBF" + utf8, utf16, std::string("CREATE TABLE \xE9 (a int)")}) {
    Loading s;
    s.load(script);
    EXPECT_EQ(s.objects(), "\xC3\xA9|U\n");
  }
}

std::string repeated(const std::string& text) {
  std::string all;
  for (int i = 0; i < 20000; ++i) all += text;
  return all;
}

// Whatever a file holds, the load ends, and what stood before the fault is there.
TEST(Load, DamagedScripts) {
  const std::string begin = "CREATE TABLE t (a varbinary(max))\nINSERT t VALUES (0x" + std::string(200000, 'A') + ")\n";
  std::string utf16 = "\xFF\xFE";
  for (const char c : begin) (utf16 += c) += '\0';
  const std::string tails[] = {"PRINT 'open",
                               "/* open /* ",
                               "SELECT [open",
                               "INSERT t VALUES (1, (",
                               "CREATE TABLE u (a int",
                               "IF 1 = 1 BEGIN",
                               "BEGIN TRY",
                               "DECLARE",
                               "EXEC",
                               "GRANT",
                               "\x01\x02\xFF",
                               "CREATE",
                               "ALTER TABLE",
                               "SELECT CASE",
                               "DROP TABLE IF",
                               std::string(300000, ' ') + "x",
                               "SELECT " + std::string(100000, '('),
                               "SELECT " + std::string(100000, '~') + "1",
                               repeated("IF 1=1 ") + "PRINT 1",
                               repeated("BEGIN "),
                               "SELECT " + repeated("CASE WHEN 1=1 THEN ")};
  for (const std::string& tail : tails) {
    Loading s;
    // An open quote costs its whole batch, everything else only what stands behind the fault.
    const bool quote = tail.starts_with("PRINT") || tail.starts_with("/*") || tail.starts_with("SELECT [");
    const auto report = s.load(begin + (quote ? "GO\n" : "") + tail);
    EXPECT_EQ(report.skipped.size() + report.failed.size(), 1u) << tail.substr(0, 30) << reasons(report.skipped);
    EXPECT_EQ(s.rows("select length(a) from \"dbo.t\""), "100000\n") << tail.substr(0, 30);
  }
  for (const std::size_t cut : {std::size_t{3}, utf16.size() - 1, std::size_t{40001}}) {
    Loading s;
    EXPECT_NO_THROW(s.load(std::string_view(utf16).substr(0, cut)));
  }
  Loading empty;
  EXPECT_EQ(empty.load("").statements(), 0);
  EXPECT_EQ(empty.objects(), "");
}

TEST(Load, FilesThatCannotBeRead) {
  Loading s;
  s.load("CREATE TABLE a (x int)");
  std::filesystem::create_directory(s.folder.path() / "empty");
  for (const char* name : {"missing.sql", "empty"}) {
    try {
      loadScripts(s.servers, "S", "Db", {s.write("good.sql", "CREATE TABLE b (x int)"), s.folder.path() / name}, {});
      FAIL() << name;
    } catch (const RuntimeError& error) {
      EXPECT_NE(error.description.find((s.folder.path() / name).string()), std::string::npos) << error.description;
    }
  }
  EXPECT_EQ(s.objects(), "a|U\n");
  EXPECT_THROW(loadScripts(s.servers, "S", "../Db", {s.folder.path() / "good.sql"}, {}), RuntimeError);
}

TEST(Load, AStoppedLoadLeavesTheOldDatabase) {
  Loading s;
  s.load("CREATE TABLE a (x int)");
  LoadOptions options;
  options.replace = true;
  int asked = 0;
  options.stop = [&] { return ++asked > 3; };
  EXPECT_TRUE(
      s.load("CREATE TABLE b (x int)\nCREATE TABLE c (x int)\nCREATE TABLE d (x int)\nCREATE TABLE e (x int)", options)
          .stopped);
  EXPECT_EQ(s.objects(), "a|U\n");
  EXPECT_EQ(filesIn(s.servers.folder("S")), 3u);  // instance.txt, master.mdf, Db.mdf
}

TEST(Load, AKilledLoadLeavesTheOldDatabaseAndItsRestsGoNextTime) {
  Loading s;
  s.load("CREATE TABLE a (x int)");
  const pid_t child = fork();
  if (child == 0) {
    LoadOptions options;
    options.progress = [](const std::string&, std::size_t line) {
      if (line > 100) kill(getpid(), SIGKILL);
    };
    std::string script = "CREATE TABLE b (x int)\n";
    for (int i = 0; i < 500; ++i) script += "INSERT b VALUES (1)\n";
    s.load(script, options);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(s.objects(), "a|U\n");
  EXPECT_GT(filesIn(s.servers.folder("S")), 3u);
  s.load("CREATE TABLE c (x int)");
  EXPECT_EQ(s.objects(), "a|U\nc|U\n");
  EXPECT_EQ(filesIn(s.servers.folder("S")), 3u);
}

TEST(Load, LongBatchesRunInPiecesWithTheirLines) {
  Loading s;
  std::string script = "CREATE TABLE t (a int, b varchar(60))\nDECLARE @v int = 7\n";
  for (int i = 0; i < 4000; ++i)
    script += "INSERT t (a, b) VALUES (" + std::to_string(i) + ", 'a text with\nINSERT in it');\n";
  script += "INSERT t (a) VALUES (@v)\nNONSENSE\n";
  const auto report = s.load(script);
  EXPECT_EQ(report.rows, 4001);
  EXPECT_EQ(reasons(report.failed), "");
  ASSERT_EQ(report.skipped.size(), 1u) << reasons(report.skipped);
  EXPECT_EQ(report.skipped[0].line, 8004u);
}

TEST(EmbeddedServers, InstancesAndTheirNames) {
  TemporaryFolder folder;
  std::filesystem::path temporary;
  {
    EmbeddedServers servers(folder.path() / "none" / "yet");
    EXPECT_TRUE(servers.list().empty());
    servers.create("beta", "8.00.2039");
    servers.create("Alpha");
    EXPECT_EQ(servers.list(), (std::vector<std::string>{"Alpha", "beta"}));
    EXPECT_EQ(servers.productVersion("BETA"), "8.00.2039");
    EXPECT_THROW(servers.create("ALPHA"), RuntimeError);
    for (const char* bad : {"", "a/b", "a\\b", "a:b", ".a", "a\nb"})
      EXPECT_THROW(servers.create(bad), RuntimeError) << bad;
    EXPECT_THROW(servers.create(std::string(129, 'a')), RuntimeError);
    EXPECT_TRUE(servers.createDatabase("alpha", "Db"));
    EXPECT_FALSE(servers.createDatabase("alpha", "dB"));
    EXPECT_EQ(servers.databases("Alpha"), (std::vector<std::string>{"Db", "master"}));
    EXPECT_TRUE(servers.dropDatabase("Alpha", "DB"));
    EXPECT_FALSE(servers.dropDatabase("Alpha", "DB"));
    const std::string name = servers.createTemporary();
    temporary = servers.folder(name);
    EXPECT_TRUE(servers.exists(name) && std::filesystem::exists(temporary));
    EXPECT_EQ(servers.list().size(), 2u);
  }
  EXPECT_FALSE(std::filesystem::exists(temporary));
}

}  // namespace
}  // namespace qrel
