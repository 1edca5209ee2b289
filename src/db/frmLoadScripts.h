// The window that loads script files into a database of an embedded server.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/Program.h"
#include "platform/controls/form.h"
#include "platform/controls/textPane.h"
#include "platform/data/scriptLoader.h"

namespace qrel {

class frmLoadScripts : public Form {
 public:
  frmLoadScripts(Program& program, ScriptLoader& loader);

  TextBox txtServer{"txtServer"};
  TextBox txtDatabase{"txtDatabase"};
  CheckList lstFiles{"lstFiles"};  // paths, in the order in which they run
  Button cmdAddFiles{"cmdAddFiles"};
  Button cmdAddFolder{"cmdAddFolder"};
  Button cmdRemove{"cmdRemove"};
  CheckBox chkReplace{"chkReplace"};
  Label lblProgress{"lblProgress"};
  TextPane txtResult{"txtResult"};  // read-only: what became of the load
  Button cmdLoad{"cmdLoad"};
  Button cmdCancel{"cmdCancel"};  // stops a load that runs, else closes

  // Modal. `paths` are in the list at first. What was loaded last is in strServer and strDb then; they are empty when
  // nothing was.
  void ShowUp(const std::vector<std::string>& paths, std::string& strServer, std::string& strDb);

  // Stops a load that runs; the window stays open then.
  bool closeRequested() override;

 private:
  void addPaths(const std::vector<std::string>& paths);
  void removeSelected();
  bool refuse(Control& control, const std::string& strMessage);
  bool inputIsValid();
  void loadScripts();
  std::int64_t loadWith(const ScriptLoadRequest& request);
  void showRunning(bool running);
  void showResult(const ScriptLoadResult& result);

  Program& program_;
  ScriptLoader& loader_;
  std::string strServer_, strDb_;
  bool running_ = false;
  bool stop_ = false;
};

}  // namespace qrel
