// How records are read while something lives: until a person stops it, and with which cursor.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>

#include "app/Program.h"

namespace qrel {

// While it lives, commands and fetches let the window system run and end when `stopped` says so.
class StopScope {
 public:
  StopScope(Program& program, std::function<bool()> stopped) : program_(program) {
    program.data.stopAsked = [&program, asked = std::move(stopped)] {
      program.host.doEvents();
      return asked();
    };
  }
  ~StopScope() { program_.data.stopAsked = nullptr; }
  StopScope(const StopScope&) = delete;
  StopScope& operator=(const StopScope&) = delete;

 private:
  Program& program_;
};

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
