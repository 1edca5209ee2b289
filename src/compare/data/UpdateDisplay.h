// What a run over many records shows of itself.
#pragma once

#include <cstdint>

#include "app/Program.h"
#include "platform/controls/control.h"

namespace qrel {

// A window that shows for how long its run has been on.
class ElapsedTimeWindow {
 public:
  virtual ~ElapsedTimeWindow() = default;
  virtual void UpdateTimeElapsed() = 0;
};

// How many records pass between two looks at the window system: less than it takes a person to notice.
inline constexpr std::int32_t recordsPerYield = 64;

// Shows that record lngRec of lngMinRecs is at work and lets the window system run, for the first, every
// recordsPerYield-th, the last record and those behind it; blnAlways for any. An error is reported and the run goes on.
void UpdateDisplay(Program& program, ElapsedTimeWindow& frmStatus, std::int32_t lngRec, std::int32_t lngMinRecs,
                   Label& lblCurRec, ProgressBar& progress, bool blnAlways = false);

}  // namespace qrel
