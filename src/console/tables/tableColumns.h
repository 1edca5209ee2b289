// Columns of a table as they are named on the command line.
#pragma once

#include <array>
#include <string>

#include "compare/data/modCompareData.h"
#include "console/console.h"

namespace qrel {

// "a,b", of the request's table of a side, as the table's own names; the places behind them are empty. Throws
// CommandFailure for a name that it doesn't have, or that isn't compared, and for more than three.
std::array<std::string, 3> columnNames(Console& console, const tDataCompRequest& request, std::size_t side,
                                       const std::string& list);

// What both sides take of a pair of lists of which the second may be left out.
inline const std::string& listOfSide(const std::string (&both)[2], std::size_t side) {
  return both[side].empty() ? both[1 - side] : both[side];
}

}  // namespace qrel
