// Users, roles and their members; who owns what.
#include "embedded/change/changes.h"
#include "embedded/change/parts.h"
#include "embedded/change/properties.h"

namespace qrel::tsql {

namespace {

constexpr std::int64_t firstUser = 5;
constexpr std::int64_t firstFixedRole = 16384;

bool isThere(sqlite::Database& database, const char* sql, std::int64_t id) {
  auto& query = database.cached(sql);
  const bool found = query.bind(1, id).step();
  query.reset();
  return found;
}

char principalType(sqlite::Database& database, std::int64_t principal) {
  auto& query = database.cached("select type from cat_principals where id = ?1");
  const std::string type = query.bind(1, principal).step() ? std::string(query.text(0)) : std::string();
  query.reset();
  return type.empty() ? ' ' : type.front();
}

std::int64_t requireRole(sqlite::Database& database, std::string_view name) {
  const auto found = findPrincipal(database, name);
  if (!found || principalType(database, *found) != 'R') {
    refuse("Cannot alter the role '" + std::string(name) +
           "', because it does not exist or you do not have permission.");
  }
  return *found;
}

}  // namespace

std::optional<std::int64_t> findPrincipal(sqlite::Database& database, std::string_view name) {
  auto& query = database.cached("select id from cat_principals where name = ?1");
  std::optional<std::int64_t> found;
  if (query.bind(1, name).step()) found = query.integer(0);
  query.reset();
  return found;
}

std::int64_t requirePrincipal(sqlite::Database& database, std::string_view name) {
  const auto found = findPrincipal(database, name);
  if (!found) {
    refuse("Cannot find the user '" + std::string(name) +
           "', because it does not exist or you do not have permission.");
  }
  return *found;
}

void CatalogueChanges::createPrincipal(const PrincipalDef& principal) {
  if (findPrincipal(database_, principal.name))
    refuse("User, group, or role '" + principal.name + "' already exists in the current database.");
  const bool role = principal.type == 'R';
  auto& insert = database_.cached(
      "insert into cat_principals select max(max(id) + 1, ?1), ?2, ?3, ?4, ?5, ?6 from cat_principals where id < ?7");
  insert.bind(1, firstUser).bind(2, principal.name).bind(3, std::string_view(&principal.type, 1));
  if (role) {
    insert.bind(4, principal.owner.empty() ? dboPrincipal : requirePrincipal(database_, principal.owner));
  } else {
    insert.bindNull(4);
  }
  if (principal.defaultSchema.empty()) {
    insert.bindNull(5);
  } else {
    insert.bind(5, principal.defaultSchema);
  }
  insert.bind(6, std::int64_t{role ? 0 : principal.authentication}).bind(7, firstFixedRole).run();
}

void CatalogueChanges::alterPrincipal(std::string_view name, std::string_view newName, std::string_view defaultSchema) {
  const std::int64_t id = requirePrincipal(database_, name);
  if (!defaultSchema.empty()) {
    database_.cached("update cat_principals set default_schema = ?2 where id = ?1")
        .bind(1, id)
        .bind(2, defaultSchema)
        .run();
  }
  if (newName.empty()) return;
  if (const auto other = findPrincipal(database_, newName); other && *other != id)
    refuse("User, group, or role '" + std::string(newName) + "' already exists in the current database.");
  database_.cached("update cat_principals set name = ?2 where id = ?1").bind(1, id).bind(2, newName).run();
  for (const char* sql : {"update cat_permissions set grantee = ?2 where grantee = ?1",
                          "update cat_permissions set grantor = ?2 where grantor = ?1"})
    database_.cached(sql).bind(1, name).bind(2, newName).run();
}

void CatalogueChanges::dropPrincipal(std::string_view name, bool role) {
  const std::string shown(name);
  const auto id = findPrincipal(database_, name);
  const bool fixed = id && (*id < firstUser || *id >= firstFixedRole);
  if (!id || fixed || (principalType(database_, *id) == 'R') != role) {
    refuse("Cannot drop the " + std::string(role ? "role" : "user") + " '" + shown +
           "', because it does not exist or you do not have permission.");
  }
  if (isThere(database_, "select 1 from cat_schemas where owner = ?1", *id))
    refuse("The database principal owns a schema in the database, and cannot be dropped.");
  if (isThere(database_, "select 1 from cat_principals where owner = ?1", *id))
    refuse("The database principal owns a database role and cannot be dropped.");
  if (isThere(database_, "select 1 from cat_members where role_id = ?1", *id))
    refuse("The role has members. It must be empty before it can be dropped.");
  for (const char* sql : {"delete from cat_members where member_id = ?1", "delete from cat_principals where id = ?1",
                          "delete from cat_permissions where class = 4 and major_id = ?1",
                          "delete from cat_extended where class = 4 and major_id = ?1"})
    database_.cached(sql).bind(1, *id).run();
  database_.cached("delete from cat_permissions where grantee = ?1").bind(1, name).run();
}

void CatalogueChanges::setMember(std::string_view role, std::string_view member, bool isMember) {
  const std::int64_t of = requireRole(database_, role);
  const auto id = findPrincipal(database_, member);
  if (!id) refuse("User or role '" + std::string(member) + "' does not exist in this database.");
  const char* sql = isMember ? "insert or ignore into cat_members values(?1, ?2)"
                             : "delete from cat_members where role_id = ?1 and member_id = ?2";
  database_.cached(sql).bind(1, of).bind(2, *id).run();
}

void CatalogueChanges::setOwner(const Securable& on, std::string_view principal) {
  const std::int64_t owner = requirePrincipal(database_, principal);
  const Secured what = secured(on);
  if (on.of == Securable::Class::Object) {
    // An object belongs to its schema's owner unless it is told otherwise.
    setProperty(database_, {PropertyOwner::Class::Object, what.major}, "principal_id", std::to_string(owner));
    return;
  }
  const bool schema = on.of == Securable::Class::Schema;
  if (!schema && on.of != Securable::Class::Principal) throw NotUnderstood{"the owner of such a thing isn't kept", 1};
  database_
      .cached(schema ? "update cat_schemas set owner = ?2 where id = ?1"
                     : "update cat_principals set owner = ?2 where id = ?1")
      .bind(1, what.major)
      .bind(2, owner)
      .run();
}

}  // namespace qrel::tsql
