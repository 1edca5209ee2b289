// Changes of tables: their columns, keys, constraints and indexes.
#include "embedded/change/changes.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "embedded/change/parts.h"
#include "embedded/change/properties.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/sqlite/storageNames.h"
#include "embedded/translate/translator.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool sameName(std::string_view a, std::string_view b) { return compareCollated(a, b) == 0; }

// A table that a change is made on; refuses when it isn't there.
std::shared_ptr<const TableInfo> requireTable(const Catalogue& catalogue, const ObjectName& name) {
  auto table = catalogue.table(name.schema, name.name);
  if (!table) {
    refuse("Cannot find the object \"" + fullName(name.schema, name.name) +
               "\" because it does not exist or you do not have permissions.",
           errorNumber::invalidObjectName);
  }
  return table;
}

const TableInfo::Column& requireColumn(const TableInfo& table, std::string_view name) {
  const auto* column = table.find(name);
  if (!column) refuse("Column name '" + std::string(name) + "' does not exist in the target table or view.");
  return *column;
}

void checkColumnNames(const std::vector<std::string>& names, std::string_view table) {
  std::vector<std::string> keys;
  keys.reserve(names.size());
  for (const std::string& name : names) {
    std::string key = collationKey(name);
    if (std::find(keys.begin(), keys.end(), key) != keys.end()) {
      refuse("Column names in each table must be unique. Column name '" + name + "' in table '" + std::string(table) +
             "' is specified more than once.");
    }
    keys.push_back(std::move(key));
  }
}

std::uint64_t hashText(std::string_view text) {
  std::uint64_t hash = 14695981039346656037ull;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ull;
  return hash ^ (hash >> 29);
}

struct KindName {
  KeyKind kind;
  std::string_view name;
};
constexpr KindName kindNames[] = {{KeyKind::PrimaryKey, "PK"},  {KeyKind::Unique, "UQ"}, {KeyKind::Index, "IX"},
                                  {KeyKind::Columnstore, "CS"}, {KeyKind::Xml, "XM"},    {KeyKind::Spatial, "SP"},
                                  {KeyKind::Statistics, "ST"}};

std::string_view kindName(KeyKind kind) {
  for (const KindName& each : kindNames)
    if (each.kind == kind) return each.name;
  return {};
}

bool isConstraint(KeyKind kind) { return kind == KeyKind::PrimaryKey || kind == KeyKind::Unique; }
// Whether an index's columns have an order: those of the others are told as included ones.
bool hasKeys(KeyKind kind) { return isConstraint(kind) || kind == KeyKind::Index; }

TableInfo::Column columnInfo(const ColumnDef& column, int colid) {
  TableInfo::Column info;
  info.name = column.name;
  info.type = column.type;
  info.nullable = column.nullable;
  info.identity = column.identity;
  info.computed = !column.computedText.empty();
  info.defaultText = column.defaultText;
  info.computedText = column.computedText;
  info.colid = colid;
  return info;
}

void insertColumn(sqlite::Database& database, std::int64_t table, const ColumnDef& column, int colid) {
  auto& insert = database.cached("insert into cat_columns values(?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,?12,?13,?14)");
  insert.bind(1, table).bind(2, std::int64_t{colid}).bind(3, column.name);
  insert.bind(4, std::int64_t{column.type.xtype}).bind(5, std::int64_t{column.type.xusertype});
  insert.bind(6, std::int64_t{column.type.length}).bind(7, std::int64_t{column.type.prec});
  insert.bind(8, std::int64_t{column.type.scale}).bind(9, std::int64_t{column.nullable});
  insert.bind(10, std::int64_t{column.identity});
  if (column.identity) {
    insert.bind(11, column.identitySeed).bind(12, column.identityIncrement);
  } else {
    insert.bindNull(11).bindNull(12);
  }
  insert.bind(13, std::int64_t{0});
  if (column.computedText.empty()) {
    insert.bindNull(14);
  } else {
    insert.bind(14, column.computedText);
  }
  insert.run();
  setProperties(database, {PropertyOwner::Class::Column, table, colid}, column.properties);
}

bool hasClusteredIndex(sqlite::Database& database, std::int64_t table) {
  auto& query = database.cached("select 1 from cat_indexes where object_id = ?1 and indid = 1");
  const bool found = query.bind(1, table).step();
  query.reset();
  return found;
}

