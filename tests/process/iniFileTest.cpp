#include <array>
#include <cerrno>

#include "platform/error.h"
#include "platform/fileFaults.h"
#include "platform/files.h"
#include "process/cInifile.h"
#include "process/modIniFile.h"
#include "tests/support.h"

namespace qrel {
namespace {

class IniFile : public ::testing::Test {
 protected:
  IniFile() {
    ini.Path = path;
    ini.Section = "s";
  }
  std::string read(const std::string& key) {
    ini.Key = key;
    return ini.Value();
  }
  void write(const std::string& key, const std::string& text) {
    ini.Key = key;
    ini.SetValue(text);
  }

  TestProgram test;
  Program& program = test.program;
  std::string path = (test.folder.path() / "qrel_comps.ini").string();
  cInifile ini;
};

TEST_F(IniFile, LongValuesAreCutByEachReaderAtItsOwnLength) {
  const std::string tail = std::string(252, 'x') + "éüö";
  write("k", tail + std::string(45, 'y'));
  EXPECT_EQ(read("k"), std::string(252, 'x') + "éü");
  EXPECT_EQ(INIGetSettingString(program, "S", "K", path), tail);
}

TEST_F(IniFile, ValuesLoseTheirZeroCharactersAndAMissingKeyGivesTheDefault) {
  write("k", std::string("a\0b\0", 4));
  EXPECT_TRUE(ini.Success());
  EXPECT_EQ(read("k"), "ab");
  ini.Default = "Key not saved properly!";
  EXPECT_EQ(read("other"), "Key not saved properly!");
  EXPECT_EQ(read("K"), "ab");
}

TEST_F(IniFile, AFailedWriteIsToldByItsReturnCodeAlone) {
  write("k", "1");
  ini.Path = test.folder.path().string();
  write("k", "2");
  EXPECT_FALSE(ini.Success());
  EXPECT_NE(ini.Failure().find(ini.Path), std::string::npos);
  EXPECT_THROW(read("k"), RuntimeError) << "what can't be read isn't taken for empty";
  ini.Path = path;
  EXPECT_EQ(read("k"), "1");
  ini.DeleteKey();
  EXPECT_TRUE(ini.Success());
  EXPECT_TRUE(test.host.boxes.empty());
}

TEST_F(IniFile, AChangeIsOneWriteAndSeesItself) {
  write("k", "1");
  const std::string before = files::readWholeFile(path);
  for (const bool full : {true, false}) {
    int renames = 0;
    const files::FaultScope disk([&](files::Operation operation, const std::filesystem::path&) {
      renames += operation == files::Operation::Rename;
      return full && operation == files::Operation::Write ? ENOSPC : 0;
    });
    cInifile::Change change(ini);
    write("k", "2");
    ini.DeleteSection();
    write("a", "3");
    {
      cInifile::Change part(ini);
      write("a", "4");
    }
    EXPECT_EQ(read("k") + read("a"), "3");
    EXPECT_EQ(files::readWholeFile(path), before);
    if (full) {
      EXPECT_THROW(change.commit(), RuntimeError);
      EXPECT_EQ(files::readWholeFile(path), before);
    } else {
      change.commit();
      EXPECT_EQ(renames, 1);
      EXPECT_EQ(files::readWholeFile(path), "[s]\r\na=3\r\n");
    }
  }
}

TEST_F(IniFile, ListsComeInFileOrderFromOne) {
  OneBased<std::string> arr;
  long lngCount = -1;
  arr.add("old");
  ini.EnumerateAllSections(arr, lngCount);
  EXPECT_EQ(lngCount, 0);
  EXPECT_TRUE(arr.empty());

  write("b", "2");
  write("a", "1");
  ini.Section = "Other";
  ini.SetINISection(std::string("x=1\0\0y=2\0", 9));
  ini.EnumerateAllSections(arr, lngCount);
  ASSERT_EQ(lngCount, 2);
  EXPECT_EQ(arr[1], "s");
  EXPECT_EQ(arr[2], "Other");
  ini.Section = "S";
  ini.EnumerateCurrentSection(arr, lngCount);
  ASSERT_EQ(lngCount, 2);
  EXPECT_EQ(arr[1], "b=2");
  ini.DeleteSection();
  ini.EnumerateCurrentSection(arr, lngCount);
  EXPECT_EQ(lngCount, 0);
  ini.Section = "other";
  EXPECT_EQ(ini.INISection(), std::string("x=1\0y=2\0", 8));
}

TEST_F(IniFile, AListEndsAt8191Characters) {
  std::string bytes;
  for (int i = 0; i < 100; ++i) bytes += "[" + std::string(98, 'a') + std::to_string(i % 10) + "]\n";
  files::writeAtomically(path, bytes);
  EXPECT_EQ(ini.Sections().size(), 8191u);
  OneBased<std::string> arr;
  long lngCount = 0;
  ini.EnumerateAllSections(arr, lngCount);
  EXPECT_EQ(lngCount, 82);
  EXPECT_EQ(arr[82].size(), 91u);
}

TEST_F(IniFile, DeletingWhatIsNotThereSucceedsAndMakesNoFile) {
  ini.DeleteSection();
  EXPECT_TRUE(ini.Success());
  EXPECT_FALSE(files::exists(path));
}

TEST_F(IniFile, IntegersAreOf16Bits) {
  const struct {
    const char* text;
    int number;
    bool overflow;
  } cases[] = {{"12", 12, false},       {" -7x", -7, false}, {"text", 0, false},      {"", 0, false},
               {"32767", 32767, false}, {"32768", 0, true},  {"99999999999", 0, true}};
  for (const auto& each : cases) {
    test.host.boxes.clear();
    EXPECT_TRUE(INIWriteSetting(program, "s", "n", each.text, path));
    EXPECT_EQ(INIGetSettingInteger(program, "s", "n", path), each.number) << each.text;
    ASSERT_EQ(test.host.boxes.size(), each.overflow ? 1u : 0u) << each.text;
    if (!each.overflow) continue;
    EXPECT_EQ(test.host.boxes[0].title, "INIGetSettingInteger");
    EXPECT_EQ(test.host.boxes[0].text, "Error: 6. Overflow");
  }
}

TEST_F(IniFile, AnUnwritableFileIsToldUnderTheProceduresName) {
  EXPECT_FALSE(INIWriteSetting(program, "s", "k", "v", test.folder.path().string()));
  EXPECT_EQ(INIGetSettingString(program, "s", "k", test.folder.path().string()), "");
  ASSERT_EQ(test.host.boxes.size(), 2u);
  EXPECT_EQ(test.host.boxes[0].title, "INIWriteSetting");
  EXPECT_EQ(test.host.boxes[1].title, "INIGetSettingString");
  EXPECT_EQ(test.host.boxes[1].text.find("Error: "), 0u);
}

TEST_F(IniFile, TextAsANumberOrTheDefault) {
  const struct {
    const char* text;
    int number;
  } cases[] = {{"12", 12},    {" -3 ", -3}, {"2.5", 2},         {"3.5", 4}, {"1,000", 1000},
               {"1e3", 1000}, {"FAIL", 77}, {"12a", 77},        {"", 77},   {"2147483647", 2147483647},
               {"+4", 4},     {"+-4", 77},  {"2147483648", 77}, {"inf", 77}};
  for (const auto& each : cases) EXPECT_EQ(cInifile::CLngDefault(each.text, 77), each.number) << each.text;
}

// Units are twips, 15 a pixel; the margin is 60, the screen 12000 by 9000.
TEST_F(IniFile, AWindowComesBackWithinTheScreen) {
  const ScreenSize screen{12000, 9000, 15, 15};
  const struct {
    std::array<std::int32_t, 4> kept, placed;
  } cases[] = {{{300, 400, 5000, 4000}, {300, 400, 5000, 4000}},
               {{-50, 0, 5000, 4000}, {60, 60, 5000, 4000}},
               {{9000, 8000, 5000, 4000}, {6940, 4940, 5000, 4000}},
               {{0, 0, 20000, 30000}, {60, 60, 11880, 8880}},
               {{100, 100, 10, 10}, {100, 100, 2000, 1500}}};
  for (const auto& each : cases) {
    ini.SaveFormPosition({false, false, each.kept[0], each.kept[1], each.kept[2], each.kept[3]});
    FormPosition form;
    ini.LoadFormPosition(form, 2000, 1500, screen);
    EXPECT_EQ((std::array{form.Left, form.Top, form.Width, form.Height}), each.placed) << each.kept[0];
    EXPECT_FALSE(form.blnMaximised);
  }
  ini.SaveFormPosition({false, true, 1, 2, 3, 4});
  ini.SaveFormPosition({true, false, 5, 6, 7, 8});
  FormPosition form;
  ini.LoadFormPosition(form, 5, 5, screen);
  EXPECT_TRUE(form.blnMaximised);
  EXPECT_EQ(form.Left, 100) << "the place to return to";

  ini.Section = "never kept";
  form = {false, false, 70, 80, 900, 800};
  ini.LoadFormPosition(form, 5, 5, screen);
  EXPECT_EQ((std::array{form.Left, form.Top, form.Width, form.Height}), (std::array{70, 80, 900, 800}));
  FormPosition small{false, false, 1, 2, 3, 4};
  ini.LoadFormPosition(small, 20000, 5, screen);
  EXPECT_EQ(small.Left, 1) << "its least width has no room";
}

}  // namespace
}  // namespace qrel
