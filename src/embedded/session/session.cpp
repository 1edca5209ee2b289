#include "embedded/session/session.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "embedded/catalogue/temporaryTables.h"
#include "embedded/change/changes.h"
#include "embedded/run/identities.h"
#include "embedded/session/interpreter.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Has what runs on a database end when the listener is asked to stop.
class StopScope {
 public:
  StopScope(sqlite::Database& database, BatchListener* listener) : database_(database), before_(database.stopAsked) {
    if (!listener) return;
    asked_ = [listener] { return listener->stopRequested(); };
    database_.stopAsked = &asked_;
  }
  ~StopScope() { database_.stopAsked = before_; }
  StopScope(const StopScope&) = delete;
  StopScope& operator=(const StopScope&) = delete;

 private:
  sqlite::Database& database_;
  const std::function<bool()>* before_;
  std::function<bool()> asked_;
};

// What @@ functions give before a statement has set them.
void startGlobals(std::map<std::string, Value>& variables) {
  variables.try_emplace("@@identity", Value());
  for (const char* name : {"@@error", "@@rowcount", "@@fetch_status", "@@cursor_rows"})
    variables.try_emplace(name, Value::ofInteger(0));
}

}  // namespace

CommandResult Session::run(std::string_view batch, BatchListener* listener, const std::vector<Value>* parameters) {
  beginBatch();
  if (parameters) {
    for (std::size_t i = 0; i < parameters->size(); ++i)
      state_.variables["@p" + std::to_string(i + 1)] = (*parameters)[i];
  }
  return runWith(batch, listener);
}

// The variables of the batch before are gone.
void Session::beginBatch() {
  auto& variables = state_.variables;
  std::erase_if(variables, [](const auto& each) { return !each.first.starts_with("@@"); });
  state_.variableTypes.clear();
  std::erase_if(state_.memory.unknown, [](const std::string& name) { return !name.starts_with("@@"); });
  std::erase_if(state_.memory.cursors, [](const auto& each) { return each.second.local; });
  state_.open->catalogue.temporary().endBatch(state_.open->database);
  startGlobals(variables);
  variables["@@trancount"] = Value::ofInteger(state_.memory.transactions);
}

CommandResult Session::runWith(std::string_view batch, BatchListener* listener) {
  CommandResult result;
  const std::shared_ptr<OpenDatabase> open = state_.open;  // USE may leave it behind
  const StopScope scope(open->database, listener);
  Interpreter(state_, listener, result).run(batch);
  return result;
}

void Session::runAgain(std::string_view statement, const std::vector<StatementVariable>& variables,
                       const SessionSettings& settings, BatchListener* listener, std::vector<LaterKey>* later) {
  beginBatch();
  for (const StatementVariable& each : variables) {
    state_.variables[each.name] = each.value;
    state_.variableTypes[each.name] = each.type;
  }
  struct Changed {
    SessionState& state;
    SessionSettings before;
    ~Changed() {
      state.settings = before;
      state.laterKeys = nullptr;
    }
  } changed{state_, state_.settings};
  state_.settings = settings;
  state_.laterKeys = later;
  runWith(statement, listener);
}

void Session::addKeys(const std::vector<LaterKey>& keys) {
  CatalogueChanges changes(state_.open->catalogue);
  for (const LaterKey& each : keys) changes.addForeignKey(each.table, each.key);
  forgetSchema();
}

void Session::forgetSchema() {
  state_.open->catalogue.forget();
  state_.memory.plans.clear();
  keepIdentities(state_.open->database, state_.memory.identities);
  state_.memory.identities.clear();
  state_.memory.versions.clear();
}

CommandResult Session::runProcedure(std::string_view name, const std::vector<Value>& parameters) {
  const auto tokens = lex(name);
  TokenReader reader(name, tokens);
  const ObjectName procedure = readObjectName(reader);
  if (!reader.atEnd())
    throw DataError(errorNumber::badSql, "Could not find stored procedure '" + std::string(name) + "'.", "42000");
  std::string batch = "EXEC [" + replaceAll(procedure.name, "]", "]]") + "]";
  for (std::size_t i = 1; i <= parameters.size(); ++i) batch += (i == 1 ? " @p" : ", @p") + std::to_string(i);
  struct Granted {
    Rights& rights;
    Rights before;
    ~Granted() { rights = before; }
  } granted{state_.rights, state_.rights};
  if (state_.rights == Rights::Read && isAttachingProcedure(lowerCase(procedure.name))) state_.rights = Rights::Attach;
  return run(batch, nullptr, &parameters);
}

}  // namespace qrel::tsql