std::int64_t freeIndid(sqlite::Database& database, std::int64_t table, KeyKind kind) {
  auto& query = database.cached("select indid from cat_indexes where object_id = ?1 and indid >= ?2 order by indid");
  std::int64_t indid = kind == KeyKind::Xml ? 256000 : kind == KeyKind::Spatial ? 384000 : 2;
  query.bind(1, table).bind(2, indid);
  while (query.step() && query.integer(0) == indid) ++indid;
  query.reset();
  return indid;
}

// The name of the table's index with this indid, or whether it has one of this name.
bool hasIndexNamed(sqlite::Database& database, std::int64_t table, std::string_view name) {
  auto& query = database.cached("select 1 from cat_indexes where object_id = ?1 and name = ?2");
  const bool found = query.bind(1, table).bind(2, name).step();
  query.reset();
  return found;
}

std::vector<std::string> primaryKeyColumns(sqlite::Database& database, const TableInfo& table) {
  std::vector<std::string> names;
  auto& query = database.cached(
      "select c.name from cat_indexes i join cat_indexkeys k on k.object_id = i.object_id and k.indid = i.indid "
      "join cat_columns c on c.object_id = i.object_id and c.colid = k.colid "
      "where i.object_id = ?1 and i.kind = 'PK' order by k.keyno");
  query.bind(1, table.id);
  while (query.step()) names.emplace_back(query.text(0));
  query.reset();
  return names;
}

// Whether columns of a table, by colid, are all that one of its primary keys, unique constraints or unique indexes has.
bool isCandidateKey(sqlite::Database& database, std::int64_t table, std::vector<std::int64_t> columns) {
  std::sort(columns.begin(), columns.end());
  auto& query = database.cached(
      "select i.indid, k.colid from cat_indexes i join cat_indexkeys k on k.object_id = i.object_id and k.indid = "
      "i.indid and k.keyno > 0 where i.object_id = ?1 and i.is_unique = 1 and i.filter is null order by 1, 2");
  query.bind(1, table);
  std::map<std::int64_t, std::vector<std::int64_t>> keys;
  while (query.step()) keys[query.integer(0)].push_back(query.integer(1));
  query.reset();
  return std::any_of(keys.begin(), keys.end(), [&](const auto& key) { return key.second == columns; });
}

void setCdefault(sqlite::Database& database, std::int64_t table, int colid, std::int64_t id) {
  database.cached("update cat_columns set cdefault = ?3 where object_id = ?1 and colid = ?2")
      .bind(1, table)
      .bind(2, std::int64_t{colid})
      .bind(3, id)
      .run();
}

// Writes rows only: the table's SQLite index follows when all rows are there.
class TableRows {
 public:
  TableRows(sqlite::Database& database, const Catalogue& catalogue, const TableInfo& table)
      : database_(database), catalogue_(catalogue), table_(table), schema_(schemaId(database, table.schema)) {}

  void addDefault(const TableInfo::Column& column, const std::string& name, const std::string& text) {
    const std::int64_t id = addConstraint(name, "DF", "D", {column.name});
    setCdefault(database_, table_.id, column.colid, id);
    writeComment(database_, id, text);
  }

  void addCheck(const CheckDef& check) {
    const auto columns = check.column.empty() ? std::vector<std::string>() : std::vector<std::string>{check.column};
    const std::int64_t id = addConstraint(check.name, "CK", "C", columns);
    writeComment(database_, id, check.text);
    setProperties(database_, {PropertyOwner::Class::Object, id}, check.properties);
    if (const auto* column = check.column.empty() ? nullptr : table_.find(check.column))
      setProperty(database_, {PropertyOwner::Class::Object, id}, "parent_column_id", std::to_string(column->colid));
  }

  // Returns the indid.
  int addIndex(const IndexDef& index) {
    const bool primary = index.kind == KeyKind::PrimaryKey;
    const bool taken = hasClusteredIndex(database_, table_.id);
    if (primary && !primaryKeyColumns(database_, table_).empty())
      refuse("Table '" + table_.name + "' already has a primary key defined on it.");
    if (index.clustered && taken && !primary) {
      refuse("Cannot create more than one clustered index on table '" + table_.storage +
             "'. Drop the existing clustered index before creating another.");
    }
    std::string name = index.name;
    std::int64_t constraint = 0;
    if (isConstraint(index.kind)) {
      constraint = addConstraint(name, primary ? "PK" : "UQ", primary ? "PK" : "UQ", index.columns, &name);
    } else if (hasIndexNamed(database_, table_.id, name)) {
      refuse("The operation failed because an index or statistics with name '" + name + "' already exists on table '" +
             table_.storage + "'.");
    }
    const std::int64_t indid = index.clustered && !taken ? 1 : freeIndid(database_, table_.id, index.kind);
    auto& insert = database_.cached("insert into cat_indexes values(?1,?2,?3,?4,?5,?6,?7)");
    insert.bind(1, table_.id).bind(2, indid).bind(3, name);
    insert.bind(4, kindName(index.kind));
    insert.bind(5, std::int64_t{index.unique || isConstraint(index.kind)}).bind(6, constraint);
    if (index.filter.empty()) {
      insert.bindNull(7);
    } else {
      insert.bind(7, index.filter);
    }
    insert.run();
    setProperties(database_, {PropertyOwner::Class::Index, table_.id, indid}, index.properties);
    if (!index.primaryXml.empty()) {
      setProperty(database_, {PropertyOwner::Class::Index, table_.id, indid}, "using_xml_index_id",
                  std::to_string(requireXmlIndex(index.primaryXml)));
    }
    addIndexKeys(index, indid);
    return static_cast<int>(indid);
  }

