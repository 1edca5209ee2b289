// What lies beside schemas: filegroups, partition functions and schemes, full-text catalogues and indexes.
#include <algorithm>
#include <charconv>

#include "embedded/change/changes.h"
#include "embedded/change/parts.h"
#include "embedded/change/properties.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

using Class = PropertyOwner::Class;

std::int64_t requireEntity(sqlite::Database& database, std::string_view kind, const std::string& what,
                           std::string_view name) {
  const std::int64_t id = findEntity(database, kind, name);
  if (id == 0) refuse("Cannot find the " + what + " '" + std::string(name) + "'.");
  return id;
}

// As values of one type are ordered; both are in their stored form.
bool isBelow(const Value& a, const Value& b) {
  if (a.null || b.null) return a.null && !b.null;
  if (a.type == DataType::Integer || a.type == DataType::Boolean) return a.integer < b.integer;
  if (a.type == DataType::Double) return a.real < b.real;
  double left = 0, right = 0;
  const auto parse = [](const std::string& text, double& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
  };
  if (a.type == DataType::Decimal && parse(a.text, left) && parse(b.text, right)) return left < right;
  return compareCollated(a.text, b.text) < 0;
}

std::string textOf(const Value& value) {
  if (value.null) return "NULL";
  if (value.type == DataType::Integer || value.type == DataType::Boolean) return std::to_string(value.integer);
  if (value.type != DataType::Double) return value.text;
  char digits[32];
  const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value.real);
  return {digits, end};
}

void writeBoundaries(sqlite::Database& database, std::int64_t function, const std::vector<std::string>& boundaries) {
  database.cached("delete from cat_properties where object_id = ?1 and class = 21 and minor_id > 0")
      .bind(1, function)
      .run();
  for (std::size_t i = 0; i < boundaries.size(); ++i)
    setProperty(database, {Class::PartitionFunction, function, static_cast<std::int64_t>(i + 1)}, "value",
                boundaries[i]);
}

std::vector<std::string> minorValues(sqlite::Database& database, const PropertyOwner& owner) {
  std::vector<std::string> values;
  auto& query = database.cached(
      "select value from cat_properties where object_id = ?1 and class = ?2 and minor_id > 0 order by minor_id");
  query.bind(1, owner.object).bind(2, static_cast<std::int64_t>(owner.of));
  while (query.step()) values.emplace_back(query.text(0));
  query.reset();
  return values;
}

// A function's type, from what is kept of it.
TypeRef functionType(sqlite::Database& database, std::int64_t function) {
  const PropertyOwner owner{Class::PartitionFunction, function};
  const auto number = [&](const char* name) {
    const std::string text = property(database, owner, name);
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
  };
  const int wanted = number("system_type_id");
  for (const SystemType& type : systemTypes()) {
    if (type.xtype != wanted || type.xusertype == sysnameXusertype) continue;
    TypeRef found = systemTypeRef(type);
    found.length = number("max_length");
    found.prec = number("precision");
    found.scale = number("scale");
    return found;
  }
  return {};
}

}  // namespace

std::int64_t findEntity(sqlite::Database& database, std::string_view kind, std::string_view name) {
  auto& query = database.cached("select id from cat_entities where kind = ?1 and name = ?2");
  const std::int64_t id = query.bind(1, kind).bind(2, name).step() ? query.integer(0) : 0;
  query.reset();
  return id;
}

// Filegroups and schemes are data spaces and share their numbers' range, as functions do with schemes.
std::int64_t addEntity(sqlite::Database& database, std::string_view kind, std::string_view name) {
  if (findEntity(database, kind, name) != 0)
    refuse("There is already an object named '" + std::string(name) + "' in the database.");
  const std::int64_t first = kind == "FG" ? 2 : kind == "FC" ? 5 : 65536;
  auto& query = database.cached(
      "select max(ifnull(max(id) + 1, ?1), ?1) from cat_entities where (id >= 65536) = (?1 >= 65536) and "
      "(kind = 'FC') = (?2 = 'FC')");
  query.bind(1, first).bind(2, kind).step();
  const std::int64_t id = query.integer(0);
  query.reset();
  database.cached("insert into cat_entities values(?1,?2,?3)").bind(1, kind).bind(2, id).bind(3, name).run();
  return id;
}

