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

}  // namespace

ExitCode runCompareAll(Console& console, const CompareArguments& arguments) {
  Program& program = console.program;
  BulkRun run(console);
  checkTypes(program, run.controls(), arguments.types);
  const Side sides[] = {console.resolveSide(arguments.source), console.resolveSide(arguments.target)};
  Workspace workspace;
  for (const int side : {0, 1}) {
    openPanel(console, workspace, sides[side], side);
    filterSchemas(console, sides[side], side, arguments.schemas[side]);
  }
  run.input.blnDetails = arguments.details;
  run.select(arguments.only, arguments.only);
  return run.run({&sides[0], &sides[1]}, arguments.report,
                 [&program](CompareAllControls& controls, const CompareAllInput& input) {
                   std::string flags;
                   return CompareAll_Structure(program, controls, flags, input);
                 });
}

}  // namespace qrel
