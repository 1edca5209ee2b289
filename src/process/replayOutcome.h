// How the last replay of a saved process ended, for whoever has to say so without a window: an exit code.
#pragma once

#include <optional>

namespace qrel {

struct ReplayOutcome {
  bool blnStarted = false;           // a process was asked for
  bool blnNotFound = false;          // the process, a server, a database or an object; a message has told which
  std::optional<bool> blnIdentical;  // the verdict; none: nothing was compared
  bool blnIncomplete = false;        // the verdict rests on less than there is, or its file couldn't be written
};

// 0 identical, 1 differences, 3 not found or nothing compared, 4 compared but incomplete.
int ReplayExitCode(const ReplayOutcome& outcome);

}  // namespace qrel
