// Comparing the data of all tables, or of a selection, of two databases, with the result as one plain text report.
#pragma once

#include "compare/all/modCompareAll.h"

namespace qrel {

// Compares table by table, each as it is set up in the options of its own comparison. True when the run came to its
// end: the report text then holds the report. False without a report after an error report or when the stop flag
// gblnCancelCompare was set; a stop in the progress window of a table (gblnStopComparison) ends that table alone.
// Totals and what couldn't be compared are in modCompareAllState. The window is closed in any case. input.blnDetails
// has no meaning here.
bool CompareAll_Data(Program& program, CompareAllControls& frmOwner, const CompareAllInput& input);

}  // namespace qrel
