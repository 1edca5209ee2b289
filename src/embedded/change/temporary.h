// Making and changing temporary tables and table variables.
#pragma once

#include "embedded/catalogue/temporaryTables.h"

namespace qrel::tsql {

// Errors are DataErrors in the server's words. Foreign keys aren't kept, as on a server.
void createTemporary(Catalogue& catalogue, TableDef def);
// Gives a table that is there other columns, keys or indexes; columns of the same name keep their values.
void replaceTemporary(Catalogue& catalogue, TableDef def);
void dropTemporary(Catalogue& catalogue, std::string_view name);
// Its definition, to be changed and handed to replaceTemporary; refuses a name that isn't there.
TableDef temporaryDefinition(Catalogue& catalogue, std::string_view name);

}  // namespace qrel::tsql
