#include "process/replayOutcome.h"

namespace qrel {

int ReplayExitCode(const ReplayOutcome& outcome) {
  if (outcome.blnNotFound || !outcome.blnIdentical) return 3;
  if (outcome.blnIncomplete) return 4;
  return *outcome.blnIdentical ? 0 : 1;
}

}  // namespace qrel
