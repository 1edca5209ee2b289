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
  QHeaderView* header = view.horizontalHeader();
  connect(header, &QHeaderView::sectionHandleDoubleClicked, this,
          [this](int column) { view_.setColumnWidth(column, contentWidth(column)); });
  connect(header, &QHeaderView::sectionResized, this, [this, header] {
    // The header itself makes new sections, and may stretch the last one.
    if (!fitting_ && header->isVisible() && QApplication::mouseButtons() != Qt::NoButton) byHand_ = true;
  });
  // A table with fewer rows is told as a new one, whose columns would have their usual widths again.
  connect(view.model(), &QAbstractItemModel::modelAboutToBeReset, this, [this, header] {
    columnsBefore_ = header->count();
    beforeReset_ = header->saveState();
  });
  connect(view.model(), &QAbstractItemModel::modelReset, this, [this, header] {
    fitting_ = true;
    if (header->count() == columnsBefore_) header->restoreState(beforeReset_);
    fitting_ = false;
  });
}

bool GridHandling::eventFilter(QObject*, QEvent* event) {
  // Once the window has its size.
  if (event->type() == QEvent::Show || event->type() == QEvent::Resize) QTimer::singleShot(0, this, [this] { fit(); });
  if (event->type() != QEvent::KeyPress || !static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy)) return false;
  if (view_.selectionModel()->hasSelection()) QApplication::clipboard()->setText(selectionAsText(view_));
  return true;
}

void GridHandling::shown() {
  fitting_ = true;
  taken_.resize(grid_.columnCount(), 0);
  for (std::size_t column = 0; column < taken_.size(); ++column) {
    const int twips = grid_.columnWidth(column);
    if (twips > 0 && taken_[column] != twips) view_.setColumnWidth(static_cast<int>(column), twips / twipsPerPixel);
    taken_[column] = twips;
  }
  fitting_ = false;
  fit();
}

// Not of a million texts each: none that is much shorter than the longest is the widest.
int GridHandling::contentWidth(int column) const {
  const auto at = static_cast<std::size_t>(column);
  constexpr std::size_t measuredLength = 2000;
  std::size_t longest = 0;
  for (std::size_t row = 0; row < grid_.rowCount(); ++row) longest = std::max(longest, grid_.text(row, at).size());
  longest = std::min(longest, measuredLength);
  QFont bold = view_.font();
  bold.setBold(true);
  const QFontMetrics metrics = view_.fontMetrics(), boldMetrics(bold);
  int widest = view_.horizontalHeader()->sectionSizeHint(column);
  int toMeasure = 1000;
  const int margin = 2 * (view_.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &view_) + 1) + 2;
  for (std::size_t row = 1; row < grid_.rowCount() && toMeasure > 0; ++row) {
    const std::string_view text = grid_.text(row, at);
    if (2 * text.size() < longest) continue;
    const QFontMetrics& itsMetrics = grid_.textColour(row, at) != 0 ? boldMetrics : metrics;
    widest = std::max(widest, itsMetrics.horizontalAdvance(toQt(text.substr(0, measuredLength))) + margin);
    --toMeasure;
  }
  return std::min(widest, std::max(view_.viewport()->width(), 1));
}

// Measuring has its price: rows that come one by one are looked at whenever their number has doubled.
void GridHandling::fit() {
  const std::size_t rows = grid_.rowCount();
  const int width = view_.viewport()->width();
  if (byHand_ || !view_.isVisible() || rows < 2 || grid_.columnCount() == 0) return;
  if (rows >= fittedRows_ && rows < 2 * fittedRows_ && width == fittedWidth_) return;
  fittedRows_ = rows;
  fittedWidth_ = width;
  fitting_ = true;
  int room = width - view_.horizontalHeader()->length();
  for (int column = 0; room > 0 && column < static_cast<int>(grid_.columnCount()); ++column) {
    const int missing = std::min(contentWidth(column) - view_.columnWidth(column), room);
    if (missing <= 0) continue;
    view_.setColumnWidth(column, view_.columnWidth(column) + missing);
    room -= missing;
  }
  fitting_ = false;
}

}  // namespace qrel
