// Functions that look into the catalogue and at the server.
#include <algorithm>
#include <optional>
#include <vector>

#include "embedded/catalogue/catalogue.h"
#include "embedded/catalogue/reading.h"
#include "embedded/catalogue/temporaryTables.h"
#include "embedded/functions/functionCall.h"
#include "embedded/instance/databaseFiles.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/sqlite/storageNames.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Runs a look-up that gives at most one row and hands it to `read`.
template <typename Read>
void lookUp(sqlite::Statement& query, Read read) {
  if (query.step()) read(query);
  query.reset();
}

bool same(std::string_view a, std::string_view b) { return a == b || equalNoCase(a, b); }

std::optional<ObjectName> nameOf(std::string_view text) {
  const auto tokens = lex(text);
  TokenReader reader(text, tokens);
  try {
    ObjectName name = readObjectName(reader);
    if (reader.atEnd()) return name;
  } catch (const NotUnderstood&) {
    return {};
  }
  return {};
}

// The object of a name in this database; a bare name sees dbo only.
std::optional<ObjectInfo> objectOf(const FunctionCall& call, std::string_view text) {
  const auto name = nameOf(text);
  const auto& to = call.surroundings();
  if (!name || (!name->database.empty() && !same(name->database, to.facts.database))) return {};
  return to.catalogue.find(name->schema, name->name);
}

// Objects -------------------------------------------------------------------------------------------------------------

void objectId(FunctionCall& call) {
  if (call.anyNull()) return;
  const auto name = nameOf(call.text(0));
  if (name && same(name->database, "tempdb") && isTemporaryName(name->name)) {
    const auto table = call.surroundings().catalogue.table("", name->name);
    if (table && (call.count() < 2 || same(trimBlanks(call.text(1)), "U"))) call.result(table->id);
    return;
  }
  const auto object = objectOf(call, call.text(0));
  if (object && (call.count() < 2 || same(trimBlanks(call.text(1)), object->xtype))) call.result(object->id);
}

void objectName(FunctionCall& call) {
  if (call.isNull(0)) return;
  auto& query = call.surroundings().database.cached("select name from cat_objects where id = ?1");
  lookUp(query.bind(1, call.integer(0)), [&](auto& row) { call.result(row.text(0)); });
}

void objectSchemaName(FunctionCall& call) {
  if (call.isNull(0)) return;
  auto& query = call.surroundings().database.cached(
      "select s.name from cat_objects o join cat_schemas s on s.id = o.schema_id where o.id = ?1");
  lookUp(query.bind(1, call.integer(0)), [&](auto& row) { call.result(row.text(0)); });
}

// Whether objects of a type have a property; empty for a property that isn't known.
std::optional<bool> typeHasProperty(std::string_view xtype, std::string_view property) {
  struct Property {
    std::string_view name;
    std::string_view types;  // each with a blank behind it
  };
  static constexpr Property properties[] = {
      {"IsUserTable", "U "},
      {"IsProcedure", "P X "},
      {"IsView", "V "},
      {"IsTrigger", "TR "},
      {"IsInlineFunction", "IF "},
      {"IsScalarFunction", "FN "},
      {"IsTableFunction", "IF TF "},
      {"IsTable", "U S "},
      {"IsSystemTable", "S "},
      {"IsMSShipped", ""},
      {"IsPrimaryKey", "PK "},
      {"IsUniqueCnst", "UQ "},
      {"IsForeignKey", "F "},
      {"IsCheckCnst", "C "},
      {"IsDefaultCnst", "D "},
      {"IsConstraint", "PK UQ F C D "},
      {"IsExecuted", "P FN IF TF TR V "},
      {"IsSchemaBound", ""},
      {"IsReplProc", ""},
      {"IsExtendedProc", "X "},
      {"IsRule", ""},
      {"IsDefault", ""},
      {"IsSynonym", "SN "},
      {"ExecIsQuotedIdentOn", "P FN IF TF TR V "},
      {"ExecIsAnsiNullsOn", "P FN IF TF TR V "},
      {"IsQuotedIdentOn", "P FN IF TF TR V U "},
      {"IsAnsiNullsOn", "P FN IF TF TR V U "},
  };
  for (const Property& entry : properties) {
    if (!same(entry.name, property)) continue;
    const std::size_t at = entry.types.find(xtype);
    return at != std::string_view::npos && (at == 0 || entry.types[at - 1] == ' ') &&
           entry.types.substr(at + xtype.size(), 1) == " ";
  }
  return {};
}

