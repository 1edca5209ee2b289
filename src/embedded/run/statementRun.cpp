#include "embedded/run/statementRun.h"

#include <algorithm>
#include <utility>

#include "embedded/catalogue/temporaryTables.h"
#include "embedded/run/identities.h"
#include "embedded/types/types.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool sameValue(const Value& a, const Value& b) {
  if (a.null || b.null) return a.null == b.null;
  return a.type == b.type && a.integer == b.integer && a.real == b.real && a.text == b.text;
}

}  // namespace

StatementRun::StatementRun(SessionState& ofSession, BatchListener* toTell, CommandResult& toAnswer, TextRunner& runner)
    : session(ofSession), listener(toTell), answer(toAnswer), texts(runner), open(ofSession.open) {}

// What becomes of it
// ---------------------------------------------------------------------------------------------------

void StatementRun::made(std::string what) {
  result.kind = Kind::Made;
  result.what = std::move(what);
}

void StatementRun::notKept(const std::string& reason, std::size_t token) {
  constexpr std::size_t shownTokens = 6;
  StatementOutcome outcome;
  outcome.kind = Kind::Skipped;
  outcome.what = reason;
  outcome.line = text.lineOf(std::min(token, text.end()));
  for (std::size_t i = start; i < std::min(start + shownTokens, text.end()); ++i) {
    const Token& shown = text.tokens[i];
    const bool apart = i > start && text.tokens[i - 1].end != shown.begin;
    outcome.firstWords += (apart ? " " : "") + std::string(shown.raw.substr(0, 40));
  }
  result.inside.push_back(std::move(outcome));
}

void StatementRun::countRows(std::int64_t rows) {
  setGlobal("@@rowcount", rows);
  answer.recordsAffected = rows;
}

void StatementRun::fail(Kind kind, const std::string& reason, std::int32_t number) {
  if (!listener) throw DataError(number, reason, "42000", std::string(text.batch));
  result.kind = kind;
  result.what = reason;
  result.number = number;
}

void StatementRun::leaveRest(Kind kind, const std::string& reason) {
  fail(kind, reason);
  reader.moveTo(text.end());
  wasRead = true;
  flow = Flow::Return;
}

void StatementRun::notUnderstood(std::string reason) const {
  throw NotUnderstood{std::move(reason), reader.peek().line};
}

void StatementRun::checkStop() const {
  if (stopAsked()) throw DataError(errorNumber::cancelled, "Operation canceled.", "HY008");
}

// Changing the database
// ------------------------------------------------------------------------------------------------

void StatementRun::schemaChanged() {
  ++memory.changes;
  catalogue().forget();
  memory.plans.clear();
  keepIdentities(database(), memory.identities);
  memory.identities.clear();
  memory.versions.clear();
}

void StatementRun::useDatabase(std::shared_ptr<OpenDatabase> other) {
  session.moveTo(other);
  open = std::move(other);
}

// Expressions and variables
// --------------------------------------------------------------------------------------------

TranslateContext& StatementRun::context() {
  context_.catalogue = &open->catalogue;
  context_.database = open->facts.database;
  context_.variables = &session.variableTypes;
  context_.common = common;
  context_.readOnly = session.rights != Rights::Write;
  if (!context_.attach) {
    context_.attach = [this](const std::string& name) {
      if (memory.usedNames.count(lowerCase(name)) != 0) return std::string("main");
      return open->attach(name);
    };
  }
  return context_;
}

Value StatementRun::evaluate(const std::string& sql) const {
  sqlite::Statement query(database(), "select " + sql);
  bind(query);
  return query.step() ? sqlite::valueOf(query, 0) : Value();
}

void StatementRun::bind(sqlite::Statement& statement) const {
  const int count = sqlite3_bind_parameter_count(statement.get());
  for (int i = 1; i <= count; ++i) {
    const char* given = sqlite3_bind_parameter_name(statement.get(), i);
    const std::string name = variableOfParameter(given ? given : "");
    if (memory.unknown.count(name) != 0)
      notUnderstood("the value of " + name + " isn't known: what sets it wasn't carried out");
    const bool alwaysThere = name == "@@rowcount" || name == "@@error" || name == "@@identity";
    if (name.starts_with("@@") && !alwaysThere && session.variables.count(name) == 0)
      notUnderstood(name + " isn't known here");
  }
  bindVariables(statement, session.variables);
}

void StatementRun::assign(const std::string& variable, const Value& value) {
  const std::string key = lowerCase(variable);
  const auto type = session.variableTypes.find(key);
  if (type == session.variableTypes.end())
    throw DataError(errorNumber::badSql, "Must declare the scalar variable \"" + variable + "\".", "42000");
  Value fresh = value.null ? Value() : convertTo(type->second, value);
  Value& kept = session.variables[key];
  if (!sameValue(kept, fresh)) ++memory.changes;
  kept = std::move(fresh);
  memory.unknown.erase(key);
}

void StatementRun::setGlobal(const char* name, std::int64_t value) {
  Value& kept = session.variables[name];
  // Every statement sets these two: a loop that changes nothing else would look as if it went on.
  if (kept.integer != value && std::string_view(name) != "@@error" && std::string_view(name) != "@@rowcount")
    ++memory.changes;
  if (!memory.unknown.empty()) memory.unknown.erase(name);
  kept.type = DataType::Integer;
  kept.null = false;
  kept.integer = value;
}

// Names
// ----------------------------------------------------------------------------------------------------------------

ObjectName StatementRun::localName(ObjectName name) const {
  if (!name.server.empty()) notUnderstood("another server");
  if (isTemporaryName(name.name)) return {"", "", "", name.name};
  if (!name.database.empty() && !equalNoCase(name.database, open->facts.database) &&
      memory.usedNames.count(lowerCase(name.database)) == 0)
    notUnderstood("another database");
  name.database.clear();
  return name;
}

ObjectName StatementRun::keptName(ObjectName name) const {
  name = localName(std::move(name));
  if (isTemporaryName(name.name)) notUnderstood("of temporary objects only tables are kept");
  return name;
}

std::shared_ptr<const TableInfo> StatementRun::requireTable(const ObjectName& name) const {
  auto table = catalogue().table(name.schema, name.name);
  if (table) return table;
  const auto object = catalogue().find(name.schema, name.name);
  if (object && object->xtype == "V") notUnderstood("changing rows through a view");
  const std::string shown = name.schema.empty() ? name.name : name.schema + "." + name.name;
  throw DataError(errorNumber::invalidObjectName, "Invalid object name '" + shown + "'.", "42S02");
}

}  // namespace qrel::tsql