  void addForeignKey(const ForeignKeyDef& key) {
    const std::string target = fullName(key.referenced.schema, key.referenced.name);
    const auto referenced = catalogue_.table(key.referenced.schema, key.referenced.name);
    const std::string shown = key.name.empty() ? "FK" : key.name;
    if (!referenced) {
      refuse("Foreign key '" + shown + "' references invalid table '" + target + "'.", errorNumber::invalidObjectName);
    }
    const auto names =
        key.referencedColumns.empty() ? primaryKeyColumns(database_, *referenced) : key.referencedColumns;
    const auto refuseKey = [&] {
      refuse("There are no primary or candidate keys in the referenced table '" + target +
             "' that match the referencing column list in the foreign key '" + shown + "'.");
    };
    if (names.empty()) refuseKey();
    if (names.size() != key.columns.size()) {
      refuse("Number of referencing columns in foreign key differs from number of referenced columns, table '" +
             table_.name + "'.");
    }
    std::vector<std::pair<int, int>> pairs;
    for (std::size_t i = 0; i < names.size(); ++i)
      pairs.emplace_back(keyColumn(table_, key.columns[i], shown), keyColumn(*referenced, names[i], shown));
    std::vector<std::int64_t> columns;
    for (const auto& [own, other] : pairs) columns.push_back(other);
    if (!isCandidateKey(database_, referenced->id, columns)) refuseKey();
    const std::int64_t id = addConstraint(key.name, "FK", "F", key.columns);
    database_.cached("insert into cat_references values(?1,?2,?3)")
        .bind(1, id)
        .bind(2, table_.id)
        .bind(3, referenced->id)
        .run();
    setProperties(database_, {PropertyOwner::Class::Object, id}, key.properties);
    auto& insert = database_.cached("insert into cat_referencekeys values(?1,?2,?3,?4)");
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      insert.bind(1, id).bind(2, static_cast<std::int64_t>(i + 1));
      insert.bind(3, std::int64_t{pairs[i].first}).bind(4, std::int64_t{pairs[i].second}).run();
    }
  }

 private:
  std::int64_t requireXmlIndex(const std::string& name) const {
    auto& query = database_.cached("select indid from cat_indexes where object_id = ?1 and name = ?2 and kind = 'XM'");
    const std::int64_t indid = query.bind(1, table_.id).bind(2, name).step() ? query.integer(0) : 0;
    query.reset();
    if (indid == 0) refuse("There is no primary XML index '" + name + "' on table '" + table_.name + "'.");
    return indid;
  }

  static int keyColumn(const TableInfo& table, const std::string& name, const std::string& key) {
    const auto* column = table.find(name);
    if (!column) {
      refuse("Foreign key '" + key + "' references invalid column '" + name + "' in table '" + table.name + "'.");
    }
    return column->colid;
  }

  std::int64_t addConstraint(const std::string& name, std::string_view kind, std::string_view xtype,
                             const std::vector<std::string>& columns, std::string* used = nullptr) {
    const bool made = name.empty();  // `used` may be the name itself
    const std::string chosen = made ? makeConstraintName(catalogue_, kind, table_.schema, table_.name, columns) : name;
    if (used) *used = chosen;
    const std::int64_t id = addObject(database_, chosen, schema_, xtype, table_.id);
    if (made) setProperty(database_, {PropertyOwner::Class::Object, id}, "is_system_named", "1");
    return id;
  }

  void addIndexKeys(const IndexDef& index, std::int64_t indid) {
    auto& insert = database_.cached("insert into cat_indexkeys values(?1,?2,?3,?4,?5,?6)");
    std::vector<int> used;
    const auto add = [&](const std::string& name, bool key, bool descending) {
      const auto& column = requireColumn(table_, name);
      if (std::find(used.begin(), used.end(), column.colid) != used.end()) {
        refuse("Cannot use duplicate column names in index. Column name '" + column.name + "' listed more than once.");
      }
      used.push_back(column.colid);
      const auto ordinal = static_cast<std::int64_t>(used.size());
      insert.bind(1, table_.id).bind(2, indid).bind(3, ordinal).bind(4, std::int64_t{column.colid});
      insert.bind(5, key && hasKeys(index.kind) ? ordinal : 0).bind(6, std::int64_t{descending}).run();
    };
    if (index.columns.empty() && index.kind == KeyKind::Columnstore)
      for (const auto& column : table_.columns) add(column.name, false, false);
    for (std::size_t i = 0; i < index.columns.size(); ++i)
      add(index.columns[i], true, i < index.descending.size() && index.descending[i]);
    for (const std::string& name : index.included) add(name, false, false);
  }

  sqlite::Database& database_;
  const Catalogue& catalogue_;
  const TableInfo& table_;
  std::int64_t schema_;
};

