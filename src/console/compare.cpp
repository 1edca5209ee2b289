#include <ostream>

#include "compare/structure/modCompareSelected.h"
#include "compare/structure/modDetails.h"
#include "console/commands.h"
#include "console/panel.h"
#include "db/mdlObjects.h"
#include "platform/text.h"

namespace qrel {

namespace {

// What a pair comparison asks of its surroundings, on a console: the report goes to standard output.
class ConsoleSteps : public PairComparisonSteps {
 public:
  ConsoleSteps(Console& console, bool& different) : console_(console), different_(different) {}

  bool CanStartComparison() override { return true; }
  std::vector<std::string> IgnoredColumns(const std::string&) override { return {}; }
  std::string TableTextWithout(int, const std::vector<std::string>&) override { return {}; }
  void MarkDifferences(TextPane& paneSource, TextPane& paneTarget, CompLineArray&, CompLineArray&, long) override {
    different_ = true;
    GetLineDifferences(console_.program, trimBlanks(paneSource.text()), trimBlanks(paneTarget.text()), details_);
  }
  void ShowReport(const PairReport&) override {
    console_.out << forConsole(console_.program.report.gstrReportText) << '\n';
    if (!details_.empty()) console_.out << '\n' << forConsole(details_);
  }
  bool printRunInProgress() override { return false; }
  void PrintPane(const std::string&, TextPane&) override {}

 private:
  static std::string forConsole(const std::string& text) { return replaceAll(text, "\r\n", "\n"); }

  Console& console_;
  bool& different_;
  std::string details_;
};

}  // namespace

ExitCode runCompare(Console& console, const CompareArguments& arguments) {
  const long type = Console::objectType(arguments.type);
  const std::string names[] = {arguments.objects.front(), arguments.objects.back()};
  const Side sides[] = {console.resolveSide(arguments.source), console.resolveSide(arguments.target)};
  Workspace workspace;
  bool complete = true;
  for (const int side : {0, 1}) {
    openPanel(console, workspace, sides[side], side);
    listObjects(console, workspace, sides[side], side, type);
    selectObject(console, workspace, sides[side], side, names[side]);
  }
  for (const int side : {0, 1}) complete = showSelected(console, workspace, sides[side], side) && complete;
  if (!complete) return ExitCode::Incomplete;

  bool different = false;
  ConsoleSteps steps(console, different);
  const std::size_t problems = console.host.problems();
  CompareSelProcs(console.program, workspace, steps, false, "", "");
  if (sides[0].incomplete || sides[1].incomplete || console.host.problems() != problems) return ExitCode::Incomplete;
  return different ? ExitCode::Different : ExitCode::Identical;
}

}  // namespace qrel
