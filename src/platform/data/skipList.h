// Finds the next entry that isn't gone in a sequence from which entries only ever go.
#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

namespace qrel {

// Remembers runs of gone entries, so that any mix of deletions and look-ups costs next to nothing each. Entries are
// numbered from 0; `gone(i)` must stay true once it was.
class SkipList {
 public:
  // The first entry from `from` on, below `end`, that isn't gone; `end` without one.
  template <typename Gone>
  std::size_t find(std::size_t from, std::size_t end, Gone gone) {
    std::size_t at = from;
    while (at < end) {
      const std::size_t next = nextOf(at);
      if (next == at && !gone(at)) break;
      at = next == at ? at + 1 : next;
    }
    if (at > end) at = end;
    if (at > from + 1) shorten(from, at);
    return at;
  }

 private:
  std::size_t nextOf(std::size_t at) const { return at < next_.size() ? next_[at] : at; }

  // Everything passed on the way from `from` leads straight to `to` from now on.
  void shorten(std::size_t from, std::size_t to) {
    if (next_.size() < to) {
      const std::size_t known = next_.size();
      next_.resize(to + to / 2);
      std::iota(next_.begin() + static_cast<std::ptrdiff_t>(known), next_.end(), static_cast<std::uint32_t>(known));
    }
    while (from < to) {
      const std::size_t next = next_[from] == from ? from + 1 : next_[from];
      next_[from] = static_cast<std::uint32_t>(to);
      from = next;
    }
  }

  std::vector<std::uint32_t> next_;  // the entry itself, or one behind it with only gone entries between
};

}  // namespace qrel
