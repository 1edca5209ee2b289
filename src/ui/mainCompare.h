// The main window as the comparisons see it: they ask it for the selection, and show and print through it.
#pragma once

#include <string>
#include <vector>

#include "compare/all/compareAllCommands.h"
#include "compare/structure/modCompareSelected.h"

namespace qrel {

class frmMain;

// Set while all tables are compared for printing: a pair that differs is printed, and no report window opens.
struct PrintRunState {
  bool gblnCompareAndPrint = false;
};

class MainCompare : public PairComparisonSteps, public CompareAllSteps {
 public:
  MainCompare(Program& program, frmMain& window) : program_(program), window_(window) {}

  // The data access layer is there. What isn't selected is told by the comparison, which finds nothing to compare.
  bool CanStartComparison() override;
  void ShowReport(const PairReport& report) override;
  bool printRunInProgress() override;
  void PrintPane(const std::string& strHeading, TextPane& pane) override;

  std::string DatabaseName(int side) const override;
  void ShowReport(const CompareAllReportCall& call) override;

 private:
  Program& program_;
  frmMain& window_;
};

}  // namespace qrel
