// What the console does when its settings can't be kept or read.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "platform/fileFaults.h"
#include "platform/files.h"
#include "tests/console/consoleTest.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

class ConsoleSettings : public ConsoleTest {
 protected:
  void load(const std::string& server) { ConsoleTest::load(server + "/D", "CREATE TABLE t (a int)"); }
  static std::string listed() { return runQrel({"servers"}).out; }

  fs::path file = folder.path() / "settings.txt";
};

// Each call on the settings' file fails in turn, alone or with all that follow: the list is the one before or the one
// behind the change, and the exit code says which.
TEST_F(ConsoleSettings, AServerIsAddedOrRemovedInFullOrNotAtAll) {
  for (const char* server : {"d", "e", "f"}) {
    load(server);
    ASSERT_EQ(runQrel({"servers", "add", server}).code, 0);
  }
  const std::string bytes = files::readWholeFile(file);
  const std::string all = listed();
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"servers", "remove", "d", "--yes"}, {"servers", "add", "g"}}) {
    if (command.back() == "g") load("g");
    const std::string before = listed();
    ASSERT_EQ(runQrel(command).code, 0);
    const std::string after = listed();
    ASSERT_NE(before, after);
    for (const bool allThatFollow : {false, true}) {
      bool reached = true;
      for (int failing = 0; reached; ++failing) {
        ASSERT_LT(failing, 100);
        files::writeAtomically(file, bytes);
        int call = 0;
        QrelRun run;
        {
          const files::FaultScope fault([&](files::Operation, const fs::path& path) {
            if (path.filename() != file.filename()) return 0;
            const int now = call++;
            return now == failing || (allThatFollow && now > failing) ? ENOSPC : 0;
          });
          run = runQrel(command);
        }
        reached = call > failing;
        const std::string list = listed();
        EXPECT_TRUE(list == after || list == before) << list;
        EXPECT_EQ(run.code, list == before || run.code != 0 ? 3 : 0) << command.back() << ' ' << failing;
        EXPECT_EQ(run.code != 0, run.err.find("settings.txt") != std::string::npos) << run.err;
      }
    }
    files::writeAtomically(file, bytes);
  }
  EXPECT_EQ(listed().substr(0, 1), all.substr(0, 1));
}

TEST_F(ConsoleSettings, ServersAddedAtOnceAreAllThere) {
  const std::vector<std::string> names = {"a", "b", "c", "d"};
  for (const std::string& name : names) load(name);
  std::vector<pid_t> children;
  for (const std::string& name : names) {
    const pid_t child = fork();
    if (child == 0) _exit(runQrel({"servers", "add", name}).code);
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  const std::string list = listed();
  for (const std::string& name : names)
    EXPECT_NE(list.find(name + "\tWindows authentication"), std::string::npos) << list;
}

TEST_F(ConsoleSettings, DamagedOnesEndEachCommandAndStayAsTheyAre) {
  load("s");
  const std::string good = "[Software\\Qrel\\Comparisons]\nCaseSensitive = 0\n";
  for (const std::string& bytes : {good + std::string(100, '\0'), good + "Ignor", good + "\xE9\n"}) {
    files::writeAtomically(file, bytes);
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"compare", "s/D", "s/D"}, {"servers", "add", "s"}, {"options"}}) {
      const QrelRun run = runQrel(command);
      EXPECT_EQ(run.code, 3) << command.front();
      EXPECT_NE(run.err.find("settings.txt' cannot be read: line 3"), std::string::npos) << run.err;
    }
    EXPECT_EQ(files::readWholeFile(file), bytes);
  }
  fs::remove(file);
  fs::create_directory(file);
  EXPECT_EQ(runQrel({"servers", "add", "s"}).code, 3);
  EXPECT_TRUE(fs::is_directory(file));
}

TEST_F(ConsoleSettings, AComparisonThatItsFilesDoNotAllowIsNoVerdict) {
  load("s");
  for (const char* name : {"qrel_ignored_cols_struct.ini", "qrel_ignored_cols_data.ini", "qrel_tables_comps.ini"}) {
    const fs::path damaged = folder.write(name, "[s.D.t]\r\n0=a\r\n[s.D");
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"compare", "s/D", "s/D", "--types", "tables"},
          {"data", "s/D", "s/D", "--table", "t"}}) {
      const QrelRun run = runQrel(command);
      EXPECT_EQ(run.code, 3) << name;
      EXPECT_NE(run.err.find(std::string(name) + "' cannot be read: line 3"), std::string::npos) << run.err;
      EXPECT_EQ(run.out, "");
    }
    fs::remove(damaged);
  }
}

TEST_F(ConsoleSettings, ComparingNeedsNoSettingsThatCanBeWritten) {
  load("s");
  ASSERT_EQ(runQrel({"servers", "add", "s"}).code, 0);
  files::writeAtomically(file,
                         "[Software\\Qrel\\Servers]\nCount = 2147483647\n\n[Software\\Qrel\\Servers\\Server1]\n"
                         "Name = \"s\"\n");
  const files::FaultScope fault([&](files::Operation operation, const fs::path& path) {
    return path.filename() == file.filename() && operation != files::Operation::Read &&
                   operation != files::Operation::Open
               ? EROFS
               : 0;
  });
  for (const char* command : {"compare", "data"}) {
    const QrelRun run = runQrel({command, "s/D", "s/D", command == std::string("data") ? "--table" : "--types",
                                 command == std::string("data") ? "t" : "tables"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.err, "");
  }
  EXPECT_EQ(runQrel({"servers", "remove", "s", "--yes"}).code, 3);
}

}  // namespace
}  // namespace qrel
