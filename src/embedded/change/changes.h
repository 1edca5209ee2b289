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
  char state;  // 'G' granted, 'W' with grant option, 'D' denied, 'R' taken back
  std::string name, grantee;
};

struct ModuleDef {
  ObjectName name;
  std::string xtype;       // as in ObjectInfo
  std::string text;        // to the byte
  bool encrypted = false;  // no text is kept
  Properties properties;   // all that such an object can have: what isn't there is taken away from a replaced one
  std::optional<ObjectName> parent;  // a trigger's table or view
};

// Changes the catalogue that it is given, for the length of a statement. What a failed change has begun stays: whoever
// changes several things does it between a savepoint and its rollback.
class CatalogueChanges {
 public:
  explicit CatalogueChanges(Catalogue& catalogue) : catalogue_(catalogue), database_(catalogue.database()) {}

  // Errors are DataErrors in the server's words: "There is already an object named 'x' in the database.",
  // "Cannot find the object ...", "Column name 'x' ... specified more than once.", ...
  void createTable(const TableDef& table);
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
  // An object of which only name and type are kept: synonyms, table types.
  void createPlain(const ObjectName& name, const std::string& xtype, const Properties& properties = {});
  void dropObject(const ObjectName& name, const std::vector<std::string>& xtypes);
  void createSchema(std::string_view name);
  void dropSchema(std::string_view name);
  void createAliasType(const ObjectName& name, const TypeRef& base, bool nullable);
  void dropType(const ObjectName& name);
  // `column`: a column or an index of the table `object`; empty: the object itself.
  void rename(const ObjectName& object, std::string_view column, std::string_view newName);
  // CHECK, NOCHECK CONSTRAINT: no names are all. `checked`: the rows were looked at, so that the constraint is trusted.
  void switchConstraints(const ObjectName& table, const std::vector<std::string>& names, bool enabled, bool checked);
  void switchTriggers(const ObjectName& table, const std::vector<std::string>& names, bool enabled);
  // An empty name is all indexes.
  enum class IndexChange : std::uint8_t { Set, Rebuild, Disable };
  void alterIndexes(const ObjectName& table, const std::string& name, IndexChange change, const Properties& properties);
  // On an object, or on columns of a table alone; no object means the database.
  void setPermission(const Permission& permission, const ObjectName* object, const std::vector<std::string>& columns);

 private:
  std::shared_ptr<const TableInfo> parentTable(const ObjectInfo& object) const;
  void renameColumnOrIndex(const TableInfo* table, std::string_view name, std::string_view newName);

  Catalogue& catalogue_;
  sqlite::Database& database_;
};

}  // namespace qrel::tsql
