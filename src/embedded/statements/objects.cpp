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
  const std::size_t end = run.plainEnd();
  while (reader.position() < end) {  // of the options only these two count
    if (reader.acceptWord("START")) {
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
  run.changes().createSequence(name, start, increment);
  run.made("sequence");
}

void createSynonym(StatementRun& run) {
  TokenReader& reader = run.reader;
  const ObjectName name = run.localName(readObjectName(reader));
  reader.expectWord("FOR");
  readObjectName(reader);
  if (!run.act()) return;
  run.changes().createPlain(name, "SN");
  run.made("synonym");
}

}  // namespace qrel::tsql
