#include "platform/data/rowIndex.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <utility>

#include "platform/data/matchKey.h"

namespace qrel {
namespace {

// Whole numbers mostly come in order: neighbours get slots side by side, in one line of the processor's cache, and
// groups of them lie anywhere.
std::size_t hashOfNumber(std::uint64_t number) {
  constexpr int together = 4;  // bits
  std::uint64_t group = number >> together;
  group ^= group >> 32;
  group *= 0x9E3779B97F4A7C15;
  group ^= group >> 29;
  return static_cast<std::size_t>((group << together) | (number & ((1U << together) - 1)));
}

std::uint32_t hashOf(std::string_view key) {
  std::uint64_t number = 0;
  // The key of a single column of whole numbers (see appendMatchKey).
  if (key.size() == 1 + sizeof number && key[0] == 'i') {
    std::memcpy(&number, key.data() + 1, sizeof number);
    return static_cast<std::uint32_t>(hashOfNumber(number));
  }
  const std::size_t hash = std::hash<std::string_view>{}(key);
  return static_cast<std::uint32_t>(hash ^ (hash >> 32));
}

}  // namespace

RowIndex::RowIndex(const ColumnStore& cells, std::vector<std::size_t> columns, const std::vector<std::uint32_t>* rows)
    : cells_(&cells), columns_(std::move(columns)), rows_(rows) {
  const std::size_t count = size();
  table_.resize(std::bit_ceil(std::max<std::size_t>(8, count + count / 2)));
  const std::size_t mask = table_.size() - 1;
  hashes_.reserve(count);
  firsts_.reserve(count);
  Numbers groupOf(count);
  std::string key;
  std::string other;
  for (std::size_t at = 0; at < count; ++at) {
    key.clear();
    keyOf(at, key);
    const std::uint32_t hash = hashOf(key);
    std::size_t slot = hash & mask;
    for (; table_[slot] != 0; slot = (slot + 1) & mask) {
      const std::uint32_t group = table_[slot] - 1;
      if (hashes_[group] != hash) continue;
      other.clear();
      keyOf(firsts_[group], other);
      if (other == key) break;
    }
    if (table_[slot] == 0) {
      hashes_.push_back(hash);
      firsts_.push_back(static_cast<std::uint32_t>(at));
      table_[slot] = static_cast<std::uint32_t>(hashes_.size());
    }
    groupOf[at] = table_[slot] - 1;
  }
  if (hashes_.size() == count) {
    firsts_ = {};  // groups are numbered by their first positions, which are all positions
  } else {
    layOut(groupOf);
  }
}

// Puts the positions of each group side by side, in order.
void RowIndex::layOut(const Numbers& groupOf) {
  offsets_.assign(hashes_.size() + 1, 0);
  for (const std::uint32_t group : groupOf) ++offsets_[group + 1];
  for (std::size_t group = 1; group < offsets_.size(); ++group) offsets_[group] += offsets_[group - 1];
  Numbers next(offsets_.begin(), offsets_.end() - 1);
  positions_.resize(groupOf.size());
  for (std::size_t at = 0; at < groupOf.size(); ++at) positions_[next[groupOf[at]]++] = static_cast<std::uint32_t>(at);
}

void RowIndex::keyOf(std::size_t position, std::string& key) const {
  const std::size_t row = rows_ ? (*rows_)[position] : position;
  for (const std::size_t column : columns_) appendMatchKey(key, cells_->cell(column, row));
}

RowIndex::Range RowIndex::find(std::string_view key) const {
  const std::uint32_t hash = hashOf(key);
  const std::size_t mask = table_.size() - 1;
  std::string other;
  for (std::size_t slot = hash & mask; table_[slot] != 0; slot = (slot + 1) & mask) {
    const std::uint32_t group = table_[slot] - 1;
    if (hashes_[group] != hash) continue;
    other.clear();
    keyOf(firsts_.empty() ? group : firsts_[group], other);
    if (other != key) continue;
    if (offsets_.empty()) return {group, group + std::size_t{1}};
    return {offsets_[group], offsets_[group + 1]};
  }
  return {};
}

std::size_t RowIndex::lowerBound(const Range& range, std::size_t from) const {
  if (positions_.empty()) return range.begin < from ? range.end : range.begin;
  const auto first = positions_.begin() + static_cast<std::ptrdiff_t>(range.begin);
  const auto last = positions_.begin() + static_cast<std::ptrdiff_t>(range.end);
  return static_cast<std::size_t>(std::lower_bound(first, last, from) - positions_.begin());
}

}  // namespace qrel
