// Words of objects' texts that name nothing in their database.
#include <algorithm>
#include <optional>
#include <ostream>

#include "app/trap.h"
#include "compare/script/modNonExistObjects.h"
#include "compare/script/sureReferences.h"
#include "console/commands.h"
#include "console/panel.h"
#include "db/mdlObjects.h"
#include "db/readFailures.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

constexpr const char* howSureDecides =
    "qrel: left out are columns of any table here, T-SQL's own words, functions and system objects, names that the "
    "text "
    "defines, variables, and what is in strings, in temporary tables of others or in another database.\n";

// One search: the names of the database are read once, for however many objects.
class Search {
 public:
  Search(Console& console, const Side& side, bool sure) : console_(console), side_(side), sure_(sure) {}

  // Throws CommandFailure when there is nothing to search against.
  void readNames() {
    Program& program = console_.program;
    const ReadingScope reading(program, "the list of all objects");
    const bool read =
        sure_ ? ReadKnownNames(program, program.main.gtypSelServ[0], side_.database, known_)
              : GetListOfAllObjects(program, program.main.gtypSelServ[0], side_.database, arrObjects_, lngObjects_, 0);
    if (!read) throw CommandFailure{ExitCode::CannotRead, "Couldn't retrieve list of all objects."};
    names_.emplace(arrObjects_, lngObjects_);
  }

  // The object whose text the panel shows.
  void searchText(long type, const std::string& name, const std::string& text, bool alone) {
    if (sure_) return searchSure(type, name, text, alone);
    long count = 0;
    std::vector<std::string> refs;
    auto& reports = console_.program.state<ErrorReportsState>();
    const std::size_t before = reports.lngShown;
    FindRefToNonExistentObjects(console_.program, type, text, *names_, count, refs);
    if (reports.lngShown != before) incomplete = true;
    if (refs.empty()) {
      if (alone && reports.lngShown == before)
        console_.out << heading(type, name) << " doesn't contain any references to non-existent objects.\n";
      return;
    }
    found_ = true;
    console_.out << heading(type, name) << " contains following references to non-existent objects:\n";
    for (const std::string& each : refs) console_.out << '\t' << visibleText(each) << '\n';
  }

  bool incomplete = false;
  bool found() const { return found_; }

 private:
  static std::string heading(long type, const std::string& name) {
    return GetObjectTypeName(type, true) + " '" + visibleText(name) + "'";
  }

  void searchSure(long type, const std::string& name, const std::string& text, bool alone) {
    const std::vector<SureReference> refs = FindSureReferences(text, known_);
    if (refs.empty()) {
      if (alone) console_.out << heading(type, name) << " doesn't contain any references to non-existent objects.\n";
      return;
    }
    found_ = true;
    console_.out << heading(type, name) << " contains following references to non-existent objects:\n";
    for (const SureReference& each : refs)
      console_.out << '\t' << visibleText(each.name) << "\tline " << each.line << '\n';
  }

  Console& console_;
  const Side& side_;
  bool sure_;
  bool found_ = false;
  std::vector<TwoStr> arrObjects_;
  long lngObjects_ = 0;
  std::optional<ObjectNames> names_;
  KnownNames known_;
};

void searchSelected(Console& console, Workspace& workspace, const Side& side, Search& search, bool alone) {
  if (!showSelected(console, workspace, side, 0)) {
    search.incomplete = true;
    return;
  }
  const std::string text(trimBlanks(workspace.txtTXProc[0].givenText()));
  search.searchText(workspace.objectType(), Workspace::selectedText(workspace.pvlSqlObj[0]), text, alone);
}

// An object or a list that can't be read is told and doesn't end the run.
void searchType(Console& console, Workspace& workspace, const Side& side, Search& search, long type) {
  if (!listObjects(console, workspace, side, 0, type)) search.incomplete = true;
  CheckList& list = workspace.pvlSqlObj[0];
  for (std::size_t row = 0; row < list.count() && !stopRequested(); ++row) {
    list.select(row);
    try {
      searchSelected(console, workspace, side, search, false);
    } catch (const CommandFailure& failure) {
      if (failure.code != ExitCode::CannotRead) throw;
      console.err << "qrel: " << visibleLines(failure.message) << '\n';
      search.incomplete = true;
    }
  }
}

std::vector<long> typesOf(const std::string& word) {
  std::vector<long> modules = {objProcedures, objFunctions, objViews, objTriggers};
  if (word.empty()) return modules;
  const long type = Console::objectType(word);
  if (std::find(modules.begin(), modules.end(), type) == modules.end())
    throw CommandFailure{ExitCode::Usage, "--type is procedures, functions, views or triggers here."};
  return {type};
}

}  // namespace

ExitCode runReferences(Console& console, const ReferencesArguments& arguments) {
  const std::vector<long> types = typesOf(arguments.type);
  const Side side = console.resolveSide(arguments.side);
  const ReadWatch reads(console.program);
  Workspace workspace;
  openPanel(console, workspace, side, 0);
  Search search(console, side, arguments.sure);
  search.readNames();
  if (arguments.sure) console.err << howSureDecides;
  if (arguments.all) {
    for (const long type : types) searchType(console, workspace, side, search, type);
    if (stopRequested()) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."};
  } else {
    requireObjects(console, workspace, side, 0, types.front());
    selectObject(console, workspace, side, 0, arguments.name);
    searchSelected(console, workspace, side, search, true);
  }
  if (side.incomplete || search.incomplete || reads.failed()) return ExitCode::Incomplete;
  return search.found() ? ExitCode::Different : ExitCode::Identical;
}

}  // namespace qrel
