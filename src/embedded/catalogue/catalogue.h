// The catalogue of one database file: what it holds. How objects get into it and out of it: catalogueChanges.h.
//
// Stored tables (all in the .mdf; `name` columns have COLLATE q_text):
//   cat_schemas(id PK, name, owner)                  1 is dbo; owner: a principal
//   cat_types(xusertype PK, schema_id, name, xtype, length, prec, scale, nullable, table_object)   from 257 on: alias
//               types, and types of tables, whose table_object is their object "TT_..."
//   cat_objects(id PK, name, schema_id, xtype, parent_obj, crdate)
//   cat_columns(object_id, colid, name, xtype, xusertype, length, prec, scale, nullable, is_identity, seed, increment,
//               cdefault, computed_text)             PK (object_id, colid); cdefault: the default's object id or 0
//   cat_indexes(object_id, indid, name, kind, is_unique, constraint_id, filter)   PK (object_id, indid); indid 1 is
//               clustered; kind 'PK', 'UQ', 'IX'; 'CS' columnstore, 'XM' XML, 'SP' spatial; 'ST' statistics
//   cat_indexkeys(object_id, indid, ordinal, colid, keyno, descending)   PK (object_id, indid, ordinal); keyno from 1,
//               0 for an included column, and for all columns of 'CS', 'XM', 'SP' and 'ST'
//   cat_references(constid PK, fkeyid, rkeyid), cat_referencekeys(constid, keyno, fcolid, rcolid)
//   cat_comments(object_id, colid, text)             rows of 4,000 characters from colid 1; text Null when encrypted
//   cat_sequences(object_id PK, next, increment)     next is what NEXT VALUE FOR gives
//   cat_permissions(class, major_id, minor_id, type, permission_name, state, grantee, grantor)   grantor Null: dbo
//   cat_principals(id PK, name, type, owner, default_schema, authentication)   type and authentication as in the views
//   cat_members(role_id, member_id)
//   cat_extended(class, major_id, minor_id, name, value)   extended properties; class as in the views
//   cat_parameters(object_id, parameter_id, ...)     of procedures and functions; 0 is what a function returns
//   cat_entities(kind, id, name)                     'FG' filegroups, 'PS' partition schemes (one row of ids), 'PF'
//               partition functions, 'FC' full-text catalogues; the rest of them is in cat_properties
//   cat_properties(object_id, class, minor_id, name, value)   PK all but value: what the other tables have no column
//               for, under the name that it has in the sys views; class and minor_id as in PropertyOwner. What is
//               not there is 0, or what a server takes where nothing is written
// The views that queries see (sysobjects, sys.objects, ...) are temporary
// views over them, made per connection by createCatalogueViews, since they depend on the server's version. A user table
// schema.name is the SQLite table "schema.name".
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/language/lexer.h"
#include "embedded/sqlite/sqlite.h"
#include "embedded/types/types.h"

