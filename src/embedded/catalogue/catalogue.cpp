#include "embedded/catalogue/catalogue.h"

#include <algorithm>

#include "embedded/catalogue/reading.h"
#include "embedded/catalogue/temporaryTables.h"
#include "embedded/sqlite/storageNames.h"
#include "embedded/types/collations.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// What has one name comes in the order of its ids: an index on a name alone has the row's key behind it.
constexpr const char* storageSql = R"(
create table cat_schemas(id integer primary key, name text collate q_text, owner integer);
create unique index cat_schemas_name on cat_schemas(name);
create table cat_types(xusertype integer primary key, schema_id integer, name text collate q_text, xtype integer,
  length integer, prec integer, scale integer, nullable integer, table_object integer);
create unique index cat_types_name on cat_types(name, schema_id);
create table cat_objects(id integer primary key, name text collate q_text, schema_id integer, xtype text,
  parent_obj integer, crdate text);
create unique index cat_objects_unique on cat_objects(schema_id, name);
create index cat_objects_name on cat_objects(name);
create index cat_objects_parent on cat_objects(parent_obj);
create table cat_columns(object_id integer, colid integer, name text collate q_text, xtype integer, xusertype integer,
  length integer, prec integer, scale integer, nullable integer, is_identity integer, seed text, increment text,
  cdefault integer, computed_text text, primary key(object_id, colid)) without rowid;
create table cat_indexes(object_id integer, indid integer, name text collate q_text, kind text, is_unique integer,
  constraint_id integer, filter text, primary key(object_id, indid)) without rowid;
create index cat_indexes_constraint on cat_indexes(constraint_id);
create index cat_indexes_name on cat_indexes(name);
create table cat_indexkeys(object_id integer, indid integer, ordinal integer, colid integer, keyno integer,
  descending integer, primary key(object_id, indid, ordinal)) without rowid;
create table cat_references(constid integer primary key, fkeyid integer, rkeyid integer);
create index cat_references_fkey on cat_references(fkeyid);
create index cat_references_rkey on cat_references(rkeyid);
create table cat_referencekeys(constid integer, keyno integer, fcolid integer, rcolid integer,
  primary key(constid, keyno)) without rowid;
create table cat_comments(object_id integer, colid integer, text text, primary key(object_id, colid));
create table cat_sequences(object_id integer primary key, next integer, increment integer);
create table cat_permissions(class integer, major_id integer, minor_id integer, type text, permission_name text,
  state text, grantee text collate q_text, grantor text collate q_text);
create index cat_permissions_object on cat_permissions(major_id);
create table cat_properties(object_id integer, class integer, minor_id integer, name text, value text,
  primary key(object_id, class, minor_id, name)) without rowid;
create table cat_principals(id integer primary key, name text collate q_text, type text, owner integer,
  default_schema text, authentication integer);
create unique index cat_principals_name on cat_principals(name);
create table cat_members(role_id integer, member_id integer, primary key(role_id, member_id)) without rowid;
create table cat_extended(class integer, major_id integer, minor_id integer, name text collate q_text, value,
  primary key(class, major_id, minor_id, name)) without rowid;
create table cat_parameters(object_id integer, parameter_id integer, name text collate q_text, xtype integer,
  xusertype integer, length integer, prec integer, scale integer, is_output integer, is_readonly integer,
  primary key(object_id, parameter_id)) without rowid;
create table cat_entities(kind text, id integer, name text collate q_text, primary key(kind, id)) without rowid;
insert into cat_schemas values(1, 'dbo', 1);
insert into cat_principals values(0, 'public', 'R', 1, null, 0), (1, 'dbo', 'S', null, 'dbo', 1),
  (2, 'guest', 'S', null, 'guest', 0), (3, 'INFORMATION_SCHEMA', 'S', null, null, 0), (4, 'sys', 'S', null, null, 0),
  (16384, 'db_owner', 'R', 1, null, 0), (16385, 'db_accessadmin', 'R', 1, null, 0),
  (16386, 'db_securityadmin', 'R', 1, null, 0), (16387, 'db_ddladmin', 'R', 1, null, 0),
  (16389, 'db_backupoperator', 'R', 1, null, 0), (16390, 'db_datareader', 'R', 1, null, 0),
  (16391, 'db_datawriter', 'R', 1, null, 0), (16392, 'db_denydatareader', 'R', 1, null, 0),
  (16393, 'db_denydatawriter', 'R', 1, null, 0);
