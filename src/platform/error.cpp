#include "platform/error.h"

#include <limits>
#include <new>

namespace qrel {

std::int16_t toInt16(std::int64_t value) {
  if (value < std::numeric_limits<std::int16_t>::min() || value > std::numeric_limits<std::int16_t>::max())
    throw RuntimeError(errorNumber::overflow, "Overflow");
  return static_cast<std::int16_t>(value);
}

ErrorInfo describeError(const std::exception& error) {
  if (const auto* known = dynamic_cast<const RuntimeError*>(&error)) return {known->number, known->description};
  if (dynamic_cast<const std::bad_alloc*>(&error)) return {errorNumber::outOfMemory, "Out of memory"};
  return {51, std::string("Internal error: ") + error.what()};
}

}  // namespace qrel