namespace qrel::tsql {

// Under the name that it has in the sys views; flags are "1".
struct Property {
  std::string name, value;
};
using Properties = std::vector<Property>;

struct ColumnDef {
  std::string name;
  TypeRef type;
  bool nullable = true;
  bool identity = false;
  std::string identitySeed = "1";  // text: seeds may have 38 digits
  std::string identityIncrement = "1";
  std::string defaultText;   // as the server keeps it, in brackets; empty: none
  std::string defaultName;   // empty with a default: the server makes one up
  std::string computedText;  // as the server keeps it; empty: an ordinary column
  bool rowGuid = false;
  Properties properties;
};

enum class KeyKind : std::uint8_t { PrimaryKey, Unique, Index, Columnstore, Xml, Spatial, Statistics };

// Where a table or index is put: a filegroup, or a partition scheme with the column that it goes by. No name: where the
// table is, or the default one.
struct Placement {
  std::string space, column;
};

// An index, primary key or unique constraint. Columns are key columns only.
struct IndexDef {
  std::string name;  // empty for a constraint: made up
  KeyKind kind = KeyKind::Index;
  bool clustered = false;
  bool unique = false;
  std::vector<std::string> columns;
  std::vector<bool> descending;
  std::vector<std::string> included;
  std::string filter;         // text behind WHERE, empty: none
  bool dropExisting = false;  // takes the place of the index of its name
  std::string primaryXml;     // of a secondary XML index: the primary one
  Placement placement;
  Properties properties;
};

struct ForeignKeyDef {
  std::string name;  // empty: made up
  std::vector<std::string> columns;
  ObjectName referenced;
  std::vector<std::string> referencedColumns;  // empty: the primary key's
  Properties properties;
};

struct CheckDef {
  std::string name;    // empty: made up
  std::string column;  // for the made-up name; empty for a table constraint
  std::string text;    // in brackets
  Properties properties;
};

// SYSTEM_VERSIONING.
struct VersioningDef {
  bool on = false;
  ObjectName history;  // no name: made up
  Properties properties;
};

struct TableDef {
  std::string schema = "dbo";
  std::string name;
  std::vector<ColumnDef> columns;
  std::vector<IndexDef> indexes;
  std::vector<ForeignKeyDef> foreignKeys;
  std::vector<CheckDef> checks;
  std::string periodStart, periodEnd;  // columns of PERIOD FOR SYSTEM_TIME
  Placement placement, texts, files;   // ON, TEXTIMAGE_ON, FILESTREAM_ON
  Properties properties;
  Properties compressions;  // of the table's rows, as an index has them
  std::optional<VersioningDef> versioning;
};

// A table as INSERT, UPDATE and SELECT need it.
struct TableInfo {
  std::int64_t id = 0;
  std::string schema, name;
  std::string storage;     // the SQLite table's name, unquoted: "dbo.Track"
  bool temporary = false;  // a #table or a table variable: no catalogue has it
  struct Column {
    std::string name;
    TypeRef type;
    bool nullable = true;
    bool identity = false;
    bool computed = false;
    std::string defaultText;  // as the server keeps it
    std::string computedText;
    std::int64_t identitySeed = 1;
    std::int64_t identityIncrement = 1;
    int colid = 0;
  };
  std::vector<Column> columns;
  const Column* find(std::string_view columnName) const;
};

// A type of tables: its number as a type, and the object "TT_..." that its columns belong to.
struct TableTypeInfo {
  int xusertype = 0;
  std::int64_t object = 0;
};
// The objects behind types of tables, and their constraints, have ids from here on: the old views know nothing of them.
inline constexpr std::int64_t firstTableTypeObject = 1900000000;

struct ObjectInfo {
  std::int64_t id = 0;
  std::string schema, name;
  std::string xtype;  // "U", "V", "P", "FN", "IF", "TF", "TR", "F", "PK", "UQ", "C", "D", "SO", "TT", "SN"
  std::int64_t parent = 0;
};

class TemporaryTables;

// Look-ups in the stored catalogue. It changes nothing but what it keeps.
class Catalogue {
 public:
  // `database` is an open .mdf; `serverMajor` its server's major version.
  Catalogue(sqlite::Database& database, int serverMajor);
  ~Catalogue();

  // Makes the stored tables in an empty file, with the schema (or owner) dbo and the system types.
  static void createStorage(sqlite::Database& database);

  // Raises 0x80004005, with a sentence, for a file that is no database of this server, and for one whose catalogue has
  // lost a part: such a one must not read as if it held less.
  static void requireWhole(sqlite::Database& database);

  int serverMajor() const { return serverMajor_; }
  sqlite::Database& database() const { return database_; }

  // Look-ups. Names compare without case and trailing blanks; an empty schema means dbo.
  std::optional<ObjectInfo> find(std::string_view schema, std::string_view name) const;
  std::optional<ObjectInfo> find(std::int64_t id) const;
  // Empty when there is no such table. Kept until the table changes. Temporary tables and table variables are found
  // too, whatever the schema.
  std::shared_ptr<const TableInfo> table(std::string_view schema, std::string_view name) const;
  // Of anything that has columns; not kept.
  std::shared_ptr<TableInfo> columnsOf(const ObjectInfo& object) const;
  std::optional<TypeRef> aliasType(std::string_view schema, std::string_view name) const;
  // What a scalar function was declared to return.
  std::optional<TypeRef> returned(std::int64_t function) const;
  std::optional<TableTypeInfo> tableType(std::string_view schema, std::string_view name) const;
  bool schemaExists(std::string_view name) const;

  // Those of whoever works with this handle.
  TemporaryTables& temporary() const { return *temporary_; }

  // What the session that works with this handle has counted identity columns to, by table id; null: there is none.
  const std::map<std::int64_t, std::int64_t>* counters = nullptr;

  // Forgets kept look-ups; call after a rollback.
  void forget() const;

 private:
  sqlite::Database& database_;
  int serverMajor_;
  std::unique_ptr<TemporaryTables> temporary_;
  mutable std::map<std::string, std::shared_ptr<const TableInfo>, std::less<>> tables_;
};

// Makes the temporary views that catalogue queries see, for this server version: the sysobjects family always, "sys.*"
// and "INFORMATION_SCHEMA.*" from version 9 on (INFORMATION_SCHEMA.TABLES/VIEWS/ROUTINES/COLUMNS also below).
void createCatalogueViews(sqlite::Database& database, int serverMajor);

// The name under which a catalogue view or table is known to SQLite, for a one- to three-part name without database:
// sysobjects, dbo.sysobjects -> "sysobjects"; sys.Objects -> "sys.objects"; information_schema.tables ->
// "INFORMATION_SCHEMA.TABLES". Empty when it is no catalogue name of that version.
std::string catalogueViewName(std::string_view schema, std::string_view name, int serverMajor);

}  // namespace qrel::tsql
