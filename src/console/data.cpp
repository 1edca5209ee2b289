// The comparison of the records of tables.
#include <algorithm>
#include <ostream>

#include "app/modStrings.h"
#include "compare/data/frmCompareData.h"
#include "compare/data/frmCompareStatus.h"
#include "console/commands.h"
#include "console/panel.h"
#include "console/progressWatch.h"
#include "console/tables/differencesTable.h"
#include "console/tables/exportTable.h"
#include "console/tables/tableColumns.h"
#include "db/mdlObjects.h"
#include "db/mdlQueryCode.h"
#include "db/modSchema.h"
#include "db/readFailures.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

constexpr std::ptrdiff_t mostKeyColumns = 3;

// Keys, order and offsets from the command line, as they stand instead of the stored ones.
tDataCompSettings givenSettings(Console& console, const DataArguments& arguments, const tDataCompRequest& request) {
  tDataCompSettings settings;
  const bool byKey = !arguments.keys[0].empty() || !arguments.keys[1].empty();
  settings.lngCompMethod = byKey ? compPrimaryKey : compRecordByRecord;
  settings.blnDefaultOrder = false;
  for (const std::size_t side : {0u, 1u}) {
    const auto keys = columnNames(console, request, side, listOfSide(arguments.keys, side));
    const auto sorts = columnNames(console, request, side, listOfSide(arguments.sorts, side));
    settings.arrSides[side] = {sorts[0], sorts[1], sorts[2], arguments.offsets[side].value_or(0),
                               keys[0],  keys[1],  keys[2]};
  }
  return settings;
}

void printResult(Console& console, const DataArguments& arguments, const tDataCompRequest& request,
                 const tDataCompResult& result) {
  std::ostream& out = console.out;
  const frmCompareData* window = console.program.state<modCompareDataState>().differences.get();
  if (result.strResult.empty() && window)
    return printDifferencesWindow(out, *window, {console.colours, arguments.vertical, arguments.onlyDiffering, {}});
  for (const std::size_t side : {0u, 1u})
    out << (side == 0 ? "Source Table: " : "Target Table: ") << visibleText(request.arrTables[side])
        << " (Database: " << visibleText(request.arrDbs[side])
        << ", Server: " << visibleText(console.program.main.gtypSelServ[side].Name) << ")\n";
  out << visibleLines(replaceAll(result.strResult, "\r\n", "\n")) << '\n';
}

// A table that is compared by position though it has a primary key: perhaps nobody thought of it.
void tellPrimaryKey(Console& console, const tDataCompRequest& request) {
  if (request.lngCompMethod == compPrimaryKey) return;
  Program& program = console.program;
  const AskedScope asked(program);  // a hint that can't be had is missed by nobody
  std::string schema;
  const std::string table = GetLastWord(request.arrTables[0], schema, ".");
  std::vector<tTableColumn> arrIndexes;
  long lngCount = 0;
  GetIndexes(program, program.main.gtypSelServ[0], table, request.arrDbs[0], true, "", true, arrIndexes, lngCount);
  constexpr std::string_view opening = "PRIMARY KEY CLUSTERED ([";
  for (const tTableColumn& index : arrIndexes) {
    const std::size_t at = index.strDefinition.find(opening);
    if (at == std::string::npos) continue;
    std::string names = index.strDefinition.substr(at + opening.size());
    names = replaceAll(names.substr(0, names.rfind("])")), "], [", ",");
    if (std::count(names.begin(), names.end(), ',') >= mostKeyColumns) return;
    console.err << "qrel: " << visibleText(request.arrTables[0])
                << " was compared by position. It has a primary key: --key " << visibleText(names)
                << " compares by it.\n";
    return;
  }
}

// Writes the table of the differences where it was asked for. Identical data has none: a file of an earlier run would
// stay as it is, which is said.
void exportDifferences(Console& console, const DataArguments& arguments, bool blnIdentical) {
  const ExportArguments& given = arguments.differences;
  const frmCompareData* window = console.program.state<modCompareDataState>().differences.get();
  if (!given.path().empty() && (blnIdentical || !window))
    console.err << "qrel: " << visibleText(given.path()) << " was not written: there are no differences.\n";
  if (blnIdentical || !window) return;
  const tExportSource source = window->exportSource();
  exportTable(
      given,
      [&](auto& file, const auto& step) {
        return GridToHtml(source, exportFromCompareData, window->lngIgnored(), window->strIgnored(), file, step);
      },
      [&](auto& file, const auto& step) { return GridToCSV(*source.VSFlexGrid1, csvForm(given), file, step); });
}

// Throws CommandFailure for a table that would be read under another name than its own.
void checkNames(Console& console, const tDataCompRequest& request) {
  for (const std::size_t side : {0u, 1u})
    if (PointIsPartOfName(console.program, console.program.main.gtypSelServ[side], request.arrDbs[side], objTables,
                          request.arrTables[side], request.arrObjIds[side]))
      throw CommandFailure{ExitCode::CannotRead, "Table " + request.arrTables[side] +
                                                     " can't be compared: the point in its name can't be told from "
                                                     "the one behind a schema."};
}

