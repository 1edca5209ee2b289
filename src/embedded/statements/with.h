// WITH in front of a query or of what changes rows.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void withStatement(StatementRun& run);

}  // namespace qrel::tsql
