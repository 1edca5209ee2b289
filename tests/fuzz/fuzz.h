// What the fuzz targets share. Each of them is a function that libFuzzer calls with one input after the other; what it
// looks for are crashes, undefined behaviour, loops without end, memory and stack without bounds. Errors that a person
// would be told are none.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/error.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Runs `body`; the errors that the program raises on purpose end it.
template <typename Body>
void fuzzed(Body body) {
  try {
    body();
  } catch (const RuntimeError&) {  // NOLINT(bugprone-empty-catch): told to a person elsewhere
  }
}

}  // namespace qrel
