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

// What everything that changes rows waits for; the table that they are in, null when nothing is to be carried out.
std::shared_ptr<const TableInfo> tableToChange(StatementRun& run, const ObjectName& name) {
  if (!run.act()) return nullptr;
  if (run.memory.rowLimit) run.notUnderstood("SET ROWCOUNT is in force");
  return run.requireTable(run.localName(name));
}

const TableInfo::Column& columnToChange(const TableInfo& table, const std::string& name) {
  const auto* column = table.find(name);
  if (!column) refuse("Invalid column name '" + name + "'.");
  if (column->identity) refuse("Cannot update identity column '" + column->name + "'.");
  if (column->computed || isVersionColumn(*column))
    refuse("The column \"" + column->name + "\" cannot be modified because it is a computed or timestamp column.");
  return *column;
}

void applyUpdate(StatementRun& run, const TableInfo& table, const std::vector<const TableInfo::Column*>& columns,
                 const RowChange& change) {
  std::vector<std::pair<std::int64_t, std::vector<Value>>> rows;  // all of them first: values are those from before
  {
    std::set<std::int64_t> seen;  // a row that several joined rows meet is changed once
    sqlite::Statement query(run.database(), change.rows);
    run.bind(query);
    while (query.step()) {
      if (!seen.insert(query.integer(0)).second) continue;
      auto& row = rows.emplace_back(query.integer(0), std::vector<Value>());
      for (std::size_t i = 0; i < columns.size(); ++i)
        row.second.push_back(as(change.kinds[i], sqlite::valueOf(query, static_cast<int>(i) + 1)));
    }
  }
  std::string set;
  for (const auto* column : columns) set += (set.empty() ? "" : ", ") + quoteColumn(column->name) + " = ?";
  const auto version = std::find_if(table.columns.begin(), table.columns.end(), isVersionColumn);
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
  if (reader.peek().kind == TokenKind::Variable) run.notUnderstood("table variables aren't kept");
  const RowChange change = run.translator().update();
  const auto table = tableToChange(run, change.table);
  if (!table) return;
  std::vector<const TableInfo::Column*> columns;
  for (const std::string& name : change.columns) columns.push_back(&columnToChange(*table, name));
  run.atomically([&] { applyUpdate(run, *table, columns, change); });
}

void deleteStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  if (reader.peek(reader.peek().is("FROM") ? 1 : 0).kind == TokenKind::Variable)
    run.notUnderstood("table variables aren't kept");
  const RowChange change = run.translator().deletion();
  const auto table = tableToChange(run, change.table);
  if (!table) return;
  sqlite::Statement rows(run.database(),
                         "delete from " + quoteName(table->storage) + " where _rowid_ in (" + change.rows + ")");
  run.bind(rows);
  rows.run();
  run.countRows(sqlite3_changes64(run.database().get()));
}

}  // namespace qrel::tsql
