#include <algorithm>
#include <array>
#include <iterator>
#include <ostream>

#include "compare/structure/modCompareSelected.h"
#include "compare/structure/modMarkDifferences.h"
#include "console/commands.h"
#include "console/forms/unified.h"
#include "console/panel.h"
#include "console/tables/alignedTable.h"
#include "db/mdlObjects.h"
#include "db/readFailures.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

struct Mark {
  std::int32_t value;
  char sign;
  const char* colour;  // of a terminal
};
constexpr Mark marks[] = {{markUnchanged, ' ', ""},
                          {markChanged, '~', "\033[32m"},
                          {markOnlyInTarget, '+', "\033[36m"},
                          {markOnlyInSource, '-', "\033[31m"},
                          {markNone, '?', "\033[33m"}};

// A line of text per line, with the sign of its mark before it.
void printMarkedLines(std::ostream& out, const CompLineArray& lines, bool colours) {
  for (const CompLine& line : lines) {
    const Mark& mark = *std::find_if(std::begin(marks), std::end(marks) - 1,
                                     [&](const Mark& each) { return each.value == line.lngMark; });
    std::string_view text = line.strLine;
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) text.remove_suffix(1);
    out << (colours ? mark.colour : "") << mark.sign << ' ' << visibleLines(text)
        << (colours && *mark.colour ? "\033[0m" : "") << '\n';
  }
}

// What a pair comparison asks of its surroundings, on a console: the report goes to standard output.
class ConsoleSteps : public PairComparisonSteps {
 public:
  ConsoleSteps(Console& console, const Workspace& workspace, const CompareArguments& arguments,
               std::array<std::string, 2> names)
      : console_(console), workspace_(workspace), arguments_(arguments), names_(std::move(names)) {}

  bool CanStartComparison() override { return true; }
  void ShowReport(const PairReport& report) override {
    different = !report.blnIdentical;
    if (arguments_.unified) return showUnified(report);
    console_.out << visibleLines(replaceAll(console_.program.report.gstrReportText, "\r\n", "\n")) << '\n';
    if (report.blnIdentical) return;
    const bool colours = console_.colours;
    if (arguments_.aligned) {
      const auto& panes = workspace_.txtTXProc;
      console_.out << '\n';
      return printAligned(console_.out, panes[0].text(), panes[1].text(), AlignOptionsOf(console_.program),
                          {console_.columns, colours});
    }
    for (const std::size_t side : {0U, 1U}) {
      console_.out << (side == 0 ? "\nSource:\n" : "\nTarget:\n");
      printMarkedLines(console_.out, report.arrLines[side], colours);
    }
  }
  bool printRunInProgress() override { return false; }
  void PrintPane(const std::string&, TextPane&) override {}

  bool different = false;  // what the report said

 private:
  // Nothing of a pair that is identical by what counts, so that it is a patch and nothing else.
  void showUnified(const PairReport& report) {
    if (report.blnIdentical) return;
    const auto& panes = workspace_.txtTXProc;
    const std::string patch =
        unifiedOf(names_, {panes[0].givenText(), panes[1].givenText()}, static_cast<std::size_t>(arguments_.context));
    console_.out << (console_.terminal ? visibleLines(patch) : patch);
  }

  Console& console_;
  const Workspace& workspace_;
  const CompareArguments& arguments_;
  const std::array<std::string, 2> names_;
};

}  // namespace

ExitCode runComparePair(Console& console, const CompareArguments& arguments) {
  if (arguments.type.empty()) throw CommandFailure{ExitCode::Usage, "--object needs --type."};
  const long type = Console::objectType(arguments.type);
  checkSave(console, arguments.save, arguments.source, arguments.target);
  if (arguments.save.given() &&
      (type == objConstraints || !arguments.schemas[0].empty() || !arguments.schemas[1].empty()))
    throw CommandFailure{ExitCode::Usage,
                         "The comparison can't be saved: a process keeps no schemas, and no pair of "
                         "constraints."};
  const std::string names[] = {arguments.objects.front(), arguments.objects.back()};
  const Side sides[] = {console.resolveSide(arguments.source), console.resolveSide(arguments.target)};
  const ReadWatch reads(console.program);
  Workspace workspace;
  bool complete = true;
  for (const int side : {0, 1}) {
    openPanel(console, workspace, sides[side], side);
    filterSchemas(console, sides[side], side, arguments.schemas[side]);
    requireObjects(console, workspace, sides[side], side, type);
    selectObject(console, workspace, sides[side], side, names[side]);
  }
  for (const int side : {0, 1}) complete = showSelected(console, workspace, sides[side], side) && complete;
  if (!complete) return ExitCode::Incomplete;

  std::array<std::string, 2> shown;
  for (const std::size_t side : {0U, 1U})
    shown[side] = sides[side].given + '/' + Workspace::selectedText(workspace.pvlSqlObj[side]);
  ConsoleSteps steps(console, workspace, arguments, std::move(shown));
  const std::size_t reports = console.host.errorReports();
  CompareSelProcs(console.program, workspace, steps, false, "", "");
  if (sides[0].incomplete || sides[1].incomplete || console.host.errorReports() != reports || reads.failed())
    return ExitCode::Incomplete;
  if (arguments.save.given()) {
    tSavedProcess process;
    process.lngCompType = compStructure;
    process.lngCompSubType = compIndividual;
    process.strEncObjTypes = ObjectTypeFlags(type);
    process.strTable1 = Workspace::selectedText(workspace.pvlSqlObj[0]);
    process.strTable2 = Workspace::selectedText(workspace.pvlSqlObj[1]);
    saveProcess(console, arguments.save, {&sides[0], &sides[1]}, std::move(process));
  }
  return steps.different ? ExitCode::Different : ExitCode::Identical;
}

}  // namespace qrel
