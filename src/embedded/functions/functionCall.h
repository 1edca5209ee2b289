// What the server's functions inside SQLite are written with: arguments and results.
#pragma once

#include <sqlite3.h>

#include <exception>
#include <string>
#include <string_view>

#include "embedded/functions/functions.h"
#include "embedded/functions/registry.h"
#include "embedded/sqlite/sqlite.h"
#include "platform/data/value.h"

namespace qrel::tsql {

// What functions know of the server and the database they run in.
struct FunctionSurroundings {
  sqlite::Database& database;
  const Catalogue& catalogue;
  const ServerFacts& facts;
};

// One call of a function: arguments by 0-based index, and the result, Null unless set.
class FunctionCall {
 public:
  FunctionCall(sqlite3_context* context, int count, sqlite3_value** arguments)
      : context_(context), count_(count), arguments_(arguments) {}

  int count() const { return count_; }
  int type(int i) const { return sqlite3_value_type(arguments_[i]); }
  bool isNull(int i) const { return type(i) == SQLITE_NULL; }
  bool anyNull() const {
    for (int i = 0; i < count_; ++i)
      if (isNull(i)) return true;
    return false;
  }
  std::string_view text(int i) const {
    const void* data = type(i) == SQLITE_BLOB ? sqlite3_value_blob(arguments_[i]) : sqlite3_value_text(arguments_[i]);
    const auto size = static_cast<std::size_t>(sqlite3_value_bytes(arguments_[i]));
    return data ? std::string_view(static_cast<const char*>(data), size) : std::string_view();
  }
  std::int64_t integer(int i) const { return sqlite3_value_int64(arguments_[i]); }
  double real(int i) const { return sqlite3_value_double(arguments_[i]); }
  Value value(int i) const;
  sqlite3_value* raw(int i) const { return arguments_[i]; }

  void result(std::string_view text) {
    sqlite3_result_text64(context_, text.data() ? text.data() : "", text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  }
  void result(std::int64_t number) { sqlite3_result_int64(context_, number); }
  void result(double number) { sqlite3_result_double(context_, number); }
  void resultArgument(int i) { sqlite3_result_value(context_, arguments_[i]); }
  void result(const Value& value);

  FunctionSurroundings& surroundings() const {
    return *static_cast<FunctionSurroundings*>(sqlite3_user_data(context_));
  }
  sqlite3_context* context() const { return context_; }

 private:
  sqlite3_context* context_;
  int count_;
  sqlite3_value** arguments_;
};

// Ends the statement that calls a function with an error of the function's own; `words` are for SQLite alone.
inline void failCall(sqlite3_context* context, std::exception_ptr error, const char* words) {
  static_cast<FunctionSurroundings*>(sqlite3_user_data(context))->database.noteFunctionError(std::move(error));
  sqlite3_result_error(context, words, -1);
}

// Lets no exception through to SQLite: it becomes the statement's error.
template <void (*body)(FunctionCall&)>
void callFunction(sqlite3_context* context, int count, sqlite3_value** arguments) {
  try {
    FunctionCall call(context, count, arguments);
    body(call);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  } catch (const std::exception& error) {
    failCall(context, std::current_exception(), error.what());
  }
}

// SUM and AVG, which SQLite calls q_sum and q_avg; they have no row in the table, being read by a grammar of their own.
void addAggregates(FunctionSurroundings& surroundings);

}  // namespace qrel::tsql
