// The statements of T-SQL: the word that one begins with, and the function that reads it and carries it out.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

using StatementFunction = void (*)(StatementRun& run);

// The statement that begins with this token wherever it stands; null when none does.
StatementFunction statementOf(const Token& first);
// The statement at the reader. A batch may begin with a procedure's name alone, without EXEC.
StatementFunction statementAt(const StatementRun& run);

}  // namespace qrel::tsql
