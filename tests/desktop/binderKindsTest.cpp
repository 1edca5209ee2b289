// Each kind of control both ways: what the model says is to be seen, what a person does reaches the model.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableView>
#include <QToolTip>
#include <QTreeView>

#include "desktop/printing.h"
#include "tests/desktop/boundForm.h"
#include "tests/desktop/person.h"

namespace qrel {
namespace {

std::string widget(const char* className, const char* name, const char* inside = "") {
  return std::string("<item><widget class=\"") + className + "\" name=\"" + name + "\">" + inside + "</widget></item>";
}

// A window with one control of each kind; events count what reaches the model.
class AllKinds : public Form {
 public:
  AllKinds() : Form("frmKinds") {
    for (Control* each : std::initializer_list<Control*>{&lblText, &cmdGo, &txtName, &txtCount, &txtNotes, &chkOn,
                                                         &optA, &optB, &cmbPick, &lstPick, &chlRows, &txtPane,
                                                         &grdCells, &barDone, &tmrTick, &tabPages, &treNodes})
      add(*each);
    txtCount.numeric = true;
    txtPane.readOnly = true;
    OptionButton::group({&optA, &optB});
    chlRows.multipleSelection = true;
    const auto count = [this] { ++events; };
    cmdGo.onClick = count;
    for (TextBox* box : {&txtName, &txtCount, &txtNotes}) box->onChange = count;
    chkOn.onClick = count;
    optB.onClick = count;
    for (ComboBox* combo : {&cmbPick, &lstPick}) combo->onClick = count;
    chlRows.onClick = count;
    chlRows.onTick = [this](std::size_t row) { lastTick = static_cast<int>(row); };
    txtPane.onScroll = count;
    tmrTick.onTick = count;
    tabPages.onClick = count;
    treNodes.onClick = count;
  }
  static QByteArray ui() {
    std::string text = R"(<ui version="4.0"><class>frmKinds</class><widget class="QDialog" name="frmKinds">
<layout class="QVBoxLayout">)";
    for (const auto& [className, name] :
         std::initializer_list<std::pair<const char*, const char*>>{{"QLabel", "lblText"},
                                                                    {"QPushButton", "cmdGo"},
                                                                    {"QLineEdit", "txtName"},
                                                                    {"QLineEdit", "txtCount"},
                                                                    {"QPlainTextEdit", "txtNotes"},
                                                                    {"QCheckBox", "chkOn"},
                                                                    {"QRadioButton", "optA"},
                                                                    {"QRadioButton", "optB"},
                                                                    {"QComboBox", "cmbPick"},
                                                                    {"QListWidget", "lstPick"},
                                                                    {"QPlainTextEdit", "txtPane"},
                                                                    {"QTableView", "grdCells"},
                                                                    {"QProgressBar", "barDone"},
                                                                    {"QTreeView", "treNodes"}})
      text += widget(className, name);
    text += widget("QTreeView", "chlRows",
                   "<property name=\"ticks\" stdset=\"0\"><bool>true</bool></property><property name=\"columns\" "
                   "stdset=\"0\"><stringlist><string>Name</string><string>Size</string></stringlist></property>");
    text += widget("QTabWidget", "tabPages",
                   "<widget class=\"QWidget\" name=\"uiFirst\"/><widget class=\"QWidget\" name=\"uiSecond\"/>");
    return QByteArray::fromStdString(text + "</layout></widget></ui>");
  }

  Label lblText{"lblText"};
  Button cmdGo{"cmdGo"};
  TextBox txtName{"txtName"}, txtCount{"txtCount"}, txtNotes{"txtNotes"};
  CheckBox chkOn{"chkOn"};
  OptionButton optA{"optA"}, optB{"optB"};
  ComboBox cmbPick{"cmbPick"}, lstPick{"lstPick"};
  CheckList chlRows{"chlRows"};
  TextPane txtPane{"txtPane"};
  Grid grdCells{"grdCells"};
  ProgressBar barDone{"barDone"};
  Timer tmrTick{"tmrTick", 5};
  Tabs tabPages{"tabPages"};
  Tree treNodes{"treNodes"};
  int events = 0;
  int lastTick = -1;
};

class BinderKindsTest : public testing::Test {
 protected:
  BinderKindsTest() {
    for (const std::string& mismatch : bound.binder.mismatches()) ADD_FAILURE() << mismatch;
    window.resize(500, 1400);
    window.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
  }
  // Shows what the model has become.
  void show() { bound.binder.flush(); }
  // How many events reached the model since it was asked last.
  int events() { return std::exchange(form.events, 0); }
  template <class Widget>
  Widget& the(const char* name) {
    return find<Widget>(window, name);
  }

