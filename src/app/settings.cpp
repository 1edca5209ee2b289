#include "app/settings.h"

#include <utility>

#include "app/modRegistry.h"
#include "platform/data/recordset.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* servers = "\\Servers";
constexpr const char* comparisons = "\\Comparisons";
constexpr const char* panes = "\\TXText";
constexpr auto flag = SettingKind::Flag;
constexpr auto number = SettingKind::Number;
constexpr auto textSetting = SettingKind::Text;
using S = SettingsState;

}  // namespace

const std::vector<Setting>& settingsTable() {
  static const std::vector<Setting> table = {
      {"Timeout", "", number, 30, nullptr, &S::Timeout, "command time-out in seconds"},
      {"CacheSize", "", number, 5, nullptr, &S::CacheSize, "rows that a server-side cursor fetches at a time"},
      {"MaxRowsInDiffTable", "", number, 500, nullptr, &S::glngMaxRowsInDiffTable,
       "limit of rows in the data differences table"},
      {"PreserveDbSel", "", flag, 1, nullptr, nullptr, "reselect a server's last database when it is loaded"},
      {"AutoSelTargetObj", "", flag, 0, &S::AutoSelTargetObj, nullptr,
       "selecting a Source object also selects its namesake in the Target list"},
      {"AnalyzeConstraints", "", flag, 0, &S::AnalyzeConstraints, nullptr, "offer constraints as an object type"},
      {"AutoSaveSchemas", "", flag, 0, &S::AutoSaveSchemas, nullptr, "kept for the options window"},
      {"Run", "", flag, 0, &S::Run, nullptr, "read at start, without use"},
      {"ShowTipOfDay", "", number, 0, nullptr, nullptr, "1 shows the tip window at the first activation"},
      {"DisplayedTipNum", "", number, 0, nullptr, nullptr, "number of the tip last shown"},
      {"Count", servers, number, 0, nullptr, nullptr, "number of servers in the list"},
      {"ShowOwners", servers, flag, 0, &S::ShowOwners, nullptr, "show the owner controls of the panels"},
      {"FilterOfflineDbs", servers, flag, 0, &S::FilterOfflineDbs, nullptr,
       "list only databases that can be connected to"},
      {"AutoConnect", servers, flag, 0, nullptr, nullptr, "connect during start-up"},
      {"CursorConnectionUseServer", servers, flag, 1, nullptr, &S::glngCursorLocation,
       "server-side cursor; otherwise client-side"},
      {"OdbcDriver", servers, textSetting, 0, nullptr, nullptr,
       "ODBC driver for servers that aren't embedded; empty: the newest that is installed"},
      {"ShowDataCompOpt", comparisons, flag, 1, nullptr, nullptr, "show the options before each data comparison"},
      {"PromptToSave", comparisons, flag, 1, nullptr, nullptr, "kept for the options window"},
      {"CaseSensitive", comparisons, flag, 1, &S::CaseSensitive, nullptr, "object texts compare case-sensitively"},
      {"DataCaseSensitive", comparisons, flag, 1, &S::gblnDataCaseSensitive, nullptr,
       "table data compares case-sensitively"},
      {"IgnoreWhitespace", comparisons, flag, 1, &S::IgnoreWhitespace, nullptr,
       "blanks, tabs and line ends don't count"},
      {"IgnoreComments", comparisons, flag, 1, &S::IgnoreComments, nullptr, "comments don't count"},
      {"IgnoreIndexes", comparisons, flag, 0, &S::IgnoreIndexes, nullptr, "leave indexes out of a table's text"},
      {"IgnoreColSeq", comparisons, flag, 1, &S::IgnoreColSeq, nullptr, "the order of lines doesn't count"},
      {"IgnoreSysObjects", comparisons, flag, 1, &S::IgnoreSysObjects, nullptr,
       "leave system objects out of the lists"},
      {"PageWidth", panes, number, 20000, nullptr, nullptr, "page width of the text panes in twips"},
      {"PageHeight", panes, number, 15840, nullptr, nullptr, "page height of the text panes in twips"},
      {"AlignedView", panes, flag, 0, nullptr, nullptr, "show two texts that differ with their lines side by side"},
  };
  return table;
}

const Setting* findSetting(std::string_view strName) {
  for (const Setting& setting : settingsTable())
    if (equalNoCase(setting.name, strName)) return &setting;
  return nullptr;
}

std::string settingKey(const Setting& setting) { return std::string(productKey) + setting.subkey; }

std::int32_t ReadNumber(Program& program, std::string_view strName) {
  const Setting* setting = findSetting(strName);
  if (!setting) throw RuntimeError(5, "There is no setting " + std::string(strName));
  return GetSettingDWord(program.store, HKEY_CURRENT_USER, settingKey(*setting), setting->name, setting->standard);
}

bool ReadFlag(Program& program, std::string_view strName) { return ReadNumber(program, strName) == 1; }

std::string ReadText(Program& program, std::string_view strName) {
  const Setting* setting = findSetting(strName);
  if (!setting) throw RuntimeError(5, "There is no setting " + std::string(strName));
  return GetSettingString(program.store, HKEY_CURRENT_USER, settingKey(*setting), setting->name, "");
}

void applySetting(Program& program, const Setting& setting, std::int32_t lngValue) {
  if (setting.global) program.settings.*setting.global = lngValue == 1;
  if (!setting.globalNumber) return;
  const bool isFlag = setting.kind == SettingKind::Flag;
  program.settings.*setting.globalNumber = !isFlag ? lngValue : lngValue == 1 ? adUseServer : adUseClient;
}

void SaveSetting(Program& program, const Setting& setting, std::int32_t lngValue) {
  SaveSettingDWord(program.store, HKEY_CURRENT_USER, settingKey(setting), setting.name, lngValue);
  applySetting(program, setting, lngValue);
}

void SaveByTheWay(Program& program, const std::function<void()>& write) {
  try {
    write();
  } catch (const RuntimeError& error) {
    if (std::exchange(program.state<SaveByTheWayState>().blnTold, true)) return;
    program.host.messageBox(
        error.description + "\r\n\r\nYou can go on, but the databases used last are not remembered.", Icon::Warning,
        "Settings Are Not Saved");
  }
}

}  // namespace qrel