// Removes an index's rows and what keeps it unique.
void removeIndex(sqlite::Database& database, const TableInfo& table, std::int64_t indid, std::string_view name) {
  const std::string kept(name);
  dropStorageIndex(database, table, kept);
  for (const char* from : {"cat_indexkeys", "cat_indexes"}) {
    database.cached("delete from " + std::string(from) + " where object_id = ?1 and indid = ?2")
        .bind(1, table.id)
        .bind(2, indid)
        .run();
  }
  removeProperties(database, {PropertyOwner::Class::Index, table.id, indid});
  database.cached("delete from cat_extended where class = 7 and major_id = ?1 and minor_id = ?2")
      .bind(1, table.id)
      .bind(2, indid)
      .run();
}

// The columns that a view gives, as far as an index of it needs them: their names and order.
std::vector<ColumnDef> viewColumns(const Catalogue& catalogue, const ObjectInfo& view) {
  std::vector<ColumnDef> columns;
  for (const std::string& name : columnsOfView(commentText(catalogue.database(), view.id))) {
    ColumnDef& column = columns.emplace_back();
    column.name = name;
    column.type = systemTypeRef(*findSystemType("sql_variant"));
  }
  return columns;
}

bool isEmptyTable(sqlite::Database& database, const TableInfo& table) {
  sqlite::Statement query(database, "select 1 from " + quoteName(table.storage) + " limit 1");
  return !query.step();
}

// What keeps a column from being dropped, by name; empty: nothing.
std::string dependentOnColumn(sqlite::Database& database, const TableInfo& table, int colid) {
  auto& query = database.cached(
      "select name from cat_objects where id = (select cdefault from cat_columns where object_id = ?1 and colid = ?2) "
      "union all select i.name from cat_indexes i join cat_indexkeys k on k.object_id = i.object_id and "
      "k.indid = i.indid where i.object_id = ?1 and k.colid = ?2 "
      "union all select o.name from cat_references r join cat_referencekeys k on k.constid = r.constid "
      "join cat_objects o on o.id = r.constid "
      "where (r.fkeyid = ?1 and k.fcolid = ?2) or (r.rkeyid = ?1 and k.rcolid = ?2)");
  query.bind(1, table.id).bind(2, std::int64_t{colid});
  std::string name;
  if (query.step()) name = query.text(0);
  query.reset();
  return name;
}

// A key stays while a foreign key refers to just its columns.
void refuseReferencedKey(sqlite::Database& database, std::int64_t table, std::int64_t indid, const std::string& name) {
  auto& query = database.cached(
      "select t.name, o.name from cat_references r join cat_objects o on o.id = r.constid join cat_objects t on t.id = "
      "r.fkeyid where r.rkeyid = ?1 and not exists (select colid from cat_indexkeys where object_id = ?1 and indid = "
      "?2 and keyno > 0 except select rcolid from cat_referencekeys k where k.constid = r.constid) and not exists "
      "(select rcolid from cat_referencekeys k where k.constid = r.constid except select colid from cat_indexkeys "
      "where object_id = ?1 and indid = ?2 and keyno > 0)");
  query.bind(1, table).bind(2, indid);
  if (!query.step()) return query.reset();
  const std::string sentence = "The constraint '" + name + "' is being referenced by table '" +
                               std::string(query.text(0)) + "', foreign key constraint '" + std::string(query.text(1)) +
                               "'.";
  query.reset();
  refuse(sentence);
}

}  // namespace

