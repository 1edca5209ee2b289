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

// A row by its number, with the new values of the columns that are set.
using ChangedRow = std::pair<std::int64_t, std::vector<Value>>;

// All of them before the first is written: values are those from before.
std::vector<ChangedRow> changedRows(StatementRun& run, const TableInfo& table,
                                    const std::vector<const TableInfo::Column*>& columns, const RowChange& change) {
  std::vector<ChangedRow> rows;
  std::set<std::int64_t> seen;  // a row that several joined rows meet is changed once
  sqlite::Statement query(run.database(), change.rows);
  run.bind(query);
  while (query.step()) {
    if (!seen.insert(query.integer(0)).second) continue;
    auto& row = rows.emplace_back(query.integer(0), std::vector<Value>());
    for (std::size_t i = 0; i < change.kinds.size(); ++i) {
      const Value value = as(change.kinds[i], sqlite::valueOf(query, static_cast<int>(i) + 1));
      if (value.null && !columns[i]->nullable) refuseNull(run, table, *columns[i], "UPDATE");
      row.second.push_back(value.null ? value : convertTo(columns[i]->type, value));
    }
  }
  return rows;
}

void writeRows(StatementRun& run, const TableInfo& table, const std::vector<const TableInfo::Column*>& columns,
               const std::vector<ChangedRow>& rows) {
  std::string set;
  for (const auto* column : columns) set += (set.empty() ? "" : ", ") + quoteColumn(column->name) + " = ?";
  sqlite::Statement update(run.database(), "update " + quoteName(table.storage) + " set " + set + " where _rowid_ = ?");
  for (const auto& [row, values] : rows) {
    run.checkStop();
    int at = 0;
    for (const Value& value : values) update.bind(++at, value);
    update.bind(++at, row);
    update.run();
  }
}

// The same where a row takes a key over that another gives up: the server looks at keys when all rows are changed, so
// that all are taken out before the first comes back.
void replaceRows(StatementRun& run, const TableInfo& table, const std::vector<const TableInfo::Column*>& columns,
                 const std::vector<ChangedRow>& rows) {
  std::string names = "_rowid_";
  std::string marks = "?";
  std::vector<const TableInfo::Column*> stored;
  for (const auto& column : table.columns) {
    if (column.computed) continue;
    stored.push_back(&column);
    names += ", " + quoteColumn(column.name);
    marks += ", ?";
  }
  std::vector<std::vector<Value>> whole;
  sqlite::Statement read(run.database(),
                         "select " + names + " from " + quoteName(table.storage) + " where _rowid_ = ?");
  sqlite::Statement take(run.database(), "delete from " + quoteName(table.storage) + " where _rowid_ = ?");
  for (const auto& [row, values] : rows) {
    run.checkStop();
    read.bind(1, row).step();
    auto& kept = whole.emplace_back();
    for (std::size_t i = 0; i < stored.size(); ++i) {
      const auto changed = std::find(columns.begin(), columns.end(), stored[i]);
      kept.push_back(changed == columns.end() ? sqlite::valueOf(read, static_cast<int>(i) + 1)
                                              : values[static_cast<std::size_t>(changed - columns.begin())]);
    }
    read.reset();
    take.bind(1, row).run();
  }
  sqlite::Statement put(run.database(),
                        "insert into " + quoteName(table.storage) + " (" + names + ") values (" + marks + ")");
  for (std::size_t i = 0; i < rows.size(); ++i) {
    put.bind(1, rows[i].first);
    for (std::size_t j = 0; j < stored.size(); ++j) put.bind(static_cast<int>(j) + 2, whole[i][j]);
    try {
      put.run();
    } catch (const DataError& error) {
      refuseDuplicate(run, table, error);
    }
  }
}

void applyUpdate(StatementRun& run, const TableInfo& table, std::vector<const TableInfo::Column*> columns,
                 const RowChange& change) {
  std::vector<ChangedRow> rows = changedRows(run, table, columns, change);
  const auto version = std::find_if(table.columns.begin(), table.columns.end(), isVersionColumn);
  if (version != table.columns.end()) {
    columns.push_back(&*version);
    for (auto& [row, values] : rows) values.push_back(generated(run, table, *version));
  }
  try {
    run.atomically([&] { writeRows(run, table, columns, rows); });
  } catch (const DataError& error) {
    if (!isDuplicate(error)) throw;
    replaceRows(run, table, columns, rows);
  }
  run.countRows(static_cast<std::int64_t>(rows.size()));
}

}  // namespace

void updateStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  if (reader.peek().is("STATISTICS")) return skipWithoutEffect(run);
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
