#include "compare/all/CompareAllWindow.h"

#include "app/modTextPane.h"
#include "platform/text.h"

namespace qrel {

namespace {

std::string boxCaption(long lngType) {
  std::string caption = GetObjectTypeName(lngType, false);
  return upperCase(caption.substr(0, 1)) + caption.substr(1);
}

}  // namespace

CompareAllWindow::CompareAllWindow(Program& program, std::string formName)
    : Form(std::move(formName)), program_(program) {
  for (Control& frame : parts.fraContainer) add(frame);
  for (CheckBox& box : parts.chkObjType) add(box);
  for (Label& label : parts.lblComparing) {
    add(label);
    label.setVisible(false);
  }
  for (Control& shape : parts.shpStatus) {
    add(shape);
    shape.setVisible(&shape == &parts.shpStatus.front());
  }
  for (Control* control : std::initializer_list<Control*>{&parts.lblProgress, &parts.lblCurProcName, &parts.lblTime,
                                                          &parts.tmrStatus, &parts.cmdCompare, &parts.cmdCancel})
    add(*control);
  for (std::size_t i = 0; i < compareAllTypes.size(); ++i) parts.chkObjType[i].setText(boxCaption(compareAllTypes[i]));
  parts.chkObjType.at(6).setVisible(program.settings.AnalyzeConstraints);
  parts.chkObjType.at(7).setVisible(gblnPermissionsEnabled);
  parts.fraContainer[1].setVisible(false);
  parts.cmdCancel.isCancel = true;
  parts.cmdCancel.onClick = [this] { cancel(); };
  parts.tmrStatus.onTick = [this] {
    showNextShape();
    parts.lblTime.setText(ElapsedTime(program_, parts.startTicks));
  };
}

void CompareAllWindow::load() {
  for (TextPane& pane : parts.txtTXProc) InitializeTXTextControl(program_, pane);
}

void CompareAllWindow::startRun() {
  parts.cmdCompare.setEnabled(false);
  program_.host.setPointer(Pointer::Hourglass);
  parts.startTicks = program_.host.ticks();
  result_ = runComparison();
}

void CompareAllWindow::cancel() {
  if (parts.tmrStatus.enabled()) {
    program_.state<modCompareAllState>().gblnCancelCompare = true;
  } else {
    close();
  }
}

void CompareAllWindow::showNextShape() {
  parts.shpStatus[shape_].setVisible(false);
  shape_ = (shape_ + 1) % parts.shpStatus.size();
  parts.shpStatus[shape_].setVisible(true);
}

}  // namespace qrel
