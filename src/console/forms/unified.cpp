#include "console/forms/unified.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

#include "compare/structure/longestCommon.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines = splitAt(replaceAll(text, "\r\n", "\n"), '\n');
  if (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

// The lines [source, sourceEnd) give way to [target, targetEnd).
struct Change {
  std::size_t source, sourceEnd, target, targetEnd;
};

std::vector<Change> changesOf(const std::array<std::vector<std::string>, 2>& lines) {
  std::unordered_map<std::string, int> numbers;
  std::array<std::vector<int>, 2> numbered;
  for (const std::size_t side : {0U, 1U})
    for (const std::string& line : lines[side])
      numbered[side].push_back(numbers.try_emplace(line, static_cast<int>(numbers.size())).first->second);
  std::vector<CommonElement> common = LongestCommon(numbered[0], numbered[1]);
  common.push_back({lines[0].size(), lines[1].size()});
  std::vector<Change> changes;
  std::size_t source = 0, target = 0;
  for (const CommonElement& each : common) {
    if (each.source > source || each.target > target) changes.push_back({source, each.source, target, each.target});
    source = each.source + 1;
    target = each.target + 1;
  }
  return changes;
}

// A hunk's place: a range of no lines is named by the line before it.
std::string rangeOf(std::size_t begin, std::size_t count) {
  return std::to_string(count == 0 ? begin : begin + 1) + (count == 1 ? "" : "," + std::to_string(count));
}

}  // namespace

std::string unifiedOf(const std::array<std::string, 2>& names, const std::array<std::string, 2>& texts,
                      std::size_t context) {
  const std::array<std::vector<std::string>, 2> lines{linesOf(texts[0]), linesOf(texts[1])};
  const std::vector<Change> changes = changesOf(lines);
  if (changes.empty()) return {};
  std::string patch = "--- " + visibleText(names[0]) + "\n+++ " + visibleText(names[1]) + '\n';
  for (std::size_t first = 0; first < changes.size();) {
    std::size_t last = first;
    while (last + 1 < changes.size() && changes[last + 1].source - changes[last].sourceEnd <= 2 * context) ++last;
    const std::size_t before = std::min(context, changes[first].source);
    const std::size_t behind = std::min(context, lines[0].size() - changes[last].sourceEnd);
    const std::size_t source = changes[first].source - before, sourceEnd = changes[last].sourceEnd + behind;
    const std::size_t target = changes[first].target - before, targetEnd = changes[last].targetEnd + behind;
    patch += "@@ -" + rangeOf(source, sourceEnd - source) + " +" + rangeOf(target, targetEnd - target) + " @@\n";
    std::size_t at = source;
    const auto same = [&](std::size_t end) {
      for (; at < end; ++at) patch += ' ' + lines[0][at] + '\n';
    };
    for (; first <= last; ++first) {
      const Change& change = changes[first];
      same(change.source);
      for (; at < change.sourceEnd; ++at) patch += '-' + lines[0][at] + '\n';
      for (std::size_t added = change.target; added < change.targetEnd; ++added) patch += '+' + lines[1][added] + '\n';
    }
    same(sourceEnd);
  }
  return patch;
}

}  // namespace qrel
