// Schemas, types, sequences, synonyms, databases; DROP; permissions; transactions.
#include <array>
#include <charconv>

#include "embedded/catalogue/typeNames.h"
#include "embedded/change/parts.h"
#include "embedded/instance/databaseFiles.h"
#include "embedded/language/words.h"
#include "embedded/run/interpreter.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/translate/translator.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool isSystemDatabase(std::string_view name) {
  for (const char* each : {"master", "tempdb", "model", "msdb"})
    if (equalNoCase(name, each)) return true;
  return false;
}

struct DropKind {
  std::string_view word;
  std::vector<std::string> xtypes;
};

const DropKind* dropKind(const Token& token) {
  static const std::array<DropKind, 8> kinds{{{"TABLE", {"U"}},
                                              {"VIEW", {"V"}},
                                              {"PROC", {"P"}},
                                              {"PROCEDURE", {"P"}},
                                              {"FUNCTION", {"FN", "IF", "TF"}},
                                              {"TRIGGER", {"TR"}},
                                              {"SEQUENCE", {"SO"}},
                                              {"SYNONYM", {"SN"}}}};
  for (const DropKind& kind : kinds)
    if (token.is(kind.word)) return &kind;
  return nullptr;
}

}  // namespace

void Interpreter::createSchema() {
  std::string name;
  if (!reader_.peek().is("AUTHORIZATION")) name = reader_.expectIdentifier();
  if (reader_.acceptWord("AUTHORIZATION")) {
    const std::string owner = reader_.expectIdentifier();
    if (name.empty()) name = owner;
  }
  if (!act()) return;
  changes().createSchema(name);
  made("schema");
}

void Interpreter::createType() {
  const ObjectName name = localName(readObjectName(reader_));
  if (reader_.acceptWord("AS")) {
    reader_.expectWord("TABLE");
    reader_.skipParentheses();
    if (reader_.peek().is("WITH") && reader_.peek(1).isSymbol("(")) {
      reader_.next();
      reader_.skipParentheses();
    }
    if (!act()) return;
    changes().createPlain(name, "TT");
  } else {
    reader_.expectWord("FROM");
    const TypeRef base = readType(reader_, catalogue_);
    bool nullable = true;
    if (reader_.peek().is("NOT") && reader_.peek(1).is("NULL")) {
      reader_.next();
      nullable = false;
    }
    if (!nullable || reader_.peek().is("NULL")) reader_.next();
    if (!act()) return;
    changes().createAliasType(name, base, nullable);
  }
  made("type");
}

void Interpreter::createSequence() {
  const ObjectName name = localName(readObjectName(reader_));
  std::int64_t start = 1;
  std::int64_t increment = 1;
  const auto number = [&](std::int64_t& value) {
    const bool negative = reader_.acceptSymbol("-");
    const std::string_view digits = reader_.peek().raw;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec == std::errc()) reader_.next();
    if (negative) value = -value;
  };
  const std::size_t end = structure_.plainEnd(statementStart_, limit_);
  while (reader_.position() < end) {  // of the options only these two count
    if (reader_.acceptWord("START")) {
      reader_.acceptWord("WITH");
      number(start);
    } else if (reader_.acceptWord("INCREMENT")) {
      reader_.acceptWord("BY");
      number(increment);
    } else {
      reader_.next();
    }
  }
  if (!act()) return;
  changes().createSequence(name, start, increment);
  made("sequence");
}

void Interpreter::createSynonym() {
  const ObjectName name = localName(readObjectName(reader_));
  reader_.expectWord("FOR");
  readObjectName(reader_);
  if (!act()) return;
  changes().createPlain(name, "SN");
  made("synonym");
}

void Interpreter::createDatabase() {
  reader_.next();
  const std::string name = reader_.expectIdentifier();
  reader_.moveTo(structure_.plainEnd(statementStart_, limit_));
  if (!act()) return;
  if (listener_) {
    if (!listener_->useDatabase(name)) notUnderstood("CREATE DATABASE isn't carried out here");
    withoutEffect();
    return;
  }
  sqlite::Database fresh(fileForNewDatabase(session_.open(), name), sqlite::OpenMode::Create);
  Catalogue::createStorage(fresh);
}

void Interpreter::useStatement() {
  reader_.next();
  const std::string name = reader_.expectIdentifier();
  if (!act()) return;
  if (listener_) {
    if (!listener_->useDatabase(name)) notUnderstood("USE of another database isn't carried out here");
    withoutEffect();
    if (!isSystemDatabase(name)) state_.usedNames.insert(lowerCase(name));
    return;
  }
  const OpenDatabase& open = session_.open();
  if (equalNoCase(name, open.facts.database)) return;
  const auto unknown = [&] {
    refuse("Database '" + name + "' does not exist. Make sure that the name is entered correctly.");
  };
  if (open.sibling) {
    auto other = open.sibling(name);
    if (!other) unknown();
    session_.moveTo(std::move(other));
    catalogue_ = &session_.open().catalogue;
    database_ = &session_.open().database;
    return;
  }
  const auto file = findDatabaseFile(open.facts.folder, name);
  if (file.empty()) unknown();
  ServerFacts facts = open.facts;
  facts.database = file.stem().string();
  const auto mode = open.database.readOnly() ? sqlite::OpenMode::ReadOnly : sqlite::OpenMode::ReadWrite;
  session_.moveTo(std::make_shared<OpenDatabase>(file, facts, catalogue_->serverMajor(), mode));
  catalogue_ = &session_.open().catalogue;
  database_ = &session_.open().database;
}

