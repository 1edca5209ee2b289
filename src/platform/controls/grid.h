// A table of texts under a fixed header row, with colours per cell.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/controls/control.h"
#include "platform/textBlocks.h"

namespace qrel {

// Rows and columns are 0-based; row 0 is the header. Made with that one row and no column. A cell that was never set is
// empty, black and without a background.
class Grid : public Control {
 public:
  using Control::Control;

  // What is raised when the rows asked for can't be had; the table is as it was then.
  static constexpr std::int32_t outOfRows = 30006;

  std::size_t rowCount() const { return rowCount_; }
  // In one step: new rows are empty, rows beyond the end are gone with all they held.
  void setRowCount(std::size_t count);
  std::size_t columnCount() const { return columns_.size(); }
  void setColumnCount(std::size_t count);
  // 0 row and 0 column included; outside the table raises RuntimeError 381. The text stays until the table changes.
  std::string_view text(std::size_t row, std::size_t column) const;
  void setText(std::size_t row, std::size_t column, std::string_view text);

  std::uint32_t textColour(std::size_t row, std::size_t column) const;  // 0x00BBGGRR
  void setTextColour(std::size_t row, std::size_t column, std::uint32_t colour);
  // noColour: the window's own.
  static constexpr std::uint32_t noColour = 0xFFFFFFFF;
  std::uint32_t backColour(std::size_t row, std::size_t column) const;
  // From the first to the last row and column, both included, as far as the table has them.
  void paint(std::size_t firstRow, std::size_t lastRow, std::size_t firstColumn, std::size_t lastColumn,
             std::uint32_t colour);

  int columnWidth(std::size_t column) const { return columns_.at(column).width; }  // twips
  void setColumnWidth(std::size_t column, int twips);
  // The column takes the new place; those between move up. Texts and colours go with it.
  void moveColumn(std::size_t from, std::size_t to);

  // The row that a face shows at the top.
  std::size_t topRow() const { return topRow_; }
  void setTopRow(std::size_t row);

  // While redraw is off the observer isn't told; switching it on tells it once.
  void setRedraw(bool on);

 private:
  static constexpr int usualWidth = 960;  // twips
  // Stands in a column's colours for the one that the whole row has.
  static constexpr std::uint32_t ofRow = 0xFFFFFFFE;

  // What a column has in each row, header included: eight bytes a cell. Colours are kept only where they are needed.
  struct Column {
    std::vector<const char*> texts;          // of TextBlocks; null: empty
    std::vector<std::uint32_t> textColours;  // empty: all black
    std::vector<std::uint32_t> backColours;  // empty: all ofRow
    int width = usualWidth;

    void resize(std::size_t rows);
  };

  void check(std::size_t row, std::size_t column) const;
  void paintRow(std::size_t row, std::uint32_t colour);
  void resizeRows(std::size_t count);
  void drop(const Column& column, std::size_t fromRow);
  void drop(const char* text);
  void tidyTexts();
  void contentChanged();

  std::vector<Column> columns_;
  std::vector<std::uint32_t> rowColours_;  // empty: none
  TextBlocks texts_;
  std::size_t dropped_ = 0;  // bytes of texts_ that no cell has any more
  std::size_t rowCount_ = 1;
  std::size_t topRow_ = 0;
  bool redraw_ = true;
};

}  // namespace qrel
