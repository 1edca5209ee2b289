// GRANT, DENY, REVOKE.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void permissionStatement(StatementRun& run);

}  // namespace qrel::tsql
