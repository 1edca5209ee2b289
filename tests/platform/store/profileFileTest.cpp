#include "platform/store/profileFile.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/error.h"
#include "platform/files.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {
namespace {

class ProfileFiles : public ::testing::Test {
 protected:
  ProfileFile parse(const std::string& bytes) {
    files::writeAtomically(path_, bytes);
    return ProfileFile::read(path_);
  }
  std::string bytesOf(const ProfileFile& file) {
    file.write(path_);
    return files::readWholeFile(path_);
  }

  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_.path() / "sub" / "a.ini";
  void SetUp() override { files::makeFolder(path_.parent_path()); }
};

TEST_F(ProfileFiles, AValueIsItsLineWithoutBlanksAndOnePairOfQuotationMarks) {
  const ProfileFile file = parse(
      "stray=0\r\n"
      "  [ Server.db.T]x ]  rest\r\n"
      "A=plain text\n"
      "  b \t=\t two  blanks \r\n"
      "c=\"\"twice\"\"\n"
      "d='single'\n"
      "e=\"mixed'\n"
      "f=\"\n"
      ";g=comment\n"
      "no key\n"
      "h=a=b\n"
      "a=second\n"
      "[other]\n"
      "A=1");
  const struct {
    const char *section, *key, *value;
  } cases[] = {{"Server.db.T]x", "A", "plain text"},
               {"SERVER.DB.t]X", "a", "plain text"},
               {"server.db.t]x", "B", "two  blanks"},
               {"server.db.t]x", "c", "\"twice\""},
               {"server.db.t]x", "d", "single"},
               {"server.db.t]x", "e", "\"mixed'"},
               {"server.db.t]x", "f", "\""},
               {"server.db.t]x", "h", "a=b"},
               {"other", "A", "1"},
               {"server.db.t]x", "g", nullptr},
               {"server.db.t]x", ";g", nullptr},
               {"server.db.t]x", "no key", nullptr},
               {"server.db.t", "A", nullptr},
               {"", "stray", nullptr}};
  for (const auto& each : cases) {
    const auto value = file.value(each.section, each.key);
    EXPECT_EQ(value.value_or("(none)"), each.value ? each.value : "(none)") << each.section << ' ' << each.key;
  }
  EXPECT_EQ(file.lines("OTHER"), std::vector<std::string>{"A=1"});
  EXPECT_EQ(file.lines("server.db.t]x"),
            (std::vector<std::string>{"A=plain text", "b=two  blanks", "c=\"\"twice\"\"", "d='single'", "e=\"mixed'",
                                      "f=\"", "h=a=b", "a=second"}));
}

TEST_F(ProfileFiles, ChangesKeepTheOrderAndAllThatIsNoKey) {
  ProfileFile file = parse("; head\n[One]\nA=1\n;note\nB=2\n\n[Two]\nC=3\n[Three]\nD=4\n");
  file.setValue("one", "a", "new");
  file.setValue("ONE", "E", "5");
  EXPECT_TRUE(file.removeKey("one", "b"));
  EXPECT_FALSE(file.removeKey("one", "b"));
  EXPECT_TRUE(file.removeSection("TWO"));
  EXPECT_FALSE(file.removeSection("two"));
  file.setLines("three", {"X=1", "Y=2"});
  file.setValue("Four", "F", "");
  EXPECT_EQ(bytesOf(file), "; head\r\n[One]\r\nA=new\r\n;note\r\nE=5\r\n\r\n[Three]\r\nX=1\r\nY=2\r\n[Four]\r\nF=\r\n");
}

TEST_F(ProfileFiles, TextPassesThroughTheCodePage) {
  ProfileFile file = parse("[caf\xE9]\nprice=5 \x80\n");
  EXPECT_EQ(file.value("CAFÉ", "Price"), "5 €");
  file.setValue("表", "k", "ü中");
  EXPECT_EQ(bytesOf(file), "[caf\xE9]\r\nprice=5 \x80\r\n[?]\r\nk=\xFC?\r\n");
  EXPECT_EQ(ProfileFile::read(path_).value("語", "k"), "ü?");
}

TEST_F(ProfileFiles, AValueNeverReachesTheNextLine) {
  ProfileFile file;
  file.setValue("s", "a", "x\r\n[t]\nb=1");
  file.setValue("s", "c", std::string("y\0z", 3));
  EXPECT_EQ(bytesOf(file), "[s]\r\na=x\r\nc=y\r\n");
}

TEST_F(ProfileFiles, AMissingFileIsEmptyAndAnUnreadableOneIsAnError) {
  EXPECT_TRUE(ProfileFile::read(folder_.path() / "none.ini").sectionNames().empty());
  EXPECT_THROW(ProfileFile::read(folder_.path()), RuntimeError);
  EXPECT_THROW(ProfileFile().write(folder_.path()), RuntimeError);
}

TEST_F(ProfileFiles, ADamagedFileIsToldAndStaysAsItIs) {
  const struct {
    std::string bytes;
    const char* told;
  } cases[] = {{"[s]\nk=1\n[half\nk=2\n", "line 3 is half a section's header"},
               {"[s]\nk=1\nPrimaryS", "line 3, the last one, is incomplete"},
               {std::string("[s]\nk=1\0\0\0", 11), "line 2 holds zero bytes"},
               {std::string("\xFF\xFE[\0s\0]\0", 8), "Unicode"},
               {"\xEF\xBB\xBF[s]\nk=1\n", "Unicode"}};
  for (const auto& each : cases) {
    files::writeAtomically(path_, each.bytes);
    try {
      ProfileChange change(path_);
      ADD_FAILURE() << each.told;
    } catch (const RuntimeError& error) {
      EXPECT_NE(error.description.find(each.told), std::string::npos) << error.description;
      EXPECT_NE(error.description.find(path_.string()), std::string::npos) << error.description;
    }
    EXPECT_EQ(files::readWholeFile(path_), each.bytes);
  }
  EXPECT_EQ(parse("[s]\nk=half a value").value("s", "k"), "half a value");
}

TEST_F(ProfileFiles, NoProcessLosesAnothersChange) {
  constexpr int writers = 3, rounds = 20;
  std::vector<pid_t> children;
  for (int writer = 0; writer < writers; ++writer) {
    const pid_t child = fork();
    if (child == 0) {
      for (int i = 0; i < rounds; ++i) {
        ProfileChange change(path_);
        change.file.setValue("s" + std::to_string(writer), std::to_string(i), "x");
        change.commit();
      }
      _exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) waitpid(child, nullptr, 0);
  const ProfileFile file = ProfileFile::read(path_);
  for (int writer = 0; writer < writers; ++writer)
    EXPECT_EQ(file.lines("s" + std::to_string(writer)).size(), static_cast<std::size_t>(rounds));
}

TEST_F(ProfileFiles, AChangeWithoutCommitOrWithoutEffectWritesNothing) {
  const std::string bytes = "[s]\nk=1\n";
  files::writeAtomically(path_, bytes);
  {
    ProfileChange change(path_);
    change.file.setValue("s", "k", "2");
  }
  ProfileChange change(path_);
  change.file.removeSection("none");
  change.commit();
  EXPECT_EQ(files::readWholeFile(path_), bytes);
}

}  // namespace
}  // namespace qrel