insert into cat_entities values('FG', 1, 'PRIMARY');
)";

std::string tableKey(std::string_view schema, std::string_view name) {
  return collationKey(orDbo(schema)) + '\n' + collationKey(name);
}

// The type of a catalogue row whose columns are xtype, xusertype, length, prec, scale from `first` on.
TypeRef typeOfRow(const sqlite::Statement& row, int first) {
  TypeRef type;
  type.xtype = static_cast<int>(row.integer(first));
  type.xusertype = static_cast<int>(row.integer(first + 1));
  type.length = static_cast<int>(row.integer(first + 2));
  type.prec = static_cast<int>(row.integer(first + 3));
  type.scale = static_cast<int>(row.integer(first + 4));
  for (const SystemType& system : systemTypes()) {
    const bool same = type.xusertype < firstAliasType
                          ? system.xusertype == type.xusertype
                          : system.xtype == type.xtype && system.xusertype != sysnameXusertype;
    if (!same) continue;
    type.name = system.name;
    type.baseName = system.xusertype == sysnameXusertype ? "nvarchar" : system.name;
    type.dataType = system.dataType;
    break;
  }
  return type;
}

}  // namespace

std::string_view orDbo(std::string_view schema) { return schema.empty() ? "dbo" : schema; }

std::int64_t schemaId(sqlite::Database& database, std::string_view schema) {
  auto& query = database.cached("select id from cat_schemas where name = ?1");
  query.bind(1, orDbo(schema));
  const std::int64_t id = query.step() ? query.integer(0) : 0;
  query.reset();
  return id;
}

std::optional<std::int64_t> keptIdentity(sqlite::Database& database, std::int64_t table) {
  auto& query = database.cached("select value from cat_properties where class = 0 and object_id = ?1 and name = ?2");
  std::optional<std::int64_t> last;
  if (query.bind(1, table).bind(2, std::string_view(lastIdentityProperty)).step())
    last = std::stoll(std::string(query.text(0)));
  query.reset();
  return last;
}

std::string commentText(sqlite::Database& database, std::int64_t id) {
  std::string text;
  auto& query = database.cached("select text from cat_comments where object_id = ?1 order by colid");
  query.bind(1, id);
  while (query.step()) text += query.text(0);
  query.reset();
  return text;
}

const TableInfo::Column* TableInfo::find(std::string_view columnName) const {
  for (const Column& column : columns)
    if (column.name == columnName) return &column;
  for (const Column& column : columns)
    if (compareCollated(column.name, columnName) == 0) return &column;
  return nullptr;
}

Catalogue::Catalogue(sqlite::Database& database, int serverMajor)
    : database_(database), serverMajor_(serverMajor), temporary_(std::make_unique<TemporaryTables>()) {}

Catalogue::~Catalogue() = default;

void Catalogue::createStorage(sqlite::Database& database) {
  registerCollations(database);
  database.execute("begin");
  try {
    database.execute(storageSql);
    database.execute("commit");
  } catch (...) {
    if (sqlite3_get_autocommit(database.get()) == 0)
      sqlite3_exec(database.get(), "rollback", nullptr, nullptr, nullptr);
    throw;
  }
}

