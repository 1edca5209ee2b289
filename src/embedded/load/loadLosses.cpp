#include "embedded/load/loadLosses.h"

#include <array>
#include <string>
#include <utility>

#include "embedded/change/properties.h"

namespace qrel {

namespace {

constexpr tsql::PropertyOwner ofLoads{tsql::PropertyOwner::Class::Loads, 0, 0};
constexpr std::array<std::pair<const char*, std::int64_t LoadLosses::*>, 3> kept{
    {{"skipped", &LoadLosses::skipped}, {"refused", &LoadLosses::refused}, {"unread", &LoadLosses::unread}}};

}  // namespace

LoadLosses readLoadLosses(sqlite::Database& database) {
  LoadLosses losses;
  sqlite::Statement rows(database, "select name, cast(value as integer) from cat_properties where class = ?1");
  rows.bind(1, static_cast<std::int64_t>(ofLoads.of));
  while (rows.step())
    for (const auto& [name, member] : kept)
      if (rows.text(0) == name) losses.*member = rows.integer(1);
  return losses;
}

void addLoadLosses(sqlite::Database& database, const LoadLosses& losses) {
  if (!losses.any()) return;
  const LoadLosses before = readLoadLosses(database);
  for (const auto& [name, member] : kept) {
    const std::int64_t sum = before.*member + losses.*member;
    tsql::setProperty(database, ofLoads, name, sum > 0 ? std::to_string(sum) : "");
  }
}

}  // namespace qrel
