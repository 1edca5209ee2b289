// EXEC: texts that a batch runs, and the system procedures that change the catalogue.
#include <algorithm>
#include <array>

#include "platform/data/embedded/catalogueParts.h"
#include "platform/data/embedded/interpreter.h"
#include "platform/data/embedded/translate.h"
#include "platform/data/embedded/typeNames.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr int deepestNesting = 32;

// System procedures that change nothing which is kept here.
bool isWithoutEffect(const std::string& name) {
  static constexpr std::array<std::string_view, 36> names{"sp_dboption",
                                                          "sp_configure",
                                                          "sp_tableoption",
                                                          "sp_settriggerorder",
                                                          "sp_recompile",
                                                          "sp_refreshview",
                                                          "sp_refreshsqlmodule",
                                                          "sp_updatestats",
                                                          "sp_addextendedproperty",
                                                          "sp_updateextendedproperty",
                                                          "sp_dropextendedproperty",
                                                          "sp_addmessage",
                                                          "sp_dropmessage",
                                                          "sp_adduser",
                                                          "sp_dropuser",
                                                          "sp_addlogin",
                                                          "sp_droplogin",
                                                          "sp_grantdbaccess",
                                                          "sp_revokedbaccess",
                                                          "sp_grantlogin",
                                                          "sp_addrole",
                                                          "sp_droprole",
                                                          "sp_addrolemember",
                                                          "sp_droprolemember",
                                                          "sp_addsrvrolemember",
                                                          "sp_change_users_login",
                                                          "sp_changedbowner",
                                                          "sp_fulltext_database",
                                                          "sp_help",
                                                          "sp_helptext",
                                                          "sp_msforeachtable",
                                                          "sp_dbcmptlevel",
                                                          "sp_createstats",
                                                          "sp_autostats",
                                                          "sp_spaceused",
                                                          "sp_lock"};
  return std::find(names.begin(), names.end(), name) != names.end();
}

ObjectName nameFrom(const std::string& text) {
  const auto tokens = lex(text);
  TokenReader reader(text, tokens);
  const ObjectName name = readObjectName(reader);
  if (!reader.atEnd()) throw NotUnderstood{"'" + text + "' is no name", 1};
  return name;
}

}  // namespace

void Interpreter::execStatement() {
  const std::size_t line = reader_.peek().line + lineOffset_;
  if (!reader_.acceptWord("EXEC")) reader_.acceptWord("EXECUTE");
  if (reader_.peek().isSymbol("(")) {
    reader_.next();
    const std::string sql = translator().expression();
    reader_.expectSymbol(")");
    if (reader_.peek().is("AT")) notUnderstood("another server");
    if (act()) execText(evaluate(sql).text, line);
    return;
  }
  if (reader_.peek().is("AS")) {  // EXECUTE AS USER = '...'
    skipWithoutEffect();
    return;
  }
  if (reader_.peek().kind == TokenKind::Variable) {
    if (!reader_.peek(1).isSymbol("=")) notUnderstood("a procedure whose name stands in a variable");
    reader_.next();
    reader_.next();
  }
  const ObjectName procedure = readObjectName(reader_);
  if (reader_.acceptSymbol(";")) {
    if (reader_.peek().kind == TokenKind::Number) reader_.next();
  }
  const std::vector<Argument> arguments = readArguments();
  if (act()) systemProcedure(lowerCase(procedure.name), arguments, line);
}

// "a, @b = 1, N'c' OUTPUT": bare words are texts.
std::vector<Interpreter::Argument> Interpreter::readArguments() {
  std::vector<Argument> arguments;
  const auto atArgument = [&] {
    const Token& token = reader_.peek();
    return token.kind != TokenKind::End && !token.isSymbol(";") && !startsStatement(token) &&
           (token.kind != TokenKind::Symbol || token.isSymbol("-")) && !token.is("GO") && !token.is("WITH");
  };
  if (!atArgument()) return arguments;
  do {
    Argument& argument = arguments.emplace_back();
    if (reader_.peek().kind == TokenKind::Variable && reader_.peek(1).isSymbol("=")) {
      argument.name = lowerCase(reader_.next().raw);
      reader_.next();
    }
    const Token& token = reader_.peek();
    if (token.isIdentifier() && !token.is("NULL") && !reader_.peek(1).isSymbol("(")) {
      argument.value = Value::ofText(std::string(token.name()));
      reader_.next();
    } else {
      const std::string sql = translator().expression();
      if (running()) argument.value = evaluate(sql);
    }
    if (!reader_.acceptWord("OUTPUT")) reader_.acceptWord("OUT");
  } while (reader_.acceptSymbol(","));
  return arguments;
}

void Interpreter::execText(const std::string& text, std::size_t line) {
  if (state_.nesting >= deepestNesting)
    refuse("Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).");
  silent_ = listener_ != nullptr;
  ++state_.nesting;
  const auto variables = session_.variables;
  const auto types = session_.variableTypes;
  Interpreter inner(session_, state_, listener_, result_);
  inner.fixedLine_ = fixedLine_ != 0 ? fixedLine_ : line;
  try {
    inner.run(text);
  } catch (...) {
    --state_.nesting;
    throw;
  }
  --state_.nesting;
  session_.variables = variables;
  session_.variableTypes = types;
  if (inner.flow_ == Flow::Stop) flow_ = Flow::Stop;
}

