// A run over records that a person can stop while the server is at work.
#pragma once

#include <exception>
#include <functional>
#include <utility>

#include "app/Program.h"
#include "platform/error.h"

namespace qrel {

// While it lives, commands and fetches let the window system run and end when `stopped` says so.
class StopScope {
 public:
  StopScope(Program& program, std::function<bool()> stopped)
      : stopAsked_(program.data.stopAsked), before_(std::move(stopAsked_)) {
    stopAsked_ = [&host = program.host, stopped = std::move(stopped)] {
      host.doEvents();
      return stopped();
    };
  }
  ~StopScope() { stopAsked_ = std::move(before_); }
  StopScope(const StopScope&) = delete;
  StopScope& operator=(const StopScope&) = delete;

 private:
  std::function<bool()>& stopAsked_;
  std::function<bool()> before_;
};

// Whether that is how a fetch ended: no failure that anybody must be told of.
inline bool IsCancelled(const std::exception& error) { return describeError(error).number == errorNumber::cancelled; }

}  // namespace qrel
