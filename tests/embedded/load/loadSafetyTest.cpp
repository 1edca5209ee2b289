// Loads beside one another, loads that fail or are stopped, and what is on disk afterwards.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <set>
#include <thread>

#include "platform/error.h"
#include "tests/embedded/loading.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::set<std::string> namesIn(const fs::path& folder) {
  std::set<std::string> names;
  if (fs::exists(folder))
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
  return names;
}

std::string errorOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const RuntimeError& error) {
    return error.description;
  }
  return {};
}

std::string tableWithRows(const std::string& name) {
  std::string script = "CREATE TABLE " + name + " (a int)\nGO\n";
  for (int i = 0; i < 300; ++i) script += "INSERT " + name + " VALUES (1)\n";
  return script;
}

TEST(LoadSafety, TwoLoadsAtOnceLoseNothing) {
  for (const std::string server : {"S", "New"}) {
    Loading s;
    std::vector<std::thread> loads;
    for (const std::string name : {"t1", "t2"}) {
      const fs::path script = s.write(name + ".sql", tableWithRows(name));
      // Each as a process of its own would: with its own view of the servers.
      loads.emplace_back([&s, server, script] {
        EmbeddedServers servers(s.folder.path() / "servers");
        EXPECT_EQ(loadScripts(servers, server, "Db", {script}, {}).rows, 300);
      });
    }
    for (std::thread& load : loads) load.join();
    sqlite::Database database(s.servers.databaseFile(server, "Db"), sqlite::OpenMode::ReadOnly);
    sqlite::Statement rows(database, "select (select count(*) from \"dbo.t1\") + (select count(*) from \"dbo.t2\")");
    ASSERT_TRUE(rows.step());
    EXPECT_EQ(rows.integer(0), 600) << server;
    EXPECT_EQ(namesIn(s.servers.folder(server)), (std::set<std::string>{"Db.mdf", "instance.txt", "master.mdf"}));
  }
}

TEST(LoadSafety, WaitingIsToldAndEndsInASentence) {
  Loading s;
  s.load("CREATE TABLE a (x int)");
  FileLock other = databaseLock(s.file());
  ASSERT_TRUE(other.tryLock());
  LoadOptions options;
  options.waitAtMost = 500ms;
  int told = 0;
  options.waiting = [&] { ++told; };
  const std::string error = errorOf([&] { s.load("CREATE TABLE b (x int)", options); });
  EXPECT_NE(error.find("'S/Db' is being written by another process"), std::string::npos) << error;
  EXPECT_EQ(told, 1);
  options.stop = [&] { return told == 2; };
  options.waiting = [&] { told = 2; };
  options.waitAtMost = 1min;
  EXPECT_TRUE(s.load("CREATE TABLE b (x int)", options).stopped);
  EXPECT_EQ(s.objects(), "a|U\n");
}

TEST(LoadSafety, AFirstLoadThatFailsLeavesNoServerAndNoVersion) {
  TemporaryFolder folder;
  const fs::path root = folder.path() / "servers";
  EmbeddedServers servers(root);
  const fs::path first = folder.write("a.sql", "CREATE TABLE a (x int)");
  const fs::path second = folder.write("b.sql", "CREATE TABLE b (x int)");
  LoadOptions options;
  options.productVersion = "9.0.1399";
  EXPECT_NE(errorOf([&] { loadScripts(servers, "S", "Db", {folder.path() / "none.sql"}, options); }), "");
  EXPECT_FALSE(fs::exists(root));
  options.progress = [&](const std::string&, std::size_t) { fs::remove(second); };
  const std::string error = errorOf([&] { loadScripts(servers, "S", "Db", {first, second}, options); });
  EXPECT_NE(error.find(second.string()), std::string::npos) << error;
  EXPECT_FALSE(fs::exists(root));
  options.progress = nullptr;
  options.stop = [] { return true; };
  EXPECT_TRUE(loadScripts(servers, "S", "Db", {first}, options).stopped);
  EXPECT_FALSE(fs::exists(root));
  options.stop = nullptr;
  loadScripts(servers, "S", "Db", {first}, options);
  EXPECT_EQ(servers.productVersion("S"), "9.0.1399");

  options.productVersion = "8.0.194";
  EXPECT_NE(errorOf([&] { loadScripts(servers, "S", "Db", {second}, options); }), "");
  EXPECT_EQ(servers.productVersion("S"), "9.0.1399");
  loadScripts(servers, "S", "Db", {first}, options);
  EXPECT_EQ(servers.productVersion("S"), "8.0.194");
  EXPECT_EQ(namesIn(root), std::set<std::string>{"S"});
}

TEST(LoadSafety, AFolderThatIsThereBecomesAServerWithWhatItHolds) {
  Loading s;
  s.load("CREATE TABLE a (x int)");
  fs::create_directories(s.folder.path() / "servers" / "Mine");
  fs::copy(s.file(), s.folder.path() / "servers" / "Mine" / "Db.mdf");
  loadScripts(s.servers, "mine", "Db", {s.write("b.sql", "CREATE TABLE b (x int)")}, {});
  EXPECT_EQ(namesIn(s.folder.path() / "servers" / "Mine"),
            (std::set<std::string>{"Db.mdf", "instance.txt", "master.mdf"}));
  EXPECT_EQ(loadScripts(s.servers, "mine", "Db", {s.write("b.sql", "DROP TABLE a\nDROP TABLE b")}, {}).failed.size(),
            0u);
}

