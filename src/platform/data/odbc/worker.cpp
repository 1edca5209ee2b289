#include "platform/data/odbc/worker.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>

namespace qrel::odbc {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto slice = std::chrono::milliseconds(5);
constexpr auto cancelAgain = std::chrono::milliseconds(100);

}  // namespace

struct Worker::State {
  std::mutex mutex;
  std::condition_variable wake;  // there is something to do
  std::condition_variable done;
  std::function<void()> job;
  bool busy = false;
  bool quit = false;
  bool abandoned = false;
  bool expired = false;
  std::optional<Clock::time_point> expires;
  std::function<void()> last;
};

Worker::Worker() : state_(std::make_shared<State>()), thread_([state = state_] { loop(state); }) {}

Worker::~Worker() {
  bool leave = thread_.get_id() == std::this_thread::get_id();  // the job was the last to hold it
  {
    const std::lock_guard lock(state_->mutex);
    state_->quit = true;
    leave = leave || state_->abandoned;
  }
  state_->wake.notify_one();
  if (leave)
    thread_.detach();
  else
    thread_.join();
}

void Worker::loop(const std::shared_ptr<State>& state) {
  std::unique_lock lock(state->mutex);
  while (true) {
    const auto somethingToDo = [&] { return state->job || state->quit; };
    if (!state->expires) {
      state->wake.wait(lock, [&] { return somethingToDo() || state->expires; });
    } else if (!state->wake.wait_until(lock, *state->expires, [&] { return somethingToDo() || !state->expires; })) {
      state->expired = true;
      state->expires.reset();
      state->job = std::exchange(state->last, nullptr);
    }
    if (state->job) {
      std::function<void()> job = std::exchange(state->job, nullptr);
      lock.unlock();
      job();
      job = nullptr;  // what it holds goes before anybody hears of its end
      lock.lock();
      state->busy = false;
      state->done.notify_all();
    } else if (state->quit) {
      return;
    }
  }
}

Outcome Worker::run(std::function<void()> job, const Watch& watch) {
  std::unique_lock lock(state_->mutex);
  state_->busy = true;
  state_->job = std::move(job);
  state_->wake.notify_one();
  Outcome outcome;
  std::exception_ptr raised;
  const Clock::time_point start = Clock::now();
  Clock::time_point cancelled;
  Clock::time_point lastCancel;
  while (!state_->done.wait_for(lock, slice, [&] { return !state_->busy; })) {
    lock.unlock();
    if (outcome.ending == Ending::Finished) {
      try {
        if ((watch.interrupted && watch.interrupted->load()) ||
            (watch.stopAsked && *watch.stopAsked && (*watch.stopAsked)()))
          outcome.ending = Ending::Stopped;
      } catch (...) {
        raised = std::current_exception();
        outcome.ending = Ending::Stopped;
      }
      const Clock::time_point now = Clock::now();
      if (outcome.ending == Ending::Finished && watch.atMost.count() > 0 && now - start >= watch.atMost)
        outcome.ending = Ending::TimedOut;
      cancelled = now;
    }
    const bool ending = outcome.ending != Ending::Finished;
    // A cancel that comes between two calls of the job is lost.
    if (ending && watch.cancel && Clock::now() - lastCancel >= cancelAgain) {
      watch.cancel();
      lastCancel = Clock::now();
    }
    lock.lock();
    if (ending && state_->busy && Clock::now() - cancelled >= watch.grace) {
      state_->abandoned = outcome.abandoned = true;
      break;
    }
  }
  lock.unlock();
  if (raised) std::rethrow_exception(raised);
  return outcome;
}

void Worker::expireAfter(std::chrono::milliseconds time, std::function<void()> last) {
  {
    const std::lock_guard lock(state_->mutex);
    state_->expires = Clock::now() + time;
    state_->last = std::move(last);
  }
  state_->wake.notify_one();
}

bool Worker::claim() {
  std::function<void()> dropped;
  const std::lock_guard lock(state_->mutex);
  if (state_->expired || state_->abandoned) return false;
  state_->expires.reset();
  dropped = std::exchange(state_->last, nullptr);
  state_->wake.notify_one();
  return true;
}

}  // namespace qrel::odbc
