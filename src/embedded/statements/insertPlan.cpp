#include "embedded/statements/insertPlan.h"

#include <algorithm>

#include "embedded/language/refusal.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/statements/columnValues.h"

namespace qrel::tsql {

InsertPlan makePlan(StatementRun& run, std::shared_ptr<const TableInfo> table,
                    const std::vector<std::string>* columns) {
  InsertPlan plan;
  const bool explicitIdentity = run.memory.identityInsert == table->storage;
  std::vector<const TableInfo::Column*> given;
  if (columns) {
    for (const std::string& name : *columns) {
      const auto* column = table->find(name);
      if (!column) refuse("Invalid column name '" + name + "'.");
      if (std::find(given.begin(), given.end(), column) != given.end())
        refuse("The column name '" + column->name + "' is specified more than once in the column list of an INSERT.");
      if (column->computed || isVersionColumn(*column))
        refuse("The column \"" + column->name + "\" cannot be modified because it is a computed or timestamp column.");
      if (column->identity && !explicitIdentity) {
        refuse("Cannot insert explicit value for identity column in table '" + table->name +
               "' when IDENTITY_INSERT is set to OFF.");
      }
      given.push_back(column);
    }
  } else {
    for (const auto& column : table->columns)
      if (!column.computed && !column.identity) given.push_back(&column);
  }
  for (const auto* column : given) {
    InsertPlan::Column& source = plan.columns.emplace_back();
    source.column = column;
    source.given = true;
  }
  plan.given = plan.columns.size();
  for (const auto& column : table->columns) {
    if (column.computed || std::find(given.begin(), given.end(), &column) != given.end()) continue;
    if (column.identity && explicitIdentity) {
      refuse("Explicit value must be specified for identity column in table '" + table->name +
             "' when IDENTITY_INSERT is set to ON.");
    }
    plan.columns.push_back(defaultFor(run, column));
  }
  std::string names, marks;
  for (const auto& source : plan.columns) {
    names += (names.empty() ? "" : ", ") + quoteColumn(source.column->name);
    marks += marks.empty() ? "?" : ", ?";
  }
  const std::string sql = "insert into " + quoteName(table->storage) +
                          (names.empty() ? " default values" : " (" + names + ") values (" + marks + ")");
  plan.insert = &run.database().cached(sql);
  plan.table = std::move(table);
  return plan;
}

InsertPlan& planFor(StatementRun& run, std::size_t start, std::size_t end, const ObjectName& table,
                    const std::vector<std::string>* columns) {
  const std::string_view key = run.reader.sourceBetween(start, end);
  if (const auto kept = run.memory.plans.find(key); kept != run.memory.plans.end()) return kept->second;
  InsertPlan plan = makePlan(run, run.requireTable(run.localName(table)), columns);
  return run.memory.plans.insert_or_assign(std::string(key), std::move(plan)).first->second;
}

void insertRow(StatementRun& run, InsertPlan& plan, const std::vector<Value>& values) {
  sqlite::Statement& insert = *plan.insert;
  for (std::size_t i = 0; i < plan.columns.size(); ++i) {
    const InsertPlan::Column& source = plan.columns[i];
    const TableInfo::Column& column = *source.column;
    const int at = static_cast<int>(i) + 1;
    if (isVersionColumn(column) || (!source.given && column.identity)) {
      insert.bind(at, generated(run, *plan.table, column));
      continue;
    }
    const bool fixed = !source.given && source.fixed;
    const Value computed = source.given || fixed ? Value() : defaultOf(run, source);
    const Value& value = source.given ? values[i] : fixed ? *source.fixed : computed;
    if (value.null && !column.nullable) refuseNull(run, *plan.table, column, "INSERT");
    insert.bind(at, value);
    if (column.identity) {  // numbers go on behind the highest given one
      std::int64_t& last = lastIdentity(run, *plan.table, column);
      if (value.integer > last) last = value.integer;
    }
  }
  try {
    insert.run();
  } catch (const DataError& error) {
    refuseDuplicate(run, *plan.table, error);
  }
}

}  // namespace qrel::tsql
