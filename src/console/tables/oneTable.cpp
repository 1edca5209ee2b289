#include "console/tables/oneTable.h"

#include "app/modStrings.h"
#include "console/panel.h"
#include "console/progressWatch.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "db/modSchema.h"
#include "db/readFailures.h"

namespace qrel {

ChosenTable chooseTable(Console& console, const TableArguments& arguments) {
  const Side side = console.resolveSide(arguments.side);
  Workspace workspace;
  openPanel(console, workspace, side, 0);
  requireObjects(console, workspace, side, 0, objTables);
  selectObject(console, workspace, side, 0, arguments.table);
  const std::string listed = Workspace::selectedText(workspace.pvlSqlObj[0]);
  Program& program = console.program;
  tServer& server = program.main.gtypSelServ[0];
  ChosenTable table;
  table.database = side.database;
  table.id = Workspace::selectedId(workspace.pvlSqlObj[0]);
  if (PointIsPartOfName(program, server, table.database, objTables, listed, table.id))
    throw CommandFailure{ExitCode::CannotRead, "Table " + listed +
                                                   " can't be read: the point in its name can't be told from the one "
                                                   "behind a schema."};
  std::string rest;
  table.name = GetLastWord(listed, rest, ".");
  table.extended = GetExtendedObjectName(program, server, table.database, table.name, objTables, table.id);
  table.incomplete = side.incomplete;
  return table;
}

ExitCode runTable(Console& console, const ChosenTable& table, const TableRun& run) {
  const ReadingScope reading(console.program, "table " + table.name);
  const ReadWatch reads(console.program);
  const std::size_t reports = console.host.errorReports();
  console.host.windows.push_back(run.act);
  std::int32_t records = 0;
  {
    const ProgressWatch watch(console, run.look, run.where);
    records = run.open();
  }
  console.host.windows.clear();  // a table without records has opened none
  if (stopRequested()) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."};
  if (records < 0) return ExitCode::CannotRead;
  if (records > 0) run.print();
  const bool incomplete = table.incomplete || reads.failed() || console.host.errorReports() != reports;
  return incomplete ? ExitCode::Incomplete : ExitCode::Identical;
}

}  // namespace qrel
