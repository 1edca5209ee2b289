#include "embedded/statements/systemProcedures.h"

#include <algorithm>
#include <array>

#include "embedded/catalogue/typeNames.h"
#include "embedded/language/refusal.h"
#include "embedded/statements/definitions/definitionProcedures.h"
#include "embedded/statements/exec.h"
#include "platform/files.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// sp_executesql text, parameters' definitions, parameters. The server takes the first two by their place, whatever name
// they are given.
void executeSql(StatementRun& run, const std::vector<Argument>& arguments, std::size_t line) {
  if (arguments.empty())
    refuse("Procedure or function 'sp_executesql' expects parameter '@statement', which was not supplied.");
  std::map<std::string, Value> variables;
  std::map<std::string, TypeRef> types;
  std::map<std::string, std::string> outputs;
  if (arguments.size() > 1 && !arguments[1].value.null && !arguments[1].value.text.empty()) {
    const std::string& definitions = arguments[1].value.text;
    const auto tokens = lex(definitions);
    TokenReader reader(definitions, tokens);
    std::size_t position = 2;
    do {
      if (reader.peek().kind != TokenKind::Variable) throw NotUnderstood{"the parameters' definitions", 1};
      const std::string name = lowerCase(reader.next().raw);
      reader.acceptWord("AS");
      const TypeRef type = readType(reader, &run.catalogue());
      const bool output = reader.acceptWord("OUTPUT") || reader.acceptWord("OUT");
      auto given = std::find_if(arguments.begin() + 2, arguments.end(),
                                [&](const Argument& argument) { return argument.name == name; });
      if (given == arguments.end() && position < arguments.size() && arguments[position].name.empty())
        given = arguments.begin() + static_cast<std::ptrdiff_t>(position);
      ++position;
      variables[name] = given == arguments.end() || given->value.null ? Value() : convertTo(type, given->value);
      if (output && given != arguments.end() && !given->output.empty()) outputs[name] = given->output;
      types[name] = type;
    } while (reader.acceptSymbol(","));
    if (!reader.atEnd()) throw NotUnderstood{"the parameters' definitions", 1};
  }
  const std::string text = arguments[0].value.text;
  execText(run, text, line, std::move(variables), std::move(types), outputs);
}

// sp_msforeachtable 'command': the command with each table's name in place of "?".
void forEachTable(StatementRun& run, const std::vector<Argument>& arguments, std::size_t line) {
  if (arguments.size() != 1 || (!arguments[0].name.empty() && arguments[0].name != "@command1"))
    throw NotUnderstood{"sp_msforeachtable with more than a command", 1};
  std::vector<std::string> names;
  {
    sqlite::Statement tables(run.database(),
                             "select '[' || replace(s.name, ']', ']]') || '].[' || replace(o.name, ']', ']]') || ']' "
                             "from cat_objects o join cat_schemas s on s.id = o.schema_id where o.xtype = 'U' order by "
                             "o.id");
    while (tables.step()) names.emplace_back(tables.text(0));
  }
  for (const std::string& name : names)
    if (run.flow == Flow::Normal) execText(run, replaceAll(arguments[0].value.text, "?", name), line);
}

void addType(StatementRun& run, const std::vector<Argument>& arguments, std::size_t) {
  const Value name = argumentOf(arguments, 0, "@typename");
  const Value base = argumentOf(arguments, 1, "@phystype");
  const std::string nullable = upperCase(argumentOf(arguments, 2, "@nulltype").text);
  if (name.null || base.null) refuse("Procedure 'sp_addtype' expects parameters '@typename' and '@phystype'.");
  const auto tokens = lex(base.text);
  TokenReader reader(base.text, tokens);
  const TypeRef type = readType(reader, &run.catalogue());
  run.changes().createAliasType(nameFrom(name.text), type, nullable != "NOT NULL" && nullable != "NONULL");
  run.made("type");
}

// 'schema.table.column', 'new', 'COLUMN' | 'INDEX' | 'OBJECT'; without the kind an object is meant, or a column when
// there is no such object.
void renameObject(StatementRun& run, const std::vector<Argument>& arguments, std::size_t) {
  const Value old = argumentOf(arguments, 0, "@objname");
  const Value fresh = argumentOf(arguments, 1, "@newname");
  const std::string kind = upperCase(argumentOf(arguments, 2, "@objtype").text);
  if (old.null || fresh.null) refuse("Procedure 'sp_rename' expects parameters '@objname' and '@newname'.");
  if (kind == "USERDATATYPE" || kind == "DATABASE" || kind == "STATISTICS")
    throw NotUnderstood{"sp_rename of a " + lowerCase(kind), 1};
  ObjectName name = nameFrom(old.text);
  std::string part;
  const bool inside = kind == "COLUMN" || kind == "INDEX";
  if (inside || (!name.schema.empty() && !run.catalogue().find(name.schema, name.name))) {
    part = name.name;
    name = {"", name.server, name.database, name.schema};
  }
  name = run.localName(name);
  run.atomically([&] { run.changes().rename(name, part, fresh.text); });
  run.schemaChanged();
}

