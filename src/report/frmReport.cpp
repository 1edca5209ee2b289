#include "report/frmReport.h"

#include <utility>

#include "app/modTextPane.h"
#include "app/trap.h"
#include "platform/files.h"
#include "report/modCopyToFile.h"

namespace qrel {

namespace {

constexpr const char* moduleName = "frmReport";
constexpr std::int32_t textExport = 0;  // the export type of a report's file

// A command of the window: not while another one runs, and its errors are reported under its name.
template <class Command>
void runAlone(Program& program, bool& busy, const char* strProcName, Command&& command) {
  if (busy) return;
  busy = true;
  trap(program, moduleName, strProcName, std::forward<Command>(command));
  busy = false;
}

}  // namespace

frmReport::frmReport(Program& program) : Form(moduleName), program_(program) {
  for (Control* control :
       std::initializer_list<Control*>{&txtReport, &cmdCopyClip, &cmdCopyToFile, &cmdPrint, &cmdSave, &cmdExit})
    add(*control);
  txtReport.readOnly = true;
  cmdExit.isCancel = true;
  cmdExit.onClick = [this] { close(); };
  cmdCopyClip.onClick = [this] {
    trap(program_, moduleName, "cmdCopyClip_Click", [&] { TxText_CopyToClipboard(program_, txtReport); });
  };
  cmdCopyToFile.onClick = [this] { runAlone(program_, mblnBusy, "cmdCopyToFile_Click", [&] { copyToFile(); }); };
  cmdPrint.onClick = [this] { runAlone(program_, mblnBusy, "PrintReport", [&] { PrintReport(); }); };
  cmdSave.onClick = [this] { runAlone(program_, mblnBusy, "cmdSave_Click", [&] { save(); }); };
}

void frmReport::ShowUp(tReportInput input) {
  input_ = std::move(input);
  if (input_.lngSelCountSource <= 0) input_.arrSource.clear();
  if (input_.lngSelCountTarget <= 0) input_.arrTarget.clear();
  showModal(static_cast<bool>(program_.state<ReportProcessSteps>().SaveComparison));
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
  InitializeTXTextControl(program_, txtReport);
  txtReport.setText(program_.report.gstrReportText);
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
  const auto& record = program_.state<ReportProcessSteps>().RecordExportingResultsToTxtFile;
  if (!mstrSavedName.empty() && record) record(mstrSavedName, strPath, textExport, false, input_.lngCompType);
  mblnSaved = false;
}

void frmReport::save() {
  const auto& saveComparison = program_.state<ReportProcessSteps>().SaveComparison;
  if (saveComparison) saveComparison(input_, mblnSaved, mstrSavedName);
}

void frmReport::PrintReport() {
  program_.host.print({"Quorrel Report", txtReport.text(), {}, false});
  if (mblnAuto) mblnSaved = false;
  if (!mblnSaved) return;
  recordPrinting();
  mblnSaved = false;
}

void frmReport::recordPrinting() {
  const auto& addPrintInfo = program_.state<ReportProcessSteps>().AddPrintInfoToSavedProcess;
  if (mstrSavedName.empty() || !addPrintInfo || !addPrintInfo(mstrSavedName, true)) return;
  program_.host.messageBox("Printing info was added to the saved comparison process:\r\n\t- process name:\t'" +
                               mstrSavedName +
                               "'\r\n\r\nNext time when this process is run, the program will automatically print "
                               "final report on the default "
                               "printer.",
                           Icon::Information);
}

}  // namespace qrel
