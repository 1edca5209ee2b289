#include "platform/data/rowStore.h"

#include <limits>
#include <utility>

#include "platform/error.h"

namespace qrel {
namespace {

constexpr std::size_t rowsPerFetch = 4096;

}  // namespace

RowStore::RowStore(std::unique_ptr<RowSource> source, std::size_t windowRows)
    : source_(std::move(source)), windowRows_(windowRows), columns_(source_->columns()), cells_(columns_) {
  if (windowRows_ == 0) {
    fetchAll();
  } else {
    fetchWindow();
  }
}

void RowStore::bringAll() {
  if (holdsAll()) return;
  if (windowStart_ > 0) {
    restart();
  }
  fetchAll();
}

// Appends what the source still has to what is here.
void RowStore::fetchAll() {
  if (cells_.rowCount() == 0 && !sourceEnded_) sourceEnded_ = source_->takeAll(cells_);
  while (!sourceEnded_ && source_->fetch(cells_, rowsPerFetch) > 0) {
    if (cells_.rowCount() > std::numeric_limits<RowNumber>::max()) {
      throw RuntimeError(errorNumber::outOfMemory, "Out of memory: the result has too many rows.");
    }
  }
  rowCount_ = presentEnd_ = cells_.rowCount();
  countKnown_ = true;
  source_.reset();
}

// Replaces the window by the next one; it is empty behind the last row.
void RowStore::fetchWindow() {
  cells_.clear();
  if (source_->fetch(cells_, windowRows_) > 0) return;
  sourceEnded_ = true;
  rowCount_ = windowStart_;
  countKnown_ = true;
}

void RowStore::restart() {
  source_->rewind();
  windowStart_ = 0;
  sourceEnded_ = false;
  cells_.clear();
}

bool RowStore::reach(std::size_t row) {
  if (holdsAll()) return row < rowCount_;
  if (row < windowStart_) {
    restart();
    fetchWindow();
  }
  while (!sourceEnded_ && row >= windowStart_ + cells_.rowCount()) {
    windowStart_ += cells_.rowCount();
    fetchWindow();
  }
  return !sourceEnded_;
}

std::size_t RowStore::rowCount() {
  if (!countKnown_) {
    rowCount_ = static_cast<std::size_t>(source_->count());
    countKnown_ = true;
  }
  return rowCount_;
}

void RowStore::remove(std::size_t row) {
  if (removed_.empty()) removed_.resize(rowCount_);
  if (removed_[row]) return;
  removed_[row] = true;
  ++removedCount_;
}

std::size_t RowStore::nextPresent(std::size_t row) {
  if (removedCount_ == 0) return row;
  return removedRuns_.find(row, rowCount_, [this](std::size_t at) { return isRemoved(at); });
}

std::size_t RowStore::presentEnd() {
  while (presentEnd_ > 0 && isRemoved(presentEnd_ - 1)) --presentEnd_;
  return presentEnd_;
}

RowIndex& RowStore::index(const std::vector<std::size_t>& columns) {
  std::unique_ptr<RowIndex>& index = indexes_[columns];
  if (!index) index = std::make_unique<RowIndex>(cells_, columns, nullptr);
  return *index;
}

}  // namespace qrel
