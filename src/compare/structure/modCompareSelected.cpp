#include "compare/structure/modCompareSelected.h"

#include <utility>

#include "app/Workspace.h"
#include "app/trap.h"
#include "compare/structure/modCompareObjects.h"
#include "compare/structure/modIgnoreColumnsOrder.h"
#include "compare/structure/modIgnoreWhiteSpaces.h"
#include "compare/structure/modMarkDifferences.h"
#include "db/mdlObjects.h"
#include "db/mdlQueryCode.h"
#include "platform/text.h"
#include "process/modSavedProcess.h"

namespace qrel {

namespace {

constexpr int pairComparison = 35;  // the report's comparison sub type

// The main window is busy, with the hourglass; cleared on every way out.
class BusyScope {
 public:
  BusyScope(Program& program, Workspace& workspace) : program_(program), workspace_(workspace) {
    workspace.mblnBusy = true;
    program.host.setPointer(Pointer::Hourglass);
  }
  ~BusyScope() {
    workspace_.mblnBusy = false;
    program_.host.setPointer(Pointer::Default);
  }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;

 private:
  Program& program_;
  Workspace& workspace_;
};

// One pair on its way through the tests.
struct Pair {
  long lngType = 0;
  std::array<std::string, 2> arrTexts;
  std::array<std::string, 2> arrServers;
  std::array<std::string, 2> arrDatabases;
  std::array<std::string, 2> arrObjects;
  std::array<std::string, 2> arrFullNames;
  std::array<long, 2> arrIds{};  // of the objects; 0: not known
  bool blnColumnsIgnored = false;
  bool blnIdentical = false;
  std::array<CompLineArray, 2> arrLines;  // with their marks, when it isn't identical
};

// Of the object that the pane shows.
std::string trimmedText(const TextPane& pane) { return std::string(trimBlanks(pane.givenText())); }

void readSelection(const Program& program, const Workspace& workspace, Pair& pair) {
  pair.lngType = workspace.objectType();
  for (std::size_t side = 0; side < 2; ++side) {
    pair.arrServers[side] = program.main.gtypSelServ[side].Name;
    pair.arrDatabases[side] = Workspace::selectedText(workspace.pvlDb[side]);
    pair.arrObjects[side] = Workspace::selectedText(workspace.pvlSqlObj[side]);
    pair.arrIds[side] = Workspace::selectedId(workspace.pvlSqlObj[side]);
    pair.arrFullNames[side] = pair.arrServers[side] + "." + pair.arrDatabases[side];
    if (!pair.arrObjects[side].empty()) pair.arrFullNames[side] += "." + pair.arrObjects[side];
  }
}

// The comparison text of a table with columns that don't count is built anew without them; the panes go on showing all.
void leaveOutIgnoredColumns(Program& program, Pair& pair) {
  const auto& lookUp = program.state<IgnoredColumnsSource>().lookUp;
  if (!lookUp) return;
  for (std::size_t side = 0; side < 2; ++side) {
    tServer& server = program.main.gtypSelServ[side];
    if (pair.arrObjects[side].empty() ||
        lookUp(ignoredColsStruct, server, pair.arrDatabases[side], pair.arrObjects[side]).empty())
      continue;
    pair.arrTexts[side] = GetTableText(
        program, server, {pair.arrDatabases[side], pair.arrObjects[side], pair.arrIds[side], ignoredColsStruct});
    pair.blnColumnsIgnored = true;
  }
}

bool textsIdentical(const Program& program, const Pair& pair) {
  if (program.settings.IgnoreWhitespace) {
    return CompareProcs_IgnoreWhiteSpaces(program, pair.arrTexts[0], pair.arrTexts[1]);
  }
  return pair.arrTexts[0] == pair.arrTexts[1];
}

// The tests from the strictest to the most forgiving; the last two look at the panes as a whole.
bool passesOneTest(Program& program, const Workspace& workspace, const Pair& pair) {
  const TextPane& paneSource = workspace.txtTXProc[0];
  const TextPane& paneTarget = workspace.txtTXProc[1];
  if (textsIdentical(program, pair)) return true;
  if (program.settings.IgnoreColSeq && CompareProcs_IgnoreColumnsOrder(program, paneSource, paneTarget)) return true;
  return pair.lngType == objProcedures && CompareProcs_IgnoreOwnerInName(program, paneSource, paneTarget);
}

std::string messageOf(const Program& program, const Pair& pair) {
  std::string message = "Source: " + pair.arrFullNames[0] + "\r\n";
  message += "Target: " + pair.arrFullNames[1] + "\r\n\r\n";
  message += "The selected " + GetObjectTypeName(pair.lngType, false) + " are ";
  message += pair.blnIdentical ? "identical." : "different.";
  if (!pair.blnIdentical) return message;
  if (pair.blnColumnsIgnored) {
    message += "\r\n\r\nPlease note that some columns were ignored during comparison.";
  }
  if (program.settings.IgnoreColSeq) {
    message += "\r\n\r\nPlease note that option 'Ignore Columns Order' is set ON.";
  }
  return message;
}

void reportOrPrint(Program& program, Workspace& workspace, PairComparisonSteps& steps, Pair& pair) {
  if (steps.printRunInProgress()) {
    if (!pair.blnIdentical) {
      steps.PrintPane("Source: ", workspace.txtTXProc[0]);
      steps.PrintPane("Target: ", workspace.txtTXProc[1]);
    }
  } else if (!program.report.gstrReportText.empty()) {
    steps.ShowReport({"Comparison Report", pair.arrServers, pair.arrDatabases, pair.arrObjects, pairComparison,
                      ObjectTypeFlags(pair.lngType), pair.blnIdentical, std::move(pair.arrLines)});
  }
  program.report.gstrReportText.clear();
}

void comparePair(Program& program, Workspace& workspace, PairComparisonSteps& steps, Pair& pair) {
  readSelection(program, workspace, pair);
  if (pair.lngType == objTables) leaveOutIgnoredColumns(program, pair);
  if (pair.lngType == objViews) AdjustCreateViewStatements(program, pair.arrTexts[0], pair.arrTexts[1]);
  pair.blnIdentical = passesOneTest(program, workspace, pair);
  if (!pair.blnIdentical) {
    std::int32_t lngError = 0;  // told already; the verdict stands without marks, too
    Mark_Differences(program, workspace.txtTXProc[0], workspace.txtTXProc[1], pair.arrLines[0], pair.arrLines[1],
                     lngError, pair.lngType);
  }
  const std::string message = messageOf(program, pair);
  program.host.setPointer(Pointer::Default);
  program.report.gstrReportText = message;
  reportOrPrint(program, workspace, steps, pair);
}

constexpr const char* highlightedTitle = "Compare Highlighted Sections";

void tellHighlighted(Program& program, const std::string& strText) {
  program.host.messageBox(strText, Icon::Information, highlightedTitle);
}

// Whether both panes show a text and have some of it selected.
bool sectionsSelected(Program& program, Workspace& workspace) {
  auto& [paneSource, paneTarget] = workspace.txtTXProc;
  if (trimmedText(paneSource).empty() || trimmedText(paneTarget).empty()) {
    tellHighlighted(program, "Cannot continue - there is no structure displayed for selected object.");
    return false;
  }
  if (paneSource.selectedText().empty()) {
    tellHighlighted(program,
                    "Cannot continue - there is no highlighted section in Source object.\r\n\r\n"
                    "Please select some section in Source text first, then some section in Target, and then "
                    "(immediately after highlighting Target) right click and select 'Compare Highlighted Sections'.");
    paneSource.setFocus();
    return false;
  }
  if (paneTarget.selectedText().empty()) {
    tellHighlighted(program, "Cannot continue - there is no highlighted section in Target object.");
    paneTarget.setFocus();
    return false;
  }
  return true;
}

}  // namespace

void CompareSelProcs(Program& program, Workspace& workspace, PairComparisonSteps& steps, bool blnTextsGiven,
                     const std::string& strSourceText, const std::string& strTargetText) {
  trap(program, "frmMain", "CompareSelProcs", [&] {
    const BusyScope busy(program, workspace);
    Pair pair;
    pair.arrTexts[0] = blnTextsGiven ? strSourceText : trimmedText(workspace.txtTXProc[0]);
    pair.arrTexts[1] = blnTextsGiven ? strTargetText : trimmedText(workspace.txtTXProc[1]);
    if (pair.arrTexts[0].empty() && pair.arrTexts[1].empty()) {
      program.host.messageBox("Cannot compare - the list of objects is empty.", Icon::Information, "Cannot Compare");
      return;
    }
    comparePair(program, workspace, steps, pair);
  });
}

void CompareHighlightedSections(Program& program, Workspace& workspace, PairComparisonSteps& steps) {
  trap(program, "frmMain", "CompareHighlightedSections", [&] {
    if (!steps.CanStartComparison() || !sectionsSelected(program, workspace)) return;
    CompareSelProcs(program, workspace, steps, true, workspace.txtTXProc[0].selectedText(),
                    workspace.txtTXProc[1].selectedText());
  });
}

}  // namespace qrel
