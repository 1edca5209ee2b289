// What the catalogue keeps of objects, columns and indexes beside what its tables have columns for.
#pragma once

#include <cstdint>
#include <string_view>

#include "embedded/catalogue/catalogue.h"

namespace qrel::tsql {

// Whose property it is: of an object; of its column `minor`, a colid; of its index `minor`, an indid,
// which is 0 for a heap; of a data space, partition function or full-text catalogue, whose id is `object`.
struct PropertyOwner {
  enum class Class : std::uint8_t {
    Object = 0,
    Column = 1,
    Index = 7,
    DataSpace = 20,
    PartitionFunction = 21,
    FullTextCatalogue = 23
  } of = Class::Object;
  std::int64_t object = 0;
  std::int64_t minor = 0;
};

// Sets one; an empty value takes it away, which stands for what the views give then: 0, or a server's default.
void setProperty(sqlite::Database& database, const PropertyOwner& owner, std::string_view name, std::string_view value);
void setProperties(sqlite::Database& database, const PropertyOwner& owner, const Properties& properties);
// Its text; empty where there is none.
std::string property(sqlite::Database& database, const PropertyOwner& owner, std::string_view name);
void removeProperties(sqlite::Database& database, const PropertyOwner& owner);
// Those of an object with all its columns and indexes.
void removeAllProperties(sqlite::Database& database, std::int64_t object);

}  // namespace qrel::tsql
