#include "embedded/statements/drop.h"

#include <array>

#include "embedded/change/temporary.h"
#include "embedded/language/refusal.h"
#include "embedded/statements/databases.h"
#include "embedded/statements/definitions/principals.h"
#include "embedded/statements/definitions/storage.h"
#include "embedded/statements/noEffect.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

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

// DROP INDEX name ON table, ... and DROP INDEX table.name, ...
void dropIndexes(StatementRun& run, bool ifExists) {
  TokenReader& reader = run.reader;
  std::vector<std::pair<ObjectName, std::string>> indexes;
  do {
    ObjectName name = readObjectName(reader);
    const std::string index = name.name;
    if (reader.acceptWord("ON")) {
      name = readObjectName(reader);
    } else {
      if (name.schema.empty()) run.notUnderstood("DROP INDEX without its table");
      name = {"", name.server, name.database, name.schema};
    }
    if (reader.peek().is("WITH") && reader.peek(1).isSymbol("(")) {
      reader.next();
      reader.skipParentheses();
    }
    indexes.emplace_back(run.localName(name), index);
  } while (reader.acceptSymbol(","));
  if (!run.act()) return;
  for (const auto& [table, index] : indexes) {
    if (isTemporaryName(table.name)) {
      run.atomically([&, &on = table, &name = index] {
        TableDef def = temporaryDefinition(run.catalogue(), on.name);
        const auto gone = std::erase_if(def.indexes, [&](const auto& e) { return compareCollated(e.name, name) == 0; });
        if (gone == 0 && !ifExists)
          refuse("Cannot drop the index '" + on.name + "." + name +
                 "', because it does not exist or you do not have permission.");
        replaceTemporary(run.catalogue(), std::move(def));
      });
      continue;
    }
    if (ifExists) {
      const auto found = run.catalogue().find(table.schema, table.name);
      if (!found) continue;
      auto& query = run.database().cached("select 1 from cat_indexes where object_id = ?1 and name = ?2");
      const bool there = query.bind(1, found->id).bind(2, index).step();
      query.reset();
      if (!there) continue;
    }
    run.atomically([&, &on = table, &name = index] { run.changes().dropIndex(on, name); });
  }
  run.schemaChanged();
}

}  // namespace

void dropStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  const bool application = reader.peek().is("APPLICATION") && reader.peek(1).is("ROLE");
  if (application) reader.next();
  const Token& word = reader.next();
  bool ifExists = false;
  if (reader.peek().is("IF") && reader.peek(1).is("EXISTS")) {
    reader.next();
    reader.next();
    ifExists = true;
  }
  if (word.is("INDEX")) return dropIndexes(run, ifExists);
  if (word.is("USER") || word.is("ROLE")) return dropPrincipal(run, word.is("ROLE") && !application, ifExists);
  if (word.is("DATABASE")) return dropDatabases(run, ifExists);
  if (word.is("LOGIN")) return skipWithoutEffect(run);
  if (word.is("PARTITION")) return dropPartition(run);
  if (word.is("STATISTICS")) return dropStatistics(run);
  if (word.is("FULLTEXT")) return dropFullText(run);
  const DropKind* kind = dropKind(word);
  if (!kind && !word.is("SCHEMA") && !word.is("TYPE"))
    run.notUnderstood("DROP " + upperCase(word.raw) + " isn't carried out");
  std::vector<ObjectName> names;
  do {
    names.push_back(run.localName(readObjectName(reader)));
  } while (reader.acceptSymbol(","));
  if (reader.acceptWord("ON")) reader.moveTo(run.plainEnd());  // DROP TRIGGER ... ON DATABASE
  if (!run.act()) return;
  std::optional<DataError> first;  // the others are dropped all the same
  for (const ObjectName& name : names) {
    try {
      run.atomically([&] {
        if (isTemporaryName(name.name) && word.is("TABLE")) {
          if (!ifExists || run.catalogue().table("", name.name)) dropTemporary(run.catalogue(), name.name);
        } else if (kind) {
          const auto found = run.catalogue().find(name.schema, name.name);
          if (found || !ifExists) run.changes().dropObject(name, kind->xtypes);
        } else if (word.is("SCHEMA")) {
          if (run.catalogue().schemaExists(name.name) || !ifExists) run.changes().dropSchema(name.name);
        } else if (!ifExists || run.catalogue().aliasType(name.schema, name.name) ||
                   run.catalogue().tableType(name.schema, name.name)) {
          run.changes().dropType(name);
        }
      });
    } catch (const DataError& error) {
      if (!first) first = error;
    }
  }
  run.schemaChanged();
  if (first) throw DataError(*first);
}

}  // namespace qrel::tsql