// Keeps what the comparison was: the process, and keys and order where the window keeps them.
void save(Console& console, const DataArguments& arguments, const Side (&sides)[2], const tDataCompRequest& request,
          const tDataCompSettings& settings) {
  if (!arguments.save.given()) return;
  if (arguments.given() && !SaveDataCompSettings(console.program, request.arrDbs, request.arrTables, settings))
    throw CommandFailure{ExitCode::CannotRead, "Comparison process not saved."};
  tSavedProcess process;
  process.lngCompType = compData;
  process.lngCompSubType = compDataSingle;
  process.lngCompMethod = request.lngCompMethod;
  process.strTable1 = request.arrTables[0];
  process.strTable2 = request.arrTables[1];
  process.lngObjId1 = static_cast<std::int32_t>(request.arrObjIds[0]);
  process.lngObjId2 = static_cast<std::int32_t>(request.arrObjIds[1]);
  const ExportArguments& written = arguments.differences;
  process.strExportFilePath = absolutePath(written.path());
  process.lngExportType = !written.html.empty() ? exportHtml : !written.csv.empty() ? exportCsv : exportNone;
  process.blnCSVWrapInQuot = written.quote;
  saveProcess(console, arguments.save, {&sides[0], &sides[1]}, std::move(process));
}

// Compares one pair and prints what came out.
ExitCode compareTables(Console& console, const DataArguments& arguments, const Side (&sides)[2],
                       const Workspace& workspace) {
  Program& program = console.program;
  auto& state = program.state<modCompareDataState>();
  state.mainWindow = &workspace;
  tDataCompRequest request = RequestOfSelection(workspace);
  request.blnSilent = true;
  const ReadingScope reading(program, "table " + request.arrTables[0]);
  const ReadWatch reads(program);
  const std::size_t reports = console.host.errorReports();
  checkNames(console, request);
  tDataCompSettings settings;
  if (arguments.given()) {
    settings = givenSettings(console, arguments, request);
    ApplyDataCompSettings(settings, request);
  } else {
    ApplyStoredDataCompSettings(program, request);
  }
  tDataCompResult result;
  {
    const ProgressWatch watch(
        console,
        [&state](bool stopped) {
          if (stopped) state.gblnStopComparison = true;
        },
        [&console] {
          const auto* status = dynamic_cast<const frmCompareStatus*>(console.host.shown());
          return status ? whereIn(*status) : "";
        });
    RunDataComparison(program, request, result);
  }
  if (stopRequested()) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."};
  const bool complete = state.lngEnd == DataCompEnd::Done;
  if (complete || result.lngDiffs > 0) {
    printResult(console, arguments, request, result);
    exportDifferences(console, arguments, result.blnIdentical);
    if (!result.blnIdentical) tellPrimaryKey(console, request);
  } else
    console.err << "qrel: the data of " << visibleText(request.arrTables[0]) << " and "
                << visibleText(request.arrTables[1]) << " couldn't be compared.\n";
  state.differences.reset();
  state.mainWindow = nullptr;
  if (!complete) return result.lngDiffs > 0 ? ExitCode::Incomplete : ExitCode::CannotRead;
  if (reads.failed() || console.host.errorReports() != reports) return ExitCode::Incomplete;
  save(console, arguments, sides, request, settings);
  return result.blnIdentical ? ExitCode::Identical : ExitCode::Different;
}

// The code of a run over several tables: what went wrong outranks what differs.
ExitCode together(const std::vector<ExitCode>& codes) {
  const auto count = [&](ExitCode code) { return std::count(codes.begin(), codes.end(), code); };
  if (count(ExitCode::CannotRead) == static_cast<std::ptrdiff_t>(codes.size())) return ExitCode::CannotRead;
  if (count(ExitCode::CannotRead) + count(ExitCode::Incomplete) > 0) return ExitCode::Incomplete;
  return count(ExitCode::Different) > 0 ? ExitCode::Different : ExitCode::Identical;
}

}  // namespace

ExitCode runData(Console& console, const DataArguments& arguments) {
  if (!arguments.targetTable.empty() && arguments.tables.size() > 1)
    throw CommandFailure{ExitCode::Usage, "--target-table goes with one --table only."};
  if (arguments.tables.size() > 1 && (arguments.save.given() || !arguments.differences.path().empty()))
    throw CommandFailure{ExitCode::Usage, "--save, --html and --csv go with one --table only."};
  checkSave(console, arguments.save, arguments.source, arguments.target);
  const Side sides[] = {console.resolveSide(arguments.source), console.resolveSide(arguments.target)};
  Workspace workspace;
  for (const int side : {0, 1}) {
    openPanel(console, workspace, sides[side], side);
    requireObjects(console, workspace, sides[side], side, objTables);
  }
  const auto select = [&](const std::string& table) {
    selectObject(console, workspace, sides[0], 0, table);
    selectObject(console, workspace, sides[1], 1, arguments.targetTable.empty() ? table : arguments.targetTable);
  };
  // A name that isn't there is told before hours of comparing, not after them.
  for (const std::string& table : arguments.tables) select(table);

  std::vector<ExitCode> codes;
  const auto compare = [&] {
    try {
      return compareTables(console, arguments, sides, workspace);
    } catch (const CommandFailure& failure) {
      if (failure.code != ExitCode::CannotRead) throw;
      console.err << "qrel: " << visibleLines(failure.message) << '\n';
      return failure.code;
    }
  };
  for (const std::string& table : arguments.tables) {
    if (!codes.empty()) console.out << '\n';
    select(table);
    codes.push_back(compare());
  }
  const ExitCode code = together(codes);
  return sides[0].incomplete || sides[1].incomplete ? ExitCode::Incomplete : code;
}

}  // namespace qrel
