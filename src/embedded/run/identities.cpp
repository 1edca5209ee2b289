#include "embedded/run/identities.h"

#include <string>

#include "embedded/catalogue/reading.h"
#include "embedded/change/properties.h"

namespace qrel::tsql {

void keepIdentity(sqlite::Database& database, std::int64_t table, std::optional<std::int64_t> last) {
  auto& query = database.cached("select 1 from cat_objects where id = ?1");
  const bool there = query.bind(1, table).step();
  query.reset();
  if (there)
    setProperty(database, {PropertyOwner::Class::Object, table}, lastIdentityProperty,
                last ? std::to_string(*last) : "");
}

void keepIdentities(sqlite::Database& database, const std::map<std::int64_t, std::int64_t>& identities) {
  for (const auto& [table, last] : identities) keepIdentity(database, table, last);
}

}  // namespace qrel::tsql
