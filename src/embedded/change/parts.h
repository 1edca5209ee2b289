// What the catalogue's source files share among themselves.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/catalogue/catalogue.h"
#include "embedded/catalogue/reading.h"
#include "embedded/language/refusal.h"
#include "platform/error.h"

namespace qrel::tsql {

// A name as messages show it: "schema.name", or the bare name without a schema.
std::string fullName(std::string_view schema, std::string_view name);

void writeComment(sqlite::Database& database, std::int64_t id, std::string_view text, bool encrypted = false);

// Writes an object's row and returns its id, which is above all others. Refuses a name that is taken.
std::int64_t addObject(sqlite::Database& database, std::string_view name, std::int64_t schema, std::string_view xtype,
                       std::int64_t parent);
// Removes the rows that stand for an object and nothing else: object, texts, permissions, references.
void removeObject(sqlite::Database& database, std::int64_t id);

// A name for a constraint without one, in the server's pattern: "PK__" or "UQ__", eight characters of the table and 16
// digits; "FK__", "DF__" or "CK__", nine characters of the table, five of the first column and eight digits. The digits
// depend on the kind, the schema, the table and the columns alone, so that every load makes the same ones; a taken name
// counts on.
std::string makeConstraintName(const Catalogue& catalogue, std::string_view kind, std::string_view schema,
                               std::string_view table, const std::vector<std::string>& columns);

// Eight digits that depend on the text alone.
std::string stableDigits(std::string_view text);

// Refuses a schema that isn't there.
std::int64_t requireSchema(sqlite::Database& database, std::string_view name);

inline constexpr std::int64_t dboPrincipal = 1;
std::optional<std::int64_t> findPrincipal(sqlite::Database& database, std::string_view name);
std::int64_t requirePrincipal(sqlite::Database& database, std::string_view name);
// A filegroup, partition scheme, partition function or full-text catalogue by kind; 0: there is none.
std::int64_t findEntity(sqlite::Database& database, std::string_view kind, std::string_view name);

std::int64_t addEntity(sqlite::Database& database, std::string_view kind, std::string_view name);

// Which SQLite collation a column of this type has, with a leading blank; empty: none.
std::string storageCollation(const TypeRef& type);
// A column of the SQLite table as CREATE TABLE and ADD COLUMN want it. A computed column becomes a virtual one; when
// its expression can't be had that way, `plain` gives an ordinary column that stays Null.
std::string storageColumn(const Catalogue& catalogue, const TableInfo& table, const TableInfo::Column& column,
                          bool plain);
void createStorageTable(sqlite::Database& database, const Catalogue& catalogue, const TableInfo& table,
                        const std::string& storage);
// Gives the table the columns of `table`; values of the column `changed` are brought to its new type.
void rebuildStorageTable(sqlite::Database& database, const Catalogue& catalogue, const TableInfo& table,
                         std::string_view changed);
// The SQLite indexes that keep the table's unique keys unique: those of the catalogue's index rows, or only the one
// with this indid.
void createStorageIndexes(sqlite::Database& database, const Catalogue& catalogue, const TableInfo& table,
                          int onlyIndid = 0);
// The one behind a unique index of a temporary table.
void createTemporaryIndex(sqlite::Database& database, const Catalogue& catalogue, const TableInfo& table,
                          const IndexDef& index);
void dropStorageIndex(sqlite::Database& database, const TableInfo& table, std::string_view indexName);

}  // namespace qrel::tsql
