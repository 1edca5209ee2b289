#include "platform/data/embedded/openDatabase.h"

namespace qrel::tsql {

OpenDatabase::OpenDatabase(const std::filesystem::path& file, const ServerFacts& serverFacts, int serverMajor,
                           sqlite::OpenMode mode)
    : facts(serverFacts), database(file, mode), catalogue(database, serverMajor) {
  registerFunctions(database, catalogue, facts);
  createCatalogueViews(database, serverMajor);
}

}  // namespace qrel::tsql
