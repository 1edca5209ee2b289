#include "embedded/statements/cursors.h"

#include <algorithm>

#include "embedded/language/refusal.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// [GLOBAL] name, in lower case.
std::string cursorName(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.acceptWord("GLOBAL");
  if (reader.peek().kind != TokenKind::Variable) return lowerCase(reader.expectIdentifier());
  return lowerCase(reader.next().raw);
}

Cursor& cursorOf(StatementRun& run, const std::string& name) {
  if (name.starts_with('@')) run.notUnderstood("cursors in variables aren't kept");
  const auto found = run.memory.cursors.find(name);
  if (found != run.memory.cursors.end()) return found->second;
  if (run.memory.lostCursors.count(name) != 0) run.notUnderstood("the cursor " + name + " isn't kept");
  refuse("A cursor with the name '" + name + "' does not exist.");
}

// The row that FETCH goes to: -1 in front of the first, their number behind the last.
std::int64_t placeOf(const Cursor& cursor, std::string_view direction, std::int64_t number) {
  const auto size = static_cast<std::int64_t>(cursor.rows->size());
  number = std::clamp(number, -size - 1, size + 1);  // further is nowhere else, and can't be added
  std::int64_t at = cursor.at;
  if (direction == "NEXT") ++at;
  if (direction == "PRIOR") --at;
  if (direction == "FIRST") at = 0;
  if (direction == "LAST") at = size - 1;
  if (direction == "ABSOLUTE") at = number > 0 ? number - 1 : number < 0 ? size + number : -1;
  if (direction == "RELATIVE") at += number;
  return std::clamp<std::int64_t>(at, -1, size);
}

}  // namespace

// DECLARE name [INSENSITIVE] [SCROLL] CURSOR [options] FOR query [FOR READ ONLY | UPDATE [OF columns]], from the name
// on.
void declareCursor(StatementRun& run) {
  TokenReader& reader = run.reader;
  const std::string name = lowerCase(reader.expectIdentifier());
  if (run.running()) run.memory.lostCursors.insert(name);  // until it is understood
  Cursor cursor;
  while (reader.peek().is("INSENSITIVE") || reader.peek().is("SCROLL"))
    cursor.scroll = reader.next().is("SCROLL") || cursor.scroll;
  reader.expectWord("CURSOR");
  while (!reader.acceptWord("FOR")) {
    const Token& option = reader.peek();
    if (option.kind != TokenKind::Word) run.notUnderstood("a cursor's query is expected");
    cursor.scroll = cursor.scroll || option.is("SCROLL") || option.is("STATIC") || option.is("KEYSET");
    cursor.local = cursor.local || option.is("LOCAL");
    reader.next();
  }
  cursor.sql = run.translator().select();
  if (reader.acceptWord("FOR")) {
    if (reader.acceptWord("READ")) {
      reader.expectWord("ONLY");
    } else {
      reader.expectWord("UPDATE");
      if (reader.acceptWord("OF")) {
        do {
          readObjectName(reader);
        } while (reader.acceptSymbol(","));
      }
    }
  }
  if (!run.act()) return;
  run.memory.lostCursors.erase(name);
  if (run.memory.cursors.count(name) != 0) refuse("A cursor with the name '" + name + "' already exists.");
  cursor.variables = run.session.variables;
  for (const std::string& unknown : run.memory.unknown) cursor.variables.erase(unknown);
  run.memory.cursors[name] = std::move(cursor);
  ++run.memory.changes;
}

void openCursor(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  if (reader.peek().is("SYMMETRIC") || reader.peek().is("MASTER")) run.notUnderstood("keys aren't kept");
  const std::string name = cursorName(run);
  if (!run.act()) return;
  Cursor& cursor = cursorOf(run, name);
  if (cursor.rows) refuse("The cursor is already open.");
  auto rows = std::make_shared<std::vector<std::vector<Value>>>();
  sqlite::Statement query(run.database(), cursor.sql);
  bindVariables(query, cursor.variables);  // as they were at DECLARE
  const int columns = sqlite3_column_count(query.get());
  while (query.step()) {
    auto& row = rows->emplace_back();
    for (int i = 0; i < columns; ++i) row.push_back(valueOf(query, i));
  }
  run.setGlobal("@@cursor_rows", static_cast<std::int64_t>(rows->size()));
  cursor.rows = std::move(rows);
  cursor.at = -1;
  ++run.memory.changes;
}

// FETCH [NEXT | PRIOR | FIRST | LAST | ABSOLUTE n | RELATIVE n] [FROM] name [INTO @variables]
void fetchCursor(StatementRun& run) {
  TokenReader& reader = run.reader;
  if (run.running()) run.memory.unknown.insert("@@fetch_status");  // until it is known
  reader.next();
  std::string direction = "NEXT";
  std::string count;
  for (const char* word : {"NEXT", "PRIOR", "FIRST", "LAST", "ABSOLUTE", "RELATIVE"}) {
    if (!reader.peek().is(word) || reader.peek(1).is("INTO")) continue;
    direction = word;
    reader.next();
    if (direction == "ABSOLUTE" || direction == "RELATIVE") count = run.translator().expression();
    break;
  }
  reader.acceptWord("FROM");
  const std::string name = cursorName(run);
  std::vector<std::string> into;
  if (reader.acceptWord("INTO")) {
    do {
      if (reader.peek().kind != TokenKind::Variable) run.notUnderstood("a variable is expected");
      into.push_back(lowerCase(reader.next().raw));
    } while (reader.acceptSymbol(","));
  }
  if (!run.act()) return;
  Cursor& cursor = cursorOf(run, name);
  if (!cursor.rows) refuse("Cursor is not open.");
  if (direction != "NEXT" && !cursor.scroll)
    refuse("fetch: The fetch type " + direction + " cannot be used with forward only cursors.");
  const std::int64_t number = count.empty() ? 0 : run.evaluate(count).integer;
  const std::int64_t at = placeOf(cursor, direction, number);
  if (at != cursor.at) ++run.memory.changes;
  cursor.at = at;
  const bool there = at >= 0 && at < static_cast<std::int64_t>(cursor.rows->size());
  run.setGlobal("@@fetch_status", there ? 0 : -1);
  run.setGlobal("@@rowcount", there ? 1 : 0);
  if (!there || into.empty()) return;
  const std::vector<Value>& row = (*cursor.rows)[static_cast<std::size_t>(at)];
  if (row.size() != into.size()) {
    refuse("Cursorfetch: The number of variables declared in the INTO list must match that of selected columns.");
  }
  for (std::size_t i = 0; i < into.size(); ++i) run.assign(into[i], row[i]);
}

// CLOSE name, DEALLOCATE name
void closeCursor(StatementRun& run) {
  TokenReader& reader = run.reader;
  const bool deallocate = reader.next().is("DEALLOCATE");
  if (reader.peek().is("SYMMETRIC") || reader.peek().is("MASTER") || reader.peek().is("ALL"))
    run.notUnderstood("keys aren't kept");
  const std::string name = cursorName(run);
  if (!run.act()) return;
  Cursor& cursor = cursorOf(run, name);
  if (deallocate) {
    run.memory.cursors.erase(name);
  } else {
    if (!cursor.rows) refuse("Cursor is not open.");
    cursor.rows.reset();
  }
  ++run.memory.changes;
}

}  // namespace qrel::tsql
