#include "platform/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string>

#include "platform/error.h"
#include "platform/fileFaults.h"
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
  files::writeAtomically(file, "old", files::Access::OwnerOnly);
  EXPECT_EQ(modeOf(file), 0600u);
  fs::permissions(file, fs::perms(0640));
  fs::create_symlink("real", folder.path() / "link");
  for (const files::Access access : {files::Access::Usual, files::Access::OwnerOnly}) {
    files::writeAtomically(folder.path() / "link", "new", access);
    EXPECT_TRUE(fs::is_symlink(folder.path() / "link"));
    EXPECT_EQ(files::readWholeFile(file), "new");
    EXPECT_EQ(modeOf(file), 0640u);
  }
  fs::create_directory(folder.path() / "sub");
  fs::create_symlink("sub/later", folder.path() / "nowhere yet");
  files::writeAtomically(folder.path() / "nowhere yet", "made");
  EXPECT_EQ(files::readWholeFile(folder.path() / "sub" / "later"), "made");
  files::writeAtomically("/dev/null", "a device stays one");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
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
  const fs::path readOnly = folder.write("read-only", "kept");
  fs::permissions(readOnly, fs::perms(0444));
  EXPECT_EQ(writeError(readOnly), errorNumber::pathAccess);
  EXPECT_EQ(files::readWholeFile(readOnly), "kept");
  fs::create_symlink("loop", folder.path() / "loop");
  EXPECT_EQ(writeError(folder.path() / "loop"), errorNumber::pathAccess);
  EXPECT_THROW(files::readWholeFile(readOnly, 3), RuntimeError);
  EXPECT_EQ(files::readWholeFile(readOnly, 4), "kept");
  try {
    files::readWholeFile(folder.path() / "none");
    ADD_FAILURE();
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.number, files::fileNotFound);
  }
  EXPECT_THROW(files::readWholeFile(folder.path()), RuntimeError);
}

// Whichever call fails, the file holds the old bytes or the new ones, the failure is told, and nothing else is left.
TEST(Files, AFailureAnywhereLeavesTheOldFileOrTheNewOne) {
  const TemporaryFolder folder;
  const fs::path file = folder.path() / "a";
  files::writeAtomically(file, "old");
  bool told = true;
  int failing = 0;
  for (; told; ++failing) {
    ASSERT_LT(failing, 50);
    files::writeAtomically(file, "old");
    told = false;
    {
      int call = 0;
      const files::FaultScope fault([&](files::Operation, const fs::path&) { return call++ == failing ? ENOSPC : 0; });
      try {
        files::writeAtomically(file, "new");
      } catch (const RuntimeError& error) {
        told = true;
        EXPECT_EQ(error.number, errorNumber::diskFull);
        EXPECT_NE(error.description.find("Free some space"), std::string::npos);
      }
    }
    const std::string bytes = files::readWholeFile(file);
    EXPECT_TRUE(bytes == "new" || (told && bytes == "old")) << failing;
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1) << failing;
  }
  EXPECT_GE(failing, 6) << "opening, writing, two flushes, closing, renaming";
}

TEST(Files, AFileInPiecesTakesItsPlaceWhenItIsFinished) {
  const TemporaryFolder folder;
  const fs::path file = folder.write("a", "old");
  const std::string large(100'000, 'x');
  {
    files::AtomicFile unfinished(file);
    unfinished.write(large);
    EXPECT_EQ(files::readWholeFile(file), "old");
  }
  EXPECT_EQ(files::readWholeFile(file), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1);
  files::AtomicFile pieces(file);
  std::string expected;
  for (const std::string& piece : {std::string("a"), large, std::string(40'000, 'y'), std::string(40'000, 'z')}) {
    pieces.write(piece);
    expected += piece;
  }
  pieces.finish();
  EXPECT_EQ(files::readWholeFile(file), expected);
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

TEST(FileReplacement, AClosedFileTakesItsPlaceOrStaysWhereItIs) {
  TemporaryFolder folder;
  const auto fresh = folder.write("fresh", "new");
  const auto old = folder.write("old", "old");
  EXPECT_EQ(files::putInPlace(fresh, folder.path() / "nowhere" / "old"), ENOENT);
  EXPECT_EQ(files::readWholeFile(fresh), "new");
  EXPECT_EQ(files::putInPlace(fresh, old), 0);
  EXPECT_EQ(files::readWholeFile(old), "new");
  EXPECT_EQ(files::putInPlace(fresh, old), ENOENT) << "it has gone";
}

}  // namespace
}  // namespace qrel
