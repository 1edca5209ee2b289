#include "embedded/statements/update.h"

#include <algorithm>
#include <set>

#include "embedded/language/refusal.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/statements/columnValues.h"
#include "embedded/statements/noEffect.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool isJoinWord(const Token& token) {
  for (const char* word : {"INNER", "LEFT", "RIGHT", "FULL", "CROSS", "OUTER", "JOIN", "ON", "WHERE", "WITH", "APPLY",
                           "OPTION", "GROUP", "ORDER", "SET"})
    if (token.is(word)) return true;
  return false;
}

// The table that stands in a FROM list, between two tokens, under a name or alias; nothing when none does.
std::optional<ObjectName> tableOfAlias(TokenReader reader, std::size_t end, const std::string& alias) {
  bool tableFollows = true;
  while (reader.position() < end) {
    const Token& token = reader.peek();
    if (token.isSymbol("(")) {
      reader.skipParentheses();
      tableFollows = false;
    } else if (tableFollows && token.isIdentifier() && !isJoinWord(token)) {
      const ObjectName name = readObjectName(reader);
      reader.acceptWord("AS");
      const Token& next = reader.peek();
      const bool named = reader.position() < end && next.isIdentifier() && !isJoinWord(next);
      if (compareCollated(named ? next.name() : std::string_view(name.name), alias) == 0) return name;
      if (named) reader.next();
      tableFollows = false;
    } else {
      tableFollows = token.isSymbol(",") || token.is("JOIN");
      reader.next();
    }
  }
  return std::nullopt;
}

struct UpdateTarget {
  std::shared_ptr<const TableInfo> table;
  std::string alias, from, where;
};

// Reads what follows the target and SET: FROM and WHERE, up to the statement's end.
UpdateTarget readTarget(StatementRun& run, std::size_t target) {
  TokenReader& reader = run.reader;
  TokenReader at = reader;
  at.moveTo(target);
  ObjectName name = readObjectName(at);
  UpdateTarget result;
  result.alias = "[" + replaceAll(name.name, "]", "]]") + "]";
  result.from = reader.sourceBetween(target, at.position());
  if (reader.acceptWord("FROM")) {
    const std::size_t begin = reader.position();
    run.translator().fromList();
    result.from = reader.sourceBetween(begin, reader.position());
    at.moveTo(begin);
    if (const auto found = tableOfAlias(at, reader.position(), name.name)) name = *found;
  }
  if (reader.acceptWord("WHERE")) {
    if (reader.peek().is("CURRENT")) run.notUnderstood("cursors aren't kept");
    const std::size_t begin = reader.position();
    run.translator().condition();
    result.where = " where " + std::string(reader.sourceBetween(begin, reader.position()));
  }
  if (reader.acceptWord("OPTION")) reader.skipParentheses();
  if (!run.act()) return result;
  if (run.memory.rowLimit) run.notUnderstood("SET ROWCOUNT is in force");
  result.table = run.requireTable(run.localName(name));
  return result;
}

// The query that gives the row numbers of the rows to change and, behind them, `values`, in SQLite's words.
std::string rowsQuery(StatementRun& run, const UpdateTarget& target, const std::vector<std::string>& values) {
  std::string text = "select " + target.alias + ".[" + std::string(rowNumberName) + "]";
  for (const std::string& value : values) text += ", " + value;
  text += " from " + target.from + target.where;
  const auto tokens = lex(text);
  TokenReader reader(text, tokens);
  return Translator(run.context(), reader).select();
}

