// UPDATE and DELETE, with and without FROM.
#include <algorithm>
#include <set>

#include "embedded/change/parts.h"
#include "embedded/run/interpreter.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/translate/translator.h"
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

}  // namespace

// Reads what follows the target and SET: FROM and WHERE, up to the statement's end.
Interpreter::UpdateTarget Interpreter::readTarget(std::size_t target) {
  TokenReader at = reader_;
  at.moveTo(target);
  ObjectName name = readObjectName(at);
  UpdateTarget result;
  result.alias = "[" + replaceAll(name.name, "]", "]]") + "]";
  result.from = reader_.sourceBetween(target, at.position());
  if (reader_.acceptWord("FROM")) {
    const std::size_t begin = reader_.position();
    translator().fromList();
    result.from = reader_.sourceBetween(begin, reader_.position());
    at.moveTo(begin);
    if (const auto found = tableOfAlias(at, reader_.position(), name.name)) name = *found;
  }
  if (reader_.acceptWord("WHERE")) {
    if (reader_.peek().is("CURRENT")) notUnderstood("cursors aren't kept");
    const std::size_t begin = reader_.position();
    translator().condition();
    result.where = " where " + std::string(reader_.sourceBetween(begin, reader_.position()));
  }
  if (reader_.acceptWord("OPTION")) reader_.skipParentheses();
  if (!act()) return result;
  if (state_.rowLimit) notUnderstood("SET ROWCOUNT is in force");
  result.table = requireTable(localName(name));
  return result;
}

// The query that gives the row numbers of the rows to change and, behind them, `values`, in SQLite's words.
std::string Interpreter::rowsQuery(const UpdateTarget& target, const std::vector<std::string>& values) {
  std::string text = "select " + target.alias + ".[" + std::string(rowNumberName) + "]";
  for (const std::string& value : values) text += ", " + value;
  text += " from " + target.from + target.where;
  const auto tokens = lex(text);
  TokenReader reader(text, tokens);
  return Translator(context(), reader).select();
}

void Interpreter::updateStatement() {
  reader_.next();
  if (reader_.peek().is("STATISTICS")) return skipWithoutEffect();
  if (reader_.peek().is("TOP")) notUnderstood("UPDATE TOP");
  if (reader_.peek().kind == TokenKind::Variable) notUnderstood("table variables aren't kept");
  const std::size_t target = reader_.position();
  readObjectName(reader_);
  if (reader_.acceptWord("WITH")) reader_.skipParentheses();
  reader_.expectWord("SET");
  std::vector<std::string> names, values;
  do {
    if (reader_.peek().kind == TokenKind::Variable) notUnderstood("UPDATE that sets a variable");
    const std::size_t begin = reader_.position();
    names.push_back(readObjectName(reader_).name);
    const std::string column(reader_.sourceBetween(begin, reader_.position()));
    const Token& sign = reader_.next();
    if (sign.kind != TokenKind::Symbol || sign.raw.back() != '=') notUnderstood("'=' is expected");
    if (reader_.peek().is("DEFAULT")) notUnderstood("UPDATE with DEFAULT");
    const std::size_t expression = reader_.position();
    translator().expression();
    std::string value = "(" + std::string(reader_.sourceBetween(expression, reader_.position())) + ")";
    if (sign.raw != "=") value = column + " " + std::string(sign.raw.substr(0, sign.raw.size() - 1)) + " " + value;
    values.push_back(std::move(value));
  } while (reader_.acceptSymbol(","));
  if (reader_.peek().is("OUTPUT")) notUnderstood("OUTPUT isn't carried out");
  const UpdateTarget table = readTarget(target);
  if (!running()) return;
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
  const std::string query = rowsQuery(table, values);
  atomically([&] { applyUpdate(*table.table, columns, query); });
}

void Interpreter::applyUpdate(const TableInfo& table, const std::vector<const TableInfo::Column*>& columns,
                              const std::string& rowsSql) {
  std::vector<std::pair<std::int64_t, std::vector<Value>>> rows;
  {
    std::set<std::int64_t> seen;  // a row that several joined rows meet is changed once
    sqlite::Statement query(*database_, rowsSql);
    bind(query);
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
  sqlite::Statement update(*database_, "update " + quoteName(table.storage) + " set " + set + " where _rowid_ = ?");
  for (const auto& [row, values] : rows) {
    checkStop();
    int at = 0;
    for (const Value& value : values) {
      const auto* column = columns[static_cast<std::size_t>(at)];
      if (value.null && !column->nullable) {
        refuse("Cannot insert the value NULL into column '" + column->name + "', table '" +
               session_.open().facts.database + "." + table.storage + "'; column does not allow nulls. UPDATE fails.");
      }
      update.bind(++at, value.null ? value : convertTo(column->type, value));
    }
    if (version != table.columns.end()) update.bind(++at, generated(table, *version));
    update.bind(++at, row);
    try {
      update.run();
    } catch (const DataError& error) {
      refuseDuplicate(table, error);
    }
  }
  setGlobal("@@rowcount", static_cast<std::int64_t>(rows.size()));
  result_.recordsAffected = static_cast<std::int64_t>(rows.size());
}

void Interpreter::deleteStatement() {
  reader_.next();
  if (reader_.peek().is("TOP")) notUnderstood("DELETE TOP");
  reader_.acceptWord("FROM");
  const std::size_t target = reader_.position();
  if (reader_.peek().kind == TokenKind::Variable) notUnderstood("table variables aren't kept");
  readObjectName(reader_);
  if (reader_.acceptWord("WITH")) reader_.skipParentheses();
  if (reader_.peek().is("OUTPUT")) notUnderstood("OUTPUT isn't carried out");
  const UpdateTarget table = readTarget(target);
  if (!running()) return;
  sqlite::Statement rows(*database_, "delete from " + quoteName(table.table->storage) + " where _rowid_ in (" +
                                         rowsQuery(table, {}) + ")");
  bind(rows);
  rows.run();
  const std::int64_t count = sqlite3_changes64(database_->get());
  setGlobal("@@rowcount", count);
  result_.recordsAffected = count;
}

}  // namespace qrel::tsql
