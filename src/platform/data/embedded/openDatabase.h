// A database file with everything registered that translated SQL calls.
#pragma once

#include <filesystem>

#include "platform/data/embedded/catalogue.h"
#include "platform/data/embedded/functions.h"
#include "platform/data/embedded/sqlite.h"
#include "platform/data/embedded/statementCache.h"

namespace qrel::tsql {

// The open file with everything registered: functions, views, catalogue. Pooled by the provider, since each query of
// the program opens a connection of its own.
class OpenDatabase {
 public:
  OpenDatabase(const std::filesystem::path& file, const ServerFacts& facts, int serverMajor, sqlite::OpenMode mode);

  ServerFacts facts;
  sqlite::Database database;
  Catalogue catalogue;
  StatementCache statements;
};

}  // namespace qrel::tsql
