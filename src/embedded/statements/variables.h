// DECLARE and SET.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void declareStatement(StatementRun& run);
void setStatement(StatementRun& run);

}  // namespace qrel::tsql
