#include "embedded/statements/noEffect.h"

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

// What only looks or tidies up has no effect here.
void dbccStatement(StatementRun& run) {
  if (run.reader.peek(1).is("CHECKIDENT")) {
    for (std::size_t i = run.start; i < run.plainEnd(); ++i)
      if (run.text.tokens[i].is("RESEED")) run.notUnderstood("DBCC CHECKIDENT with RESEED isn't carried out");
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
