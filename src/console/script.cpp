// The script that makes an object again, and the draft of one that changes a table into another.
#include <ostream>

#include "compare/script/modSql.h"
#include "compare/script/updateScript.h"
#include "console/commands.h"
#include "console/panel.h"
#include "db/mdlObjects.h"
#include "db/readFailures.h"
#include "platform/error.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

// Byte by byte, but for eyes; with a line end behind it.
void print(Console& console, const std::string& text) {
  console.out << (console.terminal ? visibleLines(text) : text) << (text.ends_with("\n") ? "" : "\r\n");
}

ExitCode runCreateScript(Console& console, const ScriptArguments& arguments) {
  const long type = Console::objectType(arguments.type);
  if (type == objConstraints) throw CommandFailure{ExitCode::Usage, "A constraint has no CREATE statement of its own."};
  const Side side = console.resolveSide(arguments.source);
  const ReadWatch reads(console.program);  // also of the server's version, which decides what a text holds
  Workspace workspace;
  openPanel(console, workspace, side, 0);
  requireObjects(console, workspace, side, 0, type);
  selectObject(console, workspace, side, 0, arguments.second);
  // An object whose text can't be had would be dropped and not made again.
  if (!showSelected(console, workspace, side, 0)) return ExitCode::Incomplete;

  tCreateStatement what;
  what.strServerName = side.server.Name;
  what.strDatabase = side.database;
  what.strObject = Workspace::selectedText(workspace.pvlSqlObj[0]);
  what.enmObjectType = type;
  what.lngObjectId = Workspace::selectedId(workspace.pvlSqlObj[0]);
  what.strDelimiter = ",";
  const ReadingScope reading(console.program, lowerCase(GetObjectTypeName(type, true)) + " " + what.strObject);
  std::string strDropStatement;
  const std::string script =
      GetSqlCreateStatement(console.program, console.program.main.gtypSelServ[0], what, strDropStatement);
  if (script.empty() || reads.failed())
    throw CommandFailure{ExitCode::CannotRead, "Couldn't generate SQL CREATE statement."};
  print(console, script);
  return side.incomplete ? ExitCode::Incomplete : ExitCode::Identical;
}

void tellWhatIsLeftOut(Console& console, const UpdateScript& script) {
  console.err
      << "qrel: a draft, to be read before it is used: it says ALTER TABLE once, before the columns, and leaves "
         "out the order of columns, relationships, triggers and the records";
  if (script.blnIndexesUnknown) console.err << ", and the indexes of a table that is listed with its schema";
  const char* separator = ", and the indexes that are only in Source: ";
  for (const std::string& index : script.arrNewIndexes) {
    console.err << separator << visibleText(index);
    separator = ", ";
  }
  console.err << ".\n";
}

UpdateScript updateScript(Console& console, const Workspace& workspace, const Side (&sides)[2]) {
  auto& servers = console.program.main.gtypSelServ;
  const auto table = [&](std::size_t side) {
    const CheckList& list = workspace.pvlSqlObj[side];
    return tScriptTable{servers[side], sides[side].database, Workspace::selectedText(list),
                        Workspace::selectedId(list)};
  };
  try {
    return BuildUpdateScript(console.program, {table(0), table(1)});
  } catch (const RuntimeError& error) {
    if (error.number != errorNumber::subscript) throw;
    throw CommandFailure{ExitCode::Incomplete,
                         "There is no script: an index of the Target would have to be added again as the one at its "
                         "place in the Source, where there is none."};
  }
}

ExitCode runUpdateScript(Console& console, const ScriptArguments& arguments) {
  const Side sides[] = {console.resolveSide(arguments.source), console.resolveSide(arguments.second)};
  const ReadWatch reads(console.program);
  Workspace workspace;
  bool complete = true;
  for (const int side : {0, 1}) {
    openPanel(console, workspace, sides[side], side);
    requireObjects(console, workspace, sides[side], side, objTables);
    const std::string& target = arguments.targetTable;
    selectObject(console, workspace, sides[side], side, side == 0 || target.empty() ? arguments.table : target);
  }
  for (const int side : {0, 1}) complete = showSelected(console, workspace, sides[side], side) && complete;
  if (!complete) return ExitCode::Incomplete;
  const bool partly = sides[0].incomplete || sides[1].incomplete;
  if (trimBlanks(workspace.txtTXProc[0].givenText()) == trimBlanks(workspace.txtTXProc[1].givenText())) {
    console.err << "qrel: The selected tables are identical.\n";
    return partly || reads.failed() ? ExitCode::Incomplete : ExitCode::Identical;
  }
  const UpdateScript script = updateScript(console, workspace, sides);
  if (!script.blnRead || reads.failed()) throw CommandFailure{ExitCode::CannotRead, "The update script can't be made."};
  if (!script.strScript.empty()) print(console, script.strScript);
  if (script.strScript.empty() && script.arrNewIndexes.empty()) console.err << "qrel: there is nothing to script.\n";
  tellWhatIsLeftOut(console, script);
  if (partly) return ExitCode::Incomplete;
  return script.strScript.empty() && script.arrNewIndexes.empty() ? ExitCode::Identical : ExitCode::Different;
}

}  // namespace

ExitCode runScript(Console& console, const ScriptArguments& arguments) {
  return arguments.table.empty() ? runCreateScript(console, arguments) : runUpdateScript(console, arguments);
}

}  // namespace qrel
