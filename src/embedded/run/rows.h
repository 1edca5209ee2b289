// The rows of a query, read forwards.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "embedded/run/openDatabase.h"
#include "platform/data/provider.h"

namespace qrel::tsql {

// The rows of a translated query; keeps the session's database open.
std::unique_ptr<RowSource> queryRows(std::shared_ptr<OpenDatabase> open, const std::string& sqliteSql,
                                     const std::map<std::string, Value>& variables, std::string_view originalSql);

}  // namespace qrel::tsql
