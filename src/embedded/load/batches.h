// A script file as batches: GO lines and sqlcmd's commands and variables.
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
// Replaces $(name) by its value and carries out :setvar; other sqlcmd commands (:r, :on error ...) are blanked and told
// in `unknown` with their lines. An undefined $(name) stays as it is. Line count and line ends stay.
std::string applySqlcmd(std::string_view script, std::vector<std::pair<std::string, std::string>>& variables,
                        std::vector<SkippedStatement>& unknown);

}  // namespace qrel
