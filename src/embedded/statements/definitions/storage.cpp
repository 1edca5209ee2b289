#include "embedded/statements/definitions/storage.h"

#include "embedded/catalogue/typeNames.h"
#include "embedded/statements/noEffect.h"
#include "embedded/statements/tableReader.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

Value constant(StatementRun& run) {
  const std::string sql = run.translator().expression();
  return run.executing ? run.evaluate(sql) : Value();
}

std::vector<std::string> namesInBrackets(TokenReader& reader) {
  std::vector<std::string> names;
  reader.expectSymbol("(");
  do names.push_back(reader.expectIdentifier());
  while (reader.acceptSymbol(","));
  reader.expectSymbol(")");
  return names;
}

void createPartitionFunction(StatementRun& run) {
  TokenReader& reader = run.reader;
  PartitionFunctionDef function;
  function.name = reader.expectIdentifier();
  reader.expectSymbol("(");
  function.type = readType(reader, &run.catalogue());
  if (reader.acceptWord("COLLATE")) reader.expectIdentifier();
  reader.expectSymbol(")");
  for (const char* word : {"AS", "RANGE"}) reader.expectWord(word);
  function.right = reader.acceptWord("RIGHT");
  if (!function.right) reader.acceptWord("LEFT");
  for (const char* word : {"FOR", "VALUES"}) reader.expectWord(word);
  reader.expectSymbol("(");
  if (!reader.peek().isSymbol(")")) {
    do function.boundaries.push_back(constant(run));
    while (reader.acceptSymbol(","));
  }
  reader.expectSymbol(")");
  if (!run.act()) return;
  run.atomically([&] { run.changes().createPartitionFunction(function); });
  run.made("partition function");
}

void createPartitionScheme(StatementRun& run) {
  TokenReader& reader = run.reader;
  const std::string name = reader.expectIdentifier();
  for (const char* word : {"AS", "PARTITION"}) reader.expectWord(word);
  const std::string function = reader.expectIdentifier();
  const bool all = reader.acceptWord("ALL");
  reader.expectWord("TO");
  const std::vector<std::string> filegroups = namesInBrackets(reader);
  if (!run.act()) return;
  run.atomically([&] { run.changes().createPartitionScheme(name, function, filegroups, all); });
  run.made("partition scheme");
}

void createFullTextCatalogue(StatementRun& run) {
  TokenReader& reader = run.reader;
  const std::string name = reader.expectIdentifier();
  Properties properties;
  for (;;) {
    if (reader.acceptWord("AS")) {
      reader.expectWord("DEFAULT");
      properties.push_back({"is_default", "1"});
    } else if (reader.peek().is("WITH") && reader.peek(1).is("ACCENT_SENSITIVITY")) {
      reader.next();
      reader.next();
      reader.expectSymbol("=");
      properties.push_back({"is_accent_insensitive", reader.next().is("OFF") ? "1" : ""});
    } else if ((reader.peek().is("ON") && reader.peek(1).is("FILEGROUP")) ||
               (reader.peek().is("IN") && reader.peek(1).is("PATH")) || reader.peek().is("AUTHORIZATION")) {
      run.notUnderstood("where a full-text catalog lies and whose it is isn't kept");
    } else {
      break;
    }
  }
  if (!run.act()) return;
  run.atomically([&] { run.changes().createFullTextCatalogue(name, properties); });
  run.made("fulltext catalog");
}

CatalogueChanges::FullTextColumn readFullTextColumn(TokenReader& reader) {
  CatalogueChanges::FullTextColumn column;
  column.name = reader.expectIdentifier();
  if (reader.acceptWord("TYPE")) {
    reader.expectWord("COLUMN");
    column.typeColumn = reader.expectIdentifier();
  }
  if (reader.acceptWord("LANGUAGE")) {
    const Token& language = reader.next();
    const bool english = equalNoCase(language.name(), "English") || equalNoCase(language.name(), "us_english");
    if (language.kind != TokenKind::Number && !english)
      throw NotUnderstood{"the language '" + std::string(language.name()) + "' by its name: its number is kept",
                          language.line};
    column.language = english ? "1033" : std::string(language.raw);
  }
  column.semantics = reader.acceptWord("STATISTICAL_SEMANTICS");
  return column;
}

