#include "platform/data/rowView.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/data/matchKey.h"
#include "platform/error.h"

namespace qrel {

void RowView::setFilter(std::vector<Condition> conditions) {
  conditions_ = std::move(conditions);
  rebuild();
}

void RowView::setSort(std::vector<SortColumn> columns) {
  order_ = std::move(columns);
  rebuild();
}

void RowView::rebuild() {
  rows_.clear();
  indexes_.clear();
  removedRuns_ = {};
  removedAtCount_ = none;
  complete_ = false;
  if (showsAll()) return;
  search_ = startSearch();
  if (order_.empty()) return;
  while (findMore()) {
  }
  std::sort(rows_.begin(), rows_.end(), [this](RowNumber a, RowNumber b) { return comesBefore(a, b); });
}

// Equalities go to an index, one per column; the rest is tested row by row.
RowView::Search RowView::startSearch() {
  Search search;
  std::map<std::size_t, const Condition*> keyed;
  for (const Condition& condition : conditions_) {
    const bool isKey = condition.op == ConditionOperator::Equal && keyed.emplace(condition.column, &condition).second;
    if (!isKey) search.conditions.push_back(condition);
  }
  if (keyed.empty()) {
    search.end = store_->rowCount();
    return search;
  }
  std::vector<std::size_t> columns;
  std::string key;
  for (const auto& [column, condition] : keyed) {
    columns.push_back(column);
    appendMatchKey(key, condition->value.cell());
  }
  search.index = &store_->index(columns);
  const RowIndex::Range range = search.index->find(key);
  search.next = range.begin;
  search.end = range.end;
  return search;
}

// Appends the next row that the filter lets through; false when there is no more.
bool RowView::findMore() {
  const auto isRemoved = [this](std::size_t row) { return store_->isRemoved(row); };
  while (!complete_) {
    const std::size_t at = search_.index ? search_.index->nextPresent(search_.next, search_.end, isRemoved)
                                         : store_->nextPresent(search_.next);
    if (at >= search_.end) {
      complete_ = true;
      presentEnd_ = rows_.size();
      break;
    }
    search_.next = at + 1;
    const std::size_t row = search_.index ? search_.index->position(at) : at;
    const bool passes = std::all_of(search_.conditions.begin(), search_.conditions.end(),
                                    [&](const Condition& one) { return one.matches(store_->cell(one.column, row)); });
    if (!passes) continue;
    rows_.push_back(static_cast<RowNumber>(row));
    return true;
  }
  return false;
}

std::size_t RowView::nextPresent(std::size_t position) {
  if (showsAll()) {
    if (!store_->holdsAll()) return store_->reach(position) ? position : none;
    const std::size_t row = store_->nextPresent(position);
    return row < store_->rowCount() ? row : none;
  }
  do {
    position = removedRuns_.find(position, rows_.size(), [this](std::size_t at) { return isRemovedAt(at); });
    if (position < rows_.size()) return position;
  } while (findMore());
  return none;
}

std::size_t RowView::lastPresent() {
  if (showsAll() && !store_->holdsAll()) {
    // The source may have counted more rows than come.
    while (store_->rowCount() > 0) {
      const std::size_t last = store_->rowCount() - 1;
      if (store_->reach(last)) return last;
    }
    return none;
  }
  if (showsAll()) return store_->presentEnd() - 1;
  while (findMore()) {
  }
  while (presentEnd_ > 0 && isRemovedAt(presentEnd_ - 1)) --presentEnd_;
  return presentEnd_ - 1;
}

std::size_t RowView::presentCount() {
  if (showsAll()) return store_->rowCount() - store_->removedCount();
  while (findMore()) {
  }
  if (removedAtCount_ != store_->removedCount()) {
    removedAtCount_ = store_->removedCount();
    presentCount_ = 0;
    for (const RowNumber row : rows_) presentCount_ += store_->isRemoved(row) ? 0 : 1;
  }
  return presentCount_;
}

std::size_t RowView::placeOf(std::size_t row) {
  if (showsAll()) return row;
  while (order_.empty() && (rows_.empty() || rows_.back() < row) && findMore()) {
  }
  const auto place = std::lower_bound(rows_.begin(), rows_.end(), row,
                                      [this](std::size_t a, std::size_t b) { return comesBefore(a, b); });
  return static_cast<std::size_t>(place - rows_.begin());
}

std::size_t RowView::find(const Condition& condition, std::size_t from) {
  if (condition.op == ConditionOperator::Equal) {
    RowIndex& index = indexOver(condition.column);
    std::string key;
    appendMatchKey(key, condition.value.cell());
    const RowIndex::Range range = index.find(key);
    const std::size_t entry = index.nextPresent(index.lowerBound(range, from), range.end, [this](std::size_t position) {
      return store_->isRemoved(rowAt(position));
    });
    return entry < range.end ? index.position(entry) : none;
  }
  std::size_t position = nextPresent(from);
  while (position != none && !condition.matches(store_->cell(condition.column, rowAt(position)))) {
    position = nextPresent(position + 1);
  }
  return position;
}

std::size_t RowView::findFirst(const std::vector<std::size_t>& columns, const std::vector<Cell>& values) {
  if (!showsAll()) {
    throw RuntimeError(errorNumber::operationNotAllowed,
                       "Operation is not allowed in this context: the rows are filtered or sorted.");
  }
  // Two tables that are searched for each other's rows mostly come in one order, so what is asked for is often the
  // first row that is left or, with distinct keys, the one behind the last found: neither needs a look into the hash
  // table.
  const std::size_t first = store_->nextPresent(0);
  if (first < store_->rowCount() && hasValues(first, columns, values)) return lastFound_ = first;
  RowIndex& index = store_->index(columns);
  const std::size_t next = lastFound_ == none ? 0 : lastFound_ + 1;
  if (index.isDistinct() && next < store_->rowCount() && !store_->isRemoved(next) && hasValues(next, columns, values))
    return lastFound_ = next;
  key_.clear();
  for (const Cell& value : values) appendMatchKey(key_, value);
  const RowIndex::Range range = index.find(key_);
  const std::size_t entry =
      index.nextPresent(range.begin, range.end, [this](std::size_t row) { return store_->isRemoved(row); });
  return entry < range.end ? lastFound_ = index.position(entry) : none;
}

bool RowView::hasValues(std::size_t row, const std::vector<std::size_t>& columns, const std::vector<Cell>& values) {
  for (std::size_t i = 0; i < columns.size(); ++i)
    if (!sameMatchKey(store_->cell(columns[i], row), values[i])) return false;
  return true;
}

RowIndex& RowView::indexOver(std::size_t column) {
  if (showsAll()) return store_->index({column});
  while (findMore()) {
  }
  std::unique_ptr<RowIndex>& index = indexes_[column];
  if (!index) index = std::make_unique<RowIndex>(store_->cells(), std::vector<std::size_t>{column}, &rows_);
  return *index;
}

bool RowView::comesBefore(std::size_t a, std::size_t b) const {
  for (const SortColumn& column : order_) {
    const int order = compareCells(store_->cell(column.column, a), store_->cell(column.column, b));
    if (order != 0) return (order < 0) != column.descending;
  }
  return a < b;
}

}  // namespace qrel
