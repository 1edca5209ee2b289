#include "platform/store/folders.h"

#include <gtest/gtest.h>

#include "tests/platform/temporaryFolder.h"

namespace qrel {
namespace {

TEST(Folders, HelpIsTakenFromTheInstallationElseFromTheSourcesAroundTheProgram) {
  const TemporaryFolder folder;
  namespace fs = std::filesystem;
  const fs::path program = folder.path() / "build" / "dev" / "src" / "desktop";
  fs::create_directories(program);
  EXPECT_EQ(findHelp(program), fs::path());
  const fs::path sources = folder.path() / "docs" / "help";
  fs::create_directories(sources);
  EXPECT_EQ(findHelp(program), sources);
  const fs::path installed = folder.path() / "build" / "dev" / "src" / "share" / "quorrel" / "help";
  fs::create_directories(installed);
  EXPECT_EQ(findHelp(program), installed);
}

}  // namespace
}  // namespace qrel
