#include "console/bulkRun.h"

#include <ostream>
#include <utility>

#include "compare/data/modCompareData.h"
#include "console/stopWatch.h"
#include "console/verdict.h"
#include "platform/text.h"
#include "platform/visibleText.h"
#include "report/modCopyToFile.h"

namespace qrel {

void BulkRun::select(std::vector<std::string> source, std::vector<std::string> target) {
  if (source.empty() && target.empty()) return;
  ObjectSelection& selection = input.selection;
  input.blnSelective = true;
  selection.lngSelectedSource = static_cast<long>(source.size());
  selection.lngSelectedTarget = static_cast<long>(target.size());
  selection.arrSelectedSource = std::move(source);
  selection.arrSelectedTarget = std::move(target);
}

// What happens while the run yields: Ctrl+C stops it, a terminal shows where it is.
void BulkRun::watch() {
  console_.host.onDoEvents = [this] {
    if (stopRequested()) {
      console_.program.state<modCompareAllState>().gblnCancelCompare = true;
      console_.program.state<modCompareDataState>().gblnStopComparison = true;  // the table at work
    }
    if (console_.progress)
      console_.err << '\r' << controls_.lblTime.text() << ' ' << visibleText(controls_.lblCurProcName.text())
                   << "\033[K" << std::flush;
  };
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
  watch();
  const bool finished = compare(controls_, input);
  console_.host.onDoEvents = nullptr;
  console_.clearProgress();
  if (!finished) {
    if (stopRequested()) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."};
    return ExitCode::CannotRead;
  }
  program.report.gstrReportText = visibleLines(program.report.gstrReportText);
  console_.out << replaceAll(program.report.gstrReportText, "\r\n", "\n") << '\n';
  std::string path;
  if (!reportFile.empty() && !CopyToFile(program, program.report.gstrReportText, "Report", path, reportFile))
    return ExitCode::CannotRead;
  const bool complete = !sides[0]->incomplete && !sides[1]->incomplete && !reads_.failed();
  return verdict(complete && console_.host.errorReports() == reports_);
}

}  // namespace qrel
