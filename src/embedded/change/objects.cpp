// Changes of everything that is no table: modules, schemas, types, permissions; names and removal of all objects.
#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <limits>
#include <utility>

#include "embedded/change/changes.h"
#include "embedded/change/parts.h"
#include "embedded/change/properties.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/sqlite/storageNames.h"
#include "platform/system.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr std::int64_t firstObjectId = 245575913;
constexpr std::int64_t objectIdStep = 16;
constexpr std::size_t commentCharacters = 4000;
constexpr std::int64_t dboSchema = 1;

std::string now() {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  const std::tm parts = system::localTime(seconds);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
  return text.data();
}

// Another table's foreign key that points at this table; empty: none.
std::string referencingKey(sqlite::Database& database, std::int64_t table) {
  auto& query = database.cached(
      "select o.name from cat_references r join cat_objects o on o.id = r.constid "
      "where r.rkeyid = ?1 and r.fkeyid <> ?1");
  std::string name;
  if (query.bind(1, table).step()) name = query.text(0);
  query.reset();
  return name;
}

// With the objects that belong to it, unless only its columns and indexes are meant.
void removeTableRows(sqlite::Database& database, const TableInfo& table, bool withParts = true) {
  std::vector<std::int64_t> parts;
  auto& query = database.cached("select id from cat_objects where parent_obj = ?1");
  query.bind(1, table.id);
  while (withParts && query.step()) parts.push_back(query.integer(0));
  query.reset();
  for (const std::int64_t part : parts) removeObject(database, part);
  for (const char* rows : {"cat_columns", "cat_indexkeys", "cat_indexes"})
    database.cached("delete from " + std::string(rows) + " where object_id = ?1").bind(1, table.id).run();
  database.execute("drop table if exists " + quoteName(table.storage));
}

void renameObject(sqlite::Database& database, std::int64_t id, std::string_view newName) {
  database.cached("update cat_objects set name = ?2 where id = ?1").bind(1, id).bind(2, newName).run();
  database.cached("update cat_indexes set name = ?2 where constraint_id = ?1").bind(1, id).bind(2, newName).run();
}

void requireFreeType(const Catalogue& catalogue, const ObjectName& name, std::int64_t schema) {
  if (catalogue.aliasType(name.schema, name.name) || catalogue.tableType(name.schema, name.name) ||
      (schema == dboSchema && findSystemType(name.name)))
    refuse("The type '" + fullName(name.schema, name.name) +
           "' already exists, or you do not have permission to create it.");
}

sqlite::Statement& typeInsert(sqlite::Database& database) {
  return database.cached(
      "insert into cat_types select max(ifnull(max(xusertype), 0) + 1, 257), ?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8 from "
      "cat_types");
}

void writeParameters(sqlite::Database& database, std::int64_t id, const std::vector<ParameterDef>& parameters) {
  database.cached("delete from cat_parameters where object_id = ?1").bind(1, id).run();
  auto& insert = database.cached("insert into cat_parameters values(?1,?2,?3,?4,?5,?6,?7,?8,?9,?10)");
  std::int64_t number = 0;
  for (const ParameterDef& each : parameters) {
    insert.bind(1, id).bind(2, each.name.empty() ? 0 : ++number).bind(3, each.name);
    insert.bind(4, std::int64_t{each.type.xtype}).bind(5, std::int64_t{each.type.xusertype});
    insert.bind(6, std::int64_t{each.type.length}).bind(7, std::int64_t{each.type.prec});
    insert.bind(8, std::int64_t{each.type.scale}).bind(9, std::int64_t{each.output});
    insert.bind(10, std::int64_t{each.readonly}).run();
  }
}

void dropStorageIndexes(sqlite::Database& database, const TableInfo& table) {
  std::vector<std::string> names;
  auto& query = database.cached("select name from cat_indexes where object_id = ?1");
  query.bind(1, table.id);
  while (query.step()) names.emplace_back(query.text(0));
  query.reset();
  for (const std::string& name : names) dropStorageIndex(database, table, name);
}

}  // namespace

std::int64_t requireSchema(sqlite::Database& database, std::string_view name) {
  const std::int64_t id = schemaId(database, name);
  if (id == 0) {
    refuse("The specified schema name \"" + std::string(name) +
           "\" either does not exist or you do not have permission to use it.");
  }
  return id;
}

