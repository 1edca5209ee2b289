#include "embedded/statements/options.h"

#include <algorithm>

#include "embedded/language/words.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// What objects remember of the session that they were made in.
void keepSetting(SessionSettings& settings, const std::string& option, bool on) {
  if (option == "QUOTED_IDENTIFIER") settings.quotedIdentifier = on;
  if (option == "ANSI_NULLS") settings.ansiNulls = on;
  if (option == "ANSI_PADDING") settings.ansiPadding = on;
  if (option == "ANSI_DEFAULTS") settings = {on, on, on};
}

// The value of an option, with those options that change what is run or read.
void setRunOption(StatementRun& run, const std::string& option) {
  TokenReader& reader = run.reader;
  const bool negative = reader.acceptSymbol("-");
  const Token& value = reader.peek();
  if (value.kind == TokenKind::End || value.kind == TokenKind::Symbol || startsStatement(value))
    run.notUnderstood("the option's value is expected");
  reader.next();
  if (!run.act()) return;
  const auto only = [&](std::initializer_list<std::string_view> harmless) {
    for (const std::string_view each : harmless)
      if (equalNoCase(value.name(), each)) return;
    run.notUnderstood("SET " + option + " " + std::string(value.raw) + " isn't carried out");
  };
  if (option == "NOEXEC" || option == "PARSEONLY" || option == "FMTONLY") run.memory.noExec = value.is("ON");
  if (option == "DATEFORMAT") only({"mdy"});
  if (option == "DATEFIRST") only({"7"});
  if (option == "LANGUAGE") only({"us_english", "English"});
  if (option == "IMPLICIT_TRANSACTIONS") only({"OFF"});
  if (option != "ROWCOUNT") return;
  run.memory.rowLimit = value.raw != "0" || negative;
  only({"0"});
}

}  // namespace

void setOption(StatementRun& run) {
  TokenReader& reader = run.reader;
  if (reader.acceptWord("IDENTITY_INSERT")) {
    const ObjectName name = run.localName(readObjectName(reader));
    const bool on = reader.acceptWord("ON");
    if (!on) reader.expectWord("OFF");
    if (!run.act()) return;
    const auto table = run.requireTable(name);
    if (std::none_of(table->columns.begin(), table->columns.end(), [](const auto& each) { return each.identity; })) {
      throw DataError(errorNumber::badSql,
                      "Table '" + table->name + "' does not have the identity property. Cannot perform SET operation.",
                      "42000");
    }
    run.memory.identityInsert = on ? table->storage : "";
    run.memory.plans.clear();
    return;
  }
  run.withoutEffect();
  if (reader.acceptWord("TRANSACTION")) {  // ISOLATION LEVEL READ COMMITTED and so on
    while (reader.peek().kind == TokenKind::Word && !startsStatement(reader.peek())) reader.next();
    run.act();
    return;
  }
  reader.acceptWord("STATISTICS");
  std::vector<std::string> options;
  do {
    options.push_back(upperCase(reader.expectIdentifier()));
  } while (reader.acceptSymbol(","));
  reader.acceptSymbol("=");
  const bool on = reader.peek().is("ON");
  setRunOption(run, options.back());
  if (!run.running()) return;
  for (const std::string& option : options) keepSetting(run.session.settings, option, on);
}

}  // namespace qrel::tsql
