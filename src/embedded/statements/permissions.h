// GRANT, DENY, REVOKE.
#pragma once

#include <functional>

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void permissionStatement(StatementRun& run);
// Reads such a statement and gives what it does.
std::function<void()> readPermission(StatementRun& run);

}  // namespace qrel::tsql
