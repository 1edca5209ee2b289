// Variables, expressions, queries and SET options of the interpreter.
#include <algorithm>

#include "embedded/catalogue/typeNames.h"
#include "embedded/change/parts.h"
#include "embedded/instance/databaseFiles.h"
#include "embedded/language/words.h"
#include "embedded/run/interpreter.h"
#include "embedded/sqlite/quoting.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// The SQLite schema under which another database of the server is open on this handle, attached when it isn't yet.
std::string attachDatabaseFile(OpenDatabase& open, const std::string& name) {
  const std::string schema = "db_" + lowerCase(name);
  {
    sqlite::Statement list(open.database, "select 1 from pragma_database_list where name = ?1");
    if (list.bind(1, schema).step()) return schema;
  }
  const std::string file =
      open.siblingFile ? open.siblingFile(name) : findDatabaseFile(open.facts.folder, name).string();
  if (file.empty()) throw DataError(errorNumber::invalidObjectName, "Invalid object name '" + name + "'.", "42S02");
  open.database.execute("attach database " + quoteText(file) + " as " + quoteName(schema));
  return schema;
}

bool sameValue(const Value& a, const Value& b) {
  if (a.null || b.null) return a.null == b.null;
  return a.type == b.type && a.integer == b.integer && a.real == b.real && a.text == b.text;
}

// Whether a query reads one of the variables that it sets, each of which it names as often as it sets them.
bool readsAssigned(const std::vector<Token>& tokens, std::size_t begin, std::size_t end,
                   const std::vector<std::string>& assigned) {
  std::size_t named = 0;
  for (std::size_t i = begin; i < end; ++i) {
    if (tokens[i].kind != TokenKind::Variable) continue;
    named += std::find(assigned.begin(), assigned.end(), lowerCase(tokens[i].raw)) != assigned.end() ? 1 : 0;
  }
  return named > assigned.size();
}

}  // namespace

TranslateContext& Interpreter::context() {
  context_.catalogue = catalogue_;
  context_.database = session_.open().facts.database;
  context_.variables = &session_.variableTypes;
  context_.readOnly = session_.rights() != Rights::Write;
  if (!context_.attach) {
    context_.attach = [this](const std::string& name) {
      if (state_.usedNames.count(lowerCase(name)) != 0) return std::string("main");
      return attachDatabaseFile(session_.open(), name);
    };
  }
  return context_;
}

Value Interpreter::evaluate(const std::string& sql) {
  sqlite::Statement query(*database_, "select " + sql);
  bind(query);
  return query.step() ? sqlite::valueOf(query, 0) : Value();
}

void Interpreter::bind(sqlite::Statement& statement) const {
  const int count = sqlite3_bind_parameter_count(statement.get());
  for (int i = 1; i <= count; ++i) {
    const char* given = sqlite3_bind_parameter_name(statement.get(), i);
    const std::string name = variableOfParameter(given ? given : "");
    if (state_.unknown.count(name) != 0)
      notUnderstood("the value of " + name + " isn't known: what sets it wasn't carried out");
    const bool alwaysThere = name == "@@rowcount" || name == "@@error" || name == "@@identity";
    if (name.starts_with("@@") && !alwaysThere && session_.variables.count(name) == 0)
      notUnderstood(name + " isn't known here");
  }
  bindVariables(statement, session_.variables);
}

void Interpreter::assign(const std::string& variable, const Value& value) {
  const std::string key = lowerCase(variable);
  const auto type = session_.variableTypes.find(key);
  if (type == session_.variableTypes.end())
    throw DataError(errorNumber::badSql, "Must declare the scalar variable \"" + variable + "\".", "42000");
  Value fresh = value.null ? Value() : convertTo(type->second, value);
  Value& kept = session_.variables[key];
  if (!sameValue(kept, fresh)) ++state_.changes;
  kept = std::move(fresh);
  state_.unknown.erase(key);
}

void Interpreter::setGlobal(const char* name, std::int64_t value) {
  Value& kept = session_.variables[name];
  if (kept.integer != value && std::string_view(name) != "@@error" && std::string_view(name) != "@@rowcount")
    ++state_.changes;
  if (!state_.unknown.empty()) state_.unknown.erase(name);
  kept.type = DataType::Integer;
  kept.null = false;
  kept.integer = value;
}

