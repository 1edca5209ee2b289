// The values of a table's columns, counted.
#include <ostream>

#include "compare/data/frmDataAnalyze.h"
#include "console/tables/exportTable.h"
#include "console/tables/oneTable.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

// A block per column: its name, type and number of values, then the values with their counts.
void printReport(std::ostream& out, const ReportControl& report) {
  constexpr std::size_t columnName = 0, dataType = 1, uniqueValues = 2, firstValue = 3;
  for (std::size_t record = 1; record <= report.recordCount(); ++record) {
    out << (record > 1 ? "\n" : "") << visibleText(report.text(record, columnName)) << '\t'
        << visibleText(report.text(record, dataType)) << '\t' << report.text(record, uniqueValues)
        << (report.text(record, uniqueValues) == "1" ? " unique value\n" : " unique values\n");
    for (std::size_t value = firstValue; value + 1 < report.columnCount(); value += 2) {
      if (report.text(record, value + 1).empty()) break;
      out << "  " << report.text(record, value + 1) << '\t' << visibleText(report.text(record, value)) << '\n';
    }
  }
}

}  // namespace

ExitCode runAnalyze(Console& console, const TableArguments& arguments) {
  const ChosenTable table = chooseTable(console, arguments);
  frmDataAnalyze window(console.program);
  TableRun run;
  run.open = [&] {
    window.ShowUp(table.extended, table.name, table.database, 0, table.id);
    return window.lngRecs();
  };
  run.act = [&](Form&) {
    if (arguments.rows) window.fedRecsToAnalyze.personTypes(std::to_string(*arguments.rows));
    window.rdbFrequency[arguments.least ? 1 : 0].choose();
    window.cmdStart.personClicks();
  };
  run.where = [&] {
    return window.lblTime.text() + " " + window.lblGen0.text() + " record " + window.lblCurRec.text();
  };
  run.look = [&](bool stopped) {
    if (stopped) window.cmdStop.personClicks();
  };
  run.print = [&] {
    const tExportSource source = window.exportSource();
    printReport(console.out, window.rpcReport);
    exportTable(
        arguments.shown, [&](auto& file, const auto& step) { return RepControlToHtml(source, file, step); },
        [&](auto& file, const auto& step) {
          return RepControlToCSV(window.rpcReport, csvForm(arguments.shown), file, step);
        });
  };
  return runTable(console, table, run);
}

}  // namespace qrel
