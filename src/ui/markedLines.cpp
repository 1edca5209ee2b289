#include "ui/markedLines.h"

#include <algorithm>
#include <vector>

#include "compare/structure/modMarkDifferences.h"
#include "platform/controls/textPane.h"

namespace qrel {

namespace {

// The lines, in order, that have a colour and one that `wanted` takes. Blank lines have none.
template <class Wanted>
std::vector<std::size_t> linesOf(const TextPane& pane, Wanted wanted) {
  std::vector<std::size_t> offsets;
  for (const TextPane::Range& range : pane.backgrounds())
    if (wanted(range.colour)) offsets.push_back(range.start);
  std::sort(offsets.begin(), offsets.end());
  std::vector<std::size_t> lines;
  std::size_t line = 0;
  const std::size_t count = pane.lineCount();
  for (const std::size_t offset : offsets) {
    while (line + 1 < count && static_cast<std::size_t>(pane.lineOffset(line + 1)) <= offset) ++line;
    lines.push_back(line);
  }
  return lines;
}

// Those whose colour says that the other side has them too.
std::vector<std::size_t> commonLines(const TextPane& pane) {
  return linesOf(pane, [](std::uint32_t colour) {
    return colour != GetMarkColor(markOnlyInSource) && colour != GetMarkColor(markOnlyInTarget);
  });
}

// The lines of a pane as their colours tell them.
struct PaneMarks {
  explicit PaneMarks(const TextPane& pane) : common(commonLines(pane)), lineCount(pane.lineCount()) {
    for (const TextPane::Range& range : pane.backgrounds())
      if (range.colour != GetMarkColor(markUnchanged) && range.colour != GetMarkColor(markNone))
        different.push_back(pane.lineAt(range.start));
    std::sort(different.begin(), different.end());
  }
  // The lines of `different` that don't follow another one.
  std::vector<std::size_t> starts() const {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < different.size(); ++i)
      if (i == 0 || different[i] > different[i - 1] + 1) found.push_back(different[i]);
    return found;
  }
  // Where a line of this pane stands, or would stand, in the other.
  std::size_t placeIn(const PaneMarks& other, std::size_t line) const {
    const auto at = std::lower_bound(common.begin(), common.end(), line);
    const auto before = static_cast<std::size_t>(at - common.begin());
    const bool there = at != common.end() && *at == line && before < other.common.size();
    if (there) return other.common[before];
    if (before == 0 || other.common.empty()) return 0;
    return std::min(other.common[std::min(before, other.common.size()) - 1] + 1, other.lineCount - 1);
  }

  std::vector<std::size_t> common;     // lines that both sides have
  std::vector<std::size_t> different;  // changed, or on this side alone
  std::size_t lineCount;
};

}  // namespace

std::optional<std::size_t> FirstDifferentLine(const TextPane& pane) {
  const std::vector<std::size_t> lines =
      linesOf(pane, [](std::uint32_t colour) { return colour != GetMarkColor(markUnchanged); });
  return lines.empty() ? std::nullopt : std::optional(lines.front());
}

std::vector<MarkedPlace> MarkedPlaces(const TextPane& source, const TextPane& target) {
  if (source.backgrounds().empty() || target.backgrounds().empty()) return {};
  const PaneMarks here(source), there(target);
  std::vector<MarkedPlace> places;
  for (const std::size_t line : here.starts()) places.push_back({line, here.placeIn(there, line)});
  for (const std::size_t line : there.starts()) places.push_back({there.placeIn(here, line), line});
  std::sort(places.begin(), places.end());
  places.erase(std::unique(places.begin(), places.end()), places.end());
  return places;
}

std::size_t CounterpartLine(const TextPane& pane, const TextPane& other, std::size_t line) {
  if (line == 0) return 0;
  const std::vector<std::size_t> here = commonLines(pane);
  const std::vector<std::size_t> there = commonLines(other);
  const auto before = static_cast<std::size_t>(std::lower_bound(here.begin(), here.end(), line) - here.begin());
  return before < there.size() ? there[before] : other.lineCount() - 1;
}

}  // namespace qrel
