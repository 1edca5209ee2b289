// What of a table is switched on and off: constraints, triggers, indexes.
#include <algorithm>
#include <initializer_list>

#include "embedded/change/changes.h"
#include "embedded/change/parts.h"
#include "embedded/change/properties.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// The objects of a parent with these xtypes: the named ones, or all. Refuses a name that is none of them.
std::vector<std::int64_t> partsOf(const Catalogue& catalogue, const ObjectInfo& parent,
                                  const std::vector<std::string>& names, std::initializer_list<std::string_view> xtypes,
                                  const std::string& what) {
  std::vector<std::int64_t> ids;
  const auto isOfKind = [&](std::string_view xtype) {
    return std::find(xtypes.begin(), xtypes.end(), xtype) != xtypes.end();
  };
  for (const std::string& name : names) {
    const auto part = catalogue.find(parent.schema, name);
    if (!part || part->parent != parent.id || !isOfKind(part->xtype)) {
      std::string sentence = what;
      sentence.append(" '").append(name).append("' does not exist on '").append(parent.name).append("'.");
      refuse(sentence);
    }
    ids.push_back(part->id);
  }
  if (!names.empty()) return ids;
  auto& query = catalogue.database().cached("select id, xtype from cat_objects where parent_obj = ?1");
  query.bind(1, parent.id);
  while (query.step())
    if (isOfKind(query.text(1))) ids.push_back(query.integer(0));
  query.reset();
  return ids;
}

ObjectInfo requireParent(const Catalogue& catalogue, const ObjectName& name) {
  const auto found = catalogue.find(name.schema, name.name);
  if (found && (found->xtype == "U" || found->xtype == "V")) return *found;
  refuse("Cannot find the object \"" + fullName(name.schema, name.name) +
             "\" because it does not exist or you do not have permissions.",
         errorNumber::invalidObjectName);
}

}  // namespace

void CatalogueChanges::switchConstraints(const ObjectName& table, const std::vector<std::string>& names, bool enabled,
                                         bool checked) {
  const ObjectInfo parent = requireParent(catalogue_, table);
  for (const std::int64_t id : partsOf(catalogue_, parent, names, {"C", "F"}, "Constraint")) {
    const PropertyOwner owner{PropertyOwner::Class::Object, id};
    setProperty(database_, owner, "is_disabled", enabled ? "" : "1");
    setProperty(database_, owner, "is_not_trusted", enabled && checked ? "" : "1");
  }
}

void CatalogueChanges::switchTriggers(const ObjectName& table, const std::vector<std::string>& names, bool enabled) {
  const ObjectInfo parent = requireParent(catalogue_, table);
  for (const std::int64_t id : partsOf(catalogue_, parent, names, {"TR"}, "Trigger"))
    setProperty(database_, {PropertyOwner::Class::Object, id}, "is_disabled", enabled ? "" : "1");
}

void CatalogueChanges::orderTrigger(const ObjectName& name, const std::string& order, const std::string& event) {
  const auto trigger = catalogue_.find(name.schema, name.name);
  if (!trigger || trigger->xtype != "TR")
    refuse("The object '" + fullName(name.schema, name.name) + "' does not exist or is no trigger.");
  const PropertyOwner owner{PropertyOwner::Class::Object, trigger->id};
  if (property(database_, owner, "on_" + event).empty())
    refuse("Trigger '" + trigger->name + "' is not a trigger for '" + event + "'.");
  // Only one of a table's triggers is the first, and one the last, of an event.
  auto& taken = database_.cached(
      "select 1 from cat_objects o join cat_properties p on p.object_id = o.id and p.class = 0 and p.name = ?2 "
      "where o.parent_obj = ?1 and o.id <> ?3");
  const bool isTaken =
      order != "none" && taken.bind(1, trigger->parent).bind(2, order + "_on_" + event).bind(3, trigger->id).step();
  taken.reset();
  if (isTaken) refuse("There already exists a '" + order + "' trigger for '" + event + "'.");
  for (const char* each : {"first", "last"})
    setProperty(database_, owner, std::string(each) + "_on_" + event, order == each ? "1" : "");
}

void CatalogueChanges::alterIndexes(const ObjectName& tableName, const std::string& name, IndexChange change,
                                    const Properties& properties) {
  requireParent(catalogue_, tableName);
  const auto table = indexed(tableName);
  std::vector<std::pair<std::int64_t, std::string>> indexes;
  auto& query =
      database_.cached("select indid, name from cat_indexes where object_id = ?1 and kind <> 'ST' order by indid");
  query.bind(1, table->id);
  while (query.step())
    if (name.empty() || compareCollated(query.text(1), name) == 0)
      indexes.emplace_back(query.integer(0), std::string(query.text(1)));
  query.reset();
  if (indexes.empty() && !name.empty()) refuse("Cannot find index '" + name + "'.");
  for (const auto& [indid, index] : indexes) {
    const PropertyOwner owner{PropertyOwner::Class::Index, table->id, indid};
    setProperties(database_, owner, properties);
    if (change == IndexChange::Set) continue;
    // A disabled index keeps nothing unique.
    setProperty(database_, owner, "is_disabled", change == IndexChange::Disable ? "1" : "");
    if (!catalogue_.table(tableName.schema, tableName.name)) continue;  // a view has no rows of its own
    dropStorageIndex(database_, *table, index);
    if (change == IndexChange::Rebuild) createStorageIndexes(database_, catalogue_, *table, static_cast<int>(indid));
  }
}

}  // namespace qrel::tsql
