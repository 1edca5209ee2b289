// What a person can do in any grid beside looking: copy cells, widen columns.
#pragma once

#include <QObject>
#include <QTableView>
#include <vector>

#include "platform/controls/grid.h"

namespace qrel {

// The selected cells as lines with tabs between the cells; within the ranges' rows and columns, what isn't selected is
// empty. Line ends and tabs of a cell become blanks.
QString selectionAsText(const QTableView& view);

// Belongs to the view, which shows the grid.
class GridHandling : public QObject {
 public:
  GridHandling(QTableView& view, const Grid& grid);

  // The view shows the grid's latest content: widths that the grid has got since are taken over, and a column that is
  // cut off while there is room beside the columns is widened. A person who has set a width has the last word, for as
  // long as the window lasts.
  void shown();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  int contentWidth(int column) const;  // pixels, no wider than the view
  void fit();

  QTableView& view_;
  const Grid& grid_;
  std::vector<int> taken_;      // the widths as last taken from the grid
  std::size_t fittedRows_ = 0;  // how many the columns were last fitted to
  int fittedWidth_ = 0;         // and the room there was
  bool fitting_ = false;
  bool byHand_ = false;
  QByteArray beforeReset_;
  int columnsBefore_ = 0;
};

}  // namespace qrel
