// SELECT, also behind WITH and in brackets.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void selectStatement(StatementRun& run);

}  // namespace qrel::tsql
