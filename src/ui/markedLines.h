// Which lines of two marked panes belong together, for scrolling them side by side.
#pragma once

#include <cstddef>
#include <optional>

namespace qrel {

class TextPane;

// The line of `other` (0-based) that stands for a line of `pane`: both have as many marked lines before them that exist
// on both sides. The first line stands for the first, and a line behind the last common one for the other's end.
std::size_t CounterpartLine(const TextPane& pane, const TextPane& other, std::size_t line);

// The first line (0-based) that is marked and not as the same on both sides; nothing when none is.
std::optional<std::size_t> FirstDifferentLine(const TextPane& pane);

}  // namespace qrel
