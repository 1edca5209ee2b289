#include "embedded/functions/functions.h"

#include <memory>

#include "embedded/functions/functionCall.h"
#include "embedded/functions/registry.h"
#include "embedded/types/collations.h"

namespace qrel::tsql {

namespace {

void nothing(sqlite3_context*, int, sqlite3_value**) {}

// -1: any number.
int argumentsInside(const Function& function) {
  if (function.least != function.most) return -1;
  return function.least + (function.is(Function::Limited) ? 1 : 0);
}

void add(FunctionSurroundings& to, const Function& function) {
  const int flags = SQLITE_UTF8 | (function.is(Function::Pure) ? SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS : 0);
  const std::string name = "q_" + std::string(function.name);
  const int code = sqlite3_create_function_v2(to.database.get(), name.c_str(), argumentsInside(function), flags, &to,
                                              function.body, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) to.database.fail(code, name);
}

}  // namespace

void registerFunctions(sqlite::Database& database, const Catalogue& catalogue, const ServerFacts& facts) {
  registerCollations(database);
  auto surroundings = std::make_unique<FunctionSurroundings>(FunctionSurroundings{database, catalogue, facts});
  FunctionSurroundings& to = *surroundings;
  // A function that nobody calls owns what the others know: SQLite frees it when the handle closes.
  const int code = sqlite3_create_function_v2(
      database.get(), "q_surroundings", 0, SQLITE_UTF8, surroundings.release(), nothing, nullptr, nullptr,
      [](void* owned) { std::unique_ptr<FunctionSurroundings>(static_cast<FunctionSurroundings*>(owned)); });
  if (code != SQLITE_OK) database.fail(code, "q_surroundings");
  for (const auto& table : allFunctions())
    for (const Function& each : table) add(to, each);
  addAggregates(to);
}

}  // namespace qrel::tsql
