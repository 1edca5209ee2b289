#include "ui/replay.h"

#include "app/trap.h"
#include "compare/data/dataCompareCommands.h"
#include "compare/data/modCompareData.h"
#include "db/readFailures.h"
#include "process/frmSaveCompRun.h"
#include "process/replayOutcome.h"
#include "ui/frmMain.h"

namespace qrel {

namespace {

constexpr std::int32_t bulkDetails = 20;
constexpr std::int32_t selectiveDetails = 40;

// Selects the row of exactly this text, which raises the combo's event; without one the combo has no row.
void selectServer(ComboBox& combo, const std::string& strName) {
  for (std::size_t row = 0; row < combo.count(); ++row)
    if (combo.row(row) == strName) return combo.select(static_cast<int>(row));
  combo.select(-1);
}

// The replay members of the workspace for the length of a comparison; the busy flag comes back as it was.
class ReplayScope {
 public:
  ReplayScope(Workspace& workspace, const tSavedProcess& process, bool blnPrint)
      : workspace_(workspace), busyBefore_(workspace.mblnBusy) {
    workspace.replay = {
        true,    process.lngCompSubType, process.lngCompSubSubType, process.strEncObjTypes, process.strExportFilePath,
        blnPrint};
  }
  ~ReplayScope() {
    workspace_.mblnBusy = busyBefore_;
    workspace_.replay = {};
  }
  ReplayScope(const ReplayScope&) = delete;
  ReplayScope& operator=(const ReplayScope&) = delete;

