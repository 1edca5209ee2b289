// INSERT. Rows of literals take a short way: from their tokens through the column's type into a prepared statement.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void insertStatement(StatementRun& run);

}  // namespace qrel::tsql