void CatalogueChanges::createPartitionFunction(const PartitionFunctionDef& function) {
  const std::int64_t id = addEntity(database_, "PF", function.name);
  setProperties(database_, {Class::PartitionFunction, id},
                {{"system_type_id", std::to_string(function.type.xtype)},
                 {"user_type_id", std::to_string(function.type.xusertype)},
                 {"max_length", std::to_string(function.type.length)},
                 {"precision", std::to_string(std::max(function.type.prec, 0))},
                 {"scale", std::to_string(std::max(function.type.scale, 0))},
                 {"boundary_value_on_right", function.right ? "1" : ""}});
  std::vector<Value> values;
  for (const Value& each : function.boundaries) values.push_back(convertTo(function.type, each));
  std::sort(values.begin(), values.end(), isBelow);
  std::vector<std::string> texts;
  for (const Value& each : values) texts.push_back(textOf(each));
  if (std::adjacent_find(texts.begin(), texts.end()) != texts.end())
    refuse("Duplicate values are not allowed in partition function boundary values list.");
  writeBoundaries(database_, id, texts);
}

void CatalogueChanges::alterPartitionFunction(std::string_view name, const Value& boundary, bool split) {
  const std::int64_t id = requireEntity(database_, "PF", "partition function", name);
  const TypeRef type = functionType(database_, id);
  const Value value = convertTo(type, boundary);
  std::vector<std::string> texts = minorValues(database_, {Class::PartitionFunction, id});
  const auto at = std::find(texts.begin(), texts.end(), textOf(value));
  if (split == (at != texts.end()))
    refuse(split ? "Duplicate range boundary values are not allowed in partition function boundary values list."
                 : "The specified partition range value could not be found.");
  if (split) {
    const auto behind = std::find_if(texts.begin(), texts.end(), [&](const std::string& each) {
      return isBelow(value, convertTo(type, Value::ofText(each)));
    });
    texts.insert(behind, textOf(value));
  } else {
    texts.erase(at);
  }
  writeBoundaries(database_, id, texts);
}

void CatalogueChanges::createPartitionScheme(std::string_view name, std::string_view function,
                                             const std::vector<std::string>& filegroups, bool all) {
  const std::int64_t of = requireEntity(database_, "PF", "partition function", function);
  const std::size_t partitions = minorValues(database_, {Class::PartitionFunction, of}).size() + 1;
  if (!all && filegroups.size() < partitions) {
    refuse("The associated partition function '" + std::string(function) +
           "' generates more partitions than there are file groups mentioned in the scheme '" + std::string(name) +
           "'.");
  }
  const std::int64_t id = addEntity(database_, "PS", name);
  setProperty(database_, {Class::DataSpace, id}, "function_id", std::to_string(of));
  const std::size_t count = all ? partitions : filegroups.size();
  for (std::size_t i = 0; i < count; ++i) {
    const std::string& group = all ? filegroups.front() : filegroups[i];
    std::int64_t space = compareCollated(group, "default") == 0 ? 1 : findEntity(database_, "FG", group);
    if (space == 0) space = addEntity(database_, "FG", group);
    setProperty(database_, {Class::DataSpace, id, static_cast<std::int64_t>(i + 1)}, "data_space_id",
                std::to_string(space));
  }
}

void CatalogueChanges::useNextFilegroup(std::string_view scheme, std::string_view filegroup) {
  const std::int64_t id = requireEntity(database_, "PS", "partition scheme", scheme);
  std::int64_t space = findEntity(database_, "FG", filegroup);
  if (space == 0) space = addEntity(database_, "FG", filegroup);
  const auto next = static_cast<std::int64_t>(minorValues(database_, {Class::DataSpace, id}).size()) + 1;
  setProperty(database_, {Class::DataSpace, id, next}, "data_space_id", std::to_string(space));
}

void CatalogueChanges::createFilegroup(std::string_view name) { addEntity(database_, "FG", name); }

