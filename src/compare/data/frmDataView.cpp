#include "compare/data/frmDataView.h"

#include "app/modStrings.h"
#include "app/trap.h"
#include "compare/data/dataValues.h"
#include "compare/data/readScopes.h"
#include "db/mdlData.h"
#include "platform/error.h"
#include "report/frmExport.h"

namespace qrel {

namespace {

constexpr const char* inFrmDataView = "frmDataView";
constexpr std::int32_t recordsPerBatch = 40;

}  // namespace

frmDataView::frmDataView(Program& program)
    : Form(inFrmDataView),
      program_(program),
      refresh_(program.state<GridRefreshState>()),
      progress_(program, lblCurRec, ProgressBar, lblTime) {
  for (Control* control :
       std::initializer_list<Control*>{&lblTableName, &lblStats, &lblCur, &lblCurRec, &lblTimeCaption, &lblTime,
                                       &ProgressBar, &VSFlexGrid1, &cmdStop, &cmdExport, &cmdExit})
    add(*control);
  setTexts();
  cmdStop.onClick = [this] { stop_ = true; };
  cmdExport.onClick = [this] {
    trap(program_, inFrmDataView, "cmdExport_Click", [&] {
      frmExport window(program_);
      window.mlngMode = exportFromDataView;
      window.ShowUp(exportSource(), {});
    });
  };
  cmdExit.onClick = [this] {
    if (closeRequested()) close();
  };
}

void frmDataView::setTexts() {
  caption = "View Data";
  lblCur.setText("Current record:");
  lblTimeCaption.setText("Time elapsed:");
  cmdStop.setText("&Stop");
  cmdExport.setText("&Export");
  cmdExit.setText("E&xit");
  cmdExit.isCancel = true;
}

void frmDataView::ShowUp(const std::string& strExtName, const std::string& strTable, const std::string& strDb,
                         long lngSide, long lngObjId) {
  trap(program_, inFrmDataView, "ShowUp", [&] {
    table_ = OpenTable(program_, strExtName, strTable, strDb, lngSide, lngObjId);
    lblTableName.setText("Table: " + table_.strDisplayName);
    if (!HasRecordsToShow(program_, table_)) return;
    lblStats.setText("Number of records: " + FormatThousands(table_.lngRecs));
    program_.host.showModal(*this);
  });
}

void frmDataView::load() { refresh_.glngGridRefreshMode = 1; }

void frmDataView::unload() { refresh_.glngGridRefreshMode = 0; }

void frmDataView::activate() {
  if (activated_) return;
  activated_ = true;
  focusButton();
  LoadData();
}

bool frmDataView::closeRequested() {
  if (!loading_) return true;
  closeAsked_ = true;
  return false;
}

void frmDataView::focusButton() {
  if (cmdExit.enabled() && cmdExit.visible())
    cmdExit.setFocus();
  else
    cmdStop.setFocus();
}

void frmDataView::ShowHideControls(long lngPhase) {
  const bool loading = lngPhase == 1;
  cmdStop.setEnabled(loading);
  cmdExport.setEnabled(!loading);
  for (Control* control : std::initializer_list<Control*>{&ProgressBar, &lblCur, &lblCurRec, &lblTime, &lblTimeCaption})
    control->setVisible(loading);
}

void frmDataView::LoadData() {
  program_.host.setPointer(Pointer::Hourglass);
  progress_.start();
  loading_ = true;
  ShowHideControls(1);
  try {
    readRecords();
  } catch (const std::exception& error) {
    if (!endAsked() || !IsCancelled(error)) tellError(error);
  }
  loading_ = false;
  program_.host.setPointer(Pointer::Default);
  endLoad();
}

void frmDataView::readRecords() {
  tTableStructure table;
  if (!GetTableStructure(program_, table_.server, {table_.strDb, table_.strTable, table_.lngObjId}, table)) return;
  SetGridColumnHeaders(VSFlexGrid1, table.arrColumns);
  const StopScope stopping(program_, [this] { return endAsked(); });
  RecordsetPtr rs;
  GetAdoRS(program_, table_.server, adCmdText, SqlText("SELECT * FROM ") << asName(table_.strExtName), rs,
           table_.strDb);
  program_.host.doEvents();
  if (!endAsked() && hasRecords(rs)) showRecords(*rs);
}

void frmDataView::showRecords(Recordset& rs) {
  if (refresh_.glngGridRefreshMode != 1) VSFlexGrid1.setRedraw(false);
  VSFlexGrid1.setRowCount(static_cast<std::size_t>(table_.lngRecs) + 1);
  VSFlexGrid1.setVisible(true);
  focusButton();
  const std::int32_t lngEvery = refresh_.glngGridRefreshMode == 1 ? recordsPerBatch : refresh_.glngGridRefreshMode;
  for (rec_ = 1; rec_ <= table_.lngRecs; ++rec_) {
    if (rec_ == 1)
      rs.MoveFirst();
    else
      rs.MoveNext();
    if (rs.Eof()) return;
    progress_.show(rec_, table_.lngRecs);
    if (endAsked()) return;
    WriteRecordToGrid(VSFlexGrid1, rs, rec_ % 2 == 0 ? COLOR_DIFF_SOURCE : COLOR_DIFF_TARGET, rec_);
    if (lngEvery != 0 && rec_ % lngEvery == 0) showBatch();
  }
}

// The table is painted here and nowhere between: a repaint for each row takes longer than its reading.
void frmDataView::showBatch() {
  const std::int32_t lngTop = rec_ > recordsPerBatch ? rec_ - recordsPerBatch : rec_;
  if (refresh_.glngGridRefreshMode == 1) VSFlexGrid1.setTopRow(static_cast<std::size_t>(lngTop));
  VSFlexGrid1.setRedraw(true);
  VSFlexGrid1.setRedraw(false);
}

void frmDataView::tellError(const std::exception& error) {
  const ErrorInfo info = describeError(error);
  if (info.number == Grid::outOfRows)
    program_.host.messageBox("Only first " + FormatThousands(rec_ - 1) + " records can be displayed.",
                             Icon::Information);
  else
    program_.host.messageBox(
        "Error in Sub frmDataView.LoadData, error nr " + std::to_string(info.number) + " (" + info.description + ").",
        Icon::Critical);
}

void frmDataView::endLoad() {
  if (closeAsked_) {
    closeAsked_ = false;
    close();
    return;
  }
  if (stop_) {
    cmdStop.setEnabled(false);
    cmdExport.setEnabled(true);
  } else {
    ShowHideControls(2);
  }
  if (rec_ >= 1) VSFlexGrid1.setTopRow(1);
  VSFlexGrid1.setRedraw(true);
}

tExportSource frmDataView::exportSource() const {
  tExportSource source;
  source.strCaption = caption;
  source.lblTableName[0] = lblTableName.text();
  source.lblStats[0] = lblStats.text();
  source.blnCurRecVisible = lblCurRec.visible();
  source.lblCurRec = lblCurRec.text();
  source.VSFlexGrid1 = &VSFlexGrid1;
  return source;
}

}  // namespace qrel
