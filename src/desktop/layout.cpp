#include "desktop/layout.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLayout>
#include <QSplitter>
#include <QTimer>
#include <QToolButton>

namespace qrel {

namespace {

int wordsWidth(const QToolButton& button) {
  QToolButton words, picture;
  for (QToolButton* each : {&words, &picture}) {
    each->setFont(button.font());
    each->setIcon(button.icon());
    each->setIconSize(button.iconSize());
    each->setText(button.text());
  }
  words.setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  picture.setToolButtonStyle(Qt::ToolButtonIconOnly);
  return words.sizeHint().width() - picture.sizeHint().width();
}

}  // namespace

CompactButtons::CompactButtons(QWidget& window) : QObject(&window), window_(window) {
  for (QToolButton* button : window.findChildren<QToolButton*>())
    if (button->toolButtonStyle() == Qt::ToolButtonTextBesideIcon && !button->property("picture").isNull())
      buttons_.push_back(button);
  for (QWidget* each : window.findChildren<QWidget*>())
    if (each->property("onlyWide").toBool()) onlyWide_.push_back(each);
  if (buttons_.isEmpty()) return;
  window.installEventFilter(this);
}

bool CompactButtons::eventFilter(QObject*, QEvent* event) {
  // Which buttons can be seen may have changed with the layout.
  if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest || event->type() == QEvent::Show) fit();
  return false;
}

// Layouts keep their measures until they are next activated, also when a button in them has changed.
int CompactButtons::leastWidth() const {
  for (QWidget* each : window_.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
    if (each->layout()) each->layout()->activate();
  window_.layout()->invalidate();
  return window_.layout()->totalMinimumSize().width();
}

void CompactButtons::fit() {
  if (!window_.layout()) return;
  int words = 0;
  for (const QToolButton* button : buttons_)
    if (!button->isHidden()) words += wordsWidth(*button);
  for (const QWidget* each : onlyWide_) words += each->sizeHint().width();
  const int least = leastWidth() - (compact_ ? 0 : words);
  const bool compact = window_.width() < least + words;
  if (window_.minimumWidth() != least) window_.setMinimumWidth(least);
  if (compact == compact_) return;
  compact_ = compact;
  for (QWidget* each : onlyWide_) each->setVisible(!compact);
  for (QToolButton* button : buttons_)
    button->setToolButtonStyle(compact ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
}

void whenShown(const std::function<void()>& run) { QTimer::singleShot(0, QCoreApplication::instance(), run); }

void applySmallScreenLayout(QWidget& window) {
  constexpr int margin = 2;
  if (auto* central = window.findChild<QWidget*>(QStringLiteral("uiCentral")); central && central->layout()) {
    central->layout()->setContentsMargins(margin, margin, margin, margin);
    central->layout()->setSpacing(margin);
  }
  window.showMaximized();
}

void setSplitterHeight(QWidget& window) {
  constexpr int lists = 2, text = 3;
  for (QSplitter* splitter : window.findChildren<QSplitter*>())
    if (splitter->orientation() == Qt::Vertical && splitter->count() == 2 && !splitter->property(keptProperty).toBool())
      splitter->setSizes({splitter->height() * lists / (lists + text), splitter->height() * text / (lists + text)});
}

}  // namespace qrel
