#include "console/stopWatch.h"

#include "console/exitCode.h"
#include "platform/signals.h"
#include "platform/system.h"

namespace qrel {

namespace {

constexpr int graceMilliseconds = 100;
constexpr int againMilliseconds = 20;

}  // namespace

bool stopRequested() { return signals::stopRequested(); }

bool readerGone() { return signals::readerGone(); }

StopWatch::StopWatch(UnfinishedWork& unfinished) : unfinished_(unfinished) {
  if (signals::beginWatch()) thread_ = std::thread([this] { watch(); });
}

StopWatch::~StopWatch() {
  if (!thread_.joinable()) return;
  if (signals::endWatch())
    thread_.join();
  else
    thread_.detach();  // so many signals: the thread is about to end the process
}

void StopWatch::watch() {
  int asked = 0;
  int wait = -1;
  while (true) {
    const signals::Event event = signals::next(wait);
    if (event == signals::Event::End) return;
    if (event == signals::Event::TimedOut) {
      endProcess(true);
      wait = againMilliseconds;
      continue;
    }
    // Each write to a reader that has gone raises one more of its kind.
    if (event == signals::Event::Stop && ++asked > 1) endProcess(false);
    if (wait < 0) wait = graceMilliseconds;
  }
}

void StopWatch::endProcess(bool onlyLoads) {
  if (!unfinished_.abandon(onlyLoads)) return;
  if (!readerGone()) {
    if (system::isTerminal(system::Stream::Errors)) system::writeToErrors("\r\033[K");
    system::writeToErrors("qrel: Operation cancelled by the user. Nothing was changed.\n");
  }
  system::endProcess(static_cast<int>(ExitCode::Stopped));
}

}  // namespace qrel
