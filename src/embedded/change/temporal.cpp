// Tables whose earlier rows the system keeps in another one.
#include "embedded/change/changes.h"
#include "embedded/change/parts.h"
#include "embedded/change/properties.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// A history table has the columns of its table, without keys and what else belongs to them.
TableDef historyOf(const TableInfo& table, const ObjectName& name) {
  TableDef history;
  history.schema = name.schema;
  history.name = name.name;
  for (const auto& column : table.columns) {
    ColumnDef& copy = history.columns.emplace_back();
    copy.name = column.name;
    copy.type = column.type;
    copy.nullable = column.nullable;
  }
  return history;
}

}  // namespace

void CatalogueChanges::startVersioning(const ObjectName& tableName, const ObjectName& historyName,
                                       const Properties& properties) {
  const auto table = indexed(tableName);
  const PropertyOwner owner{PropertyOwner::Class::Object, table->id};
  const std::string start = property(database_, owner, "period_start");
  if (start.empty()) {
    refuse(
        "Cannot set SYSTEM_VERSIONING to ON when SYSTEM_TIME period is not defined and the LEDGER=ON option is not "
        "specified.");
  }
  ObjectName name = historyName;
  if (name.name.empty()) name.name = "MSSQL_TemporalHistoryFor_" + std::to_string(table->id);
  if (name.schema.empty()) name.schema = table->schema;
  if (!catalogue_.table(name.schema, name.name)) {
    TableDef history = historyOf(*table, name);
    const auto columnAt = [&](const std::string& colid) {
      for (const auto& column : table->columns)
        if (std::to_string(column.colid) == colid) return column.name;
      return std::string();
    };
    IndexDef& index = history.indexes.emplace_back();
    index.name = "ix_" + name.name;
    index.clustered = true;
    index.columns = {columnAt(property(database_, owner, "period_end")), columnAt(start)};
    index.properties = {{"data_compression_desc", "PAGE"}};
    createTable(history);
  }
  const auto history = catalogue_.table(name.schema, name.name);
  setProperties(database_, owner, {{"temporal_type", "2"}, {"history_table_id", std::to_string(history->id)}});
  setProperties(database_, owner, properties);
  setProperty(database_, {PropertyOwner::Class::Object, history->id}, "temporal_type", "1");
}

void CatalogueChanges::stopVersioning(const ObjectName& tableName) {
  const auto table = indexed(tableName);
  const PropertyOwner owner{PropertyOwner::Class::Object, table->id};
  const std::string history = property(database_, owner, "history_table_id");
  if (history.empty()) refuse("SYSTEM_VERSIONING is not turned ON for table '" + table->storage + "'.");
  for (const char* each :
       {"temporal_type", "history_table_id", "history_retention_period", "history_retention_period_unit_desc"})
    setProperty(database_, owner, each, "");
  database_.cached("delete from cat_properties where object_id = cast(?1 as integer) and name = 'temporal_type'")
      .bind(1, history)
      .run();
}

}  // namespace qrel::tsql
