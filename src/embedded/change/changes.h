// How objects get into a catalogue and out of it, with the SQLite tables behind them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/catalogue/catalogue.h"

namespace qrel::tsql {

struct Permission {
  char state;  // 'G' granted, 'W' with grant option, 'D' denied, 'R' taken back, 'O' only the grant option taken back
  std::string name, grantee;
  std::string grantor;  // empty: dbo
};

// What has an owner or permissions. The classes' numbers are those of sys.database_permissions.
struct Securable {
  enum class Class : std::uint8_t {
    Database = 0,
    Object = 1,
    Schema = 3,
    Principal = 4,
    Type = 6,
    FullTextCatalogue = 23
  } of = Class::Database;
  ObjectName name;
};
struct Secured {
  std::int64_t kind, major;
};

struct PrincipalDef {
  std::string name;
  char type = 'S';            // as in sys.database_principals
  std::string owner;          // of a role; empty: dbo
  std::string defaultSchema;  // empty: none
  int authentication = 1;
};

// A thing by kind and name, as extended properties name it, from the outside in: SCHEMA dbo, TABLE t, COLUMN c.
struct Level {
  std::string kind, name;
};

struct ParameterDef {
  std::string name;  // with @; empty: what a function returns
  TypeRef type;
  bool output = false, readonly = false;
};

struct PartitionFunctionDef {
  std::string name;
  TypeRef type;
  bool right = false;
  std::vector<Value> boundaries;
};

struct ModuleDef {
  ObjectName name;
  std::string xtype;       // as in ObjectInfo
  std::string text;        // to the byte
  bool encrypted = false;  // no text is kept
  Properties properties;   // all that such an object can have: what isn't there is taken away from a replaced one
  std::optional<ObjectName> parent;  // a trigger's table or view
  std::vector<ParameterDef> parameters;
};

// Changes the catalogue that it is given, for the length of a statement. What a failed change has begun stays: whoever
// changes several things does it between a savepoint and its rollback.
class CatalogueChanges {
 public:
  explicit CatalogueChanges(Catalogue& catalogue) : catalogue_(catalogue), database_(catalogue.database()) {}

  // Errors are DataErrors in the server's words: "There is already an object named 'x' in the database.",
  // "Cannot find the object ...", "Column name 'x' ... specified more than once.", ...
  void createTable(const TableDef& table);
  void createTableType(const ObjectName& name, TableDef table);
  void addColumns(const ObjectName& table, const std::vector<ColumnDef>& columns);
  void dropColumn(const ObjectName& table, std::string_view column);
  void alterColumn(const ObjectName& table, const ColumnDef& column);
  // Empty values take properties away.
  void setColumnProperties(const ObjectName& table, std::string_view column, const Properties& properties);
  void addIndex(const ObjectName& table, const IndexDef& index);
  void addForeignKey(const ObjectName& table, const ForeignKeyDef& key);
  void addCheck(const ObjectName& table, const CheckDef& check);
  void addDefault(const ObjectName& table, std::string_view column, const std::string& name, const std::string& text);
  void dropConstraint(const ObjectName& table, std::string_view name);
  void dropIndex(const ObjectName& table, std::string_view name);
  // Procedures, functions, views, triggers. An existing object of the same xtype is replaced when `replace` is set.
  void createModule(const ModuleDef& module, bool replace);
  // Counts a sequence on and returns its value; refuses a name that is no sequence.
  std::int64_t nextSequenceValue(const ObjectName& name);
  void createSequence(const ObjectName& name, std::int64_t start, std::int64_t increment, const Properties& properties);
  // Begins it anew, at `next` or where it began; gives it another increment and other properties where there are any.
  void alterSequence(const ObjectName& name, bool restart, std::optional<std::int64_t> next,
                     std::optional<std::int64_t> increment, const Properties& properties);
  // An object of which only name and type are kept: synonyms.
  void createPlain(const ObjectName& name, const std::string& xtype, const Properties& properties = {});
  void dropObject(const ObjectName& name, const std::vector<std::string>& xtypes);
  // An owner that isn't there is refused; empty: dbo.
  void createSchema(std::string_view name, std::string_view owner);
  void dropSchema(std::string_view name);
  void createAliasType(const ObjectName& name, const TypeRef& base, bool nullable);
  void dropType(const ObjectName& name);
  // Moves an object with what belongs to it, or a type, to another schema; permissions on it are gone then.
  void transferObject(const ObjectName& name, std::string_view schema);
  void transferType(const ObjectName& name, std::string_view schema);
  // `column`: a column or an index of the table `object`; empty: the object itself.
  void rename(const ObjectName& object, std::string_view column, std::string_view newName);
  // CHECK, NOCHECK CONSTRAINT: no names are all. `checked`: the rows were looked at, so that the constraint is trusted.
  void switchConstraints(const ObjectName& table, const std::vector<std::string>& names, bool enabled, bool checked);
  void switchTriggers(const ObjectName& table, const std::vector<std::string>& names, bool enabled);
  // An empty name is all indexes.
  enum class IndexChange : std::uint8_t { Set, Rebuild, Disable };
  void alterIndexes(const ObjectName& table, const std::string& name, IndexChange change, const Properties& properties);
  // On the whole, or on columns of a table alone.
  void setPermission(const Permission& permission, const Securable& on, const std::vector<std::string>& columns);
  void setOwner(const Securable& on, std::string_view principal);
  void createPrincipal(const PrincipalDef& principal);
  // Empty texts change nothing.
  void alterPrincipal(std::string_view name, std::string_view newName, std::string_view defaultSchema);
  void dropPrincipal(std::string_view name, bool role);
  void setMember(std::string_view role, std::string_view member, bool isMember);

