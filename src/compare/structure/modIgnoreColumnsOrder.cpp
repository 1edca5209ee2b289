#include "compare/structure/modIgnoreColumnsOrder.h"

#include <string>

#include "app/modTextPane.h"
#include "app/trap.h"
#include "compare/structure/modSortTypeArrays.h"

namespace qrel {

namespace {

// False after a box when the pane's lines can't be had.
bool convertPane(Program& program, const TextPane& pane, const std::string& strSide, CompLineArray& arr,
                 std::int32_t& lngCount) {
  std::int32_t lngError = 0;
  lngCount = TXText_ConvTextToArray(pane, arr, lngError);
  if (lngError == 0) return true;
  program.host.messageBox("Ignore Columns Order option (" + strSide + ") - error occurred.");
  return false;
}

}  // namespace

bool CompareProcs_IgnoreColumnsOrder(Program& program, const TextPane& paneSource, const TextPane& paneTarget) {
  return trap(program, "modIgnoreColumnsOrder", "CompareProcs_IgnoreColumnsOrder", false, [&] {
    CompLineArray arrSource, arrTarget;
    std::int32_t lngSource = 0, lngTarget = 0;
    if (!convertPane(program, paneSource, "Source", arrSource, lngSource)) return false;
    if (!convertPane(program, paneTarget, "Target", arrTarget, lngTarget)) return false;
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
