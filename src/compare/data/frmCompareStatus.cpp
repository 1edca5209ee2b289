#include "compare/data/frmCompareStatus.h"

#include "app/modStrings.h"
#include "app/trap.h"
#include "compare/all/modCompareAll.h"
#include "compare/data/CompareTableRecords.h"
#include "compare/data/readScopes.h"
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"

namespace qrel {

frmCompareStatus::frmCompareStatus(Program& program)
    : Form("frmCompareStatus"), program_(program), state_(program.state<modCompareDataState>()) {
  caption = "Comparing Data";
  for (Control* control : std::initializer_list<Control*>{&lblServer1, &lblServer2, &lblDb1, &lblDb2, &lblTable1,
                                                          &lblTable2, &lblRecsCount1, &lblRecsCount2, &lblCurRec,
                                                          &lblStatus, &lblTime, &lblGen5, &ProgressBar, &cmdStop})
    add(*control);
  lblGen5.setText("Time elapsed:");
  cmdStop.setText("&Stop");
  cmdStop.isCancel = true;
  cmdStop.onClick = [this] { stop(); };
}

void frmCompareStatus::ShowUp(const tDataCompRequest& request, tDataCompResult& result) {
  const PointerScope pointer(program_.host, Pointer::Hourglass);
  state_.gblnFillDiffTable = request.blnDisplayDiffs;
  state_.gblnMarkDiffCells = true;
  state_.lngEnd = DataCompEnd::NotRead;
  // The window of a run over many tables has a Cancel of its own.
  leavesOwnerOpen = request.blnSilent;
  request_ = request;
  result_ = {};
  startTicks_ = program_.host.ticks();
  program_.host.showModal(*this);
  result.arrRecs = result_.arrRecs;
  result.lngDiffs = result_.lngDiffs;
  result.blnIdentical = result_.blnIdentical;
}

void frmCompareStatus::load() {
  lblServer1.setText(program_.main.gtypSelServ[0].Name);
  lblServer2.setText(program_.main.gtypSelServ[1].Name);
  lblDb1.setText(request_.arrDbs[0]);
  lblDb2.setText(request_.arrDbs[1]);
  lblTable1.setText(request_.arrTables[0]);
  lblTable2.setText(request_.arrTables[1]);
}

void frmCompareStatus::activate() {
  if (started_) return;
  started_ = true;
  state_.gblnStopComparison = false;
  running_ = true;
  {
    const StopScope stopping(program_, [this] { return state_.gblnStopComparison; });
    trap(program_, "frmCompareStatus", "Form_Activate", [&] { run(); });
  }
  running_ = false;
  close();
}

void frmCompareStatus::run() {
  ShowHideControls(1);
  for (const std::size_t side : {0u, 1u})
    extNames_[side] = GetExtendedObjectName(program_, program_.main.gtypSelServ[side], request_.arrDbs[side],
                                            request_.arrTables[side], objTables, request_.arrObjIds[side]);
  PrefetchNumberOfRecords(program_, program_.main.gtypSelServ[1], extNames_[1], request_.arrDbs[1]);
  countRecords(0);
  if (state_.gblnStopComparison) return;
  ShowHideControls(2);
  countRecords(1);
  if (state_.gblnStopComparison) return;
  result_.blnIdentical = CompareTableRecords(program_, *this, {request_, extNames_, result_.arrRecs}, result_.lngDiffs,
                                             lblCurRec, ProgressBar);
}

void frmCompareStatus::countRecords(std::size_t side) {
  result_.arrRecs[side] =
      GetNumberOfRecordsInTable(program_, program_.main.gtypSelServ[side], extNames_[side], request_.arrDbs[side]);
  (side == 0 ? lblRecsCount1 : lblRecsCount2).setText(FormatThousands(result_.arrRecs[side]));
}

void frmCompareStatus::ShowHideControls(long lngPhase) {
  switch (lngPhase) {
    case 1:
      lblTime.setVisible(false);
      lblGen5.setVisible(false);
      ProgressBar.setVisible(false);
      lblStatus.setText("Counting records in first table...");
      lblStatus.setVisible(true);
      lblRecsCount1.setText("Counting...");
      lblRecsCount2.setText("N/A");
      lblCurRec.setText("N/A");
      break;
    case 2:
      lblStatus.setText("Counting records in second table...");
      lblRecsCount2.setText("Counting...");
      break;
    case 3:
      lblStatus.setText("Getting data from first table...");
      break;
    case 4:
      lblStatus.setText("Getting data from second table...");
      break;
    case 5:
      lblStatus.setVisible(false);
      ProgressBar.setVisible(true);
      lblTime.setVisible(true);
      lblGen5.setVisible(true);
      break;
    default:
      break;
  }
  program_.host.doEvents();
}

void frmCompareStatus::UpdateTimeElapsed() { lblTime.setText(ElapsedTime(program_, startTicks_)); }

void frmCompareStatus::stop() {
  state_.gblnStopComparison = true;
  close();
}

bool frmCompareStatus::closeRequested() {
  if (running_) state_.gblnStopComparison = true;
  return true;
}

void frmCompareStatus::unload() { program_.host.setPointer(Pointer::Default); }

}  // namespace qrel
