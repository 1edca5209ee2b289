// UPDATE and DELETE, with and without FROM.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void updateStatement(StatementRun& run);
void deleteStatement(StatementRun& run);

}  // namespace qrel::tsql
