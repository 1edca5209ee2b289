#include "report/frmReport.h"

#include <utility>

#include "app/modTextPane.h"
#include "app/trap.h"
#include "platform/controls/menu.h"
#include "platform/files.h"
#include "process/frmSaveComparison.h"
#include "process/modSavedProcess.h"
#include "report/modCopyToFile.h"

namespace qrel {

namespace {

constexpr const char* inFrmReport = "frmReport";

// What the report is about, as a process to be saved under a name that the person gives.
tSavedProcess processOf(const tReportInput& input) {
  tSavedProcess process;
  process.lngCompType = input.lngCompType;
  process.lngCompSubType = input.lngCompSubType;
  process.lngCompSubSubType = input.lngCompSubSubType;
  process.strEncObjTypes = input.strEncObjTypes;
  process.lngCompMethod = input.lngCompMethod;
  process.strServer1 = input.strServer1;
  process.strServer2 = input.strServer2;
  process.strDb1 = input.strDb1;
  process.strDb2 = input.strDb2;
  process.strTable1 = input.strTable1;
  process.strTable2 = input.strTable2;
  process.lngSelCountSource = input.lngSelCountSource;
  process.lngSelCountTarget = input.lngSelCountTarget;
  process.arrSource = input.arrSource;
  process.arrTarget = input.arrTarget;
  process.lngObjId1 = input.lngObjId1;
  process.lngObjId2 = input.lngObjId2;
  return process;
}

}  // namespace

frmReport::frmReport(Program& program) : Form(inFrmReport), program_(program) {
  for (Control* control :
       std::initializer_list<Control*>{&txtReport, &cmdCopyClip, &cmdCopyToFile, &cmdPrint, &cmdSave, &cmdExit})
    add(*control);
  txtReport.readOnly = true;
  txtReport.onMouseUp = [this](int button) {
    constexpr int rightButton = 2;
    if (button == rightButton) openMenu();
  };
  cmdExit.isCancel = true;
  cmdExit.onClick = [this] { close(); };
  cmdCopyClip.onClick = [this] {
    trap(program_, inFrmReport, "cmdCopyClip_Click", [&] { TxText_CopyToClipboard(program_, txtReport); });
  };
  cmdCopyToFile.onClick = [this] {
    trapAlone(program_, mblnBusy, inFrmReport, "cmdCopyToFile_Click", [&] { copyToFile(); });
  };
  cmdPrint.onClick = [this] { trapAlone(program_, mblnBusy, inFrmReport, "PrintReport", [&] { PrintReport(); }); };
  cmdSave.onClick = [this] { trapAlone(program_, mblnBusy, inFrmReport, "cmdSave_Click", [&] { save(); }); };
}

void frmReport::ShowUp(tReportInput input) {
  input_ = std::move(input);
  if (input_.lngSelCountSource <= 0) input_.arrSource.clear();
  if (input_.lngSelCountTarget <= 0) input_.arrTarget.clear();
  showModal(true);
}

void frmReport::ShowUp_Generic(const std::string& strTitle) {
  input_ = {};
  input_.strTitle = strTitle;
  showModal(false);
}

void frmReport::showModal(bool blnCanSave) {
  caption = input_.strTitle;
  cmdSave.setVisible(blnCanSave);
  mblnAuto = input_.blnAuto;
  mblnSaved = mblnActivated = false;
  mstrSavedName.clear();
  reopen();
  program_.host.showModal(*this);
}

void frmReport::load() {
  if (lineChosen) txtReport.onLineChosen = [this](std::size_t line) { chooseLine(line); };
  InitializeTXTextControl(program_, txtReport);
  txtReport.setText(program_.report.gstrReportText);
}

void frmReport::chooseLine(std::size_t line) {
  if (canChoose && !canChoose(line)) return;
  trapAlone(program_, mblnBusy, inFrmReport, "txtReport_DblClick", [&] { lineChosen(line); });
}

void frmReport::openMenu() {
  constexpr long compareObject = 1, copySelected = 2, search = 3;
  if (mblnBusy) return;
  const std::size_t line = txtReport.lineAt(txtReport.selectionStart());
  std::vector<MenuItem> items;
  const auto add = [&](long lngId, const char* strCaption, const char* strKey, bool enabled) {
    MenuItem item;
    item.id = lngId;
    item.caption = strCaption;
    item.key = strKey;
    item.enabled = enabled;
    items.push_back(std::move(item));
  };
  if (lineChosen) add(compareObject, "Co&mpare This Object", "Enter", !canChoose || canChoose(line));
  add(copySelected, "&Copy", "Ctrl+C", txtReport.selectionLength() > 0);
  add(search, "&Find...", "Ctrl+F", true);
  const long lngChosen = program_.host.popUpMenu(items);
  if (lngChosen == compareObject) chooseLine(line);
  if (lngChosen == copySelected) program_.host.setClipboardText(txtReport.selectedText());
  if (lngChosen == search) txtReport.askSearch();
}

void frmReport::activate() {
  if (std::exchange(mblnActivated, true) || !mblnAuto) return;
  if (!input_.strExportPath.empty()) cmdCopyToFile.onClick();
  if (input_.blnPrint) cmdPrint.onClick();
  mblnAuto = false;
  if (program_.main.gblnCloseAfterRun) close();
}

void frmReport::unload() { files::removeFilesEndingWith(".", ".tmp"); }

void frmReport::copyToFile() {
  CompLineArray arr;
  std::int32_t lngError = 0;
  const std::int32_t lngCount = TXText_ConvTextToArray(txtReport, arr, lngError);
  if (lngCount < 1) return;
  const std::string strText = TXText_ConvArrayToText(arr, lngCount, lngError);
  std::string strPath;
  const bool blnWritten = CopyToFile(program_, strText, "Report", strPath, mblnAuto ? input_.strExportPath : "");
  if (mblnAuto) mblnSaved = false;
  if (!blnWritten || !mblnSaved) return;
  if (!mstrSavedName.empty())
    RecordExportingResultsToTxtFile(program_, mstrSavedName, strPath, exportNone, false, input_.lngCompType);
  mblnSaved = false;
}

void frmReport::save() { frmSaveComparison(program_).ShowUp(processOf(input_), mblnSaved, mstrSavedName); }

void frmReport::PrintReport() {
  InsertFooter(txtReport);
  PrintTextControl(program_, txtReport, "Quorrel Report");
  if (mblnAuto) mblnSaved = false;
  if (!mblnSaved) return;
  recordPrinting();
  mblnSaved = false;
}

void frmReport::recordPrinting() {
  if (mstrSavedName.empty() || !AddPrintInfoToSavedProcess(program_, mstrSavedName, true)) return;
  program_.host.messageBox("Printing info was added to the saved comparison process:\r\n\t- process name:\t'" +
                               mstrSavedName +
                               "'\r\n\r\nNext time when this process is run, the program will automatically print "
                               "final report on the default "
                               "printer.",
                           Icon::Information);
}

}  // namespace qrel
