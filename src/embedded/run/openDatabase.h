// A database file with everything registered that translated SQL calls.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "embedded/catalogue/catalogue.h"
#include "embedded/functions/functions.h"
#include "embedded/sqlite/sqlite.h"
#include "embedded/sqlite/statementCache.h"

namespace qrel::tsql {

// The open file with everything registered: functions, views, catalogue. Pooled by the provider, since each query of
// the program opens a connection of its own.
class OpenDatabase {
 public:
  // With `kept` that file is read in the place of `file`, which it was once.
  OpenDatabase(const std::filesystem::path& file, const ServerFacts& facts, int serverMajor, sqlite::OpenMode mode,
               const sqlite::KeptFile* kept = nullptr);

  // The SQLite schema under which another database of the server is open on this handle, attached when it isn't yet.
  std::string attach(const std::string& name);

  ServerFacts facts;
  sqlite::Database database;
  Catalogue catalogue;
  StatementCache statements;

  // Other databases of the server, by whoever has opened this one; empty: they are looked for in the folder. The first
  // gives one opened in the same way, the second what ATTACH calls it; both nothing where there is no such database.
  std::function<std::shared_ptr<OpenDatabase>(const std::string& name)> sibling;
  std::function<std::string(const std::string& name)> siblingFile;
};

// Where a new database of the same server is to be made. Raises the DataError of a name that it can't have or that
// another database has.
std::filesystem::path fileForNewDatabase(const OpenDatabase& open, const std::string& name);

}  // namespace qrel::tsql
