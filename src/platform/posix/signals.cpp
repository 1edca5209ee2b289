#include "platform/signals.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace qrel::signals {

namespace {

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

}  // namespace

bool stopRequested() { return firstSignal != 0; }

bool readerGone() { return pipeGone != 0; }

bool beginWatch() {
  if (signalPipe[0] < 0 && ::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) return false;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) handle(signal);
  return true;
}

Event next(int milliseconds) {
  while (true) {
    struct pollfd readable {};
    readable.fd = signalPipe[0];
    readable.events = POLLIN;
    const int ready = ::poll(&readable, 1, milliseconds);
    if (ready < 0 && errno != EINTR) return Event::End;
    if (ready == 0) return Event::TimedOut;
    unsigned char signal = 0;
    if (::read(signalPipe[0], &signal, 1) != 1) continue;
    if (signal == endOfWatch) return Event::End;
    return signal == SIGPIPE ? Event::ReaderGone : Event::Stop;
  }
}

bool endWatch() { return ::write(signalPipe[1], &endOfWatch, 1) == 1; }

}  // namespace qrel::signals
