// The window that reports a trapped error and offers to send it.
#pragma once

#include "app/Program.h"
#include "platform/controls/form.h"

namespace qrel {

struct tErrorReport {
  std::int32_t ErrNum = 0;
  std::string ErrDesc;
  std::string ProgVer;  // major.minor
  std::int32_t BuildNum = 0;
  std::string ModuleName;
  std::string ProcName;
  std::string ExtraDesc;  // mostly empty
};

class frmErrorReport : public Form {
 public:
  frmErrorReport(Host& host, tErrorReport report);

  Label lblTitle{"lblTitle"};
  Label lblIntro{"lblIntro"};
  TextBox txtErrDesc{"txtErrDesc"};
  TextBox txtComments{"txtComments"};
  TextBox txtEmail{"txtEmail"};
  Button cmdSend{"cmdSend"};
  Button cmdCancel{"cmdCancel"};

  void ShowUp();

  const tErrorReport& report() const { return report_; }
  // The request that cmdSend opens: only blanks are replaced, so that an "&" in a text begins a new key.
  std::string requestUrl() const;

 private:
  Host& host_;
  tErrorReport report_;
};

// Where reports go; the path "/error.php" and its keys follow.
inline constexpr const char* errorReportServer = "https://reports.marlpine.example";

}  // namespace qrel
