// What happens while a run yields: a signal stops it, a terminal shows where it is.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "console/console.h"

namespace qrel {

// As long as it lives, each yield calls `look` with whether a signal has asked for a stop, and a terminal shows `where`
// ten times a second; an empty text leaves the line as it is.
class ProgressWatch {
 public:
  ProgressWatch(Console& console, std::function<void(bool stopped)> look, std::function<std::string()> where);
  ~ProgressWatch();
  ProgressWatch(const ProgressWatch&) = delete;
  ProgressWatch& operator=(const ProgressWatch&) = delete;

 private:
  void yielded();

  Console& console_;
  std::function<void(bool)> look_;
  std::function<std::string()> where_;
  std::int64_t told_ = 0;  // when the line was written last, milliseconds
};

// How far a comparison of records is, by its progress window.
class frmCompareStatus;
std::string whereIn(const frmCompareStatus& status);

}  // namespace qrel
