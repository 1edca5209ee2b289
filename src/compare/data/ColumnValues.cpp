#include "compare/data/ColumnValues.h"

#include <functional>

namespace qrel {

namespace {

constexpr std::int32_t freeSlot = -1;
constexpr std::size_t slotsAtFirst = 64;

std::uint32_t hashOf(std::string_view value) {
  const std::uint64_t hash = std::hash<std::string_view>()(value);
  return static_cast<std::uint32_t>(hash ^ (hash >> 32U));
}

}  // namespace

// The slot that has the value, or the free one where it belongs.
std::size_t ColumnValues::slotOf(std::string_view value, std::uint32_t hash) const {
  const std::size_t last = slots_.size() - 1;
  std::size_t slot = hash & last;
  for (; slots_[slot] != freeSlot; slot = (slot + 1) & last) {
    const auto index = static_cast<std::size_t>(slots_[slot]);
    if (hashes_[index] == hash && values_[index].strValue == value) break;
  }
  return slot;
}

void ColumnValues::grow() {
  slots_.assign(slots_.empty() ? slotsAtFirst : 2 * slots_.size(), freeSlot);
  const std::size_t last = slots_.size() - 1;
  for (std::size_t index = 0; index < values_.size(); ++index) {
    std::size_t slot = hashes_[index] & last;
    while (slots_[slot] != freeSlot) slot = (slot + 1) & last;
    slots_[slot] = static_cast<std::int32_t>(index);
  }
}

void ColumnValues::add(std::string_view value) {
  if (2 * values_.size() >= slots_.size()) grow();
  const std::uint32_t hash = hashOf(value);
  std::int32_t& slot = slots_[slotOf(value, hash)];
  if (slot == freeSlot) {
    slot = static_cast<std::int32_t>(values_.size());
    values_.push_back({std::string(value), slot, 0});
    hashes_.push_back(hash);
  }
  ++values_[static_cast<std::size_t>(slot)].lngCount;
}

}  // namespace qrel
