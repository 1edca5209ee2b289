// What a test wants to go otherwise than well, and what it wants to know of the traffic.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/tds/tokens.h"

namespace qrel::tds {

// All may be set at any time, from any thread; they hold for what begins from then on. A new object lets all go well.
struct Switches {
  // Connecting.
  std::atomic<bool> mute = false;               // connections are taken, nothing is ever answered
  std::atomic<bool> refuseLogins = false;       // error 18456, whatever the password
  std::atomic<bool> requireEncryption = false;  // which isn't spoken here: the connection ends with the prelogin

  // Answering.
  std::atomic<int> latencyMilliseconds = 0;     // in front of every answer, those of a login too
  std::atomic<bool> muteAfterLogin = false;     // statements aren't answered, nor is their cancelling
  std::atomic<bool> ignoreAttention = false;    // a cancelled statement goes on, and nothing says so
  std::atomic<std::int64_t> cutAfterRows = -1;  // the line ends in the middle of the row behind so many of a result
  std::atomic<std::int64_t> stallAfterRows =
      -1;                                     // behind so many rows nothing more comes until the client cancels or goes
  std::atomic<int> countsFirst = 0;           // numbers of rows, 1 to this, in front of every result
  std::atomic<bool> messageFirst = false;     // a message (50000, severity 10) in front of every result
  std::atomic<int> returnValue = 0;           // of every procedure, unless it is 0
  std::atomic<int> outputInteger = 0;         // what comes back of every parameter that comes back, unless it is 0
  std::atomic<bool> closeAfterError = false;  // an error that failNext has asked for ends the line

  // The next statement fails in this way, or the next one whose text holds `within`; several wait for theirs.
  void failNext(ServerMessage message, std::string within = {}) {
    const std::lock_guard lock(mutex_);
    failures_.emplace_back(std::move(within), std::move(message));
  }
  // The failure that was asked for a statement; each is given once.
  std::optional<ServerMessage> takeFailure(const std::string& text) {
    const std::lock_guard lock(mutex_);
    for (auto each = failures_.begin(); each != failures_.end(); ++each) {
      if (text.find(each->first) == std::string::npos) continue;
      ServerMessage found = std::move(each->second);
      failures_.erase(each);
      return found;
    }
    return {};
  }

 private:
  std::mutex mutex_;
  std::deque<std::pair<std::string, ServerMessage>> failures_;
};

// A statement, or the call of a procedure.
struct Request {
  std::uint16_t connection = 0;  // 1 for the first that was taken
  std::string database{};        // the one that the connection is at
  std::string procedure{};       // empty for a batch
  std::string text{};            // the batch, or the statement that the procedure runs
  std::vector<std::string>
      parameters{};  // their text forms, "NULL" for Null; without the statement and its declarations
};

class Traffic {
 public:
  std::atomic<std::int64_t> connections = 0;  // that were taken
  std::atomic<std::int64_t> logins = 0;       // that succeeded
  std::atomic<std::int64_t> roundTrips = 0;   // messages that came in: two for a login
  std::atomic<std::int64_t> attentions = 0;   // of these, those that cancel
  std::atomic<std::int64_t> rows = 0;

  // The latest requests, in their order.
  std::vector<Request> requests() const {
    const std::lock_guard lock(mutex_);
    return {requests_.begin(), requests_.end()};
  }
  void add(Request request) {
    const std::lock_guard lock(mutex_);
    requests_.push_back(std::move(request));
    if (requests_.size() > most) requests_.pop_front();
  }
  void forgetRequests() {
    const std::lock_guard lock(mutex_);
    requests_.clear();
  }

 private:
  static constexpr std::size_t most = 10'000;
  mutable std::mutex mutex_;
  std::deque<Request> requests_;
};

}  // namespace qrel::tds
