// What the tables and columns of a database are called inside SQLite. To SQLite some names mean something else than
// they say: a column "rowid" would be the row's number, a table "sqlite_..." is its own.
#pragma once

#include <string>
#include <string_view>

namespace qrel::tsql {

// The SQLite table of a user table: "dbo.Track". No two tables have the same.
std::string storageName(std::string_view schema, std::string_view name);

// A column, also one of a query, as SQLite knows it, quoted; and the way back to its name, from its unquoted form.
std::string quoteColumn(std::string_view name);
std::string shownColumn(std::string_view stored);

}  // namespace qrel::tsql