std::string fullName(std::string_view schema, std::string_view name) {
  return schema.empty() ? std::string(name) : std::string(schema) + "." + std::string(name);
}

std::string makeConstraintName(const Catalogue& catalogue, std::string_view kind, std::string_view schema,
                               std::string_view table, const std::vector<std::string>& columns) {
  std::string hashed = std::string(kind) + '\n' + collationKey(orDbo(schema)) + '\n' + collationKey(table);
  for (const std::string& column : columns) hashed += '\n' + collationKey(column);
  const bool key = kind == "PK" || kind == "UQ";
  std::string name = std::string(kind) + "__" + std::string(leftCharacters(table, key ? 8 : 9)) + "__";
  if (!key && !columns.empty()) name += std::string(leftCharacters(columns[0], 5)) + "__";
  for (int taken = 0;; ++taken) {
    const std::uint64_t hash = hashText(taken == 0 ? hashed : hashed + '\n' + std::to_string(taken));
    char digits[17];
    if (key) {
      std::snprintf(digits, sizeof digits, "%016llX", static_cast<unsigned long long>(hash));
    } else {
      std::snprintf(digits, sizeof digits, "%08llX", static_cast<unsigned long long>(hash >> 32));
    }
    if (!catalogue.find(schema, name + digits)) return name + digits;
  }
}

std::string stableDigits(std::string_view text) {
  char digits[9];
  std::snprintf(digits, sizeof digits, "%08llX", static_cast<unsigned long long>(hashText(text) >> 32));
  return digits;
}

void CatalogueChanges::createTable(const TableDef& def) {
  addTable(def, "U");
  const auto complete = catalogue_.table(def.schema, def.name);
  createStorageTable(database_, catalogue_, *complete, complete->storage);
  createStorageIndexes(database_, catalogue_, *complete);
  if (def.versioning && def.versioning->on)
    startVersioning({"", "", def.schema, def.name}, def.versioning->history, def.versioning->properties);
}

std::int64_t CatalogueChanges::addTable(const TableDef& def, std::string_view xtype) {
  const std::int64_t schema = schemaId(database_, def.schema);
  if (schema == 0) {
    refuse("The specified schema name \"" + def.schema +
           "\" either does not exist or you do not have permission to use it.");
  }
  std::vector<std::string> names;
  for (const ColumnDef& column : def.columns) names.push_back(column.name);
  checkColumnNames(names, def.name);
  if (std::count_if(def.columns.begin(), def.columns.end(), [](const auto& each) { return each.identity; }) > 1) {
    refuse("Multiple identity columns specified for table '" + def.name +
           "'. Only one identity column per table is allowed.");
  }
  const std::int64_t id = addObject(database_, def.name, schema, xtype, 0);
  setProperties(database_, {PropertyOwner::Class::Object, id}, def.properties);
  int colid = 0;
  for (const ColumnDef& column : def.columns) {
    ColumnDef kept = column;
    for (const IndexDef& index : def.indexes) {
      const bool inKey = std::any_of(index.columns.begin(), index.columns.end(),
                                     [&](const std::string& name) { return sameName(name, column.name); });
      if (index.kind == KeyKind::PrimaryKey && inKey) kept.nullable = false;
    }
    insertColumn(database_, id, kept, ++colid);
  }
  catalogue_.forget();
  const std::shared_ptr<const TableInfo> info = catalogue_.columnsOf(*catalogue_.find(id));
  TableRows rows(database_, catalogue_, *info);
  placeTable(*info, def);
  for (const ColumnDef& column : def.columns)
    if (!column.defaultText.empty()) rows.addDefault(*info->find(column.name), column.defaultName, column.defaultText);
  const bool clustered = std::any_of(def.indexes.begin(), def.indexes.end(), [](const IndexDef& index) {
    return index.clustered && index.kind != KeyKind::PrimaryKey;
  });
  for (IndexDef index : def.indexes) {
    if (index.kind == KeyKind::PrimaryKey && clustered) index.clustered = false;
    const int indid = rows.addIndex(index);
    place(*info, indid, index.placement);
    // What is said of a table's rows goes for the index that holds them.
    if (indid == 1) setProperties(database_, {PropertyOwner::Class::Index, id, 1}, def.compressions);
  }
  for (const ForeignKeyDef& key : def.foreignKeys) rows.addForeignKey(key);
  for (const CheckDef& check : def.checks) rows.addCheck(check);
  catalogue_.forget();
  const ObjectName name{"", "", def.schema, def.name};
  if (!def.periodStart.empty()) setPeriod(name, def.periodStart, def.periodEnd);
  return id;
}

