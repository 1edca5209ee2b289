#include "platform/controls/grid.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>

#include "platform/error.h"

namespace qrel {

namespace {

constexpr std::int32_t noSuchCell = 381;
constexpr std::uint32_t black = 0;

}  // namespace

void Grid::Column::resize(std::size_t rows) {
  texts.resize(rows);
  if (!textColours.empty()) textColours.resize(rows, black);
  if (!backColours.empty()) backColours.resize(rows, ofRow);
}

void Grid::contentChanged() {
  if (redraw_) changed();
}

void Grid::setRedraw(bool on) {
  redraw_ = on;
  if (on) changed();
}

void Grid::setRowCount(std::size_t count) {
  const std::size_t before = rowCount_;
  try {
    if (count < before)
      for (const Column& column : columns_) drop(column, count);
    resizeRows(count);
  } catch (const std::exception& error) {
    if (!dynamic_cast<const std::bad_alloc*>(&error) && !dynamic_cast<const std::length_error*>(&error)) throw;
    resizeRows(before);
    throw RuntimeError(outOfRows, "The table can't have " + std::to_string(count) + " rows.");
  }
  rowCount_ = count;
  tidyTexts();
  topRow_ = std::min(topRow_, count == 0 ? 0 : count - 1);
  contentChanged();
}

void Grid::resizeRows(std::size_t count) {
  for (Column& column : columns_) column.resize(count);
  if (!rowColours_.empty()) rowColours_.resize(count, noColour);
}

void Grid::setColumnCount(std::size_t count) {
  for (std::size_t column = count; column < columns_.size(); ++column) drop(columns_[column], 0);
  const std::size_t before = columns_.size();
  columns_.resize(count);
  for (std::size_t column = before; column < count; ++column) {
    columns_[column].resize(rowCount_);
    // The rows were painted without it.
    if (!rowColours_.empty()) columns_[column].backColours.assign(rowCount_, noColour);
  }
  tidyTexts();
  contentChanged();
}

void Grid::check(std::size_t row, std::size_t column) const {
  if (row >= rowCount_ || column >= columns_.size())
    throw RuntimeError(
        noSuchCell, "The table has no row " + std::to_string(row) + " with a column " + std::to_string(column) + ".");
}

std::string_view Grid::text(std::size_t row, std::size_t column) const {
  check(row, column);
  const char* text = columns_[column].texts[row];
  return text ? TextBlocks::textAt(text) : std::string_view();
}

void Grid::setText(std::size_t row, std::size_t column, std::string_view text) {
  check(row, column);
  const char*& cell = columns_[column].texts[row];
  const char* before = cell;
  cell = text.empty() ? nullptr : texts_.keep(text);
  drop(before);
  tidyTexts();
  contentChanged();
}

void Grid::drop(const char* text) {
  if (text) dropped_ += TextBlocks::textAt(text).size() + 1;
}

void Grid::drop(const Column& column, std::size_t fromRow) {
  for (std::size_t row = fromRow; row < column.texts.size(); ++row) drop(column.texts[row]);
}

// A table that is filled again and again would grow without end.
void Grid::tidyTexts() {
  constexpr std::size_t bearable = std::size_t{1} << 20;
  if (dropped_ < bearable || dropped_ < texts_.memoryUsed() / 2) return;
  TextBlocks kept;
  for (Column& column : columns_)
    for (const char*& text : column.texts)
      if (text) text = kept.keep(TextBlocks::textAt(text));
  texts_ = std::move(kept);
  dropped_ = 0;
}

std::uint32_t Grid::textColour(std::size_t row, std::size_t column) const {
  check(row, column);
  const auto& colours = columns_[column].textColours;
  return colours.empty() ? black : colours[row];
}

void Grid::setTextColour(std::size_t row, std::size_t column, std::uint32_t colour) {
  check(row, column);
  auto& colours = columns_[column].textColours;
  if (colours.empty()) {
    if (colour == black) return;
    colours.assign(rowCount_, black);
  }
  colours[row] = colour;
  contentChanged();
}

std::uint32_t Grid::backColour(std::size_t row, std::size_t column) const {
  check(row, column);
  const auto& colours = columns_[column].backColours;
  if (!colours.empty() && colours[row] != ofRow) return colours[row];
  return rowColours_.empty() ? noColour : rowColours_[row];
}

void Grid::paint(std::size_t firstRow, std::size_t lastRow, std::size_t firstColumn, std::size_t lastColumn,
                 std::uint32_t colour) {
  const bool wholeRows = firstColumn == 0 && lastColumn + 1 >= columns_.size();
  for (std::size_t row = firstRow; row <= lastRow && row < rowCount_; ++row) {
    if (wholeRows) {
      paintRow(row, colour);
      continue;
    }
    for (std::size_t column = firstColumn; column <= lastColumn && column < columns_.size(); ++column) {
      auto& colours = columns_[column].backColours;
      if (colours.empty()) colours.assign(rowCount_, ofRow);
      colours[row] = colour;
    }
  }
  contentChanged();
}

void Grid::paintRow(std::size_t row, std::uint32_t colour) {
  if (rowColours_.empty()) rowColours_.assign(rowCount_, noColour);
  rowColours_[row] = colour;
  for (Column& column : columns_)
    if (!column.backColours.empty()) column.backColours[row] = ofRow;
}

void Grid::setColumnWidth(std::size_t column, int twips) {
  columns_.at(column).width = twips;
  contentChanged();
}

void Grid::moveColumn(std::size_t from, std::size_t to) {
  if (from >= columns_.size() || to >= columns_.size() || from == to) return;
  const auto at = [this](std::size_t index) { return columns_.begin() + static_cast<std::ptrdiff_t>(index); };
  if (from < to)
    std::rotate(at(from), at(from + 1), at(to + 1));
  else
    std::rotate(at(to), at(from), at(from + 1));
  contentChanged();
}

void Grid::setTopRow(std::size_t row) {
  topRow_ = row;
  contentChanged();
}

}  // namespace qrel
