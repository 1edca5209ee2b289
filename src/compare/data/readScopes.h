// How records are read while something lives: until a person stops it, and with which cursor.
#pragma once

#include <cstdint>
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

// Another cursor location for a while.
class CursorScope {
 public:
  CursorScope(Program& program, std::int32_t location)
      : location_(program.settings.glngCursorLocation), before_(std::exchange(location_, location)) {}
  ~CursorScope() { location_ = before_; }
  CursorScope(const CursorScope&) = delete;
  CursorScope& operator=(const CursorScope&) = delete;

 private:
  std::int32_t& location_;
  std::int32_t before_;
};

}  // namespace qrel
