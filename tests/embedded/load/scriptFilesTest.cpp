#include "embedded/load/scriptFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/error.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

class ScriptFiles : public testing::Test {
 protected:
  void write(const std::string& name, const std::string& content = "select 1") const {
    fs::create_directories((root() / name).parent_path());
    folder.write("s/" + name, content);
  }
  fs::path root() const { return folder.path() / "s"; }
  // The files found, relative to the folder, in one line.
  std::string found() {
    remarks.clear();
    std::string line;
    for (const fs::path& file : scriptFiles({root()}, remarks))
      line += (line.empty() ? "" : " ") + file.lexically_relative(root()).string();
    return line;
  }

  TemporaryFolder folder;
  std::vector<LoadRemark> remarks;
};

TEST_F(ScriptFiles, AnyDepthInAnOrderThatTheFileSystemDoesNotDecide) {
  for (const char* name : {"b/z.sql", "B.SQL", "a.sql", "c.sql", "A/inner/1.sql", "A/2.sql", "b/Y.sql", ".git/no.sql"})
    write(name);
  EXPECT_EQ(found(), "a.sql B.SQL c.sql A/2.sql A/inner/1.sql b/Y.sql b/z.sql");
  EXPECT_TRUE(remarks.empty());
}

TEST_F(ScriptFiles, WhatIsNotReadIsToldOnceWithCountAndNames) {
  write("a.sql");
  for (const char* name : {"1.txt", "2.txt", "3.txt", "4.txt", "5.txt", "sub/6.txt", ".hidden"}) write(name);
  write(".hidden.sql");
  EXPECT_EQ(found(), "a.sql");
  ASSERT_EQ(remarks.size(), 1u);
  EXPECT_EQ(remarks[0].path, root().string());
  EXPECT_EQ(remarks[0].what,
            "7 files that are no .sql files were not read: .hidden.sql (hidden), 1.txt, 2.txt, 3.txt, 4.txt, and 2 "
            "more");
  EXPECT_FALSE(remarks[0].lost);

  fs::create_symlink("..", root() / "sub" / "up");
  fs::create_symlink("nowhere", root() / "b.sql");
  ASSERT_EQ(::mkfifo((root() / "c.sql").c_str(), 0600), 0);
  EXPECT_EQ(found(), "a.sql") << "and comes to an end";
  ASSERT_EQ(remarks.size(), 2u);
  EXPECT_EQ(remarks[1].what,
            "3 entries could not be read: b.sql (a link that leads nowhere), c.sql (not a regular file), sub/up (a "
            "link to a folder that is read already)");
  EXPECT_TRUE(remarks[1].lost);
}

TEST_F(ScriptFiles, WhatCannotBeReadAtAllIsASentenceWithThePath) {
  fs::create_directories(root() / "empty.sql");
  ASSERT_EQ(::mkfifo((root() / "pipe.sql").c_str(), 0600), 0);
  for (const char* name : {"empty.sql", "pipe.sql", "missing.sql"}) {
    try {
      scriptFiles({root() / name}, remarks);
      ADD_FAILURE() << name;
    } catch (const RuntimeError& error) {
      EXPECT_NE(error.description.find((root() / name).string()), std::string::npos) << error.description;
    }
  }
}

TEST_F(ScriptFiles, OddContentIsToldAndNotTakenForWhole) {
  const struct {
    std::string bytes;
    const char* remark;
    bool lost;
  } cases[] = {
      {"select 1", "", false},
      {"", "it is empty", false},
      {"\xEF\xBB\xBF", "it is empty", false},
      {"\xFF\xFE", "it is empty", false},
      {std::string("\xFF\xFEx\0y", 5), "its last character is cut off: the file is incomplete", true},
      {"\xEF\xBB\xBF\xC3\xA9", "", false},
      {"\xEF\xBB\xBF-- \xE2\x82", "its last character is cut off: the file is incomplete", true},
      {std::string("a\0b", 3), "it holds 1 NUL characters: it may be no text, or UTF-16 without its byte order mark",
       false},
  };
  for (const auto& each : cases) {
    remarks.clear();
    readScript(folder.write("x.sql", each.bytes), {}, remarks);
    EXPECT_EQ(remarks.empty() ? "" : remarks[0].what, each.remark);
    EXPECT_EQ(!remarks.empty() && remarks[0].lost, each.lost);
  }
}

}  // namespace
}  // namespace qrel
