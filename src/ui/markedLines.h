// Which lines of two marked panes belong together, for scrolling them side by side.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace qrel {

class TextPane;

// The line of `other` (0-based) that stands for a line of `pane`: both have as many marked lines before them that exist
// on both sides. The first line stands for the first, and a line behind the last common one for the other's end.
std::size_t CounterpartLine(const TextPane& pane, const TextPane& other, std::size_t line);

// The first line (0-based) that is marked and not as the same on both sides; nothing when none is.
std::optional<std::size_t> FirstDifferentLine(const TextPane& pane);
// Where two marked panes differ, from the top: the first line (0-based) of each run of lines that are changed or on one
// side alone, in Source (0) and Target (1); on a side without such lines, the one in front of which they would stand.
// Empty when a pane isn't marked.
using MarkedPlace = std::array<std::size_t, 2>;
std::vector<MarkedPlace> MarkedPlaces(const TextPane& source, const TextPane& target);

}  // namespace qrel
