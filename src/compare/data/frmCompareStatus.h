// The progress of a data comparison: it counts the records of both tables, compares them, and can be stopped.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "app/Program.h"
#include "compare/data/UpdateDisplay.h"
#include "compare/data/modCompareData.h"
#include "platform/controls/form.h"

namespace qrel {

class frmCompareStatus : public Form, public ElapsedTimeWindow {
 public:
  explicit frmCompareStatus(Program& program);

  Label lblServer1{"lblServer1"}, lblServer2{"lblServer2"};
  Label lblDb1{"lblDb1"}, lblDb2{"lblDb2"};
  Label lblTable1{"lblTable1"}, lblTable2{"lblTable2"};
  Label lblRecsCount1{"lblRecsCount1"}, lblRecsCount2{"lblRecsCount2"};
  Label lblCurRec{"lblCurRec"};
  Label lblStatus{"lblStatus"};
  Label lblTime{"lblTime"};
  Label lblGen5{"lblGen(5)"};  // stands before lblTime
  qrel::ProgressBar ProgressBar{"ProgressBar"};
  Button cmdStop{"cmdStop"};

  // Modal; returns when the run has ended or was stopped (gblnStopComparison). strResult isn't touched.
  void ShowUp(const tDataCompRequest& request, tDataCompResult& result);
  // 1, 2 counting the first and second table, 3, 4 getting their data, 5 comparing; any other number only yields.
  void ShowHideControls(long lngPhase);
  void UpdateTimeElapsed() override;

  void load() override;
  // The first activation runs the comparison and closes the window.
  void activate() override;
  // The close box stops the run like the button.
  bool closeRequested() override;
  void unload() override;

 private:
  void run();
  void countRecords(std::size_t side);
  void stop();

  Program& program_;
  modCompareDataState& state_;
  tDataCompRequest request_;
  tDataCompResult result_;
  std::array<std::string, 2> extNames_;  // the tables as they stand in SQL
  std::int64_t startTicks_ = 0;
  bool started_ = false;
  bool running_ = false;
};

}  // namespace qrel
