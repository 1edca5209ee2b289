// The tip of the day.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/Program.h"
#include "platform/controls/form.h"

namespace qrel {

// Where the tips' file was installed with the program; it is read when the program folder (which may be another one)
// has none.
struct TipsState {
  std::string strInstalledFolder;
};

class frmTip : public Form {
 public:
  explicit frmTip(Program& program);

  Label lblTipText{"lblTipText"};
  Label lblTipNum{"lblTipNum"};  // "Tip number 3/20"
  CheckBox chkLoadTipsAtStartup{"chkLoadTipsAtStartup"};
  Button cmdNextTip{"cmdNextTip"};
  Button cmdOK{"cmdOK"};

  // Modal.
  void ShowUp();

  void load() override;
  // Keeps the number of the tip shown and whether tips come up at start.
  void unload() override;

 private:
  void showNext();

  Program& program_;
  std::vector<std::string> tips_;
  std::int32_t number_ = 0;  // of the tip shown, from 1
};

// The tips of a file: its lines from the seventh on, each run of five blanks an empty line.
std::vector<std::string> TipsOfFile(const std::string& strText);

}  // namespace qrel
