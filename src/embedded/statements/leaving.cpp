#include "embedded/statements/leaving.h"

#include "embedded/language/refusal.h"
#include "platform/text.h"

namespace qrel::tsql {

void leaveStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  const Token& word = reader.next();
  const Flow flow = word.is("BREAK") ? Flow::Break : word.is("CONTINUE") ? Flow::Continue : Flow::Return;
  std::string value;
  const Token& next = reader.peek();
  // A bracket on a line of its own begins a query: the next statement.
  const bool expression = next.kind == TokenKind::Number || next.kind == TokenKind::Variable || next.isSymbol("-") ||
                          (next.isSymbol("(") && !next.firstOnLine);
  if (flow == Flow::Return && expression) value = run.translator().expression();
  if (!run.act()) return;
  if (flow != Flow::Return && run.session.depths.loops == 0 && run.listener)
    refuse("Cannot use a " + upperCase(word.raw) + " statement outside the scope of a WHILE statement.");
  if (!value.empty()) run.answer.returnValue = static_cast<std::int32_t>(run.evaluate(value).integer);
  run.flow = flow;
}

// THROW [number, text, state]: the text ends, or its CATCH takes over.
void throwStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  std::string text;
  const Token& next = reader.peek();
  if (next.kind == TokenKind::Number || next.kind == TokenKind::Variable) {
    run.translator().expression();
    reader.expectSymbol(",");
    text = run.translator().expression();
    reader.expectSymbol(",");
    run.translator().expression();
  }
  if (!run.act()) return;
  const std::string message = text.empty() ? run.caught : run.evaluate(text).text;
  const bool inTry = run.session.depths.tries > 0;
  run.flow = inTry ? Flow::Throw : Flow::Abort;
  if (inTry) run.caught = message;
  run.fail(StatementRun::Kind::Failed, "THROW: " + message);
}

}  // namespace qrel::tsql
