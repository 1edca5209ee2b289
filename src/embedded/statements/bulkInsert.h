// BULK INSERT of a text file that lies below the script's folder.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

// Fields become the values of the table's columns in order, those of identity columns only with KEEPIDENTITY; an empty
// field is Null, or the column's default without KEEPNULLS. Rows whose values don't convert are left out, up to
// MAXERRORS of them, and the statement fails all the same.
void bulkInsertStatement(StatementRun& run);

}  // namespace qrel::tsql
