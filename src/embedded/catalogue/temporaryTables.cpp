#include "embedded/catalogue/temporaryTables.h"

#include <algorithm>

#include "embedded/sqlite/quoting.h"
#include "embedded/sqlite/storageNames.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool isThere(sqlite::Database& database, const std::string& storage) {
  auto& query = database.cached("select 1 from sqlite_temp_master where type = 'table' and name = ?1");
  const bool there = query.bind(1, storage).step();
  query.reset();
  return there;
}

}  // namespace

bool isTemporaryName(std::string_view name) { return name.starts_with('#') || name.starts_with(variableMark); }

const TemporaryTable* TemporaryTables::find(sqlite::Database& database, std::string_view name) const {
  for (auto each = tables_.rbegin(); each != tables_.rend(); ++each) {
    if (compareCollated(each->def.name, name) != 0) continue;
    if (name.starts_with(variableMark) && each->level != level_) continue;
    if (isThere(database, each->info->storage)) return &*each;
  }
  return nullptr;
}

void TemporaryTables::add(TemporaryTable table) {
  table.level = level_;
  tables_.push_back(std::move(table));
}

std::string TemporaryTables::freshStorage(std::string_view name) {
  std::string storage = storageName("tempdb", name);
  const auto same = [&](const TemporaryTable& each) { return equalNoCase(each.info->storage, storage); };
  for (int number = 2; std::any_of(tables_.begin(), tables_.end(), same); ++number)
    storage = storageName("tempdb", std::string(name) + "\x01" + std::to_string(number));
  return storage;
}

template <typename Ends>
void TemporaryTables::drop(sqlite::Database& database, Ends ends) {
  for (const TemporaryTable& each : tables_) {
    if (!ends(each)) continue;
    // An error that is on its way tells more than one from here.
    const std::string sql = "drop table if exists temp." + quoteName(each.info->storage);
    sqlite3_exec(database.get(), sql.c_str(), nullptr, nullptr, nullptr);
  }
}

void TemporaryTables::leave(sqlite::Database& database) {
  drop(database, [&](const TemporaryTable& each) { return each.level == level_ && !each.def.name.starts_with("##"); });
  --level_;
}

void TemporaryTables::endBatch(sqlite::Database& database) {
  drop(database, [](const TemporaryTable& each) { return each.def.name.starts_with(variableMark); });
}

}  // namespace qrel::tsql
