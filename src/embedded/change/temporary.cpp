#include "embedded/change/temporary.h"

#include <algorithm>

#include "embedded/change/parts.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/sqlite/storageNames.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

std::shared_ptr<TableInfo> infoOf(const TableDef& def, std::string storage) {
  static std::int64_t last = 0;
  auto info = std::make_shared<TableInfo>();
  info->id = --last;  // objects of a database have ids above 0
  info->schema = "dbo";
  info->name = def.name.substr(def.name.starts_with(variableMark) ? 1 : 0);
  info->storage = std::move(storage);
  info->temporary = true;
  int colid = 0;
  for (const ColumnDef& column : def.columns) {
    TableInfo::Column& to = info->columns.emplace_back();
    to.name = column.name;
    to.type = column.type;
    to.nullable = column.nullable;
    to.identity = column.identity;
    to.computed = !column.computedText.empty();
    to.defaultText = column.defaultText;
    to.computedText = column.computedText;
    to.identitySeed = std::strtoll(column.identitySeed.c_str(), nullptr, 10);
    to.identityIncrement = std::strtoll(column.identityIncrement.c_str(), nullptr, 10);
    to.colid = ++colid;
  }
  return info;
}

void checkColumns(const TableDef& def) {
  for (std::size_t i = 0; i < def.columns.size(); ++i)
    for (std::size_t j = 0; j < i; ++j)
      if (compareCollated(def.columns[i].name, def.columns[j].name) == 0)
        refuse("Column names in each table must be unique. Column name '" + def.columns[i].name + "' in table '" +
               def.name + "' is specified more than once.");
}

void make(Catalogue& catalogue, TableDef def) {
  int number = 0;
  for (IndexDef& index : def.indexes) {
    ++number;
    if (index.name.empty())
      index.name =
          (index.kind == KeyKind::PrimaryKey ? "PK__" : "UQ__") + def.name.substr(1) + "__" + std::to_string(number);
  }
  for (const IndexDef& index : def.indexes)
    for (ColumnDef& column : def.columns)
      for (const std::string& key : index.columns)
        if (index.kind == KeyKind::PrimaryKey && compareCollated(key, column.name) == 0) column.nullable = false;
  const auto info = infoOf(def, catalogue.temporary().freshStorage(def.name));
  sqlite::Database& database = catalogue.database();
  createStorageTable(database, catalogue, *info, info->storage);
  for (const IndexDef& index : def.indexes)
    if (index.unique) createTemporaryIndex(database, catalogue, *info, index);
  catalogue.temporary().add({std::move(def), info});
}

}  // namespace

void createTemporary(Catalogue& catalogue, TableDef def) {
  const TemporaryTable* there = catalogue.temporary().find(catalogue.database(), def.name);
  if (there && there->level == catalogue.temporary().level())
    refuse("There is already an object named '" + def.name + "' in the database.");
  checkColumns(def);
  make(catalogue, std::move(def));
}

void replaceTemporary(Catalogue& catalogue, TableDef def) {
  checkColumns(def);
  const auto before = catalogue.temporary().find(catalogue.database(), def.name)->info;
  const std::string name = def.name;
  make(catalogue, std::move(def));
  const auto after = catalogue.temporary().find(catalogue.database(), name)->info;
  std::string columns;
  for (const auto& column : after->columns) {
    const auto* from = before->find(column.name);
    if (!from || column.computed || from->computed) continue;
    columns += (columns.empty() ? "" : ", ") + quoteColumn(column.name);
  }
  sqlite::Database& database = catalogue.database();
  if (!columns.empty())
    database.execute("insert into " + quoteName(after->storage) + " (" + columns + ") select " + columns + " from " +
                     quoteName(before->storage) + " order by _rowid_");
  database.execute("drop table temp." + quoteName(before->storage));
}

void dropTemporary(Catalogue& catalogue, std::string_view name) {
  const TemporaryTable* table = catalogue.temporary().find(catalogue.database(), name);
  if (!table)
    refuse(
        "Cannot drop the table '" + std::string(name) + "', because it does not exist or you do not have permission.",
        errorNumber::invalidObjectName);
  catalogue.database().execute("drop table temp." + quoteName(table->info->storage));
}

TableDef temporaryDefinition(Catalogue& catalogue, std::string_view name) {
  const TemporaryTable* table = catalogue.temporary().find(catalogue.database(), name);
  if (!table)
    refuse("Cannot find the object \"" + std::string(name) +
               "\" because it does not exist or you do not have permissions.",
           errorNumber::invalidObjectName);
  return table->def;
}

}  // namespace qrel::tsql
