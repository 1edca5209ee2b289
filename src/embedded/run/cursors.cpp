// Cursors: the rows of a query, read at OPEN and handed out one by one.
#include <algorithm>

#include "embedded/change/parts.h"
#include "embedded/run/interpreter.h"
#include "platform/text.h"

namespace qrel::tsql {

// DECLARE name [INSENSITIVE] [SCROLL] CURSOR [options] FOR query [FOR READ ONLY | UPDATE [OF columns]], from the name
// on.
void Interpreter::declareCursor() {
  const std::string name = lowerCase(reader_.expectIdentifier());
  if (running()) state_.lostCursors.insert(name);  // until it is understood
  Cursor cursor;
  while (reader_.peek().is("INSENSITIVE") || reader_.peek().is("SCROLL"))
    cursor.scroll = reader_.next().is("SCROLL") || cursor.scroll;
  reader_.expectWord("CURSOR");
  while (!reader_.acceptWord("FOR")) {
    const Token& option = reader_.peek();
    if (option.kind != TokenKind::Word) notUnderstood("a cursor's query is expected");
    cursor.scroll = cursor.scroll || option.is("SCROLL") || option.is("STATIC") || option.is("KEYSET");
    cursor.local = cursor.local || option.is("LOCAL");
    reader_.next();
  }
  cursor.sql = translator().select();
  if (reader_.acceptWord("FOR")) {
    if (reader_.acceptWord("READ")) {
      reader_.expectWord("ONLY");
    } else {
      reader_.expectWord("UPDATE");
      if (reader_.acceptWord("OF")) {
        do {
          readObjectName(reader_);
        } while (reader_.acceptSymbol(","));
      }
    }
  }
  if (!act()) return;
  state_.lostCursors.erase(name);
  if (state_.cursors.count(name) != 0) refuse("A cursor with the name '" + name + "' already exists.");
  cursor.variables = session_.variables;
  for (const std::string& unknown : state_.unknown) cursor.variables.erase(unknown);
  state_.cursors[name] = std::move(cursor);
  ++state_.changes;
}

// [GLOBAL] name, in lower case.
std::string Interpreter::cursorName() {
  reader_.acceptWord("GLOBAL");
  if (reader_.peek().kind != TokenKind::Variable) return lowerCase(reader_.expectIdentifier());
  return lowerCase(reader_.next().raw);
}

Cursor& Interpreter::cursorOf(const std::string& name) {
  if (name.starts_with('@')) notUnderstood("cursors in variables aren't kept");
  const auto found = state_.cursors.find(name);
  if (found != state_.cursors.end()) return found->second;
  if (state_.lostCursors.count(name) != 0) notUnderstood("the cursor " + name + " isn't kept");
  refuse("A cursor with the name '" + name + "' does not exist.");
}

void Interpreter::openCursor() {
  reader_.next();
  if (reader_.peek().is("SYMMETRIC") || reader_.peek().is("MASTER")) notUnderstood("keys aren't kept");
  const std::string name = cursorName();
  if (!act()) return;
  Cursor& cursor = cursorOf(name);
  if (cursor.rows) refuse("The cursor is already open.");
  auto rows = std::make_shared<std::vector<std::vector<Value>>>();
  sqlite::Statement query(*database_, cursor.sql);
  bindVariables(query, cursor.variables);  // as they were at DECLARE
  const int columns = sqlite3_column_count(query.get());
  while (query.step()) {
    auto& row = rows->emplace_back();
    for (int i = 0; i < columns; ++i) row.push_back(valueOf(query, i));
  }
  setGlobal("@@cursor_rows", static_cast<std::int64_t>(rows->size()));
  cursor.rows = std::move(rows);
  cursor.at = -1;
  ++state_.changes;
}

// FETCH [NEXT | PRIOR | FIRST | LAST | ABSOLUTE n | RELATIVE n] [FROM] name [INTO @variables]
void Interpreter::fetchCursor() {
  if (running()) state_.unknown.insert("@@fetch_status");  // until it is known
  reader_.next();
  std::string direction = "NEXT";
  std::string count;
  for (const char* word : {"NEXT", "PRIOR", "FIRST", "LAST", "ABSOLUTE", "RELATIVE"}) {
    if (!reader_.peek().is(word) || reader_.peek(1).is("INTO")) continue;
    direction = word;
    reader_.next();
    if (direction == "ABSOLUTE" || direction == "RELATIVE") count = translator().expression();
    break;
  }
  reader_.acceptWord("FROM");
  const std::string name = cursorName();
  std::vector<std::string> into;
  if (reader_.acceptWord("INTO")) {
    do {
      if (reader_.peek().kind != TokenKind::Variable) notUnderstood("a variable is expected");
      into.push_back(lowerCase(reader_.next().raw));
    } while (reader_.acceptSymbol(","));
  }
  if (!act()) return;
  Cursor& cursor = cursorOf(name);
  if (!cursor.rows) refuse("Cursor is not open.");
  if (direction != "NEXT" && !cursor.scroll)
    refuse("fetch: The fetch type " + direction + " cannot be used with forward only cursors.");
  const auto size = static_cast<std::int64_t>(cursor.rows->size());
  const std::int64_t number = count.empty() ? 0 : evaluate(count).integer;
  std::int64_t at = cursor.at;
  if (direction == "NEXT") at = std::min(at + 1, size);
  if (direction == "PRIOR") at = std::max<std::int64_t>(at - 1, -1);
  if (direction == "FIRST") at = 0;
  if (direction == "LAST") at = size - 1;
  if (direction == "ABSOLUTE") at = number > 0 ? number - 1 : number < 0 ? size + number : -1;
  if (direction == "RELATIVE") at += number;
  at = std::clamp<std::int64_t>(at, -1, size);
  if (at != cursor.at) ++state_.changes;
  cursor.at = at;
  const bool there = at >= 0 && at < size;
  setGlobal("@@fetch_status", there ? 0 : -1);
  if (!there || into.empty()) return;
  const std::vector<Value>& row = (*cursor.rows)[static_cast<std::size_t>(at)];
  if (row.size() != into.size()) {
    refuse("Cursorfetch: The number of variables declared in the INTO list must match that of selected columns.");
  }
  for (std::size_t i = 0; i < into.size(); ++i) assign(into[i], row[i]);
}

// CLOSE name, DEALLOCATE name
void Interpreter::closeCursor() {
  const bool deallocate = reader_.next().is("DEALLOCATE");
  if (reader_.peek().is("SYMMETRIC") || reader_.peek().is("MASTER") || reader_.peek().is("ALL"))
    notUnderstood("keys aren't kept");
  const std::string name = cursorName();
  if (!act()) return;
  Cursor& cursor = cursorOf(name);
  if (deallocate) {
    state_.cursors.erase(name);
  } else {
    if (!cursor.rows) refuse("Cursor is not open.");
    cursor.rows.reset();
  }
  ++state_.changes;
}

}  // namespace qrel::tsql
