// The main window's commands: what the menus, the keys and the panes' context menu start, and the tips of the status
// bar.
#include <algorithm>
#include <optional>

#include "app/mdlMain.h"
#include "app/trap.h"
#include "compare/all/modCompareAll.h"
#include "compare/structure/frmIgnoreColumnsAdd.h"
#include "compare/structure/frmIgnoreColumnsView.h"
#include "db/mdlQueryCode.h"
#include "platform/text.h"
#include "ui/flagScope.h"
#include "ui/frmMain.h"
#include "ui/markedLines.h"

namespace qrel {

void frmMain::InitializeMenus() {
  std::vector<MenuItem> menus = MakeMenu(commands_, "");
  for (MenuItem& menu : menus)
    for (MenuItem& item : menu.items) item.toolTip = GetTooltipTextForMenuItem(item.id);
  barCommands.setMenus(std::move(menus));
}

std::string frmMain::GetTooltipTextForMenuItem(long lngId) const { return lngId == 101 ? cmdConnect.toolTip() : ""; }

void frmMain::wireCommands() {
  barCommands.onExecute = [this](long id) { CommandBars_Execute(id); };
  for (const MenuCommand& command : commands_) {
    if (command.key.empty()) continue;
    if (command.id == 0)
      addKey(command.key, [this, action = command.action] { action(*this); });
    else
      addKey(command.key, [this, id = command.id] { barCommands.personChooses(id); });
  }
  for (int Index = 0; Index < 2; ++Index) {
    const auto side = static_cast<std::size_t>(Index);
    workspace.txtTXProc[side].onMouseUp = [this, Index](int button) { txtTXProc_MouseUp(Index, button); };
    workspace.txtTXProc[side].onScroll = [this, side] { scrollOtherPane(side); };
  }
  wireAlignment();
}

void frmMain::wireTips() {
  const auto showTip = [this](Control& control) {
    control.onPointedAt = [this, &control](bool here) { lblStatus.setText(here ? control.toolTip() : ""); };
  };
  for (Control* control :
       std::initializer_list<Control*>{&workspace.cmbType, &cmdConnect, &cmdCompare, &cmdCompareAll, &cmdCompData,
                                       &cmdDebugScript, &cmdHelp, &chkScrollTogether, &chkAligned})
    showTip(*control);
  for (auto* buttons : {&cmdCopyClip, &cmdCopyToFile, &cmdViewData, &cmdAnalyzeData, &cmdDbInfo, &cmdFind,
                        &srtFiltering, &cmdFilterBySchema})
    for (Button& button : *buttons) showTip(button);
}

void frmMain::CommandBars_Execute(long lngId) {
  if (!mblnActivated || workspace.mblnBusy) return;
  const FlagScope busy(workspace.mblnBusy);
  ExecuteAction(lngId);
}

void frmMain::ExecuteAction(long lngId) {
  trap(program_, "frmMain", "ID_DEBUG_ERROR_REPORT", [&] {
    const MenuCommand* command = FindCommand(commands_, lngId);
    if (!command) return;
    if (command->guard != Guard::none && !CheckMdac(program_)) return;
    if (command->guard == Guard::CheckMdacAndServerInfoSet && !ServerInfoSet()) return;
    if (command->clearsBusy) workspace.mblnBusy = false;
    command->action(*this);
  });
}

bool frmMain::anyPaneHasText() const {
  return std::any_of(workspace.txtTXProc.begin(), workspace.txtTXProc.end(),
                     [](const TextPane& pane) { return !trimBlanks(pane.text()).empty(); });
}

std::vector<MenuItem> frmMain::contextMenu() const {
  const bool hasText = anyPaneHasText();
  const long type = workspace.objectType();
  std::vector<MenuItem> items = MakeMenu(commands_, contextMenuPath);
  for (MenuItem& item : items) {
    const std::vector<long>& types = FindCommand(commands_, item.id)->types;
    item.enabled = hasText && (types.empty() || std::find(types.begin(), types.end(), type) != types.end());
  }
  return items;
}

void frmMain::txtTXProc_MouseUp(int Index, int Button) {
  constexpr int rightButton = 2;
  if (!mblnActivated || workspace.mblnBusy) return;
  trap(program_, "frmMain", "txtTXProc_MouseUp", [&] {
    if (Button != rightButton) return;
    std::vector<MenuItem> items;
    {
      const FlagScope busy(workspace.mblnBusy);
      mlngPopupPanel = Index;
      mlngClickedPane = Index + 1;
      items = contextMenu();
    }
    const long lngId = program_.host.popUpMenu(items);
    if (lngId != 0) CommandBars_Execute(lngId);
    mlngPopupPanel = -1;
  });
}

void frmMain::RefreshPopupPanel() {
  if (mlngPopupPanel >= 0) RefreshDisplayForPanel(static_cast<int>(mlngPopupPanel));
}

void frmMain::VisualizeDifferences() {
  if (mlngPopupPanel < 0) return;
  TextPane& pane = workspace.txtTXProc[static_cast<std::size_t>(mlngPopupPanel)];
  const std::optional<std::size_t> line = FirstDifferentLine(pane);
  if (!line) {
    program_.host.messageBox("No differences are marked in this text. Compare the two objects first (F7).",
                             Icon::Information, "Visualize Differences");
    return;
  }
  pane.setSelection(static_cast<std::size_t>(pane.lineOffset(*line)), 0);
  pane.setTopLine(*line);
  scrollOtherPane(static_cast<std::size_t>(mlngPopupPanel));
}

void frmMain::MenuPopUpIgnoreColumns() {
  if (mlngPopupPanel < 0 || !tablesAreActive("Cannot Continue")) return;
  for (const TextPane& pane : workspace.txtTXProc) {
    if (!trimBlanks(pane.text()).empty()) continue;
    program_.host.messageBox("Cannot continue - there is no structure displayed for selected table.", Icon::Information,
                             "Cannot Continue");
    return;
  }
  std::string strServer, strDb, strTable;
  long lngTableId = 0;
  GetNamesOfSelServerDbAndObject(static_cast<int>(mlngPopupPanel), strServer, strDb, strTable, lngTableId);
  bool blnSaved = false;
  std::int32_t lngIgnored = 0;
  frmIgnoreColumnsAdd(program_).ShowUp(ignoredColsStruct, mlngPopupPanel, strServer, strDb, strTable, lngTableId,
                                       blnSaved, lngIgnored);
}

void frmMain::MenuListIgnoredColumns(long enmList) { frmIgnoreColumnsView(program_).ShowUp(enmList); }

void frmMain::ShowHelp(long topic) { program_.host.showHelp(topic); }

void frmMain::scrollOtherPane(std::size_t side) {
  const TextPane& pane = workspace.txtTXProc[side];
  TextPane& other = workspace.txtTXProc[1 - side];
  if (!chkScrollTogether.checked() || pane.backgrounds().empty() || other.backgrounds().empty()) return;
  if (!pane.rows().empty()) return other.setTopRow(pane.topLine());
  other.setTopLine(CounterpartLine(pane, other, pane.topLine()));
}

bool frmMain::closeRequested() {
  if (workspace.mblnBusy) program_.state<modCompareAllState>().gblnCancelCompare = true;
  return true;
}

}  // namespace qrel
