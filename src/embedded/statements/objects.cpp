#include "embedded/statements/objects.h"

#include <charconv>
#include <functional>

#include "embedded/catalogue/typeNames.h"
#include "embedded/statements/permissions.h"
#include "embedded/statements/tableReader.h"
#include "embedded/statements/tables.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// A table, view or permission within CREATE SCHEMA.
struct Element {
  std::size_t at = 0;  // its first token
  std::string what;
  std::function<void()> make;
};

bool atElement(const TokenReader& reader) {
  const Token& first = reader.peek();
  return first.is("GRANT") || first.is("DENY") || first.is("REVOKE") ||
         (first.is("CREATE") && (reader.peek(1).is("TABLE") || reader.peek(1).is("VIEW")));
}

Element readElement(StatementRun& run, const std::string& schema) {
  TokenReader& reader = run.reader;
  Element element;
  element.at = reader.position();
  if (!reader.peek().is("CREATE")) {
    element.what = "permission";
    element.make = readPermission(run);
    return element;
  }
  element.what = lowerCase(reader.peek(1).raw);
  reader.next();
  if (reader.next().is("TABLE")) {
    element.make = readTable(run, schema);
    return element;
  }
  ModuleDef view;
  view.name = run.keptName(readObjectName(reader));
  if (view.name.schema.empty()) view.name.schema = schema;
  view.xtype = "V";
  reader.moveTo(run.text.structure.guessEnd(element.at, run.limit));
  view.text = std::string(reader.sourceBetween(element.at, reader.position()));
  element.make = [&run, view] { run.changes().createModule(view, false); };
  return element;
}

}  // namespace

void createSchema(StatementRun& run) {
  TokenReader& reader = run.reader;
  std::string name, owner;
  if (!reader.peek().is("AUTHORIZATION")) name = reader.expectIdentifier();
  if (reader.acceptWord("AUTHORIZATION")) {
    owner = reader.expectIdentifier();
    if (name.empty()) name = owner;
  }
  // What follows without a semicolon is made in the schema, all of it or nothing.
  std::vector<Element> elements;
  while (atElement(reader)) elements.push_back(readElement(run, name));
  if (!run.act()) return;
  run.atomically([&] {
    run.changes().createSchema(name, owner);
    for (const Element& each : elements) each.make();
  });
  for (const Element& each : elements) {
    StatementOutcome outcome;
    outcome.kind = StatementRun::Kind::Made;
    outcome.what = each.what;
    outcome.line = run.text.lineOf(each.at);
    run.result.inside.push_back(std::move(outcome));
  }
  if (!elements.empty()) run.schemaChanged();
  run.made("schema");
}

void createType(StatementRun& run) {
  TokenReader& reader = run.reader;
  const ObjectName name = run.keptName(readObjectName(reader));
  if (reader.acceptWord("AS")) {
    reader.expectWord("TABLE");
    TableDef table;
    DdlReader ddl(reader, run.catalogue(), run.session.settings.ansiPadding);
    ddl.tableBody(table);
    if (!run.act()) return;
    ddl.checkPrimaryKey(table);
    run.atomically([&] { run.changes().createTableType(name, table); });
    for (const DdlReader::NotKept& each : ddl.notKept) run.notKept(each.reason, each.token - 1);
  } else {
    reader.expectWord("FROM");
    const TypeRef base = readType(reader, &run.catalogue());
    bool nullable = true;
    if (reader.peek().is("NOT") && reader.peek(1).is("NULL")) {
      reader.next();
      nullable = false;
    }
    if (!nullable || reader.peek().is("NULL")) reader.next();
    if (!run.act()) return;
    run.changes().createAliasType(name, base, nullable);
  }
  run.made("type");
}

namespace {

struct SequenceOptions {
  std::optional<std::int64_t> start, increment;
  bool restart = false;
  std::optional<std::int64_t> restartWith;
  Properties properties;
};

std::optional<std::int64_t> wholeNumber(TokenReader& reader) {
  const bool negative = reader.acceptSymbol("-");
  const std::string_view digits = reader.peek().raw;
  std::int64_t value = 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec != std::errc()) return {};
  reader.next();
  return negative ? -value : value;
}

