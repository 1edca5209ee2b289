#include "console/oneTable.h"

#include <ostream>

#include "app/modStrings.h"
#include "console/panel.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "db/modSchema.h"
#include "db/readFailures.h"
#include "platform/files.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

// What happens while the run yields: a signal stops it, a terminal shows where it is.
class Watch {
 public:
  Watch(Console& console, const TableRun& run) : console_(console), run_(run) {
    console_.host.onDoEvents = [this] { look(); };
  }
  ~Watch() {
    console_.host.onDoEvents = nullptr;
    console_.clearProgress();
  }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

 private:
  void look() {
    run_.look(stopRequested());
    if (!console_.progress) return;
    constexpr std::int64_t millisecondsBetween = 100;
    const std::int64_t now = console_.host.ticks();
    if (now - told_ < millisecondsBetween) return;
    told_ = now;
    console_.err << '\r' << visibleText(run_.where()) << "\033[K" << std::flush;
  }

  Console& console_;
  const TableRun& run_;
  std::int64_t told_ = 0;
};

[[noreturn]] void stopped() { throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."}; }

}  // namespace

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
    const Watch watch(console, run);
    records = run.open();
  }
  console.host.windows.clear();  // a table without records has opened none
  if (stopRequested()) stopped();
  if (records < 0) return ExitCode::CannotRead;
  if (records > 0) run.print();
  const bool incomplete = table.incomplete || reads.failed() || console.host.errorReports() != reports;
  return incomplete ? ExitCode::Incomplete : ExitCode::Identical;
}

void exportTable(const TableArguments& arguments, const TableWriter& html, const TableWriter& csv) {
  const std::string& path = arguments.html.empty() ? arguments.csv : arguments.html;
  if (path.empty()) return;
  const auto step = [](std::int32_t) { return !stopRequested(); };
  files::AtomicFile file(path);
  if (!(arguments.html.empty() ? csv : html)(file, step)) stopped();
  file.finish();
}

}  // namespace qrel
