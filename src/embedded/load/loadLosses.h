// What loads have left out of a database, kept in its file: whoever compares it later is to know.
#pragma once

#include <cstdint>

#include "embedded/sqlite/sqlite.h"

namespace qrel {

// Sums over all loads since the database was made or emptied.
struct LoadLosses {
  std::int64_t skipped = 0;  // statements that weren't understood
  std::int64_t refused = 0;  // statements that were understood and refused
  std::int64_t unread = 0;   // files and folders that weren't read or not to their end

  std::int64_t statements() const { return skipped + refused; }
  bool any() const { return statements() + unread > 0; }
};

// Nothing for a database that no load has written.
LoadLosses readLoadLosses(sqlite::Database& database);
void addLoadLosses(sqlite::Database& database, const LoadLosses& losses);

}  // namespace qrel
