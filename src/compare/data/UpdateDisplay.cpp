#include "compare/data/UpdateDisplay.h"

#include "app/modStrings.h"
#include "app/trap.h"

namespace qrel {

void UpdateDisplay(Program& program, ElapsedTimeWindow& frmStatus, std::int32_t lngRec, std::int32_t lngMinRecs,
                   Label& lblCurRec, ProgressBar& progress, bool blnAlways) {
  if (!blnAlways && lngRec > 1 && lngRec < lngMinRecs && lngRec % recordsPerYield != 0) return;
  trap(program, "mdlMisc", "UpdateDisplay", [&] {
    lblCurRec.setText(FormatThousands(lngRec));
    progress.setValue(static_cast<double>(lngRec) / lngMinRecs * 100);
    frmStatus.UpdateTimeElapsed();
    program.host.doEvents();
  });
}

}  // namespace qrel
