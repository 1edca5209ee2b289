#include "compare/structure/longestCommon.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <unordered_map>
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

// The length of the longest common sequence of some Source elements and of every beginning of a stretch of the Target:
// a row of the table of all pairs, one bit for each Target element, 64 of them in one step (H. Hyyro, Bit-parallel LCS-
// length computation revisited, 2004).
class CommonRow {
 public:
  explicit CommonRow(std::size_t width) : row_((width + 63) / 64, ~std::uint64_t{0}), equal_(row_.size()) {}

  // The next Source element; `places` are the Target elements that are equal to it.
  template <class Places>
  void next(const Places& places) {
    places([this](std::size_t place) { equal_[place / 64] |= std::uint64_t{1} << place % 64; });
    std::uint64_t carry = 0;
    for (std::size_t word = 0; word < row_.size(); ++word) {
      const std::uint64_t all = row_[word], common = all & equal_[word];
      const std::uint64_t sum = all + common + carry;
      carry = carry != 0 ? sum <= all : sum < all;
      row_[word] = sum | (all & ~common);
    }
    places([this](std::size_t place) { equal_[place / 64] = 0; });
  }
  // Of the beginning of 0, 1, ... `width` elements.
  std::vector<long> lengths(std::size_t width) const {
    std::vector<long> lengths(width + 1, 0);
    for (std::size_t place = 0; place < width; ++place)
      lengths[place + 1] = lengths[place] + static_cast<long>(~(row_[place / 64] >> place % 64) & 1);
    return lengths;
  }

 private:
  std::vector<std::uint64_t> row_;    // a zero: one more with this element
  std::vector<std::uint64_t> equal_;  // all zero between two steps
};

// The greedy walk over diagonals of E. W. Myers (An O(ND) difference algorithm and its variations, 1986) from both ends
// at once: where the two walks meet, a shortest way is cut in two, and each part is solved in the same manner. Its time
// grows with the square of what differs; before that is more than all pairs take by CommonRow, the cut is looked for in
// the middle of the Source by these (D. S. Hirschberg, 1975). Either way the result is a longest one.
class CommonWalk {
 public:
  CommonWalk(const Candidates& source, const Candidates& target)
      : source_(source),
        target_(target),
        zero_(static_cast<long>(target.values.size()) + 1),
        ahead_(source.values.size() + target.values.size() + 3),
        back_(ahead_.size()) {
    for (std::size_t y = 0; y < target.values.size(); ++y) places_[target.values[y]].push_back(static_cast<long>(y));
  }

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
    if (box.x1 - box.x0 == 1 || box.y1 - box.y0 == 1) {
      takeOne(box);
    } else if (box.x0 < box.x1 && box.y0 < box.y1) {
      const std::optional<Point> met = whereWalksMeet(box);
      const Point cut = met ? *met : cutByRows(box);
      solve({box.x0, cut.x, box.y0, cut.y});
      solve({cut.x, box.x1, cut.y, box.y1});
    }
    for (long x = box.x1, y = box.y1; x < whole.x1; ++x, ++y) take(x, y);
  }

  // Of a box with a single element on one side.
  void takeOne(const Box& box) {
    for (long x = box.x0; x < box.x1; ++x)
      for (long y = box.y0; y < box.y1; ++y)
        if (same(x, y)) return take(x, y);
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

  // A point on a shortest way through the box, whose first and last elements aren't common; none when it takes too
  // long.
  std::optional<Point> whereWalksMeet(const Box& box) {
    Reached front{box.x0 - box.y0, box.x0 - box.y0};
    Reached rear{box.x1 - box.y1, box.x1 - box.y1};
    const bool odd = ((front.low - rear.low) & 1) != 0;
    ahead(front.low) = box.x0;
    back(rear.low) = box.x1;
    constexpr long stepsPerRow = 24;  // a step of the walk takes as long as so many pairs of a row
    for (long steps = (box.x1 - box.x0) * (box.y1 - box.y0) / stepsPerRow; steps >= 0;
         steps -= front.high - front.low + 1) {
      front.widen(box, -1, [this](long d) -> long& { return ahead(d); });
      for (long d = front.high; d >= front.low; d -= 2) {
        long x = std::max(ahead(d - 1) + 1, ahead(d + 1));
        while (x < box.x1 && x - d < box.y1 && same(x, x - d)) ++x;
        ahead(d) = x;
        if (odd && rear.has(d) && back(d) <= x) return Point{x, x - d};
      }
      rear.widen(box, std::numeric_limits<long>::max(), [this](long d) -> long& { return back(d); });
      for (long d = rear.high; d >= rear.low; d -= 2) {
        long x = std::min(back(d - 1), back(d + 1) - 1);
        while (x > box.x0 && x - d > box.y0 && same(x - 1, x - d - 1)) --x;
        back(d) = x;
        if (!odd && front.has(d) && x <= ahead(d)) return Point{x, x - d};
      }
    }
    return std::nullopt;
  }

  // The point at half of the Source through which a longest common sequence goes.
  Point cutByRows(const Box& box) const {
    const long half = box.x0 + (box.x1 - box.x0) / 2;
    const auto width = static_cast<std::size_t>(box.y1 - box.y0);
    CommonRow front(width), rear(width);
    for (long x = box.x0; x < half; ++x)
      front.next([&](auto each) { forEqual(x, box, [&](long y) { each(static_cast<std::size_t>(y - box.y0)); }); });
    for (long x = box.x1; x-- > half;)
      rear.next([&](auto each) { forEqual(x, box, [&](long y) { each(static_cast<std::size_t>(box.y1 - 1 - y)); }); });
    const std::vector<long> before = front.lengths(width), behind = rear.lengths(width);
    std::size_t best = 0;
    for (std::size_t y = 1; y <= width; ++y)
      if (before[y] + behind[width - y] > before[best] + behind[width - best]) best = y;
    return {half, box.y0 + static_cast<long>(best)};
  }

  // The Target elements of the box that are equal to a Source element.
  template <class Each>
  void forEqual(long x, const Box& box, const Each& each) const {
    const std::vector<long>& all = places_.at(source_.values[static_cast<std::size_t>(x)]);
    for (auto y = std::lower_bound(all.begin(), all.end(), box.y0); y != all.end() && *y < box.y1; ++y) each(*y);
  }

  const Candidates& source_;
  const Candidates& target_;
  const long zero_;                                    // the place of diagonal 0
  std::vector<long> ahead_, back_;                     // per diagonal the furthest x of each walk
  std::unordered_map<int, std::vector<long>> places_;  // where each value stands in the Target
  std::vector<CommonElement> common_;
};

}  // namespace

std::vector<CommonElement> LongestCommon(const std::vector<int>& source, const std::vector<int>& target) {
  const Candidates ofSource(source, target);
  const Candidates ofTarget(target, source);
  return CommonWalk(ofSource, ofTarget).run();
}

}  // namespace qrel
