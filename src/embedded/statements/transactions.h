// BEGIN, COMMIT, ROLLBACK and SAVE TRANSACTION.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void beginTransaction(StatementRun& run);
void transactionStatement(StatementRun& run);  // the others

}  // namespace qrel::tsql
