#include "ui/mainCompare.h"

#include <utility>

#include "app/mdlMain.h"
#include "app/modTextPane.h"
#include "app/trap.h"
#include "compare/all/reportObjects.h"
#include "compare/data/dataCompareCommands.h"
#include "compare/data/modCompareData.h"
#include "compare/structure/frmColorSchema.h"
#include "db/mdlQueryCode.h"
#include "db/modPanels.h"
#include "platform/text.h"
#include "process/modSavedProcess.h"
#include "process/replayOutcome.h"
#include "report/frmReport.h"
#include "report/modCopyToFile.h"
#include "ui/flagScope.h"
#include "ui/frmMain.h"
#include "ui/replay.h"

namespace qrel {

namespace {

// What both kinds of report call have in common.
template <class Call>
tReportInput reportInput(const Call& call) {
  tReportInput input;
  input.strTitle = call.strTitle;
  input.strServer1 = call.arrServers[0];
  input.strServer2 = call.arrServers[1];
  input.strDb1 = call.arrDatabases[0];
  input.strDb2 = call.arrDatabases[1];
  input.lngCompSubType = call.intCompSubType;
  input.strEncObjTypes = call.strObjectTypes;
  return input;
}

// Of a run that came to its end, for a replay without a person.
void noteVerdict(Program& program) {
  auto& outcome = program.state<ReplayOutcome>();
  const auto& run = program.state<modCompareAllState>();
  outcome.blnIdentical = run.lngDifferent + run.lngSourceOnly + run.lngTargetOnly == 0;
  if (!run.arrUnreadable.empty() || !run.arrNotCompared.empty() || !run.arrWithoutDetails.empty())
    outcome.blnIncomplete = true;
}

}  // namespace

bool MainCompare::CanStartComparison() { return CheckMdac(program_); }

void MainCompare::ShowReport(const PairReport& report) {
  window_.AlignPanes();
  tReportInput input = reportInput(report);
  input.strTable1 = report.arrObjects[0];
  input.strTable2 = report.arrObjects[1];
  input.lngCompType = compStructure;
  const tReplay& replay = window_.workspace.replay;
  input.blnAuto = replay.mblnReplay;
  input.strExportPath = replay.mstrReplayExportPath;
  input.blnPrint = replay.mblnReplayPrint;
  program_.state<ReplayOutcome>().blnIdentical = report.blnIdentical;
  if (!report.blnIdentical) window_.ShowFirstMark();
  frmReport(program_).ShowUp(std::move(input));
}

bool MainCompare::printRunInProgress() { return program_.state<PrintRunState>().gblnCompareAndPrint; }

void MainCompare::PrintPane(const std::string& strHeading, TextPane& pane) {
  window_.AlignPanes();
  window_.PrintStructure(&pane == &window_.workspace.txtTXProc[1] ? 1 : 0, false, strHeading);
}

std::string MainCompare::DatabaseName(int side) const { return SelectedDatabase(window_.workspace, side); }

void MainCompare::ShowReport(const CompareAllReportCall& call) {
  tReportInput input = reportInput(call);
  input.lngCompSubSubType = call.intDetailType;
  input.lngCompType = call.lngCompType;
  input.blnAuto = call.replay.blnAuto;
  input.strExportPath = call.replay.strExportPath;
  input.blnPrint = call.replay.blnPrint;
  noteVerdict(program_);
  input.lngSelCountSource = static_cast<std::int32_t>(call.selection.lngSelectedSource);
  input.lngSelCountTarget = static_cast<std::int32_t>(call.selection.lngSelectedTarget);
  input.arrSource = call.selection.arrSelectedSource;
  input.arrTarget = call.selection.arrSelectedTarget;
  frmReport report(program_);
  window_.ShowObjectStates();
  // The pairs that are compared from here on are no run: what this one has found is kept as it is.
  const std::vector<ObjectVerdict> arrVerdicts = program_.state<modCompareAllState>().arrVerdicts;
  const auto objectAt = [&](std::size_t line) { return ObjectOfReportLine(arrVerdicts, report.txtReport, line); };
  report.canChoose = [&](std::size_t line) { return objectAt(line) != nullptr; };
  report.lineChosen = [&](std::size_t line) { window_.CompareObjectOfReport(*objectAt(line)); };
  report.ShowUp(std::move(input));
}

void frmMain::cmdCompare_Click() {
  if (workspace.mblnBusy) return;
  CompareSelProcs(program_, workspace, compare_, false, "", "");
}

void frmMain::cmdCompareAll_Click() {
  if (workspace.mblnBusy) return;
  const FlagScope busy(workspace.mblnBusy);
  qrel::cmdCompareAll_Click(program_, compare_, workspace.replay);
}

void frmMain::cmdCompData_Click() {
  if (workspace.mblnBusy) return;
  const FlagScope busy(workspace.mblnBusy);
  if (program_.host.shiftHeld()) program_.state<modCompareDataState>().blnShowOptionsOnce = true;
  qrel::cmdCompData_Click(program_, workspace);
}

void frmMain::MenuDataCompSelective() { qrel::MenuDataCompSelective(program_, workspace, compare_, {}); }

void frmMain::DataCompareAll() { qrel::DataCompareAll(program_, workspace, compare_, {}); }

void frmMain::CompStruct_BulkSel_SimpleDet_All(long lngTypeIndex, bool blnSelective, bool blnDetails) {
  qrel::CompStruct_BulkSel_SimpleDet_All(program_, compare_, lngTypeIndex, blnSelective, blnDetails);
}

void frmMain::CompareHighlightedSections() { qrel::CompareHighlightedSections(program_, workspace, compare_); }

void frmMain::RunSavedProcess(std::int32_t lngId) { Replay(program_, *this, compare_).RunSavedProcess(lngId); }

void frmMain::RunProcess(const tSavedProcess& process) { Replay(program_, *this, compare_).RunProcess(process); }

void frmMain::ShowColorSchema() { qrel::ShowColorSchema(program_); }

void frmMain::cmdCopyClip_Click(int Index) { CopyObjectToClipboard(program_, workspace, Index); }

void frmMain::cmdCopyToFile_Click(int Index) { CopyObjectToFile(program_, workspace, Index); }

void frmMain::PrintStructure(int Index, bool blnSilent, const std::string& strPrefix) {
  trap(program_, "frmMain", "PrintStructure", [&] {
    TextPane& pane = workspace.txtTXProc[static_cast<std::size_t>(Index)];
    if (trimBlanks(pane.text()).empty()) {
      if (!blnSilent)
        program_.host.messageBox("Cannot continue - there is no structure displayed for selected table.",
                                 Icon::Information, "Cannot Continue");
      return;
    }
    std::string strServer, strDb, strObject;
    long lngObjId = 0;
    GetNamesOfSelServerDbAndObject(Index, strServer, strDb, strObject, lngObjId);
    InsertHeader(pane, strPrefix + strObject + " (Database: " + strDb + ", Server: " + strServer + ")");
    InsertFooter(pane);
    PrintTextControl(program_, pane, caption, strObject + " (" + strServer + ", " + strDb + ")");
  });
}

}  // namespace qrel
