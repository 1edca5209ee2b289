// Every read, write, rename, sync and open that a command does on its files fails once (where not thorough: each of the
// first ones): the files are then the old or
// the new ones, whole, and the exit code tells no better than what happened.
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "tests/console/failingCall.h"
#include "tests/console/runQrel.h"
#include "tests/support.h"
#include "tests/thorough.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

struct SystemFault {
  SystemCall call;
  int error;
  const char* name;
  bool andAllAfter = false;
};

constexpr SystemFault faults[] = {
    {SystemCall::Open, EMFILE, "open"},   {SystemCall::Read, EIO, "read"},
    {SystemCall::Write, ENOSPC, "write"}, {SystemCall::Write, ENOSPC, "write and all after it", true},
    {SystemCall::Sync, EIO, "sync"},      {SystemCall::Rename, EACCES, "rename"},
};
constexpr long most = 300;

std::string bytesOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class Faults : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("QREL_HOME", home().c_str(), 1);
    fs::create_directory(home());
  }
  void TearDown() override { unsetenv("QREL_HOME"); }

  std::string home() const { return (folder.path() / "home").string(); }
  fs::path kept() const { return folder.path() / "kept"; }

  static QrelRun succeed(const std::vector<std::string>& arguments) {
    QrelRun run = runQrel(arguments);
    EXPECT_LE(run.code, 1) << run.err;
    return run;
  }

  // All files of the folder by their name below it.
  static std::map<std::string, std::string> filesOf(const fs::path& of) {
    std::map<std::string, std::string> files;
    for (const auto& each : fs::recursive_directory_iterator(of))
      if (each.is_regular_file()) files[fs::relative(each.path(), of).string()] = bytesOf(each.path());
    return files;
  }

  void keep() { fs::copy(home(), kept(), fs::copy_options::recursive); }
  void restore() const {
    fs::remove_all(home());
    fs::copy(kept(), home(), fs::copy_options::recursive);
  }

  // The first column of a list, without dates and ids.
  static std::string namesOf(const std::string& list) {
    std::istringstream lines(list);
    std::string names;
    for (std::string line; std::getline(lines, line);) names += line.substr(0, line.find('\t')) + '\n';
    return names;
  }

  // Runs the command with each fault at each place and has every outcome checked. Counts the runs that a fault met.
  void withEachFault(const std::vector<std::string>& command, const std::function<void(const QrelRun&)>& check) {
    long met = 0;
    for (const SystemFault& fault : faults) {
      for (long nth = 1; nth <= most; nth = nextPlace(nth)) {
        SCOPED_TRACE(std::string(fault.name) + " number " + std::to_string(nth));
        QrelRun run;
        {
          FailingCall failing(fault.call, nth, fault.error, home(), fault.andAllAfter);
          run = runQrel(command);
          if (!failing.failed()) break;
        }
        ++met;
        check(run);
        if (HasFailure()) return;
      }
    }
    EXPECT_GT(met, 10) << "the faults met nothing";
  }

  TemporaryFolder folder;
};

constexpr const char* oldScript =
    "create table a (x int primary key, y varchar(20) default 'q')\ngo\ncreate view v as select x from a\n";
constexpr const char* newScript =
    "create table b (z int)\ninsert b values (1)\ninsert b values (2)\ngo\ncreate procedure p as select z from b\n";

TEST_F(Faults, ALoadLeavesTheOldDatabaseOrTheNewOne) {
  succeed({"load", "S/D", folder.write("old.sql", oldScript).string()});
  const std::vector<std::string> command = {"load", "S/D", folder.write("new.sql", newScript).string(), "--add"};
  keep();
  const std::string file = home() + "/servers/S/D.mdf";
  const std::string before = bytesOf(file);
  const std::string masterBefore = bytesOf(home() + "/servers/S/master.mdf");
  succeed(command);
  const std::string after = namesOf(succeed({"objects", "S/D"}).out);
  const std::string rows = succeed({"data", "S/D", "S/D", "--table", "b"}).out;
  restore();
  std::set<std::string> names;
  for (const auto& [name, bytes] : filesOf(home())) names.insert(name);

  withEachFault(command, [&](const QrelRun& run) {
    const bool old = bytesOf(file) == before;
    if (run.code == 0) {
      EXPECT_FALSE(old) << "told as loaded";
    } else {
      EXPECT_FALSE(run.err.empty());
      EXPECT_TRUE(run.code == 3 || run.code == 4) << run.code << run.err;
    }
    if (!old) {
      EXPECT_EQ(namesOf(succeed({"objects", "S/D"}).out), after);
      EXPECT_EQ(succeed({"data", "S/D", "S/D", "--table", "b"}).out.substr(0, 100), rows.substr(0, 100));
    }
    if (run.err.find("Nothing was changed") != std::string::npos) {
      EXPECT_TRUE(old) << run.err;
    }
    EXPECT_EQ(bytesOf(home() + "/servers/S/master.mdf"), masterBefore);
    for (const auto& [name, bytes] : filesOf(home()))
      EXPECT_TRUE(names.contains(name) || name.find("lock") != std::string::npos) << "left behind: " << name;
    if (!old || HasFailure()) restore();
  });
}

