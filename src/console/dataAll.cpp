// The comparison of the records of all tables, or of many, with one report.
#include <algorithm>

#include "compare/data/modCompareAllData.h"
#include "console/bulkRun.h"
#include "console/commands.h"
#include "console/panel.h"
#include "db/mdlObjects.h"
#include "platform/text.h"

namespace qrel {

namespace {

using Names = std::vector<std::string>;

// The listed names of the tables that are meant, of each side. Throws CommandFailure for a name that neither has.
std::array<Names, 2> chosenTables(Console& console, Workspace& workspace, const std::array<Side, 2>& sides,
                                  const std::string& tables) {
  for (const int side : {0, 1})
    requireObjects(console, workspace, sides[static_cast<std::size_t>(side)], side, objTables);
  std::array<Names, 2> chosen;
  for (const std::string& word : splitAt(tables, ',')) {
    bool found = false;
    for (const std::size_t side : {0u, 1u}) {
      const CheckList& list = workspace.pvlSqlObj[side];
      for (const std::size_t row : rowsNamed(list, std::string(trimBlanks(word)))) {
        const std::string name = list.cell(row, 0);
        if (std::find(chosen[side].begin(), chosen[side].end(), name) == chosen[side].end())
          chosen[side].push_back(name);
        found = true;
      }
    }
    if (!found)
      throw CommandFailure{ExitCode::CannotRead, "There is no table \"" + word + "\" in " + sides[0].server.Name + "/" +
                                                     sides[0].database + " or " + sides[1].server.Name + "/" +
                                                     sides[1].database + "."};
  }
  return chosen;
}

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
  const std::array<Side, 2> sides{console.resolveSide(arguments.source), console.resolveSide(arguments.target)};
  Workspace workspace;
  for (const int side : {0, 1}) openPanel(console, workspace, sides[static_cast<std::size_t>(side)], side);
  if (!arguments.all) {
    const auto [source, target] = chosenTables(console, workspace, sides, arguments.selected);
    run.select(source, target);
    // A side without any of them has nothing to add to the names, and the other's tables are missing there.
    ObjectSelection& selection = run.input.selection;
    if (source.empty()) selection.arrSelectedSource = target;
    if (target.empty()) selection.arrSelectedTarget = source;
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
