#include "console/bulkRun.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "compare/data/modCompareData.h"
#include "console/progressWatch.h"
#include "console/stopWatch.h"
#include "console/verdict.h"
#include "platform/files.h"
#include "platform/text.h"
#include "platform/visibleText.h"
#include "report/modCopyToFile.h"

namespace qrel {

void BulkRun::select(std::array<std::vector<std::string>, 2> names) {
  // A side without any of them has nothing to add to the names, and the other's objects are missing there.
  for (const std::size_t side : {0U, 1U})
    if (names[side].empty()) names[side] = names[1 - side];
  ObjectSelection& selection = input.selection;
  input.blnSelective = true;
  selection.lngSelectedSource = static_cast<long>(names[0].size());
  selection.lngSelectedTarget = static_cast<long>(names[1].size());
  selection.arrSelectedSource = std::move(names[0]);
  selection.arrSelectedTarget = std::move(names[1]);
}

ExitCode BulkRun::verdict(bool complete) const {
  const modCompareAllState& state = console_.program.state<modCompareAllState>();
  if (!tellIncomplete(console_) || !complete)
    return state.lngTypesRead > 0 ? ExitCode::Incomplete : ExitCode::CannotRead;
  return state.lngDifferent + state.lngSourceOnly + state.lngTargetOnly > 0 ? ExitCode::Different : ExitCode::Identical;
}

ExitCode BulkRun::run(const std::array<const Side*, 2>& sides, const std::string& reportFile,
                      const std::function<bool(CompareAllControls&, const CompareAllInput&)>& compare) {
  Program& program = console_.program;
  input.arrDatabases = {sides[0]->database, sides[1]->database};
  input.shownName = visibleText;
  bool finished = false;
  {
    const ProgressWatch watch(
        console_,
        [&program](bool stopped) {
          if (!stopped) return;
          program.state<modCompareAllState>().gblnCancelCompare = true;
          program.state<modCompareDataState>().gblnStopComparison = true;  // the table at work
        },
        [this] { return controls_.lblTime.text() + ' ' + controls_.lblCurProcName.text(); });
    finished = compare(controls_, input);
  }
  if (!finished) {
    if (stopRequested()) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."};
    return ExitCode::CannotRead;
  }
  std::string& report = program.report.gstrReportText;
  report = visibleLines(report);
  if (forms.noTime) report.erase(std::min(report.rfind("\r\n\r\nTime Elapsed: "), report.size()));
  const modCompareAllState& state = program.state<modCompareAllState>();
  if (forms.brief)
    printBrief(console_.out, state);
  else
    console_.out << replaceAll(report, "\r\n", "\n") << '\n';
  std::string path;
  if (!reportFile.empty() && !CopyToFile(program, program.report.gstrReportText, "Report", path, reportFile))
    return ExitCode::CannotRead;
  const bool complete =
      !sides[0]->incomplete && !sides[1]->incomplete && !reads_.failed() && console_.host.errorReports() == reports_;
  if (!forms.junit.empty())
    files::writeAtomically(forms.junit, junitOf(state, {sides[0]->given, sides[1]->given}, complete));
  return verdict(complete);
}

}  // namespace qrel
