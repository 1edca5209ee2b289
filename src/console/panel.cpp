#include "console/panel.h"

#include <algorithm>
#include <ostream>
#include <vector>

#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "db/modPanels.h"
#include "db/modSchema.h"
#include "db/readFailures.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {
std::size_t at(int index) { return static_cast<std::size_t>(index); }
}  // namespace

void openPanel(Console& console, Workspace& workspace, const Side& side, int index) {
  Program& program = console.program;
  tServer& server = program.main.gtypSelServ[at(index)];
  server = side.server;
  CheckSQLServerVersion(program, server);
  server.VersionNum = GetVersionNumber(server.Version);
  // A query that says nothing but whether the database can be opened.
  RecordsetPtr rs;
  if (GetAdoRS(program, server, adCmdText, "SELECT TOP 1 name FROM sysobjects", rs, side.database) == -1)
    throw CommandFailure{ExitCode::CannotRead, server.Name + "/" + side.database + " can't be read."};
  workspace.pvlDb[at(index)].clear();
  workspace.pvlDb[at(index)].add(side.database);
  workspace.pvlDb[at(index)].select(0);
}

void filterSchemas(Console& console, const Side& side, int index, const std::string& schemas) {
  if (schemas.empty()) return;
  Program& program = console.program;
  const tServer& server = program.main.gtypSelServ[at(index)];
  if (server.VersionNum < 9)
    throw CommandFailure{ExitCode::Usage,
                         server.Name + ": cannot filter by schema - schemas were introduced in SQL Server 2005."};
  std::vector<std::string> known, chosen;
  if (GetAllSchemas(program, server, side.database, known) == -1)
    throw CommandFailure{ExitCode::CannotRead,
                         "The schemas of " + server.Name + "/" + side.database + " can't be read."};
  for (const std::string& name : splitAt(schemas, ',')) {
    const auto match =
        std::find_if(known.begin(), known.end(), [&](const auto& each) { return equalNoCase(each, name); });
    if (match == known.end())
      throw CommandFailure{ExitCode::CannotRead,
                           "There is no schema \"" + name + "\" in " + server.Name + "/" + side.database + "."};
    chosen.push_back(*match);
  }
  auto& state = program.state<modSchemaState>();
  state.gblnSchemaFilter[at(index)] = true;
  for (const std::string& name : chosen)
    state.gstrSchemaFilter[at(index)] += (state.gstrSchemaFilter[at(index)].empty() ? "" : ",") + name;
}

bool listObjects(Console& console, Workspace& workspace, const Side& side, int index, long type) {
  Program& program = console.program;
  if (workspace.objectType() != type) {
    workspace.cmbType.clear();
    workspace.cmbType.add(GetObjectTypeName(type, false), type);
    workspace.cmbType.select(0);
  }
  const ReadingScope reading(program, "the list of " + GetObjectTypeName(type, false));
  return LoadObjects(program, program.main.gtypSelServ[at(index)], workspace.pvlSqlObj[at(index)],
                     workspace.txtTXProc[at(index)], type, side.database, false, "", index, false);
}

void requireObjects(Console& console, Workspace& workspace, const Side& side, int index, long type) {
  if (!listObjects(console, workspace, side, index, type))
    throw CommandFailure{ExitCode::CannotRead, "The list of " + GetObjectTypeName(type, false) + " of " +
                                                   side.server.Name + "/" + side.database + " can't be read."};
}

namespace {

// "[dbo].[Order Lines]" as its parts, the outer one first; empty when the brackets don't close.
std::vector<std::string> nameParts(const std::string& name) {
  std::vector<std::string> parts(1);
  for (std::size_t at = 0; at < name.size(); ++at) {
    if (name[at] == '.') {
      parts.emplace_back();
    } else if (name[at] == '[' && parts.back().empty()) {
      for (++at; at < name.size() && (name[at] != ']' || name.compare(at, 2, "]]") == 0); ++at) {
        parts.back() += name[at];
        if (name[at] == ']') ++at;
      }
      if (at == name.size()) return {};
    } else {
      parts.back() += name[at];
    }
  }
  return parts;
}

// The rows of that name as listed; failing that of one without regard to case, failing that without its schema.
std::vector<std::size_t> rowsListed(const CheckList& list, const std::string& name) {
  std::vector<std::size_t> exact, noCase, bare;
  for (std::size_t row = 0; row < list.count(); ++row) {
    const std::string each = list.cell(row, 0);
    if (each == name) exact.push_back(row);
    if (equalNoCase(each, name)) noCase.push_back(row);
    const std::size_t point = each.find('.');
    if (point != std::string::npos && equalNoCase(each.substr(point + 1), name)) bare.push_back(row);
  }
  return !exact.empty() ? exact : !noCase.empty() ? noCase : bare;
}

}  // namespace

