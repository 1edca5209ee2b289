// The window that saves a comparison as a process.
#pragma once

#include <string>
#include <vector>

#include "platform/controls/form.h"
#include "process/modSavedProcess.h"

namespace qrel {

// Why a process can't be called that, as the window says it; empty when it can.
std::string WhyNoProcessName(const std::string& strName);

class frmSaveComparison : public Form {
 public:
  explicit frmSaveComparison(Program& program);

  CheckList lstServers{"lstServers"};  // the names that there are; never shown
  TextBox txtProcessName{"txtProcessName"};
  CheckBox optPrint{"optPrint"};
  CheckBox chkAutoClose{"chkAutoClose"};
  Button cmdOK{"cmdOK"};
  Button cmdCancel{"cmdCancel"};

  // Modal. Name, printing and closing are the person's; of the process nothing is exported. Once it is saved, blnSaved
  // is True and strSavedName its name; otherwise both stay as they are.
  void ShowUp(tSavedProcess process, bool& blnSaved, std::string& strSavedName);

  void activate() override;

 private:
  void ok();
  bool accepts(const std::string& strName);
  void save(const std::string& strName);

  Program& program_;
  tSavedProcess process_;
  std::vector<std::string> names_;
  bool saved_ = false;
};

}  // namespace qrel
