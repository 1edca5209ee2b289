#include "desktop/paneEdit.h"

#include <QApplication>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <algorithm>

#include "desktop/text.h"

namespace qrel {

namespace {

constexpr int searchCharacters = 36;                      // width of the field for a search
constexpr int numberMargin = 5;                           // pixels on each side of the line numbers
constexpr int stripWidth = 9;                             // pixels
constexpr int linesAbove = 3;                             // a line that was gone to isn't the first one shown
constexpr std::size_t longText = std::size_t{256} << 10;  // bytes; laying it out may take longer than a blink

bool sameRanges(const std::vector<TextPane::Range>& left, const std::vector<TextPane::Range>& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](const auto& a, const auto& b) {
    return a.start == b.start && a.length == b.length && a.colour == b.colour;
  });
}

// How many UTF-16 units the first `bytes` bytes of a text are, and the other way round.
int unitsOf(std::string_view text, std::size_t bytes) {
  return static_cast<int>(toQt(text.substr(0, std::min(bytes, text.size()))).size());
}

}  // namespace

class PaneEdit::NumberArea : public QWidget {
 public:
  explicit NumberArea(PaneEdit* edit) : QWidget(edit), edit_(edit) {}

 protected:
  void paintEvent(QPaintEvent* event) override { edit_->paintNumbers(event->rect()); }

 private:
  PaneEdit* edit_;
};

class PaneEdit::MarkStrip : public QWidget {
 public:
  explicit MarkStrip(PaneEdit* edit) : QWidget(edit), edit_(edit) { setCursor(Qt::PointingHandCursor); }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    edit_->paintStrip(painter, rect());
  }
  void mousePressEvent(QMouseEvent* event) override { edit_->goToStrip(static_cast<int>(event->position().y())); }

 private:
  PaneEdit* edit_;
};

QWidget* PaneEdit::strip() const { return strip_; }

PaneEdit::PaneEdit(QWidget* parent)
    : QPlainTextEdit(parent),
      numbers_(new NumberArea(this)),
      strip_(new MarkStrip(this)),
      search_(new QLineEdit(this)) {
  search_->setAccessibleName(QStringLiteral("Text to find"));
  search_->setPlaceholderText(QStringLiteral("Find (Enter: next, Esc: close)"));
  search_->installEventFilter(this);
  search_->hide();
  setLineWrapMode(QPlainTextEdit::NoWrap);
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setStyleHint(QFont::Monospace);
  setFont(font);
  connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect& area, int dy) {
    if (dy != 0)
      numbers_->scroll(0, dy);
    else
      numbers_->update(0, area.y(), numbers_->width(), area.height());
  });
  connect(this, &QPlainTextEdit::blockCountChanged, this, [this] { fitNumberArea(); });
}

void PaneEdit::bind(TextPane& pane, std::function<void(std::function<void()>)> inHandler) {
  pane_ = &pane;
  inHandler_ = std::move(inHandler);
  setReadOnly(pane.readOnly);
  setUndoRedoEnabled(!pane.readOnly);
  setTabChangesFocus(pane.readOnly);
  if (pane.readOnly) setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  connect(this, &QPlainTextEdit::selectionChanged, this, [this] { tellSelection(); });
  connect(this, &QPlainTextEdit::cursorPositionChanged, this, [this] {
    numbers_->update();
    tellSelection();
  });
  connect(this, &QPlainTextEdit::textChanged, this, [this] {
    if (refreshing_ || pane_->readOnly) return;
    shownText_ = fromQt(toPlainText());
    pane_->setText(shownText_);
  });
  connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this](int line) {
    if (!refreshing_) inHandler_([this, line] { pane_->personScrolls(static_cast<std::size_t>(line)); });
  });
  fitNumberArea();
}

void PaneEdit::refresh() {
  refreshing_ = true;
  if (pane_->text() != shownText_ || !rows_.areOf(*pane_)) {
    shownText_ = pane_->text();
    const std::string document = rows_.take(*pane_);
    const bool takesLong = shownText_.size() > longText;
    if (takesLong) QApplication::setOverrideCursor(Qt::WaitCursor);
    setPlainText(toQt(document));
    if (takesLong) QApplication::restoreOverrideCursor();
    shownRanges_.clear();
    stretches_.clear();
  }
  fitNumberArea();  // the signals of this widget may be blocked
  if (rows_.any())
    showRows();
  else if (!sameRanges(shownRanges_, pane_->backgrounds()))
    findStretches();
  const int start = toPosition(pane_->selectionStart());
  const int end = toPosition(pane_->selectionStart() + pane_->selectionLength());
  QTextCursor cursor = textCursor();
  if (cursor.selectionStart() != start || cursor.selectionEnd() != end) {
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    setTextCursor(cursor);
  }
  verticalScrollBar()->setValue(static_cast<int>(pane_->topLine()));
  numbers_->update();
  refreshing_ = false;
}