TEST(LoadSafety, LinksModesAndReadOnlyFiles) {
  Loading s;
  s.load("CREATE TABLE a (x int)");
  fs::create_directory(s.folder.path() / "far");
  const fs::path real = s.folder.path() / "far" / "real.mdf";
  fs::rename(s.file(), real);
  fs::permissions(real, fs::perms(0640));
  fs::create_symlink("../../far/real.mdf", s.file());
  s.load("CREATE TABLE b (x int)");
  EXPECT_TRUE(fs::is_symlink(s.file()));
  EXPECT_EQ(static_cast<unsigned>(fs::status(real).permissions()), 0640u);
  EXPECT_EQ(s.objects(), "a|U\nb|U\n");
  EXPECT_EQ(namesIn(real.parent_path()), std::set<std::string>{"real.mdf"});

  fs::permissions(real, fs::perms(0444));
  const std::string error = errorOf([&] { s.load("CREATE TABLE c (x int)"); });
  EXPECT_NE(error.find("real.mdf' is read-only"), std::string::npos) << error;
  EXPECT_EQ(s.objects(), "a|U\nb|U\n");
}

TEST(LoadSafety, ALongStatementIsStopped) {
  Loading s;
  s.load("CREATE TABLE t (a int)\nINSERT t VALUES (1),(2),(3),(4),(5),(6),(7),(8),(9),(10)");
  const auto begin = std::chrono::steady_clock::now();
  LoadOptions options;
  options.stop = [&] { return std::chrono::steady_clock::now() - begin > 300ms; };
  EXPECT_TRUE(
      s.load("UPDATE t SET a = (SELECT count(*) FROM t a, t b, t c, t d, t e, t f, t g, t h, t i, t j, t k)", options)
          .stopped);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
  EXPECT_EQ(s.rows("select sum(a) from \"dbo.t\""), "55\n");
  EXPECT_EQ(namesIn(s.servers.folder("S")), (std::set<std::string>{"Db.mdf", "instance.txt", "master.mdf"}));
}

TEST(LoadSafety, EqualMessagesAreCountedAndTheListEnds) {
  Loading s;
  const auto loop = s.load("FROBNICATE\nGO 500\nINSERT none VALUES (1)\nGO 500\n:sqlcmd x");
  ASSERT_EQ(loop.skipped.size(), 2u) << reasons(loop.skipped);
  EXPECT_EQ(loop.skipped[0].times, 500);
  ASSERT_EQ(loop.failed.size(), 1u) << reasons(loop.failed);
  EXPECT_EQ(loop.failed[0].times, 500);
  EXPECT_EQ(loop.statementsSkipped, 501);
  EXPECT_EQ(loop.statementsFailed, 500);

  std::string many;
  for (int i = 0; i < 10010; ++i) many += "RESTORE DATABASE d" + std::to_string(i) + ";\n";
  const auto capped = s.load(many);
  EXPECT_EQ(capped.skipped.size(), LoadReport::mostListed);
  EXPECT_EQ(capped.statementsSkipped, 10010);
  EXPECT_EQ(capped.statements(), 10010);
}

TEST(LoadSafety, StatementsThatWorkLaterAreCountedOnce) {
  Loading s;
  const fs::path first = s.write("a.sql", "INSERT later VALUES (1)\nGO 3\nINSERT never VALUES (1)\n");
  const auto report = loadScripts(s.servers, "S", "Db", {first, s.write("b.sql", "CREATE TABLE later (a int)")}, {});
  EXPECT_EQ(report.rows, 3);
  EXPECT_EQ(report.statementsMade + report.statementsRan, 4);
  EXPECT_EQ(report.statementsFailed, 1);
  EXPECT_EQ(report.statements(), 5);
}

TEST(LoadSafety, WhatAKilledRunLeavesGoesAtTheNextStartAndNothingElse) {
  Loading s;
  s.load("CREATE TABLE a (x int)");
  const char* before = getenv("TMPDIR");
  const std::string kept = before ? before : "";
  fs::create_directory(s.folder.path() / "tmp");
  setenv("TMPDIR", (s.folder.path() / "tmp").c_str(), 1);
  const fs::path mine = s.servers.folder(s.servers.createTemporary());
  const pid_t child = fork();
  if (child == 0) {
    EmbeddedServers servers(s.folder.path() / "servers");
    servers.createTemporary();
    LoadOptions inner;
    inner.progress = [](const std::string&, std::size_t line) {
      if (line > 100) kill(getpid(), SIGKILL);
    };
    LoadOptions options;
    options.progress = [&](const std::string&, std::size_t line) {
      if (line > 100) loadScripts(servers, "New", "Db", {s.write("c.sql", tableWithRows("c"))}, inner);
    };
    loadScripts(servers, "S", "Db", {s.write("b.sql", tableWithRows("b"))}, options);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(namesIn(s.folder.path() / "tmp").size(), 2u);
  EXPECT_GT(namesIn(s.servers.folder("S")).size(), 3u);
  EXPECT_GT(namesIn(s.folder.path() / "servers").size(), 1u);
  EXPECT_EQ(s.servers.list(), std::vector<std::string>{"S"});
  EmbeddedServers(s.folder.path() / "servers").removeLeftovers();
  EXPECT_EQ(namesIn(s.folder.path() / "tmp"), std::set<std::string>{mine.filename().string()});
  EXPECT_EQ(namesIn(s.servers.folder("S")), (std::set<std::string>{"Db.mdf", "instance.txt", "master.mdf"}));
  EXPECT_EQ(namesIn(s.folder.path() / "servers"), std::set<std::string>{"S"});
  if (before)
    setenv("TMPDIR", kept.c_str(), 1);
  else
    unsetenv("TMPDIR");
}

}  // namespace
}  // namespace qrel
