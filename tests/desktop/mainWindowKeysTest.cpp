// The main window by its keys and buttons, as a person works with it.
#include <QCheckBox>
#include <QClipboard>
#include <QDropEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QStatusBar>
#include <QTableView>
#include <QToolButton>
#include <QTreeView>
#include <QUrl>

#include "app/settings.h"
#include "compare/structure/modMarkDifferences.h"
#include "desktop/paneEdit.h"
#include "tests/desktop/desktopFixture.h"

namespace qrel {
namespace {

// Two servers, each with a database Shop: the tables Orders differ in a column, the tables Lines in records.
class MainWindowKeysTest : public DesktopTest {
 protected:
  MainWindowKeysTest() {
    load("One", "Archive", "CREATE TABLE Old (a int)");
    load("One", "Shop", R"(
CREATE TABLE Lines (id int NOT NULL PRIMARY KEY, text varchar(20))
CREATE TABLE Orders (id int NOT NULL, placed date)
GO
INSERT INTO Lines VALUES (1, 'one')
INSERT INTO Lines VALUES (2, 'two')
INSERT INTO Lines VALUES (3, 'three')
GO
CREATE SCHEMA sales
GO
CREATE TABLE sales.Rates (r int)
GO
CREATE PROCEDURE GetA AS SELECT 1
)");
    load("Two", "Shop", R"(
CREATE TABLE Lines (id int NOT NULL PRIMARY KEY, text varchar(20))
CREATE TABLE Orders (id int NOT NULL, placed datetime)
GO
INSERT INTO Lines VALUES (1, 'one')
INSERT INTO Lines VALUES (2, 'zwei')
)");
  }
  // Connects and shows Shop of One beside Shop of Two.
  void showShops() {
    start({"One", "Two"});
    press(main(), Qt::Key_F5);
    choose(main(), "pvlDb_0", "Shop");
    chooseInCombo(main(), "cmbServer_1", "Two");
    choose(main(), "pvlDb_1", "Shop");
  }
  void showTable(const char* name) {
    choose(main(), "pvlSqlObj_0", name);
    choose(main(), "pvlSqlObj_1", name);
  }
  std::string paneText(int side) {
    return fromQt(find<QPlainTextEdit>(main(), side == 0 ? "txtTXProc_0" : "txtTXProc_1").toPlainText());
  }
  std::string objects(int side) {
    return rows(find<QAbstractItemView>(main(), side == 0 ? "pvlSqlObj_0" : "pvlSqlObj_1"));
  }
  // Whether a line of the pane is filled with the colour up to the right edge.
  static bool hasColour(QPlainTextEdit& pane, QRgb colour) {
    const QImage image = pane.viewport()->grab().toImage();
    for (int y = 0; y < image.height(); ++y)
      if (image.pixel(image.width() - 2, y) == colour) return true;
    return false;
  }
};

TEST_F(MainWindowKeysTest, ConnectingAndChoosing) {
  start({"One", "Two"});
  EXPECT_EQ(rows(find<QAbstractItemView>(main(), "pvlDb_0")), "");
  press(main(), Qt::Key_F5);
  EXPECT_EQ(rows(find<QAbstractItemView>(main(), "pvlDb_0")), "Archive master Shop ");
  EXPECT_EQ(objects(0), "Old ");

  chooseInCombo(main(), "cmbServer_1", "Two");
  EXPECT_EQ(rows(find<QAbstractItemView>(main(), "pvlDb_1")), "master Shop ");
  choose(main(), "pvlDb_0", "Shop");
  EXPECT_EQ(objects(0), "Lines Orders Rates ");
  choose(main(), "pvlSqlObj_0", "Rates");
  EXPECT_EQ(paneText(0), "[r] [int] NULL");

  press(main(), Qt::Key_F6);
  auto& types = find<QComboBox>(main(), "cmbType");
  EXPECT_TRUE(types.hasFocus());
  chooseInCombo(main(), "cmbType", "Procedures");
  EXPECT_EQ(objects(0), "GetA ");
  EXPECT_EQ(objects(1), "");
  EXPECT_NE(paneText(0).find("SELECT 1"), std::string::npos);
  EXPECT_EQ(paneText(1), "<<Nothing to show>>");
}

TEST_F(MainWindowKeysTest, ComparingAPairShowsReportAndColours) {
  showShops();
  showTable("Lines");
  std::string report;
  const auto readReport = [&](QWidget& window) {
    report = fromQt(find<QPlainTextEdit>(window, "txtReport").toPlainText());
    click(window, "cmdCopyClip");
    press(window, Qt::Key_Escape);
  };
  when("frmReport", readReport);
  press(main(), Qt::Key_F7);
  EXPECT_NE(report.find("The selected tables are identical."), std::string::npos) << report;
  auto& source = find<QPlainTextEdit>(main(), "txtTXProc_0");
  auto& target = find<QPlainTextEdit>(main(), "txtTXProc_1");
  const QRgb changed = toQt(GetMarkColor(markChanged)).rgb();
  EXPECT_FALSE(hasColour(source, changed));

  showTable("Orders");
  when("frmReport", readReport);
  click(main(), "cmdCompare");
  EXPECT_NE(report.find("The selected tables are different."), std::string::npos) << report;
  EXPECT_TRUE(QApplication::clipboard()->text().contains("One.Shop.Orders"));
  EXPECT_TRUE(hasColour(source, changed));
  EXPECT_TRUE(hasColour(target, changed));
  showTable("Lines");
  EXPECT_FALSE(hasColour(source, changed));
}

TEST_F(MainWindowKeysTest, ComparingWholeDatabases) {
  showShops();
  std::string report;
  when("frmCompareAll", [&](QWidget& window) {
    // All are ticked the first time.
    for (int type = 0; type < 6; ++type) click(window, ("chkObjType_" + std::to_string(type)).c_str());
    whenBox(QMessageBox::Ok);
    press(window, Qt::Key_Return);
    EXPECT_EQ(boxText, "Please select at least one object type to be compared.");
    when("frmReport", [&](QWidget& shown) {
      report = fromQt(find<QPlainTextEdit>(shown, "txtReport").toPlainText());
      click(shown, "cmdExit");
    });
    click(window, "chkObjType_0");
    click(window, "cmdCompare");
  });
  press(main(), Qt::Key_F8);
  EXPECT_NE(report.find("Orders"), std::string::npos) << report;
  EXPECT_TRUE(allDone());

  // The boxes are as they were, and Cancel closes the window.
  when("frmCompareAll", [&](QWidget& window) {
    EXPECT_TRUE(find<QCheckBox>(window, "chkObjType_0").isChecked());
    EXPECT_FALSE(find<QCheckBox>(window, "chkObjType_1").isChecked());
    click(window, "cmdCancel");
  });
  click(main(), "cmdCompareAll");
  EXPECT_TRUE(allDone());
}

TEST_F(MainWindowKeysTest, ComparingRecords) {
  showShops();
  showTable("Lines");
  std::vector<std::string> cells;
  when("frmCompareDataOptions", [](QWidget& window) { press(window, Qt::Key_Return); });
  when("frmCompareData", [&](QWidget& window) {
    const QAbstractItemModel& model = *find<QTableView>(window, "VSFlexGrid1").model();
    for (int row = 0; row < model.rowCount(); ++row)
      for (int column = 1; column < model.columnCount(); ++column)
        cells.push_back(fromQt(model.index(row, column).data().toString()));
    press(window, Qt::Key_Escape);
  });
  press(main(), Qt::Key_F9);
  // The second records as they are in Source and in Target, and the third that Source alone has.
  EXPECT_EQ(cells, (std::vector<std::string>{"2", "two", "2", "zwei", "3", "three"}));

  showTable("Orders");
  whenBox(QMessageBox::No);
  click(main(), "cmdCompData");
  EXPECT_NE(boxText.find("Compared tables have different structures."), std::string::npos);
}

TEST_F(MainWindowKeysTest, ModifierKeysReachTheModels) {
  showShops();
  showTable("Lines");
  const auto all = Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier;
  choose(main(), "pvlSqlObj_0", "Lines", Qt::ShiftModifier);
  whenBox(QMessageBox::Ok);
  choose(main(), "pvlSqlObj_1", "Orders", all);
  ASSERT_TRUE(until([&] { return allDone(); }));
  EXPECT_NE(boxText.find(", Name: Orders, Ref. Date: "), std::string::npos) << boxText;

  // Shift asks for the options of a data comparison once.
  SaveSetting(program, *findSetting("ShowDataCompOpt"), 0);
  const auto cancelOptions = [](QWidget& window) { press(window, Qt::Key_Escape); };
  showTable("Lines");
  when("frmCompareDataOptions", cancelOptions);
  press(main(), Qt::Key_F9, Qt::ShiftModifier);
  EXPECT_TRUE(allDone());
  when("frmCompareData", cancelOptions);
  press(main(), Qt::Key_F9);
  EXPECT_TRUE(allDone());
}

TEST_F(MainWindowKeysTest, FilteringBySchema) {
  showShops();
  auto& off = find<QWidget>(main(), "srtFiltering_0");
  EXPECT_FALSE(off.isVisible());
  when("frmFilterBySchema", [&](QWidget& window) {
    EXPECT_EQ(fromQt(window.windowTitle()), "Filter by Schema");
    tick(window, "grdNames", "(Select All)");
    auto& names = find<QAbstractItemView>(window, "grdNames");
    for (int row = 0; row < names.model()->rowCount(); ++row)
      EXPECT_EQ(names.model()->index(row, 0).data(Qt::CheckStateRole), Qt::Unchecked) << row;
    tick(window, "grdNames", "sales");
    click(window, "cmdOK");
  });
  click(main(), "cmdFilterBySchema_0");
  EXPECT_EQ(objects(0), "Rates ");
  EXPECT_EQ(objects(1), "Lines Orders ");
  EXPECT_TRUE(off.isVisible());
  click(off);
  EXPECT_EQ(objects(0), "Lines Orders Rates ");
  EXPECT_FALSE(off.isVisible());
}

TEST_F(MainWindowKeysTest, AddingAndRemovingServers) {
  // Without a server the dialog comes up by itself, behind a box that says why.
  whenBox(QMessageBox::Ok);
  when("frmAddServer", [&](QWidget& window) {
    EXPECT_FALSE(find<QLineEdit>(window, "txtLogin").isEnabled());
    click(window, "optGen_1");
    EXPECT_TRUE(find<QLineEdit>(window, "txtLogin").isEnabled());
    click(window, "optGen_0");
    type(window, "txtServer", "Nowhere");
    whenBox(QMessageBox::Ok);
    press(window, Qt::Key_Return);
    EXPECT_EQ(boxText.find("Cannot connect to the server"), 0U) << boxText;
    EXPECT_EQ(fromQt(find<QLineEdit>(window, "txtServer").selectedText()), "Nowhere");
    QTest::keyClicks(&find<QLineEdit>(window, "txtServer"), "One");
    press(window, Qt::Key_Return);
  });
  start({});
  auto& combo = find<QComboBox>(main(), "cmbServer_0");
  ASSERT_TRUE(until([&] { return combo.count() == 1; }));
  EXPECT_EQ(fromQt(combo.currentText()), "One");
  EXPECT_EQ(rows(find<QAbstractItemView>(main(), "pvlDb_1")), "Archive master Shop ");

  when("frmDeleteServer", [&](QWidget& window) {
    choose(window, "lstServers", "One");
    whenBox(QMessageBox::Yes);
    click(window, "cmdRemove");
  });
  whenBox(QMessageBox::Ok);
  when("frmAddServer", [](QWidget& window) { press(window, Qt::Key_Escape); });
  chooseInMenu(main(), "&Tools", "&Remove Server");
  EXPECT_EQ(combo.count(), 0);
  EXPECT_EQ(rows(find<QAbstractItemView>(main(), "pvlDb_1")), "");
}

TEST_F(MainWindowKeysTest, SavingAndCopyingAPane) {
  showShops();
  choose(main(), "pvlSqlObj_0", "Rates");
  press(main(), Qt::Key_O, Qt::AltModifier);
  EXPECT_FALSE(QApplication::clipboard()->text().contains('\r')) << "as this system's programs have it";
  EXPECT_EQ(fromQt(QApplication::clipboard()->text().trimmed()), "[r] [int] NULL");
  const std::string file = (folder.path() / "saved.txt").string();
  when("QFileDialog", [&](QWidget& window) {
    dynamic_cast<QFileDialog&>(window).selectFile(toQt(file));
    press(window, Qt::Key_Return);
  });
  press(main(), Qt::Key_P, Qt::AltModifier);
  std::stringstream saved;
  saved << std::ifstream(file).rdbuf();
  EXPECT_EQ(saved.str(), "[r] [int] NULL\r\n");
}

TEST_F(MainWindowKeysTest, PanesShowAndDontTake) {
  showShops();
  choose(main(), "pvlSqlObj_0", "Rates");
  auto& pane = find<QPlainTextEdit>(main(), "txtTXProc_0");
  pane.setFocus();
  QTest::keyClicks(&pane, "typed");
  press(main(), Qt::Key_Delete);
  QApplication::clipboard()->setText("pasted");
  press(main(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(paneText(0), "[r] [int] NULL");
  EXPECT_EQ(startUp.mainWindow()->workspace.txtTXProc[0].givenText().find("typed"), std::string::npos);
  press(main(), Qt::Key_A, Qt::ControlModifier);
  press(main(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(fromQt(QApplication::clipboard()->text()), "[r] [int] NULL");
  press(main(), Qt::Key_F, Qt::ControlModifier);
  QTest::keyClicks(QApplication::focusWidget(), "int");
  press(main(), Qt::Key_Return);
  EXPECT_EQ(fromQt(pane.textCursor().selectedText()), "int");
  press(main(), Qt::Key_Escape);
  EXPECT_TRUE(pane.hasFocus());
  press(main(), Qt::Key_Tab);
  EXPECT_FALSE(pane.hasFocus()) << "Tab goes on";
}

TEST_F(MainWindowKeysTest, CtrlAndAClickLeaveTheDatabaseSelected) {
  showShops();
  choose(main(), "pvlDb_0", "Shop", Qt::ControlModifier);
  EXPECT_EQ(objects(0), "Lines Orders Rates ");
  auto& view = find<QAbstractItemView>(main(), "pvlDb_0");
  EXPECT_TRUE(until([&] { return view.selectionModel()->isSelected(rowOf(view, "Shop")); })) << "and it shows";
}

TEST_F(MainWindowKeysTest, MenusOpenByKeyWhereTheFocusIs) {
  showShops();
  showTable("Orders");
  auto& pane = find<QPlainTextEdit>(main(), "txtTXProc_0");
  pane.setFocus();
  const auto opens = [&](Qt::Key key, Qt::KeyboardModifiers held) {
    bool opened = false;
    when("QMenu", [&](QWidget& menu) {
      opened = pane.rect().contains(pane.mapFromGlobal(menu.pos()));
      actionOf(menu, "Refresh");
      press(menu, Qt::Key_Escape);
    });
    press(main(), key, held);
    EXPECT_TRUE(until([this] { return allDone(); }));
    return opened;
  };
  EXPECT_TRUE(opens(Qt::Key_F10, Qt::ShiftModifier));
  EXPECT_TRUE(opens(Qt::Key_Menu, Qt::NoModifier));
}

// Everything from connecting to closing without a mouse.
TEST_F(MainWindowKeysTest, AWholeJobByKeyboard) {
  start({"One", "Two"});
  const auto tabTo = [&](const char* name) {
    QWidget& wanted = find<QWidget>(main(), name);
    for (int tabs = 0; !wanted.hasFocus() && tabs < 60; ++tabs) press(main(), Qt::Key_Tab);
    EXPECT_TRUE(wanted.hasFocus()) << name;
  };
  const auto typeInList = [&](const char* name, Qt::Key key) {
    tabTo(name);
    QTest::qWait(QApplication::keyboardInputInterval() + 50);  // letters that come quicker are one word
    press(main(), key);
  };
  press(main(), Qt::Key_F5);
  tabTo("cmbServer_0");
  typeInList("pvlDb_0", Qt::Key_S);
  tabTo("cmbServer_1");
  press(main(), Qt::Key_Down);
  typeInList("pvlDb_1", Qt::Key_S);
  typeInList("pvlSqlObj_0", Qt::Key_O);
  typeInList("pvlSqlObj_1", Qt::Key_O);
  std::string report;
  when("frmReport", [&](QWidget& window) {
    report = fromQt(find<QPlainTextEdit>(window, "txtReport").toPlainText());
    press(window, Qt::Key_Escape);
  });
  press(main(), Qt::Key_F7);
  EXPECT_NE(report.find("The selected tables are different."), std::string::npos) << report;
  press(main(), Qt::Key_Down, Qt::AltModifier);
  auto& status = find<QStatusBar>(main(), "lblStatus");
  EXPECT_TRUE(status.currentMessage().startsWith("Marked block 1 of 1")) << fromQt(status.currentMessage());

  typeInList("pvlSqlObj_0", Qt::Key_L);
  typeInList("pvlSqlObj_1", Qt::Key_L);
  bool compared = false;
  when("frmCompareDataOptions", [](QWidget& window) { press(window, Qt::Key_Return); });
  when("frmCompareData", [&](QWidget& window) {
    compared = true;
    press(window, Qt::Key_Escape);
  });
  press(main(), Qt::Key_F9);
  EXPECT_TRUE(compared);
  press(main(), Qt::Key_F, Qt::AltModifier);
  QWidget* menu = QApplication::activePopupWidget();
  ASSERT_NE(menu, nullptr);
  press(*menu, Qt::Key_X);
  EXPECT_TRUE(until([this] { return startUp.mainWindow()->closed(); }));
}

TEST_F(MainWindowKeysTest, AReportLeadsToThePairAndTheListsShowWhatWasFound) {
  showShops();
  when("frmCompareAll", [](QWidget& window) { press(window, Qt::Key_Return); });
  std::string pair;
  when("frmReport", [&](QWidget& window) {
    auto& text = find<QPlainTextEdit>(window, "txtReport");
    when("frmReport", [&](QWidget& shown) {
      pair = fromQt(find<QPlainTextEdit>(shown, "txtReport").toPlainText());
      press(shown, Qt::Key_Escape);
    });
    QTextCursor line = text.document()->find("\tOrders");
    line.clearSelection();
    text.setTextCursor(line);
    const QPoint place = text.cursorRect(line).center();
    QTest::mouseDClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, text.viewport()->mapTo(&window, place));
    press(window, Qt::Key_Escape);
  });
  press(main(), Qt::Key_F8);
  EXPECT_TRUE(until([this] { return allDone(); }));
  EXPECT_NE(pair.find("The selected tables are different."), std::string::npos) << pair;
  EXPECT_EQ(rows(find<QAbstractItemView>(main(), "pvlSqlObj_0"), 1), "identical differs only here ");
  EXPECT_EQ(rows(find<QAbstractItemView>(main(), "pvlSqlObj_1"), 1), "identical differs ");

  press(main(), Qt::Key_L, Qt::ControlModifier);
  QWidget* filter = QApplication::focusWidget();
  ASSERT_TRUE(filter && filter->objectName().startsWith("txtFilter"));
  QTest::keyClicks(filter, "ord");
  const auto& list = find<QTreeView>(main(), filter->objectName() == "txtFilter_0" ? "pvlSqlObj_0" : "pvlSqlObj_1");
  EXPECT_TRUE(until([&] { return list.isRowHidden(0, {}) && !list.isRowHidden(1, {}); }));
}

TEST_F(MainWindowKeysTest, TheStripAtThePaneGoesToItsMarks) {
  std::string columns;
  for (int i = 0; i < 200; ++i) columns += "c" + std::to_string(i) + " int, ";
  load("One", "Long", "CREATE TABLE T (" + columns + "a int)");
  load("Two", "Long", "CREATE TABLE T (" + columns + "a bigint)");
  start({"One", "Two"});
  press(main(), Qt::Key_F5);
  chooseInCombo(main(), "cmbServer_1", "Two");
  choose(main(), "pvlDb_0", "Long");
  choose(main(), "pvlDb_1", "Long");
  auto& pane = find<QPlainTextEdit>(main(), "txtTXProc_0");
  auto& bar = *pane.verticalScrollBar();
  when("frmReport", [&](QWidget& window) {
    EXPECT_EQ(bar.value(), bar.maximum()) << "the mark is in sight before the report is closed";
    press(window, Qt::Key_Escape);
  });
  press(main(), Qt::Key_F7);
  bar.setValue(0);
  auto& strip = *dynamic_cast<PaneEdit&>(pane).strip();
  const QImage image = strip.grab().toImage();
  int marked = image.height() - 1;
  while (marked > 0 && image.pixelColor(4, marked) == image.pixelColor(4, 0)) --marked;
  EXPECT_GT(marked, image.height() / 2);
  clickAt(strip, {4, marked});
  EXPECT_GT(bar.value(), bar.maximum() / 2);
}

TEST_F(MainWindowKeysTest, TheHeaderOfTheDifferencesOpensTheirMenu) {
  showShops();
  showTable("Lines");
  bool opened = false;
  when("frmCompareDataOptions", [](QWidget& window) { press(window, Qt::Key_Return); });
  when("frmCompareData", [&](QWidget& window) {
    when("QMenu", [&](QWidget& menu) {
      opened = true;
      press(menu, Qt::Key_Escape);
    });
    QWidget& header = *find<QTableView>(window, "VSFlexGrid1").horizontalHeader()->viewport();
    QTest::mouseClick(window.windowHandle(), Qt::RightButton, Qt::NoModifier, header.mapTo(&window, QPoint(20, 5)));
    press(window, Qt::Key_Escape);
  });
  press(main(), Qt::Key_F9);
  EXPECT_TRUE(opened && allDone());
}

TEST_F(MainWindowKeysTest, ScriptsAreLoadedFromTheMenuAndByDropping) {
  start({"One"});
  when("frmLoadScripts", [](QWidget& window) { press(window, Qt::Key_Escape); });
  press(main(), Qt::Key_O, Qt::ControlModifier);
  const std::string file = folder.write("Fresh.sql", "CREATE TABLE Made (a int)").string();
  const auto load = [&](QWidget& window) {
    EXPECT_EQ(fromQt(find<QLineEdit>(window, "txtDatabase").text()), "Fresh");
    press(window, Qt::Key_Return);
    EXPECT_NE(find<QPlainTextEdit>(window, "txtResult").toPlainText().indexOf("tables"), -1);
    press(window, Qt::Key_Escape);
  };
  when("frmLoadScripts", load);
  QMimeData dragged;
  dragged.setUrls({QUrl::fromLocalFile(toQt(file))});
  auto& pane = find<QPlainTextEdit>(main(), "txtTXProc_1");
  QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(pane.viewport(), &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(pane.viewport(), &drop);
  EXPECT_TRUE(until([this] { return allDone(); }));
  EXPECT_EQ(objects(1), "Made ");
  EXPECT_EQ(objects(0), "");
}

}  // namespace
}  // namespace qrel