  enum class ExtendedChange : std::uint8_t { Add, Update, Drop };
  // No levels: of the database.
  void changeExtended(ExtendedChange change, const std::string& name, const Value& value,
                      const std::vector<Level>& levels);

  void createPartitionFunction(const PartitionFunctionDef& function);
  // SPLIT or MERGE RANGE.
  void alterPartitionFunction(std::string_view name, const Value& boundary, bool split);
  void createPartitionScheme(std::string_view name, std::string_view function,
                             const std::vector<std::string>& filegroups, bool all);
  void useNextFilegroup(std::string_view scheme, std::string_view filegroup);
  void createFilegroup(std::string_view name);
  void createFullTextCatalogue(std::string_view name, const Properties& properties);
  void dropEntity(std::string_view kind, std::string_view name);
  struct FullTextColumn {
    std::string name, typeColumn, language;
    bool semantics = false;
  };
  void createFullTextIndex(const ObjectName& table, const std::vector<FullTextColumn>& columns, std::string_view key,
                           std::string_view catalogue, const Properties& properties);
  void dropFullTextIndex(const ObjectName& table);

  // Properties of a table.
  void setTableProperties(const ObjectName& table, const Properties& properties);
  void compressTable(const ObjectName& table, const Properties& compressions);
  // Empty names: there is none.
  void setPeriod(const ObjectName& table, const std::string& start, const std::string& end);
  // SYSTEM_VERSIONING = ON: an absent history table is made; without its name it is made up.
  void startVersioning(const ObjectName& table, const ObjectName& history, const Properties& properties);
  void stopVersioning(const ObjectName& table);
  // "First", "Last" or neither, for one of a trigger's events.
  void orderTrigger(const ObjectName& trigger, const std::string& order, const std::string& event);

 private:
  // Writes the rows of a table or of a type of tables; returns its id.
  std::int64_t addTable(const TableDef& def, std::string_view xtype);
  Secured secured(const Securable& on) const;
  std::shared_ptr<const TableInfo> indexed(const ObjectName& name) const;
  std::pair<std::int64_t, std::int64_t> placed(const Placement& placement, const TableInfo& table) const;
  void placeTable(const TableInfo& table, const TableDef& def);
  void place(const TableInfo& table, std::int64_t indid, const Placement& placement);
  std::shared_ptr<const TableInfo> parentTable(const ObjectInfo& object) const;
  void renameColumnOrIndex(const TableInfo* table, std::string_view name, std::string_view newName);

  Catalogue& catalogue_;
  sqlite::Database& database_;
};

}  // namespace qrel::tsql
