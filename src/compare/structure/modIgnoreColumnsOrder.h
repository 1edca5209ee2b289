// Two texts as collections of lines: the same lines in any order.
#pragma once

#include <cstdint>

#include "app/CompLine.h"

namespace qrel {

class Program;
class TextPane;

// Whether the two panes hold the same lines in any order. Lines that differ in case are different lines. A pane that
// can't be cut into lines is told in a box and gives False, as does an error (reported) on the way.
bool CompareProcs_IgnoreColumnsOrder(Program& program, const TextPane& paneSource, const TextPane& paneTarget);

// Whether counts and lines agree, line by line from 1.
bool AreTypeArrays_CompLine_Identical(Program& program, const CompLineArray& arrA, const CompLineArray& arrB,
                                      std::int32_t lngCountA, std::int32_t lngCountB);

}  // namespace qrel
