#include "platform/host/consoleHost.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "platform/error.h"
#include "platform/files.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {
namespace {

TEST(ConsoleHost, PrintsToATextFileAndSaysWhere) {
  struct Fixed : ConsoleHost {
    using ConsoleHost::ConsoleHost;
    LocalTime now() const override { return {2026, 1, 2, 3, 4, 5}; }
  };
  const TemporaryFolder folder;
  std::ostringstream told;
  Fixed host(told);
  host.printFolder = folder.path().string();
  host.print({"Job", "one\r\ntwo\nthree", "Head", true});
  const std::string file = (folder.path() / "Job 2026-01-02 030405.txt").string();
  EXPECT_EQ(files::readWholeFile(file), "Head\r\n\r\none\r\ntwo\r\nthree");
  EXPECT_EQ(told.str(), "qrel: printed to " + file + "\n");
  host.printFolder = (folder.path() / "missing").string();
  EXPECT_THROW(host.print({"Job", "x", "", false}), RuntimeError);
}

}  // namespace
}  // namespace qrel
