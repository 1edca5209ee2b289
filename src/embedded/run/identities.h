// The numbers that identity columns have counted to, kept in the database, since rows may go that had them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "embedded/sqlite/sqlite.h"

namespace qrel::tsql {

// Keeps the last number of a table's identity column, or takes it away. A table that isn't there gets none.
void keepIdentity(sqlite::Database& database, std::int64_t table, std::optional<std::int64_t> last);
// By table id.
void keepIdentities(sqlite::Database& database, const std::map<std::int64_t, std::int64_t>& identities);

}  // namespace qrel::tsql
