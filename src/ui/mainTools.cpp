// The main window's tools: the options and the small dialogs of the Tools menu.
#include "app/trap.h"
#include "db/mdlObjects.h"
#include "db/modPanels.h"
#include "db/modSchema.h"
#include "platform/data/connection.h"
#include "ui/flagScope.h"
#include "ui/frmMain.h"
#include "ui/tools/frmAbout.h"
#include "ui/tools/frmAttachDb.h"
#include "ui/tools/frmGetDbInfo.h"
#include "ui/tools/frmOptions.h"
#include "ui/tools/frmSearchForObject_Gen.h"
#include "ui/tools/frmTip.h"

namespace qrel {

bool frmMain::anyDatabaseIsSelected() const {
  return !SelectedDatabase(workspace, 0).empty() || !SelectedDatabase(workspace, 1).empty();
}

void frmMain::showOwners() {
  for (ComboBox& combo : workspace.cmbOwners) combo.setVisible(program_.settings.ShowOwners);
}

void frmMain::fillOwners() {
  if (!anyDatabaseIsSelected()) return InitializeDisplay(false);
  for (int Index = 0; Index < 2; ++Index) {
    const auto side = static_cast<std::size_t>(Index);
    LoadOwners(program_, program_.main.gtypSelServ[side], SelectedDatabase(workspace, Index), workspace.cmbType,
               workspace.cmbOwners[side]);
  }
}

// Panels that show nothing have no connection that could be refreshed.
void frmMain::refreshConnections() {
  if (anyDatabaseIsSelected()) InitializeDisplay(true);
}

void frmMain::offerObjectTypesAnew() {
  FillObjectTypes(program_, workspace.cmbType);
  showObjectTypeTips(workspace.objectType());
  if (!anyDatabaseIsSelected()) return;
  for (int Index = 0; Index < 2; ++Index) RefreshDisplayForPanel(Index);
}

void frmMain::MenuToolsFindInDb(int Index) {
  trap(program_, "frmMain", "MenuToolsFindInDb", [&] {
    CheckedObject start;
    if (!CanSearchForObject(Index, start)) return;
    const FoundObject found = frmSearchForObject_Gen(program_).ShowUp(start.enmType, Index, start.strDb);
    if (found.lngId == -1) return;
    SelectObjectType(workspace.cmbType, found.enmType, workspace.mblnBusy, true);
    SelectItemInPVListBoxById(workspace.pvlSqlObj[static_cast<std::size_t>(Index)], found.lngId);
  });
}

void frmMain::MenuToolsAttachDb() {
  trap(program_, "frmMain", "MenuToolsAttachDb", [&] {
    if (SelectedDatabase(workspace, 0).empty()) {
      program_.host.messageBox("Please connect to the server first.");
      return;
    }
    bool blnAttached = false;
    frmAttachDb(program_).ShowUp(blnAttached);
    if (blnAttached) InitializeDisplay(true);
  });
}

void frmMain::cmdDbInfo_Click(int Index) {
  if (workspace.mblnBusy) return;
  const FlagScope busy(workspace.mblnBusy);
  trap(program_, "frmMain", "cmdDbInfo_Click", [&] {
    const std::string strDb = SelectedDatabase(workspace, Index);
    if (strDb.empty())
      program_.host.messageBox("Cannot display database info - the list of databases is empty.", Icon::Information,
                               "Cannot Display Info");
    else
      frmGetDbInfo(program_).ShowUp(Index, strDb);
  });
}

void frmMain::cmdFind_Click(int Index) {
  if (workspace.mblnBusy) return;
  const FlagScope busy(workspace.mblnBusy);
  MenuToolsFindInDb(Index);
}

void frmMain::ShowTip() { frmTip(program_).ShowUp(); }

void frmMain::ShowAbout() { frmAbout(program_).ShowUp(); }

bool SelectItemInPVListBoxById(CheckList& list, long lngId) {
  for (std::size_t row = 0; row < list.count(); ++row) {
    if (list.id(row) != lngId) continue;
    list.select(row);
    return true;
  }
  return false;
}

void frmMain::MenuToolsOptions() {
  trap(program_, "frmMain", "MenuToolsOptions", [&] {
    const SettingsState before = program_.settings;
    if (!frmOptions(program_).ShowUp()) return;
    const SettingsState& now = program_.settings;
    if (now.ShowOwners != before.ShowOwners) {
      showOwners();
      if (now.ShowOwners) fillOwners();
    }
    if (now.glngCursorLocation != before.glngCursorLocation) {
      program_.host.messageBox(
          "Cursor location setting was changed.\r\n\r\nPlease click OK and wait while the connections are refreshed.");
      refreshConnections();
    }
    if (now.CacheSize != before.CacheSize && now.glngCursorLocation != adUseServer)
      program_.host.messageBox(
          "Cache Size setting was changed.\r\n\r\nPlease note that this setting has meaning only when Cursor Location "
          "is set to server-side.");
    if (now.AnalyzeConstraints != before.AnalyzeConstraints) {
      program_.host.messageBox(
          "Setting 'Treat Constraints as a separate object type' changed.\r\n\r\nPlease click OK and wait while the "
          "display is refreshed.");
      offerObjectTypesAnew();
    }
  });
}

}  // namespace qrel
