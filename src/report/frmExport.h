// The window that writes a result window's table to an HTML or a CSV file: a person picks the format and the file, or
// a replay names both.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/controls/form.h"
#include "report/exportFiles.h"

namespace qrel {

class Program;

struct frmExportState {
  bool gblnCancelExport = false;  // read before each row
};

struct tExportRequest {
  std::string strFilePath;         // empty: asks
  std::int32_t lngExportType = 0;  // exportHtml or exportCsv; 0: asks. With type and path the window acts by itself
  std::int32_t lngLimitCount = 0;  // above 0: strLimitText stands at the end of an HTML file of the differences
  std::string strLimitText;
  bool blnAuto = false;        // a replay: its wrap flag comes back as it was
  bool blnWrapInQuot = false;  // fields of a CSV file in quotation marks, where the path is given
};

struct tExportResult {
  bool blnOK = false;        // written as a whole
  std::string strPath;       // of the file; empty unless blnOK
  std::int32_t lngType = 0;  // exportHtml or exportCsv, also of an export that failed; 0: none was begun
  bool blnWrapInQuot = false;
};

class frmExport : public Form {
 public:
  explicit frmExport(Program& program);

  std::array<OptionButton, 2> optGen{{OptionButton("optGen(0)"), OptionButton("optGen(1)")}};  // HTML, CSV
  Label lblGen0{"lblGen(0)"};                                                                  // words before lblGen1
  Label lblGen1{"lblGen(1)"};                                                                  // "5 of 1,234"
  qrel::ProgressBar ProgressBar{"ProgressBar"};
  Button cmdOK{"cmdOK"};
  Button cmdCancel{"cmdCancel"};

  std::int32_t mlngMode = 0;  // which window the table comes from; set first

  // Modal. The source's table must live until it returns. What goes wrong is told.
  tExportResult ShowUp(const tExportSource& source, const tExportRequest& request);

  // The first one acts by itself when the request has a file and a type.
  void activate() override;
  // The close box cancels like the button.
  bool closeRequested() override;

 private:
  struct Format;
  static const Format html, csv;
  class ProgressScope;
  using Writer = std::function<bool(files::AtomicFile& file, const ExportStep& step)>;

  void run();
  void cancel();
  bool ExportGridToHtml();
  bool ExportRepControlToHtml();
  bool ExportGridToCSV();
  bool ExportRepControlToCSV();
  bool exportTable(const char* strProcName, const Format& format, bool blnAskToView, const Writer& writer);
  // Empty when the person cancelled, which is told.
  std::string askForFile(const Format& format);
  void askToWrap();
  bool writeFile(const std::string& strPath, const Writer& writer);
  bool takesRow(std::int32_t lngRow);
  void offerToView(const Format& format, const std::string& strPath);
  void showProgress(bool shown);

  Program& program_;
  tExportSource source_;
  tExportRequest request_;
  tExportResult result_;
  std::int32_t mlngRows = 0;  // data rows of the table
  std::int32_t row_ = 0;      // the last one begun
  bool activated_ = false;
};

}  // namespace qrel
