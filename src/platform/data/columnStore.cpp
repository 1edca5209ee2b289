#include "platform/data/columnStore.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "platform/error.h"

namespace qrel {
namespace {

constexpr std::size_t firstBlockSize = std::size_t{4} << 10;
constexpr std::size_t largestBlockSize = std::size_t{1} << 20;

using Length = std::uint32_t;  // stands in front of each text

bool holdsText(DataType type) {
  return type != DataType::Integer && type != DataType::Boolean && type != DataType::Double && type != DataType::Empty;
}

}  // namespace

ColumnStore::ColumnStore(const std::vector<ColumnInfo>& columns) : columns_(columns.size()) {
  for (std::size_t i = 0; i < columns.size(); ++i) columns_[i].declared = columns_[i].type = columns[i].type;
}

ColumnStore::ColumnStore(const std::vector<DataType>& types) : columns_(types.size()) {
  for (std::size_t i = 0; i < types.size(); ++i) columns_[i].declared = columns_[i].type = types[i];
}

void ColumnStore::appendNull(std::size_t column) {
  Column& target = columns_[column];
  target.slots.push_back(Slot{.integer = 0});
  target.nulls.resize(target.slots.size());
  target.nulls.back() = true;
}

void ColumnStore::appendInteger(std::size_t column, std::int64_t value, DataType type) {
  Column& target = columns_[column];
  if (target.type == DataType::Empty) target.type = type;
  if (target.type == type) {
    target.slots.push_back(Slot{.integer = value});
    return;
  }
  becomeText(target);
  target.slots.push_back(Slot{.text = keep(textOf(Cell{.type = type, .null = false, .integer = value}))});
}

void ColumnStore::appendDouble(std::size_t column, double value) {
  Column& target = columns_[column];
  if (target.type == DataType::Empty) target.type = DataType::Double;
  if (target.type == DataType::Double) {
    target.slots.push_back(Slot{.real = value});
    return;
  }
  becomeText(target);
  target.slots.push_back(Slot{.text = keep(textOf(Cell{.type = DataType::Double, .null = false, .real = value}))});
}

void ColumnStore::appendText(std::size_t column, DataType type, std::string_view bytes) {
  Column& target = columns_[column];
  if (target.type == DataType::Empty) target.type = type;
  if (target.type == type) {
    target.slots.push_back(Slot{.text = keep(bytes)});
    return;
  }
  becomeText(target);
  if (type == DataType::Binary) {
    target.slots.push_back(Slot{.text = keep(textOf(Cell{.type = type, .null = false, .text = bytes}))});
  } else {
    target.slots.push_back(Slot{.text = keep(bytes)});
  }
}

Cell ColumnStore::cell(std::size_t column, std::size_t row) const { return cellOf(columns_[column], row); }

bool ColumnStore::isNull(std::size_t column, std::size_t row) const {
  const std::vector<bool>& nulls = columns_[column].nulls;
  return row < nulls.size() && nulls[row];
}

Cell ColumnStore::cellOf(const Column& column, std::size_t row) {
  Cell cell{.type = column.type};
  if (row < column.nulls.size() && column.nulls[row]) return cell;
  cell.null = false;
  const Slot& slot = column.slots[row];
  if (holdsText(column.type)) {
    Length length = 0;
    std::memcpy(&length, slot.text - sizeof length, sizeof length);
    cell.text = {slot.text, length};
  } else if (column.type == DataType::Double) {
    cell.real = slot.real;
  } else {
    cell.integer = slot.integer;
  }
  return cell;
}

void ColumnStore::becomeText(Column& column) {
  if (column.type == DataType::Text) return;
  std::string text;
  for (std::size_t row = 0; row < column.slots.size(); ++row) {
    const Cell cell = cellOf(column, row);
    if (cell.null) continue;
    text.clear();
    qrel::appendText(text, cell);
    column.slots[row].text = keep(text);
  }
  column.type = DataType::Text;
}

const char* ColumnStore::keep(std::string_view bytes) {
  if (bytes.size() > std::numeric_limits<Length>::max()) {
    throw RuntimeError(errorNumber::outOfMemory, "Out of memory: a value is longer than 4 GB.");
  }
  const auto length = static_cast<Length>(bytes.size());
  const std::size_t needed = sizeof length + bytes.size();
  while (currentBlock_ < blocks_.size() && blocks_[currentBlock_].size - used_ < needed) {
    ++currentBlock_;
    used_ = 0;
  }
  if (currentBlock_ == blocks_.size()) {
    const std::size_t next = blocks_.empty()
                                 ? firstBlockSize
                                 : std::min(largestBlockSize, std::max(firstBlockSize, 2 * blocks_.back().size));
    const std::size_t size = std::max(next, needed);
    blocks_.push_back({std::make_unique_for_overwrite<char[]>(size), size});
  }
  char* place = blocks_[currentBlock_].bytes.get() + used_;
  std::memcpy(place, &length, sizeof length);
  if (!bytes.empty()) std::memcpy(place + sizeof length, bytes.data(), bytes.size());
  used_ += needed;
  return place + sizeof length;
}

void ColumnStore::clear() {
  for (Column& column : columns_) {
    column.type = column.declared;
    column.slots.clear();
    column.nulls.clear();
  }
  currentBlock_ = 0;
  used_ = 0;
}

std::size_t ColumnStore::memoryUsed() const {
  std::size_t bytes = 0;
  for (const Column& column : columns_) bytes += column.slots.capacity() * sizeof(Slot) + column.nulls.capacity() / 8;
  for (const Block& block : blocks_) bytes += block.size;
  return bytes;
}

}  // namespace qrel
