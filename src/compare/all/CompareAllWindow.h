// What the two windows of a whole-database run have in common: their controls, Cancel, the clock and the start.
#pragma once

#include "app/Program.h"
#include "compare/all/CompareAllControls.h"
#include "compare/all/modCompareAll.h"

namespace qrel {

class CompareAllWindow : public Form {
 public:
  CompareAllWindow(Program& program, std::string formName);

  CompareAllControls parts{*this};

  void load() override;
  // Refused while a run is on.
  bool closeRequested() override { return !parts.tmrStatus.enabled(); }

 protected:
  // The part of cmdCompare behind its check: starts the clock and runs what the window is for.
  void startRun();
  virtual bool runComparison() = 0;

  Program& program_;
  bool result_ = false;

 private:
  void cancel();
  void showNextShape();

  std::size_t shape_ = 0;  // the visible one
};

}  // namespace qrel