  AllKinds form;
  BoundForm bound{form, AllKinds::ui()};
  QWidget& window = *bound.window;
};

TEST_F(BinderKindsTest, WhatAllHave) {
  auto& button = the<QPushButton>("cmdGo");
  form.cmdGo.setText("Go");
  form.cmdGo.setToolTip("Goes");
  form.cmdGo.setEnabled(false);
  form.lblText.setText("<b>5 & 6");
  // Nobody asked for it to be shown: it is when Qt is idle.
  QCoreApplication::processEvents();
  EXPECT_EQ(button.text(), "Go");
  EXPECT_EQ(button.toolTip(), "Goes");
  EXPECT_EQ(the<QLabel>("lblText").text(), "<b>5 & 6");
  EXPECT_EQ(the<QLabel>("lblText").textFormat(), Qt::PlainText);
  click(button);
  EXPECT_EQ(events(), 0);
  form.cmdGo.setEnabled(true);
  show();
  click(button);
  EXPECT_EQ(events(), 1);
  form.cmdGo.setVisible(false);
  show();
  EXPECT_FALSE(button.isVisible());
}

TEST_F(BinderKindsTest, TextBoxes) {
  form.txtName.setText("Zürich");
  form.txtNotes.setText("a\r\nb");
  show();
  EXPECT_EQ(the<QLineEdit>("txtName").text(), QString::fromUtf8("Zürich"));
  EXPECT_EQ(the<QPlainTextEdit>("txtNotes").toPlainText(), "a\nb");
  EXPECT_EQ(events(), 0);
  QTest::keyClicks(&the<QLineEdit>("txtName"), "!");
  EXPECT_EQ(form.txtName.text(), "Zürich!");
  EXPECT_EQ(events(), 1);
  QTest::keyClicks(&the<QLineEdit>("txtCount"), "1a-2.3");
  EXPECT_EQ(form.txtCount.text(), "123");
  EXPECT_EQ(events(), 3);
  auto& notes = the<QPlainTextEdit>("txtNotes");
  notes.moveCursor(QTextCursor::End);
  QTest::keyClicks(&notes, "c");
  show();
  EXPECT_EQ(form.txtNotes.text(), "a\nbc");
  EXPECT_EQ(notes.textCursor().position(), 4);

  form.txtName.setFocus(true);
  EXPECT_TRUE(the<QLineEdit>("txtName").hasFocus());
  EXPECT_EQ(fromQt(the<QLineEdit>("txtName").selectedText()), "Zürich!");
}

TEST_F(BinderKindsTest, ChecksAndOptions) {
  form.chkOn.setChecked(true);
  form.optA.choose();
  show();
  auto& box = the<QCheckBox>("chkOn");
  EXPECT_TRUE(box.isChecked());
  EXPECT_TRUE(the<QRadioButton>("optA").isChecked());
  clickAt(box, {8, box.height() / 2});
  EXPECT_FALSE(form.chkOn.checked());
  EXPECT_EQ(events(), 1);
  auto& other = the<QRadioButton>("optB");
  clickAt(other, {8, other.height() / 2});
  EXPECT_TRUE(form.optB.chosen());
  EXPECT_FALSE(form.optA.chosen());
  EXPECT_EQ(events(), 1);
  show();
  EXPECT_FALSE(the<QRadioButton>("optA").isChecked());
}

TEST_F(BinderKindsTest, ComboBoxesAndPlainLists) {
  auto& combo = the<QComboBox>("cmbPick");
  auto& list = the<QListWidget>("lstPick");
  for (ComboBox* each : {&form.cmbPick, &form.lstPick})
    for (const char* row : {"one", "two", "two"}) each->add(row);
  show();
  EXPECT_EQ(combo.count(), 3);
  EXPECT_EQ(combo.currentIndex(), -1);
  EXPECT_EQ(list.currentRow(), -1);
  form.cmbPick.select(0);
  form.lstPick.select(1);
  EXPECT_EQ(events(), 2);
  show();
  EXPECT_EQ(combo.currentIndex(), 0);
  EXPECT_EQ(list.currentRow(), 1);
  EXPECT_EQ(events(), 0);
  combo.setFocus();
  press(window, Qt::Key_Down);
  press(window, Qt::Key_Down);
  EXPECT_EQ(form.cmbPick.selected(), 2);
  EXPECT_EQ(events(), 2);
  clickAt(*list.viewport(), list.visualItemRect(list.item(0)).center());
  show();
  EXPECT_EQ(form.lstPick.text(), "one");
  EXPECT_EQ(list.currentRow(), 0);
  EXPECT_EQ(events(), 1);
  form.cmbPick.clear();
  form.cmbPick.add("other");
  show();
  EXPECT_EQ(combo.count(), 1);
  EXPECT_EQ(combo.currentIndex(), -1);
}

TEST_F(BinderKindsTest, CheckListsTicksColumnsAndSelection) {
  auto& view = the<QTreeView>("chlRows");
  for (const char* row : {"a", "b", "c"}) form.chlRows.add(row);
  form.chlRows.setCell(1, 1, "12");
  form.chlRows.setTicked(2, true);
  form.chlRows.select(1);
  EXPECT_EQ(events(), 1);
  show();
  EXPECT_EQ(events(), 0);
  EXPECT_EQ(view.model()->headerData(1, Qt::Horizontal).toString(), "Size");
  EXPECT_EQ(rows(view), "a b c ");
  EXPECT_EQ(rows(view, 1), " 12  ");
  EXPECT_EQ(view.model()->index(2, 0).data(Qt::CheckStateRole), Qt::Checked);
  EXPECT_EQ(view.selectionModel()->selectedRows().size(), 1);

  tick(window, "chlRows", "a");
  EXPECT_EQ(form.lastTick, 0);
  EXPECT_TRUE(form.chlRows.ticked(0));
  choose(window, "chlRows", "a");
  choose(window, "chlRows", "c", Qt::ControlModifier);
  EXPECT_TRUE(form.chlRows.isSelected(0) && !form.chlRows.isSelected(1) && form.chlRows.isSelected(2));
  EXPECT_GE(events(), 2);
  int clickedTwice = -1;
  form.chlRows.onDoubleClick = [&] { clickedTwice = form.chlRows.firstSelected(); };
  const QPoint place = view.visualRect(view.model()->index(1, 0)).center();
  QTest::mouseDClick(window.windowHandle(), Qt::LeftButton, {}, view.viewport()->mapTo(&window, place));
  EXPECT_EQ(clickedTwice, 1) << "the row is selected by then";
  EXPECT_GE(events(), 1);
  // Other rows of the same number: nothing of the rows before is left to be seen or selected.
  form.chlRows.clear();
  for (const char* row : {"x", "y", "z"}) form.chlRows.add(row);
  show();
  EXPECT_EQ(rows(view), "x y z ");
  EXPECT_FALSE(view.selectionModel()->hasSelection());
  EXPECT_EQ(view.model()->index(2, 0).data(Qt::CheckStateRole), Qt::Unchecked);
  EXPECT_EQ(form.chlRows.selectionCount(), 0U);
  EXPECT_EQ(events(), 0);
}

TEST_F(BinderKindsTest, PanesTextColoursSelectionAndScrolling) {
  auto& pane = the<QPlainTextEdit>("txtPane");
  // Letters of two bytes lie before the second line's words, and a line break that counts as one character.
  form.txtPane.setText("gr\xC3\xBC\xC3\x9F\r\nsecond\nthird");
  form.txtPane.setSelection(7, 6);
  form.txtPane.setBackgrounds({{7, 6, 0x0000FF}});
  show();
  EXPECT_EQ(pane.textCursor().selectedText(), "second");
  pane.moveCursor(QTextCursor::Start);
  const auto edge = [&](int line) {
    const QImage image = pane.viewport()->grab().toImage();
    const int height = pane.fontMetrics().lineSpacing();
    return image.pixelColor(image.width() - 2,
                            static_cast<int>(pane.document()->documentMargin()) + line * height + height / 2);
  };
  EXPECT_EQ(edge(1), QColor(255, 0, 0));
  EXPECT_NE(edge(0), QColor(255, 0, 0));
  EXPECT_NE(edge(2), QColor(255, 0, 0));
  // What a person selects, in the model's own measure.
  pane.moveCursor(QTextCursor::EndOfLine, QTextCursor::KeepAnchor);
  EXPECT_EQ(form.txtPane.selectedText(), "gr\xC3\xBC\xC3\x9F");
  pane.setFocus();
  press(window, Qt::Key_X);
  EXPECT_EQ(form.txtPane.text().size(), 19U);

  std::string many;
  for (int line = 0; line < 500; ++line) many += "line\n";
  form.txtPane.setText(many);
  form.txtPane.setTopLine(100);
  show();
  EXPECT_EQ(pane.verticalScrollBar()->value(), 100);
  EXPECT_EQ(events(), 0);
  pane.verticalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
  EXPECT_EQ(form.txtPane.topLine(), static_cast<std::size_t>(pane.verticalScrollBar()->value()));
  EXPECT_EQ(events(), 1);
}

TEST_F(BinderKindsTest, APaneIsSearched) {
  auto& pane = the<QPlainTextEdit>("txtPane");
  auto& field = *pane.findChild<QLineEdit*>();
  form.txtPane.setText("one\r\nTwo\r\ntwo");
  show();
  pane.setFocus();
  EXPECT_FALSE(field.isVisible());
  press(window, Qt::Key_F, Qt::ControlModifier);
  EXPECT_TRUE(field.isVisible() && field.hasFocus());
  QTest::keyClicks(&field, "two");
  for (const std::size_t place : {4U, 8U, 4U}) {
    press(window, Qt::Key_Return);
    EXPECT_EQ(form.txtPane.selectionStart(), place);
    EXPECT_EQ(form.txtPane.selectionLength(), 3U);
  }
  press(window, Qt::Key_Escape);
  EXPECT_TRUE(!field.isVisible() && pane.hasFocus() && window.isVisible());
  press(window, Qt::Key_F3);
  EXPECT_EQ(form.txtPane.selectionStart(), 8U);
  field.setText("nowhere");
  press(window, Qt::Key_F3);
  EXPECT_EQ(form.txtPane.selectionStart(), 8U) << "nothing found, nothing moved";
}

TEST_F(BinderKindsTest, APaneShowsItsRowsAndCopiesItsText) {
  form.txtPane.setText("one\ntwo\nthree");
  form.txtPane.setSelection(4, 3);
  form.txtPane.setRows({{-1}, {0}, {-1}, {-1}, {1, 0xC0FFC0, {{1, 1}}}, {2}, {-1}});
  show();
  auto& pane = the<QPlainTextEdit>("txtPane");
  EXPECT_EQ(fromQt(pane.toPlainText()), "\none\n\n\ntwo\nthree\n");
  EXPECT_EQ(fromQt(pane.textCursor().selectedText()), "two");
  pane.selectAll();
  EXPECT_EQ(form.txtPane.selectedText(), "one\ntwo\nthree");
  pane.copy();
  EXPECT_EQ(fromQt(QApplication::clipboard()->text()), "one\ntwo\nthree") << "without the empty places";
  form.txtPane.setRows({});
  show();
  EXPECT_EQ(fromQt(pane.toPlainText()), "one\ntwo\nthree");
}

TEST(Printing, NamesAFileAfterWhatIsPrinted) {
  const std::pair<const char*, const char*> names[] = {{"Orders (Two, Shop)", "Orders (Two, Shop)"},
                                                       {"a/b\\c:d*e?f\"g<h>i|j", "a-b-c-d-e-f-g-h-i-j"},
                                                       {"..", "Print"},
                                                       {"", "Print"},
                                                       {"x\r\ny\x01.", "x y-"},
                                                       {"../../etc", "-..-etc"}};
  for (const auto& [text, name] : names) EXPECT_EQ(fileNameOf(text), QString::fromUtf8(name)) << text;
  EXPECT_LE(fileNameOf(std::string(300, 'x')).size(), 100);
}

TEST(Printing, CutsLinesBetweenCharacters) {
  EXPECT_EQ(linesOnPaper("abcd\r\n\tx\re", 3), (QStringList{"abc", "d", "   ", " x", "e"}));
  EXPECT_EQ(linesOnPaper("ab\xF0\x9F\x98\x80"
                         "c",
                         3),
            (QStringList{"ab", QString::fromUtf8("\xF0\x9F\x98\x80"
                                                 "c")}));
}

TEST_F(BinderKindsTest, GridsColoursAndAMillionRows) {
  auto& view = the<QTableView>("grdCells");
  form.grdCells.setColumnCount(2);
  form.grdCells.setRowCount(3);
  form.grdCells.setText(0, 1, "Name");
  form.grdCells.setText(2, 1, "Brown");
  form.grdCells.setTextColour(2, 1, 0x0000FF);
  form.grdCells.paint(1, 1, 0, 1, 0xC0FFC0);
  form.grdCells.setColumnWidth(1, 1500);
  show();
  const auto cell = [&](int row, int column, int role) { return view.model()->index(row, column).data(role); };
  EXPECT_EQ(view.model()->rowCount(), 2);
  EXPECT_EQ(view.model()->headerData(1, Qt::Horizontal).toString(), "Name");
  EXPECT_EQ(cell(1, 1, Qt::DisplayRole), "Brown");
  EXPECT_EQ(cell(1, 1, Qt::ForegroundRole).value<QColor>().hsvHue(), 0) << "red, as dark as it must be to be read";
  EXPECT_EQ(cell(0, 0, Qt::BackgroundRole).value<QColor>(), QColor(0xC0, 0xFF, 0xC0));
  EXPECT_FALSE(cell(1, 1, Qt::BackgroundRole).isValid());
  EXPECT_EQ(view.columnWidth(1), 100);

  form.grdCells.setRowCount(1000001);
  form.grdCells.setText(1000000, 0, "last");
  form.grdCells.setTopRow(500001);
  QElapsedTimer clock;
  clock.start();
  show();
  view.viewport()->grab();
  EXPECT_LT(clock.elapsed(), 5000);
  const QRect top = view.visualRect(view.model()->index(500000, 0));
  EXPECT_EQ(top.y(), 0);
}

TEST_F(BinderKindsTest, ProgressTimersTabsAndTrees) {
  auto& bar = the<QProgressBar>("barDone");
  const auto shown = [&](double percent) {
    form.barDone.setValue(percent);
    show();
    return 100.0 * (bar.value() - bar.minimum()) / (bar.maximum() - bar.minimum());
  };
  EXPECT_DOUBLE_EQ(shown(12.5), 12.5);
  EXPECT_DOUBLE_EQ(shown(250), 100);
  EXPECT_DOUBLE_EQ(shown(-1), 0);
  EXPECT_DOUBLE_EQ(shown(0.0 / 0.0), 0);

  QTest::qWait(30);
  EXPECT_EQ(events(), 0);
  form.tmrTick.setEnabled(true);
  EXPECT_TRUE(QTest::qWaitFor([&] { return form.events >= 2; }, 2000));
  form.tmrTick.setEnabled(false);
  show();
  events();
  QTest::qWait(30);
  EXPECT_EQ(events(), 0);

  auto& pages = the<QTabWidget>("tabPages");
  form.tabPages.setTitles({"First", "Second"});
  show();
  EXPECT_EQ(pages.tabText(1), "Second");
  clickAt(*pages.tabBar(), pages.tabBar()->tabRect(1).center());
  EXPECT_EQ(form.tabPages.selected(), 1U);
  EXPECT_EQ(events(), 1);
  form.tabPages.select(0);
  show();
  EXPECT_EQ(pages.currentIndex(), 0);
  EXPECT_EQ(events(), 1);

  auto& tree = the<QTreeView>("treNodes");
  const int root = form.treNodes.add(Tree::none, "root");
  const int leaf = form.treNodes.add(root, "leaf");
  form.treNodes.setExpanded(root, true);
  form.treNodes.select(leaf);
  show();
  EXPECT_EQ(events(), 1);
  EXPECT_EQ(tree.currentIndex().data().toString(), "leaf");
  clickAt(*tree.viewport(), tree.visualRect(tree.model()->index(0, 0)).center());
  EXPECT_EQ(form.treNodes.selected(), root);
  EXPECT_EQ(events(), 1);
  // A branch stays as the person has left it when the tree is shown anew.
  tree.collapse(tree.model()->index(0, 0));
  form.treNodes.add(root, "another");
  show();
  EXPECT_FALSE(tree.isExpanded(tree.model()->index(0, 0)));
}

TEST_F(BinderKindsTest, ATextThatIsCutOffIsTheTip) {
  auto& view = the<QTreeView>("chlRows");
  const QString longName(300, 'x');
  form.chlRows.add(fromQt(longName));
  form.chlRows.add("short");
  show();
  view.setColumnWidth(0, 100);
  const auto tipOf = [&](int row) {
    const QPoint place = view.visualRect(view.model()->index(row, 0)).center();
    QHelpEvent asked(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
    QApplication::sendEvent(view.viewport(), &asked);
    return QToolTip::text();
  };
  EXPECT_EQ(tipOf(1), "");
  EXPECT_EQ(tipOf(0), longName);
}

}  // namespace
}  // namespace qrel
