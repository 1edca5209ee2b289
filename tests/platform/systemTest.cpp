#include "platform/system.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>

#include "tests/platform/temporaryFolder.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;
using system::Kind;

system::FileFacts factsOf(const fs::path& path) {
  system::FileFacts facts;
  EXPECT_EQ(system::look(path, facts), 0) << path;
  return facts;
}

TEST(System, FactsAreOfWhatALinkLeadsToAndChangeWithTheFile) {
  const TemporaryFolder folder;
  const fs::path file = folder.write("file", "12345");
  const fs::path link = folder.path() / "link";
  fs::create_symlink(file, link);
  const fs::path pipe = folder.path() / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const system::FileFacts facts = factsOf(file);
  EXPECT_EQ(facts.kind, Kind::File);
  EXPECT_EQ(facts.size, 5U);
  EXPECT_EQ(factsOf(link), facts);
  EXPECT_EQ(factsOf(folder.path()).kind, Kind::Folder);
  EXPECT_EQ(factsOf(pipe).kind, Kind::Other);
  system::FileFacts none;
  EXPECT_EQ(system::look(folder.path() / "none", none), ENOENT);

  // Of the same size, and written in the same tick of a coarse clock perhaps: it is another file all the same.
  ASSERT_EQ(system::replaceFile(folder.write("other", "54321"), file), 0);
  EXPECT_NE(factsOf(file).id, facts.id);
  const system::FileFacts before = factsOf(file);
  fs::permissions(file, fs::perms::owner_read);
  EXPECT_NE(factsOf(file), before);
  EXPECT_EQ(factsOf(file).id, before.id);
}

TEST(System, OnlyAFolderItselfIsOwn) {
  const TemporaryFolder folder;
  fs::create_directory_symlink(folder.path(), folder.path() / "link");
  EXPECT_TRUE(system::isOwnFolder(folder.path()));
  EXPECT_FALSE(system::isOwnFolder(folder.path() / "link"));
  EXPECT_FALSE(system::isOwnFolder(folder.write("file", "")));
}

TEST(System, AnOpenFileStaysReadableUnderItsNumber) {
  const TemporaryFolder folder;
  const fs::path path = folder.write("file", "0123456789");
  system::OpenFile again;
  {
    system::OpenFile file;
    EXPECT_EQ(file.open(path, system::Open::MakeNew), EEXIST);
    EXPECT_FALSE(file.isOpen());
    ASSERT_EQ(file.open(path, system::Open::Read), 0);
    ASSERT_EQ(again.openAgain(file.number()), 0);
  }
  ASSERT_EQ(system::removeFile(path), 0);
  char bytes[8];
  std::size_t got = 0;
  EXPECT_EQ(again.readAt(7, bytes, sizeof bytes, got), 0);
  EXPECT_EQ(std::string(bytes, got), "789");
  EXPECT_EQ(again.readAt(10, bytes, sizeof bytes, got), 0);
  EXPECT_EQ(got, 0U) << "behind the end";
  EXPECT_EQ(again.write("x"), EBADF);
  EXPECT_NE(system::OpenFile().openAgain(-1), 0);
}

TEST(System, NewFilesAreTheirOwnersAloneWhenAsked) {
  const TemporaryFolder folder;
  const auto othersMay = [](const fs::path& path) {
    return (fs::status(path).permissions() & (fs::perms::group_all | fs::perms::others_all)) != fs::perms::none;
  };
  const mode_t before = umask(022);
  for (const auto access : {system::Access::Usual, system::Access::OwnerOnly}) {
    const bool usual = access == system::Access::Usual;
    const fs::path file = folder.path() / (usual ? "file" : "ownFile");
    EXPECT_EQ(system::OpenFile().open(file, system::Open::MakeNew, access), 0);
    EXPECT_EQ(othersMay(file), usual);
    const fs::path made = folder.path() / (usual ? "folder" : "ownFolder");
    EXPECT_EQ(system::makeFolder(made, access), 0);
    EXPECT_EQ(system::makeFolder(made, access), EEXIST);
    EXPECT_EQ(othersMay(made), usual);
  }
  umask(before);
}

// The variable, the desktop's own file, the English name.
TEST(System, TheDocumentsFolderIsTheDesktops) {
  const TemporaryFolder folder;
  const std::vector<const char*> names = {"HOME", "XDG_CONFIG_HOME", "XDG_DOCUMENTS_DIR"};
  std::vector<std::string> before;
  for (const char* name : names) before.emplace_back(std::getenv(name) ? std::getenv(name) : "");
  setenv("HOME", "/home/me", 1);
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  unsetenv("XDG_DOCUMENTS_DIR");
  const auto documents = [&](const char* line) {
    folder.write("user-dirs.dirs", std::string("# made by a tool\nXDG_MUSIC_DIR=\"$HOME/M\"\n") + line + "\n");
    return system::userFolders().documents.string();
  };
  EXPECT_EQ(documents("XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\""), "/home/me/Dokumente");
  EXPECT_EQ(documents("XDG_DOCUMENTS_DIR=\"/data/a \\\"b\\\" c\""), "/data/a \"b\" c");
  EXPECT_EQ(documents("XDG_DOCUMENTS_DIR=broken"), "/home/me/Documents");
  setenv("XDG_DOCUMENTS_DIR", "/asked/for", 1);
  EXPECT_EQ(documents("XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\""), "/asked/for");
  for (std::size_t i = 0; i < names.size(); ++i)
    before[i].empty() ? unsetenv(names[i]) : setenv(names[i], before[i].c_str(), 1);
}

}  // namespace
}  // namespace qrel
