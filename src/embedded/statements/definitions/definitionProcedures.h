// The system procedures that define something: extended properties, users and roles, the order of triggers.
#pragma once

#include <string>
#include <vector>

#include "embedded/run/statementRun.h"
#include "embedded/statements/systemProcedures.h"

namespace qrel::tsql {

// False: the procedure, in lower case, is none of these.
bool runDefinitionProcedure(StatementRun& run, const std::string& name, const std::vector<Argument>& arguments);

}  // namespace qrel::tsql
