// Prepared queries kept for the next one that differs by its literals alone: the program sends thousands of small
// catalogue queries, and preparing one costs more than running it.
#pragma once

#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/sqlite/sqlite.h"

namespace qrel::tsql {

// A translated query with its literals lifted out.
struct LiftedQuery {
  std::string sql;              // with :q1, :q2, ... in the literals' places
  std::vector<Value> literals;  // in that order
  bool reusable = false;        // false: `sql` is the query as it came
};

// Lifts the text literals, and the whole numbers behind "=". Queries in which a literal may have to be one (grouping,
// set operators, window functions), whose columns may change (*) or that hold very many literals are left as they are.
LiftedQuery liftLiterals(std::string_view sql);

class StatementCache {
 public:
  // A statement for the query, ready to be bound; it belongs to the caller until it is given back.
  sqlite::Statement take(sqlite::Database& database, const std::string& sql);
  void giveBack(const std::string& sql, sqlite::Statement statement);

 private:
  struct Entry {
    std::string sql;
    sqlite::Statement statement;
  };
  std::list<Entry> entries_;  // the latest first
};

}  // namespace qrel::tsql
