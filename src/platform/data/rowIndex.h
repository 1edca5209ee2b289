// A hash index over one or several columns of the rows of a record set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/columnStore.h"
#include "platform/data/largePages.h"
#include "platform/data/skipList.h"

namespace qrel {

// Answers for a key which positions of a sequence of rows have it, in order. Deleted rows are passed over by the
// caller's test. About 16 bytes a row when keys are distinct.
class RowIndex {
 public:
  // `rows` are the row numbers of the sequence, null for all rows in order of arrival. Store and rows must outlive the
  // index and keep what they held. Throws std::bad_alloc only.
  RowIndex(const ColumnStore& cells, std::vector<std::size_t> columns, const std::vector<std::uint32_t>* rows);

  // Where the entries of one key stand; begin == end for a key that doesn't occur.
  struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
  };
  // `key` is made of appendMatchKey for each column in order.
  Range find(std::string_view key) const;
  // No two rows have the same key.
  bool isDistinct() const { return offsets_.empty(); }
  // The position in the sequence that an entry means; positions rise with entries within a range.
  std::size_t position(std::size_t entry) const { return positions_.empty() ? entry : positions_[entry]; }
  // The first entry of the range whose position is at least `from`.
  std::size_t lowerBound(const Range& range, std::size_t from) const;
  // The first entry from `entry` on, below `end`, whose position isn't gone; `end` without one.
  template <typename Gone>
  std::size_t nextPresent(std::size_t entry, std::size_t end, Gone gone) {
    return skips_.find(entry, end, [&](std::size_t at) { return gone(position(at)); });
  }

 private:
  using Numbers = std::vector<std::uint32_t, LargePages<std::uint32_t>>;

  void keyOf(std::size_t position, std::string& key) const;
  std::size_t size() const { return rows_ ? rows_->size() : cells_->rowCount(); }
  void layOut(const Numbers& groupOf);

  const ColumnStore* cells_;
  std::vector<std::size_t> columns_;
  const std::vector<std::uint32_t>* rows_;
  Numbers table_;      // open addressing: group + 1, 0 for free
  Numbers hashes_;     // by group
  Numbers firsts_;     // by group: its first position; empty when all keys are distinct
  Numbers offsets_;    // by group, and one more: where its entries begin; empty as before
  Numbers positions_;  // by entry; empty as before
  SkipList skips_;
};

}  // namespace qrel
