// A table of records under columns with captions, which can print itself.
#pragma once

#include <functional>
#include <string>

#include "platform/controls/grid.h"

namespace qrel {

// A grid whose header row holds the columns' captions: records are its rows 1 to recordCount(), columns are 0-based.
// Texts, colours and the observer are the grid's. Its cell reader is text(), textColour() and backColour().
class ReportControl : public Grid {
 public:
  using Grid::Grid;

  // A further column on the right; records that are there have an empty cell in it.
  void addColumn(std::string_view caption, int twips) {
    const std::size_t column = columnCount();
    setColumnCount(column + 1);
    setColumnWidth(column, twips);
    setText(0, column, caption);
  }
  std::string_view caption(std::size_t column) const { return text(0, column); }

  std::size_t recordCount() const { return rowCount() - 1; }
  // An empty record behind the others; its row.
  std::size_t addRecord() {
    setRowCount(rowCount() + 1);
    return rowCount() - 1;
  }
  // The columns stay.
  void clear() { setRowCount(1); }

  // All records on paper under that title, after a look at the pages, and how the pages are set up. The face that shows
  // the control carries it out; without one nothing happens. Raises RuntimeError when it can't be printed.
  void print(const std::string& title) const {
    if (onPrint) onPrint(title);
  }
  void printPreview(const std::string& title) const {
    if (onPrintPreview) onPrintPreview(title);
  }
  void pageSetup() const {
    if (onPageSetup) onPageSetup();
  }
  std::function<void(const std::string& title)> onPrint;  // set by the face
  std::function<void(const std::string& title)> onPrintPreview;
  std::function<void()> onPageSetup;
};

}  // namespace qrel
