// Cursors: the rows of a query, read at OPEN and handed out one by one.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void declareCursor(StatementRun& run);  // the reader is at the name behind DECLARE
void openCursor(StatementRun& run);
void fetchCursor(StatementRun& run);
void closeCursor(StatementRun& run);  // CLOSE and DEALLOCATE

}  // namespace qrel::tsql