void PaneEdit::tellSelection() {
  if (refreshing_) return;
  const QTextCursor cursor = textCursor();
  const std::size_t start = toOffset(cursor.selectionStart());
  const std::size_t end = toOffset(cursor.selectionEnd());
  if (start == pane_->selectionStart() && end - start == pane_->selectionLength()) return;
  inHandler_([this, start, end] { pane_->setSelection(start, end - start); });
}

int PaneEdit::toPosition(std::size_t offset) const {
  // Lines are in order: the last one that begins at or before the offset holds it.
  std::size_t low = 0, high = pane_->lineCount();
  while (high - low > 1) {
    const std::size_t middle = (low + high) / 2;
    (static_cast<std::size_t>(pane_->lineOffset(middle)) <= offset ? low : high) = middle;
  }
  const auto begin = static_cast<std::size_t>(pane_->lineOffset(low));
  const QTextBlock block = document()->findBlockByNumber(rows_.blockOf(low));
  const std::string_view text = std::string_view(pane_->text()).substr(std::min(begin, pane_->text().size()));
  return block.position() + std::min(unitsOf(text, offset - begin), std::max(0, block.length() - 1));
}

std::size_t PaneEdit::toOffset(int position) const {
  const QTextBlock block = document()->findBlock(position);
  const long line = rows_.lineFrom(std::max(0, block.blockNumber()));
  const long begin = line < 0 ? -1 : pane_->lineOffset(static_cast<std::size_t>(line));
  if (begin < 0) return pane_->text().size();
  if (rows_.lineOf(block.blockNumber()) < 0) return static_cast<std::size_t>(begin);
  return static_cast<std::size_t>(begin) + fromQt(block.text().left(position - block.position())).size();
}

void PaneEdit::findStretches() {
  shownRanges_ = pane_->backgrounds();
  std::vector<PaneStretch> found;
  const std::string_view text = pane_->text();
  std::size_t line = 0;
  std::size_t before = 0;
  for (const TextPane::Range& range : shownRanges_) {
    if (range.start < before) line = 0;
    before = range.start;
    const std::size_t end = std::min(range.start + std::max<std::size_t>(range.length, 1), text.size() + 1);
    while (line + 1 < pane_->lineCount() && static_cast<std::size_t>(pane_->lineOffset(line + 1)) <= range.start)
      ++line;
    for (std::size_t each = line; each < pane_->lineCount(); ++each) {
      const auto begin = static_cast<std::size_t>(pane_->lineOffset(each));
      if (begin >= end) break;
      const std::size_t next =
          each + 1 < pane_->lineCount() ? static_cast<std::size_t>(pane_->lineOffset(each + 1)) : text.size();
      std::string_view words = text.substr(begin, next - begin);
      while (!words.empty() && (words.back() == '\n' || words.back() == '\r')) words.remove_suffix(1);
      const std::size_t from = range.start > begin ? range.start - begin : 0;
      const bool whole = from == 0 && end >= begin + words.size();
      found.push_back({static_cast<int>(each), whole ? 0 : unitsOf(words, from),
                       whole ? -1 : unitsOf(words, end - begin), range.colour});
    }
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const PaneStretch& a, const PaneStretch& b) { return a.block < b.block; });
  stretches_ = std::move(found);
  viewport()->update();
  strip_->update();
}

void PaneEdit::showRows() {
  shownRanges_.clear();
  stretches_ = rows_.stretches(*pane_);
  viewport()->update();
}

QMimeData* PaneEdit::createMimeDataFromSelection() const {
  if (!rows_.any()) return QPlainTextEdit::createMimeDataFromSelection();
  auto* selected = new QMimeData;
  selected->setText(toQt(pane_->selectedText()));
  return selected;
}

void PaneEdit::paintStretches(QPainter& painter) {
  QTextBlock block = firstVisibleBlock();
  auto stretch = std::lower_bound(stretches_.begin(), stretches_.end(), block.blockNumber(),
                                  [](const PaneStretch& each, int number) { return each.block < number; });
  for (; block.isValid() && stretch != stretches_.end(); block = block.next()) {
    const QRectF area = blockBoundingGeometry(block).translated(contentOffset());
    if (area.top() > viewport()->height()) break;
    for (; stretch != stretches_.end() && stretch->block <= block.blockNumber(); ++stretch) {
      QRectF filled(0, area.top(), viewport()->width(), area.height());
      if (const QTextLayout* layout = block.layout(); stretch->to >= 0 && layout && layout->lineCount() > 0) {
        const QTextLine only = layout->lineAt(0);
        filled.setLeft(area.left() + only.cursorToX(stretch->from));
        filled.setRight(area.left() + only.cursorToX(stretch->to));
      }
      painter.fillRect(filled, brushOf(*stretch, palette()));
    }
  }
}

void PaneEdit::paintEvent(QPaintEvent* event) {
  if (!stretches_.empty()) {
    QPainter painter(viewport());
    paintStretches(painter);
  }
  QPlainTextEdit::paintEvent(event);
}

