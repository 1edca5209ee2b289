#include "compare/structure/longestCommon.h"

#include <algorithm>
#include <limits>
#include <unordered_set>

namespace qrel {

namespace {

// The elements of a sequence that the other one has, too: all others can't be common, and are most of what differs.
struct Candidates {
  Candidates(const std::vector<int>& all, const std::vector<int>& other) {
    const std::unordered_set<int> known(other.begin(), other.end());
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (known.count(all[i]) == 0) continue;
      values.push_back(all[i]);
      places.push_back(i);
    }
  }
  std::vector<int> values;
  std::vector<std::size_t> places;
};

// The greedy walk over diagonals of E. W. Myers (An O(ND) difference algorithm and its variations, 1986) from both ends
// at once: where the two walks meet, a shortest way is cut in two, and each part is solved in the same manner.
class CommonWalk {
 public:
  CommonWalk(const Candidates& source, const Candidates& target)
      : source_(source),
        target_(target),
        zero_(static_cast<long>(target.values.size()) + 1),
        ahead_(source.values.size() + target.values.size() + 3),
        back_(ahead_.size()) {}

  std::vector<CommonElement> run() {
    solve({0, static_cast<long>(source_.values.size()), 0, static_cast<long>(target_.values.size())});
    return std::move(common_);
  }

 private:
  // Source elements from x0 to before x1, Target elements from y0 to before y1.
  struct Box {
    long x0, x1, y0, y1;
  };
  struct Point {
    long x, y;
  };

  bool same(long x, long y) const {
    return source_.values[static_cast<std::size_t>(x)] == target_.values[static_cast<std::size_t>(y)];
  }
  long& ahead(long diagonal) { return ahead_[static_cast<std::size_t>(diagonal + zero_)]; }
  long& back(long diagonal) { return back_[static_cast<std::size_t>(diagonal + zero_)]; }
  void take(long x, long y) {
    common_.push_back({source_.places[static_cast<std::size_t>(x)], target_.places[static_cast<std::size_t>(y)]});
  }

  void solve(Box box) {
    for (; box.x0 < box.x1 && box.y0 < box.y1 && same(box.x0, box.y0); ++box.x0, ++box.y0) take(box.x0, box.y0);
    const Box whole = box;
    while (box.x0 < box.x1 && box.y0 < box.y1 && same(box.x1 - 1, box.y1 - 1)) --box.x1, --box.y1;
    if (box.x0 < box.x1 && box.y0 < box.y1) {
      const Point cut = middle(box);
      solve({box.x0, cut.x, box.y0, cut.y});
      solve({cut.x, box.x1, cut.y, box.y1});
    }
    for (long x = box.x1, y = box.y1; x < whole.x1; ++x, ++y) take(x, y);
  }

  // Which diagonals (x - y) one of the walks has reached, and the range in which they lie at all.
  struct Reached {
    long low, high;
    // One step more to both sides, within the range; a place beyond the ends is made so bad that none comes from there.
    template <class Place>
    void widen(const Box& box, long worst, const Place& place) {
      if (low > box.x0 - box.y1)
        place(--low - 1) = worst;
      else
        ++low;
      if (high < box.x1 - box.y0)
        place(++high + 1) = worst;
      else
        --high;
    }
    bool has(long diagonal) const { return low <= diagonal && diagonal <= high; }
  };

  // A point on a shortest way through the box, whose first and last elements aren't common.
  Point middle(const Box& box) {
    Reached front{box.x0 - box.y0, box.x0 - box.y0};
    Reached rear{box.x1 - box.y1, box.x1 - box.y1};
    const bool odd = ((front.low - rear.low) & 1) != 0;
    ahead(front.low) = box.x0;
    back(rear.low) = box.x1;
    for (;;) {
      front.widen(box, -1, [this](long d) -> long& { return ahead(d); });
      for (long d = front.high; d >= front.low; d -= 2) {
        long x = std::max(ahead(d - 1) + 1, ahead(d + 1));
        while (x < box.x1 && x - d < box.y1 && same(x, x - d)) ++x;
        ahead(d) = x;
        if (odd && rear.has(d) && back(d) <= x) return {x, x - d};
      }
      rear.widen(box, std::numeric_limits<long>::max(), [this](long d) -> long& { return back(d); });
      for (long d = rear.high; d >= rear.low; d -= 2) {
        long x = std::min(back(d - 1), back(d + 1) - 1);
        while (x > box.x0 && x - d > box.y0 && same(x - 1, x - d - 1)) --x;
        back(d) = x;
        if (!odd && front.has(d) && x <= ahead(d)) return {x, x - d};
      }
    }
  }

  const Candidates& source_;
  const Candidates& target_;
  const long zero_;                 // the place of diagonal 0
  std::vector<long> ahead_, back_;  // per diagonal the furthest x of each walk
  std::vector<CommonElement> common_;
};

}  // namespace

std::vector<CommonElement> LongestCommon(const std::vector<int>& source, const std::vector<int>& target) {
  const Candidates ofSource(source, target);
  const Candidates ofTarget(target, source);
  return CommonWalk(ofSource, ofTarget).run();
}

}  // namespace qrel
