#include "embedded/statements/messages.h"

namespace qrel::tsql {

// PRINT expression.
void printStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  run.translator().expression();
  run.withoutEffect();
  run.act();
}

// RAISERROR ('...', 16, 1) WITH NOWAIT, or the old RAISERROR 50001 'text'. From severity 11 on it is an error.
void raiserrorStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  std::string text, severity;
  if (reader.acceptSymbol("(")) {
    text = run.translator().expression();
    reader.expectSymbol(",");
    severity = run.translator().expression();
    while (reader.acceptSymbol(",")) run.translator().expression();
    reader.expectSymbol(")");
    if (reader.acceptWord("WITH")) {
      do {
        reader.expectIdentifier();
      } while (reader.acceptSymbol(","));
    }
  } else {
    run.translator().expression();
    reader.acceptSymbol(",");
    text = run.translator().expression();
  }
  run.withoutEffect();
  if (!run.act()) return;
  const Value level = severity.empty() ? Value::ofInteger(16) : run.evaluate(severity);
  if (!level.null && level.integer > 10) run.fail(StatementRun::Kind::Failed, "RAISERROR: " + run.evaluate(text).text);
}

}  // namespace qrel::tsql