void indexedProperty(FunctionCall& call, std::string_view kind) {
  auto& query = call.surroundings().database.cached(
      "select exists(select 1 from cat_indexes where object_id = ?1 and kind = ?2)");
  lookUp(query.bind(1, call.integer(0)).bind(2, kind), [&](auto& row) { call.result(row.integer(0)); });
}

void objectProperty(FunctionCall& call) {
  if (call.anyNull()) return;
  auto& query = call.surroundings().database.cached("select xtype, schema_id from cat_objects where id = ?1");
  lookUp(query.bind(1, call.integer(0)), [&](auto& row) {
    const std::string_view property = call.text(1);
    if (const auto has = typeHasProperty(trimBlanks(row.text(0)), property)) return call.result(std::int64_t{*has});
    if (same(property, "SchemaId")) return call.result(row.integer(1));
    if (same(property, "OwnerId")) return call.result(std::int64_t{1});
    if (same(property, "TableHasPrimaryKey")) return indexedProperty(call, "PK");
    if (same(property, "TableHasUniqueCnst")) return indexedProperty(call, "UQ");
    if (same(property, "TableHasIdentity")) {
      auto& identity = call.surroundings().database.cached(
          "select exists(select 1 from cat_columns where object_id = ?1 and is_identity)");
      lookUp(identity.bind(1, call.integer(0)), [&](auto& found) { call.result(found.integer(0)); });
    } else if (same(property, "IsEncrypted")) {
      auto& text = call.surroundings().database.cached(
          "select exists(select 1 from cat_comments where object_id = ?1 and text is null)");
      lookUp(text.bind(1, call.integer(0)), [&](auto& found) { call.result(found.integer(0)); });
    }
  });
}

void indexProperty(FunctionCall& call) {
  if (call.anyNull()) return;
  auto& query = call.surroundings().database.cached(
      "select indid, is_unique from cat_indexes where object_id = ?1 and name = ?2");
  lookUp(query.bind(1, call.integer(0)).bind(2, call.text(1)), [&](auto& row) {
    const std::string_view property = call.text(2);
    if (same(property, "IsUnique")) return call.result(row.integer(1));
    if (same(property, "IsClustered")) return call.result(std::int64_t{row.integer(0) == 1});
    if (same(property, "IndexID")) return call.result(row.integer(0));
    if (same(property, "IndexDepth")) return call.result(std::int64_t{1});
    for (const std::string_view never : {"IsStatistics", "IsHypothetical", "IsAutoStatistics", "IsDisabled",
                                         "IsPadIndex", "IndexFillFactor", "IsFulltextKey"})
      if (same(property, never)) return call.result(std::int64_t{0});
  });
}

// Columns and types ---------------------------------------------------------------------------------------------------

// A table by name: of this database, or a temporary one that tempdb is named with.
std::shared_ptr<const TableInfo> tableNamed(const FunctionCall& call, std::string_view text) {
  const auto name = nameOf(text);
  const Catalogue& catalogue = call.surroundings().catalogue;
  if (name && same(name->database, "tempdb") && isTemporaryName(name->name)) return catalogue.table("", name->name);
  const auto object = objectOf(call, text);
  return object ? catalogue.table(object->schema, object->name) : nullptr;
}

// Hands the identity column of the table that the first argument names to `read`, with the table.
template <typename Read>
void identityColumn(FunctionCall& call, Read read) {
  if (call.isNull(0)) return;
  const auto table = tableNamed(call, call.text(0));
  if (!table) return;
  for (const auto& column : table->columns)
    if (column.identity) return read(*table, column);
}

