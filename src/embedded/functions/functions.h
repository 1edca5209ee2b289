// The server's functions and collations inside SQLite.
#pragma once

#include <string>

#include "embedded/sqlite/sqlite.h"

namespace qrel::tsql {

class Catalogue;

// Facts that functions answer about the server: SERVERPROPERTY, @@VERSION, DB_NAME, DB_ID.
struct ServerFacts {
  std::string server;
  std::string database;
  std::string productVersion;    // "11.0.2100.60"
  std::filesystem::path folder;  // the instance's folder, for the list of databases
};

// Registers everything that translated SQL calls: the collations, the functions of the registry, SUM and AVG. `facts`
// and `catalogue` must outlive the handle.
void registerFunctions(sqlite::Database& database, const Catalogue& catalogue, const ServerFacts& facts);

}  // namespace qrel::tsql
