// Two texts as a patch that makes the second of the first.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace qrel {

// In the unified form with so many lines of context; empty for texts that are the same. Lines end with LF, the last one
// too: as "qrel text" prints them.
std::string unifiedOf(const std::array<std::string, 2>& names, const std::array<std::string, 2>& texts,
                      std::size_t context);

}  // namespace qrel
