// EXEC: texts that a batch runs, and system procedures.
#pragma once

#include <map>
#include <string>

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

void execStatement(StatementRun& run);

// Runs a text as a batch within the batch. It sees the given variables alone and gives back those in `outputs`, from
// its own names to those outside.
void execText(StatementRun& run, const std::string& text, std::size_t line, std::map<std::string, Value> variables = {},
              std::map<std::string, TypeRef> types = {}, const std::map<std::string, std::string>& outputs = {});

}  // namespace qrel::tsql
