// The sequence of rows that one record set shows: all, those that a filter lets through, in order of arrival or sorted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/data/rowFilter.h"
#include "platform/data/rowStore.h"

namespace qrel {

// Positions are 0-based and count removed rows in, so they don't shift under a deletion. An unsorted filter looks for
// its rows as they are asked for. A filter, an order and find need a store that holds all rows.
class RowView {
 public:
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  explicit RowView(std::shared_ptr<RowStore> store) : store_(std::move(store)) {}
  RowView(const RowView&) = delete;
  RowView& operator=(const RowView&) = delete;

  void setFilter(std::vector<Condition> conditions);
  void setSort(std::vector<SortColumn> columns);

  // The first position from `position` on whose row is there; `none` at the end.
  std::size_t nextPresent(std::size_t position);
  std::size_t lastPresent();
  std::size_t presentCount();
  std::size_t rowAt(std::size_t position) const { return showsAll() ? position : rows_[position]; }
  // The position of a row, or where it would stand.
  std::size_t placeOf(std::size_t row);
  bool shows(std::size_t row, std::size_t place) const {
    return showsAll() || (place < rows_.size() && rows_[place] == row);
  }
  // The first position from `from` on whose row matches; `none` without one.
  std::size_t find(const Condition& condition, std::size_t from);
  // The first row that has these values in these ascending columns; `none` without one. All rows must be shown.
  std::size_t findFirst(const std::vector<std::size_t>& columns, const std::vector<Cell>& values);

 private:
  // What an unsorted filter has still to look through: the entries of an index, or the rows.
  struct Search {
    std::vector<Condition> conditions;  // those that the index doesn't answer
    RowIndex* index = nullptr;
    std::size_t next = 0;
    std::size_t end = 0;
  };

  bool showsAll() const { return conditions_.empty() && order_.empty(); }
  void rebuild();
  Search startSearch();
  bool findMore();
  bool isRemovedAt(std::size_t position) const { return store_->isRemoved(rows_[position]); }
  bool comesBefore(std::size_t a, std::size_t b) const;
  RowIndex& indexOver(std::size_t column);
  bool hasValues(std::size_t row, const std::vector<std::size_t>& columns, const std::vector<Cell>& values);

  std::shared_ptr<RowStore> store_;
  std::vector<Condition> conditions_;
  std::vector<SortColumn> order_;
  // Unless all is shown:
  std::vector<RowNumber> rows_;  // found so far
  Search search_;
  bool complete_ = false;
  SkipList removedRuns_;
  std::size_t presentEnd_ = 0;  // once complete
  std::size_t presentCount_ = 0;
  std::size_t removedAtCount_ = none;  // how many were removed when presentCount_ was counted
  std::map<std::size_t, std::unique_ptr<RowIndex>> indexes_;
  std::string key_;               // of the last findFirst: its memory is used again
  std::size_t lastFound_ = none;  // by findFirst
};

}  // namespace qrel
