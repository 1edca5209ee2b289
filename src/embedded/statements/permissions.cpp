#include "embedded/statements/permissions.h"

#include <optional>
#include <string>
#include <vector>

#include "embedded/language/refusal.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// "SELECT, CREATE TABLE, EXEC", each in capitals.
std::vector<std::string> readPermissions(StatementRun& run) {
  TokenReader& reader = run.reader;
  std::vector<std::string> permissions;
  do {
    std::string words;
    while (reader.peek().kind == TokenKind::Word && !reader.peek().is("ON") && !reader.peek().is("TO") &&
           !reader.peek().is("FROM")) {
      words += (words.empty() ? "" : " ") + upperCase(reader.next().raw);
    }
    if (words == "EXEC") words = "EXECUTE";
    if (words.empty()) run.notUnderstood("a permission is expected");
    if (reader.peek().isSymbol("(")) run.notUnderstood("permissions on columns aren't kept");
    permissions.push_back(std::move(words));
  } while (reader.acceptSymbol(","));
  return permissions;
}

// "ON object"; nothing where the permission is one on the database.
std::optional<ObjectName> readSecured(StatementRun& run) {
  TokenReader& reader = run.reader;
  if (!reader.acceptWord("ON")) return std::nullopt;
  if (reader.peek(1).isSymbol("::")) {
    if (!reader.peek().is("OBJECT"))
      run.notUnderstood("permissions on a " + lowerCase(reader.peek().raw) + " aren't kept");
    reader.next();
    reader.next();
  }
  ObjectName object = run.localName(readObjectName(reader));
  if (reader.peek().isSymbol("(")) run.notUnderstood("permissions on columns aren't kept");
  return object;
}

// What ALL means for an object of its kind.
std::vector<std::string> allPermissions(const StatementRun& run, const ObjectName& object) {
  const auto found = run.catalogue().find(object.schema, object.name);
  if (found && (found->xtype == "P" || found->xtype == "FN")) return {"EXECUTE"};
  return {"SELECT", "INSERT", "UPDATE", "DELETE", "REFERENCES"};
}

}  // namespace

// GRANT, DENY, REVOKE permission, ... [ON object] TO|FROM principal, ...
void permissionStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  const Token& verb = reader.next();
  char state = verb.is("GRANT") ? 'G' : verb.is("DENY") ? 'D' : 'R';
  if (state == 'R' && reader.acceptWord("GRANT")) {
    reader.expectWord("OPTION");
    reader.expectWord("FOR");
    state = 'G';  // the permission itself stays
  }
  std::vector<std::string> permissions = readPermissions(run);
  const std::optional<ObjectName> object = readSecured(run);
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
  if (permissions.size() == 1 && (permissions[0] == "ALL" || permissions[0] == "ALL PRIVILEGES")) {
    if (!object) refuse("ALL needs an object.");
    permissions = allPermissions(run, *object);
  }
  run.atomically([&] {
    for (const std::string& grantee : grantees)
      for (const std::string& permission : permissions)
        run.changes().setPermission(state, permission, object ? &*object : nullptr, grantee);
  });
}

}  // namespace qrel::tsql
