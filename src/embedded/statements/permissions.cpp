#include "embedded/statements/permissions.h"

#include <optional>
#include <string>
#include <vector>

#include "embedded/language/refusal.h"
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

// "ON object" or "ON object (a, b)", whose columns then go for every permission; nothing where the permission is one on
// the database.
std::optional<ObjectName> readSecured(StatementRun& run, std::vector<Granted>& permissions) {
  TokenReader& reader = run.reader;
  if (!reader.acceptWord("ON")) return std::nullopt;
  if (reader.peek(1).isSymbol("::")) {
    if (!reader.peek().is("OBJECT"))
      run.notUnderstood("permissions on a " + lowerCase(reader.peek().raw) + " aren't kept");
    reader.next();
    reader.next();
  }
  ObjectName object = run.localName(readObjectName(reader));
  for (const std::string& column : readColumns(reader))
    for (Granted& granted : permissions) granted.columns.push_back(column);
  return object;
}

// What ALL means for an object of its kind, and for columns of it.
std::vector<Granted> allPermissions(const StatementRun& run, const ObjectName& object, const Granted& all) {
  const auto found = run.catalogue().find(object.schema, object.name);
  if (found && (found->xtype == "P" || found->xtype == "FN")) return {{"EXECUTE", all.columns}};
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

// GRANT, DENY, REVOKE permission [(column, ...)], ... [ON object [(column, ...)]] TO|FROM principal, ...
void permissionStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  const Token& verb = reader.next();
  char state = verb.is("GRANT") ? 'G' : verb.is("DENY") ? 'D' : 'R';
  if (state == 'R' && reader.acceptWord("GRANT")) {
    reader.expectWord("OPTION");
    reader.expectWord("FOR");
    state = 'G';  // the permission itself stays
  }
  std::vector<Granted> permissions = readPermissions(run);
  const std::optional<ObjectName> object = readSecured(run, permissions);
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
  if (reader.acceptWord("AS")) reader.expectIdentifier();
  if (!run.act()) return;
  if (namesAll(permissions)) {
    if (!object) refuse("ALL needs an object.");
    permissions = allPermissions(run, *object, permissions[0]);
  }
  requireColumnPermissions(permissions);
  run.atomically([&] {
    for (const std::string& grantee : grantees)
      for (const Granted& each : permissions)
        run.changes().setPermission({state, each.permission, grantee}, object ? &*object : nullptr, each.columns);
  });
}

}  // namespace qrel::tsql
