// What a person who doesn't see the windows is told of them, and how they are reached without a mouse.
#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QMenuBar>
#include <QRegularExpression>
#include <QTableView>

#include "compare/structure/modMarkDifferences.h"
#include "desktop/formWindow.h"
#include "desktop/models.h"
#include "desktop/text.h"
#include "desktop/theme.h"
#include "tests/desktop/allForms.h"
#include "tests/desktop/boundForm.h"
#include "tests/support.h"

namespace qrel {
namespace {

bool takesPart(const QWidget& widget) {
  if (!widget.isVisibleTo(widget.window()) || widget.objectName().isEmpty()) return false;
  return widget.focusPolicy() != Qt::NoFocus && !widget.objectName().startsWith("qt_") &&
         !widget.objectName().startsWith("ui");
}

TEST(Accessibility, EveryControlHasANameAndARole) {
  TestProgram test;
  AllForms forms(test);
  for (Form* form : forms.all) {
    const BoundForm bound(*form, formText(form->name));
    for (QWidget* widget : bound.window->findChildren<QWidget*>()) {
      if (!takesPart(*widget)) continue;
      QAccessibleInterface* told = QAccessible::queryAccessibleInterface(widget);
      ASSERT_NE(told, nullptr);
      const std::string where = form->name + "." + fromQt(widget->objectName());
      EXPECT_FALSE(told->text(QAccessible::Name).trimmed().isEmpty()) << where;
      EXPECT_NE(told->role(), QAccessible::NoRole) << where;
      EXPECT_TRUE(told->role() != QAccessible::Client || widget->inherits("QTabWidget")) << where;
    }
  }
}

TEST(Accessibility, AnAccessKeyIsThereOnceInAWindow) {
  TestProgram test;
  AllForms forms(test);
  for (Form* form : forms.all) {
    if (form == &forms.main) form->load();  // which makes the menus
    const BoundForm bound(*form, formText(form->name));
    std::map<QString, QString> keys;
    const auto take = [&](const QString& text, const QString& who) {
      const QString key = QKeySequence::mnemonic(text).toString();
      if (key.isEmpty()) return;
      EXPECT_TRUE(keys.emplace(key, who).second)
          << form->name << ": " << fromQt(key) << " of " << fromQt(who) << " and " << fromQt(keys[key]);
    };
    for (const QAbstractButton* button : bound.window->findChildren<QAbstractButton*>())
      if (button->isVisibleTo(bound.window.get())) take(button->text(), button->objectName());
    for (const QLabel* label : bound.window->findChildren<QLabel*>())
      if (label->buddy() && label->isVisibleTo(bound.window.get())) take(label->text(), label->objectName());
    for (const QMenuBar* bar : bound.window->findChildren<QMenuBar*>())
      for (const QAction* action : bar->actions()) take(action->text(), "menu " + action->text());
    for (const Form::Key& key : form->keys()) {
      const QString text = toQt(key.key);
      if (!text.startsWith("Alt+")) continue;
      EXPECT_EQ(keys.count(text), 0U) << form->name << ": " << key.key;
    }
  }
}

// Differing cells, line numbers and the legend, in both palettes.
TEST(Accessibility, WhatIsColouredCanBeRead) {
  constexpr double readable = 4.5;
  for (const char* theme : {"light", "dark"}) {
    applyTheme(theme);
    const QPalette palette = QApplication::palette();
    for (const std::int32_t mark : {markNone, markUnchanged, markChanged, markOnlyInTarget, markOnlyInSource})
      EXPECT_GE(contrast(palette.color(QPalette::Text), shownBackground(GetMarkColor(mark), palette)), readable)
          << theme << mark;
    for (const QPalette::ColorRole ground : {QPalette::Base, QPalette::AlternateBase})
      EXPECT_GE(contrast(palette.color(QPalette::PlaceholderText), palette.color(ground)), readable) << theme;
    Grid grid("grid");
    grid.setColumnCount(4);
    grid.setRowCount(2);
    constexpr std::uint32_t red = 255;
    const std::uint32_t grounds[] = {Grid::noColour, 0xFFFFC0, 0xC0FFFF, 0x00FFFF};
    GridModel model(grid, nullptr);
    model.refresh();
    for (std::size_t column = 0; column < 4; ++column) {
      grid.setTextColour(1, column, red);
      if (grounds[column] != Grid::noColour) grid.paint(1, 1, column, column, grounds[column]);
      const QModelIndex cell = model.index(0, static_cast<int>(column));
      const QVariant back = cell.data(Qt::BackgroundRole);
      const QColor ground = back.isValid() ? back.value<QColor>() : palette.color(QPalette::Base);
      EXPECT_GE(contrast(cell.data(Qt::ForegroundRole).value<QColor>(), ground), readable) << theme << column;
      EXPECT_TRUE(cell.data(Qt::FontRole).value<QFont>().bold()) << "not by colour alone";
    }
  }
  applyTheme("light");
}

}  // namespace
}  // namespace qrel