// CHANGE_TRACKING and STOPLIST, with "=" or without; several of them in brackets.
void readFullTextOptions(StatementRun& run, Properties& properties) {
  TokenReader& reader = run.reader;
  if (!reader.acceptWord("WITH")) return;
  const bool list = reader.acceptSymbol("(");
  do {
    const Token& word = reader.next();
    reader.acceptSymbol("=");
    const Token& value = reader.next();
    if (word.is("CHANGE_TRACKING")) {
      properties.push_back({"fulltext_tracking", value.is("MANUAL") ? "M" : value.is("OFF") ? "O" : ""});
      if (value.is("OFF") && reader.acceptSymbol(",")) reader.expectWord("NO"), reader.expectWord("POPULATION");
    } else if (word.is("STOPLIST") && (value.is("OFF") || value.is("SYSTEM"))) {
      properties.push_back({"fulltext_stoplist", value.is("OFF") ? "-1" : ""});
    } else {
      run.notUnderstood("the full-text option " + upperCase(word.raw) + " " + std::string(value.raw) + " isn't kept");
    }
  } while (list && reader.acceptSymbol(","));
  if (list) reader.expectSymbol(")");
}

void createFullTextIndex(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.expectWord("ON");
  const ObjectName table = run.localName(readObjectName(reader));
  std::vector<CatalogueChanges::FullTextColumn> columns;
  if (reader.acceptSymbol("(")) {
    do columns.push_back(readFullTextColumn(reader));
    while (reader.acceptSymbol(","));
    reader.expectSymbol(")");
  }
  for (const char* word : {"KEY", "INDEX"}) reader.expectWord(word);
  const std::string key = reader.expectIdentifier();
  std::string catalogue;
  if (reader.acceptWord("ON")) {
    const bool list = reader.acceptSymbol("(");
    catalogue = reader.expectIdentifier();
    if (list && reader.acceptSymbol(",")) run.notUnderstood("the filegroup of a full-text index isn't kept");
    if (list) reader.expectSymbol(")");
  }
  Properties properties;
  readFullTextOptions(run, properties);
  if (!run.act()) return;
  run.atomically([&] { run.changes().createFullTextIndex(table, columns, key, catalogue, properties); });
  run.made("fulltext index");
}

}  // namespace

void createPartition(StatementRun& run) {
  run.reader.expectWord("PARTITION");
  if (run.reader.acceptWord("FUNCTION")) return createPartitionFunction(run);
  run.reader.expectWord("SCHEME");
  createPartitionScheme(run);
}

// ALTER PARTITION FUNCTION name() SPLIT | MERGE RANGE (value); ALTER PARTITION SCHEME name NEXT USED filegroup.
void alterPartition(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.expectWord("PARTITION");
  if (reader.acceptWord("SCHEME")) {
    const std::string name = reader.expectIdentifier();
    for (const char* word : {"NEXT", "USED"}) reader.expectWord(word);
    const std::string filegroup = reader.expectIdentifier();
    if (run.act()) run.changes().useNextFilegroup(name, filegroup);
    return;
  }
  reader.expectWord("FUNCTION");
  const std::string name = reader.expectIdentifier();
  reader.expectSymbol("(");
  reader.expectSymbol(")");
  const bool split = reader.acceptWord("SPLIT");
  if (!split) reader.expectWord("MERGE");
  reader.expectWord("RANGE");
  reader.expectSymbol("(");
  const Value boundary = constant(run);
  reader.expectSymbol(")");
  if (run.act()) run.atomically([&] { run.changes().alterPartitionFunction(name, boundary, split); });
}