// What follows a sequence's name in CREATE and ALTER.
SequenceOptions sequenceOptions(StatementRun& run) {
  TokenReader& reader = run.reader;
  SequenceOptions options;
  const auto limit = [&](const char* property) {
    options.properties.push_back({property, std::to_string(wholeNumber(reader).value_or(0))});
  };
  const std::size_t end = run.plainEnd();
  while (reader.position() < end) {
    if (reader.acceptWord("AS")) {
      const std::size_t begin = reader.position();
      readType(reader, &run.catalogue());
      options.properties.push_back({"type_name", std::string(reader.sourceBetween(begin, reader.position()))});
    } else if (reader.acceptWord("NO")) {
      const Token& what = reader.next();
      if (what.is("CACHE")) options.properties.push_back({"is_not_cached", "1"});
      if (what.is("CYCLE")) options.properties.push_back({"is_cycling", ""});
      if (what.is("MINVALUE")) options.properties.push_back({"minimum_value", ""});
      if (what.is("MAXVALUE")) options.properties.push_back({"maximum_value", ""});
    } else if (reader.acceptWord("MINVALUE")) {
      limit("minimum_value");
    } else if (reader.acceptWord("MAXVALUE")) {
      limit("maximum_value");
    } else if (reader.acceptWord("CYCLE")) {
      options.properties.push_back({"is_cycling", "1"});
    } else if (reader.acceptWord("CACHE")) {
      options.properties.push_back({"is_not_cached", ""});
      if (reader.peek().kind == TokenKind::Number) limit("cache_size");
    } else if (reader.acceptWord("START")) {
      reader.acceptWord("WITH");
      options.start = wholeNumber(reader);
    } else if (reader.acceptWord("RESTART")) {
      options.restart = true;
      if (reader.acceptWord("WITH")) options.restartWith = wholeNumber(reader);
    } else if (reader.acceptWord("INCREMENT")) {
      reader.acceptWord("BY");
      options.increment = wholeNumber(reader);
    } else {
      reader.next();
    }
  }
  return options;
}

}  // namespace

void createSequence(StatementRun& run) {
  const ObjectName name = run.keptName(readObjectName(run.reader));
  SequenceOptions options = sequenceOptions(run);
  if (!run.act()) return;
  const std::int64_t start = options.start.value_or(1);
  options.properties.push_back({"start_value", std::to_string(start)});
  run.changes().createSequence(name, start, options.increment.value_or(1), options.properties);
  run.made("sequence");
}

void alterSequence(StatementRun& run) {
  const ObjectName name = run.keptName(readObjectName(run.reader));
  const SequenceOptions options = sequenceOptions(run);
  if (options.start) refuse("Argument 'START WITH' cannot be used in an ALTER SEQUENCE statement.");
  if (!run.act()) return;
  run.atomically([&] {
    run.changes().alterSequence(name, options.restart, options.restartWith, options.increment, options.properties);
  });
}

// SCHEMA name TRANSFER [OBJECT::|TYPE::] object
void transferToSchema(StatementRun& run) {
  TokenReader& reader = run.reader;
  const std::string schema = reader.expectIdentifier();
  reader.expectWord("TRANSFER");
  bool type = false;
  if (reader.peek().is("XML")) run.notUnderstood("XML schema collections aren't moved");
  if (reader.peek(1).isSymbol(":") || reader.peek(1).isSymbol("::")) {
    type = reader.peek().is("TYPE");
    if (!type && !reader.peek().is("OBJECT")) run.notUnderstood("only objects and types are moved");
    reader.next();
    while (reader.acceptSymbol(":") || reader.acceptSymbol("::")) {
    }
  }
  const ObjectName name = run.keptName(readObjectName(reader));
  if (!run.act()) return;
  run.atomically([&] {
    if (type)
      run.changes().transferType(name, schema);
    else
      run.changes().transferObject(name, schema);
  });
  run.schemaChanged();
}

void createSynonym(StatementRun& run) {
  TokenReader& reader = run.reader;
  const ObjectName name = run.keptName(readObjectName(reader));
  reader.expectWord("FOR");
  const std::size_t begin = reader.position();
  readObjectName(reader);
  const std::string base(reader.sourceBetween(begin, reader.position()));
  if (!run.act()) return;
  run.changes().createPlain(name, "SN", {{"base_object_name", base}});
  run.made("synonym");
}

}  // namespace qrel::tsql
