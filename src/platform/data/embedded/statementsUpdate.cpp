// UPDATE and DELETE, with and without FROM.
#include <algorithm>
#include <set>

#include "platform/data/embedded/catalogueParts.h"
#include "platform/data/embedded/interpreter.h"
#include "platform/data/embedded/translate.h"
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

std::string Interpreter::readWhere() {
  std::string where;
  if (reader_.acceptWord("WHERE")) {
    if (reader_.peek().is("CURRENT")) notUnderstood("cursors aren't kept");
    where = " where " + translator().condition();
  }
  if (reader_.acceptWord("OPTION")) reader_.skipParentheses();
  return where;
}

// The table to change: its name stands at `target`; with `fromFollows` the reader stands behind the word FROM.
Interpreter::UpdateTarget Interpreter::updateTarget(std::size_t target, bool fromFollows) {
  const std::size_t here = reader_.position();
  reader_.moveTo(target);
  ObjectName name = readObjectName(reader_);
  UpdateTarget result;
  result.alias = quoteName(name.name);
  if (fromFollows) {
    reader_.moveTo(here);
    result.from = translator().fromList();
    TokenReader list = reader_;
    list.moveTo(here);
    const auto found = tableOfAlias(list, reader_.position(), name.name);
    if (found) name = *found;
  } else {
    reader_.moveTo(here);
  }
  if (!running()) return result;
  result.table = requireTable(localName(name));
  if (result.from.empty()) {
    result.alias = quoteName(result.table->name);
    result.from = quoteName(result.table->storage) + " as " + result.alias;
  }
  return result;
}

void Interpreter::updateStatement() {
  reader_.next();
  if (reader_.peek().is("STATISTICS")) return skipWithoutEffect();
  if (reader_.peek().is("TOP")) notUnderstood("UPDATE TOP");
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
    const std::size_t expression = reader_.position();
    if (reader_.acceptWord("DEFAULT")) notUnderstood("UPDATE with DEFAULT");
    values.push_back(translator().expression());
    if (sign.raw == "=") continue;
    const std::string text = column + " " + std::string(sign.raw.substr(0, sign.raw.size() - 1)) + " (" +
                             std::string(reader_.sourceBetween(expression, reader_.position())) + ")";
    const auto tokens = lex(text);
    TokenReader reader(text, tokens);
    values.back() = Translator(context(), reader).expression();
  } while (reader_.acceptSymbol(","));
  if (reader_.peek().is("OUTPUT")) notUnderstood("OUTPUT isn't carried out");
  const UpdateTarget table = updateTarget(target, reader_.acceptWord("FROM"));
  const std::string where = readWhere();
  if (!act()) return;
  std::vector<const TableInfo::Column*> columns;
  for (const std::string& name : names) {
    const auto* column = table.table->find(name);
    if (!column) refuse("Invalid column name '" + name + "'.");
    if (column->identity) refuse("Cannot update identity column '" + column->name + "'.");
    if (column->computed || column->type.baseName == "timestamp")
      refuse("The column \"" + column->name + "\" cannot be modified because it is a computed or timestamp column.");
    columns.push_back(column);
  }
  atomically([&] { applyUpdate(table, columns, values, where); });
}

void Interpreter::applyUpdate(const UpdateTarget& target, const std::vector<const TableInfo::Column*>& columns,
                              const std::vector<std::string>& values, const std::string& where) {
  std::string sql = "select " + target.alias + "._rowid_";
  for (const std::string& value : values) sql += ", " + value;
  std::vector<std::pair<std::int64_t, std::vector<Value>>> rows;
  {
    std::set<std::int64_t> seen;  // a row that several joined rows meet is changed once
    sqlite::Statement query(*database_, sql + " from " + target.from + where);
    bindVariables(query, session_.variables);
    while (query.step()) {
      if (!seen.insert(query.integer(0)).second) continue;
      auto& row = rows.emplace_back(query.integer(0), std::vector<Value>());
      for (std::size_t i = 0; i < values.size(); ++i) row.second.push_back(valueOf(query, static_cast<int>(i) + 1));
    }
  }
  std::string set;
  for (const auto* column : columns) set += (set.empty() ? "" : ", ") + quoteName(column->name) + " = ?";
  const TableInfo::Column* version = nullptr;
  for (const auto& column : target.table->columns)
    if (column.type.baseName == "timestamp") version = &column;
  if (version) set += ", " + quoteName(version->name) + " = ?";
  sqlite::Statement update(*database_,
                           "update " + quoteName(target.table->storage) + " set " + set + " where _rowid_ = ?");
  for (auto& [row, news] : rows) {
    int at = 0;
    for (const Value& value : news) {
      const auto* column = columns[static_cast<std::size_t>(at)];
      if (value.null && !column->nullable) {
        refuse("Cannot insert the value NULL into column '" + column->name + "', table '" +
               session_.open().facts.database + "." + target.table->storage +
               "'; column does not allow nulls. UPDATE fails.");
      }
      update.bind(++at, value.null ? value : convertTo(column->type, value));
    }
    if (version) update.bind(++at, generated(*target.table, *version));
    update.bind(++at, row);
    try {
      update.run();
    } catch (const DataError& error) {
      refuseDuplicate(*target.table, error);
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
  const UpdateTarget table = updateTarget(target, reader_.acceptWord("FROM"));
  const std::string where = readWhere();
  if (!act()) return;
  const std::string storage = quoteName(table.table->storage);
  sqlite::Statement rows(*database_, "delete from " + storage + " where _rowid_ in (select " + table.alias +
                                         "._rowid_ from " + table.from + where + ")");
  bindVariables(rows, session_.variables);
  rows.run();
  const std::int64_t count = sqlite3_changes64(database_->get());
  setGlobal("@@rowcount", count);
  result_.recordsAffected = count;
}

}  // namespace qrel::tsql