void CatalogueChanges::placeTable(const TableInfo& table, const TableDef& def) {
  place(table, 0, def.placement);
  const PropertyOwner owner{PropertyOwner::Class::Object, table.id};
  if (!def.texts.space.empty())
    setProperty(database_, owner, "lob_data_space_id", std::to_string(placed(def.texts, table).first));
  if (!def.files.space.empty())
    setProperty(database_, owner, "filestream_data_space_id", std::to_string(placed(def.files, table).first));
  setProperties(database_, {PropertyOwner::Class::Index, table.id, 0}, def.compressions);
}

// The data space's id and the partitioning column, 0 where there is none.
std::pair<std::int64_t, std::int64_t> CatalogueChanges::placed(const Placement& placement,
                                                               const TableInfo& table) const {
  if (compareCollated(placement.space, "default") == 0) return {1, 0};
  if (!placement.column.empty()) {
    const std::int64_t scheme = findEntity(database_, "PS", placement.space);
    if (scheme == 0) refuse("Invalid partition scheme '" + placement.space + "' specified.");
    return {scheme, requireColumn(table, placement.column).colid};
  }
  std::int64_t space = findEntity(database_, "FG", placement.space);
  if (space == 0) space = addEntity(database_, "FG", placement.space);
  return {space, 0};
}

void CatalogueChanges::place(const TableInfo& table, std::int64_t indid, const Placement& placement) {
  const PropertyOwner owner{PropertyOwner::Class::Index, table.id, indid};
  if (!placement.space.empty()) {
    const auto [space, column] = placed(placement, table);
    setProperty(database_, owner, "data_space", space == 1 ? "" : std::to_string(space));
    setProperty(database_, owner, "partition_column", column == 0 ? "" : std::to_string(column));
    return;
  }
  if (indid == 0) return;
  // Where the table is: in its clustered index, or by itself.
  const PropertyOwner rows{PropertyOwner::Class::Index, table.id, indid > 1 && hasClusteredIndex(database_, table.id)};
  for (const char* each : {"data_space", "partition_column"})
    setProperty(database_, owner, each, property(database_, rows, each));
}

// A table, or a view that an index is made on.
std::shared_ptr<const TableInfo> CatalogueChanges::indexed(const ObjectName& name) const {
  const auto object = catalogue_.find(name.schema, name.name);
  if (!object || object->xtype != "V") return requireTable(catalogue_, name);
  auto info = catalogue_.columnsOf(*object);
  if (!info->columns.empty()) return info;
  int colid = 0;
  for (const ColumnDef& column : viewColumns(catalogue_, *object)) insertColumn(database_, object->id, column, ++colid);
  return catalogue_.columnsOf(*object);
}

void CatalogueChanges::addColumns(const ObjectName& tableName, const std::vector<ColumnDef>& columns) {
  const auto before = requireTable(catalogue_, tableName);
  std::vector<std::string> names;
  for (const auto& column : before->columns) names.push_back(column.name);
  for (const ColumnDef& column : columns) names.push_back(column.name);
  checkColumnNames(names, before->name);
  const bool empty = isEmptyTable(database_, *before);
  int colid = before->columns.empty() ? 0 : before->columns.back().colid;
  TableInfo grown = *before;  // what a computed column may name
  for (const ColumnDef& column : columns) {
    if (!empty && !column.nullable && column.defaultText.empty() && !column.identity && column.computedText.empty() &&
        column.type.baseName != "timestamp") {
      refuse(
          "ALTER TABLE only allows columns to be added that can contain nulls, or have a DEFAULT definition "
          "specified, or the column being added is an identity or timestamp column. Column '" +
          column.name + "' cannot be added to non-empty table '" + before->name + "'.");
    }
    insertColumn(database_, before->id, column, ++colid);
    const std::string head = "alter table " + quoteName(before->storage) + " add column ";
    const TableInfo::Column info = columnInfo(column, colid);
    grown.columns.push_back(info);
    try {
      database_.execute(head + storageColumn(catalogue_, grown, info, false));
    } catch (const NotUnderstood&) {
      database_.execute(head + storageColumn(catalogue_, grown, info, true));
    } catch (const DataError& error) {
      if (!info.computed || error.number == errorNumber::cannotConnect) throw;
      database_.execute(head + storageColumn(catalogue_, grown, info, true));
    }
  }
  catalogue_.forget();
  const auto after = requireTable(catalogue_, tableName);
  TableRows rows(database_, catalogue_, *after);
  for (const ColumnDef& column : columns)
    if (!column.defaultText.empty()) rows.addDefault(*after->find(column.name), column.defaultName, column.defaultText);
  catalogue_.forget();
}

