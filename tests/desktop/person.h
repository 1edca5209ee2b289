// What a person does with the widgets of a window, and sees of them.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QtTest/QTest>
#include <stdexcept>
#include <string>

#include "desktop/text.h"

namespace qrel {

template <class Widget>
Widget& find(QWidget& window, const char* name) {
  auto* found = window.findChild<Widget*>(name);
  if (!found) throw std::runtime_error(std::string("no widget ") + name);
  return *found;
}
// Keys and clicks go to the window, as the window system sends them: behind a modal window they go nowhere.
inline void press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers held = Qt::NoModifier) {
  // A window manager would have given it the focus back when what stood before it went.
  if (QWidget* modal = QApplication::activeModalWidget(); (!modal || modal == &window) && !window.isActiveWindow()) {
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
  }
  QTest::keyClick(window.windowHandle(), key, held);
}
inline void clickAt(QWidget& widget, QPoint place, Qt::KeyboardModifiers held = Qt::NoModifier) {
  QWidget* window = widget.window();
  QTest::mouseClick(window->windowHandle(), Qt::LeftButton, held, widget.mapTo(window, place));
}
// Near the left edge: a check box can be clicked on its picture and its words alone.
inline void click(QWidget& widget) { clickAt(widget, {std::min(10, widget.width() / 2), widget.height() / 2}); }
inline void click(QWidget& window, const char* name) { click(find<QWidget>(window, name)); }

inline void type(QWidget& window, const char* name, const char* text) {
  auto& line = find<QLineEdit>(window, name);
  line.setFocus();
  line.selectAll();
  QTest::keyClicks(&line, text);
}
// The rows' texts in the column, each with a blank behind it.
inline std::string rows(const QAbstractItemView& view, int column = 0) {
  std::string text;
  for (int row = 0; row < view.model()->rowCount(); ++row)
    text += fromQt(view.model()->index(row, column).data().toString()) + " ";
  return text;
}
inline QModelIndex rowOf(const QAbstractItemView& view, const char* text) {
  const QModelIndexList found =
      view.model()->match(view.model()->index(0, 0), Qt::DisplayRole, QString(text), 1, Qt::MatchExactly);
  if (found.empty()) throw std::runtime_error(std::string("no row ") + text + " in " + rows(view));
  return found.front();
}
inline void choose(QWidget& window, const char* list, const char* text, Qt::KeyboardModifiers held = Qt::NoModifier) {
  auto& view = find<QAbstractItemView>(window, list);
  const QModelIndex row = rowOf(view, text);
  view.scrollTo(row);
  const QRect place = view.visualRect(row).intersected(view.viewport()->rect());
  clickAt(*view.viewport(), place.center(), held);
}
inline void tick(QWidget& window, const char* list, const char* text) {
  auto& view = find<QAbstractItemView>(window, list);
  const QModelIndex row = rowOf(view, text);
  view.scrollTo(row);
  QStyleOptionViewItem option;
  option.initFrom(&view);
  option.rect = view.visualRect(row);
  option.features = QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDisplay;
  clickAt(*view.viewport(),
          view.style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, &view).center());
}
// With the arrow keys, row by row.
inline void chooseInCombo(QWidget& window, const char* name, const char* text) {
  auto& box = find<QComboBox>(window, name);
  const int wanted = box.findText(text);
  if (wanted < 0) throw std::runtime_error(std::string("no row ") + text);
  box.setFocus();
  for (int steps = 0; box.currentIndex() != wanted && steps < box.count(); ++steps)
    press(window, box.currentIndex() < wanted ? Qt::Key_Down : Qt::Key_Up);
}

inline QAction* actionOf(const QWidget& menu, const char* caption) {
  for (QAction* action : menu.actions())
    if (action->text().section('\t', 0, 0) == caption) return action;
  throw std::runtime_error(std::string("no menu item ") + caption);
}

inline void chooseInMenu(QWidget& window, const char* menu, const char* item) {
  auto& bar = *window.findChild<QMenuBar*>();
  QAction* opener = actionOf(bar, menu);
  clickAt(bar, bar.actionGeometry(opener).center());
  clickAt(*opener->menu(), opener->menu()->actionGeometry(actionOf(*opener->menu(), item)).center());
}

}  // namespace qrel
