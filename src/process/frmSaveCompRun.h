// The window that chooses the saved process to run, shows what is stored of one, and removes them.
#pragma once

#include <string>
#include <vector>

#include "platform/controls/form.h"

namespace qrel {

class Program;

class frmSaveCompRun : public Form {
 public:
  explicit frmSaveCompRun(Program& program);

  CheckList lstComps{"lstComps"};  // all names in the order of the file
  Button cmdOK{"cmdOK"};
  Button cmdDelete{"cmdDelete"};
  Button cmdCancel{"cmdCancel"};

  // Modal; the name of the process to run, empty when none was chosen.
  std::string ShowUp();

 private:
  void fill();
  // The first selected name; a message that asks for one to be done that to, and an empty one, without a selection.
  std::string selectedFor(const std::string& strDone);
  void run();
  void remove();
  void showProperties();

  Program& program_;
  std::vector<std::string> names_;
  std::string chosen_;
  bool busy_ = false;
};

}  // namespace qrel
