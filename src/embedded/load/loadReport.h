// What a load did, in words.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "embedded/load/loader.h"

namespace qrel {

// The table of what was made, and of the statements: those carried out, skipped and refused are all that were read.
void printLoadReport(std::ostream& out, const LoadReport& report);
// A line per remark on a file or folder, then a line per statement that was skipped or refused, or per such statements
// that have all in common: file, line, first words, reason, how often.
void listSkipped(std::ostream& out, const LoadReport& report);

// 1,234,567
std::string withThousands(std::int64_t number);

}  // namespace qrel
