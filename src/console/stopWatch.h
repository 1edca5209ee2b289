// Signals that end a run: Ctrl+C, a request to terminate, a terminal that is closed, a reader of the output that has
// gone.
#pragma once

#include <thread>

#include "embedded/instance/unfinished.h"

namespace qrel {

// True after such a signal. Commands ask it where they can stop in an orderly way.
bool stopRequested();
// True when the run was stopped because nobody reads its output any longer: there is nobody to tell of it.
bool readerGone();

// Watches for these signals as long as it lives. A load that doesn't notice a stop within a tenth of a second (in the
// middle of a long step of its own) is ended from here, and so is any command that is asked twice: what it has on disk
// is removed and the process ends with exit code 5. Not while a load takes its place, nor after that.
class StopWatch {
 public:
  explicit StopWatch(UnfinishedWork& unfinished);
  ~StopWatch();
  StopWatch(const StopWatch&) = delete;
  StopWatch& operator=(const StopWatch&) = delete;

 private:
  void watch();
  void endProcess(bool onlyLoads);

  UnfinishedWork& unfinished_;
  std::thread thread_;
};

}  // namespace qrel