ObjectName Interpreter::localName(ObjectName name) const {
  if (!name.server.empty()) throw NotUnderstood{"another server", reader_.peek().line};
  if (!name.database.empty() && !equalNoCase(name.database, session_.open().facts.database) &&
      state_.usedNames.count(lowerCase(name.database)) == 0)
    throw NotUnderstood{"another database", reader_.peek().line};
  if (name.name.starts_with('#')) throw NotUnderstood{"temporary tables aren't kept", reader_.peek().line};
  name.database.clear();
  return name;
}

std::shared_ptr<const TableInfo> Interpreter::requireTable(const ObjectName& name) const {
  auto table = catalogue_->table(name.schema, name.name);
  if (table) return table;
  const auto object = catalogue_->find(name.schema, name.name);
  if (object && object->xtype == "V") throw NotUnderstood{"changing rows through a view", reader_.peek().line};
  const std::string shown = name.schema.empty() ? name.name : name.schema + "." + name.name;
  throw DataError(errorNumber::invalidObjectName, "Invalid object name '" + shown + "'.", "42S02");
}

void Interpreter::declareStatement() {
  reader_.next();
  if (reader_.peek().kind != TokenKind::Variable) return declareCursor();
  do {
    declareVariable();
  } while (reader_.acceptSymbol(","));
  act();
}

void Interpreter::declareVariable() {
  if (reader_.peek().kind != TokenKind::Variable) notUnderstood("a variable is expected");
  const std::string name = lowerCase(reader_.next().raw);
  reader_.acceptWord("AS");
  if (reader_.peek().is("TABLE")) notUnderstood("table variables aren't kept");
  if (reader_.peek().is("CURSOR")) notUnderstood("cursors in variables aren't kept");
  TypeRef type = readType(reader_, catalogue_);
  // In a loop it is declared once, and keeps its value.
  if (session_.variableTypes.insert_or_assign(name, std::move(type)).second) session_.variables[name] = Value();
  if (!reader_.acceptSymbol("=")) return;
  if (running()) state_.unknown.insert(name);  // until it has its value
  const std::string sql = translator().expression();
  if (running()) assign(name, evaluate(sql));
}

void Interpreter::setStatement() {
  reader_.next();
  if (reader_.peek().kind != TokenKind::Variable) return setOption();
  const std::string name(reader_.next().raw);
  std::string operation;
  const Token& sign = reader_.next();
  if (sign.kind != TokenKind::Symbol || sign.raw.back() != '=') notUnderstood("'=' is expected");
  if (reader_.peek().is("CURSOR")) notUnderstood("cursors in variables aren't kept");
  operation = sign.raw.substr(0, sign.raw.size() - 1);
  const std::size_t begin = reader_.position();
  std::string sql = translator().expression();
  if (!operation.empty()) {
    const std::string text =
        name + " " + operation + " (" + std::string(reader_.sourceBetween(begin, reader_.position())) + ")";
    const auto tokens = lex(text);
    TokenReader reader(text, tokens);
    sql = Translator(context(), reader).expression();
  }
  if (act()) assign(name, evaluate(sql));
}

void Interpreter::setOption() {
  if (reader_.acceptWord("IDENTITY_INSERT")) {
    const ObjectName name = localName(readObjectName(reader_));
    const bool on = reader_.acceptWord("ON");
    if (!on) reader_.expectWord("OFF");
    if (!act()) return;
    const auto table = requireTable(name);
    if (std::none_of(table->columns.begin(), table->columns.end(), [](const auto& each) { return each.identity; })) {
      throw DataError(errorNumber::badSql,
                      "Table '" + table->name + "' does not have the identity property. Cannot perform SET operation.",
                      "42000");
    }
    state_.identityInsert = on ? table->storage : "";
    state_.plans.clear();
    return;
  }
  withoutEffect();
  if (reader_.acceptWord("TRANSACTION")) {  // ISOLATION LEVEL READ COMMITTED and so on
    while (reader_.peek().kind == TokenKind::Word && !startsStatement(reader_.peek())) reader_.next();
    act();
    return;
  }
  reader_.acceptWord("STATISTICS");
  std::string option;
  do {
    option = upperCase(reader_.expectIdentifier());
  } while (reader_.acceptSymbol(","));
  reader_.acceptSymbol("=");
  setRunOption(option);
}

