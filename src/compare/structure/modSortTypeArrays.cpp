#include "compare/structure/modSortTypeArrays.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

#include "app/trap.h"
#include "platform/text.h"

namespace qrel {

namespace {

// Why the order of equal keys can be computed without the exchanges. Ascending:
// - The pass i = 1 brings the first of the greatest records to place 1; each strict maximum on the way takes the place
//   of the next one.
// - From then on the places before i are sorted and hold a greatest record last. Pass i puts record x = a[i] at the end
//   of its own run of equal keys; the first record of each run with a greater key is pushed out by the run before it
//   and lands at that run's end. So x is appended to its run, and every greater run rotates left by one.
// A run is thus a ring with a head: appending inserts in front of the head, rotating moves the head on by one. Played
// backwards from the final places, the record appended last sits in the slot before the head.

// Sums over the first elements of an array that changes. Indices are 0-based.
class PrefixSums {
 public:
  explicit PrefixSums(std::size_t count) : tree_(count + 1) {}

  // All elements 1, in linear time.
  static PrefixSums ofOnes(std::size_t count) {
    PrefixSums sums(count);
    for (std::size_t i = 1; i <= count; ++i) sums.tree_[i] = static_cast<std::int32_t>(i & (~i + 1));
    return sums;
  }

  void add(std::size_t index, std::int32_t value) {
    for (std::size_t i = index + 1; i < tree_.size(); i += i & (~i + 1)) tree_[i] += value;
  }

  // The sum of the elements before `index`.
  std::size_t before(std::size_t index) const {
    std::int32_t sum = 0;
    for (std::size_t i = index; i > 0; i -= i & (~i + 1)) sum += tree_[i];
    return static_cast<std::size_t>(sum);
  }

  // The element at which the sum exceeds `rank`: with ones and zeros, the one with that 0-based rank.
  std::size_t find(std::size_t rank) const {
    std::size_t index = 0;
    std::size_t step = 1;
    while (step * 2 < tree_.size()) step *= 2;
    for (; step > 0; step /= 2) {
      if (index + step >= tree_.size() || static_cast<std::size_t>(tree_[index + step]) > rank) continue;
      index += step;
      rank -= static_cast<std::size_t>(tree_[index]);
    }
    return index;
  }

 private:
  std::vector<std::int32_t> tree_;
};

// A record that joins its run, and how often smaller ones had come by then.
struct Joining {
  std::size_t record = 0;  // 0-based place in the original array
  std::size_t smallerBefore = 0;
};

// The rank of each record's key among the distinct keys, in the order of the sort.
std::vector<std::size_t> rankKeys(const CompLineArray& arr, bool blnAscending, bool blnIgnoreCase,
                                  std::size_t& distinct) {
  std::vector<std::string> keys;
  keys.reserve(static_cast<std::size_t>(arr.count()));
  for (const CompLine& line : arr) keys.push_back(blnIgnoreCase ? lowerCase(line.strLine) : line.strLine);
  std::vector<std::size_t> order(keys.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const int compared = compareBinary(keys[a], keys[b]);
    return blnAscending ? compared < 0 : compared > 0;
  });
  std::vector<std::size_t> ranks(keys.size());
  distinct = 0;
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (i > 0 && keys[order[i]] != keys[order[i - 1]]) ++distinct;
    ranks[order[i]] = distinct;
  }
  if (!order.empty()) ++distinct;
  return ranks;
}

// The records in the order that the first pass leaves.
std::vector<std::size_t> afterFirstPass(const std::vector<std::size_t>& ranks) {
  std::vector<std::size_t> records(ranks.size());
  std::iota(records.begin(), records.end(), 0);
  for (std::size_t j = 1; j < records.size(); ++j) {
    if (ranks[records[0]] < ranks[records[j]]) std::swap(records[0], records[j]);
  }
  return records;
}

// Puts a run's records into their final order. `smallerAtEnd` counts all records with a smaller key.
void placeRun(const std::vector<Joining>& run, std::size_t smallerAtEnd, std::size_t* places) {
  if (run.size() == 1) {
    places[0] = run[0].record;
    return;
  }
  PrefixSums freeSlots = PrefixSums::ofOnes(run.size());
  std::size_t head = 0;  // rank of the head among the free slots
  std::size_t smallerAfter = smallerAtEnd;
  for (std::size_t joined = run.size(); joined > 0; --joined) {
    const Joining& last = run[joined - 1];
    const std::size_t rotations = (smallerAfter - last.smallerBefore) % joined;
    head = (head + joined - rotations) % joined;
    const std::size_t slotRank = (head + joined - 1) % joined;
    const std::size_t slot = freeSlots.find(slotRank);
    places[slot] = last.record;
    freeSlots.add(slot, -1);
    head = head > 0 ? head - 1 : 0;
    smallerAfter = last.smallerBefore;
  }
}

// The original places of the records, in the order that the exchanges lead to.
std::vector<std::size_t> sortedRecords(const std::vector<std::size_t>& ranks, std::size_t distinct) {
  std::vector<std::vector<Joining>> runs(distinct);
  PrefixSums joinedByRank(distinct);
  for (const std::size_t record : afterFirstPass(ranks)) {
    const std::size_t rank = ranks[record];
    runs[rank].push_back({record, joinedByRank.before(rank)});
    joinedByRank.add(rank, 1);
  }
  std::vector<std::size_t> places(ranks.size());
  std::size_t start = 0;
  for (const auto& run : runs) {
    placeRun(run, start, places.data() + start);
    start += run.size();
  }
  return places;
}

}  // namespace

bool SortArray_CompLine(Program& program, CompLineArray& arr, bool blnAscending, bool blnIgnoreCase) {
  return trap(program, "modSortTypeArrays", "SortArray_CompLine", false, [&] {
    toInt16(arr.count());
    std::size_t distinct = 0;
    const std::vector<std::size_t> ranks = rankKeys(arr, blnAscending, blnIgnoreCase, distinct);
    CompLineArray sorted;
    sorted.reserve(ranks.size());
    for (const std::size_t record : sortedRecords(ranks, distinct)) {
      sorted.add(std::move(arr[static_cast<long>(record) + 1]));
    }
    arr = std::move(sorted);
    return true;
  });
}

}  // namespace qrel
