// Text of others on a terminal: what would move the cursor, colour, hide or turn text is shown instead of obeyed.
#pragma once

#include <string>
#include <string_view>

namespace qrel {

// On one line: line ends and tabs as \r, \n and \t, other control characters and bytes that are no character as \x1B,
// marks of writing direction, invisible characters and line separators as \u202E.
std::string visibleText(std::string_view text);
// The same with line ends and tabs left as they are; a CR only before a LF.
std::string visibleLines(std::string_view text);

}  // namespace qrel
