// The sort of line arrays.
#pragma once

#include "app/CompLine.h"

namespace qrel {

class Program;

// Sorts whole records by the binary order of strLine, lower-cased first with blnIgnoreCase. Records with equal keys
// come out in the order that this exchange of all pairs leaves them in (ascending; descending turns the test round):
//   for i over the array, for j over the array: if key[i] < key[j] swap records i and j
// That order decides verdicts about lines that differ in case only. The work is O(n log n), also for one key
// throughout. False after the report of an error: an array of more than 32,767 lines is error 6 and stays as it was.
bool SortArray_CompLine(Program& program, CompLineArray& arr, bool blnAscending, bool blnIgnoreCase);

}  // namespace qrel
