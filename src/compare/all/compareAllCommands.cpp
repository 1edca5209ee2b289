#include "compare/all/compareAllCommands.h"

#include "app/trap.h"
#include "compare/all/frmCompareAll.h"
#include "compare/all/frmCompareAllTables.h"
#include "compare/all/frmListObjects.h"
#include "process/modSavedProcess.h"

namespace qrel {

namespace {

bool databasesChosen(Program& program, const std::string& strSourceDb, const std::string& strTargetDb) {
  if (!strSourceDb.empty() && !strTargetDb.empty()) return true;
  program.host.messageBox("Cannot compare - the list of databases is empty.", Icon::Information, "Cannot Compare");
  return false;
}

CompareAllReportCall reportCall(const Program& program, const std::string& strSourceDb,
                                const std::string& strTargetDb) {
  CompareAllReportCall call;
  call.arrServers = {program.main.gtypSelServ[0].Name, program.main.gtypSelServ[1].Name};
  call.arrDatabases = {strSourceDb, strTargetDb};
  return call;
}

void showReport(Program& program, CompareAllSteps& steps, bool blnResult, const CompareAllReportCall& call) {
  if (blnResult && !program.report.gstrReportText.empty()) steps.ShowReport(call);
  program.report.gstrReportText.clear();
}

// False when the person leaves the choice. blnSelective turns False when everything was chosen.
bool chooseObjects(Program& program, const CompareAllReportCall& call, long lngType, bool& blnSelective,
                   ObjectSelection& selection) {
  bool blnOk = false, blnAllSelected = false;
  frmListObjects form(program);
  form.ShowUp(call.arrDatabases[0], call.arrDatabases[1], lngType, blnOk, blnAllSelected, selection);
  if (blnAllSelected) blnSelective = false;
  return blnOk;
}

}  // namespace

void cmdCompareAll_Click(Program& program, CompareAllSteps& steps, const tReplay& replay) {
  trap(program, "frmMain", "cmdCompareAll_Click", [&] {
    const std::string strSourceDb = steps.DatabaseName(0);
    const std::string strTargetDb = steps.DatabaseName(1);
    if (!databasesChosen(program, strSourceDb, strTargetDb)) return;
    program.report.gstrReportText.clear();
    CompareAllReportCall call = reportCall(program, strSourceDb, strTargetDb);
    call.intCompSubType = 10;
    bool blnResult = false;
    frmCompareAll form(program);
    if (replay.mblnReplay) {
      call.replay = {true, replay.mstrReplayExportPath, replay.mblnReplayPrint};
      call.strObjectTypes = PaddedObjectTypeFlags(replay.mstrReplayObjTypes);
      form.RunSavedProc(strSourceDb, strTargetDb, call.strObjectTypes, blnResult);
    } else {
      form.ShowUp(strSourceDb, strTargetDb, call.strObjectTypes, blnResult);
    }
    showReport(program, steps, blnResult, call);
  });
}

void MenuCompareAll_Click(Program& program, CompareAllSteps& steps, long lngIndex, const std::string& strSourceDb,
                          const std::string& strTargetDb, bool blnSelective, bool blnDetails, const AutoReport& replay,
                          ObjectSelection selection) {
  trap(program, "modCompareAll", "MenuCompareAll_Click", [&] {
    if (!databasesChosen(program, strSourceDb, strTargetDb)) return;
    program.report.gstrReportText.clear();
    const long lngType = CompareAllType(lngIndex);
    if (lngType == 0) {
      program.host.messageBox("Wrong index value in Sub mnuComparisonAllObjects_Click, Index = " +
                              std::to_string(lngIndex));
      return;
    }
    CompareAllReportCall call = reportCall(program, strSourceDb, strTargetDb);
    call.strObjectTypes = ObjectTypeFlags(lngType);
    call.replay = replay;
    if (blnSelective && !replay.blnAuto && !chooseObjects(program, call, lngType, blnSelective, selection)) return;
    frmCompareAllTables form(program);
    if (blnSelective) {
      form.SetVarsForSelectiveComparison(selection);
      call.selection = std::move(selection);
    }
    call.intCompSubType = blnSelective ? 30 : 20;
    call.intDetailType = (blnSelective ? 30 : 10) + (blnDetails ? 10 : 0);
    bool blnResult = false;
    form.ShowUp(strSourceDb, strTargetDb, lngType, blnDetails, true, blnResult);
    showReport(program, steps, blnResult, call);
  });
}

void CompStruct_BulkSel_SimpleDet_All(Program& program, CompareAllSteps& steps, long lngIndex, bool blnSelective,
                                      bool blnDetails) {
  MenuCompareAll_Click(program, steps, lngIndex, steps.DatabaseName(0), steps.DatabaseName(1), blnSelective, blnDetails,
                       {}, {});
}

}  // namespace qrel
