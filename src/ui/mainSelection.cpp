// The main window's panels: connecting, and what each choice reloads.
#include <utility>

#include "app/mdlMain.h"
#include "app/trace.h"
#include "app/trap.h"
#include "db/mdlObjects.h"
#include "db/mdlServers.h"
#include "db/modObjectText.h"
#include "db/modPanels.h"
#include "db/modSchema.h"
#include "ui/flagScope.h"
#include "ui/frmMain.h"

namespace qrel {

namespace {

// "1,234,567"; nothing for 0.
std::string groupedNumber(long lngNumber) {
  if (lngNumber == 0) return {};
  std::string text = std::to_string(lngNumber);
  const std::size_t first = lngNumber < 0 ? 1 : 0;
  for (std::size_t i = text.size(); i > first + 3;) text.insert(i -= 3, ",");
  return text;
}

}  // namespace

long OptionType(long lngOptIndex) {
  switch (lngOptIndex) {
    case 0:
      return objTables;
    case 1:
      return objProcedures;
    case 2:
      return objFunctions;
    case 3:
      return objViews;
    case 4:
      return objTriggers;
    case 5:
      return objRelationships;
    case 6:
      return 70;
    default:
      return 0;
  }
}

void frmMain::ShowObjectType(long type) {
  ComboBox& cmbType = workspace.cmbType;
  if (type == workspace.objectType()) return;
  // The lists are reloaded by the combo's own event, which does nothing while the window is busy.
  const bool busyBefore = std::exchange(workspace.mblnBusy, false);
  for (std::size_t row = 0; row < cmbType.count(); ++row)
    if (cmbType.itemData(row) == type) {
      cmbType.select(static_cast<int>(row));
      break;
    }
  workspace.mblnBusy = busyBefore;
}

bool SelectRowByText(CheckList& list, const std::string& strText) {
  for (std::size_t row = 0; row < list.count(); ++row) {
    if (list.cell(row, 0) != strText) continue;
    list.select(row);
    return true;
  }
  return false;
}

void frmMain::cmdConnect_Click() {
  if (!mblnActivated || workspace.mblnBusy) return;
  trap(program_, "frmMain", "cmdConnect_Click", [&] {
    const FlagScope busy(workspace.mblnBusy);
    if (CheckMdac(program_)) InitializeDisplay(true);
  });
}

void frmMain::clearPanel(std::size_t side) {
  CheckList& listDb = workspace.pvlDb[side];
  listDb.tag = "OFF";
  listDb.setRedraw(false);
  listDb.clear();
  listDb.tag.clear();
  listDb.setRedraw(true);
  CheckList& listObj = workspace.pvlSqlObj[side];
  listObj.tag = "OFF";
  listObj.clear();
  listObj.tag.clear();
  workspace.txtTXProc[side].setText("");
  ComboBox& comboOwners = workspace.cmbOwners[side];
  comboOwners.tag = "OFF";
  comboOwners.clear();
  comboOwners.tag.clear();
}

void frmMain::InitializeDisplay(bool pblnLoadMRUDb) {
  trap(program_, "frmMain", "InitializeDisplay", [&] {
    WriteDebugLog(program_,
                  std::string("Begin InitializeDisplay, pblnLoadMRUDb = ") + (pblnLoadMRUDb ? "True" : "False"));
    clearPanel(0);
    clearPanel(1);
    cmdConnect.setImage(imageIdle);
    if (!ServerInfoSet()) return;
    cmdConnect.setImage(imageConnecting);
    const bool blnSource = LoadServer(program_, workspace, pblnLoadMRUDb, 0, mblnActivated);
    const bool blnTarget = LoadServer(program_, workspace, pblnLoadMRUDb, 1, mblnActivated);
    cmdConnect.setImage(blnSource || blnTarget ? imageConnected : imageIdle);
    WriteDebugLog(program_, "End InitializeDisplay");
  });
}

bool frmMain::ServerInfoSet() {
  return qrel::ServerInfoSet(program_, [this] { MenuAddServer(); });
}

void frmMain::refillServers() {
  for (ComboBox& combo : workspace.cmbServer) FillServerCombo(program_, combo, 0);
}

void frmMain::MenuAddServer() {
  trap(program_, "frmMain", "MenuAddServer", [&] {
    if (!qrel::MenuAddServer(program_)) return;
    refillServers();
    InitializeDisplay(false);
  });
}

void frmMain::MenuRemoveServer() {
  trap(program_, "frmMain", "MenuRemoveServer", [&] {
    if (!qrel::MenuRemoveServer(program_)) return;
    refillServers();
    InitializeDisplay(false);
  });
}

void frmMain::cmbServer_Click(int Index) {
  const auto side = static_cast<std::size_t>(Index);
  if (workspace.cmbServer[side].muted()) return;
  trap(program_, "frmMain", "cmbServer_Click", [&] {
    tServer chosen;
    chosen.Name = workspace.cmbServer[side].text();
    GetServerData(program_, chosen);
    // The version number stays that of the server before.
    copyServerRecord(chosen, program_.main.gtypSelServ[side]);
    clearPanelFilters(Index);
    LoadServer(program_, workspace, true, Index, mblnActivated);
  });
}

void frmMain::pvlDb_Click(int Index) {
  const auto side = static_cast<std::size_t>(Index);
  if (workspace.pvlDb[side].muted()) return;
  trap(program_, "frmMain", "pvlDb_Click", [&] {
    tServer& server = program_.main.gtypSelServ[side];
    const std::string strDb = SelectedDatabase(workspace, Index);
    clearPanelFilters(Index);
    ReloadObjects(program_, workspace, workspace.objectType(), strDb, Index, mblnActivated);
    LoadOwners(program_, server, strDb, workspace.cmbType, workspace.cmbOwners[side]);
    if (server.RegIndex <= 0) return;
    server.MRUDb = strDb;
    auto& servers = program_.servers.gtypServers;
    if (static_cast<std::size_t>(server.RegIndex) <= servers.size())
      servers[static_cast<std::size_t>(server.RegIndex - 1)].MRUDb = strDb;
    SaveServerValue(program_, server.RegIndex, "MRUDb", strDb);
    SaveServerValue(program_, server.RegIndex, panelDatabaseValues[side], strDb);
  });
}

void frmMain::keepObjectsOfOwner(int Index, const std::string& strOwner) {
  const auto side = static_cast<std::size_t>(Index);
  CheckList& list = workspace.pvlSqlObj[side];
  list.tag = "OFF";
  list.setRedraw(false);
  for (std::size_t row = list.count(); row-- > 0;) {
    const std::string strRowOwner =
        GetOwner(program_, program_.main.gtypSelServ[side], SelectedDatabase(workspace, Index), list.cell(row, 0),
                 workspace.objectType());
    if (strRowOwner != strOwner) list.remove(row);
  }
  list.select(0);
}

void frmMain::cmbOwners_Click(int Index) {
  const auto side = static_cast<std::size_t>(Index);
  if (workspace.cmbOwners[side].muted()) return;
  trap(program_, "frmMain", "cmbOwners_Click", [&] {
    const std::string strOwner = workspace.cmbOwners[side].text();
    clearPanelFilters(Index);
    tServer& server = program_.main.gtypSelServ[side];
    CheckList& list = workspace.pvlSqlObj[side];
    TextPane& pane = workspace.txtTXProc[side];
    const long type = workspace.objectType();
    const std::string strDb = SelectedDatabase(workspace, Index);
    LoadObjects(program_, server, list, pane, type, strDb, true, "", Index, mblnActivated);
    if (strOwner != "All Owners") keepObjectsOfOwner(Index, strOwner);
    UpdateProcedureTextBox(program_, server, pane, list, type, strDb, "", 0, Index, mblnActivated);
    list.tag.clear();
    list.setRedraw(true);
  });
}

void frmMain::cmbType_Click() { ObjectTypeChanged(10, -1, 3); }

void frmMain::optType_Click(int Index) { ObjectTypeChanged(20, Index, 3); }

void frmMain::showObjectTypeTips(long type) {
  const std::string strName = GetObjectTypeName(type, false);
  cmdCompare.setToolTip("Compare selected " + strName + " (F7)");
  for (CheckList& list : workspace.pvlSqlObj) list.setToolTip("List of all " + strName);
}

void frmMain::ObjectTypeChanged(long enmSource, long lngOptIndex, int panels) {
  if (workspace.mblnBusy || workspace.cmbType.muted()) return;
  trap(program_, "frmMain", "ObjectTypeChanged", [&] {
    const FlagScope busy(workspace.mblnBusy);
    if (!ServerInfoSet()) return;
    long type = 0;
    if (enmSource == 10) type = workspace.objectType();
    if (enmSource == 20) type = OptionType(lngOptIndex);
    showObjectTypeTips(type);
    if (SelectedDatabase(workspace, 0).empty() && SelectedDatabase(workspace, 1).empty())
      return InitializeDisplay(false);
    for (int Index = 0; Index < 2; ++Index) {
      if ((panels & (1 << Index)) == 0) continue;
      ReloadObjects(program_, workspace, type, SelectedDatabase(workspace, Index), Index, mblnActivated);
    }
  });
}

void frmMain::pvlSqlObj_SelectChange(int Index, int row) {
  const auto side = static_cast<std::size_t>(Index);
  CheckList& list = workspace.pvlSqlObj[side];
  if (list.muted()) return;
  trap(program_, "frmMain", "pvlSqlObj_SelectChange", [&] {
    list.tag = "OFF";
    const std::size_t at = row < 0 ? list.count() : static_cast<std::size_t>(row);
    const std::string strName = at < list.count() ? list.cell(at, 0) : std::string();
    const long lngId = at < list.count() ? list.id(at) : 0;
    UpdateProcedureTextBox(program_, program_.main.gtypSelServ[side], workspace.txtTXProc[side], list,
                           workspace.objectType(), SelectedDatabase(workspace, Index), strName, lngId, Index,
                           mblnActivated);
    list.tag.clear();
    if (Index == 0) followSelection();
  });
}

void frmMain::followSelection() {
  if (!mblnActivated || workspace.mblnBusy || !program_.settings.AutoSelTargetObj) return;
  const std::string strName = Workspace::selectedText(workspace.pvlSqlObj[0]);
  if (!strName.empty()) SelectRowByText(workspace.pvlSqlObj[1], strName);
}

void frmMain::pvlSqlObj_RowEvent(int Index, int shift) {
  const CheckList& list = workspace.pvlSqlObj[static_cast<std::size_t>(Index)];
  if (shift != 7 || list.firstSelected() < 0) return;
  const auto row = static_cast<std::size_t>(list.firstSelected());
  program_.host.messageBox("Id: " + groupedNumber(list.id(row)) + ", Name: " + list.cell(row, 0) +
                           ", Ref. Date: " + list.cell(row, 1));
}

void frmMain::RefreshSourceTarget(int Index) {
  if (mlngPopupPanel < 0) return;
  mlngPopupPanel = Index;
  RefreshDisplayForPanel(Index);
}

void frmMain::RefreshDisplayForPanel(int Index) {
  trap(program_, "frmMain", "RefreshDisplayForPanel", [&] {
    workspace.mblnBusy = false;
    CheckList& list = workspace.pvlSqlObj[static_cast<std::size_t>(Index)];
    const std::string strName = Workspace::selectedText(list);
    ObjectTypeChanged(10, -1, 1 << Index);
    if (!strName.empty()) SelectRowByText(list, strName);
  });
}

}  // namespace qrel
