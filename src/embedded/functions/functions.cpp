#include "embedded/functions/functions.h"

#include <memory>

#include "embedded/functions/functionCall.h"
#include "embedded/types/collations.h"

namespace qrel::tsql {

namespace {

void nothing(sqlite3_context*, int, sqlite3_value**) {}

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
  addTextFunctions(to);
  addNumberFunctions(to);
  addDateFunctions(to);
  addCatalogueFunctions(to);
}

}  // namespace qrel::tsql