std::int64_t addObject(sqlite::Database& database, std::string_view name, std::int64_t schema, std::string_view xtype,
                       std::int64_t parent) {
  auto& taken = database.cached("select 1 from cat_objects where name = ?1 and schema_id = ?2");
  const bool found = taken.bind(1, name).bind(2, schema).step();
  taken.reset();
  if (found) refuse("There is already an object named '" + std::string(name) + "' in the database.");
  const bool ofType = xtype == "TT" || parent >= firstTableTypeObject;
  auto& highest = database.cached("select max(id) from cat_objects where id < ?1");
  highest.bind(1, ofType ? std::numeric_limits<std::int64_t>::max() : firstTableTypeObject).step();
  std::int64_t id = highest.isNull(0) ? firstObjectId : highest.integer(0) + objectIdStep;
  if (ofType) id = std::max(id, firstTableTypeObject);
  highest.reset();
  auto& insert = database.cached("insert into cat_objects values(?1,?2,?3,?4,?5,?6)");
  insert.bind(1, id).bind(2, name).bind(3, schema).bind(4, xtype).bind(5, parent).bind(6, now()).run();
  return id;
}

void removeObject(sqlite::Database& database, std::int64_t id) {
  // The keys' columns go before the keys, which tell whose they are.
  constexpr const char* columnsOfKeys =
      "delete from cat_referencekeys where constid in (select constid from cat_references where ?1 in (constid, "
      "fkeyid))";
  for (const char* sql :
       {columnsOfKeys, "delete from cat_references where constid = ?1 or fkeyid = ?1",
        "delete from cat_comments where object_id = ?1", "delete from cat_sequences where object_id = ?1",
        "delete from cat_permissions where class = 1 and major_id = ?1",
        "delete from cat_extended where class in (1, 2, 7, 8) and major_id = ?1",
        "delete from cat_parameters where object_id = ?1", "delete from cat_objects where id = ?1"}) {
    database.cached(sql).bind(1, id).run();
  }
  removeAllProperties(database, id);
}

void writeComment(sqlite::Database& database, std::int64_t id, std::string_view text, bool encrypted) {
  database.cached("delete from cat_comments where object_id = ?1").bind(1, id).run();
  auto& insert = database.cached("insert into cat_comments values(?1,?2,?3)");
  for (std::int64_t row = 1; row == 1 || !text.empty(); ++row) {
    const std::string_view piece = leftCharacters(text, commentCharacters);
    insert.bind(1, id).bind(2, row);
    if (encrypted) {
      insert.bindNull(3);
    } else {
      insert.bind(3, piece);
    }
    insert.run();
    text = encrypted ? std::string_view() : text.substr(piece.size());
  }
}

void CatalogueChanges::createModule(const ModuleDef& module, bool replace) {
  std::int64_t parentId = 0;
  std::string schema = module.name.schema;
  if (module.parent) {
    const auto target = catalogue_.find(module.parent->schema, module.parent->name);
    if (!target || (target->xtype != "U" && target->xtype != "V")) {
      refuse("The object '" + fullName(module.parent->schema, module.parent->name) +
                 "' does not exist or is invalid for this operation.",
             errorNumber::invalidObjectName);
    }
    parentId = target->id;
    schema = target->schema;
  }
  const auto existing = catalogue_.find(schema, module.name.name);
  if (existing && replace && existing->xtype != module.xtype) {
    refuse("Cannot perform alter on '" + fullName(module.name.schema, module.name.name) +
           "' because it is an incompatible object type.");
  }
  const std::int64_t id = existing && replace ? existing->id
                                              : addObject(database_, module.name.name, requireSchema(database_, schema),
                                                          module.xtype, parentId);
  writeComment(database_, id, module.text, module.encrypted);
  setProperties(database_, {PropertyOwner::Class::Object, id}, module.properties);
  writeParameters(database_, id, module.parameters);
  if (!existing) return;
  if (module.xtype == "V") removeTableRows(database_, *catalogue_.columnsOf(*existing), false);
  database_.cached("update cat_objects set parent_obj = ?2 where id = ?1").bind(1, id).bind(2, parentId).run();
}

void CatalogueChanges::createPlain(const ObjectName& name, const std::string& xtype, const Properties& properties) {
  const std::int64_t id = addObject(database_, name.name, requireSchema(database_, name.schema), xtype, 0);
  setProperties(database_, {PropertyOwner::Class::Object, id}, properties);
}

