#include "platform/data/columnStore.h"

#include <string>

namespace qrel {
namespace {

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
  target.cells.push_back(Slot{.integer = 0});
  target.nulls.resize(target.cells.size());
  target.nulls.back() = true;
}

void ColumnStore::appendInteger(std::size_t column, std::int64_t value, DataType type) {
  Column& target = columns_[column];
  if (target.type == DataType::Empty) target.type = type;
  if (target.type == type) {
    target.cells.push_back(Slot{.integer = value});
    return;
  }
  becomeText(target);
  pushText(target, textOf(Cell{.type = type, .null = false, .integer = value}));
}

void ColumnStore::appendDouble(std::size_t column, double value) {
  Column& target = columns_[column];
  if (target.type == DataType::Empty) target.type = DataType::Double;
  if (target.type == DataType::Double) {
    target.cells.push_back(Slot{.real = value});
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
  if (!column.latest || TextBlocks::textAt(column.latest) != bytes) column.latest = texts_.keep(bytes);
  column.cells.push_back(Slot{.text = column.latest});
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
  const Slot& slot = column.cells[row];
  if (holdsText(column.type)) {
    cell.text = TextBlocks::textAt(slot.text);
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
  for (std::size_t row = 0; row < column.cells.size(); ++row) {
    const Cell cell = cellOf(column, row);
    if (cell.null) continue;
    text.clear();
    qrel::appendText(text, cell);
    column.cells[row].text = texts_.keep(text);
  }
  column.latest = nullptr;
  column.type = DataType::Text;
}

void ColumnStore::clear() {
  for (Column& column : columns_) {
    column.type = column.declared;
    column.cells.clear();
    column.nulls.clear();
    column.latest = nullptr;
  }
  texts_.clear();
}

std::size_t ColumnStore::memoryUsed() const {
  std::size_t bytes = texts_.memoryUsed();
  for (const Column& column : columns_) bytes += column.cells.capacity() * sizeof(Slot) + column.nulls.capacity() / 8;
  return bytes;
}

}  // namespace qrel
