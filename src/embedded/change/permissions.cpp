// Permissions, and what they are on.
#include "embedded/change/changes.h"
#include "embedded/change/parts.h"

namespace qrel::tsql {

namespace {

struct PermissionCode {
  const char* name;
  const char* code;
};

constexpr PermissionCode permissionCodes[] = {
    {"SELECT", "SL  "},
    {"INSERT", "IN  "},
    {"UPDATE", "UP  "},
    {"DELETE", "DL  "},
    {"EXECUTE", "EX  "},
    {"REFERENCES", "RF  "},
    {"ALTER", "AL  "},
    {"CONTROL", "CL  "},
    {"VIEW DEFINITION", "VW  "},
    {"TAKE OWNERSHIP", "TO  "},
    {"CONNECT", "CO  "},
    {"RECEIVE", "RC  "},
    {"IMPERSONATE", "IM  "},
    {"CREATE TABLE", "CRTB"},
    {"CREATE VIEW", "CRVW"},
    {"CREATE PROCEDURE", "CRPR"},
    {"CREATE FUNCTION", "CRFN"},
    {"CREATE SCHEMA", "CRSM"},
    {"CREATE TYPE", "CRTY"},
    {"CREATE DEFAULT", "CRDF"},
    {"CREATE RULE", "CRRU"},
    {"CREATE SYNONYM", "CRSN"},
    {"CREATE ROLE", "CRRL"},
    {"BACKUP DATABASE", "BADB"},
    {"BACKUP LOG", "BALO"},
    {"VIEW CHANGE TRACKING", "VWCT"},
    {"ALTER ANY SCHEMA", "ALSM"},
    {"ALTER ANY USER", "ALUS"},
    {"ALTER ANY ROLE", "ALRL"},
    {"VIEW DATABASE STATE", "VWDS"},
    {"SHOWPLAN", "SPLN"},
    {"CREATE DATABASE", "CRDB"},
};

std::string permissionCode(const std::string& permission) {
  for (const auto& each : permissionCodes)
    if (permission == each.name) return each.code;
  std::string code;
  for (const char c : permission)
    if (c != ' ' && code.size() < 4) code += c;
  return code + std::string(4 - code.size(), ' ');
}

void insertPermission(sqlite::Database& database, const Permission& permission, const Secured& secured,
                      std::int64_t minor) {
  auto& insert = database.cached("insert into cat_permissions values(?1,?2,?3,?4,?5,?6,?7,?8)");
  insert.bind(1, secured.kind).bind(2, secured.major).bind(3, minor);
  insert.bind(4, permissionCode(permission.name)).bind(5, permission.name);
  insert.bind(6, std::string_view(&permission.state, 1)).bind(7, permission.grantee);
  if (permission.grantor.empty()) {
    insert.bindNull(8).run();
  } else {
    insert.bind(8, permission.grantor).run();
  }
}

// A REVOKE on a column stays as a row of its own where the whole table's permission goes on.
void setColumnPermission(sqlite::Database& database, const Permission& permission, std::int64_t table, int colid) {
  const auto bound = [&](const char* sql) -> sqlite::Statement& {
    auto& statement = database.cached(sql);
    statement.bind(1, table).bind(2, std::int64_t{colid}).bind(3, permissionCode(permission.name));
    return statement.bind(4, permission.grantee);
  };
  bound(
      "delete from cat_permissions where class = 1 and major_id = ?1 and minor_id = ?2 and type = ?3 and grantee = ?4")
      .run();
  if (permission.state == 'R') {
    auto& whole = bound(
        "select ?2 from cat_permissions where class = 1 and major_id = ?1 and minor_id = 0 and type = ?3 and grantee = "
        "?4");
    const bool goesOn = whole.step();
    whole.reset();
    if (!goesOn) return;
  }
  insertPermission(database, permission, {1, table}, colid);
}

// The grant option goes, the permission stays.
void takeGrantOption(sqlite::Database& database, const Permission& permission, const Secured& secured) {
  database
      .cached(
          "update cat_permissions set state = 'G' where class = ?1 and major_id = ?2 and type = ?3 and grantee = ?4 "
          "and state = 'W'")
      .bind(1, secured.kind)
      .bind(2, secured.major)
      .bind(3, permissionCode(permission.name))
      .bind(4, permission.grantee)
      .run();
}

}  // namespace

Secured CatalogueChanges::secured(const Securable& on) const {
  std::int64_t id = 0;
  std::string kind;
  switch (on.of) {
    case Securable::Class::Database:
      return {0, 0};
    case Securable::Class::Object: {
      const auto found = catalogue_.find(on.name.schema, on.name.name);
      if (!found)
        refuse("Cannot find the object '" + on.name.name +
               "', because it does not exist or you do not have permission.");
      return {1, found->id};
    }
    case Securable::Class::Schema:
      kind = "schema";
      id = schemaId(database_, on.name.name);
      break;
    case Securable::Class::Principal:
      kind = "user";
      if (const auto found = findPrincipal(database_, on.name.name)) return {4, *found};
      break;
    case Securable::Class::Type:
      kind = "type";
      if (const auto alias = catalogue_.aliasType(on.name.schema, on.name.name)) id = alias->xusertype;
      if (const auto table = catalogue_.tableType(on.name.schema, on.name.name)) id = table->xusertype;
      break;
    case Securable::Class::FullTextCatalogue:
      kind = "fulltext catalog";
      id = findEntity(database_, "FC", on.name.name);
      break;
  }
  if (id == 0)
    refuse("Cannot find the " + kind + " '" + on.name.name +
           "', because it does not exist or you do not have permission.");
  return {static_cast<std::int64_t>(on.of), id};
}

void CatalogueChanges::setPermission(const Permission& permission, const Securable& on,
                                     const std::vector<std::string>& columns) {
  const Secured secured = this->secured(on);
  if (permission.state == 'O') return takeGrantOption(database_, permission, secured);
  if (!columns.empty()) {
    for (const std::string& column : columns) {
      const auto table = on.of == Securable::Class::Object ? catalogue_.table(on.name.schema, on.name.name) : nullptr;
      const auto* found = table ? table->find(column) : nullptr;
      if (!found) {
        refuse("Column '" + column + "' was not found in the object '" + on.name.name +
               "': permissions on columns are kept for those of tables.");
      }
      setColumnPermission(database_, permission, secured.major, found->colid);
    }
    return;
  }
  // What is said of an object takes back what was said of its columns.
  database_.cached("delete from cat_permissions where class = ?1 and major_id = ?2 and type = ?3 and grantee = ?4")
      .bind(1, secured.kind)
      .bind(2, secured.major)
      .bind(3, permissionCode(permission.name))
      .bind(4, permission.grantee)
      .run();
  if (permission.state != 'R') insertPermission(database_, permission, secured, 0);
}

}  // namespace qrel::tsql
