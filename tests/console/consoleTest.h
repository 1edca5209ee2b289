// The console program with a folder of its own for settings, profile files and embedded servers.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/console/runQrel.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {

class ConsoleTest : public ::testing::Test {
 protected:
  ConsoleTest() { setenv("QREL_HOME", folder.path().c_str(), 1); }
  ~ConsoleTest() override { unsetenv("QREL_HOME"); }

  // The exit code; what was printed and told stands in `out` and `err`.
  int run(const std::vector<std::string>& arguments) {
    QrelRun result = runQrel(arguments);
    out = std::move(result.out);
    err = std::move(result.err);
    return result.code;
  }
  // Loads a script of which every statement must be understood.
  void load(const std::string& database, const std::string& script) {
    ASSERT_EQ(run({"load", database, file("script.sql", script)}), 0) << err;
  }
  bool printed(const std::string& text) const { return out.find(text) != std::string::npos; }
  bool told(const std::string& text) const { return err.find(text) != std::string::npos; }
  // A path in the folder, and that of a file written there.
  std::string path(const std::string& name) const { return (folder.path() / name).string(); }
  std::string file(const std::string& name, const std::string& content) { return folder.write(name, content).string(); }

  TemporaryFolder folder;
  std::string out, err;
};

}  // namespace qrel
