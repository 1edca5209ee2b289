// The comparison of the records of two tables.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "app/Program.h"
#include "compare/data/modCompareData.h"
#include "platform/controls/control.h"

namespace qrel {

class frmCompareStatus;

// The two tables, 0 Source, 1 Target: how they stand in SQL and how many records were counted.
struct tTablesToCompare {
  const tDataCompRequest& request;
  const std::array<std::string, 2>& arrExtNames;
  const std::array<std::int32_t, 2>& arrRecs;
};

// Fetches the records of both tables, pairs them by position or by key, counts the differences and fills the
// differences window when gblnFillDiffTable is set. True when the data is identical; False also for a comparison that
// was stopped, couldn't fetch (the query layer has told it) or ended in an error (told in a box). lngDiffs counts
// differing pairs and Source records without partner, and the difference of the two counts.
bool CompareTableRecords(Program& program, frmCompareStatus& frmStatus, const tTablesToCompare& tables,
                         std::int32_t& lngDiffs, Label& lblCurRec, ProgressBar& progress);

}  // namespace qrel