void Interpreter::systemProcedure(const std::string& name, const std::vector<Argument>& arguments, std::size_t line) {
  requireProcedure(session_.rights(), name, session_.open().facts.database);
  if (name == "sp_executesql") return executeSql(arguments, line);
  if (name == "sp_addtype") return addType(arguments);
  if (name == "sp_rename") return renameObject(arguments);
  if (name == "sp_attach_db" || name == "sp_attach_single_file_db") return attachDatabase(arguments);
  if (name == "sp_droptype") {
    if (arguments.empty()) refuse("Procedure 'sp_droptype' expects parameter '@typename', which was not supplied.");
    changes().dropType(nameFrom(arguments[0].value.text));
    return;
  }
  if (isWithoutEffect(name)) return;
  throw NotUnderstood{"the procedure " + name + " isn't run", 1};
}

namespace {

// An argument by name or position (0-based); a Null value when it is missing.
template <class Arguments>
Value argumentOf(const Arguments& arguments, std::size_t position, std::string_view name) {
  for (const auto& argument : arguments)
    if (argument.name == name) return argument.value;
  return position < arguments.size() && arguments[position].name.empty() ? arguments[position].value : Value();
}

}  // namespace

void Interpreter::executeSql(const std::vector<Argument>& arguments, std::size_t line) {
  const Value text = argumentOf(arguments, 0, "@stmt");
  const Value declarations = argumentOf(arguments, 1, "@params");
  const auto variables = session_.variables;
  const auto types = session_.variableTypes;
  if (!declarations.null) {
    const auto tokens = lex(declarations.text);
    TokenReader reader(declarations.text, tokens);
    std::map<std::string, Value> values;
    std::size_t position = 2;
    do {
      const std::string name = lowerCase(reader.next().raw);
      reader.acceptWord("AS");
      session_.variableTypes[name] = readType(reader, catalogue_);
      if (!reader.acceptWord("OUTPUT")) reader.acceptWord("OUT");
      values[name] = argumentOf(arguments, position++, name);
    } while (reader.acceptSymbol(","));
    for (const auto& [name, value] : values) assign(name, value);
  }
  execText(text.text, line);
  session_.variables = variables;
  session_.variableTypes = types;
}

void Interpreter::addType(const std::vector<Argument>& arguments) {
  const Value name = argumentOf(arguments, 0, "@typename");
  const Value base = argumentOf(arguments, 1, "@phystype");
  const std::string nullable = upperCase(argumentOf(arguments, 2, "@nulltype").text);
  if (name.null || base.null) refuse("Procedure 'sp_addtype' expects parameters '@typename' and '@phystype'.");
  const auto tokens = lex(base.text);
  TokenReader reader(base.text, tokens);
  const TypeRef type = readType(reader, catalogue_);
  changes().createAliasType(nameFrom(name.text), type, nullable != "NOT NULL" && nullable != "NONULL");
  made("type");
}

// 'schema.table.column', 'new', 'COLUMN' | 'INDEX' | 'OBJECT'; without the kind an object is meant, or a column when
// there is no such object.
void Interpreter::renameObject(const std::vector<Argument>& arguments) {
  const Value old = argumentOf(arguments, 0, "@objname");
  const Value fresh = argumentOf(arguments, 1, "@newname");
  const std::string kind = upperCase(argumentOf(arguments, 2, "@objtype").text);
  if (old.null || fresh.null) refuse("Procedure 'sp_rename' expects parameters '@objname' and '@newname'.");
  if (kind == "USERDATATYPE" || kind == "DATABASE" || kind == "STATISTICS")
    throw NotUnderstood{"sp_rename of a " + lowerCase(kind), 1};
  ObjectName name = nameFrom(old.text);
  std::string part;
  const bool inside = kind == "COLUMN" || kind == "INDEX";
  if (inside || (!name.schema.empty() && !catalogue_->find(name.schema, name.name))) {
    part = name.name;
    name = {"", name.server, name.database, name.schema};
  }
  name = localName(name);
  atomically([&] { changes().rename(name, part, fresh.text); });
  schemaChanged();
}

// sp_attach_db 'name', 'file': a database file of an embedded server is copied into this server's folder.
void Interpreter::attachDatabase(const std::vector<Argument>& arguments) {
  namespace fs = std::filesystem;
  const std::string name = argumentOf(arguments, 0, "@dbname").text;
  Value file = argumentOf(arguments, 1, "@filename1");
  if (file.null) file = argumentOf(arguments, 1, "@physname");
  if (name.empty() || name.front() == '.' || name.find_first_of("/\\:") != std::string::npos)
    refuse("'" + name + "' can't be the name of a database.");
  const fs::path target = session_.open().facts.folder / (name + ".mdf");
  if (fs::exists(target)) refuse("Database '" + name + "' already exists. Choose a different database name.");
  const fs::path fresh = session_.open().facts.folder / ("." + name + ".attaching");
  std::error_code error;
  fs::copy_file(file.text, fresh, fs::copy_options::overwrite_existing, error);
  if (!error) {
    try {
      sqlite::Database database(fresh, sqlite::OpenMode::ReadOnly);
      Catalogue::requireWhole(database);
      fs::rename(fresh, target);
      return;
    } catch (const DataError&) {
      fs::remove(fresh, error);
      refuse("The header for file '" + file.text + "' is not a valid database file header.");
    }
  }
  fs::remove(fresh, error);
  refuse("Unable to open the physical file \"" + file.text + "\". The file can't be read or copied.");
}

}  // namespace qrel::tsql