void Interpreter::dropStatement() {
  reader_.next();
  const Token& word = reader_.next();
  bool ifExists = false;
  if (reader_.peek().is("IF") && reader_.peek(1).is("EXISTS")) {
    reader_.next();
    reader_.next();
    ifExists = true;
  }
  if (word.is("INDEX")) return dropIndexes(ifExists);
  if (word.is("DATABASE")) return dropDatabases(ifExists);
  if (word.is("USER") || word.is("LOGIN") || word.is("ROLE") || word.is("STATISTICS")) return skipWithoutEffect();
  const DropKind* kind = dropKind(word);
  if (!kind && !word.is("SCHEMA") && !word.is("TYPE"))
    notUnderstood("DROP " + upperCase(word.raw) + " isn't carried out");
  std::vector<ObjectName> names;
  do {
    names.push_back(localName(readObjectName(reader_)));
  } while (reader_.acceptSymbol(","));
  if (reader_.acceptWord("ON"))
    reader_.moveTo(structure_.plainEnd(statementStart_, limit_));  // DROP TRIGGER ... ON DATABASE
  if (!act()) return;
  std::optional<DataError> first;  // the others are dropped all the same
  for (const ObjectName& name : names) {
    try {
      atomically([&] {
        if (kind) {
          const auto found = catalogue_->find(name.schema, name.name);
          if (found || !ifExists) changes().dropObject(name, kind->xtypes);
        } else if (word.is("SCHEMA")) {
          if (catalogue_->schemaExists(name.name) || !ifExists) changes().dropSchema(name.name);
        } else if (!ifExists || catalogue_->aliasType(name.schema, name.name) ||
                   catalogue_->find(name.schema, name.name)) {
          changes().dropType(name);
        }
      });
    } catch (const DataError& error) {
      if (!first) first = error;
    }
  }
  schemaChanged();
  if (first) throw DataError(*first);
}

// DROP INDEX name ON table, ... and DROP INDEX table.name, ...
void Interpreter::dropIndexes(bool ifExists) {
  std::vector<std::pair<ObjectName, std::string>> indexes;
  do {
    ObjectName name = readObjectName(reader_);
    const std::string index = name.name;
    if (reader_.acceptWord("ON")) {
      name = readObjectName(reader_);
    } else {
      if (name.schema.empty()) notUnderstood("DROP INDEX without its table");
      name = {"", name.server, name.database, name.schema};
    }
    if (reader_.peek().is("WITH") && reader_.peek(1).isSymbol("(")) {
      reader_.next();
      reader_.skipParentheses();
    }
    indexes.emplace_back(localName(name), index);
  } while (reader_.acceptSymbol(","));
  if (!act()) return;
  for (const auto& [table, index] : indexes) {
    if (ifExists) {
      const auto found = catalogue_->table(table.schema, table.name);
      if (!found) continue;
      auto& query = database_->cached("select 1 from cat_indexes where object_id = ?1 and name = ?2");
      const bool there = query.bind(1, found->id).bind(2, index).step();
      query.reset();
      if (!there) continue;
    }
    atomically([&, &on = table, &name = index] { changes().dropIndex(on, name); });
  }
  schemaChanged();
}

void Interpreter::dropDatabases(bool ifExists) {
  std::vector<std::string> names;
  do {
    names.push_back(reader_.expectIdentifier());
  } while (reader_.acceptSymbol(","));
  if (!act()) return;
  for (const std::string& name : names) {
    if (listener_) {
      if (!listener_->useDatabase(name)) notUnderstood("DROP DATABASE isn't carried out here");
      withoutEffect();
      continue;
    }
    const auto file = findDatabaseFile(session_.open().facts.folder, name);
    if (file.empty()) {
      if (ifExists) continue;
      refuse("Cannot drop the database '" + name + "', because it does not exist or you do not have permission.");
    }
    if (isSystemDatabase(name)) refuse("Cannot drop the database '" + name + "' because it is a system database.");
    if (equalNoCase(name, session_.open().facts.database))
      refuse("Cannot drop database \"" + name + "\" because it is currently in use.");
    std::filesystem::remove(file);
  }
}

