#include "report/frmExport.h"

#include <utility>

#include "app/modStrings.h"
#include "app/trap.h"
#include "process/modSavedProcess.h"

namespace qrel {

namespace {

constexpr const char* inFrmExport = "frmExport";

}  // namespace

// Shows how far an export has come for the length of a scope.
class frmExport::ProgressScope {
 public:
  explicit ProgressScope(frmExport& window) : window_(window) { window_.showProgress(true); }
  ~ProgressScope() { window_.showProgress(false); }
  ProgressScope(const ProgressScope&) = delete;
  ProgressScope& operator=(const ProgressScope&) = delete;

 private:
  frmExport& window_;
};

// The words for one kind of file.
struct frmExport::Format {
  const char* extension;
  const char* filter;
  const char* dialogTitle;
  const char* cancelledTitle;
  const char* viewTitle;
  const char* written;
  const char* viewQuestion;
};

const frmExport::Format frmExport::html{
    "htm",
    "Export Files (*.htm)|*.htm",
    "Save (H)yper (T)est (M)arkup (L)anguage Export File",
    "HTML Export File",
    "HTML Code Generated",
    "HTML code was generated and saved in file ",
    "Do you want to view that file in your browser now?",
};
const frmExport::Format frmExport::csv{
    "csv",
    "Export Files (*.csv)|*.csv",
    "Save Excel - (C)omma (S)eparated (V)alues Export File",
    "Comma Delimited Export File",
    "Comma Delimited File Generated",
    "Data was successfully exported to file",
    "Do you want to view that file now?",
};

frmExport::frmExport(Program& program) : Form(inFrmExport), program_(program) {
  for (OptionButton& option : optGen) add(option);
  for (Control* control : std::initializer_list<Control*>{&lblGen0, &lblGen1, &ProgressBar, &cmdOK, &cmdCancel})
    add(*control);
  OptionButton::group({&optGen[0], &optGen[1]});
  caption = "Export";
  optGen[0].setText("Hyper Text Markup Language (HTML) file");
  optGen[1].setText("Excel - Comma Separated Values (CSV) file");
  optGen[0].choose();
  lblGen0.setText("Exporting row:");
  cmdOK.setText("&OK");
  cmdOK.isDefault = true;
  cmdOK.onClick = [this] { trap(program_, inFrmExport, "cmdOK_Click", [&] { run(); }); };
  cmdCancel.setText("&Cancel");
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { cancel(); };
  showProgress(false);
}

tExportResult frmExport::ShowUp(const tExportSource& source, const tExportRequest& request) {
  source_ = source;
  request_ = request;
  result_ = {};
  activated_ = false;
  cmdOK.setEnabled(true);
  reopen();
  program_.host.showModal(*this);
  result_.blnWrapInQuot = request.blnAuto ? request.blnWrapInQuot : request_.blnWrapInQuot;
  return result_;
}

void frmExport::activate() {
  if (std::exchange(activated_, true) || request_.lngExportType == 0 || request_.strFilePath.empty()) return;
  if (request_.lngExportType == exportHtml) optGen[0].choose();
  if (request_.lngExportType == exportCsv) optGen[1].choose();
  cmdOK.personClicks();
}

bool frmExport::closeRequested() {
  program_.state<frmExportState>().gblnCancelExport = true;
  return true;
}

void frmExport::cancel() {
  program_.state<frmExportState>().gblnCancelExport = true;
  program_.host.doEvents();
  close();
}

void frmExport::run() {
  program_.state<frmExportState>().gblnCancelExport = false;
  cmdOK.setEnabled(false);
  if (mlngMode < exportFromCompareData || mlngMode > exportFromDataAnalyze) {
    program_.host.messageBox("Error in cmdOK_Click, wrong value of mlngMode\r\nmlngMode = " + std::to_string(mlngMode));
  } else {
    const bool blnReport = mlngMode == exportFromDataAnalyze;
    const bool blnHtml = optGen[0].chosen();
    const Grid& table = blnReport ? *source_.rpcReport : *source_.VSFlexGrid1;
    mlngRows = static_cast<std::int32_t>(table.rowCount()) - 1;
    result_.lngType = blnHtml ? exportHtml : exportCsv;
    if (blnHtml)
      result_.blnOK = blnReport ? ExportRepControlToHtml() : ExportGridToHtml();
    else
      result_.blnOK = blnReport ? ExportRepControlToCSV() : ExportGridToCSV();
  }
  close();
}

bool frmExport::ExportGridToHtml() {
  return exportTable("ExportGridToHtml", html, true, [this](files::AtomicFile& file, const ExportStep& step) {
    return GridToHtml(source_, mlngMode, request_.lngLimitCount, request_.strLimitText, file, step);
  });
}

bool frmExport::ExportRepControlToHtml() {
  return exportTable("ExportRepControlToHtml", html, true, [this](files::AtomicFile& file, const ExportStep& step) {
    return RepControlToHtml(source_, file, step);
  });
}

bool frmExport::ExportGridToCSV() {
  // A program that closes behind its run has nobody to ask; the other three ask all the same.
  const bool blnAsk = !program_.main.gblnCloseAfterRun;
  return exportTable("ExportGridToCSV", csv, blnAsk, [this](files::AtomicFile& file, const ExportStep& step) {
    return GridToCSV(*source_.VSFlexGrid1, {request_.blnWrapInQuot}, file, step);
  });
}

bool frmExport::ExportRepControlToCSV() {
  return exportTable("ExportRepControlToCSV", csv, true, [this](files::AtomicFile& file, const ExportStep& step) {
    return RepControlToCSV(*source_.rpcReport, {request_.blnWrapInQuot}, file, step);
  });
}

bool frmExport::exportTable(const char* strProcName, const Format& format, bool blnAskToView, const Writer& writer) {
  bool blnWritten = false;
  row_ = 0;
  trapWithNumber(program_, inFrmExport, strProcName, "Row = ", row_, [&] {
    std::string strPath = request_.strFilePath;
    if (strPath.empty()) {
      strPath = askForFile(format);
      if (strPath.empty()) return;
      if (&format == &csv) askToWrap();
    }
    blnWritten = writeFile(strPath, writer);
    if (!blnWritten) return;
    result_.strPath = strPath;
    if (blnAskToView) offerToView(format, strPath);
  });
  return blnWritten;
}

std::string frmExport::askForFile(const Format& format) {
  Host& host = program_.host;
  const PointerScope pointer(host, Pointer::Default);
  const FileDialog dialog{format.dialogTitle, format.filter,
                          program_.main.gstrDataPath + GetDefaultExportFileName(host, format.extension),
                          format.extension};
  std::string strPath = host.saveFileDialog(dialog);
  if (strPath.empty()) {
    host.beep();
    host.messageBox("The export operation was cancelled.\r\n", Icon::Information, format.cancelledTitle);
  }
  return strPath;
}

void frmExport::askToWrap() {
  const Answer answer = program_.host.messageBox(
      "Data which has commas in it is split into separate pieces in comma separated values file.\r\n\r\n"
      "To prevent that, the program can wrap up data into quotation marks.\r\n\r\n"
      "If your data doesn't have commas, adding quotation marks is not needed.\r\n\r\n"
      "Do you want to wrap up data in quotation marks?",
      Icon::Question, "Comma Delimited File", Buttons::YesNo, 2);
  request_.blnWrapInQuot = answer == Answer::Yes;
}

bool frmExport::writeFile(const std::string& strPath, const Writer& writer) {
  const PointerScope pointer(program_.host, Pointer::Hourglass);
  files::AtomicFile file(strPath);
  const ProgressScope progress(*this);
  const bool blnWhole = writer(file, [this](std::int32_t lngRow) { return takesRow(lngRow); });
  file.finish();
  return blnWhole;
}

bool frmExport::takesRow(std::int32_t lngRow) {
  row_ = lngRow;
  lblGen1.setText(FormatThousands(lngRow) + " of " + FormatThousands(mlngRows));
  ProgressBar.setValue(mlngRows > 0 ? 100.0 * lngRow / mlngRows : 100);
  program_.host.doEvents();
  if (!program_.state<frmExportState>().gblnCancelExport) return true;
  program_.host.messageBox("Operation cancelled by user.", Icon::Information);
  return false;
}

void frmExport::offerToView(const Format& format, const std::string& strPath) {
  const std::string strQuestion = format.written + ("\r\n\r\n'" + strPath + "'\r\n\r\n") + format.viewQuestion;
  if (program_.host.messageBox(strQuestion, Icon::Question, format.viewTitle, Buttons::YesNo) != Answer::Yes) return;
  constexpr int notLaunched = -1;
  if (!program_.host.openUrl(strPath))
    program_.host.messageBox("Error on LaunchProgram: " + std::to_string(notLaunched));
}

void frmExport::showProgress(bool shown) {
  for (OptionButton& option : optGen) option.setVisible(!shown);
  for (Control* control : std::initializer_list<Control*>{&lblGen0, &lblGen1, &ProgressBar}) control->setVisible(shown);
  lblGen1.setText("");
  ProgressBar.setValue(0);
}

}  // namespace qrel
