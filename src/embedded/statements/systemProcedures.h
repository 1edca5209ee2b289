// The system procedures that change the catalogue or run a text.
#pragma once

#include <string>
#include <vector>

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

struct Argument {
  std::string name;  // "@name" in lower case, empty for one by position
  Value value;
  std::string output;  // the variable, in lower case, that OUTPUT gives the value back to
};

// `line`: of the EXEC, which texts that it runs are told with.
void runProcedure(StatementRun& run, const ObjectName& procedure, const std::vector<Argument>& arguments,
                  std::size_t line);

// A name as an argument gives it: "schema.name", "[name]".
ObjectName nameFrom(const std::string& text);
// An argument by name or position (0-based); a Null value when it is missing.
Value argumentOf(const std::vector<Argument>& arguments, std::size_t position, std::string_view name);

}  // namespace qrel::tsql
