// A table of records under columns with captions.
#pragma once

#include "platform/controls/grid.h"

namespace qrel {

// A grid whose header row holds the columns' captions: records are its rows 1 to recordCount(), columns are 0-based.
// Texts, colours and the observer are the grid's.
class ReportControl : public Grid {
 public:
  using Grid::Grid;

  // A further column on the right; records that are there have an empty cell in it.
  void addColumn(std::string caption, int twips) {
    const std::size_t column = columnCount();
    setColumnCount(column + 1);
    setColumnWidth(column, twips);
    setText(0, column, std::move(caption));
  }
  const std::string& caption(std::size_t column) const { return text(0, column); }

  std::size_t recordCount() const { return rowCount() - 1; }
  // An empty record behind the others; its row.
  std::size_t addRecord() {
    setRowCount(rowCount() + 1);
    return rowCount() - 1;
  }
  // The columns stay.
  void clear() { setRowCount(1); }
};

}  // namespace qrel
