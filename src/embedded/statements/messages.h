// PRINT and RAISERROR.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void printStatement(StatementRun& run);
void raiserrorStatement(StatementRun& run);

}  // namespace qrel::tsql
