// RETURN, BREAK, CONTINUE and THROW: statements that leave the text, a loop or a TRY.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void leaveStatement(StatementRun& run);  // RETURN, BREAK, CONTINUE
void throwStatement(StatementRun& run);

}  // namespace qrel::tsql