// sp_attach_db 'name', 'file': a database file of an embedded server is copied into this server's folder.
void attachDatabase(StatementRun& run, const std::vector<Argument>& arguments, std::size_t) {
  namespace fs = std::filesystem;
  const std::string name = argumentOf(arguments, 0, "@dbname").text;
  Value file = argumentOf(arguments, 1, "@filename1");
  if (file.null) file = argumentOf(arguments, 1, "@physname");
  const fs::path target = fileForNewDatabase(*run.open, name);
  // A copy without it would pass for whole and have half of a change.
  if (std::error_code none; fs::file_size(file.text + "-journal", none) > 0 && !none)
    refuse("Unable to open the physical file \"" + file.text +
           "\". It is being changed, or a program that changed it ended before it was done.");
  const fs::path fresh = run.open->facts.folder / ("." + name + ".attaching");
  std::error_code error;
  fs::copy_file(file.text, fresh, fs::copy_options::overwrite_existing, error);
  if (!error) {
    try {
      sqlite::Database database(fresh, sqlite::OpenMode::ReadOnly);
      Catalogue::requireWhole(database);
    } catch (const DataError&) {
      fs::remove(fresh, error);
      refuse("The header for file '" + file.text + "' is not a valid database file header.");
    }
    if (files::putInPlace(fresh, target) == 0) return;
  }
  fs::remove(fresh, error);
  refuse("Unable to open the physical file \"" + file.text + "\". The file can't be read or copied.");
}

void dropType(StatementRun& run, const std::vector<Argument>& arguments, std::size_t) {
  if (arguments.empty()) refuse("Procedure 'sp_droptype' expects parameter '@typename', which was not supplied.");
  run.changes().dropType(nameFrom(arguments[0].value.text));
}

struct Procedure {
  std::string_view name;
  void (*function)(StatementRun& run, const std::vector<Argument>& arguments, std::size_t line);
};

constexpr std::array procedures = std::to_array<Procedure>({
    {"sp_executesql", executeSql},
    {"sp_msforeachtable", forEachTable},
    {"sp_addtype", addType},
    {"sp_droptype", dropType},
    {"sp_rename", renameObject},
    {"sp_attach_db", attachDatabase},
    {"sp_attach_single_file_db", attachDatabase},
});

// Those that change nothing which is kept here.
constexpr std::array withoutEffect = std::to_array<std::string_view>({
    "sp_dboption",
    "sp_configure",
    "sp_tableoption",
    "sp_recompile",
    "sp_refreshview",
    "sp_refreshsqlmodule",
    "sp_updatestats",
    "sp_addmessage",
    "sp_dropmessage",
    "sp_addlogin",
    "sp_droplogin",
    "sp_grantlogin",
    "sp_addsrvrolemember",
    "sp_change_users_login",
    "sp_changedbowner",
    "sp_fulltext_database",
    "sp_help",
    "sp_helptext",
    "sp_dbcmptlevel",
    "sp_createstats",
    "sp_autostats",
    "sp_spaceused",
    "sp_lock",
});

}  // namespace

ObjectName nameFrom(const std::string& text) {
  const auto tokens = lex(text);
  TokenReader reader(text, tokens);
  ObjectName name = readObjectName(reader);
  if (!reader.atEnd()) throw NotUnderstood{"'" + text + "' is no name", 1};
  return name;
}

Value argumentOf(const std::vector<Argument>& arguments, std::size_t position, std::string_view name) {
  for (const Argument& argument : arguments)
    if (argument.name == name) return argument.value;
  return position < arguments.size() && arguments[position].name.empty() ? arguments[position].value : Value();
}

void runProcedure(StatementRun& run, const ObjectName& procedure, const std::vector<Argument>& arguments,
                  std::size_t line) {
  const std::string name = lowerCase(procedure.name);
  requireProcedure(run.session.rights, name, run.open->facts.database);
  const bool system =
      procedure.schema.empty() || equalNoCase(procedure.schema, "dbo") || equalNoCase(procedure.schema, "sys");
  if (!system) throw NotUnderstood{"the procedure " + procedure.schema + "." + procedure.name + " isn't run", 1};
  if (std::find(withoutEffect.begin(), withoutEffect.end(), name) != withoutEffect.end()) return run.withoutEffect();
  if (name.starts_with("sp_")) run.localName(procedure);  // another database's isn't run here
  for (const Procedure& each : procedures)
    if (name == each.name) return each.function(run, arguments, line);
  if (runDefinitionProcedure(run, name, arguments)) return;
  throw NotUnderstood{"the procedure " + procedure.name + " isn't run", 1};
}

}  // namespace qrel::tsql
