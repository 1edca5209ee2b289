#include "platform/store/keyStore.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/error.h"
#include "platform/fileFaults.h"
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

std::string sentenceOf(const std::function<void()>& body) {
  try {
    body();
  } catch (const RuntimeError& error) {
    return error.description;
  }
  return "";
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
      "é中", "\xFF\xC3"};
  const std::vector<std::string> names = {"Plain", "",          " padded ", "a=b", "[x]",
                                          "\"q\"", "tab\tname", "é",        "# x", "\xFE"};
  KeyStore writer(file());
  for (std::size_t i = 0; i < texts.size(); ++i) writer.set("Texts", "T" + std::to_string(i), texts[i]);
  for (std::size_t i = 0; i < names.size(); ++i) writer.set("Names", names[i], static_cast<int>(i));
  writer.set("Numbers", "Low", INT32_MIN);
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

TEST_F(KeyStoreFile, KeepsNotesWithTheirKeys) {
  writeFile("\xEF\xBB\xBF; all\n[Good]\r\nA = 1\r\n# of Good\n\n[Bad]\nF = 6");
  KeyStore store(file());
  store.check();
  store.set("Good", "A", 3);
  EXPECT_EQ(files::readWholeFile(file()), "; all\n\n[Bad]\nF = 6\n\n[Good]\n# of Good\nA = 3\n");
}

// A file that can't be read in full is told with the line, gives the values that can be read, and is never written.
TEST_F(KeyStoreFile, ADamagedFileIsToldAndStaysAsItIs) {
  const std::string good = "[K]\nA = 1\n";
  const struct {
    std::string bytes;
    const char* told;
  } cases[] = {{"orphan = 1\n" + good, "line 1 is neither a key in brackets nor a value"},
               {good + "B = 99999999999\n", "line 3 is neither"},
               {good + "[broken\nA = 4\n", "line 3 is no key in brackets"},
               {good + "B = \"open\n", "line 3 is neither"},
               {good + "Pwd = \"s3cret!", "line 3, the last one, is incomplete"},
               {good + std::string(4096, '\0'), "line 3 holds zero bytes"},
               {good + "B = \"caf\xE9\"\n", "line 3 is not UTF-8"},
               {std::string("\xFF\xFE[\0K\0]\0\n\0", 10), "line 1 holds zero bytes"}};
  for (const auto& each : cases) {
    writeFile(each.bytes);
    KeyStore store(file());
    const std::string told = sentenceOf([&] { store.check(); });
    EXPECT_NE(told.find(each.told), std::string::npos) << told;
    EXPECT_NE(told.find(file().string()), std::string::npos) << told;
    EXPECT_EQ(told.find("s3cret!"), std::string::npos) << "a line may hold a password";
    EXPECT_EQ(textAt(store, "K", "A"), each.bytes.find(good) == std::string::npos ? "(none)" : "1");
    EXPECT_NE(sentenceOf([&] { store.set("K", "A", 2); }), "");
    EXPECT_NE(sentenceOf([&] { store.createKey("New"); }), "");
    EXPECT_EQ(files::readWholeFile(file()), each.bytes);
    writeFile(good);
    store.set("K", "A", 2);
    EXPECT_EQ(files::readWholeFile(file()), "[K]\nA = 2\n") << "mended";
  }
}

