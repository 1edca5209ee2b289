#include "ui/frmCompareAndPrint.h"

#include "app/modStrings.h"
#include "app/trap.h"
#include "compare/all/modCompareAll.h"
#include "ui/frmMain.h"

namespace qrel {

frmCompareAndPrint::frmCompareAndPrint(Program& program, Workspace& workspace, PairComparisonSteps& steps)
    : Form("frmCompareAndPrint"), program_(program), workspace_(workspace), steps_(steps) {
  for (Control* control : std::initializer_list<Control*>{&lblCurProcName, &lblTime, &tmrStatus, &cmdCancel})
    add(*control);
  caption = "Compare and Print All Tables";
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { program_.state<modCompareAllState>().gblnCancelCompare = true; };
  tmrStatus.onTick = [this] { showTime(); };
}

void frmCompareAndPrint::activate() {
  if (started_) return;
  started_ = true;
  startTicks_ = program_.host.ticks();
  tmrStatus.setEnabled(true);
  trap(program_, "frmCompareAndPrint", "Form_Activate", [&] { compareAll(); });
  tmrStatus.setEnabled(false);
  close();
}

bool frmCompareAndPrint::closeRequested() {
  if (tmrStatus.enabled()) cmdCancel.onClick();
  return !tmrStatus.enabled();
}

bool frmCompareAndPrint::cancelled() const { return program_.state<modCompareAllState>().gblnCancelCompare; }

void frmCompareAndPrint::showTime() { lblTime.setText(ElapsedTime(program_, startTicks_)); }

void frmCompareAndPrint::compareAll() {
  for (std::size_t row = 0; row < workspace_.pvlSqlObj[0].count() && !cancelled(); ++row) compareRow(row);
}

void frmCompareAndPrint::compareRow(std::size_t row) {
  showTime();
  CheckList& list = workspace_.pvlSqlObj[0];
  list.select(row);
  const std::string strName = list.cell(row, 0);
  lblCurProcName.setText(strName);
  program_.host.doEvents();
  std::string strRest;
  if (strName.empty() || GetLastWord(strName, strRest, ".").empty()) return;
  if (!SelectRowByText(workspace_.pvlSqlObj[1], strName) || cancelled()) return;
  CompareSelProcs(program_, workspace_, steps_, false, "", "");
  program_.host.doEvents();
}

}  // namespace qrel
