#include "embedded/run/openDatabase.h"

#include "embedded/instance/databaseFiles.h"
#include "embedded/language/refusal.h"

namespace qrel::tsql {

OpenDatabase::OpenDatabase(const std::filesystem::path& file, const ServerFacts& serverFacts, int serverMajor,
                           sqlite::OpenMode mode, const sqlite::KeptFile* kept)
    : facts(serverFacts), database(file, mode, kept), catalogue(database, serverMajor) {
  registerFunctions(database, catalogue, facts);
  createCatalogueViews(database, serverMajor);
  if (database.readOnly()) database.execute("pragma query_only = on");
}

std::filesystem::path fileForNewDatabase(const OpenDatabase& open, const std::string& name) {
  if (!isLegalName(name)) refuse("'" + name + "' can't be the name of a database.");
  if (!findDatabaseFile(open.facts.folder, name).empty())
    refuse("Database '" + name + "' already exists. Choose a different database name.");
  return databaseFileFor(open.facts.folder, name);
}

}  // namespace qrel::tsql
