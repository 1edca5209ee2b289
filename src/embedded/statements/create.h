// CREATE and ALTER: which statement it is.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void createStatement(StatementRun& run);
void alterStatement(StatementRun& run);

}  // namespace qrel::tsql
