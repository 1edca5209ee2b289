// CREATE TABLE, ALTER TABLE, CREATE INDEX, TRUNCATE TABLE.
#pragma once

#include <functional>

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

// CREATE's and ALTER's reader stands behind the word TABLE, CREATE INDEX's behind CREATE.
void createTable(StatementRun& run);
// Reads what CREATE TABLE reads and gives what it does. `schema`: of a name without one.
std::function<void()> readTable(StatementRun& run, const std::string& schema);
void createIndex(StatementRun& run);
void alterTable(StatementRun& run);
void alterIndex(StatementRun& run);
// A table variable, from the word TABLE on.
void declareTable(StatementRun& run, const std::string& name);
void truncateStatement(StatementRun& run);

}  // namespace qrel::tsql
