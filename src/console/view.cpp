// The records of a table.
#include <ostream>

#include "app/modStrings.h"
#include "compare/data/frmDataView.h"
#include "console/tables/exportTable.h"
#include "console/tables/oneTable.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

// A line per record below one of names, tabs between values.
void printRecords(std::ostream& out, const Grid& grid) {
  for (std::size_t row = 0; row < grid.rowCount(); ++row)
    for (std::size_t column = 0; column < grid.columnCount(); ++column)
      out << visibleText(grid.text(row, column)) << (column + 1 < grid.columnCount() ? '\t' : '\n');
}

}  // namespace

ExitCode runView(Console& console, const TableArguments& arguments) {
  const ChosenTable table = chooseTable(console, arguments);
  frmDataView window(console.program);
  // The window is stopped when the record behind the last one comes up, which it then doesn't show any more.
  const std::string behindLast = arguments.rows ? FormatThousands(std::int64_t{*arguments.rows} + 1) : "";
  TableRun run;
  run.open = [&] {
    window.ShowUp(table.extended, table.name, table.database, 0, table.id);
    return window.lngRecs();
  };
  run.act = [](Form&) {};
  run.where = [&] { return window.lblTime.text() + " record " + window.lblCurRec.text(); };
  run.look = [&](bool stopped) {
    if (stopped || (arguments.rows && window.lblCurRec.text() == behindLast)) window.cmdStop.personClicks();
  };
  run.print = [&] {
    Grid& grid = window.VSFlexGrid1;
    // Rows reserved for records that weren't read, and for those that were gone by then.
    std::size_t rows = grid.rowCount();
    while (rows > 1 && grid.text(rows - 1, 0).empty()) --rows;
    grid.setRowCount(rows);
    if (arguments.shown.path().empty()) printRecords(console.out, grid);
    const tExportSource source = window.exportSource();
    exportTable(
        arguments.shown,
        [&](auto& file, const auto& step) { return GridToHtml(source, exportFromDataView, 0, "", file, step); },
        [&](auto& file, const auto& step) { return GridToCSV(grid, csvForm(arguments.shown), file, step); });
  };
  return runTable(console, table, run);
}

}  // namespace qrel
