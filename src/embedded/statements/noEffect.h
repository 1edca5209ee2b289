// Statements that do nothing here, and those that are known and not carried out.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

// What a server would do isn't kept here: options, logins, backups. The reader may stand anywhere in the statement.
void skipWithoutEffect(StatementRun& run);
// ENABLE TRIGGER and DISABLE TRIGGER: these words are names otherwise.
void switchTrigger(StatementRun& run);
void dbccStatement(StatementRun& run);
// END without its beginning.
void strayEnd(StatementRun& run);
// MERGE, RESTORE, ...
[[noreturn]] void notCarriedOut(StatementRun& run);

}  // namespace qrel::tsql
