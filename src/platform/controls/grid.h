// A table of texts under a fixed header row, with colours per cell.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/controls/control.h"

namespace qrel {

// Rows and columns are 0-based; row 0 is the header. Made with that one row and no column. A cell that was never set is
// empty, black and without a background.
class Grid : public Control {
 public:
  using Control::Control;

  // What is raised when the rows asked for can't be had; the table is as it was then.
  static constexpr std::int32_t outOfRows = 30006;

  std::size_t rowCount() const { return rows_.size(); }
  // In one step: new rows are empty, rows beyond the end are gone with all they held.
  void setRowCount(std::size_t count);
  std::size_t columnCount() const { return widths_.size(); }
  void setColumnCount(std::size_t count);
  // 0 row and 0 column included; outside the table raises RuntimeError 381.
  const std::string& text(std::size_t row, std::size_t column) const;
  void setText(std::size_t row, std::size_t column, std::string text);

  std::uint32_t textColour(std::size_t row, std::size_t column) const;  // 0x00BBGGRR
  void setTextColour(std::size_t row, std::size_t column, std::uint32_t colour);
  // noColour: the window's own.
  static constexpr std::uint32_t noColour = 0xFFFFFFFF;
  std::uint32_t backColour(std::size_t row, std::size_t column) const;
  // From the first to the last row and column, both included, as far as the table has them.
  void paint(std::size_t firstRow, std::size_t lastRow, std::size_t firstColumn, std::size_t lastColumn,
             std::uint32_t colour);

  int columnWidth(std::size_t column) const { return widths_.at(column); }  // twips
  void setColumnWidth(std::size_t column, int twips);
  // The column takes the new place; those between move up. Texts and colours go with it.
  void moveColumn(std::size_t from, std::size_t to);

  // The row that a face shows at the top.
  std::size_t topRow() const { return topRow_; }
  void setTopRow(std::size_t row);

  // While redraw is off the observer isn't told; switching it on tells it once.
  void setRedraw(bool on);

 private:
  struct Cell {
    std::string text;
    std::uint32_t textColour = 0;
    std::uint32_t backColour = noColour;
  };
  using Row = std::vector<Cell>;  // as long as the row was ever used

  const Cell& cell(std::size_t row, std::size_t column) const;
  Cell& cellToSet(std::size_t row, std::size_t column);
  void check(std::size_t row, std::size_t column) const;
  void contentChanged();

  std::vector<Row> rows_{1};
  std::vector<int> widths_;
  std::size_t topRow_ = 0;
  bool redraw_ = true;
};

}  // namespace qrel