std::vector<std::size_t> rowsNamed(Console& console, const Side& side, int index, const CheckList& list, long type,
                                   const std::string& name) {
  std::vector<std::size_t> rows = rowsListed(list, name);
  const std::vector<std::string> parts = nameParts(name);
  if (!rows.empty() || parts.empty() || parts.size() > 2) return rows;
  rows = rowsListed(list, parts.size() == 1 ? parts[0] : parts[0] + "." + parts[1]);
  if (!rows.empty() || parts.size() == 1) return rows;
  // Only names that several schemas have are listed with theirs.
  tServer server = console.program.main.gtypSelServ[at(index)];
  for (const std::size_t row : rowsListed(list, parts[1])) {
    std::string schema;
    if (Db_GetObjSchemaById(console.program, server, type, side.database, list.id(row), schema) &&
        equalNoCase(schema, parts[0]))
      rows.push_back(row);
  }
  return rows;
}

std::array<std::vector<std::string>, 2> chosenNames(Console& console, Workspace& workspace,
                                                    const std::array<const Side*, 2>& sides,
                                                    const std::vector<long>& types,
                                                    const std::vector<std::string>& names) {
  std::array<std::vector<std::string>, 2> chosen;
  std::vector<bool> found(names.size());
  for (const long type : types) {
    for (const int side : {0, 1}) {
      const Side& of = *sides[at(side)];
      requireObjects(console, workspace, of, side, type);
      const CheckList& list = workspace.pvlSqlObj[at(side)];
      for (std::size_t number = 0; number < names.size(); ++number) {
        for (const std::size_t row : rowsNamed(console, of, side, list, type, names[number])) {
          std::vector<std::string>& listed = chosen[at(side)];
          found[number] = true;
          if (std::find(listed.begin(), listed.end(), list.cell(row, 0)) == listed.end())
            listed.push_back(list.cell(row, 0));
        }
      }
    }
  }
  for (std::size_t number = 0; number < names.size(); ++number)
    if (!found[number])
      throw CommandFailure{ExitCode::CannotRead,
                           "There is no " + lowerCase(GetObjectTypeName(types.size() == 1 ? types[0] : 0, true)) +
                               " \"" + names[number] + "\" in " + sides[0]->server.Name + "/" + sides[0]->database +
                               " or " + sides[1]->server.Name + "/" + sides[1]->database + "."};
  return chosen;
}

void selectObject(Console& console, Workspace& workspace, const Side& side, int index, const std::string& name) {
  CheckList& list = workspace.pvlSqlObj[at(index)];
  const std::vector<std::size_t> rows = rowsNamed(console, side, index, list, workspace.objectType(), name);
  const std::string where = side.server.Name + "/" + side.database;
  if (rows.empty())
    throw CommandFailure{ExitCode::CannotRead, "There is no " +
                                                   lowerCase(GetObjectTypeName(workspace.objectType(), true)) + " \"" +
                                                   name + "\" in " + where + "."};
  if (rows.size() > 1) {
    for (const std::size_t row : rows) console.err << "  " << visibleText(list.cell(row, 0)) << '\n';
    throw CommandFailure{ExitCode::CannotRead, "\"" + name + "\" is the name of several objects in " + where +
                                                   ": give one of the names above."};
  }
  list.select(rows.front());
}

bool showSelected(Console& console, Workspace& workspace, const Side& side, int index) {
  Program& program = console.program;
  TextPane& pane = workspace.txtTXProc[at(index)];
  pane.setText("");
  CheckList& list = workspace.pvlSqlObj[at(index)];
  const std::string words =
      lowerCase(GetObjectTypeName(workspace.objectType(), true)) + " " + Workspace::selectedText(list);
  const std::string where = side.server.Name + "/" + side.database;
  const ReadingScope reading(program, words);
  const ReadWatch reads(program);
  UpdateProcedureTextBox(program, program.main.gtypSelServ[at(index)], pane, list, workspace.objectType(),
                         side.database, "", 0, index, true);
  if (reads.failed())
    throw CommandFailure{ExitCode::CannotRead, "The text of " + words + " in " + where + " can't be read."};
  if (!pane.text().empty()) return true;
  console.err << "qrel: the text of " << visibleText(words) << " in " << visibleText(where)
              << " can't be had: it is encrypted or unreadable.\n";
  return false;
}

}  // namespace qrel
