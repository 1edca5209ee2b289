// The window that removes a server from the list.
#pragma once

#include "app/Program.h"
#include "platform/controls/form.h"

namespace qrel {

class frmDeleteServer : public Form {
 public:
  explicit frmDeleteServer(Program& program);

  CheckList lstServers{"lstServers"};
  Button cmdRemove{"cmdRemove"};
  Button cmdCancel{"cmdCancel"};

  // Modal; `changed` tells whether a server was removed.
  void ShowUp(bool& changed);

 private:
  void remove();

  Program& program_;
  bool changed_ = false;
};

}  // namespace qrel
