// The comparison of whole databases.
#include <algorithm>
#include <ostream>

#include "compare/structure/modCompareAll.h"
#include "console/commands.h"
#include "console/panel.h"
#include "console/verdict.h"
#include "platform/error.h"
#include "platform/text.h"
#include "platform/visibleText.h"
#include "report/modCopyToFile.h"

namespace qrel {

namespace {

// The window of a run without a person: it has the controls and nothing to show them.
class RunWindow : public Form {
 public:
  RunWindow() : Form("frmCompareAll") {}
};

// Checks the boxes of "tables,views" or "all".
void checkTypes(Program& program, CompareAllControls& controls, const std::string& types) {
  if (equalNoCase(types, "all")) {
    program.settings.AnalyzeConstraints = true;
    for (std::size_t index = 0; index < 7; ++index) controls.chkObjType[index].setChecked(true);
    return;
  }
  for (const std::string& word : splitAt(types, ',')) {
    const long type = Console::objectType(word);
    if (type == objConstraints) program.settings.AnalyzeConstraints = true;
    controls.chkObjType[static_cast<std::size_t>(CompareAllIndex(type))].setChecked(true);
  }
}

// What happens while the run yields: Ctrl+C stops it, a terminal shows where it is.
void watchRun(Console& console, CompareAllControls& controls) {
  console.host.onDoEvents = [&console, &controls] {
    if (stopRequested()) console.program.state<modCompareAllState>().gblnCancelCompare = true;
    if (console.progress)
      console.err << '\r' << controls.lblTime.text() << ' ' << visibleText(controls.lblCurProcName.text()) << "\033[K"
                  << std::flush;
  };
}

ExitCode verdict(Console& console, bool complete) {
  const modCompareAllState& state = console.program.state<modCompareAllState>();
  if (!tellIncomplete(console) || !complete)
    return state.lngTypesRead > 0 ? ExitCode::Incomplete : ExitCode::CannotRead;
  return state.lngDifferent + state.lngSourceOnly + state.lngTargetOnly > 0 ? ExitCode::Different : ExitCode::Identical;
}

// The process that this run is. Throws CommandFailure for one that no kind of process stands for.
tSavedProcess processOf(const CompareArguments& arguments) {
  const auto refuse = [](const std::string& why) -> void {
    throw CommandFailure{ExitCode::Usage, "The comparison can't be saved: " + why};
  };
  tSavedProcess process;
  process.lngCompType = compStructure;
  const std::vector<std::string> types = splitAt(arguments.types, ',');
  const bool oneType = types.size() == 1 && !equalNoCase(arguments.types, "all");
  if (!arguments.schemas[0].empty() || !arguments.schemas[1].empty()) refuse("a process keeps no schemas.");
  if (!oneType && arguments.details) refuse("details are kept for one type only; give --types with one.");
  if (!oneType && !arguments.only.empty()) refuse("--only is kept for one type only; give --types with one.");
  process.lngCompSubType = !oneType ? compAllObjects : arguments.only.empty() ? compBulk : compSelective;
  if (oneType) {
    process.strEncObjTypes = ObjectTypeFlags(Console::objectType(types[0]));
    process.lngCompSubSubType = (arguments.only.empty() ? 10 : 30) + (arguments.details ? 10 : 0);
  }
  process.arrSource = process.arrTarget = arguments.only;
  process.lngSelCountSource = process.lngSelCountTarget = static_cast<std::int32_t>(arguments.only.size());
  process.strExportFilePath = absolutePath(arguments.report);
  return process;
}

}  // namespace

ExitCode runCompareAll(Console& console, const CompareArguments& arguments) {
  Program& program = console.program;
  RunWindow window;
  CompareAllControls controls(window);
  checkTypes(program, controls, arguments.types);
  checkSave(console, arguments.save, arguments.source, arguments.target);
  tSavedProcess process = arguments.save.given() ? processOf(arguments) : tSavedProcess();
  const Side sides[] = {console.resolveSide(arguments.source), console.resolveSide(arguments.target)};
  const ReadWatch reads(program);
  const std::size_t reports = console.host.errorReports();
  Workspace workspace;
  for (const int side : {0, 1}) {
    openPanel(console, workspace, sides[side], side);
    filterSchemas(console, sides[side], side, arguments.schemas[side]);
  }

  CompareAllInput input;
  input.arrDatabases = {sides[0].database, sides[1].database};
  input.blnDetails = arguments.details;
  input.shownName = visibleText;
  input.blnSelective = !arguments.only.empty();
  input.selection.arrSelectedSource = input.selection.arrSelectedTarget = arguments.only;
  input.selection.lngSelectedSource = input.selection.lngSelectedTarget = static_cast<long>(arguments.only.size());
  watchRun(console, controls);
  std::string flags;
  const bool finished = CompareAll_Structure(program, controls, flags, input);
  console.host.onDoEvents = nullptr;
  if (console.progress) console.err << "\r\033[K";
  if (!finished) {
    if (stopRequested()) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."};
    return ExitCode::CannotRead;
  }
  program.report.gstrReportText = visibleLines(program.report.gstrReportText);
  console.out << replaceAll(program.report.gstrReportText, "\r\n", "\n") << '\n';
  std::string path;
  if (!arguments.report.empty() &&
      !CopyToFile(program, program.report.gstrReportText, "Report", path, arguments.report))
    return ExitCode::CannotRead;
  if (arguments.save.given()) {
    if (process.strEncObjTypes.empty()) process.strEncObjTypes = flags;
    saveProcess(console, arguments.save, sides, std::move(process));
  }
  const bool complete = !sides[0].incomplete && !sides[1].incomplete && !reads.failed();
  return verdict(console, complete && console.host.errorReports() == reports);
}

}  // namespace qrel
