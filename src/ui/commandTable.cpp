#include "ui/commandTable.h"

#include <algorithm>
#include <array>
#include <utility>

#include "db/mdlObjects.h"
#include "platform/text.h"
#include "ui/frmMain.h"

namespace qrel {

namespace {

// One type each, in the order of their index.
constexpr std::array<const char*, 7> typeCaptions = {"&Tables",   "&Procedures",    "&Functions",  "&Views",
                                                     "T&riggers", "R&elationships", "&Constraints"};

void addForEachType(CommandTable& commands, long lngFirstId, const std::string& path, bool blnSelective,
                    bool blnDetails) {
  for (std::size_t type = 0; type < typeCaptions.size(); ++type) {
    const std::string caption = std::string(blnSelective ? "Compare Selected " : "Compare All ") + typeCaptions[type] +
                                (blnDetails ? " - Details" : "");
    const auto lngTypeIndex = static_cast<long>(type);
    commands.push_back({lngFirstId + lngTypeIndex, path, caption, Guard::none, [=](frmMain& window) {
                          window.CompStruct_BulkSel_SimpleDet_All(lngTypeIndex, blnSelective, blnDetails);
                        }});
  }
}

void InitializeMenus_File(CommandTable& commands) {
  const std::string path = "File";
  commands.push_back({100, "", "&File", Guard::none, nullptr});
  commands.push_back({.id = 101,
                      .path = path,
                      .caption = "&Connect to the Server",
                      .action = [](frmMain& window) { window.cmdConnect_Click(); },
                      .key = "F5",
                      .clearsBusy = true});
  commands.push_back({102, path, "Refresh - &Source", Guard::CheckMdac,
                      [](frmMain& window) { window.RefreshSourceTarget(0); }, "", true});
  commands.push_back(
      {103, path, "Refresh - &Target", Guard::CheckMdac, [](frmMain& window) { window.RefreshSourceTarget(1); }});
  commands.push_back({104, path, "&Run Saved Comparison Process", Guard::CheckMdac,
                      [](frmMain& window) { window.RunSavedProcess(0); }, "", true});
  commands.push_back({.id = 901,
                      .path = path,
                      .caption = "&Load Scripts...",
                      .action = [](frmMain& window) { window.MenuLoadScripts({}, -1); },
                      .key = "Ctrl+O"});
  commands.push_back({105, path, "E&xit", Guard::none, [](frmMain& window) { window.close(); }, "", true});
}

void InitializeMenus_StructComp(CommandTable& commands) {
  const std::string path = "Structure Comparisons";
  const std::string bulk = path + "/Bulk Comparisons";
  const std::string selective = path + "/Selective Comparisons";
  commands.push_back({200, "", "&Structure Comparisons", Guard::none, nullptr});
  commands.push_back({.id = 201,
                      .path = path,
                      .caption = "Compare &Selected Objects",
                      .action = [](frmMain& window) { window.cmdCompare_Click(); },
                      .key = "F7",
                      .clearsBusy = true});
  commands.push_back({.id = 202,
                      .path = path,
                      .caption = "Compare &All Objects",
                      .action = [](frmMain& window) { window.cmdCompareAll_Click(); },
                      .key = "F8",
                      .clearsBusy = true});
  commands.push_back({203, path, "&Bulk Comparisons", Guard::none, nullptr, "", true});
  commands.push_back({204, bulk, "&Simple", Guard::none, nullptr});
  addForEachType(commands, 205, bulk + "/Simple", false, false);
  commands.push_back({220, bulk, "&Details", Guard::none, nullptr});
  addForEachType(commands, 221, bulk + "/Details", false, true);
  commands.push_back({230, path, "&Selective Comparisons", Guard::none, nullptr});
  commands.push_back({0, selective, "&Simple", Guard::none, nullptr});
  addForEachType(commands, 231, selective + "/Simple", true, false);
  commands.push_back({240, selective, "&Details", Guard::none, nullptr});
  addForEachType(commands, 241, selective + "/Details", true, true);
  commands.push_back({250, path, "Compare and Print All Tables", Guard::CheckMdacAndServerInfoSet,
                      [](frmMain& window) { window.CompareAndPrintAllTables(); }, "", true});
}

void InitializeMenus_DataComp(CommandTable& commands) {
  const std::string path = "Data Comparisons";
  commands.push_back({300, "", "&Data Comparisons", Guard::none, nullptr});
  commands.push_back({.id = 310,
                      .path = path,
                      .caption = "Compare &Data in Single Pair of Tables",
                      .action = [](frmMain& window) { window.cmdCompData_Click(); },
                      .key = "F9",
                      .clearsBusy = true});
  commands.push_back({320, path, "Compare Data in &Selected Tables", Guard::none,
                      [](frmMain& window) { window.MenuDataCompSelective(); }});
  commands.push_back(
      {330, path, "Compare Data in &All Tables", Guard::none, [](frmMain& window) { window.DataCompareAll(); }});
}

void InitializeMenus_SQL(CommandTable& commands) {
  const std::string path = "SQL";
  commands.push_back({400, "", "&S&QL", Guard::none, nullptr});
  commands.push_back({410, path, "Build SQL CREATE Statement - &Source", Guard::CheckMdac,
                      [](frmMain& window) { window.MenuSqlCreate(0); }});
  commands.push_back({420, path, "Build SQL CREATE Statement - &Target", Guard::CheckMdac,
                      [](frmMain& window) { window.MenuSqlCreate(1); }});
}

void InitializeMenus_Tools(CommandTable& commands) {
  const std::string path = "Tools";
  commands.push_back({500, "", "&Tools", Guard::none, nullptr});
  commands.push_back({501, path, "&Add Server", Guard::CheckMdac, [](frmMain& window) { window.MenuAddServer(); }});
  commands.push_back({502, path, "&Remove Server", Guard::none, [](frmMain& window) { window.MenuRemoveServer(); }});
  commands.push_back({503, path, "Data Analyzer", Guard::none, nullptr, "", true});
  commands.push_back({504, path + "/Data Analyzer", "Analyze Data in Source Table", Guard::none,
                      [](frmMain& window) { window.MenuToolsDataAnalyzerTable(0); }});
  commands.push_back({505, path + "/Data Analyzer", "Analyze Data in Target Table", Guard::none,
                      [](frmMain& window) { window.MenuToolsDataAnalyzerTable(1); }});
  commands.push_back({506, path, "&Find Object", Guard::none, nullptr});
  commands.push_back({507, path + "/Find Object", "In &Source Database", Guard::none,
                      [](frmMain& window) { window.MenuToolsFindInDb(0); }});
  commands.push_back({508, path + "/Find Object", "In &Target Database", Guard::none,
                      [](frmMain& window) { window.MenuToolsFindInDb(1); }});
  commands.push_back({509, path, "Atta&ch Database", Guard::CheckMdacAndServerInfoSet,
                      [](frmMain& window) { window.MenuToolsAttachDb(); }});
  commands.push_back({510, path, "List All Ignored Columns - &Data Comparisons", Guard::none,
                      [](frmMain& window) { window.MenuListIgnoredColumns(1); }, "", true});
  commands.push_back({511, path, "List All Ignored Columns - &Structure Comparisons", Guard::none,
                      [](frmMain& window) { window.MenuListIgnoredColumns(2); }});
  commands.push_back(
      {513, path, "&Options...", Guard::none, [](frmMain& window) { window.MenuToolsOptions(); }, "", true});
}

void InitializeMenus_Help(CommandTable& commands) {
  const std::string path = "Help";
  commands.push_back({600, "", "&Help", Guard::none, nullptr});
  commands.push_back({.id = 610,
                      .path = path,
                      .caption = "&Index...",
                      .action = [](frmMain& window) { window.ShowHelp(helpIndex); },
                      .key = "F1"});
  commands.push_back({620, path, "&Tip of the Day...", Guard::none, [](frmMain& window) { window.ShowTip(); }});
  commands.push_back(
      {630, path, "Technical &Support", Guard::none, [](frmMain& window) { window.ShowHelp(helpSupport); }});
  commands.push_back({660, path, "&About...", Guard::none, [](frmMain& window) { window.ShowAbout(); }, "", true});
}

void InitializeMenus_Navigate(CommandTable& commands) {
  const std::string path = "Navigate";
  const auto add = [&](long lngId, const char* caption, const char* key, bool separator,
                       std::function<void(frmMain&)> action) {
    commands.push_back({.id = lngId,
                        .path = path,
                        .caption = caption,
                        .action = std::move(action),
                        .key = key,
                        .separatorBefore = separator});
  };
  commands.push_back({900, "", "&Navigate", Guard::none, nullptr});
  add(902, "&Next Marked Block", "Alt+Down", false, [](frmMain& window) { window.MoveToMark(1); });
  add(903, "&Previous Marked Block", "Alt+Up", false, [](frmMain& window) { window.MoveToMark(-1); });
  add(904, "&Find in Text...", "Ctrl+F", true, [](frmMain& window) { window.FindInPane(); });
  add(905, "Filter &Objects", "Ctrl+L", false, [](frmMain& window) { window.FocusFilter(); });
}

void addContextMenu(CommandTable& commands) {
  const std::string path = contextMenuPath;
  commands.push_back({700, path, "Refresh", Guard::CheckMdac, [](frmMain& window) { window.RefreshPopupPanel(); }});
  commands.push_back(
      {710, path, "Show Color Schema", Guard::none, [](frmMain& window) { window.ShowColorSchema(); }, "", true});
  commands.push_back(
      {720, path, "Visualize Differences", Guard::none, [](frmMain& window) { window.VisualizeDifferences(); }});
  commands.push_back({730,
                      path,
                      "Ignore Columns",
                      Guard::CheckMdac,
                      [](frmMain& window) { window.MenuPopUpIgnoreColumns(); },
                      "",
                      true,
                      {objTables}});
  commands.push_back({740, path, "Compare Highlighted Sections", Guard::none,
                      [](frmMain& window) { window.CompareHighlightedSections(); }});
  commands.push_back({750, path, "Build SQL CREATE Statement", Guard::CheckMdac,
                      [](frmMain& window) { window.BuildSQLCreateStatement(); }, "", true});
  commands.push_back({760,
                      path,
                      "Find references to non-existent objects",
                      Guard::none,
                      [](frmMain& window) { window.SearchRefToNonExistentObjects(-1); },
                      "",
                      false,
                      {objProcedures, objFunctions, objViews}});
  commands.push_back({770, path, "Print", Guard::none, [](frmMain& window) { window.MenuPopUpPrint(); }, "", true});
  commands.push_back({780, path, "Print Source And Target", Guard::none,
                      [](frmMain& window) { window.MenuPopUpPrintSourceAndTarget(); }});
}

void addKeys(CommandTable& commands) {
  const auto add = [&](const char* key, std::function<void(frmMain&)> action) {
    commands.push_back({.path = keysPath, .caption = "", .action = std::move(action), .key = key});
  };
  add("F6", [](frmMain& window) { window.workspace.cmbType.setFocus(); });
  add("F10", [](frmMain& window) { window.cmdDbInfo[0].personClicks(); });
  add("F11", [](frmMain& window) { window.cmdDbInfo[1].personClicks(); });
  // The options of the comparison are then asked for once, whether or not they are shown before each one.
  add("Shift+F9", [](frmMain& window) { window.barCommands.personChooses(310); });
  add("Alt+O", [](frmMain& window) { window.cmdCopyClip[0].personClicks(); });
  add("Alt+Y", [](frmMain& window) { window.cmdCopyClip[1].personClicks(); });
  add("Alt+P", [](frmMain& window) { window.cmdCopyToFile[0].personClicks(); });
  add("Alt+I", [](frmMain& window) { window.cmdCopyToFile[1].personClicks(); });
  add("Alt+V", [](frmMain& window) { window.cmdViewData[0].personClicks(); });
  add("Alt+W", [](frmMain& window) { window.cmdViewData[1].personClicks(); });
}

std::string captionWithoutMarks(const std::string& caption) { return replaceAll(caption, "&", ""); }

}  // namespace

CommandTable MainCommands() {
  CommandTable commands;
  InitializeMenus_File(commands);
  InitializeMenus_StructComp(commands);
  InitializeMenus_DataComp(commands);
  InitializeMenus_SQL(commands);
  InitializeMenus_Tools(commands);
  InitializeMenus_Navigate(commands);
  InitializeMenus_Help(commands);
  addContextMenu(commands);
  addKeys(commands);
  return commands;
}

const MenuCommand* FindCommand(const CommandTable& commands, long lngId) {
  if (lngId == 0) return nullptr;
  const auto found = std::find_if(commands.begin(), commands.end(),
                                  [&](const MenuCommand& each) { return each.id == lngId && each.action; });
  return found == commands.end() ? nullptr : &*found;
}

std::vector<MenuItem> MakeMenu(const CommandTable& commands, const std::string& path) {
  std::vector<MenuItem> items;
  for (const MenuCommand& command : commands) {
    if (command.path != path) continue;
    MenuItem item;
    item.id = command.id;
    item.caption = command.caption;
    item.separatorBefore = command.separatorBefore;
    item.key = command.key;
    item.popup = !command.action;
    if (item.popup) {
      item.items = MakeMenu(commands, (path.empty() ? "" : path + "/") + captionWithoutMarks(command.caption));
      if (item.items.empty()) continue;
    }
    items.push_back(std::move(item));
  }
  return items;
}

}  // namespace qrel