TEST_F(KeyStoreFile, WhatIsNoFileIsNeverReplaced) {
  fs::create_directories(file());
  KeyStore store(file());
  EXPECT_NE(sentenceOf([&] { store.check(); }).find("Move away what stands in its place"), std::string::npos);
  EXPECT_NE(sentenceOf([&] { store.set("K", "A", 1); }), "");
  EXPECT_TRUE(fs::is_directory(file()));
  fs::remove(file());

  writeFile("[K]\nA = 1\n");
  fs::resize_file(file(), 200'000'000);
  KeyStore large(file());
  EXPECT_NE(sentenceOf([&] { large.check(); }).find("more than 64 MB"), std::string::npos);
  EXPECT_NE(sentenceOf([&] { large.set("K", "A", 2); }), "");
  EXPECT_EQ(fs::file_size(file()), 200'000'000u);

  writeFile("[K]\nA = 1\n");
  KeyStore broken(file());
  {
    const files::FaultScope fault(
        [](files::Operation operation, const fs::path&) { return operation == files::Operation::Read ? EIO : 0; });
    EXPECT_NE(sentenceOf([&] { broken.check(); }).find("Check the disk"), std::string::npos);
    EXPECT_NE(sentenceOf([&] { broken.set("K", "A", 2); }), "");
  }
  EXPECT_EQ(textAt(broken, "K", "A"), "1") << "read again once it can be";
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
  EXPECT_NE(sentenceOf([&] { store.createKey("a\nb"); }), "");
  store.set("Servers\\b\\deep", "x", 1);
  store.createKey("SERVERS\\A");
  EXPECT_EQ(store.subkeys("servers"), (std::vector<std::string>{"A", "b"}));
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

TEST_F(KeyStoreFile, AChangeIsWrittenOnceOrTakenBack) {
  KeyStore store(file());
  store.set("K", "A", 1);
  const std::string before = files::readWholeFile(file());
  int renames = 0;
  const files::FaultScope count([&](files::Operation operation, const fs::path&) {
    renames += operation == files::Operation::Rename;
    return 0;
  });
  {
    KeyStore::Change outer(store);
    store.set("K", "A", 2);
    {
      KeyStore::Change inner(store);
      store.set("K", "B", 3);
      store.deleteKey("K");
    }
    EXPECT_EQ(textAt(store, "K", "A") + textAt(store, "K", "B"), "2(none)") << "the inner one took its part back";
    {
      KeyStore::Change inner(store);
      store.createKey("K2");
      inner.commit();
    }
    EXPECT_EQ(files::readWholeFile(file()), before);
    outer.commit();
  }
  EXPECT_EQ(renames, 1);
  EXPECT_EQ(files::readWholeFile(file()), "[K]\nA = 2\n\n[K2]\n");
  {
    KeyStore::Change abandoned(store);
    store.set("K", "A", 9);
  }
  store.set("K", "A", 2);
  EXPECT_EQ(renames, 1) << "a value that is there isn't written again";
  KeyStore memory;
  memory.set("K", "A", 1);
  EXPECT_EQ(textAt(memory, "K", "A"), "1");
}

TEST_F(KeyStoreFile, AReadingSeesOneState) {
  KeyStore mine(file()), other(file());
  other.set("K", "A", 1);
  {
    const KeyStore::Reading reading(mine);
    other.set("K", "A", 2);
    EXPECT_EQ(textAt(mine, "K", "A"), "1");
  }
  EXPECT_EQ(textAt(mine, "K", "A"), "2");
}

TEST_F(KeyStoreFile, AValueThatCannotBeKeptIsAnErrorAndTakenBack) {
  files::writeAtomically(folder_.path() / "deep", "a file where the folder should be");
  KeyStore nowhere(file());
  EXPECT_NE(sentenceOf([&] { nowhere.set("K", "A", 1); }), "");
  EXPECT_EQ(textAt(nowhere, "K", "A"), "(none)");
  fs::remove(folder_.path() / "deep");

  KeyStore store(file());
  store.set("K", "A", 1);
  fs::permissions(file(), fs::perms(0444));
  EXPECT_NE(sentenceOf([&] { store.set("K", "A", 2); }).find("read-only"), std::string::npos);
  EXPECT_EQ(textAt(store, "K", "A"), "1");
}

// What several processes add at once is there in the end.
TEST_F(KeyStoreFile, NoProcessLosesAnothersChange) {
  constexpr int writers = 4, rounds = 25;
  std::vector<pid_t> children;
  for (int writer = 0; writer < writers; ++writer) {
    const pid_t child = fork();
    if (child == 0) {
      KeyStore store(file());
      for (int i = 0; i < rounds; ++i) {
        KeyStore::Change change(store);
        const auto sum = store.get("K", "Sum");
        store.set("K", "Sum", (sum ? std::get<std::int32_t>(*sum) : 0) + 1);
        store.set("K", std::to_string(writer) + "." + std::to_string(i), "x");
        change.commit();
      }
      _exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  KeyStore reader(file());
  EXPECT_EQ(textAt(reader, "K", "Sum"), std::to_string(writers * rounds));
  for (int writer = 0; writer < writers; ++writer)
    for (int i = 0; i < rounds; ++i)
      EXPECT_EQ(textAt(reader, "K", std::to_string(writer) + "." + std::to_string(i)), "x");
}

// A writer that is killed before any of its calls: the state before the change or behind it, and the next start tidies.
TEST_F(KeyStoreFile, AWriterKilledAtAnyCallLeavesOneStateAndNoRubbish) {
  bool finished = false;
  for (int fatal = 0; !finished; ++fatal) {
    ASSERT_LT(fatal, 50);
    writeFile("[K]\nA = \"old\"\nB = \"old\"\n");
    const pid_t child = fork();
    if (child == 0) {
      KeyStore store(file());
      int call = 0;
      const files::FaultScope fault([&](files::Operation, const fs::path&) {
        if (call++ == fatal) kill(getpid(), SIGKILL);
        return 0;
      });
      KeyStore::Change change(store);
      store.set("K", "A", "new");
      store.set("K", "B", "new");
      change.commit();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    finished = status == 0;
    KeyStore reader(file());
    const std::string state = textAt(reader, "K", "A") + textAt(reader, "K", "B");
    EXPECT_TRUE(state == "newnew" || (!finished && state == "oldold")) << fatal << ' ' << state;
    EXPECT_TRUE(files::temporaryFiles(file()).empty()) << fatal;
  }
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
