// The rows behind one or several record sets: all of them in memory, or a window that moves over a row source.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "platform/data/columnStore.h"
#include "platform/data/provider.h"
#include "platform/data/rowIndex.h"
#include "platform/data/skipList.h"

namespace qrel {

using RowNumber = std::uint32_t;  // 0-based, in the order of arrival

class RowStore {
 public:
  // A window of `windowRows` rows at a time; with 0 all rows are read at once.
  RowStore(std::unique_ptr<RowSource> source, std::size_t windowRows);

  const std::vector<ColumnInfo>& columns() const { return columns_; }
  bool holdsAll() const { return source_ == nullptr; }
  // Reads all rows and lets go of the source. Row numbers stay as they are.
  void bringAll();

  // False behind the last row. A window moves to the row: cells read before are gone then.
  bool reach(std::size_t row);
  // Of a row that reach found.
  Cell cell(std::size_t column, std::size_t row) const { return cells_.cell(column, row - windowStart_); }
  // Number of rows, deleted ones counted in. A window asks the source for it, once.
  std::size_t rowCount();

  // What follows needs all rows.
  void remove(std::size_t row);
  bool isRemoved(std::size_t row) const { return row < removed_.size() && removed_[row]; }
  std::size_t removedCount() const { return removedCount_; }
  // The first row from `row` on that isn't removed; rowCount without one.
  std::size_t nextPresent(std::size_t row);
  // One past the last row that isn't removed; 0 without one.
  std::size_t presentEnd();
  // Type of a column's values.
  DataType type(std::size_t column) const { return cells_.type(column); }
  const ColumnStore& cells() const { return cells_; }
  // The index over these columns and all rows in order of arrival, made on first use.
  RowIndex& index(const std::vector<std::size_t>& columns);

 private:
  void fetchAll();
  void fetchWindow();
  void restart();

  std::unique_ptr<RowSource> source_;
  std::size_t windowRows_;
  std::vector<ColumnInfo> columns_;
  ColumnStore cells_;
  std::size_t windowStart_ = 0;
  bool sourceEnded_ = false;  // the window stands behind the last row
  std::size_t rowCount_ = 0;
  bool countKnown_ = false;

  std::vector<bool> removed_;
  std::size_t removedCount_ = 0;
  SkipList removedRuns_;
  std::size_t presentEnd_ = 0;
  std::map<std::vector<std::size_t>, std::unique_ptr<RowIndex>> indexes_;
};

}  // namespace qrel