namespace {

// The definitions of the stored tables, as SQLite keeps them: from the table's name on.
std::vector<std::string_view> storedDefinitions() {
  constexpr std::string_view head = "create table ";
  std::vector<std::string_view> definitions;
  const std::string_view all = storageSql;
  for (std::size_t at = all.find(head); at != std::string_view::npos; at = all.find(head, at)) {
    at += head.size();
    definitions.push_back(all.substr(at, all.find(';', at) - at));
  }
  return definitions;
}

// Objects that lack what each of their kind has.
constexpr const char* lostPartSql =
    "select not exists(select 1 from cat_schemas where id = 1) or exists(select 1 from cat_objects o where case "
    "when o.xtype = 'U' then not exists(select 1 from cat_columns where object_id = o.id) "
    "when o.xtype in ('P', 'V', 'FN', 'IF', 'TF', 'TR', 'C', 'D') then "
    "not exists(select 1 from cat_comments where object_id = o.id) "
    "when o.xtype in ('PK', 'UQ') then not exists(select 1 from cat_indexes where constraint_id = o.id) "
    "when o.xtype = 'F' then not exists(select 1 from cat_references r join cat_referencekeys k on "
    "k.constid = r.constid where r.constid = o.id) else not exists(select 1 from cat_schemas where id = o.schema_id) "
    "end)";

[[noreturn]] void refuseFile(const sqlite::Database& database, const std::string& what) {
  throw DataError(errorNumber::cannotConnect, "The database file '" + database.file().string() + "' " + what, "08001");
}

constexpr const char* damaged =
    "is damaged, or of another version of this program: it is not whole. Load the database again with \"qrel load "
    "--replace\", or put back a copy of the file.";

// A file that was cut off within its last page would read as if that page held nothing.
void requireWholeFile(sqlite::Database& database) {
  const auto number = [&](const char* pragma) {
    sqlite::Statement query(database, pragma);
    return query.step() ? query.integer(0) : 0;
  };
  const std::int64_t size = number("pragma page_count") * number("pragma page_size");
  std::error_code error;
  const auto there = std::filesystem::file_size(database.file(), error);
  if (error) refuseFile(database, "cannot be read: " + error.message() + ".");
  if (static_cast<std::int64_t>(there) < size) refuseFile(database, damaged);
}

}  // namespace

void Catalogue::requireWhole(sqlite::Database& database) {
  requireWholeFile(database);
  std::vector<std::string> found;
  sqlite::Statement query(database,
                          "select sql from sqlite_master where type = 'table' and name like 'cat!_%' escape '!'");
  while (query.step()) found.emplace_back(query.text(0));
  constexpr std::size_t head = std::string_view("CREATE TABLE ").size();
  const auto isThere = [&](std::string_view definition) {
    return std::any_of(found.begin(), found.end(), [&](const std::string& sql) {
      return std::string_view(sql).substr(std::min(head, sql.size())) == definition;
    });
  };
  const std::vector<std::string_view> wanted = storedDefinitions();
  if (std::none_of(wanted.begin(), wanted.end(), isThere))
    refuseFile(database, "is not a database of this server. Load a database with \"qrel load\".");
  bool whole = std::all_of(wanted.begin(), wanted.end(), isThere);
  if (whole) {
    sqlite::Statement lost(database, lostPartSql);
    whole = lost.step() && lost.integer(0) == 0;
  }
  if (!whole) refuseFile(database, damaged);
}

std::optional<ObjectInfo> Catalogue::find(std::string_view schema, std::string_view name) const {
  auto& query = database_.cached(
      "select o.id, s.name, o.name, o.xtype, o.parent_obj from cat_objects o join cat_schemas s on s.id = o.schema_id "
      "where o.name = ?1 and s.name = ?2");
  query.bind(1, name).bind(2, orDbo(schema));
  std::optional<ObjectInfo> found;
  if (query.step()) {
    found = ObjectInfo{query.integer(0), std::string(query.text(1)), std::string(query.text(2)),
                       std::string(query.text(3)), query.integer(4)};
  }
  query.reset();
  return found;
}

std::optional<ObjectInfo> Catalogue::find(std::int64_t id) const {
  auto& query = database_.cached(
      "select o.id, s.name, o.name, o.xtype, o.parent_obj from cat_objects o join cat_schemas s on s.id = o.schema_id "
      "where o.id = ?1");
  query.bind(1, id);
  std::optional<ObjectInfo> found;
  if (query.step()) {
    found = ObjectInfo{query.integer(0), std::string(query.text(1)), std::string(query.text(2)),
                       std::string(query.text(3)), query.integer(4)};
  }
  query.reset();
  return found;
}

