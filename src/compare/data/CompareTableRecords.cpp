#include "compare/data/CompareTableRecords.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "app/modStrings.h"
#include "app/trap.h"
#include "compare/data/FindRecordByKey.h"
#include "compare/data/UpdateDisplay.h"
#include "compare/data/dataValues.h"
#include "compare/data/frmCompareData.h"
#include "compare/data/frmCompareStatus.h"
#include "compare/data/readScopes.h"
#include "db/mdlData.h"

namespace qrel {

namespace {

class RecordComparison {
 public:
  RecordComparison(Program& program, frmCompareStatus& frmStatus, const tTablesToCompare& tables,
                   std::int32_t& lngDiffs, Label& lblCurRec, ProgressBar& progress)
      : program_(program),
        state_(program.state<modCompareDataState>()),
        frmStatus_(frmStatus),
        request_(tables.request),
        extNames_(tables.arrExtNames),
        recs_(tables.arrRecs),
        diffs_(lngDiffs),
        lblCurRec_(lblCurRec),
        progress_(progress),
        minRecs_(std::min(recs_[0], recs_[1])),
        byKey_(request_.lngCompMethod == compPrimaryKey),
        keys_(request_.arrCompKeys[0], request_.arrCompKeys[1]) {}

  bool run();

 private:
  // How the walk goes on. Finish: nothing more is counted.
  enum class Step : std::uint8_t { Next, Counting, Finish };

  bool compare();
  // Fetching.
  bool fetchBoth();
  bool fetch(std::size_t side, const SqlText& strSql);
  SqlText buildSelects();
  void prepareDifferences();
  // The walk.
  Step walk();
  Step headByKey();
  Step headByPosition();
  Step addSourceOnly();
  Step compareFields(bool& blnDiffers);
  Step addDifference();
  // Behind it.
  std::int32_t extraRecords() const;
  void showCounts();
  bool count();
  void listLoneRecords(std::size_t side, std::int32_t lngStartRec, std::int32_t lngEndRec);
  void tellError(const std::exception& error);

  bool stopped() const { return state_.gblnStopComparison; }
  frmCompareData* window() { return state_.differences.get(); }

  Program& program_;
  modCompareDataState& state_;
  frmCompareStatus& frmStatus_;
  const tDataCompRequest& request_;
  const std::array<std::string, 2>& extNames_;
  const std::array<std::int32_t, 2>& recs_;
  std::int32_t& diffs_;
  Label& lblCurRec_;
  qrel::ProgressBar& progress_;
  const std::int32_t minRecs_;
  const bool byKey_;
  RecordKeys keys_;

