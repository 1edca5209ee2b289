#include "app/frmErrorReport.h"

#include "app/trap.h"
#include "platform/text.h"

namespace qrel {

namespace {

std::string plusForBlanks(std::string_view text) { return replaceAll(text, " ", "+"); }

std::string introduction() {
  const std::string name = programName;
  const std::string gap = "\r\n\r\n";
  return "Regrettably, a problem has occurred in " + name + "." + gap + name +
         " may continue to function after this, but if you have further problems you should restart the program." +
         gap + "We'd like to fix this problem quickly, but we need your help.  Can " + name +
         " submit a bug report on your behalf to Marlpine Software?  And, can you please take just a moment to jot "
         "down "
         "what steps we should take to reproduce the problem?" +
         gap + "Your report is confidential, and only the information you see below is included in the report.";
}

std::string describe(const tErrorReport& report) {
  std::string text = report.ProgVer + " " + std::to_string(report.BuildNum) + " Error " +
                     std::to_string(report.ErrNum) + " (" + report.ModuleName + ":" + report.ProcName + ")\r\n\r\n" +
                     report.ErrDesc;
  if (!report.ExtraDesc.empty()) text += "\r\n\r\n" + report.ExtraDesc;
  return text;
}

}  // namespace

frmErrorReport::frmErrorReport(Host& host, tErrorReport report)
    : Form("frmErrorReport"), host_(host), report_(std::move(report)) {
  for (Control* control : std::initializer_list<Control*>{&lblTitle, &lblIntro, &txtErrDesc, &txtComments, &txtEmail,
                                                          &cmdSend, &cmdCancel})
    add(*control);
  caption = std::string("An error occurred in ") + programName;
  lblTitle.setText(std::string(programName) + " Problem ");
  lblIntro.setText(introduction());
  txtErrDesc.readOnly = true;
  txtErrDesc.setText(describe(report_));
  cmdSend.isDefault = true;
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { close(); };
  cmdSend.onClick = [this] {
    host_.openUrl(requestUrl());
    close();
  };
}

void frmErrorReport::ShowUp() {
  const PointerScope pointer(host_, Pointer::Default);
  host_.showModal(*this);
}

std::string frmErrorReport::requestUrl() const {
  return std::string(errorReportServer) + "/error.php?ErrNum=" + std::to_string(report_.ErrNum) +
         "&ErrDesc=" + plusForBlanks(report_.ErrDesc) + "&ProgVer=" + report_.ProgVer +
         "&BuildNum=" + std::to_string(report_.BuildNum) + "&ModuleName=" + report_.ModuleName +
         "&ProcName=" + report_.ProcName + "&Comments=" + plusForBlanks(trimBlanks(txtComments.text())) +
         "&Email=" + plusForBlanks(trimBlanks(txtEmail.text())) + "&ExtraDesc=" + plusForBlanks(report_.ExtraDesc);
}

void ShowErrorReport(Program& program, std::int32_t lngErrNum, const std::string& strErrDesc,
                     const std::string& strModuleName, const std::string& strProcName,
                     const std::string& strExtraDesc) {
  ++program.state<ErrorReportsState>().lngShown;
  frmErrorReport form(program.host,
                      {lngErrNum, strErrDesc, programVersion, programBuild, strModuleName, strProcName, strExtraDesc});
  form.ShowUp();
}

}  // namespace qrel