void identitySeed(FunctionCall& call) {
  identityColumn(call, [&](const TableInfo&, const auto& column) { call.result(column.identitySeed); });
}

void identityIncrement(FunctionCall& call) {
  identityColumn(call, [&](const TableInfo&, const auto& column) { call.result(column.identityIncrement); });
}

// What has been counted to, which rows that are gone may have had.
std::optional<std::int64_t> countedTo(const FunctionCall& call, std::int64_t table) {
  if (const auto* counters = call.surroundings().catalogue.counters) {
    const auto counted = counters->find(table);
    if (counted != counters->end()) return counted->second;
  }
  return keptIdentity(call.surroundings().database, table);
}

void identityCurrent(FunctionCall& call) {
  identityColumn(call, [&](const TableInfo& table, const auto& column) {
    if (const auto last = countedTo(call, table.id))
      return call.result(*last == column.identitySeed - column.identityIncrement ? column.identitySeed : *last);
    const std::string end = column.identityIncrement < 0 ? "min(" : "max(";
    sqlite::Statement query(call.surroundings().database,
                            "select " + end + quoteColumn(column.name) + ") from " + quoteName(table.storage));
    if (query.step() && !query.isNull(0)) return call.result(query.integer(0));
    call.result(column.identitySeed);
  });
}

void columnLength(FunctionCall& call) {
  if (call.anyNull()) return;
  const auto object = objectOf(call, call.text(0));
  if (!object) return;
  auto& query =
      call.surroundings().database.cached("select length from cat_columns where object_id = ?1 and name = ?2");
  lookUp(query.bind(1, object->id).bind(2, call.text(1)), [&](auto& row) { call.result(row.integer(0)); });
}

void columnName(FunctionCall& call) {
  if (call.anyNull()) return;
  auto& query = call.surroundings().database.cached("select name from cat_columns where object_id = ?1 and colid = ?2");
  lookUp(query.bind(1, call.integer(0)).bind(2, call.integer(1)), [&](auto& row) { call.result(row.text(0)); });
}

void columnProperty(FunctionCall& call) {
  if (call.anyNull()) return;
  auto& query = call.surroundings().database.cached(
      "select colid, nullable, is_identity, computed_text is not null and computed_text <> '', prec, scale "
      "from cat_columns where object_id = ?1 and name = ?2");
  constexpr std::string_view properties[] = {"ColumnId",   "AllowsNull", "IsIdentity",
                                             "IsComputed", "Precision",  "Scale"};
  lookUp(query.bind(1, call.integer(0)).bind(2, call.text(1)), [&](auto& row) {
    for (int i = 0; i < 6; ++i)
      if (same(call.text(2), properties[i])) return call.result(row.integer(i));
    if (same(call.text(2), "IsRowGuidCol")) call.result(std::int64_t{0});
  });
}

void typeId(FunctionCall& call) {
  if (call.isNull(0)) return;
  const auto name = nameOf(call.text(0));
  if (!name) return;
  if (const SystemType* type = findSystemType(name->name)) return call.result(std::int64_t{type->xusertype});
  if (const auto alias = call.surroundings().catalogue.aliasType(name->schema, name->name))
    call.result(std::int64_t{alias->xusertype});
  else if (const auto table = call.surroundings().catalogue.tableType(name->schema, name->name))
    call.result(std::int64_t{table->xusertype});
}

void typeName(FunctionCall& call) {
  if (call.isNull(0)) return;
  for (const SystemType& type : systemTypes())
    if (type.xusertype == call.integer(0)) return call.result(std::string_view(type.name));
  auto& query = call.surroundings().database.cached("select name from cat_types where xusertype = ?1");
  lookUp(query.bind(1, call.integer(0)), [&](auto& row) { call.result(row.text(0)); });
}

// Schemas and users ---------------------------------------------------------------------------------------------------

