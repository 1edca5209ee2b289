// Procedures, views, functions and triggers.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

// CREATE, CREATE OR ALTER and ALTER, with the reader at that word. The text is kept, nothing of it is run.
void moduleStatement(StatementRun& run);

}  // namespace qrel::tsql
