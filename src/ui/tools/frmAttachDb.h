// Attaching a database file to the Source server: the one command of the program that changes a server.
#pragma once

#include <array>
#include <string>

#include "app/Program.h"
#include "compare/all/CompareAllControls.h"
#include "platform/controls/form.h"

namespace qrel {

class frmAttachDb : public Form {
 public:
  explicit frmAttachDb(Program& program);

  Label lblServer{"lblServer"};
  std::array<TextBox, 3> txtPath = controlArray<TextBox, 3>("txtPath");  // 0 the database's name, 1 its file, 2 its log
  std::array<Button, 2> cmdFileSelect = controlArray<Button, 2>("cmdFileSelect");  // 0 database file, 1 log file
  CheckBox chkAttachSingleFile{"chkAttachSingleFile"};                             // there is no log file
  Button cmdOK{"cmdOK"};
  Button cmdCancel{"cmdCancel"};

  // Modal; blnAttached tells whether a database was attached.
  void ShowUp(bool& blnAttached);

 private:
  void selectFile(std::size_t which);
  bool refuse(std::size_t field, const std::string& strMessage);
  bool inputIsValid();
  void attach();
  void cmdOK_Click();

  Program& program_;
  bool attached_ = false;
  bool mblnBusy = false;
};

}  // namespace qrel