std::shared_ptr<const TableInfo> Catalogue::table(std::string_view schema, std::string_view name) const {
  if (isTemporaryName(name)) {
    const TemporaryTable* temporary = temporary_->find(database_, name);
    return temporary ? temporary->info : nullptr;
  }
  const std::string key = tableKey(schema, name);
  if (const auto kept = tables_.find(key); kept != tables_.end()) return kept->second;
  const auto object = find(schema, name);
  if (!object || object->xtype != "U") return nullptr;
  auto table = columnsOf(*object);
  tables_.emplace(key, table);
  return table;
}

std::shared_ptr<TableInfo> Catalogue::columnsOf(const ObjectInfo& object) const {
  auto table = std::make_shared<TableInfo>();
  table->id = object.id;
  table->schema = object.schema;
  table->name = object.name;
  table->storage = storageName(object.schema, object.name);
  auto& query = database_.cached(
      "select c.xtype, c.xusertype, c.length, c.prec, c.scale, c.name, c.nullable, c.is_identity, c.cdefault, "
      "c.computed_text, c.colid, t.name, c.seed, c.increment, p.value from cat_columns c left join cat_types t on "
      "t.xusertype = c.xusertype left join cat_properties p on p.object_id = c.object_id and p.class = 1 and "
      "p.minor_id = c.colid and p.name = 'generated_always_type' "
      "where c.object_id = ?1 order by c.colid");
  query.bind(1, table->id);
  while (query.step()) {
    TableInfo::Column& column = table->columns.emplace_back();
    column.type = typeOfRow(query, 0);
    column.name = query.text(5);
    column.nullable = query.integer(6) != 0;
    column.identity = query.integer(7) != 0;
    if (const std::int64_t id = query.integer(8); id != 0) column.defaultText = commentText(database_, id);
    column.computedText = query.text(9);
    column.computed = !column.computedText.empty();
    column.colid = static_cast<int>(query.integer(10));
    if (!query.isNull(11)) column.type.name = query.text(11);
    if (column.identity) {
      column.identitySeed = query.integer(12);
      column.identityIncrement = query.integer(13);
    }
    // The period of a row begins when it is written and has no end.
    if (query.text(14) == "1") column.defaultText = "(sysutcdatetime())";
    if (query.text(14) == "2") column.defaultText = "('9999-12-31 23:59:59.9999999')";
  }
  query.reset();
  return table;
}

std::optional<TypeRef> Catalogue::aliasType(std::string_view schema, std::string_view name) const {
  auto& query = database_.cached(
      "select t.xtype, t.xusertype, t.length, t.prec, t.scale, t.name, t.nullable from cat_types t "
      "join cat_schemas s on s.id = t.schema_id where t.name = ?1 and s.name = ?2 and t.table_object is null");
  query.bind(1, name).bind(2, orDbo(schema));
  std::optional<TypeRef> found;
  if (query.step()) {
    found = typeOfRow(query, 0);
    found->name = query.text(5);
    found->aliasNullable = query.integer(6) != 0;
  }
  query.reset();
  return found;
}

std::optional<TypeRef> Catalogue::returned(std::int64_t function) const {
  auto& query = database_.cached(
      "select xtype, xusertype, length, prec, scale from cat_parameters where object_id = ?1 and parameter_id = 0");
  std::optional<TypeRef> found;
  if (query.bind(1, function).step()) found = typeOfRow(query, 0);
  query.reset();
  return found;
}

std::optional<TableTypeInfo> Catalogue::tableType(std::string_view schema, std::string_view name) const {
  auto& query = database_.cached(
      "select t.xusertype, t.table_object from cat_types t join cat_schemas s on s.id = t.schema_id "
      "where t.name = ?1 and s.name = ?2 and t.table_object is not null");
  query.bind(1, name).bind(2, orDbo(schema));
  std::optional<TableTypeInfo> found;
  if (query.step()) found = TableTypeInfo{static_cast<int>(query.integer(0)), query.integer(1)};
  query.reset();
  return found;
}

bool Catalogue::schemaExists(std::string_view name) const { return schemaId(database_, name) != 0; }

void Catalogue::forget() const { tables_.clear(); }

}  // namespace qrel::tsql
