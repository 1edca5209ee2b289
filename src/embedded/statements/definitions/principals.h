// Users, roles, and who owns what.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

// From the word USER, ROLE or APPLICATION on; whether the reader stands at one.
bool atPrincipal(const TokenReader& reader);
void createPrincipal(StatementRun& run);
void alterPrincipal(StatementRun& run);
// From behind DROP's IF EXISTS on.
void dropPrincipal(StatementRun& run, bool role, bool ifExists);
// ALTER AUTHORIZATION ON class::name TO principal, from AUTHORIZATION on.
void alterAuthorization(StatementRun& run);
// "class::name" or a bare object; `classes` that have no permissions here are refused as not understood.
Securable readSecurable(StatementRun& run);

}  // namespace qrel::tsql
