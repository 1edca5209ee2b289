#include "embedded/statements/noEffect.h"

#include <algorithm>
#include <optional>

#include "embedded/language/refusal.h"
#include "embedded/statements/columnValues.h"
#include "platform/text.h"

namespace qrel::tsql {

void skipWithoutEffect(StatementRun& run) {
  run.reader.moveTo(run.plainEnd());
  run.withoutEffect();
  run.act();
}

void switchTrigger(StatementRun& run) {
  TokenReader& reader = run.reader;
  if (!reader.peek(1).is("TRIGGER")) run.notUnderstood("unknown statement");
  const bool enabled = reader.next().is("ENABLE");
  reader.next();
  std::vector<std::string> names;
  if (!reader.acceptWord("ALL")) {
    do {
      names.push_back(run.localName(readObjectName(reader)).name);
    } while (reader.acceptSymbol(","));
  }
  reader.expectWord("ON");
  // Triggers of databases and servers aren't kept, and were told when they were made.
  if (reader.peek().is("DATABASE") || reader.peek().is("ALL")) return skipWithoutEffect(run);
  const ObjectName table = run.localName(readObjectName(reader));
  if (!run.act()) return;
  run.atomically([&] { run.changes().switchTriggers(table, names, enabled); });
}

namespace {

// CHECKIDENT (table, RESEED [, number]), with RESEED at a token. Without a number the count is brought up to the rows,
// where it always is.
void reseed(StatementRun& run, std::size_t at) {
  TokenReader& reader = run.reader;
  const Token& named = run.text.tokens[run.start + 3];
  const std::string text(named.name());
  const auto tokens = lex(text);
  TokenReader nameReader(text, tokens);
  ObjectName name;
  if (named.kind == TokenKind::String) {
    name = readObjectName(nameReader);
  } else {
    reader.moveTo(run.start + 3);
    name = readObjectName(reader);
  }
  name = run.localName(name);
  reader.moveTo(at + 1);
  std::optional<std::string> number;
  if (reader.acceptSymbol(",")) number = run.translator().expression();
  reader.expectSymbol(")");
  if (reader.acceptWord("WITH")) reader.expectIdentifier();
  if (!run.act() || !number) return;
  const auto table = run.requireTable(name);
  const auto column =
      std::find_if(table->columns.begin(), table->columns.end(), [](const auto& each) { return each.identity; });
  if (column == table->columns.end()) refuse("'" + name.name + "' does not contain an identity column.");
  const std::int64_t value = run.evaluate(*number).integer;
  std::int64_t& last = lastIdentity(run, *table, *column);
  // Where no row has been there yet, the first one gets the number itself.
  const bool none = last == column->identitySeed - column->identityIncrement;
  last = none ? value - column->identityIncrement : value;
}

}  // namespace

// What only looks or tidies up has no effect here.
void dbccStatement(StatementRun& run) {
  if (run.reader.peek(1).is("CHECKIDENT")) {
    for (std::size_t i = run.start; i < run.plainEnd(); ++i)
      if (run.text.tokens[i].is("RESEED")) return reseed(run, i);
  }
  skipWithoutEffect(run);
}

void strayEnd(StatementRun& run) {
  run.reader.next();
  run.wasRead = true;  // the word alone: what follows is read as it is written
  run.notUnderstood("END without its beginning");
}

void notCarriedOut(StatementRun& run) { run.notUnderstood(upperCase(run.reader.peek().raw) + " isn't carried out"); }

}  // namespace qrel::tsql
