#include "embedded/statements/create.h"

#include <array>

#include "embedded/statements/databases.h"
#include "embedded/statements/definitions/principals.h"
#include "embedded/statements/definitions/storage.h"
#include "embedded/statements/modules.h"
#include "embedded/statements/noEffect.h"
#include "embedded/statements/objects.h"
#include "embedded/statements/tables.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool isWithoutEffect(const Token& token) {
  // Of the server, not of a database.
  static constexpr std::array<std::string_view, 7> words{"LOGIN",    "CREDENTIAL", "MASTER",  "SERVER",
                                                         "ENDPOINT", "EVENT",      "DATABASE"};
  for (const std::string_view word : words)
    if (token.is(word)) return true;
  return false;
}

}  // namespace

void createStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  if (run.text.structure.isModuleAt(reader.position())) return moduleStatement(run);
  reader.next();
  const Token& word = reader.peek();
  if (reader.acceptWord("TABLE")) {
    createTable(run);
  } else if (word.is("UNIQUE") || word.is("CLUSTERED") || word.is("NONCLUSTERED") || word.is("INDEX") ||
             word.is("COLUMNSTORE") || word.is("SPATIAL") || word.is("PRIMARY") ||
             (word.is("XML") && reader.peek(1).is("INDEX"))) {
    createIndex(run);
  } else if (reader.acceptWord("SCHEMA")) {
    createSchema(run);
  } else if (reader.acceptWord("TYPE")) {
    createType(run);
  } else if (reader.acceptWord("SEQUENCE")) {
    createSequence(run);
  } else if (reader.acceptWord("SYNONYM")) {
    createSynonym(run);
  } else if (word.is("DATABASE") && reader.peek(1).isIdentifier() && !reader.peek(1).is("AUDIT")) {
    createDatabase(run);
  } else if (atPrincipal(reader)) {
    createPrincipal(run);
  } else if (word.is("PARTITION")) {
    createPartition(run);
  } else if (word.is("STATISTICS")) {
    createStatistics(run);
  } else if (word.is("FULLTEXT")) {
    createFullText(run);
  } else if (isWithoutEffect(word)) {
    skipWithoutEffect(run);
  } else if (reader.peek(1).is("INDEX") || (reader.peek(1).is("XML") && reader.peek(2).is("INDEX"))) {
    run.notUnderstood(lowerCase(word.raw) + " indexes aren't kept");
  } else {
    run.notUnderstood("CREATE " + upperCase(word.raw) + " isn't kept");
  }
}

void alterStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  if (run.text.structure.isModuleAt(reader.position())) return moduleStatement(run);
  reader.next();
  const Token& word = reader.peek();
  if (reader.acceptWord("TABLE")) {
    alterTable(run);
  } else if (reader.acceptWord("SCHEMA")) {
    transferToSchema(run);
  } else if (reader.acceptWord("SEQUENCE")) {
    alterSequence(run);
  } else if (reader.acceptWord("INDEX")) {
    alterIndex(run);
  } else if (atPrincipal(reader)) {
    alterPrincipal(run);
  } else if (word.is("AUTHORIZATION")) {
    alterAuthorization(run);
  } else if (word.is("PARTITION")) {
    alterPartition(run);
  } else if (word.is("FULLTEXT")) {
    alterFullText(run);
  } else if (word.is("DATABASE")) {
    alterDatabase(run);
  } else if (isWithoutEffect(word)) {
    skipWithoutEffect(run);
  } else {
    run.notUnderstood("ALTER " + upperCase(word.raw) + " isn't carried out");
  }
}

}  // namespace qrel::tsql