void CatalogueChanges::createSequence(const ObjectName& name, std::int64_t start, std::int64_t increment,
                                      const Properties& properties) {
  const std::int64_t id = addObject(database_, name.name, requireSchema(database_, name.schema), "SO", 0);
  auto& insert = database_.cached("insert into cat_sequences values(?1,?2,?3)");
  insert.bind(1, id).bind(2, start).bind(3, increment).run();
  setProperties(database_, {PropertyOwner::Class::Object, id}, properties);
}

void CatalogueChanges::alterSequence(const ObjectName& name, bool restart, std::optional<std::int64_t> next,
                                     std::optional<std::int64_t> increment, const Properties& properties) {
  const auto object = catalogue_.find(name.schema, name.name);
  if (!object || object->xtype != "SO")
    refuse("Cannot alter the sequence '" + fullName(name.schema, name.name) +
           "', because it does not exist or you do not have permission.");
  const PropertyOwner owner{PropertyOwner::Class::Object, object->id};
  setProperties(database_, owner, properties);
  if (increment) {
    // What comes next is counted from the last value, if there has been one.
    database_
        .cached(
            "update cat_sequences set next = next + case when next = ?3 then 0 else ?2 - increment end, increment "
            "= ?2 where object_id = ?1")
        .bind(1, object->id)
        .bind(2, *increment)
        .bind(3, std::stoll(property(database_, owner, "start_value")))
        .run();
  }
  if (!restart) return;
  const std::int64_t first = next ? *next : std::stoll(property(database_, owner, "start_value"));
  database_.cached("update cat_sequences set next = ?2 where object_id = ?1").bind(1, object->id).bind(2, first).run();
}

std::int64_t CatalogueChanges::nextSequenceValue(const ObjectName& name) {
  const auto object = catalogue_.find(name.schema, name.name);
  if (!object || object->xtype != "SO")
    refuse("Invalid object name '" + fullName(name.schema, name.name) + "'.", errorNumber::invalidObjectName);
  auto& query = database_.cached("select next from cat_sequences where object_id = ?1");
  const std::int64_t value = query.bind(1, object->id).step() ? query.integer(0) : 0;
  query.reset();
  database_.cached("update cat_sequences set next = next + increment where object_id = ?1").bind(1, object->id).run();
  return value;
}

void CatalogueChanges::dropObject(const ObjectName& name, const std::vector<std::string>& xtypes) {
  const auto object = catalogue_.find(name.schema, name.name);
  if (!object || std::find(xtypes.begin(), xtypes.end(), object->xtype) == xtypes.end()) {
    refuse("Cannot drop the object '" + fullName(name.schema, name.name) +
           "', because it does not exist or you do not have permission.");
  }
  if (object->xtype == "V") removeTableRows(database_, *catalogue_.columnsOf(*object));
  if (object->xtype == "U") {
    if (!property(database_, {PropertyOwner::Class::Object, object->id}, "temporal_type").empty()) {
      refuse("Drop table operation failed on table '" + fullName(name.schema, name.name) +
             "' because it is not a supported operation on system-versioned temporal tables.");
    }
    if (!referencingKey(database_, object->id).empty()) {
      refuse("Could not drop object '" + fullName(name.schema, name.name) +
             "' because it is referenced by a FOREIGN KEY constraint.");
    }
    removeTableRows(database_, *catalogue_.table(name.schema, name.name));
  }
  removeObject(database_, object->id);
  catalogue_.forget();
}

void CatalogueChanges::createSchema(std::string_view name, std::string_view owner) {
  const auto isOurs = [&](std::string_view own) { return compareCollated(name, own) == 0; };
  if (catalogue_.schemaExists(name) || isOurs("sys") || isOurs("INFORMATION_SCHEMA") || isOurs("guest"))
    refuse("There is already an object named '" + std::string(name) + "' in the database.");
  auto& insert = database_.cached("insert into cat_schemas select max(max(id) + 1, 5), ?1, ?2 from cat_schemas");
  // Below version 9 a schema is its owner.
  const bool ofDbo = owner.empty() || catalogue_.serverMajor() < 9;
  insert.bind(1, name).bind(2, ofDbo ? dboPrincipal : requirePrincipal(database_, owner)).run();
}

