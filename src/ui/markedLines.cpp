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

}  // namespace

std::optional<std::size_t> FirstDifferentLine(const TextPane& pane) {
  const std::vector<std::size_t> lines =
      linesOf(pane, [](std::uint32_t colour) { return colour != GetMarkColor(markUnchanged); });
  return lines.empty() ? std::nullopt : std::optional(lines.front());
}

std::size_t CounterpartLine(const TextPane& pane, const TextPane& other, std::size_t line) {
  if (line == 0) return 0;
  const std::vector<std::size_t> here = commonLines(pane);
  const std::vector<std::size_t> there = commonLines(other);
  const auto before = static_cast<std::size_t>(std::lower_bound(here.begin(), here.end(), line) - here.begin());
  return before < there.size() ? there[before] : other.lineCount() - 1;
}

}  // namespace qrel
