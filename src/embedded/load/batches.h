// A script file as batches: parted by GO lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qrel {

// A statement that was skipped or failed, or a number of them with all of this in common.
struct SkippedStatement {
  std::string file;
  std::size_t line = 1;  // 1-based in the file
  std::string firstWords;
  std::string reason;
  std::int64_t times = 1;
  std::int64_t order = 0;  // among all that a load tells
};

// One batch of a script: its text, where it begins, how often it runs.
struct Batch {
  std::string_view text;
  std::size_t firstLine = 1;  // 1-based in the file
  int count = 1;              // 0 behind "GO 0"
};
// Splits at GO (alone on its line, any case, optional count, optional semicolon or line comment behind it), not inside
// strings, brackets or block comments. One that is never closed ends at a GO line all the same, so that the batch which
// opens it is lost alone: whoever runs that finds something open at its end.
std::vector<Batch> splitBatches(std::string_view script);

}  // namespace qrel