void CatalogueChanges::dropSchema(std::string_view name) {
  const std::int64_t id = schemaId(database_, name);
  if (id <= 1) {
    refuse("Cannot drop the schema '" + std::string(name) +
           "', because it does not exist or you do not have permission.");
  }
  auto& query = database_.cached(
      "select * from (select name from cat_objects where schema_id = ?1 and xtype <> 'TT' order by id limit 1) "
      "union all select name from cat_types where schema_id = ?1");
  std::string object;
  if (query.bind(1, id).step()) object = query.text(0);
  query.reset();
  if (!object.empty()) {
    refuse("Cannot drop schema '" + std::string(name) + "' because it is being referenced by object '" + object + "'.");
  }
  for (const char* sql :
       {"delete from cat_schemas where id = ?1", "delete from cat_permissions where class = 3 and major_id = ?1",
        "delete from cat_extended where class = 3 and major_id = ?1"})
    database_.cached(sql).bind(1, id).run();
}

void CatalogueChanges::createAliasType(const ObjectName& name, const TypeRef& base, bool nullable) {
  const std::int64_t schema = requireSchema(database_, name.schema);
  requireFreeType(catalogue_, name, schema);
  auto& insert = typeInsert(database_);
  insert.bind(1, schema).bind(2, name.name).bind(3, std::int64_t{base.xtype}).bind(4, std::int64_t{base.length});
  insert.bind(5, std::int64_t{base.prec}).bind(6, std::int64_t{base.scale}).bind(7, std::int64_t{nullable});
  insert.bindNull(8).run();
}

void CatalogueChanges::createTableType(const ObjectName& name, TableDef table) {
  const std::int64_t schema = requireSchema(database_, name.schema);
  requireFreeType(catalogue_, name, schema);
  table.schema = name.schema;
  table.name =
      "TT_" + name.name + "_" + stableDigits(collationKey(orDbo(name.schema)) + '\n' + collationKey(name.name));
  const std::int64_t object = addTable(table, "TT");
  auto& insert = typeInsert(database_);
  insert.bind(1, schema).bind(2, name.name).bind(3, std::int64_t{xtype::Table}).bind(4, std::int64_t{-1});
  insert.bind(5, std::int64_t{0}).bind(6, std::int64_t{0}).bind(7, std::int64_t{0}).bind(8, object).run();
}

void CatalogueChanges::dropType(const ObjectName& name) {
  const auto alias = catalogue_.aliasType(name.schema, name.name);
  const auto table = catalogue_.tableType(name.schema, name.name);
  if (!alias && !table) {
    refuse("Cannot drop the type '" + fullName(name.schema, name.name) +
           "', because it does not exist or you do not have permission.");
  }
  const std::int64_t type = alias ? alias->xusertype : table->xusertype;
  auto& query = database_.cached(
      "select 1 from cat_columns where xusertype = ?1 union all select 1 from cat_parameters where xusertype = ?1");
  const bool used = query.bind(1, type).step();
  query.reset();
  if (used) refuse("Cannot drop type '" + fullName(name.schema, name.name) + "' because it is currently in use.");
  for (const char* sql :
       {"delete from cat_types where xusertype = ?1", "delete from cat_permissions where class = 6 and major_id = ?1",
        "delete from cat_extended where class = 6 and major_id = ?1"})
    database_.cached(sql).bind(1, type).run();
  if (!table) return;
  removeTableRows(database_, *catalogue_.columnsOf(*catalogue_.find(table->object)));
  removeObject(database_, table->object);
}

void CatalogueChanges::rename(const ObjectName& object, std::string_view column, std::string_view newName) {
  const auto found = catalogue_.find(object.schema, object.name);
  if (!found) refuse("Either the parameter @objname is ambiguous or the claimed @objtype (OBJECT) is wrong.");
  const auto info = found->xtype == "U" ? catalogue_.table(found->schema, found->name) : nullptr;
  if (!column.empty()) {
    renameColumnOrIndex(info.get(), column, newName);
    catalogue_.forget();
    return;
  }
  if (const auto other = catalogue_.find(found->schema, newName); other && other->id != found->id) {
    refuse("Error: The new name '" + std::string(newName) +
           "' is already in use as a object name and would cause a "
           "duplicate that is not permitted.");
  }
  const auto owner = info ? info : parentTable(*found);
  if (owner) dropStorageIndexes(database_, *owner);
  if (info) {
    database_.execute("alter table " + quoteName(info->storage) + " rename to " +
                      quoteName(storageName(info->schema, newName)));
  }
  renameObject(database_, found->id, newName);
  catalogue_.forget();
  if (owner)
    createStorageIndexes(database_, catalogue_, *catalogue_.table(owner->schema, info ? newName : owner->name));
}