void CatalogueChanges::createFullTextCatalogue(std::string_view name, const Properties& properties) {
  setProperties(database_, {Class::FullTextCatalogue, addEntity(database_, "FC", name)}, properties);
}

void CatalogueChanges::dropEntity(std::string_view kind, std::string_view name) {
  const Class of = kind == "PF" ? Class::PartitionFunction : kind == "FC" ? Class::FullTextCatalogue : Class::DataSpace;
  const std::int64_t id = requireEntity(database_, kind, "object", name);
  // A scheme tells its function, a table or index its data space, a full-text index its catalogue.
  auto& used = database_.cached("select 1 from cat_properties where name = ?1 and value = ?2");
  const bool isUsed = used.bind(1, kind == "PF"   ? std::string_view("function_id")
                                   : kind == "FC" ? std::string_view("fulltext_catalog")
                                                  : std::string_view("data_space"))
                          .bind(2, std::to_string(id))
                          .step();
  used.reset();
  if (isUsed) refuse("'" + std::string(name) + "' is in use and cannot be dropped.");
  database_.cached("delete from cat_properties where object_id = ?1 and class = ?2")
      .bind(1, id)
      .bind(2, static_cast<std::int64_t>(of))
      .run();
  database_.cached("delete from cat_extended where class = ?2 and major_id = ?1")
      .bind(1, id)
      .bind(2, static_cast<std::int64_t>(of))
      .run();
  database_.cached("delete from cat_entities where kind = ?1 and id = ?2").bind(1, kind).bind(2, id).run();
}

void CatalogueChanges::createFullTextIndex(const ObjectName& tableName, const std::vector<FullTextColumn>& columns,
                                           std::string_view key, std::string_view catalogue,
                                           const Properties& properties) {
  const auto table = indexed(tableName);
  auto& query = database_.cached("select indid from cat_indexes where object_id = ?1 and name = ?2 and is_unique = 1");
  const std::int64_t indid = query.bind(1, table->id).bind(2, key).step() ? query.integer(0) : 0;
  query.reset();
  if (indid == 0) {
    refuse("'" + std::string(key) +
           "' is not a valid index to enforce a full-text search key. A full-text search key must be a unique, "
           "non-nullable, single-column index.");
  }
  std::int64_t of = findEntity(database_, "FC", catalogue);
  if (catalogue.empty()) {
    auto& standard = database_.cached(
        "select e.id from cat_entities e join cat_properties p on p.object_id = e.id and p.class = 23 and "
        "p.name = 'is_default' where e.kind = 'FC'");
    if (standard.step()) of = standard.integer(0);
    standard.reset();
  }
  if (of == 0) refuse("Full-text catalog '" + std::string(catalogue) + "' does not exist in the database.");
  const PropertyOwner owner{Class::Object, table->id};
  if (!property(database_, owner, "fulltext_key").empty())
    refuse("A full-text index for table or indexed view '" + table->name + "' has already been created.");
  setProperties(database_, owner, properties);
  setProperties(database_, owner, {{"fulltext_key", std::to_string(indid)}, {"fulltext_catalog", std::to_string(of)}});
  const auto require = [&](const std::string& name) {
    const auto* column = table->find(name);
    if (!column) refuse("Column name '" + name + "' does not exist in the target table or view.");
    return std::int64_t{column->colid};
  };
  for (const FullTextColumn& column : columns) {
    const std::string type = column.typeColumn.empty() ? "" : std::to_string(require(column.typeColumn));
    setProperties(database_, {Class::Column, table->id, require(column.name)},
                  {{"fulltext_indexed", "1"},
                   {"fulltext_type_column", type},
                   {"fulltext_language", column.language},
                   {"fulltext_semantics", column.semantics ? "1" : ""}});
  }
}

void CatalogueChanges::dropFullTextIndex(const ObjectName& tableName) {
  const auto table = indexed(tableName);
  if (property(database_, {Class::Object, table->id}, "fulltext_key").empty())
    refuse("Table or indexed view '" + table->name + "' does not have a full-text index.");
  database_.cached("delete from cat_properties where object_id = ?1 and name like 'fulltext!_%' escape '!'")
      .bind(1, table->id)
      .run();
}

}  // namespace qrel::tsql
