// What two sequences have in common.
#pragma once

#include <cstddef>
#include <vector>

namespace qrel {

// Element `source` of one sequence is element `target` of the other one; both 0-based.
struct CommonElement {
  std::size_t source = 0;
  std::size_t target = 0;
};

// The longest sequence of elements that both have in the same order, so that as few as possible are left over. Where
// there are several of that length, it is always the same one. Memory goes with the lengths; time with their sum and
// the number of elements left over that the other sequence has, too.
std::vector<CommonElement> LongestCommon(const std::vector<int>& source, const std::vector<int>& target);

}  // namespace qrel
