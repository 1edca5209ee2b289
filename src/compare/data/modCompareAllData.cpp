#include "compare/data/modCompareAllData.h"

#include "app/trap.h"
#include "compare/all/CompareAllObjects.h"
#include "compare/data/modCompareData.h"
#include "db/mdlQueryCode.h"

namespace qrel {

namespace {

constexpr std::string_view differentRecords = " different record(s)";

// The data of the tables: a table is in both databases when its text can be had on the other side.
class DataSection : public CompareAllObjects {
 public:
  explicit DataSection(CompareAllRun& run) : CompareAllObjects(run, objTables) {}

 private:
  void beginReport() override { run_.report.beginData(run_.input); }
  bool compareItem(const Item& item) override;
  bool targetPass() override;
  void addSourceOnly(const Item& item);
  bool lookForItem(const Item& item);
  bool hasText(int side, const Item& item, long lngId);
  void compareRecords(const Item& item, long lngTargetId, const ReadWatch& reads);
};

// Whether the table has a text there. A failed read is told and noted by now, and gives none.
bool DataSection::hasText(int side, const Item& item, long lngId) {
  // A table whose id was found in this state of the database has columns, so its text is made only when some are
  // ignored.
  const auto& lookUp = program_.state<IgnoredColumnsSource>().lookUp;
  const std::string& strDb = run_.database(side);
  if (lngId > 0 && (!lookUp || lookUp(ignoredColsStruct, run_.server(side), strDb, item.strPrinted).empty()))
    return true;
  const ReadWatch reads(program_);
  try {
    return !GetTableText(program_, run_.server(side), {strDb, item.strName, lngId, ignoredColsStruct, item.strPrinted})
                .empty();
  } catch (const std::exception&) {
    if (!reads.failed()) throw;
    return false;
  }
}

bool DataSection::compareItem(const Item& item) {
  const ReadingScope reading(program_, wordsFor(item.strPrinted));
  const ReadWatch reads(program_);
  if (nameIsCut(item)) return true;
  long lngTargetId = 0;
  bool blnProceed = false;
  if (!findNamesake(0, item.strName, item.lngId, lngTargetId, blnProceed) || !run_.pulse.goOn()) return false;
  // The Source's text decides nothing.
  const bool blnInTarget = blnProceed && hasText(1, item, lngTargetId);
  if (!run_.pulse.goOn()) return false;
  if (blnInTarget)
    compareRecords(item, lngTargetId, reads);
  else if (reads.failed())
    notCompared(item);
  else
    addSourceOnly(item);
  return true;
}

void DataSection::addSourceOnly(const Item& item) {
  run_.report.addSourceOnly(item.strPrinted);
  noteVerdict(item, VerdictState::SourceOnly);
}

// A table that couldn't be read to its end counts as differing, by what was found, and is listed as not compared too.
void DataSection::compareRecords(const Item& item, long lngTargetId, const ReadWatch& reads) {
  tDataCompRequest request;
  request.arrDbs = run_.input.arrDatabases;
  request.arrTables = {item.strName, item.strName};
  request.arrListed = {item.strPrinted, item.strPrinted};
  request.arrObjIds = {item.lngId, lngTargetId};
  request.blnDisplayDiffs = false;
  request.blnSilent = true;
  tDataCompResult result;
  bool blnShowOptionsOnce = false;
  DataCompEnd& lngEnd = program_.state<modCompareDataState>().lngEnd;
  lngEnd = DataCompEnd::NotRead;
  PerformDataComparison(program_, request, blnShowOptionsOnce, result);
  const bool blnComplete = !reads.failed() && (lngEnd == DataCompEnd::Done || result.blnStopped);
  if (!result.blnIdentical) {
    run_.report.addDifferent(item.strPrinted + " - " + std::to_string(result.lngDiffs) + std::string(differentRecords));
    noteVerdict(item, VerdictState::Different);
  } else if (blnComplete) {
    run_.report.addIdentical(item.strPrinted);
    noteVerdict(item, VerdictState::Identical);
  }
  if (!blnComplete) notCompared(item, reads.failed() ? "" : "an error ended it on the way");
}

bool DataSection::targetPass() {
  return run_.pulse.goOn(true) && eachItem(1, [this](const Item& item) { return lookForItem(item); });
}

// Tells of a Target table that isn't in Source. False: the run is over.
bool DataSection::lookForItem(const Item& item) {
  const ReadingScope reading(program_, wordsFor(item.strPrinted));
  const ReadWatch reads(program_);
  if (isNotCompared(item) || nameIsCut(item)) return true;
  long lngSourceId = 0;
  bool blnProceed = false;
  if (!findNamesake(1, item.strName, item.lngId, lngSourceId, blnProceed) || !run_.pulse.goOn()) return false;
  const bool blnInSource = blnProceed && hasText(0, item, lngSourceId);
  if (reads.failed()) {
    notCompared(item);
  } else if (!blnInSource) {
    run_.report.addTargetOnly(item.strPrinted);
    noteVerdict(item, VerdictState::TargetOnly);
  }
  return run_.pulse.goOn();
}

bool compareAll(CompareAllRun& run) {
  ShowRunProgress(run);
  run.report.begin(run.input, RunDatabaseNames(run), "");
  if (!run.pulse.goOn(true)) return false;
  Label& label = run.frm.lblComparing[0];
  label.setText("Comparing data in tables...");
  label.setVisible(true);
  run.program.host.doEvents();
  if (!DataSection(run).compare()) return false;
  label.setText(label.text() + " Finished");
  run.program.report.gstrReportText = run.report.finish();
  return true;
}

}  // namespace

bool CompareAll_Data(Program& program, CompareAllControls& frmOwner, const CompareAllInput& input) {
  program.state<modCompareAllState>() = {};
  program.state<modCompareAllState>().blnDataCompared = true;
  const auto heldState = program.data.holdState();
  CompareAllRun run(program, frmOwner, input);
  const CompareAllRunEnd end(run);
  return trap(program, "modCompareAll", "CompareAll_Data", false, [&] { return compareAll(run); });
}

}  // namespace qrel
