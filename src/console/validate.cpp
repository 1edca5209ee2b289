// Whether a key tells the records of a table apart, on both sides.
#include <algorithm>
#include <ostream>

#include "compare/data/frmCompareDataOptions.h"
#include "compare/data/frmCompareDataValidation.h"
#include "console/commands.h"
#include "console/panel.h"
#include "console/tables/tableColumns.h"
#include "db/mdlObjects.h"
#include "db/readFailures.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

// Chooses the method and the columns as a person would. False: one of them can't be part of a key, which has been told.
bool chooseKey(frmCompareDataOptions& form, const std::array<std::array<std::string, 3>, 2>& keys) {
  form.optGen[compPrimaryKey].choose();
  for (const std::size_t side : {0u, 1u})
    for (std::size_t level = 0; level < 3; ++level) {
      ComboBox& list = form.cmbPK[side + 2 * level];
      const std::string wanted = keys[side][level].empty() ? noField : keys[side][level];
      for (std::size_t row = 0; row < list.count(); ++row)
        if (list.row(row) == wanted && list.text() != wanted) list.select(static_cast<int>(row));
      if (list.text() != wanted) return false;
    }
  return true;
}

// Presses the side's button: prints the verdict, and tells anything else as a message.
KeyValidationEnd validateSide(Console& console, frmCompareDataOptions& form, const tDataCompRequest& request,
                              std::size_t side) {
  std::vector<std::string> boxes;
  console.host.tellBox = [&boxes](const std::string&, const std::string& text) {
    boxes.push_back(visibleLines(replaceAll(text, "\r\n", "\n")));
    return true;
  };
  form.ValidateFieldsSelection(static_cast<long>(side));
  console.host.tellBox = nullptr;
  const KeyValidationEnd end = console.program.state<KeyValidationState>().lngEnd;
  if (end != KeyValidationEnd::NotDone && !boxes.empty()) {
    console.out << (side == 0 ? "Source Table: " : "\nTarget Table: ") << visibleText(request.arrTables[side])
                << " (Database: " << visibleText(request.arrDbs[side])
                << ", Server: " << visibleText(console.program.main.gtypSelServ[side].Name) << ")\n"
                << boxes.back() << '\n';
    boxes.pop_back();
  }
  for (const std::string& box : boxes) console.err << "qrel: " << box << '\n';
  return end;
}

// Opens the options of the two tables, does something in them and leaves them as they were.
void inOptions(Console& console, const tDataCompRequest& request,
               const std::function<void(frmCompareDataOptions& form)>& action) {
  console.host.onDoEvents = [&console] {
    if (stopRequested()) console.program.state<modCompareDataState>().gblnStopComparison = true;
  };
  console.host.windows.push_back([&action](Form& form) { action(dynamic_cast<frmCompareDataOptions&>(form)); });
  DataCompTables tables;
  for (const std::size_t side : {0u, 1u}) tables.arrServers[side] = console.program.main.gtypSelServ[side].Name;
  tables.arrDbs = request.arrDbs;
  tables.arrTables = request.arrTables;
  tables.arrObjIds = request.arrObjIds;
  tDataCompSettings settings;
  bool blnOK = false;
  frmCompareDataOptions(console.program).ShowUp(tables, settings, blnOK);
  console.host.onDoEvents = nullptr;
}

ExitCode codeOf(const std::vector<KeyValidationEnd>& ends) {
  const auto has = [&](KeyValidationEnd end) { return std::find(ends.begin(), ends.end(), end) != ends.end(); };
  if (ends.size() < 2 || has(KeyValidationEnd::NotDone)) return ExitCode::CannotRead;
  return has(KeyValidationEnd::Nulls) || has(KeyValidationEnd::Duplicates) ? ExitCode::Different : ExitCode::Identical;
}

}  // namespace

ExitCode runValidate(Console& console, const DataArguments& arguments) {
  if (arguments.tables.size() > 1) throw CommandFailure{ExitCode::Usage, "--validate goes with one --table only."};
  const Side sides[] = {console.resolveSide(arguments.source), console.resolveSide(arguments.target)};
  const ReadWatch reads(console.program);
  Workspace workspace;
  for (const int side : {0, 1}) {
    openPanel(console, workspace, sides[side], side);
    requireObjects(console, workspace, sides[side], side, objTables);
    const std::string& target = arguments.targetTable;
    selectObject(console, workspace, sides[side], side,
                 side == 0 || target.empty() ? arguments.tables.front() : target);
  }
  const tDataCompRequest request = RequestOfSelection(workspace);
  std::array<std::array<std::string, 3>, 2> keys;
  for (const std::size_t side : {0u, 1u})
    keys[side] = columnNames(console, request, side, listOfSide(arguments.keys, side));

  std::vector<KeyValidationEnd> ends;
  bool chosen = false;
  inOptions(console, request, [&](frmCompareDataOptions& form) {
    chosen = chooseKey(form, keys);
    for (std::size_t side = 0; chosen && side < 2 && !stopRequested(); ++side)
      ends.push_back(validateSide(console, form, request, side));
  });
  if (stopRequested()) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."};
  if (reads.failed()) return ExitCode::CannotRead;
  if (!chosen) return ExitCode::Usage;
  return sides[0].incomplete || sides[1].incomplete ? ExitCode::Incomplete : codeOf(ends);
}

}  // namespace qrel
