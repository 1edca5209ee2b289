// The window that lists all ignored columns of data or of structure comparisons.
#pragma once

#include <string>

#include "app/Program.h"
#include "platform/controls/form.h"
#include "platform/controls/grid.h"

namespace qrel {

class frmIgnoreColumnsView : public Form {
 public:
  explicit frmIgnoreColumnsView(Program& program);

  Label lblGen{"lblGen"};
  Grid vsfGrid{"vsfGrid"};  // server, database, table, column
  Label lblCount{"lblCount"};
  Button cmdCopyClip{"cmdCopyClip"};
  Button cmdCopyToFile{"cmdCopyToFile"};
  Button cmdSendToNotepad{"cmdSendToNotepad"};
  Button cmdExit{"cmdExit"};

  // Modal. enmList: 1 data comparisons, 2 structure comparisons.
  void ShowUp(long enmList);

  void load() override;

 private:
  void copyToClipboard();
  void copyToFile();
  // Puts the listing into a file of the data folder and opens it with the desktop's text editor.
  void sendToNotepad();

  Program& program_;
  long menmMode_ = 0;
  std::string strListing_;
};

}  // namespace qrel