TEST_F(Faults, AFirstLoadLeavesAServerOrNone) {
  keep();
  withEachFault({"load", "S/D", folder.write("new.sql", newScript).string(), "--add"}, [&](const QrelRun& run) {
    if (run.code == 0) {
      EXPECT_EQ(succeed({"databases", "S"}).out, "D\nmaster\n");
      EXPECT_EQ(succeed({"compare", "S/D", "S/D"}).code, 0);
    } else {
      EXPECT_FALSE(run.err.empty());
      // Either nothing of it is there, or all of it.
      if (fs::exists(home() + "/servers/S")) {
        EXPECT_EQ(succeed({"databases", "S"}).out, "D\nmaster\n") << run.err;
      }
    }
    restore();
  });
}

TEST_F(Faults, AServerIsAddedOrNotAndNoneIsLost) {
  for (const char* server : {"d", "e", "f"})
    succeed({"load", std::string(server) + "/V", folder.write("s.sql", oldScript).string()});
  succeed({"servers", "add", "d"});
  succeed({"servers", "add", "e"});
  const std::string before = succeed({"servers"}).out;
  keep();
  succeed({"servers", "add", "f"});
  const std::string after = succeed({"servers"}).out;
  restore();
  withEachFault({"servers", "add", "f"}, [&](const QrelRun& run) {
    const std::string now = succeed({"servers"}).out;
    EXPECT_TRUE(now == before || now == after) << now;
    if (run.code == 0) {
      EXPECT_EQ(now, after) << "told as added";
    }
    if (now != before) restore();
  });
}

TEST_F(Faults, AServerIsRemovedOrNotAndNoneIsLost) {
  for (const char* server : {"d", "e", "f"}) {
    succeed({"load", std::string(server) + "/V", folder.write("s.sql", oldScript).string()});
    succeed({"servers", "add", server});
  }
  const std::string before = succeed({"servers"}).out;
  keep();
  succeed({"servers", "remove", "d", "--yes"});
  const std::string after = succeed({"servers"}).out;
  restore();
  withEachFault({"servers", "remove", "d", "--yes"}, [&](const QrelRun& run) {
    const std::string now = succeed({"servers"}).out;
    EXPECT_TRUE(now == before || now == after) << now;
    if (run.code == 0) {
      EXPECT_EQ(now, after) << "told as removed";
    }
    if (now != before) restore();
  });
}

// A verdict is the true one, or the run says that it is incomplete.
TEST_F(Faults, AComparisonIsTrueOrIncompleteAndChangesNothing) {
  succeed({"load", "S/A", folder.write("a.sql", oldScript).string()});
  succeed({"load", "S/B", folder.write("b.sql", std::string(oldScript) + "go\n" + newScript).string()});
  const auto files = filesOf(home() + "/servers");
  const auto withoutTime = [](const std::string& report) { return report.substr(0, report.find("Time Elapsed")); };
  const std::vector<std::string> command = {"compare", "S/A", "S/B", "--types", "tables,views,procedures"};
  const QrelRun whole = succeed(command);
  withEachFault(command, [&](const QrelRun& run) {
    if (run.code <= 1) {
      EXPECT_EQ(run.code, whole.code) << run.err;
      EXPECT_EQ(withoutTime(run.out), withoutTime(whole.out));
    } else {
      EXPECT_TRUE(run.code == 3 || run.code == 4) << run.code;
      EXPECT_FALSE(run.err.empty());
    }
    EXPECT_EQ(filesOf(home() + "/servers"), files);
  });
}

}  // namespace
}  // namespace qrel
