// What a load did, in words.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "platform/data/embedded/loader.h"

namespace qrel {

// The table of what was made, and of the statements: those carried out, skipped and refused are all that were read.
void printLoadReport(std::ostream& out, const LoadReport& report);
// A line per remark on a file or folder, then a line per statement that was skipped or refused, or per such statements
// that have all in common: file, line, first words, reason, how often.
void listSkipped(std::ostream& out, const LoadReport& report);

// A text of a script or a file's name as it may be printed on a terminal: characters that would steer it, or turn the
// direction of what follows, as \xNN or \u{NNNN}.
std::string visibleText(std::string_view text);
// 1,234,567
std::string withThousands(std::int64_t number);

}  // namespace qrel
