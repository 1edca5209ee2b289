#include "embedded/statements/permissions.h"

#include <string>
#include <vector>

#include "embedded/language/refusal.h"
#include "embedded/statements/definitions/principals.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// What is granted: the words in capitals, and the columns on which alone; none: on the whole object.
struct Granted {
  std::string permission;
  std::vector<std::string> columns;
};

// "(a, b)"; nothing where no parenthesis stands.
std::vector<std::string> readColumns(TokenReader& reader) {
  std::vector<std::string> columns;
  if (!reader.acceptSymbol("(")) return columns;
  do {
    columns.push_back(reader.expectIdentifier());
  } while (reader.acceptSymbol(","));
  reader.expectSymbol(")");
  return columns;
}

// "SELECT (a, b), CREATE TABLE, EXEC".
std::vector<Granted> readPermissions(StatementRun& run) {
  TokenReader& reader = run.reader;
  std::vector<Granted> permissions;
  do {
    std::string words;
    while (reader.peek().kind == TokenKind::Word && !reader.peek().is("ON") && !reader.peek().is("TO") &&
           !reader.peek().is("FROM")) {
      words += (words.empty() ? "" : " ") + upperCase(reader.next().raw);
    }
    if (words == "EXEC") words = "EXECUTE";
    if (words.empty()) run.notUnderstood("a permission is expected");
    permissions.push_back({std::move(words), readColumns(reader)});
  } while (reader.acceptSymbol(","));
  return permissions;
}

// "ON object", "ON object (a, b)", whose columns then go for every permission, "ON SCHEMA::name"; the database where
// nothing is written.
Securable readSecured(StatementRun& run, std::vector<Granted>& permissions) {
  TokenReader& reader = run.reader;
  if (!reader.acceptWord("ON")) return {};
  Securable on = readSecurable(run);
  if (on.of != Securable::Class::Object) return on;
  for (const std::string& column : readColumns(reader))
    for (Granted& granted : permissions) granted.columns.push_back(column);
  return on;
}

// What ALL means for the database, for an object of its kind, and for columns of it.
std::vector<Granted> allPermissions(const StatementRun& run, const Securable& on, const Granted& all) {
  if (on.of == Securable::Class::Database) {
    std::vector<Granted> permissions;
    for (const char* each : {"BACKUP DATABASE", "BACKUP LOG", "CREATE DATABASE", "CREATE DEFAULT", "CREATE FUNCTION",
                             "CREATE PROCEDURE", "CREATE RULE", "CREATE TABLE", "CREATE VIEW"})
      permissions.push_back({each, {}});
    return permissions;
  }
  const auto found = run.catalogue().find(on.name.schema, on.name.name);
  if (found && found->xtype == "P") return {{"EXECUTE", all.columns}};
  if (found && found->xtype == "FN") return {{"EXECUTE", {}}, {"REFERENCES", {}}};
  std::vector<Granted> permissions;
  for (const char* each : {"SELECT", "UPDATE", "REFERENCES"}) permissions.push_back({each, all.columns});
  if (all.columns.empty())
    for (const char* each : {"INSERT", "DELETE"}) permissions.push_back({each, {}});
  return permissions;
}

bool namesAll(const std::vector<Granted>& permissions) {
  return permissions.size() == 1 &&
         (permissions[0].permission == "ALL" || permissions[0].permission == "ALL PRIVILEGES");
}

void requireColumnPermissions(const std::vector<Granted>& permissions) {
  for (const Granted& each : permissions)
    if (!each.columns.empty() && each.permission != "SELECT" && each.permission != "UPDATE" &&
        each.permission != "REFERENCES")
      refuse(
          "Sub-entity lists (such as column or security expressions) cannot be specified for entity-level "
          "permissions.");
}

}  // namespace

// GRANT, DENY, REVOKE permission [(column, ...)], ... [ON [class::]thing [(column, ...)]] TO|FROM principal, ...
std::function<void()> readPermission(StatementRun& run) {
  TokenReader& reader = run.reader;
  const Token& verb = reader.next();
  char state = verb.is("GRANT") ? 'G' : verb.is("DENY") ? 'D' : 'R';
  if (state == 'R' && reader.acceptWord("GRANT")) {
    reader.expectWord("OPTION");
    reader.expectWord("FOR");
    state = 'O';
  }
  std::vector<Granted> permissions = readPermissions(run);
  const Securable on = readSecured(run, permissions);
  if (!reader.acceptWord("TO")) reader.expectWord("FROM");
  std::vector<std::string> grantees;
  do {
    grantees.push_back(reader.expectIdentifier());
  } while (reader.acceptSymbol(","));
  if (reader.peek().is("WITH") && reader.peek(1).is("GRANT")) {
    for (int i = 0; i < 3; ++i) reader.next();
    if (state == 'G') state = 'W';
  }
  reader.acceptWord("CASCADE");
  std::string grantor;
  if (reader.acceptWord("AS")) grantor = reader.expectIdentifier();
  const bool all = namesAll(permissions);
  if (all && on.of != Securable::Class::Object && on.of != Securable::Class::Database)
    run.notUnderstood("ALL on anything but an object or the database isn't carried out");
  return [&run, state, permissions = std::move(permissions), on, grantees = std::move(grantees), grantor, all] {
    const std::vector<Granted> given = all ? allPermissions(run, on, permissions[0]) : permissions;
    requireColumnPermissions(given);
    for (const std::string& grantee : grantees)
      for (const Granted& each : given)
        run.changes().setPermission({state, each.permission, grantee, grantor}, on, each.columns);
  };
}

void permissionStatement(StatementRun& run) {
  const std::function<void()> work = readPermission(run);
  if (run.act()) run.atomically(work);
}

}  // namespace qrel::tsql
