#include "embedded/statements/objects.h"

#include <charconv>

#include "embedded/catalogue/typeNames.h"

namespace qrel::tsql {

void createSchema(StatementRun& run) {
  TokenReader& reader = run.reader;
  std::string name;
  if (!reader.peek().is("AUTHORIZATION")) name = reader.expectIdentifier();
  if (reader.acceptWord("AUTHORIZATION")) {
    const std::string owner = reader.expectIdentifier();
    if (name.empty()) name = owner;
  }
  if (!run.act()) return;
  run.changes().createSchema(name);
  run.made("schema");
}

void createType(StatementRun& run) {
  TokenReader& reader = run.reader;
  const ObjectName name = run.localName(readObjectName(reader));
  if (reader.acceptWord("AS")) {
    reader.expectWord("TABLE");
    reader.skipParentheses();
    if (reader.peek().is("WITH") && reader.peek(1).isSymbol("(")) {
      reader.next();
      reader.skipParentheses();
    }
    if (!run.act()) return;
    run.changes().createPlain(name, "TT");
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

void createSequence(StatementRun& run) {
  TokenReader& reader = run.reader;
  const ObjectName name = run.localName(readObjectName(reader));
  std::int64_t start = 1;
  std::int64_t increment = 1;
  const auto number = [&](std::int64_t& value) {
    const bool negative = reader.acceptSymbol("-");
    const std::string_view digits = reader.peek().raw;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec == std::errc()) reader.next();
    if (negative) value = -value;
  };
  Properties properties;
  const auto limit = [&](const char* property) {
    std::int64_t value = 0;
    number(value);
    properties.push_back({property, std::to_string(value)});
  };
  const std::size_t end = run.plainEnd();
  while (reader.position() < end) {
    if (reader.acceptWord("AS")) {
      const std::size_t begin = reader.position();
      readType(reader, &run.catalogue());
      properties.push_back({"type_name", std::string(reader.sourceBetween(begin, reader.position()))});
    } else if (reader.acceptWord("NO")) {
      const Token& what = reader.next();
      if (what.is("CACHE")) properties.push_back({"is_not_cached", "1"});
    } else if (reader.acceptWord("MINVALUE")) {
      limit("minimum_value");
    } else if (reader.acceptWord("MAXVALUE")) {
      limit("maximum_value");
    } else if (reader.acceptWord("CYCLE")) {
      properties.push_back({"is_cycling", "1"});
    } else if (reader.acceptWord("CACHE")) {
      if (reader.peek().kind == TokenKind::Number) limit("cache_size");
    } else if (reader.acceptWord("START")) {
      reader.acceptWord("WITH");
      number(start);
    } else if (reader.acceptWord("INCREMENT")) {
      reader.acceptWord("BY");
      number(increment);
    } else {
      reader.next();
    }
  }
  if (!run.act()) return;
  properties.push_back({"start_value", std::to_string(start)});
  run.changes().createSequence(name, start, increment, properties);
  run.made("sequence");
}

void createSynonym(StatementRun& run) {
  TokenReader& reader = run.reader;
  const ObjectName name = run.localName(readObjectName(reader));
  reader.expectWord("FOR");
  const std::size_t begin = reader.position();
  readObjectName(reader);
  const std::string base(reader.sourceBetween(begin, reader.position()));
  if (!run.act()) return;
  run.changes().createPlain(name, "SN", {{"base_object_name", base}});
  run.made("synonym");
}

}  // namespace qrel::tsql
