// Start-up, settings, trace and the error report.
#include <cerrno>

#include "app/frmErrorReport.h"
#include "app/mdlMain.h"
#include "app/modRegistry.h"
#include "app/settings.h"
#include "app/trace.h"
#include "app/trap.h"
#include "platform/fileFaults.h"
#include "platform/files.h"
#include "tests/support.h"

namespace qrel {
namespace {

class Steps : public MainSteps {
 public:
  explicit Steps(Program& program) : program_(program) {}
  void LoadServers() override { calls += program_.settings.CacheSize == 5 ? "servers " : "servers-late "; }
  void ShowMainWindow() override { calls += "window"; }
  std::string calls;

 private:
  Program& program_;
};

TEST(Main, TakesTheProcessIdFromTheCommandLine) {
  const std::pair<const char*, std::int32_t> cases[] = {{"", 0},
                                                        {"/RunSavedComp 12", 12},
                                                        {"/runsavedcomp 7", 7},
                                                        {"/RunSavedComp", 0},
                                                        {"/RunSavedComp abc", 0},
                                                        {"/Other 1 /RunSavedComp 7", 7},
                                                        {"/RunSavedComp 7/8", 7},
                                                        {"/RunSavedComp 7x", 7},
                                                        {"/RunSavedComp -5", 0},
                                                        {"/RunSavedComp +5", 0},
                                                        {"/RunSavedComp 2147483647", 2147483647},
                                                        {"/RunSavedComp 2147483648", 0},
                                                        {"/RunSavedComp 99999999999", 0},
                                                        {"RunSavedComp 9", 0}};
  for (const auto& [line, id] : cases) {
    TestProgram test;
    Steps steps(test.program);
    test.program.commandLine = line;
    Main(test.program, steps);
    EXPECT_EQ(test.program.main.glngRunSavedCompId, id) << line;
    EXPECT_EQ(steps.calls, "servers window") << line;
  }
}

TEST(Main, StartsWithSettingsThatCannotBeWrittenOrRead) {
  const TemporaryFolder folder;
  const std::string damaged = "[Software\\Qrel]\nCacheSize = 9\nTimeout = 5x\n";
  for (const bool readable : {true, false}) {
    KeyStore store(folder.write("settings.txt", readable ? "[Software\\Qrel]\nCacheSize = 9\n" : damaged));
    TestProgram test;
    Program program(test.host, test.data, store);
    program.programFolder = test.folder.path().string();
    Steps steps(program);
    const files::FaultScope full([](files::Operation operation, const std::filesystem::path&) {
      return operation == files::Operation::Write ? ENOSPC : 0;
    });
    Main(program, steps);
    EXPECT_EQ(steps.calls, "servers window");
    EXPECT_EQ(program.settings.CacheSize, 9);
    ASSERT_EQ(test.host.boxes.size(), readable ? 0u : 1u);
    if (readable) continue;
    EXPECT_NE(test.host.boxes[0].text.find("line 3"), std::string::npos) << test.host.boxes[0].text;
    EXPECT_EQ(files::readWholeFile(folder.path() / "settings.txt"), damaged);
  }
}

TEST(Main, SetsPathsLoadsServersBeforeTheCacheSizeAndShowsTheWindow) {
  TestProgram test;
  SaveSettingDWord(test.store, HKEY_CURRENT_USER, "Software\\Qrel", "CacheSize", 9);
  SaveSettingString(test.store, HKEY_CURRENT_USER, "Software\\Qrel", "VerNum", "2.0");
  Steps steps(test.program);
  Main(test.program, steps);
  EXPECT_EQ(steps.calls, "servers window");
  EXPECT_EQ(test.program.settings.CacheSize, 9);
  const std::string folder = test.folder.path().string() + "/";
  EXPECT_EQ(test.program.main.gstrDataPath, folder) << "without a documents folder the program's own is taken";
  EXPECT_EQ(test.program.main.gstrCompsIni, folder + "qrel_comps.ini");
  EXPECT_EQ(GetSettingString(test.store, HKEY_CURRENT_USER, "Software\\Qrel", "Location", ""), folder);
  EXPECT_EQ(GetSettingString(test.store, HKEY_CURRENT_USER, "Software\\Qrel", "VerNum", ""), "2.1");
}

TEST(CheckProgramVersion, OnlyAFirstRunOfVersion11DropsTheServerList) {
  const std::string servers = "Software\\Qrel\\Servers";
  for (const bool first : {true, false}) {
    TestProgram test;
    if (!first) SaveSettingString(test.store, HKEY_CURRENT_USER, "Software\\Qrel", "VerNum", "1.0");
    SaveSettingDWord(test.store, HKEY_CURRENT_USER, servers, "Count", 2147483647);
    SaveSettingString(test.store, HKEY_CURRENT_USER, servers + "\\Server4", "Name", "old");
    CheckProgramVersion(test.program, "1.1");
    EXPECT_EQ(GetSettingDWord(test.store, HKEY_CURRENT_USER, servers, "Count", 0), first ? 0 : 2147483647);
    EXPECT_EQ(GetSettingString(test.store, HKEY_CURRENT_USER, servers + "\\Server4", "Name", ""), first ? "" : "old");
  }
}

TEST(Settings, ReadTheirDefaultsAndOnlyOneIsTrue) {
  TestProgram test;
  Steps steps(test.program);
  ReadOptions(test.program, steps);
  const SettingsState& settings = test.program.settings;
  EXPECT_EQ(settings.Timeout, 30);
  EXPECT_EQ(settings.glngMaxRowsInDiffTable, 500);
  EXPECT_EQ(settings.glngCursorLocation, 2);
  EXPECT_TRUE(settings.CaseSensitive && settings.IgnoreWhitespace && settings.IgnoreComments && settings.IgnoreColSeq &&
              settings.IgnoreSysObjects && settings.gblnDataCaseSensitive);
  EXPECT_FALSE(settings.IgnoreIndexes || settings.ShowOwners || settings.FilterOfflineDbs ||
               settings.AnalyzeConstraints || settings.AutoSelTargetObj);

  const std::string comparisons = "Software\\Qrel\\Comparisons";
  SaveSettingDWord(test.store, HKEY_CURRENT_USER, comparisons, "CaseSensitive", 2);
  SaveSettingString(test.store, HKEY_CURRENT_USER, "Software\\Qrel", "Timeout", "60");
  SaveSettingDWord(test.store, HKEY_CURRENT_USER, "Software\\Qrel\\Servers", "CursorConnectionUseServer", 0);
  ReadOptions(test.program, steps);
  EXPECT_FALSE(settings.CaseSensitive) << "a flag stored as 2 is false";
  EXPECT_EQ(settings.Timeout, 30) << "a number stored as text reads as the default";
  EXPECT_EQ(settings.glngCursorLocation, 3);
  SaveSettingString(test.store, HKEY_CURRENT_USER, comparisons, "Text", std::string("a\0b", 3));
  EXPECT_EQ(GetSettingString(test.store, HKEY_CURRENT_USER, comparisons, "Text", ""), "a");
}

TEST(Trace, WritesOnlyWhileDebugTxtIsThere) {
  TestProgram test;
  Steps steps(test.program);
  const std::filesystem::path log = test.folder.path() / "ErrorLog.txt";
  Main(test.program, steps);
  WriteDebugLog(test.program, "nothing");
  EXPECT_FALSE(std::filesystem::exists(log));

  test.folder.write("debug.txt", "");
  Main(test.program, steps);
  WriteDebugLog(test.program, "first");
  WriteDebugLog(test.program, "second");
  std::ifstream file(log, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  EXPECT_EQ(text, "03:04:05     first\r\n03:04:05     second\r\n");
  ClearDebugLog(test.program);
  EXPECT_FALSE(std::filesystem::exists(log));
}

TEST(ErrorReport, ShowsTheErrorAndSendsItsKeys) {
  TestProgram test;
  std::string shown;
  test.host.windows.push_back([&](Form& window) {
    auto& form = dynamic_cast<frmErrorReport&>(window);
    shown = form.txtErrDesc.text();
    EXPECT_EQ(form.caption, "An error occurred in Quorrel");
    EXPECT_EQ(test.host.pointer(), Pointer::Default);
    form.txtComments.personTypes("  two words ");
    form.personPressesEnter();
    EXPECT_TRUE(form.closed());
  });
  test.host.setPointer(Pointer::Hourglass);
  const int result = trap(test.program, "modX", "DoIt", 7, []() -> int { throw RuntimeError(11, "Division & zero"); });
  EXPECT_EQ(result, 7);
  EXPECT_EQ(shown, "2.1 188 Error 11 (modX:DoIt)\r\n\r\nDivision & zero");
  ASSERT_EQ(test.host.opened.size(), 1U);
  EXPECT_TRUE(test.host.opened[0].ends_with(
      "/error.php?ErrNum=11&ErrDesc=Division+&+zero&ProgVer=2.1&BuildNum=188&ModuleName=modX&ProcName=DoIt"
      "&Comments=two+words&Email=&ExtraDesc="))
      << test.host.opened[0];

  test.host.windows.push_back([&](Form& form) { shown = dynamic_cast<frmErrorReport&>(form).txtErrDesc.text(); });
  int line = 1;
  trapWithLine(test.program, "modX", "DoIt", line, [&] {
    line = 20;
    throw RuntimeError(5, "d");
  });
  EXPECT_EQ(shown, "2.1 188 Error 5 (modX:DoIt)\r\n\r\nd\r\n\r\nLine num = 20");

  test.host.windows.push_back([](Form& form) { form.personPressesEsc(); });
  ShowErrorReport(test.program, 1, "d", "m", "p", "Row = 3");
  EXPECT_EQ(test.host.opened.size(), 1U) << "Esc sends nothing";
}

}  // namespace
}  // namespace qrel
