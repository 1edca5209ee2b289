// The About window.
#pragma once

#include "app/Program.h"
#include "platform/controls/form.h"

namespace qrel {

class frmAbout : public Form {
 public:
  explicit frmAbout(Program& program);

  Label lblTitle{"lblTitle"};
  Label lblVersion{"lblVersion"};
  Label lblDescription{"lblDescription"};
  Label lblFolders{"lblFolders"};  // where the program and its profile files lie
  Button cmdOK{"cmdOK"};

  // Modal.
  void ShowUp();

 private:
  Program& program_;
};

}  // namespace qrel
