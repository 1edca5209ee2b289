// The comparison of the records of all tables, or of many, with one report.
#include "compare/data/modCompareAllData.h"
#include "console/bulkRun.h"
#include "console/commands.h"
#include "console/panel.h"
#include "db/mdlObjects.h"
#include "platform/text.h"

namespace qrel {

namespace {

tSavedProcess processOf(const DataArguments& arguments, const ObjectSelection& selection) {
  tSavedProcess process;
  process.lngCompType = compData;
  process.lngCompSubType = arguments.all ? compDataAll : compDataSelective;
  process.arrSource = selection.arrSelectedSource;
  process.arrTarget = selection.arrSelectedTarget;
  process.lngSelCountSource = static_cast<std::int32_t>(process.arrSource.size());
  process.lngSelCountTarget = static_cast<std::int32_t>(process.arrTarget.size());
  process.strExportFilePath = absolutePath(arguments.report);
  return process;
}

}  // namespace

ExitCode runDataAll(Console& console, const DataArguments& arguments) {
  Program& program = console.program;
  checkSave(console, arguments.save, arguments.source, arguments.target);
  BulkRun run(console);
  run.forms = arguments.forms;
  const std::array<Side, 2> sides{console.resolveSide(arguments.source), console.resolveSide(arguments.target)};
  Workspace workspace;
  for (const int side : {0, 1}) openPanel(console, workspace, sides[static_cast<std::size_t>(side)], side);
  if (!arguments.all) {
    std::vector<std::string> tables = splitAt(arguments.selected, ',');
    for (std::string& table : tables) table = trimBlanks(table);
    run.select(chosenNames(console, workspace, {&sides[0], &sides[1]}, {objTables}, tables));
  }
  const ExitCode code = run.run({&sides[0], &sides[1]}, arguments.report,
                                [&program](CompareAllControls& controls, const CompareAllInput& input) {
                                  return CompareAll_Data(program, controls, input);
                                });
  if (arguments.save.given() && code != ExitCode::CannotRead)
    saveProcess(console, arguments.save, {&sides[0], &sides[1]}, processOf(arguments, run.input.selection));
  return code;
}

}  // namespace qrel
