#include "embedded/statements/exec.h"

#include <set>
#include <vector>

#include "embedded/catalogue/temporaryTables.h"
#include "embedded/language/refusal.h"
#include "embedded/language/words.h"
#include "embedded/statements/noEffect.h"
#include "embedded/statements/systemProcedures.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr int deepestNesting = 32;

// A literal, a variable or a word; the server takes no expression here.
Argument readArgument(StatementRun& run) {
  TokenReader& reader = run.reader;
  Argument argument;
  if (reader.peek().kind == TokenKind::Variable && reader.peek(1).isSymbol("=")) {
    argument.name = lowerCase(reader.next().raw);
    reader.next();
  }
  const Token& token = reader.peek();
  const std::string variable = token.kind == TokenKind::Variable ? lowerCase(token.raw) : "";
  if (token.is("NULL") || token.is("DEFAULT")) {
    reader.next();
  } else if (token.isIdentifier()) {
    if (startsStatement(token)) run.notUnderstood("an argument is expected");
    argument.value = Value::ofText(std::string(token.name()));
    reader.next();
  } else {
    const std::size_t begin = reader.position();
    const bool sign = token.isSymbol("-") || token.isSymbol("+");
    const std::string sql = run.translator().expression();
    if (reader.position() != begin + (sign ? 2 : 1)) {
      reader.moveTo(begin + 1);
      throw DataError(errorNumber::badSql, "Incorrect syntax near '" + std::string(reader.peek().raw) + "'.", "42000");
    }
    if (run.running()) argument.value = run.evaluate(sql);
  }
  if (reader.acceptWord("OUTPUT") || reader.acceptWord("OUT")) argument.output = variable;
  return argument;
}

// "a, @b = 1, N'c' OUTPUT": bare words are texts.
std::vector<Argument> readArguments(StatementRun& run) {
  TokenReader& reader = run.reader;
  std::vector<Argument> arguments;
  const Token& first = reader.peek();
  if (reader.position() >= run.limit || first.isSymbol(";") || startsStatement(first) || first.is("WITH") ||
      first.is("GO") || (first.kind == TokenKind::Symbol && !first.isSymbol("-") && !first.isSymbol("+")))
    return arguments;
  do {
    arguments.push_back(readArgument(run));
  } while (reader.acceptSymbol(","));
  return arguments;
}

}  // namespace

void execStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  const std::size_t line = run.text.lineOf(run.start);
  if (!reader.acceptWord("EXEC")) reader.acceptWord("EXECUTE");
  if (reader.acceptSymbol("(")) {
    const std::string sql = run.translator().expression();
    reader.expectSymbol(")");
    if (reader.peek().is("AT")) run.notUnderstood("another server");
    if (reader.peek().is("AS")) {  // USER = '...'
      for (int i = 0; i < 4; ++i) reader.next();
    }
    if (run.act()) execText(run, run.evaluate(sql).text, line);
    return;
  }
  if (reader.peek().is("AS")) return skipWithoutEffect(run);  // EXECUTE AS USER = '...'
  std::string result;
  if (reader.peek().kind == TokenKind::Variable) {
    if (!reader.peek(1).isSymbol("=")) run.notUnderstood("a procedure whose name stands in a variable");
    result = lowerCase(reader.next().raw);
    reader.next();
  }
  const ObjectName procedure = readObjectName(reader);
  if (reader.peek().isSymbol(";") && reader.peek(1).kind == TokenKind::Number) {  // one of a group
    reader.next();
    reader.next();
  }
  const std::vector<Argument> arguments = readArguments(run);
  if (reader.peek().is("WITH") && reader.peek(1).is("RECOMPILE")) {
    reader.next();
    reader.next();
  }
  if (!run.act()) return;
  runProcedure(run, procedure, arguments, line);
  if (!result.empty()) run.assign(result, Value::ofInteger(0));
}

void execText(StatementRun& run, const std::string& text, std::size_t line, std::map<std::string, Value> variables,
              std::map<std::string, TypeRef> types, const std::map<std::string, std::string>& outputs) {
  SessionState& session = run.session;
  if (session.depths.texts >= deepestNesting)
    refuse("Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32).");
  for (const auto& [name, value] : session.variables)
    if (name.starts_with("@@")) variables[name] = value;
  std::set<std::string> unknown;
  const auto exchange = [&] {
    std::swap(session.variables, variables);
    std::swap(session.variableTypes, types);
    std::swap(run.memory.unknown, unknown);
  };
  exchange();
  TemporaryTables& temporary = run.catalogue().temporary();
  temporary.enter();
  ++session.depths.texts;
  const auto leave = [&] {
    --session.depths.texts;
    temporary.leave(run.database());
    if (session.open != run.open) session.moveTo(run.open);  // the text's USE ends with it
    exchange();
    for (auto& [name, value] : variables)
      if (name.starts_with("@@")) session.variables[name] = value;
  };
  TextEnd end;
  try {
    end = run.texts.runText(text, line, run.result.inside);
  } catch (...) {
    leave();
    throw;
  }
  leave();
  if (end.flow == Flow::Stop || end.flow == Flow::Throw || end.flow == Flow::Abort) run.flow = end.flow;
  if (run.flow == Flow::Throw) run.caught = end.caught;
  for (const auto& [from, to] : outputs) {
    if (unknown.count(from) != 0)
      run.memory.unknown.insert(to);
    else
      run.assign(to, variables[from]);
  }
}

}  // namespace qrel::tsql
