#include "embedded/statements/messages.h"

#include <cctype>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qrel::tsql {

namespace {

// A value as a message shows it; where nobody knows it, as it is written.
std::string shown(const StatementRun& run, const TypedSql& value, std::string_view written) {
  try {
    const Value known = run.evaluate(value);
    if (known.null) return "(null)";
    return known.type == DataType::Boolean ? std::to_string(known.integer != 0 ? 1 : 0) : textOf(known.cell());
  } catch (const NotUnderstood&) {
  } catch (const DataError& error) {
    if (error.number == errorNumber::cancelled || error.number == errorNumber::cannotConnect) throw;
  }
  return std::string(written);
}

// "%s", "%d" and their like, with width and precision passed over, in the order of the arguments.
std::string formatted(const std::string& text, const std::vector<std::string>& arguments) {
  std::string out;
  std::size_t used = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      out += text[at];
      continue;
    }
    std::size_t end = at + 1;
    while (end < text.size() && std::string_view("-+0# .*123456789hlI").find(text[end]) != std::string_view::npos)
      ++end;
    const char kind = end < text.size() ? text[end] : '\0';
    if (kind == '%' && end == at + 1) {
      out += '%';
    } else if (kind != '\0' && std::string_view("sdiuoxX").find(kind) != std::string_view::npos) {
      out += used < arguments.size() ? arguments[used] : "(null)";
      ++used;
    } else {
      out += text[at];
      continue;
    }
    at = end;
  }
  return out;
}

// An expression with its text.
std::pair<TypedSql, std::string> readShown(StatementRun& run) {
  const std::size_t begin = run.reader.position();
  TypedSql value = run.translator().typedExpression();
  return {std::move(value), std::string(run.reader.sourceBetween(begin, run.reader.position()))};
}

}  // namespace

// PRINT expression.
void printStatement(StatementRun& run) {
  run.reader.next();
  const auto [value, written] = readShown(run);
  run.withoutEffect();
  if (!run.act()) return;
  const std::string text = shown(run, value, written);
  run.print(text == "(null)" ? "" : text);
}

// RAISERROR ('...', 16, 1, arguments) WITH NOWAIT, or the old RAISERROR 50001 'text'. From severity 11 on it is an
// error, below a message.
void raiserrorStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  std::pair<TypedSql, std::string> text;
  std::vector<std::pair<TypedSql, std::string>> arguments;
  std::string severity;
  if (reader.acceptSymbol("(")) {
    text = readShown(run);
    reader.expectSymbol(",");
    severity = run.translator().expression();
    while (reader.acceptSymbol(",")) arguments.push_back(readShown(run));
    reader.expectSymbol(")");
    if (reader.acceptWord("WITH")) {
      do {
        reader.expectIdentifier();
      } while (reader.acceptSymbol(","));
    }
  } else {
    run.translator().expression();
    reader.acceptSymbol(",");
    text = readShown(run);
  }
  run.withoutEffect();
  if (!run.act()) return;
  const Value level = severity.empty() ? Value::ofInteger(16) : run.evaluate(severity);
  std::vector<std::string> values;
  for (std::size_t i = 1; i < arguments.size(); ++i)  // behind the state
    values.push_back(shown(run, arguments[i].first, arguments[i].second));
  const std::string message = formatted(shown(run, text.first, text.second), values);
  if (!level.null && level.integer > 10)
    run.fail(StatementRun::Kind::Failed, "RAISERROR: " + message);
  else
    run.print(message);
}

}  // namespace qrel::tsql
