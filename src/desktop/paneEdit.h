// The face of a text pane: lines with numbers, coloured ranges, the selection and the place scrolled to, both ways. The
// number of the line with the caret stands out; a strip beside the scroll bar shows where in the text lines are
// coloured, and a click on it goes there. Tab leaves a pane that only shows. Ctrl+F opens a field for a text to search,
// Enter or F3 goes to the next place that has it.
#pragma once

#include <QLineEdit>
#include <QPlainTextEdit>
#include <functional>
#include <string>

#include "desktop/paneRows.h"
#include "platform/controls/textPane.h"

namespace qrel {

class PaneEdit : public QPlainTextEdit {
 public:
  explicit PaneEdit(QWidget* parent = nullptr);

  // Shows the pane, which lives longer. `inHandler` runs what a person's act sets off in the model.
  void bind(TextPane& pane, std::function<void(std::function<void()>)> inHandler);
  // The pane has changed.
  void refresh();
  // Opens the field for a text to search.
  void openSearch();
  // The strip beside the scroll bar.
  QWidget* strip() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;
  // Of the text alone, without the empty places between its lines.
  QMimeData* createMimeDataFromSelection() const override;

 private:
  class NumberArea;
  class MarkStrip;

  void findStretches();
  void showRows();
  void paintStretches(QPainter& painter);
  void paintNumbers(const QRect& area);
  void fitNumberArea();
  void tellSelection();
  void chooseLine(int block);
  void searchNext();
  void paintStrip(QPainter& painter, const QRect& area) const;
  void goToStrip(int y);
  int toPosition(std::size_t offset) const;  // of the model's byte offset in the document
  std::size_t toOffset(int position) const;  // and back

  TextPane* pane_ = nullptr;
  std::function<void(std::function<void()>)> inHandler_;
  NumberArea* numbers_ = nullptr;  // owned by Qt
  MarkStrip* strip_ = nullptr;     // the same
  QLineEdit* search_ = nullptr;    // the same; hidden until asked for
  std::string shownText_;
  std::vector<TextPane::Range> shownRanges_;
  std::vector<PaneStretch> stretches_;  // by block
  PaneRows rows_;
  bool refreshing_ = false;
};

}  // namespace qrel
