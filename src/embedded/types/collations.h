// How values of a type compare inside SQLite.
#pragma once

#include "embedded/sqlite/sqlite.h"

namespace qrel::tsql {

// q_text (no case, no trailing blanks), q_decimal, q_date (dates in any literal form by value), q_guid. The stored
// catalogue needs them, too.
void registerCollations(sqlite::Database& database);

}  // namespace qrel::tsql