// The value of an option, with those options that change what is run or read.
void Interpreter::setRunOption(const std::string& option) {
  const bool negative = reader_.acceptSymbol("-");
  const Token& value = reader_.peek();
  if (value.kind == TokenKind::End || value.kind == TokenKind::Symbol || startsStatement(value))
    notUnderstood("the option's value is expected");
  reader_.next();
  if (!act()) return;
  const auto only = [&](std::initializer_list<std::string_view> harmless) {
    for (const std::string_view each : harmless)
      if (equalNoCase(value.name(), each)) return;
    notUnderstood("SET " + option + " " + std::string(value.raw) + " isn't carried out");
  };
  if (option == "NOEXEC" || option == "PARSEONLY" || option == "FMTONLY") state_.noExec = value.is("ON");
  if (option == "DATEFORMAT") only({"mdy"});
  if (option == "DATEFIRST") only({"7"});
  if (option == "LANGUAGE") only({"us_english", "English"});
  if (option == "IMPLICIT_TRANSACTIONS") only({"OFF"});
  if (option != "ROWCOUNT") return;
  state_.rowLimit = value.raw != "0" || negative;
  only({"0"});
}

void Interpreter::selectStatement() {
  const std::size_t begin = reader_.position();
  Translator query = translator();
  if (!query.atSelect()) notUnderstood("a query is expected");
  std::vector<std::string> assigned;
  const std::string sql = query.select(&assigned);
  if (!act()) return;
  if (!assigned.empty()) {
    if (state_.rowLimit) notUnderstood("SET ROWCOUNT is in force");
    sqlite::Statement rows(*database_, sql);
    bind(rows);
    std::vector<Value> last;
    std::int64_t count = 0;
    for (; rows.step(); ++count) {
      if (count == 1 && readsAssigned(tokens_, begin, reader_.position(), assigned))
        notUnderstood("a value gathered over several rows in a variable can't be had");
      last.clear();
      for (std::size_t i = 0; i < assigned.size(); ++i) last.push_back(sqlite::valueOf(rows, static_cast<int>(i)));
    }
    for (std::size_t i = 0; i < last.size(); ++i) assign(assigned[i], last[i]);
    setGlobal("@@rowcount", count);
  } else if (!listener_ && !result_.rows) {  // nobody reads the rows of a script's queries
    result_.rows =
        queryRows(session_.share(), sql, session_.variables, reader_.sourceBetween(begin, reader_.position()));
  }
}

// PRINT expression.
void Interpreter::expressionStatement() {
  reader_.next();
  translator().expression();
  withoutEffect();
  act();
}

// RAISERROR ('...', 16, 1) WITH NOWAIT, or the old RAISERROR 50001 'text'. From severity 11 on it is an error.
void Interpreter::raiserrorStatement() {
  reader_.next();
  std::string text, severity;
  if (reader_.acceptSymbol("(")) {
    text = translator().expression();
    reader_.expectSymbol(",");
    severity = translator().expression();
    while (reader_.acceptSymbol(",")) translator().expression();
    reader_.expectSymbol(")");
    if (reader_.acceptWord("WITH")) {
      do {
        reader_.expectIdentifier();
      } while (reader_.acceptSymbol(","));
    }
  } else {
    translator().expression();
    reader_.acceptSymbol(",");
    text = translator().expression();
  }
  withoutEffect();
  if (!act()) return;
  const Value level = severity.empty() ? Value::ofInteger(16) : evaluate(severity);
  if (!level.null && level.integer > 10) fail(Kind::Failed, "RAISERROR: " + evaluate(text).text);
}

// DBCC: what only looks or tidies up has no effect here.
void Interpreter::dbccStatement() {
  if (reader_.peek(1).is("CHECKIDENT")) {
    for (std::size_t i = reader_.position(); i < structure_.plainEnd(reader_.position(), limit_); ++i)
      if (tokens_[i].is("RESEED")) notUnderstood("DBCC CHECKIDENT with RESEED isn't carried out");
  }
  skipWithoutEffect();
}

}  // namespace qrel::tsql
