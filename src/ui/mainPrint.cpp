// Printing from the main window: the panes, and all tables that differ.
#include "app/trap.h"
#include "compare/all/modCompareAll.h"
#include "db/mdlObjects.h"
#include "db/modPanels.h"
#include "ui/flagScope.h"
#include "ui/frmCompareAndPrint.h"
#include "ui/frmMain.h"

namespace qrel {

void frmMain::MenuPopUpPrint() {
  if (mlngPopupPanel >= 0) PrintStructure(static_cast<int>(mlngPopupPanel), false, "");
}

void frmMain::MenuPopUpPrintSourceAndTarget() {
  PrintStructure(0, false, "Source: ");
  PrintStructure(1, false, "Target: ");
}

// Why the tables can't be compared as they are selected; empty when they can.
std::string frmMain::whyNoPrintRun() const {
  const auto& servers = program_.main.gtypSelServ;
  if (servers[0].Name.empty()) return "Please select Source server first.";
  if (servers[1].Name.empty()) return "Please select Target server first.";
  const std::string strSourceDb = SelectedDatabase(workspace, 0);
  const std::string strTargetDb = SelectedDatabase(workspace, 1);
  if (strSourceDb.empty() || strTargetDb.empty()) return "Cannot compare - the list of databases is empty.";
  if (servers[0].Name == servers[1].Name && strSourceDb == strTargetDb)
    return "Cannot compare - Source and Target database are the same.";
  return {};
}

void frmMain::CompareAndPrintAllTables() {
  trap(program_, "frmMain", "CompareAndPrintAllTables", [&] {
    const auto refuse = [&](const std::string& strText) {
      program_.host.messageBox(strText, Icon::Information, "Cannot Compare");
    };
    if (const std::string strWhy = whyNoPrintRun(); !strWhy.empty()) return refuse(strWhy);
    SelectObjectType(workspace.cmbType, objTables, workspace.mblnBusy, true);
    if (workspace.pvlSqlObj[0].count() == 0) return refuse("Cannot compare - there are no tables in Source database.");
    if (workspace.pvlSqlObj[1].count() == 0) return refuse("Cannot compare - there are no tables in Target database.");
    bool& blnCancel = program_.state<modCompareAllState>().gblnCancelCompare;
    const FlagScope cancelled(blnCancel);  // down at the end, also after an error
    blnCancel = false;
    const FlagScope printing(program_.state<PrintRunState>().gblnCompareAndPrint);
    frmCompareAndPrint run(program_, workspace, compare_);
    program_.host.showModal(run);
  });
}

}  // namespace qrel
