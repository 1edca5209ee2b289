#include "console/stopWatch.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string_view>

#include "console/exitCode.h"

namespace qrel {

namespace {

constexpr int graceMilliseconds = 100;
constexpr int againMilliseconds = 20;
constexpr unsigned char endOfWatch = 0;

// What a signal handler may touch: the first signal, and a pipe that carries each one's number to the watching thread.
volatile std::sig_atomic_t firstSignal = 0;
volatile std::sig_atomic_t pipeGone = 0;
int signalPipe[2] = {-1, -1};

extern "C" void noteStop(int signal) {
  const int error = errno;
  if (signal == SIGPIPE) pipeGone = 1;
  if (firstSignal == 0) firstSignal = signal;
  const auto byte = static_cast<unsigned char>(signal);
  if (::write(signalPipe[1], &byte, 1) != 1) firstSignal = signal;  // a full pipe has told enough
  errno = error;
}

void handle(int signal) {
  struct sigaction before {};
  // A run under nohup outlives its terminal.
  if (signal == SIGHUP && ::sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_handler = noteStop;
  action.sa_flags = SA_RESTART;
  ::sigaction(signal, &action, nullptr);
}

void tell(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

bool stopRequested() { return firstSignal != 0; }

bool readerGone() { return pipeGone != 0; }

StopWatch::StopWatch(UnfinishedWork& unfinished) : unfinished_(unfinished) {
  if (signalPipe[0] < 0 && ::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) handle(signal);
  thread_ = std::thread([this] { watch(); });
}

StopWatch::~StopWatch() {
  if (!thread_.joinable()) return;
  if (::write(signalPipe[1], &endOfWatch, 1) == 1)
    thread_.join();
  else
    thread_.detach();  // a pipe full of signals: the thread is about to end the process
}

void StopWatch::watch() {
  int asked = 0;
  int wait = -1;
  while (true) {
    struct pollfd readable {};
    readable.fd = signalPipe[0];
    readable.events = POLLIN;
    const int ready = ::poll(&readable, 1, wait);
    if (ready < 0 && errno != EINTR) return;
    if (ready == 0) {
      endProcess(true);
      wait = againMilliseconds;
      continue;
    }
    unsigned char signal = 0;
    if (::read(signalPipe[0], &signal, 1) != 1) continue;
    if (signal == endOfWatch) return;
    // Each write to a reader that has gone raises one more of its kind.
    if (signal != SIGPIPE && ++asked > 1) endProcess(false);
    if (wait < 0) wait = graceMilliseconds;
  }
}

void StopWatch::endProcess(bool onlyLoads) {
  if (!unfinished_.abandon(onlyLoads)) return;
  if (!readerGone()) {
    if (::isatty(STDERR_FILENO) != 0) tell("\r\033[K");
    tell("qrel: Operation cancelled by the user. Nothing was changed.\n");
  }
  ::_exit(static_cast<int>(ExitCode::Stopped));
}

}  // namespace qrel
