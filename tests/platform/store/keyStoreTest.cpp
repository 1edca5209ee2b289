#include "platform/store/keyStore.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

std::string textAt(KeyStore& store, std::string_view key, std::string_view name) {
  const auto value = store.get(key, name);
  if (!value) return "(none)";
  if (const auto* number = std::get_if<std::int32_t>(&*value)) return std::to_string(*number);
  return std::get<std::string>(*value);
}

class KeyStoreFile : public ::testing::Test {
 protected:
  fs::path file() const { return folder_.path() / "deep" / "settings"; }
  void writeFile(const std::string& text) {
    fs::create_directories(file().parent_path());
    files::writeAtomically(file(), text);
  }

  TemporaryFolder folder_;
};

TEST_F(KeyStoreFile, ValuesOfEveryKindComeBack) {
  const std::vector<std::string> texts = {
      "",    " blanks ", "a\\b\"c", "x = \"y\"", "[k]", "line\r\nline", std::string("nul\0byte\x01\x7F", 10),
      "é中", "\xFF"};
  const std::vector<std::string> names = {"Plain", "", " padded ", "a=b", "[x]", "\"q\"", "tab\tname", "é"};
  KeyStore writer(file());
  for (std::size_t i = 0; i < texts.size(); ++i) EXPECT_TRUE(writer.set("Texts", "T" + std::to_string(i), texts[i]));
  for (std::size_t i = 0; i < names.size(); ++i) EXPECT_TRUE(writer.set("Names", names[i], static_cast<int>(i)));
  EXPECT_TRUE(writer.set("Numbers", "Low", INT32_MIN));
  KeyStore reader(file());
  for (std::size_t i = 0; i < texts.size(); ++i) EXPECT_EQ(textAt(reader, "Texts", "T" + std::to_string(i)), texts[i]);
  for (std::size_t i = 0; i < names.size(); ++i) EXPECT_EQ(textAt(reader, "Names", names[i]), std::to_string(i));
  EXPECT_EQ(textAt(reader, "Numbers", "Low"), "-2147483648");
  EXPECT_EQ(static_cast<unsigned>(fs::status(file()).permissions()), 0600u);
  EXPECT_EQ(static_cast<unsigned>(fs::status(file().parent_path()).permissions()), 0700u);
}

TEST_F(KeyStoreFile, KeepsTheFirstSpellingAndMatchesWithoutCase) {
  KeyStore store(file());
  store.set("Software\\Qrel", "Timeout", 5);
  store.set("SOFTWARE\\qrel\\", "TIMEOUT", 6);
  EXPECT_EQ(textAt(store, "software\\Qrel", "timeout"), "6");
  EXPECT_EQ(files::readWholeFile(file()), "[Software\\Qrel]\nTimeout = 6\n");
}

TEST_F(KeyStoreFile, KeepsLinesThatItCannotRead) {
  writeFile(
      "orphan = 1\n[Good]\r\nA = 1\r\n# a note\nB = 99999999999\nC = \"open\n[broken\nD = 4\n\n[Other]\nE = \"\\q\"\nF "
      "= 6");
  KeyStore store(file());
  EXPECT_EQ(textAt(store, "Good", "A"), "1");
  EXPECT_EQ(textAt(store, "Other", "F"), "6");
  for (const char* name : {"orphan", "B", "C", "D", "E"}) {
    EXPECT_EQ(textAt(store, "Good", name), "(none)");
    EXPECT_EQ(textAt(store, "Other", name), "(none)");
  }
  ASSERT_TRUE(store.set("Good", "A", 2));
  ASSERT_TRUE(store.set("Good", "A", 3));
  EXPECT_EQ(files::readWholeFile(file()),
            "orphan = 1\n# a note\nB = 99999999999\nC = \"open\n[broken\nD = 4\nE = \"\\q\"\n"
            "\n[Good]\nA = 3\n\n[Other]\nF = 6\n");
}

TEST_F(KeyStoreFile, DeletesKeysWithoutSubkeysOnly) {
  KeyStore store(file());
  store.createKey("Servers");
  store.set("Servers\\Server1", "Name", "one");
  store.createKey("Servers2");
  EXPECT_FALSE(store.deleteKey("Servers"));
  EXPECT_FALSE(store.deleteKey("Server"));
  EXPECT_TRUE(store.deleteKey("SERVERS\\SERVER1"));
  EXPECT_EQ(textAt(store, "Servers\\Server1", "Name"), "(none)");
  EXPECT_TRUE(store.deleteKey("Servers"));
  EXPECT_FALSE(store.createKey("a\nb"));
}

TEST_F(KeyStoreFile, SeesWhatAnotherProgramWrote) {
  KeyStore mine(file());
  KeyStore other(file());
  mine.set("K", "A", 1);
  other.set("K", "B", 22);
  EXPECT_EQ(textAt(mine, "K", "B"), "22");
  mine.set("K", "C", 3);
  EXPECT_EQ(textAt(other, "K", "A") + textAt(other, "K", "B") + textAt(other, "K", "C"), "1223");
  fs::remove(file());
  EXPECT_EQ(textAt(mine, "K", "A"), "(none)");
}

TEST_F(KeyStoreFile, OverridesWinAndAreNeverWritten) {
  KeyStore store(file());
  store.set("K", "A", 1);
  store.setOverride("k", "a", 9);
  store.setOverride("k", "New", "x");
  EXPECT_EQ(textAt(store, "K", "A"), "9");
  EXPECT_EQ(textAt(store, "K", "new"), "x");
  store.set("K", "B", 2);
  EXPECT_EQ(files::readWholeFile(file()), "[K]\nA = 1\nB = 2\n");
}

TEST_F(KeyStoreFile, AnUnwritableFileKeepsTheValueForThisRun) {
  files::writeAtomically(folder_.path() / "deep", "a file where the folder should be");
  KeyStore store(file());
  EXPECT_FALSE(store.set("K", "A", 1));
  EXPECT_EQ(textAt(store, "K", "A"), "1");
  KeyStore memory;
  EXPECT_TRUE(memory.set("K", "A", 1));
  EXPECT_EQ(textAt(memory, "K", "A"), "1");
}

// A writer that is killed at any moment leaves a whole file: the one before or the one behind a write.
TEST_F(KeyStoreFile, AKilledWriterLeavesAWholeFile) {
  const std::string filler(300'000, 'f');
  KeyStore(file()).set("K", "Number", 0);
  KeyStore(file()).set("K", "Text", "short");
  for (int round = 0; round < 8; ++round) {
    const pid_t child = fork();
    if (child == 0) {
      KeyStore store(file());
      for (int i = 0;; ++i) {
        store.set("K", "Number", i);
        store.set("K", "Text", filler);
        store.set("K", "Text", "short");
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20 + 7 * round));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    KeyStore reader(file());
    const std::string text = textAt(reader, "K", "Text");
    EXPECT_TRUE(text == filler || text == "short");
    EXPECT_NE(textAt(reader, "K", "Number"), "(none)");
  }
}

}  // namespace
}  // namespace qrel
