// A thread of its own for the calls of one connection: whoever asks for one can go on looking for a stop meanwhile.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>

namespace qrel::odbc {

// What ends a call before its time.
struct Watch {
  const std::function<bool()>* stopAsked = nullptr;  // asked by the waiting thread, every few milliseconds
  std::atomic<bool>* interrupted = nullptr;          // set by another thread
  std::chrono::milliseconds atMost{0};               // 0: without end
  std::chrono::milliseconds grace{0};                // how long the call may still take to end once it was cancelled
  std::function<void()> cancel;                      // called again and again until it has ended
};

enum class Ending { Finished, Stopped, TimedOut };
struct Outcome {
  Ending ending = Ending::Finished;
  bool abandoned = false;  // the call goes on, with nobody waiting; the worker takes no other one
};

// One job at a time. A job that was abandoned ends by itself some time later, so it must own all that it works with.
class Worker {
 public:
  Worker();
  // Waits for the thread unless it was abandoned.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Jobs raise nothing.
  Outcome run(std::function<void()> job, const Watch& watch);

  // Runs `last` on the thread unless claim is called before the time is over.
  void expireAfter(std::chrono::milliseconds time, std::function<void()> last);
  // False when it has expired.
  bool claim();

 private:
  struct State;
  static void loop(const std::shared_ptr<State>& state);
  std::shared_ptr<State> state_;
  std::thread thread_;
};

}  // namespace qrel::odbc