void schemaName(FunctionCall& call) {
  if (call.count() == 0) return call.result(std::string_view("dbo"));
  if (call.isNull(0)) return;
  if (call.integer(0) >= 2 && call.integer(0) <= 4) {
    constexpr std::string_view fixed[] = {"guest", "INFORMATION_SCHEMA", "sys"};
    return call.result(fixed[call.integer(0) - 2]);
  }
  auto& query = call.surroundings().database.cached("select name from cat_schemas where id = ?1");
  lookUp(query.bind(1, call.integer(0)), [&](auto& row) { call.result(row.text(0)); });
}

void schemaId(FunctionCall& call) {
  if (call.count() == 0) return call.result(std::int64_t{1});
  auto& query = call.surroundings().database.cached("select id from cat_schemas where name = ?1");
  lookUp(query.bind(1, call.text(0)), [&](auto& row) { call.result(row.integer(0)); });
}

void principalId(FunctionCall& call) {
  if (call.count() == 0) return call.result(std::int64_t{1});
  if (call.isNull(0)) return;
  auto& query = call.surroundings().database.cached("select id from cat_principals where name = ?1");
  lookUp(query.bind(1, call.text(0)), [&](auto& row) { call.result(row.integer(0)); });
}

// The server and its databases ----------------------------------------------------------------------------------------

// The instance's databases: id and name; master is 1, the others follow from 5 on in order.
std::vector<std::pair<int, std::string>> databasesOf(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  try {
    names = databaseNames(folder);
  } catch (const RuntimeError& error) {
    throw DataError(errorNumber::cannotConnect, error.description, "08001");
  }
  std::vector<std::pair<int, std::string>> databases;
  int next = 5;
  for (std::string& name : names) {
    const int id = same(name, "master") ? 1 : next++;
    databases.emplace_back(id, std::move(name));
  }
  return databases;
}

std::string jsonText(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    if (static_cast<unsigned char>(c) < 0x20)
      out += ' ';
    else
      out += c;
  }
  return out + "\"";
}

// [[1,"master"],[5,"shop"]], for the views that list databases.
void databaseList(FunctionCall& call) {
  std::string out = "[";
  for (const auto& [id, name] : databasesOf(call.surroundings().facts.folder))
    out += (out.size() > 1 ? ",[" : "[") + std::to_string(id) + "," + jsonText(name) + "]";
  call.result(out + "]");
}

void databaseName(FunctionCall& call) {
  if (call.count() == 0) return call.result(call.surroundings().facts.database);
  for (const auto& [id, name] : databasesOf(call.surroundings().facts.folder))
    if (id == call.integer(0)) return call.result(name);
}

void databaseId(FunctionCall& call) {
  const std::string_view wanted = call.count() == 0 ? call.surroundings().facts.database : call.text(0);
  for (const auto& [id, name] : databasesOf(call.surroundings().facts.folder))
    if (same(name, wanted)) return call.result(std::int64_t{id});
}

void databaseProperty(FunctionCall& call) {
  if (call.anyNull()) return;
  if (same(call.text(1), "Status"))
    call.result(std::string_view("ONLINE"));
  else if (same(call.text(1), "Updateability"))
    call.result(std::string_view("READ_WRITE"));
  else if (same(call.text(1), "Recovery"))
    call.result(std::string_view("SIMPLE"));
  else if (same(call.text(1), "Collation"))
    call.result(std::string_view("SQL_Latin1_General_CP1_CI_AS"));
}

void serverProperty(FunctionCall& call) {
  if (call.isNull(0)) return;
  const ServerFacts& facts = call.surroundings().facts;
  const std::string_view property = call.text(0);
  if (same(property, "ProductVersion")) return call.result(facts.productVersion);
  if (same(property, "ProductMajorVersion"))
    return call.result(std::string_view(facts.productVersion).substr(0, facts.productVersion.find('.')));
  if (same(property, "ServerName") || same(property, "InstanceName")) return call.result(facts.server);
  if (same(property, "ProductLevel")) return call.result(std::string_view("RTM"));
  if (same(property, "Edition")) return call.result(std::string_view("Express Edition (64-bit)"));
  if (same(property, "EngineEdition")) return call.result(std::int64_t{4});
  if (same(property, "Collation")) return call.result(std::string_view("SQL_Latin1_General_CP1_CI_AS"));
  if (same(property, "IsClustered")) return call.result(std::int64_t{0});
  if (same(property, "IsLocalDB") || same(property, "IsIntegratedSecurityOnly")) return call.result(std::int64_t{1});
}

