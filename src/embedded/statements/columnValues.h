// What a row holds in columns that no statement gives a value, and why a row can't be kept.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

bool isVersionColumn(const TableInfo::Column& column);

// Where the value of a column comes from that a row isn't given; `defaultOf` gives it, a literal in its stored form.
InsertPlan::Column defaultFor(StatementRun& run, const TableInfo::Column& column);
Value defaultOf(StatementRun& run, const InsertPlan::Column& source);
// The next number of an identity column, the next stamp of a timestamp column.
Value generated(StatementRun& run, const TableInfo& table, const TableInfo::Column& column);

// The last number that an identity column has given, or was given above it; it outlives the rows and the load.
std::int64_t& lastIdentity(StatementRun& run, const TableInfo& table, const TableInfo::Column& column);
// Begins the numbers of a table anew, as TRUNCATE does.
void forgetIdentity(StatementRun& run, const TableInfo& table);

// `statement`: INSERT or UPDATE.
[[noreturn]] void refuseNull(const StatementRun& run, const TableInfo& table, const TableInfo::Column& column,
                             std::string_view statement);
// Whether an error is that of a key which a row breaks.
bool isDuplicate(const DataError& error);
// Raises `error`, in the server's words when it is that of a key that a row breaks.
[[noreturn]] void refuseDuplicate(StatementRun& run, const TableInfo& table, const DataError& error);

}  // namespace qrel::tsql
