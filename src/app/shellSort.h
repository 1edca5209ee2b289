// The sort by number that the lists of the program have always had: its order among records is shown and decides what
// a person sees, so that no other can take its place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/error.h"

namespace qrel {

// Two passes per gap and no more: items whose keys are far apart may end not fully ordered, and equal ones not in the
// order in which they came. It counts in 16 bits: more than 32,767 items raise error 6 and stay as they are.
template <class Item, class Key>
void ShellSort(std::vector<Item>& items, bool blnDescending, Key key) {
  const int count = toInt16(static_cast<std::int64_t>(items.size()));
  const auto exchange = [&](int i, int gap) {
    const auto at = static_cast<std::size_t>(i);
    Item& left = items[at];
    Item& right = items[at + static_cast<std::size_t>(gap)];
    if (blnDescending ? key(left) < key(right) : key(left) > key(right)) std::swap(left, right);
  };
  for (int gap = count / 2; gap >= 1; gap /= 2) {
    for (int i = 0; i < count - gap; ++i) exchange(i, gap);
    for (int i = count - gap - 1; i >= 0; --i) exchange(i, gap);
  }
}

}  // namespace qrel