// GRANT, DENY, REVOKE permission, ... [ON object] TO|FROM principal, ...
void Interpreter::permissionStatement() {
  const Token& verb = reader_.next();
  char state = verb.is("GRANT") ? 'G' : verb.is("DENY") ? 'D' : 'R';
  if (state == 'R' && reader_.acceptWord("GRANT")) {
    reader_.expectWord("OPTION");
    reader_.expectWord("FOR");
    state = 'G';  // the permission itself stays
  }
  std::vector<std::string> permissions;
  do {
    std::string words;
    while (reader_.peek().kind == TokenKind::Word && !reader_.peek().is("ON") && !reader_.peek().is("TO") &&
           !reader_.peek().is("FROM")) {
      words += (words.empty() ? "" : " ") + upperCase(reader_.next().raw);
    }
    if (words == "EXEC") words = "EXECUTE";
    if (words.empty()) notUnderstood("a permission is expected");
    if (reader_.peek().isSymbol("(")) notUnderstood("permissions on columns aren't kept");
    permissions.push_back(std::move(words));
  } while (reader_.acceptSymbol(","));
  std::optional<ObjectName> object;
  if (reader_.acceptWord("ON")) {
    if (reader_.peek(1).isSymbol("::")) {
      if (!reader_.peek().is("OBJECT"))
        notUnderstood("permissions on a " + lowerCase(reader_.peek().raw) + " aren't kept");
      reader_.next();
      reader_.next();
    }
    object = localName(readObjectName(reader_));
    if (reader_.peek().isSymbol("(")) notUnderstood("permissions on columns aren't kept");
  }
  if (!reader_.acceptWord("TO")) reader_.expectWord("FROM");
  std::vector<std::string> grantees;
  do {
    grantees.push_back(reader_.expectIdentifier());
  } while (reader_.acceptSymbol(","));
  if (reader_.peek().is("WITH") && reader_.peek(1).is("GRANT")) {
    for (int i = 0; i < 3; ++i) reader_.next();
    if (state == 'G') state = 'W';
  }
  reader_.acceptWord("CASCADE");
  if (reader_.acceptWord("AS")) reader_.expectIdentifier();
  if (!act()) return;
  if (permissions.size() == 1 && (permissions[0] == "ALL" || permissions[0] == "ALL PRIVILEGES")) {
    if (!object) refuse("ALL needs an object.");
    const auto found = catalogue_->find(object->schema, object->name);
    const bool runs = found && (found->xtype == "P" || found->xtype == "FN");
    permissions = runs ? std::vector<std::string>{"EXECUTE"}
                       : std::vector<std::string>{"SELECT", "INSERT", "UPDATE", "DELETE", "REFERENCES"};
  }
  atomically([&] {
    for (const std::string& grantee : grantees)
      for (const std::string& permission : permissions)
        changes().setPermission(state, permission, object ? &*object : nullptr, grantee);
  });
}

void Interpreter::beginTransaction() {
  reader_.next();
  reader_.acceptWord("DISTRIBUTED");
  if (!reader_.acceptWord("TRAN")) reader_.expectWord("TRANSACTION");
  const Token& name = reader_.peek();
  if ((name.isIdentifier() || name.kind == TokenKind::Variable) && !name.firstOnLine && !startsStatement(name))
    reader_.next();
  if (reader_.peek().is("WITH") && reader_.peek(1).is("MARK")) {
    reader_.next();
    reader_.next();
    if (reader_.peek().kind == TokenKind::String) reader_.next();
  }
  if (!act()) return;
  ++state_.changes;
  if (state_.transactions++ == 0) {
    database_->execute("savepoint q_transaction");
    state_.insertedAtBegin = state_.inserted;
  }
  setGlobal("@@trancount", state_.transactions);
}

void Interpreter::transactionStatement() {
  const Token& verb = reader_.next();
  if (!reader_.acceptWord("TRAN") && !reader_.acceptWord("TRANSACTION")) reader_.acceptWord("WORK");
  const Token& next = reader_.peek();
  std::string name;
  if ((next.isIdentifier() || next.kind == TokenKind::Variable) && !next.firstOnLine && !startsStatement(next))
    name = reader_.next().name();
  if (reader_.peek().is("WITH") && reader_.peek(1).isSymbol("(")) {
    reader_.next();
    reader_.skipParentheses();
  }
  if (!act()) return;
  const std::string saved = quoteName("q_saved_" + lowerCase(name));
  if (verb.is("SAVE")) {
    if (state_.transactions == 0) refuse("Cannot issue SAVE TRANSACTION when there is no active transaction.");
    database_->execute("savepoint " + saved);
    state_.saved.insert(lowerCase(name));
    return;
  }
  if (verb.is("ROLLBACK") && state_.saved.count(lowerCase(name)) != 0) {
    database_->execute("rollback to " + saved);
    schemaChanged();
    return;
  }
  if (state_.transactions == 0) {
    refuse("The " + upperCase(verb.raw) + " TRANSACTION request has no corresponding BEGIN TRANSACTION.");
  }
  if (verb.is("ROLLBACK")) {
    database_->execute("rollback to q_transaction; release q_transaction");
    state_.inserted = state_.insertedAtBegin;
    state_.transactions = 0;
    schemaChanged();
  } else if (--state_.transactions == 0) {
    database_->execute("release q_transaction");
  }
  if (state_.transactions == 0) state_.saved.clear();
  setGlobal("@@trancount", state_.transactions);
}

}  // namespace qrel::tsql
