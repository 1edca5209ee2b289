#include "compare/structure/modIgnoreColumnsOrder.h"

#include <string>

#include "app/modTextPane.h"
#include "app/trap.h"
#include "compare/structure/modSortTypeArrays.h"

namespace qrel {

bool CompareProcs_IgnoreColumnsOrder(Program& program, const TextPane& paneSource, const TextPane& paneTarget) {
  return trap(program, "modIgnoreColumnsOrder", "CompareProcs_IgnoreColumnsOrder", false, [&] {
    CompLineArray arrSource, arrTarget;
    std::int32_t lngSource = 0, lngTarget = 0;
    if (!TXText_LinesOrBox(program, paneSource, "Ignore Columns Order option (Source)", arrSource, lngSource))
      return false;
    if (!TXText_LinesOrBox(program, paneTarget, "Ignore Columns Order option (Target)", arrTarget, lngTarget))
      return false;
    if (!SortArray_CompLine(program, arrSource, true, true)) return false;
    if (!SortArray_CompLine(program, arrTarget, true, true)) return false;
    return AreTypeArrays_CompLine_Identical(program, arrSource, arrTarget, lngSource, lngTarget);
  });
}

bool AreTypeArrays_CompLine_Identical(Program& program, const CompLineArray& arrA, const CompLineArray& arrB,
                                      std::int32_t lngCountA, std::int32_t lngCountB) {
  return trap(program, "modIgnoreColumnsOrder", "AreTypeArrays_CompLine_Identical", false, [&] {
    if (lngCountA != lngCountB) return false;
    for (std::int32_t line = 1; line <= lngCountA; ++line) {
      if (arrA[line].strLine != arrB[line].strLine) return false;
    }
    return true;
  });
}

}  // namespace qrel
