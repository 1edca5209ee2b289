#include "embedded/run/openDatabase.h"

namespace qrel::tsql {

OpenDatabase::OpenDatabase(const std::filesystem::path& file, const ServerFacts& serverFacts, int serverMajor,
                           sqlite::OpenMode mode, const sqlite::KeptFile* kept)
    : facts(serverFacts), database(file, mode, kept), catalogue(database, serverMajor) {
  registerFunctions(database, catalogue, facts);
  createCatalogueViews(database, serverMajor);
  if (database.readOnly()) database.execute("pragma query_only = on");
}

}  // namespace qrel::tsql
