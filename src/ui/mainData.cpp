// The main window's tools over the records of one table: the data viewer, the Data Analyzer, and the comparison of a
// table that a report names.
#include "app/trap.h"
#include "compare/data/frmDataAnalyze.h"
#include "compare/data/frmDataView.h"
#include "compare/data/modCompareData.h"
#include "db/mdlObjects.h"
#include "ui/flagScope.h"
#include "ui/frmMain.h"

namespace qrel {

namespace {

constexpr long actionView = 0, actionAnalyze = 1;

}  // namespace

void frmMain::cmdViewData_Click(int Index) {
  if (workspace.mblnBusy) return;
  const FlagScope busy(workspace.mblnBusy);
  trap(program_, "frmMain", "cmdViewData_Click", [&] {
    CheckedObject table;
    if (CanViewAnalyzeData(actionView, Index, table))
      frmDataView(program_).ShowUp(table.strExtended, table.strTable, table.strDb, Index, table.lngId);
  });
}

void frmMain::cmdAnalyzeData_Click(int Index) {
  if (workspace.mblnBusy) return;
  const FlagScope busy(workspace.mblnBusy);
  MenuToolsDataAnalyzerTable(Index);
}

void frmMain::MenuToolsDataAnalyzerTable(int Index) {
  trap(program_, "frmMain", "MenuToolsDataAnalyzerTable", [&] {
    CheckedObject table;
    if (CanViewAnalyzeData(actionAnalyze, Index, table))
      frmDataAnalyze(program_).ShowUp(table.strExtended, table.strTable, table.strDb, Index, table.lngId);
  });
}

void frmMain::CompareDataOfSelection() {
  trap(program_, "frmMain", "CompareDataOfSelection", [&] {
    auto& state = program_.state<modCompareDataState>();
    state.mainWindow = &workspace;
    tDataCompResult result;
    PerformDataComparison(program_, RequestOfSelection(workspace), state.blnShowOptionsOnce, result);
  });
}

}  // namespace qrel
