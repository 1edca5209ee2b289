// Runs that end by a signal: exit code, messages, and that nothing is left.
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <thread>

#include "tests/console/runQrel.h"
#include "tests/support.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr const char* endless =
    "CREATE TABLE t (a int)\nGO\nINSERT t VALUES (1),(2),(3),(4),(5),(6),(7),(8),(9),(10)\nGO\n"
    "UPDATE t SET a = (SELECT count(*) FROM t a, t b, t c, t d, t e, t f, t g, t h, t i, t j, t k, t l)\n";

class Stop : public testing::Test {
 protected:
  void SetUp() override {
    fs::create_directory(folder.path() / "tmp");
    fs::create_directory(folder.path() / "home");
  }

  // Runs qrel in a process of its own, its messages in the file "err"; its results go to a pipe nobody reads when
  // `noReader`.
  pid_t start(std::vector<std::string> arguments, bool noReader = false) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    ::setenv("QREL_HOME", (folder.path() / "home").c_str(), 1);
    ::setenv("TMPDIR", (folder.path() / "tmp").c_str(), 1);
    int ends[2];
    if (noReader && ::pipe(ends) == 0) {
      ::dup2(ends[1], STDOUT_FILENO);
      ::close(ends[0]);
    }
    std::ofstream err(folder.path() / "err");
    arguments.insert(arguments.begin(), "qrel");
    std::vector<const char*> pointers;
    for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
    const int code = runConsole(static_cast<int>(pointers.size()), pointers.data(), std::cout, err);
    err.close();
    ::_exit(code);
  }
  int codeOf(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  std::string err() const {
    std::ifstream in(folder.path() / "err");
    return {std::istreambuf_iterator<char>(in), {}};
  }
  // All that is there below a folder, but for the settings.
  std::size_t entries(const char* below) const {
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder.path() / below))
      count += entry.path().filename() != "settings.txt" && entry.path().filename() != "servers";
    return count;
  }
  bool waitForEntries(const char* below) const {
    for (int i = 0; i < 1000 && entries(below) == 0; ++i) std::this_thread::sleep_for(10ms);
    return entries(below) > 0;
  }

  TemporaryFolder folder;
};

TEST_F(Stop, EverySignalEndsALoadWithoutATrace) {
  const std::string script = folder.write("endless.sql", endless).string();
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const pid_t load = start({"load", "S/D", script});
    ASSERT_TRUE(waitForEntries("home"));
    std::this_thread::sleep_for(300ms);
    ::kill(load, signal);
    EXPECT_EQ(codeOf(load), 5) << signal;
    EXPECT_EQ(entries("home"), 0u) << signal;
    const pid_t compare = start({"compare", script, script});
    ASSERT_TRUE(waitForEntries("tmp"));
    std::this_thread::sleep_for(300ms);
    ::kill(compare, signal);
    EXPECT_EQ(codeOf(compare), 5) << signal;
    EXPECT_EQ(entries("tmp"), 0u) << signal;
  }
}

// Where nothing asks for a stop, as in reading one long token, the load is ended all the same.
TEST_F(Stop, ALoadThatDoesNotListenIsEnded) {
  const std::string script = folder.write("long.sql", "SELECT '" + std::string(40'000'000, 'x') + "'").string();
  const auto begin = std::chrono::steady_clock::now();
  const pid_t load = start({"load", "S/D", script});
  ASSERT_TRUE(waitForEntries("home"));
  ::kill(load, SIGINT);
  EXPECT_EQ(codeOf(load), 5) << (std::chrono::steady_clock::now() - begin).count();
  EXPECT_EQ(entries("home"), 0u);
}

TEST_F(Stop, AReaderThatHasGoneIsNoFaultAndNothingIsSaid) {
  std::string script;
  for (int i = 0; i < 500; ++i) script += "CREATE TABLE t" + std::to_string(i) + " (a int)\n";
  const std::string file = folder.write("many.sql", script).string();
  EXPECT_EQ(codeOf(start({"objects", file, "--type", "tables"}, true)), 5);
  EXPECT_EQ(err(), "");
  EXPECT_EQ(entries("tmp"), 0u);
  EXPECT_EQ(codeOf(start({"load", "S/D", file}, true)), 0) << "the load is done";
  EXPECT_EQ(err(), "");
}

// A query for each record: nearly all of the time is spent between them.
TEST_F(Stop, AKeyTestEndsAtOnce) {
  std::string script = "CREATE TABLE t (a int NOT NULL)\nINSERT t VALUES (0)";
  for (int i = 1; i < 8000; ++i) script += ",(" + std::to_string(i) + ")";
  ASSERT_EQ(codeOf(start({"load", "S/D", folder.write("many.sql", script).string()})), 0) << err();
  const pid_t test = start({"data", "S/D", "S/D", "--table", "t", "--key", "a", "--validate"});
  std::this_thread::sleep_for(700ms);
  const auto begin = std::chrono::steady_clock::now();
  ::kill(test, SIGINT);
  EXPECT_EQ(codeOf(test), 5) << err();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s) << "also on a machine with other work";
  EXPECT_EQ(err(), "qrel: Operation cancelled by the user.\n");
}

}  // namespace
}  // namespace qrel