void serverName(FunctionCall& call) { call.result(call.surroundings().facts.server); }
void serverVersion(FunctionCall& call) {
  call.result("Embedded SQL server - " + call.surroundings().facts.productVersion);
}
void loginName(FunctionCall& call) { call.result(std::string_view("sa")); }
void allowed(FunctionCall& call) { call.result(std::int64_t{1}); }

using enum Function::Trait;

constexpr Function catalogueTable[] = {
    {"object_id", 1, 2, DataType::Integer, callFunction<objectId>},
    {"object_name", 1, 2, DataType::Text, callFunction<objectName>},
    {"object_schema_name", 1, 2, DataType::Text, callFunction<objectSchemaName>, 0, MadeWidth::Unknown, 9},
    {"objectproperty", 2, 2, DataType::Integer, callFunction<objectProperty>},
    {"objectpropertyex", 2, 2, DataType::Integer, callFunction<objectProperty>},
    {"indexproperty", 3, 3, DataType::Integer, callFunction<indexProperty>},
    // Pure: the same within one query, so that SQLite asks once and not for each row.
    {"ident_seed", 1, 1, DataType::Empty, callFunction<identitySeed>, Pure},
    {"ident_incr", 1, 1, DataType::Empty, callFunction<identityIncrement>, Pure},
    {"ident_current", 1, 1, DataType::Empty, callFunction<identityCurrent>},
    {"col_length", 2, 2, DataType::Integer, callFunction<columnLength>},
    {"col_name", 2, 2, DataType::Text, callFunction<columnName>},
    {"columnproperty", 3, 3, DataType::Integer, callFunction<columnProperty>},
    {"type_id", 1, 1, DataType::Integer, callFunction<typeId>},
    {"type_name", 1, 1, DataType::Text, callFunction<typeName>},
    {"schema_name", 0, 1, DataType::Text, callFunction<schemaName>},
    {"user_name", 0, 1, DataType::Text, callFunction<schemaName>},
    {"database_principal_id", 0, 1, DataType::Integer, callFunction<principalId>},
    {"user_id", 0, 1, DataType::Integer, callFunction<principalId>},
    {"schema_id", 0, 1, DataType::Integer, callFunction<schemaId>},
    {"databases", 0, 0, DataType::Empty, callFunction<databaseList>, Inside},
    {"db_name", 0, 1, DataType::Text, callFunction<databaseName>},
    {"db_id", 0, 1, DataType::Integer, callFunction<databaseId>},
    {"databasepropertyex", 2, 2, DataType::Text, callFunction<databaseProperty>},
    {"serverproperty", 1, 1, DataType::Text, callFunction<serverProperty>},
    {"servername", 0, 0, DataType::Empty, callFunction<serverName>, Inside},
    {"host_name", 0, 0, DataType::Text, callFunction<serverName>},
    {"version", 0, 0, DataType::Empty, callFunction<serverVersion>, Inside},
    {"login", 0, 1, DataType::Empty, callFunction<loginName>, Inside},
    {"app_name", 0, 0, DataType::Text, callFunction<loginName>},
    {"original_login", 0, 0, DataType::Text, callFunction<loginName>},
    {"suser_name", 0, 1, DataType::Text, callFunction<loginName>},
    {"suser_sname", 0, 1, DataType::Text, callFunction<loginName>},
    {"has_perms_by_name", 3, 5, DataType::Integer, callFunction<allowed>},
    {"is_member", 1, 1, DataType::Integer, callFunction<allowed>},
    {"is_srvrolemember", 1, 2, DataType::Integer, callFunction<allowed>},
};

}  // namespace

std::span<const Function> catalogueFunctions() { return catalogueTable; }

}  // namespace qrel::tsql
