#include "desktop/gridHandling.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QTimer>
#include <algorithm>
#include <set>

#include "desktop/text.h"

namespace qrel {

namespace {

constexpr int twipsPerPixel = 15;

}  // namespace

QString selectionAsText(const QTableView& view) {
  const QItemSelection selection = view.selectionModel()->selection();
  std::set<int> columns;
  std::vector<int> rows;
  for (const QItemSelectionRange& range : selection) {
    for (int column = range.left(); column <= range.right(); ++column) columns.insert(column);
    for (int row = range.top(); row <= range.bottom(); ++row) rows.push_back(row);
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  QString text;
  for (const int row : rows) {
    if (!text.isEmpty()) text += '\n';
    for (const int column : columns) {
      if (column != *columns.begin()) text += '\t';
      const QModelIndex index = view.model()->index(row, column);
      if (selection.size() > 1 && !selection.contains(index)) continue;
      QString cell = index.data().toString();
      for (QChar& character : cell)
        if (character == '\t' || character == '\n' || character == '\r') character = ' ';
      text += cell;
    }
  }
  return text;
}

GridHandling::GridHandling(QTableView& view, const Grid& grid) : QObject(&view), view_(view), grid_(grid) {
  view.installEventFilter(this);
  connect(view.horizontalHeader(), &QHeaderView::sectionHandleDoubleClicked, this,
          [this](int column) { view_.setColumnWidth(column, contentWidth(column)); });
}

bool GridHandling::eventFilter(QObject*, QEvent* event) {
  // Once the window has its size.
  if (event->type() == QEvent::Show) QTimer::singleShot(0, this, [this] { fitOnce(); });
  if (event->type() != QEvent::KeyPress || !static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy)) return false;
  if (view_.selectionModel()->hasSelection()) QApplication::clipboard()->setText(selectionAsText(view_));
  return true;
}

void GridHandling::shown() {
  taken_.resize(grid_.columnCount(), 0);
  for (std::size_t column = 0; column < taken_.size(); ++column) {
    const int twips = grid_.columnWidth(column);
    if (twips > 0 && taken_[column] != twips) view_.setColumnWidth(static_cast<int>(column), twips / twipsPerPixel);
    taken_[column] = twips;
  }
  fitOnce();
}

// Not of a million texts each: none that is much shorter than the longest is the widest.
int GridHandling::contentWidth(int column) const {
  const auto at = static_cast<std::size_t>(column);
  constexpr std::size_t measuredLength = 2000;
  std::size_t longest = 0;
  for (std::size_t row = 0; row < grid_.rowCount(); ++row) longest = std::max(longest, grid_.text(row, at).size());
  longest = std::min(longest, measuredLength);
  const QFontMetrics metrics = view_.fontMetrics();
  int widest = view_.horizontalHeader()->sectionSizeHint(column);
  int toMeasure = 1000;
  const int margin = 2 * (view_.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &view_) + 1) + 2;
  for (std::size_t row = 1; row < grid_.rowCount() && toMeasure > 0; ++row) {
    const std::string_view text = grid_.text(row, at);
    if (2 * text.size() < longest) continue;
    widest = std::max(widest, metrics.horizontalAdvance(toQt(text.substr(0, measuredLength))) + margin);
    --toMeasure;
  }
  return std::min(widest, std::max(view_.viewport()->width(), 1));
}

void GridHandling::fitOnce() {
  if (fitted_ || !view_.isVisible() || grid_.rowCount() < 2 || grid_.columnCount() == 0) return;
  fitted_ = true;
  int room = view_.viewport()->width() - view_.horizontalHeader()->length();
  for (int column = 0; room > 0 && column < static_cast<int>(grid_.columnCount()); ++column) {
    const int missing = std::min(contentWidth(column) - view_.columnWidth(column), room);
    if (missing <= 0) continue;
    view_.setColumnWidth(column, view_.columnWidth(column) + missing);
    room -= missing;
  }
}

}  // namespace qrel
