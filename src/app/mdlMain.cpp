#include "app/mdlMain.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <string_view>
#include <system_error>

#include "app/CCommandArgs.h"
#include "app/modRegistry.h"
#include "app/settings.h"
#include "app/trap.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/text.h"

namespace qrel {

namespace {

void leaveWhenUnwritable(const std::function<void()>& write) {
  try {
    write();
  } catch (const RuntimeError&) {
    // Settings that can't be written keep nobody from comparing.
  }
}

}  // namespace

void Main(Program& program, MainSteps& steps) {
  trap(program, "mdlMain", "Main", [&] {
    program.host.setPointer(Pointer::Hourglass);
    SetFilePaths(program);
    program.main.gblnDebugMode = files::exists(program.main.gstrDebugFile);
    program.main.gtypSelServ = {};
    TellDamagedSettings(program);
    // Nobody asked for these two writes, and the next start makes up for them.
    leaveWhenUnwritable([&] { CheckProgramVersion(program); });
    ReadOptions(program, steps);
    leaveWhenUnwritable([&] { SaveLocation(program); });
    ParseCommandLine(program);
    steps.ShowMainWindow();
  });
}

void TellDamagedSettings(Program& program) {
  try {
    program.store.check();
  } catch (const RuntimeError& error) {
    program.host.messageBox(error.description +
                                "\r\n\r\nUntil then the program works with those settings that can be read, and with "
                                "defaults for the others, and nothing is written to the file.",
                            Icon::Warning, "Settings Cannot Be Read");
  }
}

std::string withSeparator(std::string strFolder) {
  if (strFolder.empty() || strFolder.back() != '/') strFolder += '/';
  return strFolder;
}

void SetFilePaths(Program& program) {
  mdlMainState& main = program.main;
  main.gstrAppPath = withSeparator(program.programFolder);
  main.gstrDebugFile = main.gstrAppPath + "debug.txt";
  main.gstrDataPath = withSeparator(program.documentsFolder.empty() ? program.programFolder : program.documentsFolder);
  main.gstrTablesCompsIni = main.gstrDataPath + "qrel_tables_comps.ini";
  main.gstrCompsIni = main.gstrDataPath + "qrel_comps.ini";
  main.gstrIgnoredColsDataIni = main.gstrDataPath + "qrel_ignored_cols_data.ini";
  main.gstrIgnoredColsStructIni = main.gstrDataPath + "qrel_ignored_cols_struct.ini";
  main.gstrIgnoredColsDataAnalysisIni = main.gstrDataPath + "qrel_ignored_cols_dataanalysis.ini";
}

void CheckProgramVersion(Program& program, const std::string& strAppVer) {
  KeyStore& store = program.store;
  const std::string strStored = GetSettingString(store, HKEY_CURRENT_USER, productKey, "VerNum", "");
  if (strStored == strAppVer) return;
  KeyStore::Change change(store);
  if (strAppVer == "1.1" && strStored.empty()) {
    const std::string strServers = std::string(productKey) + "\\Servers";
    const std::int32_t lngCount = std::max(GetSettingDWord(store, HKEY_CURRENT_USER, strServers, "Count", 0), 5);
    for (const std::int32_t i : NumberedRegKeys(store, HKEY_CURRENT_USER, strServers, "Server"))
      if (i <= lngCount) DeleteRegKey(store, HKEY_CURRENT_USER, strServers + "\\Server" + std::to_string(i));
    SaveSettingDWord(store, HKEY_CURRENT_USER, strServers, "Count", 0);
  }
  SaveSettingString(store, HKEY_CURRENT_USER, productKey, "VerNum", strAppVer);
  change.commit();
}

void ReadOptions(Program& program, MainSteps& steps) {
  const KeyStore::Reading together(program.store);
  const auto read = [&](const char* strName) {
    applySetting(program, *findSetting(strName), ReadNumber(program, strName));
  };
  read("Run");
  read("Timeout");
  steps.LoadServers();
  for (const char* strName :
       {"MaxRowsInDiffTable", "ShowOwners", "CaseSensitive", "DataCaseSensitive", "IgnoreWhitespace", "IgnoreComments",
        "IgnoreIndexes", "CursorConnectionUseServer", "CacheSize", "IgnoreSysObjects", "FilterOfflineDbs",
        "IgnoreColSeq", "AutoSelTargetObj", "AnalyzeConstraints", "AutoSaveSchemas"})
    read(strName);
}

void SaveLocation(Program& program) {
  SaveSettingString(program.store, HKEY_CURRENT_USER, productKey, "Location", program.main.gstrAppPath);
}

namespace {

// The digits that the text begins with; 0 when there is none, and for more than 32 bits hold. No failure of the command
// line keeps the window from opening.
std::int32_t processId(std::string_view text) {
  const std::string_view digits = text.substr(0, text.find_first_not_of("0123456789"));
  std::int32_t id = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), id);
  return error == std::errc() ? id : 0;
}

}  // namespace

std::int32_t RunSavedCompId(const std::string& strCommandLine) {
  CCommandArgs args;
  args.Delim = "/";
  args.TestString = strCommandLine;
  args.Parse();
  return processId(args.Item("RunSavedComp"));
}

void ParseCommandLine(Program& program) {
  if (program.commandLine.empty()) return;
  program.main.glngRunSavedCompId = RunSavedCompId(program.commandLine);
}

double GetMdacVersion(Program& program) { return program.data.version(); }

bool CheckMdac(Program& program) {
  if (GetMdacVersion(program) >= 2.5) return true;
  program.host.setPointer(Pointer::Hourglass);
  const std::string gap = "\r\n\r\n";
  program.host.messageBox(
      "The program detected that this computer has no MDAC installed, or the installed version of MDAC is lower than "
      "2.5." +
          gap + "To connect to the server this program requires MDAC 2.5 or higher to be installed." + gap +
          "MDAC means: Microsoft Data Access Components." + gap +
          "For more information about installing Microsoft Data Access Components please visit "
          "https://learn.microsoft.com/sql/connect" +
          gap + "or contact support@marlpine.example." + gap,
      Icon::Critical, "Cannot Continue - MDAC Missing Or Out Of Date");
  return false;
}

}  // namespace qrel
