// SELECT ... INTO: a table made of a query.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

// Makes the table and fills it from the translated query.
void selectInto(StatementRun& run, const std::string& sql, const IntoTable& into);

}  // namespace qrel::tsql
