// The comparison of the pair that is selected on the two panels, as a person or a saved process asks for it.
#pragma once

#include <array>
#include <string>

#include "app/CompLine.h"

namespace qrel {

class Program;
class TextPane;
struct Workspace;

// What the report of a pair comparison tells besides the report text; index 0 Source, 1 Target.
struct PairReport {
  std::string strTitle;
  std::array<std::string, 2> arrServers;
  std::array<std::string, 2> arrDatabases;
  std::array<std::string, 2> arrObjects;
  int intCompSubType = 0;
  std::string strObjectTypes;  // eight flags
  bool blnIdentical = false;
  // The panes' lines with their marks as Mark_Differences gives them; empty for a pair that is identical.
  std::array<CompLineArray, 2> arrLines;
};

// What the comparison of a pair asks of the parts around it.
class PairComparisonSteps {
 public:
  virtual ~PairComparisonSteps() = default;

  // Whether a comparison can start now; shows why not.
  virtual bool CanStartComparison() = 0;
  // Shows the report window over the program's report text and waits for it.
  virtual void ShowReport(const PairReport& report) = 0;
  // Whether pairs are compared for printing; then there is no report, and the panes of a pair that differs are printed,
  // each under its heading.
  virtual bool printRunInProgress() = 0;
  virtual void PrintPane(const std::string& strHeading, TextPane& pane) = 0;
};

// Compares the selected pair, by the panes' texts or, with blnTextsGiven, by the two texts; marks the panes when they
// differ and reports the verdict. The comparison is over with a message when both texts are empty. It owns the busy
// flag: flag and pointer are set meanwhile, whatever they were, and cleared however it ends.
void CompareSelProcs(Program& program, Workspace& workspace, PairComparisonSteps& steps, bool blnTextsGiven,
                     const std::string& strSourceText, const std::string& strTargetText);

// Compares the parts of the two panes that are selected; a message tells which one is missing.
void CompareHighlightedSections(Program& program, Workspace& workspace, PairComparisonSteps& steps);

}  // namespace qrel