void PaneEdit::fitNumberArea() {
  int digits = 2;
  for (int lines = blockCount(); lines >= 100; lines /= 10) ++digits;
  const int width = 2 * numberMargin + digits * fontMetrics().horizontalAdvance(QLatin1Char('9'));
  setViewportMargins(width, 0, stripWidth, 0);
  numbers_->setFont(font());
  const QRect area = contentsRect();
  numbers_->setGeometry(area.left(), area.top(), width, area.height());
  strip_->setGeometry(area.left() + width + viewport()->width(), area.top(), stripWidth, viewport()->height());
}

// Of a long text, lines that share a pixel show the colour of the last one that has any.
void PaneEdit::paintStrip(QPainter& painter, const QRect& area) const {
  painter.fillRect(area, palette().color(QPalette::AlternateBase));
  const QColor ground = palette().color(QPalette::Base);
  const double step = std::min(static_cast<double>(area.height()) / std::max(blockCount(), 1),
                               static_cast<double>(fontMetrics().lineSpacing()));
  for (const PaneStretch& each : stretches_) {
    const QColor colour = shownBackground(each.colour, palette());
    if (colour == ground) continue;
    painter.fillRect(QRectF(area.left() + 1, each.block * step, area.width() - 2, std::max(step, 2.0)),
                     isDark(palette()) ? colour.lighter(150) : colour.darker(150));
  }
}

void PaneEdit::goToStrip(int y) {
  const double step = std::min(static_cast<double>(strip_->height()) / std::max(blockCount(), 1),
                               static_cast<double>(fontMetrics().lineSpacing()));
  const int line = std::min(static_cast<int>(y / step), blockCount() - 1);
  verticalScrollBar()->setValue(std::max(0, line - linesAbove));
}

void PaneEdit::paintNumbers(const QRect& area) {
  QPainter painter(numbers_);
  painter.fillRect(area, palette().color(QPalette::AlternateBase));
  if (document()->isEmpty()) return;
  const int caretLine = textCursor().blockNumber();
  for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
    const QRectF place = blockBoundingGeometry(block).translated(contentOffset());
    if (place.top() > area.bottom()) break;
    const long line = rows_.lineOf(block.blockNumber());
    if (line < 0) continue;
    const bool caret = block.blockNumber() == caretLine;
    if (caret)
      painter.fillRect(QRectF(0, place.top(), numbers_->width(), place.height()), palette().color(QPalette::Highlight));
    painter.setPen(palette().color(caret ? QPalette::HighlightedText : QPalette::PlaceholderText));
    painter.drawText(QRectF(0, place.top(), numbers_->width() - numberMargin, fontMetrics().height()),
                     Qt::AlignRight | Qt::AlignVCenter, QString::number(line + 1));
  }
}

void PaneEdit::resizeEvent(QResizeEvent* event) {
  QPlainTextEdit::resizeEvent(event);
  fitNumberArea();
}

void PaneEdit::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Find)) return openSearch();
  if (event->key() == Qt::Key_F3) return searchNext();
  if (pane_->onLineChosen && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
    return chooseLine(textCursor().blockNumber());
  QPlainTextEdit::keyPressEvent(event);
}

// The line that a menu is asked for is the caret's.
void PaneEdit::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton && !textCursor().hasSelection())
    setTextCursor(cursorForPosition(event->position().toPoint()));
  QPlainTextEdit::mousePressEvent(event);
}

void PaneEdit::mouseDoubleClickEvent(QMouseEvent* event) {
  QPlainTextEdit::mouseDoubleClickEvent(event);
  if (pane_->onLineChosen && event->button() == Qt::LeftButton)
    chooseLine(cursorForPosition(event->position().toPoint()).blockNumber());
}

void PaneEdit::chooseLine(int block) {
  const long line = rows_.lineOf(block);
  if (line >= 0) inHandler_([this, line] { pane_->onLineChosen(static_cast<std::size_t>(line)); });
}

// The window has its own use for Enter and Esc.
bool PaneEdit::eventFilter(QObject* object, QEvent* event) {
  if (object != search_ || event->type() != QEvent::KeyPress) return QPlainTextEdit::eventFilter(object, event);
  const int key = static_cast<QKeyEvent*>(event)->key();
  if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_F3) {
    searchNext();
    return true;
  }
  if (key != Qt::Key_Escape) return false;
  search_->hide();
  setFocus();
  return true;
}

void PaneEdit::openSearch() {
  const QRect area = contentsRect();
  const int width = std::min(area.width(), fontMetrics().averageCharWidth() * searchCharacters);
  search_->setGeometry(area.right() - width, area.top(), width, search_->sizeHint().height());
  if (textCursor().hasSelection()) search_->setText(textCursor().selectedText());
  search_->show();
  search_->selectAll();
  search_->setFocus();
}

// From the selection on, and from the start again behind the last place.
void PaneEdit::searchNext() {
  const QString text = search_->text();
  if (text.isEmpty()) return openSearch();
  if (find(text)) return;
  const QTextCursor before = textCursor();
  moveCursor(QTextCursor::Start);
  if (find(text)) return;
  setTextCursor(before);
  QApplication::beep();
}

void PaneEdit::changeEvent(QEvent* event) {
  QPlainTextEdit::changeEvent(event);
  if (event->type() == QEvent::FontChange) fitNumberArea();
}

}  // namespace qrel
