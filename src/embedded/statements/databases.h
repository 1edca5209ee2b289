// CREATE DATABASE, DROP DATABASE, USE. In a script they name the database that it is loaded into, whatever that is
// called.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void createDatabase(StatementRun& run);                // the reader is at DATABASE
void dropDatabases(StatementRun& run, bool ifExists);  // the reader is at the first name
void useStatement(StatementRun& run);

}  // namespace qrel::tsql