void applyUpdate(StatementRun& run, const TableInfo& table, const std::vector<const TableInfo::Column*>& columns,
                 const std::string& rowsSql) {
  std::vector<std::pair<std::int64_t, std::vector<Value>>> rows;
  {
    std::set<std::int64_t> seen;  // a row that several joined rows meet is changed once
    sqlite::Statement query(run.database(), rowsSql);
    run.bind(query);
    while (query.step()) {
      if (!seen.insert(query.integer(0)).second) continue;
      auto& row = rows.emplace_back(query.integer(0), std::vector<Value>());
      for (std::size_t i = 0; i < columns.size(); ++i)
        row.second.push_back(sqlite::valueOf(query, static_cast<int>(i) + 1));
    }
  }
  std::string set;
  for (const auto* column : columns) set += (set.empty() ? "" : ", ") + quoteColumn(column->name) + " = ?";
  const auto version = std::find_if(table.columns.begin(), table.columns.end(),
                                    [](const auto& column) { return column.type.baseName == "timestamp"; });
  if (version != table.columns.end()) set += ", " + quoteColumn(version->name) + " = ?";
  sqlite::Statement update(run.database(), "update " + quoteName(table.storage) + " set " + set + " where _rowid_ = ?");
  for (const auto& [row, values] : rows) {
    run.checkStop();
    int at = 0;
    for (const Value& value : values) {
      const auto* column = columns[static_cast<std::size_t>(at)];
      if (value.null && !column->nullable) refuseNull(run, table, *column, "UPDATE");
      update.bind(++at, value.null ? value : convertTo(column->type, value));
    }
    if (version != table.columns.end()) update.bind(++at, generated(run, table, *version));
    update.bind(++at, row);
    try {
      update.run();
    } catch (const DataError& error) {
      refuseDuplicate(run, table, error);
    }
  }
  run.countRows(static_cast<std::int64_t>(rows.size()));
}

}  // namespace

void updateStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  if (reader.peek().is("STATISTICS")) return skipWithoutEffect(run);
  if (reader.peek().is("TOP")) run.notUnderstood("UPDATE TOP");
  if (reader.peek().kind == TokenKind::Variable) run.notUnderstood("table variables aren't kept");
  const std::size_t target = reader.position();
  readObjectName(reader);
  if (reader.acceptWord("WITH")) reader.skipParentheses();
  reader.expectWord("SET");
  std::vector<std::string> names, values;
  do {
    if (reader.peek().kind == TokenKind::Variable) run.notUnderstood("UPDATE that sets a variable");
    const std::size_t begin = reader.position();
    names.push_back(readObjectName(reader).name);
    const std::string column(reader.sourceBetween(begin, reader.position()));
    const Token& sign = reader.next();
    if (sign.kind != TokenKind::Symbol || sign.raw.back() != '=') run.notUnderstood("'=' is expected");
    if (reader.peek().is("DEFAULT")) run.notUnderstood("UPDATE with DEFAULT");
    const std::size_t expression = reader.position();
    run.translator().expression();
    std::string value = "(" + std::string(reader.sourceBetween(expression, reader.position())) + ")";
    if (sign.raw != "=") value = column + " " + std::string(sign.raw.substr(0, sign.raw.size() - 1)) + " " + value;
    values.push_back(std::move(value));
  } while (reader.acceptSymbol(","));
  if (reader.peek().is("OUTPUT")) run.notUnderstood("OUTPUT isn't carried out");
  const UpdateTarget table = readTarget(run, target);
  if (!run.running()) return;
  std::vector<const TableInfo::Column*> columns;
  for (const std::string& name : names) {
    const auto* column = table.table->find(name);
    if (!column) refuse("Invalid column name '" + name + "'.");
    if (column->identity) refuse("Cannot update identity column '" + column->name + "'.");
    if (column->computed || column->type.baseName == "timestamp") {
      refuse("The column \"" + column->name + "\" cannot be modified because it is a computed or timestamp column.");
    }
    columns.push_back(column);
  }
  const std::string query = rowsQuery(run, table, values);
  run.atomically([&] { applyUpdate(run, *table.table, columns, query); });
}

void deleteStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  if (reader.peek().is("TOP")) run.notUnderstood("DELETE TOP");
  reader.acceptWord("FROM");
  const std::size_t target = reader.position();
  if (reader.peek().kind == TokenKind::Variable) run.notUnderstood("table variables aren't kept");
  readObjectName(reader);
  if (reader.acceptWord("WITH")) reader.skipParentheses();
  if (reader.peek().is("OUTPUT")) run.notUnderstood("OUTPUT isn't carried out");
  const UpdateTarget table = readTarget(run, target);
  if (!run.running()) return;
  sqlite::Statement rows(run.database(), "delete from " + quoteName(table.table->storage) + " where _rowid_ in (" +
                                             rowsQuery(run, table, {}) + ")");
  run.bind(rows);
  rows.run();
  run.countRows(sqlite3_changes64(run.database().get()));
}

}  // namespace qrel::tsql
