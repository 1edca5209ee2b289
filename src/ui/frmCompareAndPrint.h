// The window that compares all tables of the main window one by one, so that those that differ are printed.
#pragma once

#include <cstdint>
#include <string>

#include "app/Program.h"
#include "app/Workspace.h"
#include "compare/structure/modCompareSelected.h"
#include "platform/controls/form.h"

namespace qrel {

class frmCompareAndPrint : public Form {
 public:
  // Walks the Source list of the workspace; tables without a namesake in Target are passed over in silence.
  frmCompareAndPrint(Program& program, Workspace& workspace, PairComparisonSteps& steps);

  Label lblCurProcName{"lblCurProcName"};  // the table at work
  Label lblTime{"lblTime"};                // elapsed, hh:mm:ss
  Timer tmrStatus{"tmrStatus", 200};       // enabled: the run is on
  Button cmdCancel{"cmdCancel"};           // the run stops before its next step; what is printed stays

  // The first activation starts the run; its end closes the window.
  void activate() override;
  bool closeRequested() override;

 private:
  void compareAll();
  void compareRow(std::size_t row);
  bool cancelled() const;
  void showTime();

  Program& program_;
  Workspace& workspace_;
  PairComparisonSteps& steps_;
  bool started_ = false;
  std::int64_t startTicks_ = 0;
};

}  // namespace qrel
