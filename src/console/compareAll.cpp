// The comparison of whole databases.
#include "console/bulkRun.h"
#include "console/commands.h"
#include "console/panel.h"
#include "platform/text.h"

namespace qrel {

namespace {

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

// The types whose boxes are checked.
std::vector<long> checkedTypes(const CompareAllControls& controls) {
  std::vector<long> types;
  for (std::size_t index = 0; index < controls.chkObjType.size(); ++index)
    if (controls.chkObjType[index].checked()) types.push_back(CompareAllType(static_cast<long>(index)));
  return types;
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
  process.strExportFilePath = absolutePath(arguments.report);
  return process;
}

}  // namespace

ExitCode runCompareAll(Console& console, const CompareArguments& arguments) {
  Program& program = console.program;
  BulkRun run(console);
  checkTypes(program, run.controls(), arguments.types);
  checkSave(console, arguments.save, arguments.source, arguments.target);
  tSavedProcess process = arguments.save.given() ? processOf(arguments) : tSavedProcess();
  const Side sides[] = {console.resolveSide(arguments.source), console.resolveSide(arguments.target)};
  Workspace workspace;
  for (const int side : {0, 1}) {
    openPanel(console, workspace, sides[side], side);
    filterSchemas(console, sides[side], side, arguments.schemas[side]);
  }
  run.input.blnDetails = arguments.details;
  run.forms = arguments.forms;
  if (!arguments.only.empty()) {
    run.select(chosenNames(console, workspace, {&sides[0], &sides[1]}, checkedTypes(run.controls()), arguments.only));
    process.arrSource = run.input.selection.arrSelectedSource;
    process.arrTarget = run.input.selection.arrSelectedTarget;
    process.lngSelCountSource = static_cast<std::int32_t>(process.arrSource.size());
    process.lngSelCountTarget = static_cast<std::int32_t>(process.arrTarget.size());
  }
  std::string flags;
  const ExitCode code = run.run({&sides[0], &sides[1]}, arguments.report,
                                [&](CompareAllControls& controls, const CompareAllInput& input) {
                                  return CompareAll_Structure(program, controls, flags, input);
                                });
  if (arguments.save.given() && code != ExitCode::CannotRead) {
    if (process.strEncObjTypes.empty()) process.strEncObjTypes = flags;
    saveProcess(console, arguments.save, {&sides[0], &sides[1]}, std::move(process));
  }
  return code;
}

}  // namespace qrel
