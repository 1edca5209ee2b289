#include "desktop/paneRows.h"

#include <algorithm>

#include "desktop/text.h"

namespace qrel {

QBrush brushOf(const PaneStretch& stretch, const QPalette& palette) {
  if (stretch.look == PaneStretch::Look::EmptyPlace) {
    QColor lines = palette.color(QPalette::Text);
    lines.setAlpha(40);
    return {lines, Qt::BDiagPattern};
  }
  const QColor colour = shownBackground(stretch.colour, palette);
  if (stretch.look == PaneStretch::Look::Plain) return colour;
  if (isDark(palette)) return colour.lighter(145);
  constexpr int moreColour = 75, lessLight = 25;
  return QColor::fromHsv(colour.hsvHue(), qMin(255, colour.hsvSaturation() + moreColour), colour.value() - lessLight);
}

bool PaneRows::areOf(const TextPane& pane) const {
  return std::equal(lines_.begin(), lines_.end(), pane.rows().begin(), pane.rows().end(),
                    [](long line, const TextPane::Row& row) { return line == row.line; });
}

std::string PaneRows::take(const TextPane& pane) {
  lines_.clear();
  blocks_.assign(pane.rows().empty() ? 0 : pane.lineCount(), 0);
  std::string text;
  for (const TextPane::Row& row : pane.rows()) {
    if (!lines_.empty()) text += '\n';
    if (row.line >= 0) {
      blocks_[static_cast<std::size_t>(row.line)] = static_cast<int>(lines_.size());
      text += pane.lineText(static_cast<std::size_t>(row.line));
    }
    lines_.push_back(row.line);
  }
  return any() ? text : pane.text();
}

int PaneRows::blockOf(std::size_t line) const { return line < blocks_.size() ? blocks_[line] : static_cast<int>(line); }

long PaneRows::lineOf(int block) const {
  if (!any()) return block;
  return block >= 0 && static_cast<std::size_t>(block) < lines_.size() ? lines_[static_cast<std::size_t>(block)] : -1;
}

long PaneRows::lineFrom(int block) const {
  while (any() && block >= 0 && static_cast<std::size_t>(block) < lines_.size() && lineOf(block) < 0) ++block;
  return lineOf(block);
}

std::vector<PaneStretch> PaneRows::stretches(const TextPane& pane) const {
  std::vector<PaneStretch> found;
  int block = -1;
  for (const TextPane::Row& row : pane.rows()) {
    ++block;
    if (row.line < 0) {
      found.push_back({block, 0, -1, 0, PaneStretch::Look::EmptyPlace});
      continue;
    }
    if (row.colour != 0xFFFFFF) found.push_back({block, 0, -1, row.colour});
    if (row.stronger.empty()) continue;
    const std::string line = pane.lineText(static_cast<std::size_t>(row.line));
    const auto units = [&](std::size_t bytes) {
      return static_cast<int>(toQt(std::string_view(line).substr(0, bytes)).size());
    };
    for (const TextPane::Range& each : row.stronger)
      found.push_back(
          {block, units(each.start), units(each.start + each.length), row.colour, PaneStretch::Look::Stronger});
  }
  return found;
}

}  // namespace qrel
