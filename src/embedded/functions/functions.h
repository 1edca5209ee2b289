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

// Registers everything that translated SQL calls: the collations; LIKE
// with sets; OBJECTPROPERTY, INDEXPROPERTY, OBJECT_ID, OBJECT_NAME, OBJECT_SCHEMA_NAME, SCHEMA_NAME, USER_NAME,
// IDENT_SEED, IDENT_INCR, SERVERPROPERTY, DB_NAME, DB_ID, TYPE_ID, COL_LENGTH, getdate and its family, string, date and
// conversion functions (q_convert(value, type text, prec, scale, style)). `facts` and `catalogue` must outlive the
// handle.
void registerFunctions(sqlite::Database& database, const Catalogue& catalogue, const ServerFacts& facts);

}  // namespace qrel::tsql
