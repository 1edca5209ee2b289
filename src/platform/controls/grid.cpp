#include "platform/controls/grid.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "platform/error.h"

namespace qrel {

namespace {

constexpr std::int32_t noSuchCell = 381;
constexpr int usualWidth = 960;  // twips

}  // namespace

void Grid::contentChanged() {
  if (redraw_) changed();
}

void Grid::setRedraw(bool on) {
  redraw_ = on;
  if (on) changed();
}

void Grid::setRowCount(std::size_t count) {
  try {
    rows_.resize(count);
  } catch (const std::bad_alloc&) {
    throw RuntimeError(outOfRows, "The table can't have " + std::to_string(count) + " rows.");
  } catch (const std::length_error&) {
    throw RuntimeError(outOfRows, "The table can't have " + std::to_string(count) + " rows.");
  }
  topRow_ = std::min(topRow_, count == 0 ? 0 : count - 1);
  contentChanged();
}

void Grid::setColumnCount(std::size_t count) {
  widths_.resize(count, usualWidth);
  for (Row& row : rows_)
    if (row.size() > count) row.resize(count);
  contentChanged();
}

void Grid::check(std::size_t row, std::size_t column) const {
  if (row >= rows_.size() || column >= widths_.size())
    throw RuntimeError(
        noSuchCell, "The table has no row " + std::to_string(row) + " with a column " + std::to_string(column) + ".");
}

const Grid::Cell& Grid::cell(std::size_t row, std::size_t column) const {
  static const Cell empty;
  check(row, column);
  return column < rows_[row].size() ? rows_[row][column] : empty;
}

Grid::Cell& Grid::cellToSet(std::size_t row, std::size_t column) {
  check(row, column);
  Row& cells = rows_[row];
  if (column >= cells.size()) {
    if (cells.empty()) cells.reserve(widths_.size());
    cells.resize(column + 1);
  }
  return cells[column];
}

const std::string& Grid::text(std::size_t row, std::size_t column) const { return cell(row, column).text; }

void Grid::setText(std::size_t row, std::size_t column, std::string text) {
  cellToSet(row, column).text = std::move(text);
  contentChanged();
}

std::uint32_t Grid::textColour(std::size_t row, std::size_t column) const { return cell(row, column).textColour; }

void Grid::setTextColour(std::size_t row, std::size_t column, std::uint32_t colour) {
  cellToSet(row, column).textColour = colour;
  contentChanged();
}

std::uint32_t Grid::backColour(std::size_t row, std::size_t column) const { return cell(row, column).backColour; }

void Grid::paint(std::size_t firstRow, std::size_t lastRow, std::size_t firstColumn, std::size_t lastColumn,
                 std::uint32_t colour) {
  for (std::size_t row = firstRow; row <= lastRow && row < rows_.size(); ++row)
    for (std::size_t column = firstColumn; column <= lastColumn && column < widths_.size(); ++column)
      cellToSet(row, column).backColour = colour;
  contentChanged();
}

void Grid::setColumnWidth(std::size_t column, int twips) {
  widths_.at(column) = twips;
  contentChanged();
}

void Grid::moveColumn(std::size_t from, std::size_t to) {
  if (from >= widths_.size() || to >= widths_.size() || from == to) return;
  const auto move = [from, to](auto& list) {
    const auto at = [&list](std::size_t index) { return list.begin() + static_cast<std::ptrdiff_t>(index); };
    if (from < to)
      std::rotate(at(from), at(from + 1), at(to + 1));
    else
      std::rotate(at(to), at(from), at(from + 1));
  };
  move(widths_);
  for (Row& row : rows_) {
    row.resize(widths_.size());
    move(row);
  }
  contentChanged();
}

void Grid::setTopRow(std::size_t row) {
  topRow_ = row;
  contentChanged();
}

}  // namespace qrel
