// SET of an option.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void setOption(StatementRun& run);  // the reader is behind SET

}  // namespace qrel::tsql
