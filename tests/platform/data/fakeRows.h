// A row source over rows written down in a test.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/data/columnStore.h"
#include "platform/data/provider.h"

namespace qrel {

// What was asked of a source; the test keeps it beyond the source's end.
struct FakeUse {
  std::size_t mostAtOnce = 0;  // rows of one fetch, and so the most that a window holds
  int rewinds = 0;
  int counts = 0;
  bool ended = false;  // the source is gone
};

using FakeRow = std::vector<std::optional<std::string>>;  // text form per column; nothing is Null

class FakeRows : public RowSource {
 public:
  FakeRows(std::vector<ColumnInfo> columns, std::vector<FakeRow> rows, std::shared_ptr<FakeUse> use = nullptr)
      : columns_(std::move(columns)),
        rows_(std::move(rows)),
        use_(use ? std::move(use) : std::make_shared<FakeUse>()) {}
  ~FakeRows() override { use_->ended = true; }

  const std::vector<ColumnInfo>& columns() const override { return columns_; }
  std::size_t fetch(ColumnStore& store, std::size_t most) override {
    const std::size_t count = std::min(most, rows_.size() - next_);
    for (std::size_t i = 0; i < count; ++i, ++next_) {
      for (std::size_t column = 0; column < columns_.size(); ++column) append(store, column, rows_[next_][column]);
    }
    use_->mostAtOnce = std::max(use_->mostAtOnce, store.rowCount());
    return count;
  }
  void rewind() override {
    next_ = 0;
    ++use_->rewinds;
  }
  std::int64_t count() override {
    ++use_->counts;
    return static_cast<std::int64_t>(rows_.size());
  }

 private:
  void append(ColumnStore& store, std::size_t column, const std::optional<std::string>& text) const {
    const DataType type = columns_[column].type;
    if (!text) {
      store.appendNull(column);
    } else if (type == DataType::Integer || type == DataType::Boolean) {
      store.appendInteger(column, std::stoll(*text), type);
    } else if (type == DataType::Double) {
      store.appendDouble(column, std::stod(*text));
    } else {
      store.appendText(column, type, *text);
    }
  }

  std::vector<ColumnInfo> columns_;
  std::vector<FakeRow> rows_;
  std::size_t next_ = 0;
  std::shared_ptr<FakeUse> use_;
};

inline ColumnInfo fakeColumn(std::string name, DataType type) {
  ColumnInfo column;
  column.name = std::move(name);
  column.type = type;
  return column;
}

}  // namespace qrel
