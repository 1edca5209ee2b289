// The rows of a data comparison's differences window as lines of text.
#pragma once

#include <iosfwd>

#include "platform/controls/grid.h"

namespace qrel {

// A header line and a line per row, its columns aligned; before the values stands which table the row is of. A value
// that differs from its partner's has a "*" before it and, with colours, is red. Long values are cut, line ends and
// control characters are shown as visibleText shows them.
void printDifferences(std::ostream& out, const Grid& grid, bool colours);

}  // namespace qrel