// CREATE STATISTICS name ON table (column, ...) [WHERE ...] [WITH ...]
void createStatistics(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.expectWord("STATISTICS");
  IndexDef statistics;
  statistics.kind = KeyKind::Statistics;
  statistics.name = reader.expectIdentifier();
  reader.expectWord("ON");
  const ObjectName table = run.localName(readObjectName(reader));
  statistics.columns = namesInBrackets(reader);
  DdlReader ddl(reader, run.catalogue());
  ddl.filterOf(statistics);
  if (reader.acceptWord("WITH")) {
    do {
      const Token& word = reader.next();
      if (word.is("NORECOMPUTE")) statistics.properties.push_back({"no_recompute", "1"});
      if (reader.peek().kind == TokenKind::Number) {  // SAMPLE 10 PERCENT
        reader.next();
        reader.next();
      }
      if (!reader.acceptSymbol("=")) continue;
      if (reader.next().is("ON") && word.is("INCREMENTAL")) statistics.properties.push_back({"is_incremental", "1"});
    } while (reader.acceptSymbol(","));
  }
  if (!run.act()) return;
  run.atomically([&] { run.changes().addIndex(table, statistics); });
  run.made("statistics");
}

void createFullText(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.expectWord("FULLTEXT");
  if (reader.acceptWord("CATALOG")) return createFullTextCatalogue(run);
  if (reader.acceptWord("INDEX")) return createFullTextIndex(run);
  run.notUnderstood("CREATE FULLTEXT " + upperCase(reader.peek().raw) + " isn't kept");
}

void alterFullText(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.expectWord("FULLTEXT");
  if (!reader.peek().is("INDEX") || !reader.peek(1).is("ON"))
    run.notUnderstood("ALTER FULLTEXT " + upperCase(reader.peek().raw) + " isn't carried out");
  reader.next();
  reader.next();
  const ObjectName table = run.localName(readObjectName(reader));
  const Token& word = reader.next();
  if (!word.is("ENABLE") && !word.is("DISABLE"))
    run.notUnderstood("ALTER FULLTEXT INDEX with " + upperCase(word.raw) + " isn't carried out");
  if (run.act()) run.changes().setTableProperties(table, {{"fulltext_disabled", word.is("DISABLE") ? "1" : ""}});
}

void dropPartition(StatementRun& run) {
  const bool function = run.reader.acceptWord("FUNCTION");
  if (!function) run.reader.expectWord("SCHEME");
  const std::string name = run.reader.expectIdentifier();
  if (run.act()) run.atomically([&] { run.changes().dropEntity(function ? "PF" : "PS", name); });
}

void dropStatistics(StatementRun& run) {
  TokenReader& reader = run.reader;
  std::vector<ObjectName> names;
  do names.push_back(readObjectName(reader));
  while (reader.acceptSymbol(","));
  if (!run.act()) return;
  // The parts of "schema.table.statistics" were read as those of an object.
  for (const ObjectName& each : names)
    run.atomically([&] { run.changes().dropIndex({"", "", each.database, each.schema}, each.name); });
}

void dropFullText(StatementRun& run) {
  TokenReader& reader = run.reader;
  if (reader.acceptWord("CATALOG")) {
    const std::string name = reader.expectIdentifier();
    if (run.act()) run.atomically([&] { run.changes().dropEntity("FC", name); });
    return;
  }
  if (!reader.acceptWord("INDEX")) run.notUnderstood("DROP FULLTEXT " + upperCase(reader.peek().raw) + " isn't kept");
  reader.expectWord("ON");
  const ObjectName table = run.localName(readObjectName(reader));
  if (run.act()) run.changes().dropFullTextIndex(table);
}

void alterDatabase(StatementRun& run) {
  TokenReader& reader = run.reader;
  if (!reader.peek(2).is("ADD") || !reader.peek(3).is("FILEGROUP")) return skipWithoutEffect(run);
  reader.moveTo(reader.position() + 4);
  const std::string name = reader.expectIdentifier();
  if (reader.acceptWord("CONTAINS")) reader.next();
  if (run.act()) run.changes().createFilegroup(name);
}

}  // namespace qrel::tsql
