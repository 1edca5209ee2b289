// Which object a line of a whole-database report names.
#pragma once

#include <cstddef>
#include <vector>

#include "compare/all/modCompareAll.h"

namespace qrel {

class TextPane;

// The verdict that the line (0-based) of the shown report is about: a line of a list, the sentence about one identical
// object, the heading of an object's differences. Null for every other line.
const ObjectVerdict* ObjectOfReportLine(const std::vector<ObjectVerdict>& arrVerdicts, const TextPane& report,
                                        std::size_t line);

// "differs", "only here" and so on, as the lists of a side (0 Source, 1 Target) have it beside the object's name; empty
// where that side doesn't have it.
std::string VerdictWords(VerdictState state, bool blnData, int side);

}  // namespace qrel
