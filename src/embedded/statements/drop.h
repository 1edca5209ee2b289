// DROP of anything.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void dropStatement(StatementRun& run);

}  // namespace qrel::tsql
