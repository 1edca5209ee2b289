// Extended properties.
#include <algorithm>

#include "embedded/change/changes.h"
#include "embedded/change/parts.h"
#include "embedded/translate/translator.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Whose property it is, by the numbers of sys.extended_properties; class -1: there is no such thing.
struct ExtendedOwner {
  std::int64_t of = -1, major = 0, minor = 0;
};

struct ObjectKind {
  std::string_view word;
  std::vector<std::string_view> xtypes;
};

bool isOfKind(std::string_view word, std::string_view xtype) {
  static const std::vector<ObjectKind> kinds = {{"TABLE", {"U"}},     {"VIEW", {"V"}},
                                                {"PROCEDURE", {"P"}}, {"FUNCTION", {"FN", "IF", "TF"}},
                                                {"SYNONYM", {"SN"}},  {"SEQUENCE", {"SO"}}};
  return std::any_of(kinds.begin(), kinds.end(), [&](const ObjectKind& kind) {
    return kind.word == word && std::find(kind.xtypes.begin(), kind.xtypes.end(), xtype) != kind.xtypes.end();
  });
}

std::int64_t number(sqlite::Statement& query, std::int64_t owner, std::string_view name) {
  const std::int64_t found = query.bind(1, owner).bind(2, name).step() ? query.integer(0) : 0;
  query.reset();
  return found;
}

std::int64_t columnNumber(const Catalogue& catalogue, const ObjectInfo& object, std::string_view name) {
  if (object.xtype != "V") {
    const auto columns = catalogue.columnsOf(object);
    const auto* column = columns->find(name);
    return column ? column->colid : 0;
  }
  const auto names = columnsOfView(commentText(catalogue.database(), object.id));
  for (std::size_t i = 0; i < names.size(); ++i)
    if (compareCollated(names[i], name) == 0) return static_cast<std::int64_t>(i + 1);
  return 0;
}

// A part of an object: COLUMN, INDEX, CONSTRAINT, TRIGGER, PARAMETER.
ExtendedOwner partOf(const Catalogue& catalogue, const ObjectInfo& object, const Level& level) {
  sqlite::Database& database = catalogue.database();
  if (level.kind == "COLUMN") {
    const std::int64_t column = columnNumber(catalogue, object, level.name);
    return {column == 0 ? -1 : object.xtype == "TT" ? 8 : 1, object.id, column};
  }
  if (level.kind == "INDEX") {
    auto& query = database.cached("select indid from cat_indexes where object_id = ?1 and name = ?2 and kind <> 'ST'");
    const std::int64_t indid = number(query, object.id, level.name);
    return {indid == 0 ? -1 : 7, object.id, indid};
  }
  if (level.kind == "PARAMETER") {
    auto& query = database.cached("select parameter_id from cat_parameters where object_id = ?1 and name = ?2");
    const std::int64_t parameter = number(query, object.id, level.name);
    return {parameter == 0 ? -1 : 2, object.id, parameter};
  }
  const auto part = catalogue.find(object.schema, level.name);
  const bool trigger = part && part->xtype == "TR";
  const bool fits = part && part->parent == object.id && trigger == (level.kind == "TRIGGER");
  return {fits && (trigger || level.kind == "CONSTRAINT") ? 1 : -1, part ? part->id : 0, 0};
}

ExtendedOwner withinSchema(const Catalogue& catalogue, const std::vector<Level>& levels) {
  const std::string& schema = levels[0].name;
  const Level& level = levels[1];
  if (level.kind == "TYPE" || level.kind == "TABLE_TYPE") {
    const auto table = catalogue.tableType(schema, level.name);
    const auto alias = catalogue.aliasType(schema, level.name);
    if (levels.size() > 2)
      return table ? partOf(catalogue, *catalogue.find(table->object), levels[2]) : ExtendedOwner();
    if (table) return {6, table->xusertype};
    return alias ? ExtendedOwner{6, alias->xusertype} : ExtendedOwner();
  }
  const auto object = catalogue.find(schema, level.name);
  if (!object || !isOfKind(level.kind, object->xtype)) return {};
  return levels.size() > 2 ? partOf(catalogue, *object, levels[2]) : ExtendedOwner{1, object->id};
}

ExtendedOwner ownerOf(const Catalogue& catalogue, const std::vector<Level>& levels) {
  sqlite::Database& database = catalogue.database();
  if (levels.empty()) return {0};
  const Level& level = levels[0];
  if (levels.size() == 1 && (level.kind == "USER" || level.kind == "ROLE")) {
    const auto principal = findPrincipal(database, level.name);
    return principal ? ExtendedOwner{4, *principal} : ExtendedOwner();
  }
  if (level.kind == "SCHEMA" || level.kind == "USER") {
    const std::int64_t schema = schemaId(database, level.name);
    if (schema == 0 || level.name.empty()) return {};
    return levels.size() > 1 ? withinSchema(catalogue, levels) : ExtendedOwner{3, schema};
  }
  if (level.kind == "TYPE") {
    const auto alias = catalogue.aliasType("dbo", level.name);
    return alias ? ExtendedOwner{6, alias->xusertype} : ExtendedOwner();
  }
  const std::string_view entity = level.kind == "FILEGROUP"            ? "FG"
                                  : level.kind == "PARTITION SCHEME"   ? "PS"
                                  : level.kind == "PARTITION FUNCTION" ? "PF"
                                                                       : "";
  if (entity.empty()) throw NotUnderstood{"extended properties of a " + lowerCase(level.kind) + " aren't kept", 1};
  const std::int64_t id = findEntity(database, entity, level.name);
  return {id == 0 ? -1 : entity == "PF" ? 21 : 20, id};
}

}  // namespace

void CatalogueChanges::changeExtended(ExtendedChange change, const std::string& name, const Value& value,
                                      const std::vector<Level>& levels) {
  std::string shown;
  for (const Level& level : levels) shown += (shown.empty() ? "" : ".") + level.name;
  const ExtendedOwner owner = ownerOf(catalogue_, levels);
  if (owner.of < 0) {
    refuse("Object is invalid. Extended properties are not permitted on '" + shown + "', or the object does not exist.",
           errorNumber::invalidObjectName);
  }
  const auto bound = [&](const char* sql) -> sqlite::Statement& {
    auto& statement = database_.cached(sql);
    return statement.bind(1, owner.of).bind(2, owner.major).bind(3, owner.minor).bind(4, name);
  };
  auto& query = bound("select 1 from cat_extended where class = ?1 and major_id = ?2 and minor_id = ?3 and name = ?4");
  const bool there = query.step();
  query.reset();
  if (levels.empty()) shown = "object specified";
  if (there && change == ExtendedChange::Add)
    refuse("Property cannot be added. Property '" + name + "' already exists for '" + shown + "'.");
  if (!there && change != ExtendedChange::Add)
    refuse("Property cannot be updated or deleted. Property '" + name + "' does not exist for '" + shown + "'.");
  if (change == ExtendedChange::Drop) {
    bound("delete from cat_extended where class = ?1 and major_id = ?2 and minor_id = ?3 and name = ?4").run();
  } else {
    bound("insert or replace into cat_extended values(?1,?2,?3,?4,?5)").bind(5, value).run();
  }
}

}  // namespace qrel::tsql
