#include "platform/data/columnStore.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "platform/error.h"

namespace qrel {
namespace {

constexpr std::size_t firstBlockSize = std::size_t{4} << 10;
constexpr std::size_t largestBlockSize = std::size_t{32} << 20;

// In front of each text stands its length: one byte, or for the longer ones this byte and the length as a Length.
constexpr unsigned char longText = 255;
using Length = std::uint32_t;

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
  pushText(target, textOf(Cell{.type = type, .null = false, .integer = value}));
}

void ColumnStore::appendDouble(std::size_t column, double value) {
  Column& target = columns_[column];
  if (target.type == DataType::Empty) target.type = DataType::Double;
  if (target.type == DataType::Double) {
    target.slots.push_back(Slot{.real = value});
    return;
  }
  becomeText(target);
  pushText(target, textOf(Cell{.type = DataType::Double, .null = false, .real = value}));
}

void ColumnStore::appendText(std::size_t column, DataType type, std::string_view bytes) {
  Column& target = columns_[column];
  if (target.type == DataType::Empty) target.type = type;
  if (target.type == type) {
    pushText(target, bytes);
    return;
  }
  becomeText(target);
  if (type == DataType::Binary) {
    pushText(target, textOf(Cell{.type = type, .null = false, .text = bytes}));
  } else {
    pushText(target, bytes);
  }
}

void ColumnStore::pushText(Column& column, std::string_view bytes) {
  if (!column.latest || textAt(column.latest) != bytes) column.latest = keep(bytes);
  column.slots.push_back(Slot{.text = column.latest});
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
    cell.text = textAt(slot.text);
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
  column.latest = nullptr;
  column.type = DataType::Text;
}

const char* ColumnStore::keep(std::string_view bytes) {
  if (bytes.size() > std::numeric_limits<Length>::max()) {
    throw RuntimeError(errorNumber::outOfMemory, "Out of memory: a value is longer than 4 GB.");
  }
  const bool isLong = bytes.size() >= longText;
  Block& block = blockWith(1 + (isLong ? sizeof(Length) : 0) + bytes.size());
  const char* place = block.data() + block.size();
  if (isLong) {
    const auto length = static_cast<Length>(bytes.size());
    const auto* lengthBytes = reinterpret_cast<const char*>(&length);
    block.push_back(static_cast<char>(longText));
    block.insert(block.end(), lengthBytes, lengthBytes + sizeof length);
  } else {
    block.push_back(static_cast<char>(bytes.size()));
  }
  block.insert(block.end(), bytes.begin(), bytes.end());
  return place;
}

// The current block, or the next one that has the room; a block's bytes never move.
ColumnStore::Block& ColumnStore::blockWith(std::size_t room) {
  while (currentBlock_ < blocks_.size()) {
    Block& block = blocks_[currentBlock_];
    if (block.capacity() - block.size() >= room) return block;
    ++currentBlock_;
  }
  const std::size_t twice = blocks_.empty() ? 0 : 2 * blocks_.back().capacity();
  const std::size_t next = std::clamp(twice, firstBlockSize, largestBlockSize);
  blocks_.emplace_back().reserve(std::max(next, room));
  return blocks_.back();
}

std::string_view ColumnStore::textAt(const char* kept) {
  const auto first = static_cast<unsigned char>(*kept);
  if (first < longText) return {kept + 1, first};
  Length length = 0;
  std::memcpy(&length, kept + 1, sizeof length);
  return {kept + 1 + sizeof length, length};
}

void ColumnStore::clear() {
  for (Column& column : columns_) {
    column.type = column.declared;
    column.slots.clear();
    column.nulls.clear();
    column.latest = nullptr;
  }
  for (Block& block : blocks_) block.clear();
  currentBlock_ = 0;
}

std::size_t ColumnStore::memoryUsed() const {
  std::size_t bytes = 0;
  for (const Column& column : columns_) bytes += column.slots.capacity() * sizeof(Slot) + column.nulls.capacity() / 8;
  for (const Block& block : blocks_) bytes += block.capacity();
  return bytes;
}

}  // namespace qrel
