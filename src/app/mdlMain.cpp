#include "app/mdlMain.h"

#include <algorithm>
#include <charconv>

#include "app/CCommandArgs.h"
#include "app/modRegistry.h"
#include "app/settings.h"
#include "app/trap.h"
#include "platform/files.h"
#include "platform/text.h"

namespace qrel {

void Main(Program& program, MainSteps& steps) {
  trap(program, "mdlMain", "Main", [&] {
    program.host.setPointer(Pointer::Hourglass);
    SetFilePaths(program);
    program.main.gblnDebugMode = files::exists(program.main.gstrDebugFile);
    program.main.gtypSelServ = {};
    CheckProgramVersion(program);
    ReadOptions(program, steps);
    SaveLocation(program);
    ParseCommandLine(program);
    steps.ShowMainWindow();
  });
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
  if (strAppVer == "1.1" && strStored.empty()) {
    const std::string strServers = std::string(productKey) + "\\Servers";
    const std::int32_t lngCount = std::max(GetSettingDWord(store, HKEY_CURRENT_USER, strServers, "Count", 0), 5);
    for (std::int32_t i = 1; i <= lngCount; ++i)
      DeleteRegKey(store, HKEY_CURRENT_USER, strServers + "\\Server" + std::to_string(i));
    SaveSettingDWord(store, HKEY_CURRENT_USER, strServers, "Count", 0);
  }
  if (strStored != strAppVer) SaveSettingString(store, HKEY_CURRENT_USER, productKey, "VerNum", strAppVer);
}

void ReadOptions(Program& program, MainSteps& steps) {
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

// The digits that the text begins with; 0 when there are none or too many.
std::int32_t processId(std::string_view text) {
  std::int32_t id = 0;
  const bool number = !text.empty() && text.front() >= '0' && text.front() <= '9';
  const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), id);
  return number && failed == std::errc() ? id : 0;
}

}  // namespace

void ParseCommandLine(Program& program) {
  if (program.commandLine.empty()) return;
  CCommandArgs args;
  args.Delim = "/";
  args.TestString = program.commandLine;
  args.Parse();
  const std::string strId = args.Item("RunSavedComp");
  if (!strId.empty()) program.main.glngRunSavedCompId = processId(strId);
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