void CatalogueChanges::dropColumn(const ObjectName& tableName, std::string_view column) {
  const auto before = requireTable(catalogue_, tableName);
  const auto* found = before->find(column);
  if (!found) {
    refuse("ALTER TABLE DROP COLUMN failed because column '" + std::string(column) + "' does not exist in table '" +
           before->name + "'.");
  }
  if (const std::string dependent = dependentOnColumn(database_, *before, found->colid); !dependent.empty()) {
    refuse("The object '" + dependent + "' is dependent on column '" + found->name + "'. ALTER TABLE DROP COLUMN " +
           found->name + " failed because one or more objects access this column.");
  }
  if (before->columns.size() == 1)
    refuse("ALTER TABLE DROP COLUMN failed because '" + found->name + "' is the only data column in table '" +
           before->name + "'. A table must have at least one data column.");
  database_.execute("alter table " + quoteName(before->storage) + " drop column " + quoteColumn(found->name));
  database_.cached("delete from cat_columns where object_id = ?1 and colid = ?2")
      .bind(1, before->id)
      .bind(2, std::int64_t{found->colid})
      .run();
  database_.cached("delete from cat_permissions where major_id = ?1 and minor_id = ?2 and class = 1")
      .bind(1, before->id)
      .bind(2, std::int64_t{found->colid})
      .run();
  removeProperties(database_, {PropertyOwner::Class::Column, before->id, found->colid});
  database_.cached("delete from cat_extended where class = 1 and major_id = ?1 and minor_id = ?2")
      .bind(1, before->id)
      .bind(2, std::int64_t{found->colid})
      .run();
  catalogue_.forget();
}

void CatalogueChanges::alterColumn(const ObjectName& tableName, const ColumnDef& column) {
  const auto before = requireTable(catalogue_, tableName);
  const auto* found = before->find(column.name);
  if (!found) {
    refuse("ALTER TABLE ALTER COLUMN failed because column '" + column.name + "' does not exist in table '" +
           before->name + "'.");
  }
  if (found->nullable && !column.nullable) {
    sqlite::Statement query(database_, "select 1 from " + quoteName(before->storage) + " where " +
                                           quoteColumn(found->name) + " is null limit 1");
    if (query.step()) {
      refuse("Cannot insert the value NULL into column '" + found->name + "', table '" + before->storage +
             "'; column does not allow nulls. UPDATE fails.");
    }
  }
  auto& update = database_.cached(
      "update cat_columns set xtype = ?3, xusertype = ?4, length = ?5, prec = ?6, scale = ?7, nullable = ?8, "
      "computed_text = null where object_id = ?1 and colid = ?2");
  update.bind(1, before->id).bind(2, std::int64_t{found->colid}).bind(3, std::int64_t{column.type.xtype});
  update.bind(4, std::int64_t{column.type.xusertype}).bind(5, std::int64_t{column.type.length});
  update.bind(6, std::int64_t{column.type.prec}).bind(7, std::int64_t{column.type.scale});
  update.bind(8, std::int64_t{column.nullable}).run();
  const PropertyOwner owner{PropertyOwner::Class::Column, before->id, found->colid};
  // A collation that isn't written is the database's.
  for (const char* each : {"collation_name", "is_persisted"}) setProperty(database_, owner, each, "");
  setProperties(database_, owner, column.properties);
  catalogue_.forget();
  const auto after = requireTable(catalogue_, tableName);
  // The unique indexes treat columns with and without Null differently.
  if (storageDeclaration(found->type) != storageDeclaration(column.type) || found->nullable != column.nullable)
    rebuildStorageTable(database_, catalogue_, *after, found->name);
}

void CatalogueChanges::setColumnProperties(const ObjectName& tableName, std::string_view column,
                                           const Properties& properties) {
  const auto table = requireTable(catalogue_, tableName);
  setProperties(database_, {PropertyOwner::Class::Column, table->id, requireColumn(*table, column).colid}, properties);
}

void CatalogueChanges::setTableProperties(const ObjectName& tableName, const Properties& properties) {
  setProperties(database_, {PropertyOwner::Class::Object, requireTable(catalogue_, tableName)->id}, properties);
}

