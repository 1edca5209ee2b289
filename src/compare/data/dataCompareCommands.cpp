#include "compare/data/dataCompareCommands.h"

#include <utility>

#include "app/trap.h"
#include "compare/all/frmCompareAllTables.h"
#include "compare/all/frmListObjects.h"
#include "compare/data/modCompareAllData.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::int32_t dataComparison = 0;  // the report's comparison type
constexpr int selectedTables = 50;          // its sub types
constexpr int allTables = 60;

CompareAllReportCall reportCall(const Program& program, const std::string& strDb1, const std::string& strDb2,
                                int intCompSubType, const AutoReport& replay) {
  CompareAllReportCall call;
  call.arrServers = {program.main.gtypSelServ[0].Name, program.main.gtypSelServ[1].Name};
  call.arrDatabases = {strDb1, strDb2};
  call.lngCompType = dataComparison;
  call.intCompSubType = intCompSubType;
  call.replay = replay;
  return call;
}

// Compares in the window and shows the report when there is one. The window knows the selection by now.
void compare(Program& program, CompareAllSteps& steps, frmCompareAllTables& form, long lngType, bool blnDetails,
             const CompareAllReportCall& call) {
  form.CompareAll_Data = [&program](CompareAllControls& frmOwner, const CompareAllInput& input) {
    return CompareAll_Data(program, frmOwner, input);
  };
  bool blnResult = false;
  form.ShowUp(call.arrDatabases[0], call.arrDatabases[1], lngType, blnDetails, false, blnResult);
  if (blnResult && !program.report.gstrReportText.empty()) steps.ShowReport(call);
  program.report.gstrReportText.clear();
}

// The object type of an index; 0 for one outside the table.
long typeAt(long lngIndex) { return lngIndex <= 5 ? CompareAllType(lngIndex) : 0; }

}  // namespace

void DataCompareAll(Program& program, Workspace& workspace, CompareAllSteps& steps, const AutoReport& replay) {
  trap(program, "frmMain", "DataCompareAll", [&] {
    const auto isEmpty = [](const TextPane& pane) { return trimBlanks(pane.givenText()).empty(); };
    if (isEmpty(workspace.txtTXProc[0]) && isEmpty(workspace.txtTXProc[1])) {
      program.host.messageBox("Cannot compare - the list of objects is empty.", Icon::Information, "Cannot Compare");
      return;
    }
    const CompareAllReportCall call =
        reportCall(program, steps.DatabaseName(0), steps.DatabaseName(1), allTables, replay);
    frmCompareAllTables form(program);
    compare(program, steps, form, objTables, false, call);
  });
}

void MenuDataCompSelective(Program& program, Workspace& workspace, CompareAllSteps& steps, const AutoReport& replay) {
  trap(program, "frmMain", "MenuDataCompSelective", [&] {
    DataCompareSelective(program, workspace, steps, 0, steps.DatabaseName(0), steps.DatabaseName(1), true, false,
                         replay, {});
  });
}

void DataCompareSelective(Program& program, Workspace&, CompareAllSteps& steps, long lngIndex,
                          const std::string& strDb1, const std::string& strDb2, bool blnSelective, bool blnDetails,
                          const AutoReport& replay, ObjectSelection selection) {
  trap(program, "modCompareData", "DataCompareSelective", [&] {
    if (strDb1.empty() || strDb2.empty()) {
      program.host.messageBox("Cannot compare - the list of databases is empty.", Icon::Information, "Cannot Compare");
      return;
    }
    program.report.gstrReportText.clear();
    const long lngType = typeAt(lngIndex);
    if (lngType == 0) {
      program.host.messageBox("Wrong index value in Sub DataCompareSelective, Index = " + std::to_string(lngIndex));
      return;
    }
    frmCompareAllTables form(program);
    if (blnSelective) {
      bool blnOk = replay.blnAuto, blnAllSelected = false;
      if (!replay.blnAuto) frmListObjects(program).ShowUp(strDb1, strDb2, lngType, blnOk, blnAllSelected, selection);
      if (!blnOk) return;
      if (!blnAllSelected) form.SetVarsForSelectiveComparison(selection);
    }
    CompareAllReportCall call = reportCall(program, strDb1, strDb2, selectedTables, replay);
    call.selection = std::move(selection);
    compare(program, steps, form, lngType, blnDetails, call);
  });
}

}  // namespace qrel
