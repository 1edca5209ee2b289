#include "embedded/statements/variables.h"

#include "embedded/catalogue/typeNames.h"
#include "embedded/statements/cursors.h"
#include "embedded/statements/options.h"
#include "embedded/statements/tables.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

void declareVariable(StatementRun& run) {
  TokenReader& reader = run.reader;
  if (reader.peek().kind != TokenKind::Variable) run.notUnderstood("a variable is expected");
  const std::string name = lowerCase(reader.next().raw);
  reader.acceptWord("AS");
  if (reader.peek().is("TABLE")) return declareTable(run, variableMark + name);
  if (reader.peek().is("CURSOR")) run.notUnderstood("cursors in variables aren't kept");
  TypeRef type = readType(reader, &run.catalogue());
  // In a loop it is declared once, and keeps its value.
  if (run.session.variableTypes.insert_or_assign(name, std::move(type)).second) run.session.variables[name] = Value();
  if (!reader.acceptSymbol("=")) return;
  if (run.running()) run.memory.unknown.insert(name);  // until it has its value
  const TypedSql value = run.translator().typedExpression();
  if (run.running()) run.assign(name, run.evaluate(value));
}

}  // namespace

void declareStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  if (reader.peek().kind != TokenKind::Variable) return declareCursor(run);
  do {
    declareVariable(run);
  } while (reader.acceptSymbol(","));
  run.act();
}

void setStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  if (reader.peek().kind != TokenKind::Variable) return setOption(run);
  const Token& variable = reader.next();
  const TypedSql value = run.translator().newValue(variable);
  if (run.act()) run.assign(std::string(variable.raw), run.evaluate(value));
}

}  // namespace qrel::tsql