void CatalogueChanges::compressTable(const ObjectName& tableName, const Properties& compressions) {
  const auto table = requireTable(catalogue_, tableName);
  const std::int64_t rows = hasClusteredIndex(database_, table->id) ? 1 : 0;
  setProperties(database_, {PropertyOwner::Class::Index, table->id, rows}, compressions);
}

void CatalogueChanges::setPeriod(const ObjectName& tableName, const std::string& start, const std::string& end) {
  const auto table = requireTable(catalogue_, tableName);
  const PropertyOwner owner{PropertyOwner::Class::Object, table->id};
  for (const auto& [name, column] : {std::pair("period_start", &start), std::pair("period_end", &end)})
    setProperty(database_, owner, name, column->empty() ? "" : std::to_string(requireColumn(*table, *column).colid));
}

void CatalogueChanges::addIndex(const ObjectName& tableName, const IndexDef& index) {
  const auto info = indexed(tableName);
  for (const std::string& name : index.columns) {
    if (requireColumn(*info, name).nullable && index.kind == KeyKind::PrimaryKey)
      refuse("Cannot define PRIMARY KEY constraint on nullable column in table '" + info->name + "'.");
  }
  if (index.dropExisting) dropIndex(tableName, index.name);
  const int indid = TableRows(database_, catalogue_, *info).addIndex(index);
  place(*info, indid, index.placement);
  if (catalogue_.table(tableName.schema, tableName.name)) createStorageIndexes(database_, catalogue_, *info, indid);
}

void CatalogueChanges::addForeignKey(const ObjectName& tableName, const ForeignKeyDef& key) {
  const auto info = requireTable(catalogue_, tableName);
  TableRows(database_, catalogue_, *info).addForeignKey(key);
}

void CatalogueChanges::addCheck(const ObjectName& tableName, const CheckDef& check) {
  const auto info = requireTable(catalogue_, tableName);
  TableRows(database_, catalogue_, *info).addCheck(check);
}

void CatalogueChanges::addDefault(const ObjectName& tableName, std::string_view column, const std::string& name,
                                  const std::string& text) {
  const auto info = requireTable(catalogue_, tableName);
  const auto* found = info->find(column);
  if (!found) {
    refuse("Column '" + std::string(column) + "' in table '" + info->name +
           "' is invalid for creating a default constraint.");
  }
  if (!found->defaultText.empty()) refuse("Column already has a DEFAULT bound to it.");
  TableRows(database_, catalogue_, *info).addDefault(*found, name, text);
  catalogue_.forget();
}

void CatalogueChanges::dropConstraint(const ObjectName& tableName, std::string_view name) {
  const auto info = requireTable(catalogue_, tableName);
  const auto object = catalogue_.find(info->schema, name);
  if (!object || object->parent != info->id || object->xtype == "TR")
    refuse("'" + std::string(name) + "' is not a constraint.");
  if (object->xtype == "PK" || object->xtype == "UQ") {
    auto& query = database_.cached("select indid, name from cat_indexes where constraint_id = ?1");
    query.bind(1, object->id);
    const bool found = query.step();
    const std::int64_t indid = found ? query.integer(0) : 0;
    const std::string index = found ? std::string(query.text(1)) : "";
    query.reset();
    if (found) refuseReferencedKey(database_, info->id, indid, object->name);
    if (found) removeIndex(database_, *info, indid, index);
  }
  if (object->xtype == "D") {
    database_.cached("update cat_columns set cdefault = 0 where object_id = ?1 and cdefault = ?2")
        .bind(1, info->id)
        .bind(2, object->id)
        .run();
  }
  removeObject(database_, object->id);
  catalogue_.forget();
}

void CatalogueChanges::dropIndex(const ObjectName& tableName, std::string_view name) {
  const auto info = indexed(tableName);
  auto& query = database_.cached("select indid, constraint_id from cat_indexes where object_id = ?1 and name = ?2");
  query.bind(1, info->id).bind(2, name);
  const bool found = query.step();
  const std::int64_t indid = found ? query.integer(0) : 0;
  const bool constraint = found && query.integer(1) != 0;
  query.reset();
  const std::string shown = info->storage + "." + std::string(name);
  if (!found) {
    refuse("Cannot drop the index '" + shown + "', because it does not exist or you do not have permission.");
  }
  if (constraint) {
    refuse("An explicit DROP INDEX is not allowed on index '" + shown +
           "'. It is being used for PRIMARY KEY or UNIQUE KEY constraint enforcement.");
  }
  removeIndex(database_, *info, indid, name);
}

}  // namespace qrel::tsql
