// The rows of a data comparison's differences window as lines of text.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "platform/controls/grid.h"

namespace qrel {

class frmCompareData;

struct DifferencesForm {
  bool colours = false;
  bool vertical = false;  // a line per value, whole; otherwise a line per row, its values cut to what a column holds
  bool onlyDiffering = false;  // without the columns that no pair differs in, but for those of keyColumns
  std::vector<std::string> keyColumns{};
};

// The rows, each with the table that it is of, under a header line unless they are vertical. A value that differs from
// its partner's has a "*" before it and, with colours, is red. Line ends and control characters are shown as
// visibleText shows them.
void printDifferences(std::ostream& out, const Grid& grid, const DifferencesForm& form);

// All that a person reads in the differences window: the tables, the method, the numbers, the notes and the rows.
// Key columns are those of the window.
void printDifferencesWindow(std::ostream& out, const frmCompareData& window, DifferencesForm form);

}  // namespace qrel
