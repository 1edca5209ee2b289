#include "platform/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/error.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

unsigned modeOf(const fs::path& path) { return static_cast<unsigned>(fs::status(path).permissions()) & 0777u; }

TEST(Files, WritesReadsAppendsAndRemoves) {
  const TemporaryFolder folder;
  const fs::path file = folder.path() / "a.txt";
  EXPECT_FALSE(files::exists(file));
  EXPECT_FALSE(files::exists(folder.path()));
  const std::string bytes = std::string("line\r\n\0\xFF", 8) + std::string(200'000, 'x');
  files::writeAtomically(file, bytes);
  files::appendLine(file, "more\n");
  EXPECT_EQ(files::readWholeFile(file), bytes + "more\n");
  files::writeAtomically(file, "");
  EXPECT_EQ(files::readWholeFile(file), "");
  files::removeFile(file);
  files::removeFile(file);
  EXPECT_FALSE(files::exists(file));
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(Files, ReplacingKeepsModeAndLinks) {
  const TemporaryFolder folder;
  const fs::path file = folder.path() / "real";
  files::writeAtomically(file, "old");
  fs::permissions(file, fs::perms(0640));
  fs::create_symlink("real", folder.path() / "link");
  files::writeAtomically(folder.path() / "link", "new");
  EXPECT_TRUE(fs::is_symlink(folder.path() / "link"));
  EXPECT_EQ(files::readWholeFile(file), "new");
  EXPECT_EQ(modeOf(file), 0640u);
  files::writeAtomically(file, "secret", files::Access::OwnerOnly);
  EXPECT_EQ(modeOf(file), 0600u);
}

// The error's number for writing to a path, whose name must stand in the message.
std::int32_t writeError(const fs::path& path) {
  try {
    files::writeAtomically(path, "x");
  } catch (const RuntimeError& error) {
    EXPECT_NE(error.description.find(path.string()), std::string::npos) << error.description;
    return error.number;
  }
  return 0;
}

TEST(Files, FailuresNameThePath) {
  const TemporaryFolder folder;
  EXPECT_EQ(writeError(folder.path() / "missing" / "a"), errorNumber::pathAccess);
  EXPECT_EQ(writeError(folder.path()), errorNumber::pathAccess);
  EXPECT_EQ(writeError(folder.path() / std::string(300, 'n')), errorNumber::pathAccess);
  try {
    files::readWholeFile(folder.path() / "none");
    ADD_FAILURE();
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.number, files::fileNotFound);
  }
  EXPECT_THROW(files::readWholeFile(folder.path()), RuntimeError);
}

TEST(Files, AFullDiskIsToldAsSuch) {
  if (!fs::exists("/dev/full")) GTEST_SKIP();
  try {
    files::appendLine("/dev/full", "x");
    ADD_FAILURE();
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.number, errorNumber::diskFull);
    EXPECT_NE(error.description.find("/dev/full"), std::string::npos);
  }
}

}  // namespace
}  // namespace qrel
