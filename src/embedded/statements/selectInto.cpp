#include "embedded/statements/selectInto.h"

#include <utility>
#include <vector>

#include "embedded/change/temporary.h"
#include "embedded/language/refusal.h"
#include "embedded/sqlite/storageNames.h"
#include "embedded/statements/columnValues.h"
#include "embedded/statements/insertPlan.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// An alias type stays one.
TypeRef declaredType(StatementRun& run, const ExpressionType& type) {
  TypeRef declared = typeRef(type);
  if (type.xusertype < firstAliasType) return declared;
  auto& query = run.database().cached("select name from cat_types where xusertype = ?1");
  if (query.bind(1, std::int64_t{type.xusertype}).step()) {
    declared.name = query.text(0);
    declared.xusertype = type.xusertype;
  }
  query.reset();
  return declared;
}

// The types of columns that the query doesn't tell. A temporary table takes any value in them; a table of the database
// would have columns that no server gives it.
TypeRef unknownType(const StatementRun& run, const IntoTable& into, const std::string& column) {
  if (!isTemporaryName(into.table.name)) run.notUnderstood("the type of the column '" + column + "' isn't known");
  return systemTypeRef(*findSystemType("sql_variant"));
}

ColumnDef columnOf(StatementRun& run, const IntoTable& into, std::size_t place, const sqlite::Statement& query) {
  ColumnDef column;
  const bool told = into.complete && place < into.columns.size();
  const char* name = sqlite3_column_name(query.get(), static_cast<int>(place));
  column.name = told ? into.columns[place].name : shownColumn(name ? name : "");
  if (column.name.empty())
    refuse("An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name.");
  const ExpressionType type = told ? into.columns[place].type : ExpressionType();
  column.type = type.known() ? declaredType(run, type) : unknownType(run, into, column.name);
  column.nullable = type.nullable;
  column.identity = type.identity;
  return column;
}

// Seed and increment of the column that goes on counting.
void takeIdentity(const StatementRun& run, const ObjectName& from, ColumnDef& column) {
  const auto table = run.catalogue().table(from.schema, from.name);
  const TableInfo::Column* source = table ? table->find(column.name) : nullptr;
  if (!source || !source->identity) return;
  column.identitySeed = std::to_string(source->identitySeed);
  column.identityIncrement = std::to_string(source->identityIncrement);
}

std::int64_t fill(StatementRun& run, sqlite::Statement& query, const IntoTable& into, const ObjectName& name) {
  const auto table = run.requireTable(name);
  const std::string before = std::exchange(run.memory.identityInsert, table->storage);
  std::vector<std::string> columns;
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < table->columns.size(); ++i) {
    if (isVersionColumn(table->columns[i])) continue;  // it counts anew
    columns.push_back(table->columns[i].name);
    places.push_back(i);
  }
  InsertPlan plan = makePlan(run, table, &columns);
  run.memory.identityInsert = before;
  std::int64_t count = 0;
  std::vector<Value> row(places.size());
  for (; query.step(); ++count) {
    run.checkStop();
    for (std::size_t i = 0; i < places.size(); ++i) {
      const DataType kind = places[i] < into.columns.size() ? into.columns[places[i]].kind : DataType::Empty;
      const Value value = as(kind, sqlite::valueOf(query, static_cast<int>(places[i])));
      row[i] = value.null ? value : convertTo(plan.columns[i].column->type, value);
    }
    insertRow(run, plan, row);
  }
  return count;
}

}  // namespace

void selectInto(StatementRun& run, const std::string& sql, const IntoTable& into) {
  if (run.memory.rowLimit) run.notUnderstood("SET ROWCOUNT is in force");
  const ObjectName name = run.localName(into.table);
  std::int64_t rows = 0;
  run.atomically([&] {
    sqlite::Statement query(run.database(), sql);
    run.bind(query);
    TableDef table;
    table.schema = name.schema.empty() ? "dbo" : name.schema;
    table.name = name.name;
    const auto count = static_cast<std::size_t>(sqlite3_column_count(query.get()));
    for (std::size_t i = 0; i < count; ++i) table.columns.push_back(columnOf(run, into, i, query));
    for (ColumnDef& column : table.columns)
      if (column.identity) takeIdentity(run, into.from, column);
    if (isTemporaryName(name.name)) {
      createTemporary(run.catalogue(), table);
    } else {
      run.changes().createTable(table);
    }
    rows = fill(run, query, into, name);
  });
  run.schemaChanged();
  run.countRows(rows);
  run.result.rows = isTemporaryName(name.name) ? 0 : rows;
  if (!isTemporaryName(name.name)) {
    run.memory.inserted += rows;
    run.made("table");
  }
}

}  // namespace qrel::tsql
