// Small look-ups in the stored catalogue.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "embedded/sqlite/sqlite.h"

namespace qrel::tsql {

std::string_view orDbo(std::string_view schema);

// 0 when there is no such schema; an empty name means dbo.
std::int64_t schemaId(sqlite::Database& database, std::string_view schema);

// The last number of a table's identity column as the database keeps it; nothing: it has given none, or nobody has kept
// it.
inline constexpr const char* lastIdentityProperty = "last_identity";
std::optional<std::int64_t> keptIdentity(sqlite::Database& database, std::int64_t table);

// An object's kept text, its rows joined.
std::string commentText(sqlite::Database& database, std::int64_t id);

}  // namespace qrel::tsql
