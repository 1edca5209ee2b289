#include "embedded/statements/definitions/principals.h"

#include <vector>

#include "platform/text.h"

namespace qrel::tsql {

namespace {

// "NAME = value, ..." behind WITH.
struct PrincipalOptions {
  std::string name, defaultSchema;
  bool password = false;
};

PrincipalOptions readOptions(TokenReader& reader) {
  PrincipalOptions options;
  if (!reader.acceptWord("WITH")) return options;
  do {
    const Token& word = reader.next();
    reader.expectSymbol("=");
    const std::string value(reader.next().name());
    if (word.is("NAME")) options.name = value;
    if (word.is("DEFAULT_SCHEMA")) options.defaultSchema = value;
    if (word.is("PASSWORD")) options.password = true;
    if (reader.acceptWord("OLD_PASSWORD")) {
      reader.expectSymbol("=");
      reader.next();
    }
  } while (reader.acceptSymbol(","));
  return options;
}

// FOR | FROM LOGIN name, CERTIFICATE name, ASYMMETRIC KEY name, EXTERNAL PROVIDER; WITHOUT LOGIN.
void readOrigin(TokenReader& reader, PrincipalDef& user) {
  if (reader.acceptWord("WITHOUT")) {
    reader.expectWord("LOGIN");
    user.authentication = 0;
    return;
  }
  if (!reader.acceptWord("FOR") && !reader.acceptWord("FROM")) return;
  if (reader.acceptWord("EXTERNAL")) {
    reader.expectWord("PROVIDER");
    user.type = 'E';
    user.authentication = 4;
    return;
  }
  const Token& origin = reader.next();
  if (origin.is("ASYMMETRIC")) reader.expectWord("KEY");
  const std::string name = reader.expectIdentifier();
  if (origin.is("CERTIFICATE") || origin.is("ASYMMETRIC")) {
    user.type = origin.is("CERTIFICATE") ? 'C' : 'K';
    user.authentication = 0;
  } else if (name.find('\\') != std::string::npos) {
    user.type = 'U';
    user.authentication = 3;
  }
}

void createUser(StatementRun& run) {
  TokenReader& reader = run.reader;
  PrincipalDef user;
  user.name = reader.expectIdentifier();
  user.defaultSchema = "dbo";
  if (user.name.find('\\') != std::string::npos) {
    user.type = 'U';
    user.authentication = 3;
  }
  readOrigin(reader, user);
  const PrincipalOptions options = readOptions(reader);
  if (!options.defaultSchema.empty()) user.defaultSchema = options.defaultSchema;
  if (options.password) user.authentication = 2;
  if (!run.act()) return;
  run.changes().createPrincipal(user);
  run.made("user");
}

void createRole(StatementRun& run, bool application) {
  TokenReader& reader = run.reader;
  PrincipalDef role;
  role.type = application ? 'A' : 'R';
  role.name = reader.expectIdentifier();
  if (application) {
    role.authentication = 0;
    role.defaultSchema = readOptions(reader).defaultSchema;
    if (role.defaultSchema.empty()) role.defaultSchema = "dbo";
  } else if (reader.acceptWord("AUTHORIZATION")) {
    role.owner = reader.expectIdentifier();
  }
  if (!run.act()) return;
  run.changes().createPrincipal(role);
  run.made("role");
}

}  // namespace

bool atPrincipal(const TokenReader& reader) {
  return reader.peek().is("USER") || reader.peek().is("ROLE") ||
         (reader.peek().is("APPLICATION") && reader.peek(1).is("ROLE"));
}

void createPrincipal(StatementRun& run) {
  TokenReader& reader = run.reader;
  const bool application = reader.acceptWord("APPLICATION");
  if (reader.next().is("USER")) return createUser(run);
  createRole(run, application);
}

void alterPrincipal(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.acceptWord("APPLICATION");
  reader.next();
  const std::string name = reader.expectIdentifier();
  if (reader.peek().is("ADD") || reader.peek().is("DROP")) {
    const bool adds = reader.next().is("ADD");
    reader.expectWord("MEMBER");
    const std::string member = reader.expectIdentifier();
    if (run.act()) run.changes().setMember(name, member, adds);
    return;
  }
  const PrincipalOptions options = readOptions(reader);
  if (!run.act()) return;
  run.atomically([&] { run.changes().alterPrincipal(name, options.name, options.defaultSchema); });
}

void dropPrincipal(StatementRun& run, bool role, bool ifExists) {
  const std::string name = run.reader.expectIdentifier();
  if (!run.act()) return;
  if (ifExists) {
    auto& query = run.database().cached("select 1 from cat_principals where name = ?1");
    const bool there = query.bind(1, name).step();
    query.reset();
    if (!there) return;
  }
  run.atomically([&] { run.changes().dropPrincipal(name, role); });
}

Securable readSecurable(StatementRun& run) {
  TokenReader& reader = run.reader;
  struct Word {
    std::string_view word;
    Securable::Class of;
  };
  static constexpr Word words[] = {
      {"OBJECT", Securable::Class::Object},
      {"SCHEMA", Securable::Class::Schema},
      {"TYPE", Securable::Class::Type},
      {"DATABASE", Securable::Class::Database},
      {"USER", Securable::Class::Principal},
      {"ROLE", Securable::Class::Principal},
      {"APPLICATION ROLE", Securable::Class::Principal},
      {"FULLTEXT CATALOG", Securable::Class::FullTextCatalogue},
  };
  std::string kind;
  std::size_t length = 0;
  while (length < 3 && reader.peek(length).kind == TokenKind::Word && !reader.peek(length).isSymbol("::")) {
    kind += (kind.empty() ? "" : " ") + upperCase(reader.peek(length).raw);
    ++length;
  }
  if (!reader.peek(length).isSymbol("::")) return {Securable::Class::Object, run.localName(readObjectName(reader))};
  for (const Word& each : words) {
    if (kind != each.word) continue;
    reader.moveTo(reader.position() + length + 1);
    ObjectName name = readObjectName(reader);
    return {each.of, run.localName(std::move(name))};
  }
  run.notUnderstood("permissions and owners of a " + lowerCase(kind) + " aren't kept");
}

void alterAuthorization(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.expectWord("AUTHORIZATION");
  reader.expectWord("ON");
  const Securable on = readSecurable(run);
  reader.expectWord("TO");
  const bool ofSchema = reader.peek().is("SCHEMA") && reader.peek(1).is("OWNER");
  std::string owner = ofSchema ? "" : reader.expectIdentifier();
  if (ofSchema) {
    reader.next();
    reader.next();
  }
  if (on.of == Securable::Class::Database) {
    run.withoutEffect();
    run.act();
    return;
  }
  if (ofSchema || on.of == Securable::Class::Type || on.of == Securable::Class::FullTextCatalogue)
    run.notUnderstood("this owner isn't kept");
  if (run.act()) run.changes().setOwner(on, owner);
}

}  // namespace qrel::tsql