 private:
  Workspace& workspace_;
  bool busyBefore_;
};

ObjectSelection selectionOf(const tSavedProcess& process) {
  return {process.lngSelCountSource, process.lngSelCountTarget, process.arrSource, process.arrTarget};
}

AutoReport autoReport(const tSavedProcess& process) { return {true, process.strExportFilePath, process.blnPrint}; }

}  // namespace

Replay::Replay(Program& program, frmMain& window, MainCompare& compare)
    : program_(program), window_(window), compare_(compare), workspace_(window.workspace) {}

void Replay::CannotRun(const std::string& strWhy) {
  program_.state<ReplayOutcome>().blnNotFound = true;
  program_.host.messageBox("Cannot run saved process - " + strWhy, Icon::Warning);
}

// What every replay begins and ends with. Reads that failed and errors that were reported on the way make its verdict
// one of less than there is.
template <class Body>
void Replay::replay(Body&& body) {
  auto& outcome = program_.state<ReplayOutcome>();
  outcome = {};
  const ReadWatch reads(program_);
  const auto& reports = program_.state<ErrorReportsState>();
  const std::size_t reportsBefore = reports.lngShown;
  trap(program_, "frmMain", "RunSavedProcess", std::forward<Body>(body));
  workspace_.mblnBusy = false;
  if (reads.failed() || reports.lngShown > reportsBefore) outcome.blnIncomplete = true;
  if (program_.main.gblnCloseAfterRun) window_.close();
}

void Replay::RunSavedProcess(std::int32_t lngId) {
  replay([&] {
    auto& outcome = program_.state<ReplayOutcome>();
    if (GetSavedProcessCount(program_) < 1) {
      outcome.blnNotFound = true;
      program_.host.messageBox("There are no saved processes to run.", Icon::Information);
      return;
    }
    workspace_.mblnBusy = true;
    const std::string strName =
        lngId < 1 ? frmSaveCompRun(program_).ShowUp() : GetSavedProcessNameById(program_, lngId);
    const PointerScope hourglass(program_.host, Pointer::Hourglass);
    outcome.blnNotFound = strName.empty() && lngId > 0;
    if (!strName.empty()) run(GetSavedProcessDetails(program_, strName));
  });
}

void Replay::RunProcess(const tSavedProcess& process) {
  replay([&] {
    workspace_.mblnBusy = true;
    const PointerScope hourglass(program_.host, Pointer::Hourglass);
    run(process);
  });
}

void Replay::run(const tSavedProcess& process) {
  auto& outcome = program_.state<ReplayOutcome>();
  outcome.blnStarted = true;
  // A list that isn't the one that was saved was told in a box, and selects less or other objects than were meant.
  if (process.lngSelCountSource != static_cast<std::int32_t>(process.arrSource.size()) ||
      process.lngSelCountTarget != static_cast<std::int32_t>(process.arrTarget.size()))
    outcome.blnIncomplete = true;
  if (!detailsComplete(process) || !selectServers(process)) return;
  workspace_.mblnBusy = true;
  window_.InitializeDisplay(false);
  if (!selectDatabases(process)) return;
  if (process.blnAutoClose) program_.main.gblnCloseAfterRun = true;
  switch (process.lngCompType) {
    case compData:
      return RunSavedProcess_DataComp(process);
    case compStructure:
      return RunSavedProcess_MetaDataComp(process);
    default:
      CannotRun("comparison type not defined.");
  }
}

bool Replay::detailsComplete(const tSavedProcess& process) {
  if (process.strServer1.empty() || process.strDb1.empty() || process.strServer2.empty() || process.strDb2.empty()) {
    CannotRun("couldn't retrieve all details data.");
    return false;
  }
  if (process.lngId < 1) {
    CannotRun("couldn't retrieve Id of the process.");
    return false;
  }
  return true;
}

bool Replay::selectServers(const tSavedProcess& process) {
  workspace_.mblnBusy = false;
  selectServer(workspace_.cmbServer[0], process.strServer1);
  if (workspace_.cmbServer[0].selected() < 0) {
    CannotRun("path " + process.strServer1 + " not found.");
    return false;
  }
  selectServer(workspace_.cmbServer[1], process.strServer2);
  // A Target that isn't in the list stops nothing: the run goes on with the Target server that was there before, as
  // this test looks at Source once more. Who runs without a person asks first whether both servers are known.
  if (workspace_.cmbServer[0].selected() < 0) {
    CannotRun("server " + process.strServer2 + " not found.");
    return false;
  }
  return true;
}

bool Replay::selectDatabases(const tSavedProcess& process) {
  const std::array<const std::string*, 2> names{&process.strDb1, &process.strDb2};
  for (const std::size_t side : {0u, 1u}) {
    if (SelectRowByText(workspace_.pvlDb[side], *names[side])) continue;
    workspace_.pvlDb[side].clearSelection();
    CannotRun("SQL Server database " + *names[side] + " not found.");
    return false;
  }
  return true;
}

void Replay::RunSavedProcess_DataComp(const tSavedProcess& process) {
  const ReplayScope replay(workspace_, process, false);
  switch (process.lngCompSubType) {
    case compDataSingle:
      return RunSavedProcess_Data_Single(process);
    case compDataSelective:
      return RunSavedProcess_Data_Selective(process);
    case compDataAll:
      return RunSavedProcess_Data_All(process);
    default:
      CannotRun("comparison sub type not defined.");
  }
}

void Replay::RunSavedProcess_MetaDataComp(const tSavedProcess& process) {
  const ReplayScope replay(workspace_, process, process.blnPrint);
  const std::int32_t lngTypeIndex = ObjectTypeIndex(process.strEncObjTypes);
  switch (process.lngCompSubType) {
    case compAllObjects:
      workspace_.mblnBusy = false;
      return window_.cmdCompareAll_Click();
    case compBulk:
      return MenuCompareAll_Click(program_, compare_, lngTypeIndex, process.strDb1, process.strDb2, false,
                                  process.lngCompSubSubType == bulkDetails, autoReport(process), selectionOf(process));
    case compSelective:
      return MenuCompareAll_Click(program_, compare_, lngTypeIndex, process.strDb1, process.strDb2, true,
                                  process.lngCompSubSubType == selectiveDetails, autoReport(process),
                                  selectionOf(process));
    case compIndividual:
      return CompareObjectPairByName(lngTypeIndex, process.strTable1, process.strTable2);
    default:
      program_.state<ReplayOutcome>().blnNotFound = true;
      program_.host.messageBox("Comparison sub type not defined - aborting comparison.", Icon::Warning);
  }
}

bool Replay::selectObjects(const std::string& strWhat, const std::string& strName1, const std::string& strName2) {
  const std::array<const std::string*, 2> names{&strName1, &strName2};
  for (const std::size_t side : {0u, 1u}) {
    if (SelectRowByText(workspace_.pvlSqlObj[side], *names[side])) continue;
    CannotRun(strWhat + " " + *names[side] + " not found.");
    return false;
  }
  return true;
}

void Replay::RunSavedProcess_Data_Single(const tSavedProcess& process) {
  if (!selectObjects("table", process.strTable1, process.strTable2)) return;
  auto& state = program_.state<modCompareDataState>();
  state.mainWindow = &workspace_;
  // The ids that count are those that the lists have now: a database that was made anew has given others to its tables.
  tDataCompRequest request = RequestOfSelection(workspace_);
  ApplyStoredDataCompSettings(program_, request);
  request.lngCompMethod = process.lngCompMethod;
  request.strExportFile = process.strExportFilePath;
  request.lngExportFormat = process.lngExportType;
  request.blnWrap = process.blnCSVWrapInQuot;
  request.blnAuto = true;
  tDataCompResult result;
  RunDataComparison(program_, request, result);
  if (state.lngEnd == DataCompEnd::NotRead) return;
  auto& outcome = program_.state<ReplayOutcome>();
  outcome.blnIdentical = result.blnIdentical;
  if (state.lngEnd != DataCompEnd::Done) outcome.blnIncomplete = true;
}

void Replay::RunSavedProcess_Data_All(const tSavedProcess& process) {
  DataCompareAll(program_, workspace_, compare_, autoReport(process));
}

void Replay::RunSavedProcess_Data_Selective(const tSavedProcess& process) {
  constexpr long tables = 0;
  DataCompareSelective(program_, workspace_, compare_, tables, process.strDb1, process.strDb2, true, false,
                       autoReport(process), selectionOf(process));
}

void Replay::CompareObjectPairByName(std::int32_t lngTypeIndex, const std::string& strName1,
                                     const std::string& strName2) {
  window_.ShowObjectType(OptionType(lngTypeIndex));
  if (!selectObjects("object", strName1, strName2)) return;
  CompareSelProcs(program_, workspace_, compare_, false, "", "");
}

}  // namespace qrel
