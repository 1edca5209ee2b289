// Signals that ask the program to stop: Ctrl+C, a request to terminate, a terminal that is closed, a reader of the
// output that has gone. One watch for the whole process.
#pragma once

#include <cstdint>

namespace qrel::signals {

// True after the first of them.
bool stopRequested();
// True when one was of a reader that has gone.
bool readerGone();

// From here on they are noted and don't end the process. False, and nothing is changed, when the system can't do that.
bool beginWatch();

enum class Event : std::uint8_t { Stop, ReaderGone, TimedOut, End };
// Waits for the next signal, at most so many milliseconds; below 0 as long as it takes. For one thread at a time.
Event next(int milliseconds);

// Makes next() give End when it has given what came before. False when there is no telling it for all the signals.
bool endWatch();

}  // namespace qrel::signals
