#include "embedded/change/properties.h"

namespace qrel::tsql {

namespace {

sqlite::Statement& bound(sqlite::Database& database, const char* sql, const PropertyOwner& owner) {
  auto& statement = database.cached(sql);
  return statement.bind(1, owner.object).bind(2, static_cast<std::int64_t>(owner.of)).bind(3, owner.minor);
}

}  // namespace

void setProperty(sqlite::Database& database, const PropertyOwner& owner, std::string_view name,
                 std::string_view value) {
  if (value.empty()) {
    bound(database, "delete from cat_properties where object_id = ?1 and class = ?2 and minor_id = ?3 and name = ?4",
          owner)
        .bind(4, name)
        .run();
    return;
  }
  bound(database, "insert or replace into cat_properties values(?1,?2,?3,?4,?5)", owner)
      .bind(4, name)
      .bind(5, value)
      .run();
}

void setProperties(sqlite::Database& database, const PropertyOwner& owner, const Properties& properties) {
  for (const Property& each : properties) setProperty(database, owner, each.name, each.value);
}

std::string property(sqlite::Database& database, const PropertyOwner& owner, std::string_view name) {
  auto& query = bound(
      database, "select value from cat_properties where object_id = ?1 and class = ?2 and minor_id = ?3 and name = ?4",
      owner);
  std::string value;
  if (query.bind(4, name).step()) value = query.text(0);
  query.reset();
  return value;
}

void removeProperties(sqlite::Database& database, const PropertyOwner& owner) {
  bound(database, "delete from cat_properties where object_id = ?1 and class = ?2 and minor_id = ?3", owner).run();
}

void removeAllProperties(sqlite::Database& database, std::int64_t object) {
  database.cached("delete from cat_properties where object_id = ?1").bind(1, object).run();
}

}  // namespace qrel::tsql
