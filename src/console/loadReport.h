// What a load did, in words.
#pragma once

#include <iosfwd>

#include "platform/data/embedded/loader.h"

namespace qrel {

// The table of what was made and skipped.
void printLoadReport(std::ostream& out, const LoadReport& report);
// A line per statement that was skipped or refused: file, line, first words, reason.
void listSkipped(std::ostream& out, const LoadReport& report);

}  // namespace qrel
