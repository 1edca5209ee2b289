#include "embedded/statements/query.h"

#include <algorithm>
#include <set>
#include <utility>

#include "embedded/run/rows.h"
#include "embedded/statements/selectInto.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Whether a query reads one of the variables that it sets, each of which it names as often as it sets them.
bool readsAssigned(const std::vector<Token>& tokens, std::size_t begin, std::size_t end,
                   const std::vector<std::string>& assigned) {
  std::size_t named = 0;
  for (std::size_t i = begin; i < end; ++i) {
    if (tokens[i].kind != TokenKind::Variable) continue;
    const bool isAssigned = std::find(assigned.begin(), assigned.end(), lowerCase(tokens[i].raw)) != assigned.end();
    const std::string_view sign = tokens[i + 1].raw;  // "+=" reads what it sets
    named += !isAssigned ? 0 : sign.size() == 2 && sign[1] == '=' ? 2 : 1;
  }
  return named > assigned.size();
}

// Whether an item of the list reads a variable that one before it sets: a server goes from left to right, SQLite sees
// what was there before the query.
bool readsSetBefore(const std::vector<Token>& tokens, std::size_t begin, std::size_t end) {
  std::set<std::string> set;
  std::string setHere;
  int depth = 0;
  for (std::size_t i = begin + 1; i < end && !(depth == 0 && tokens[i].is("FROM")); ++i) {
    if (tokens[i].isSymbol("(")) ++depth;
    if (tokens[i].isSymbol(")")) --depth;
    if (depth == 0 && tokens[i].isSymbol(",")) set.insert(std::exchange(setHere, {}));
    if (tokens[i].kind != TokenKind::Variable) continue;
    const std::string name = lowerCase(tokens[i].raw);
    const bool first = i == begin + 1 || (depth == 0 && tokens[i - 1].isSymbol(","));
    if (first) setHere = name;
    const bool isRead = !first || !tokens[i + 1].isSymbol("=");  // "+=" reads what it sets
    if (isRead && set.contains(name)) return true;
  }
  return false;
}

// @@ROWCOUNT of a query whose rows nobody reads: only where the text asks for it is the query carried out; elsewhere
// nobody knows.
void countSelected(StatementRun& run, const std::string& sql) {
  const auto& tokens = run.text.tokens;
  const bool asked = std::any_of(tokens.begin(), tokens.end(), [](const Token& token) {
    return token.kind == TokenKind::Variable && equalNoCase(token.raw, "@@rowcount");
  });
  if (!asked || run.memory.rowLimit) {
    run.memory.unknown.insert("@@rowcount");
    return;
  }
  sqlite::Statement rows(run.database(), sql);
  run.bind(rows);
  std::int64_t count = 0;
  while (rows.step()) ++count;
  run.setGlobal("@@rowcount", count);
}

}  // namespace

void selectStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  const std::size_t begin = reader.position();
  Translator query = run.translator();
  if (!query.atSelect()) run.notUnderstood("a query is expected");
  std::vector<std::string> assigned;
  IntoTable into;
  const std::string sql = query.select(&assigned, into);
  if (!run.act()) return;
  if (!into.table.name.empty()) return selectInto(run, sql, into);
  if (!assigned.empty()) {
    if (run.memory.rowLimit) run.notUnderstood("SET ROWCOUNT is in force");
    if (readsSetBefore(run.text.tokens, begin, reader.position()))
      run.notUnderstood("a variable that the same query sets can't be read in it");
    sqlite::Statement rows(run.database(), sql);
    run.bind(rows);
    std::vector<Value> last;
    std::int64_t count = 0;
    for (; rows.step(); ++count) {
      if (count == 1 && readsAssigned(run.text.tokens, begin, reader.position(), assigned))
        run.notUnderstood("a value gathered over several rows in a variable can't be had");
      last.clear();
      for (std::size_t i = 0; i < assigned.size(); ++i) last.push_back(sqlite::valueOf(rows, static_cast<int>(i)));
    }
    for (std::size_t i = 0; i < last.size(); ++i) run.assign(assigned[i], last[i]);
    run.setGlobal("@@rowcount", count);
  } else if (run.listener) {  // nobody reads the rows of a script's queries
    countSelected(run, sql);
  } else if (!run.answer.rows) {
    run.answer.rows = queryRows(run.open, sql, run.session.variables, reader.sourceBetween(begin, reader.position()));
  }
}

}  // namespace qrel::tsql