  std::array<SqlText, 2> selects_;
  RecordsetPtr rs1_, rs2_;
  std::int32_t rec_ = 1;
  std::int32_t matched_ = 0;
  bool offsetUsed_ = false;
  int line_ = 0;  // which part of the work an error is from
};

SqlText RecordComparison::buildSelects() {
  SqlText strSelectPart;
  selects_[0] =
      BuildSqlSelectStringWithColumns(program_, program_.main.gtypSelServ[0], request_.arrDbs[0], request_.arrTables[0],
                                      extNames_[0], strSelectPart, request_.arrObjIds[0], request_.arrListed[0]);
  selects_[1] = BuildSelectForTargetTable(strSelectPart, extNames_[1], request_.arrOrderBy[1]);
  bool blnAccepted = false;
  {
    // Whether the server takes the columns shows with the first rows: the others stay where they are.
    const CursorScope cursor(program_, adUseServer);
    blnAccepted = DbCheckSqlSelect(program_, program_.main.gtypSelServ[1], request_.arrDbs[1], selects_[1]);
  }
  if (!request_.arrOrderBy[0].empty()) selects_[0] << " " << request_.arrOrderBy[0];
  if (blnAccepted) return {};
  selects_[1] =
      BuildSqlSelectStringWithColumns(program_, program_.main.gtypSelServ[1], request_.arrDbs[1], request_.arrTables[1],
                                      extNames_[1], strSelectPart, request_.arrObjIds[1], request_.arrListed[1]);
  return request_.arrOrderBy[1].empty() ? SqlText() : SqlText(" ") << request_.arrOrderBy[1];
}

bool RecordComparison::fetch(std::size_t side, const SqlText& strSql) {
  const std::int32_t result = GetAdoRS(program_, program_.main.gtypSelServ[side], adCmdText, strSql,
                                       side == 0 ? rs1_ : rs2_, request_.arrDbs[side]);
  program_.host.doEvents();
  return result != -1 && !stopped();
}

bool RecordComparison::fetchBoth() {
  // Deleting what was matched needs all records of the Target here.
  std::optional<CursorScope> cursor;
  if (byKey_ && program_.settings.glngCursorLocation == adUseServer) cursor.emplace(program_, adUseClient);
  const SqlText strOwnOrder = buildSelects();
  line_ = 200;
  selects_[1] << strOwnOrder;
  if (stopped()) return false;
  // Rows that come by and by are left on the server.
  if (program_.settings.glngCursorLocation == adUseClient)
    PrefetchRecords(program_, program_.main.gtypSelServ[1], selects_[1], request_.arrDbs[1]);
  if (!fetch(0, selects_[0])) return false;
  frmStatus_.ShowHideControls(4);
  return fetch(1, selects_[1]);
}

void RecordComparison::prepareDifferences() {
  if (!state_.gblnFillDiffTable) return;
  if (!state_.differences) state_.differences = std::make_unique<frmCompareData>(program_);
  window()->VSFlexGrid1.setRedraw(false);
  if (state_.mainWindow) window()->LoadData(*state_.mainWindow);
}

RecordComparison::Step RecordComparison::walk() {
  for (; rec_ <= minRecs_; ++rec_) {
    line_ = 300;
    Step step = byKey_ ? headByKey() : headByPosition();
    if (step != Step::Next) return step;
    line_ = 400;
    bool blnDiffers = false;
    step = compareFields(blnDiffers);
    if (step == Step::Next && blnDiffers) step = addDifference();
    if (step != Step::Next) return step;
    if (byKey_) rs2_->Delete();
  }
  return Step::Counting;
}

RecordComparison::Step RecordComparison::headByKey() {
  // A record without partner goes on here at once, past the last step if need be.
  for (;; ++rec_) {
    UpdateDisplay(program_, frmStatus_, rec_, minRecs_, lblCurRec_, progress_);
    if (stopped()) return Step::Finish;
    if (rs1_->Eof() || rs2_->Eof()) return Step::Counting;
    rs2_->MoveFirst();
    if (rec_ == 1) {
      rs1_->MoveFirst();
      keys_.LookUp(*rs1_, *rs2_);
    } else {
      rs1_->MoveNext();
    }
    if (rs1_->Eof() || rs2_->Eof()) return Step::Counting;
    switch (keys_.FindRecordByKey(program_, *rs1_, *rs2_)) {
      case findMatch:
        ++matched_;
        return rs1_->Eof() || rs2_->Eof() ? Step::Counting : Step::Next;
      case findNone:
        if (addSourceOnly() == Step::Finish) return Step::Finish;
        break;
      default:
        state_.lngEnd = DataCompEnd::Broken;
        return Step::Counting;
    }
  }
}

RecordComparison::Step RecordComparison::addSourceOnly() {
  ++diffs_;
  // Without a window, as in a run over many tables, there is nothing to add to.
  if (state_.gblnFillDiffTable && window()) window()->AddRecordToGrid(*rs1_, COLOR_SOURCE_ONLY, diffs_);
  rs2_->MoveFirst();
  return stopped() ? Step::Finish : Step::Next;
}

RecordComparison::Step RecordComparison::headByPosition() {
  UpdateDisplay(program_, frmStatus_, rec_, minRecs_, lblCurRec_, progress_);
  if (stopped()) return Step::Finish;
  const auto& offsets = request_.arrOffsets;
  if (rec_ == 1) {
    rs1_->MoveFirst();
    rs2_->MoveFirst();
    if (offsets[0] > 1) MoveToRecordOffset(program_, *rs1_, offsets[0]);
    if (offsets[1] > 1) MoveToRecordOffset(program_, *rs2_, offsets[1]);
    offsetUsed_ = offsets[0] > 1 || offsets[1] > 1;
    return Step::Next;
  }
  rs1_->MoveNext();
  rs2_->MoveNext();
  if (offsets[0] > 1 && rs1_->Eof()) return Step::Counting;
  if (offsets[1] > 1 && rs2_->Eof()) return Step::Counting;
  return Step::Next;
}

RecordComparison::Step RecordComparison::compareFields(bool& blnDiffers) {
  const bool blnCaseSensitive = program_.settings.gblnDataCaseSensitive;
  const std::size_t columns1 = rs1_->FieldCount();
  const std::size_t columns2 = rs2_->FieldCount();
  for (std::size_t column = 0; column < columns1; ++column) {
    if (stopped()) return Step::Finish;
    const Cell cell1 = rs1_->Fields(column).cell;
    blnDiffers =
        column < columns2 ? !ValuesEqual(cell1, rs2_->Fields(column).cell, blnCaseSensitive) : !ValueIsBlank(cell1);
    if (blnDiffers) break;
  }
  return Step::Next;
}

RecordComparison::Step RecordComparison::addDifference() {
  ++diffs_;
  if (stopped()) return Step::Finish;
  if (!state_.gblnFillDiffTable || !window() || diffs_ >= program_.settings.glngMaxRowsInDiffTable) return Step::Next;
  if (state_.gblnMarkDiffCells) {
    window()->AddRecordToGrid_MarkDiff(*rs1_, *rs2_, COLOR_DIFF_SOURCE, COLOR_DIFF_TARGET, diffs_);
  } else {
    window()->AddRecordToGrid(*rs1_, COLOR_DIFF_SOURCE, diffs_);
    window()->AddRecordToGrid(*rs2_, COLOR_DIFF_TARGET, diffs_);
  }
  return Step::Next;
}

// By how much the two sides differ in their number of records, from the offsets on.
std::int32_t RecordComparison::extraRecords() const {
  const auto left = [&](std::size_t side) {
    const std::int32_t offset = request_.arrOffsets[side];
    return offset >= 2 ? std::int64_t{recs_[side]} - offset + 1 : std::int64_t{recs_[side]};
  };
  return static_cast<std::int32_t>(std::abs(left(0) - left(1)));
}

void RecordComparison::showCounts() {
  if (!window()) return;
  window()->lblStats[3].setText(FormatThousands(recs_[0]));
  window()->lblStats[4].setText(FormatThousands(recs_[1]));
  window()->lblStats[5].setText(FormatThousands(diffs_));
}

void RecordComparison::listLoneRecords(std::size_t side, std::int32_t lngStartRec, std::int32_t lngEndRec) {
  if (!state_.gblnFillDiffTable || !window()) return;
  window()->AddMultipleRecordsToGrid(frmStatus_, progress_, lblCurRec_, side == 0 ? *rs1_ : *rs2_,
                                     side == 0 ? COLOR_SOURCE_ONLY : COLOR_TARGET_ONLY, lngStartRec, lngEndRec);
}

bool RecordComparison::count() {
  line_ = 500;
  diffs_ += extraRecords();
  showCounts();
  if (stopped()) return false;
  if (byKey_ && recs_[1] > matched_) {
    listLoneRecords(1, 1, recs_[1] - matched_);
    return false;
  }
  if (recs_[0] != recs_[1]) {
    if (!state_.gblnFillDiffTable) return false;
    if (recs_[0] <= recs_[1])
      listLoneRecords(1, minRecs_ + 1, recs_[1]);
    else
      listLoneRecords(0, minRecs_ + 1, recs_[0]);
  }
  return diffs_ < 1;
}

bool RecordComparison::compare() {
  line_ = 100;
  progress_.setValue(0);
  frmStatus_.ShowHideControls(3);
  if (!fetchBoth()) return false;
  frmStatus_.ShowHideControls(5);
  prepareDifferences();
  // Without both counts nothing says how far the records go.
  if (recs_[0] < 0 || recs_[1] < 0) return false;
  state_.lngEnd = DataCompEnd::Done;
  return walk() == Step::Counting && count();
}

void RecordComparison::tellError(const std::exception& error) {
  const ErrorInfo info = describeError(error);
  if (info.number == errorNumber::cancelled && stopped()) return;
  state_.lngEnd = DataCompEnd::Broken;
  std::string text = "Error occured while comparing records.";
  if (info.number != 0)
    text += "\r\n\r\nError " + std::to_string(info.number) + " (" + info.description + "); line " +
            std::to_string(line_) + ".";
  program_.host.messageBox(text + "\r\n", Icon::Warning);
}

bool RecordComparison::run() {
  if (recs_[0] == 0 && recs_[1] == 0) {
    state_.lngEnd = DataCompEnd::Done;
    return true;
  }
  const PointerScope pointer(program_.host, Pointer::Hourglass);
  bool blnIdentical = false;
  try {
    blnIdentical = compare();
  } catch (const std::exception& error) {
    tellError(error);
  }
  rs1_.reset();
  rs2_.reset();
  if (state_.gblnFillDiffTable && window()) window()->VSFlexGrid1.setRedraw(true);
  if (offsetUsed_ && window()) window()->RemoveEmptyGridRows();
  return blnIdentical;
}

}  // namespace

bool CompareTableRecords(Program& program, frmCompareStatus& frmStatus, const tTablesToCompare& tables,
                         std::int32_t& lngDiffs, Label& lblCurRec, ProgressBar& progress) {
  return RecordComparison(program, frmStatus, tables, lngDiffs, lblCurRec, progress).run();
}

}  // namespace qrel