void CatalogueChanges::transferObject(const ObjectName& name, std::string_view schema) {
  const auto found = catalogue_.find(name.schema, name.name);
  if (!found || found->parent != 0) {
    refuse("Cannot find the object '" + fullName(name.schema, name.name) +
           "', because it does not exist or you do not have permission.");
  }
  const std::int64_t to = requireSchema(database_, schema);
  if (catalogue_.find(schema, found->name)) refuse("The object with name \"" + found->name + "\" already exists.");
  const auto table = found->xtype == "U" ? catalogue_.table(found->schema, found->name) : nullptr;
  if (table) {
    dropStorageIndexes(database_, *table);
    database_.execute("alter table " + quoteName(table->storage) + " rename to " +
                      quoteName(storageName(schema, table->name)));
  }
  database_.cached("update cat_objects set schema_id = ?2 where ?1 in (id, parent_obj)")
      .bind(1, found->id)
      .bind(2, to)
      .run();
  database_.cached("delete from cat_permissions where class = 1 and major_id = ?1").bind(1, found->id).run();
  catalogue_.forget();
  if (table) createStorageIndexes(database_, catalogue_, *catalogue_.table(schema, table->name));
}

void CatalogueChanges::transferType(const ObjectName& name, std::string_view schema) {
  const std::int64_t from = requireSchema(database_, name.schema);
  const std::int64_t to = requireSchema(database_, schema);
  auto& query = database_.cached("select xusertype from cat_types where schema_id = ?1 and name = ?2");
  const bool there = query.bind(1, from).bind(2, name.name).step();
  const std::int64_t type = there ? query.integer(0) : 0;
  query.reset();
  if (!there)
    refuse("Cannot find the type '" + fullName(name.schema, name.name) +
           "', because it does not exist or you do not have permission.");
  requireFreeType(catalogue_, {"", "", std::string(schema), name.name}, to);
  database_.cached("update cat_types set schema_id = ?2 where xusertype = ?1").bind(1, type).bind(2, to).run();
  database_.cached("delete from cat_permissions where class = 6 and major_id = ?1").bind(1, type).run();
  catalogue_.forget();
}

std::shared_ptr<const TableInfo> CatalogueChanges::parentTable(const ObjectInfo& object) const {
  const auto parent = object.parent == 0 ? std::nullopt : catalogue_.find(object.parent);
  return parent ? catalogue_.table(parent->schema, parent->name) : nullptr;
}

void CatalogueChanges::renameColumnOrIndex(const TableInfo* table, std::string_view name, std::string_view newName) {
  const std::string ambiguous = "Either the parameter @objname is ambiguous or the claimed @objtype (COLUMN) is wrong.";
  if (!table) refuse(ambiguous);
  if (const auto* column = table->find(name)) {
    const auto* other = table->find(newName);
    if (other && other != column) {
      refuse("Error: The new name '" + std::string(newName) +
             "' is already in use as a COLUMN name and would cause a "
             "duplicate that is not permitted.");
    }
    database_.execute("alter table " + quoteName(table->storage) + " rename column " + quoteColumn(column->name) +
                      " to " + quoteColumn(newName));
    database_.cached("update cat_columns set name = ?3 where object_id = ?1 and colid = ?2")
        .bind(1, table->id)
        .bind(2, std::int64_t{column->colid})
        .bind(3, newName)
        .run();
    return;
  }
  auto& query = database_.cached("select constraint_id from cat_indexes where object_id = ?1 and name = ?2");
  const bool found = query.bind(1, table->id).bind(2, name).step();
  const std::int64_t constraint = found ? query.integer(0) : 0;
  query.reset();
  if (!found) refuse(ambiguous);
  dropStorageIndexes(database_, *table);
  if (constraint != 0) renameObject(database_, constraint, newName);
  database_.cached("update cat_indexes set name = ?3 where object_id = ?1 and name = ?2")
      .bind(1, table->id)
      .bind(2, name)
      .bind(3, newName)
      .run();
  createStorageIndexes(database_, catalogue_, *table);
}

}  // namespace qrel::tsql
