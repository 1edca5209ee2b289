#include "embedded/run/openDatabase.h"

#include "embedded/instance/databaseFiles.h"
#include "embedded/language/refusal.h"
#include "embedded/sqlite/quoting.h"
#include "platform/text.h"

namespace qrel::tsql {

OpenDatabase::OpenDatabase(const std::filesystem::path& file, const ServerFacts& serverFacts, int serverMajor,
                           sqlite::OpenMode mode, const sqlite::KeptFile* kept)
    : facts(serverFacts), database(file, mode, kept), catalogue(database, serverMajor) {
  registerFunctions(database, catalogue, facts);
  createCatalogueViews(database, serverMajor);
  if (database.readOnly()) database.execute("pragma query_only = on");
}

std::string OpenDatabase::attach(const std::string& name) {
  std::string schema = "db_" + lowerCase(name);
  {
    sqlite::Statement list(database, "select 1 from pragma_database_list where name = ?1");
    if (list.bind(1, schema).step()) return schema;
  }
  const std::string file = siblingFile ? siblingFile(name) : findDatabaseFile(facts.folder, name).string();
  if (file.empty()) throw DataError(errorNumber::invalidObjectName, "Invalid object name '" + name + "'.", "42S02");
  database.execute("attach database " + quoteText(file) + " as " + quoteName(schema));
  return schema;
}

std::filesystem::path fileForNewDatabase(const OpenDatabase& open, const std::string& name) {
  if (!isLegalName(name)) refuse("'" + name + "' can't be the name of a database.");
  if (!findDatabaseFile(open.facts.folder, name).empty())
    refuse("Database '" + name + "' already exists. Choose a different database name.");
  return databaseFileFor(open.facts.folder, name);
}

}  // namespace qrel::tsql
