// How rows get into a table by one shape of INSERT.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

// `columns`: null where the statement lists none.
InsertPlan makePlan(StatementRun& run, std::shared_ptr<const TableInfo> table, const std::vector<std::string>* columns);
// The kept plan of the text between two tokens, made when there is none.
InsertPlan& planFor(StatementRun& run, std::size_t start, std::size_t end, const ObjectName& table,
                    const std::vector<std::string>* columns);
// `values`: of the given columns, in their stored form.
void insertRow(StatementRun& run, InsertPlan& plan, const std::vector<Value>& values);

}  // namespace qrel::tsql
