// Grids as a person works with them: cells copied, columns widened, tables on paper; the windows over one table.
#include <QClipboard>
#include <QHeaderView>
#include <QLabel>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QTableView>

#include "desktop/tablePrinting.h"
#include "tests/desktop/boundForm.h"
#include "tests/desktop/desktopFixture.h"

namespace qrel {
namespace {

// A window with one table of three columns.
class TableForm : public Form {
 public:
  TableForm() : Form("frmTable") {
    add(rpcTable);
    for (const char* each : {"Name", "Town", "Note"}) rpcTable.addColumn(each, 900);
  }
  void addRow(const char* who, const char* town, const char* note) {
    const std::size_t row = rpcTable.addRecord();
    rpcTable.setText(row, 0, who);
    rpcTable.setText(row, 1, town);
    rpcTable.setText(row, 2, note);
  }
  ReportControl rpcTable{"rpcTable"};
};

class GridsTest : public testing::Test {
 protected:
  GridsTest() {
    form.addRow("Anna", "Lisbon by the long river", "a\tb");
    form.addRow("Bea", "Porto", "two\r\nlines");
    form.addRow("Cleo", "Faro", "");
    bound.window->resize(600, 300);
    bound.window->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(bound.window.get()));
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.columnWidth(1) > 60; }, 2000));
  }
  // What Ctrl+C copies.
  std::string copied() {
    QApplication::clipboard()->clear();
    QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
    return fromQt(QApplication::clipboard()->text());
  }
  int textWidth(const char* text) const { return view.fontMetrics().horizontalAdvance(text); }

  TableForm form;
  BoundForm bound{form, QByteArray("<ui version=\"4.0\"><class>frmTable</class><widget class=\"QDialog\" "
                                   "name=\"frmTable\"><layout class=\"QVBoxLayout\"><item><widget class=\"QTableView\" "
                                   "name=\"rpcTable\"/></item></layout></widget></ui>")};
  QTableView& view = find<QTableView>(*bound.window, "rpcTable");
};

TEST_F(GridsTest, SelectedCellsAreCopied) {
  EXPECT_EQ(copied(), "");
  QTest::keyClick(&view, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(copied(), "Anna\tLisbon by the long river\ta b\nBea\tPorto\ttwo  lines\nCleo\tFaro\t");
  view.clearSelection();
  const auto select = [&](int row, int column) {
    view.selectionModel()->select(view.model()->index(row, column), QItemSelectionModel::Select);
  };
  select(2, 0);
  select(0, 1);
  EXPECT_EQ(copied(), "\tLisbon by the long river\nCleo\t");
}

TEST_F(GridsTest, ColumnsAreWidenedAtFirstAndOnRequest) {
  // At first: what was cut off has its room, what wasn't is as wide as the model says.
  EXPECT_GE(view.columnWidth(1), textWidth("Lisbon by the long river"));
  EXPECT_EQ(view.columnWidth(0), 60);
  const auto doubleClick = [&](int column) {
    QHeaderView& header = *view.horizontalHeader();
    const QPoint border(header.sectionViewportPosition(column) + header.sectionSize(column) - 1, header.height() / 2);
    QTest::mouseDClick(header.viewport(), Qt::LeftButton, Qt::NoModifier, border);
  };
  form.rpcTable.setText(3, 0, "Cleopatra the Seventh");
  bound.binder.flush();
  EXPECT_EQ(view.columnWidth(0), 60);
  doubleClick(0);
  EXPECT_GE(view.columnWidth(0), textWidth("Cleopatra the Seventh"));
  // What a person chose stays until the model asks for another width.
  const int chosen = view.columnWidth(0);
  form.addRow("Dora", "", "");
  bound.binder.flush();
  EXPECT_EQ(view.columnWidth(0), chosen);
  form.rpcTable.setColumnWidth(0, 3000);
  bound.binder.flush();
  EXPECT_EQ(view.columnWidth(0), 200);
}

TEST_F(GridsTest, AWidthSetByHandLastsAsLongAsTheWindow) {
  QHeaderView& header = *view.horizontalHeader();
  const QPoint border(header.sectionViewportPosition(0) + header.sectionSize(0) - 1, header.height() / 2);
  QTest::mousePress(header.viewport(), Qt::LeftButton, Qt::NoModifier, border);
  QTest::mouseMove(header.viewport(), border + QPoint(20, 0));
  QTest::mouseMove(header.viewport(), border + QPoint(40, 0));
  QTest::mouseRelease(header.viewport(), Qt::LeftButton, Qt::NoModifier, border + QPoint(40, 0));
  const int chosen = view.columnWidth(0), other = view.columnWidth(1);
  EXPECT_GT(chosen, 60);
  form.rpcTable.clear();
  bound.binder.flush();
  form.addRow("Somebody with a name longer than any before", "Rio", "");
  bound.binder.flush();
  EXPECT_EQ(view.columnWidth(0), chosen);
  EXPECT_EQ(view.columnWidth(1), other);
}

TEST_F(GridsTest, TablesAreLaidOutOnPages) {
  TemporaryFolder folder;
  const auto pages = [&](int columns, int rows) {
    ReportControl table("rpcTable");
    for (int column = 0; column < columns; ++column) table.addColumn("A column of some width", 900);
    for (int row = 0; row < rows; ++row) table.addRecord();
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(toQt((folder.path() / "table.pdf").string()));
    return printTable(printer, table, "Table");
  };
  EXPECT_EQ(pages(3, 10), 1);
  const int wide = pages(23, 10);
  EXPECT_GE(wide, 3);
  const int high = pages(3, 500);
  EXPECT_GE(high, 5);
  EXPECT_EQ(pages(23, 500), wide * high);
  EXPECT_GT(std::filesystem::file_size(folder.path() / "table.pdf"), 1000U);
  QPrinter nowhere;
  nowhere.setOutputFormat(QPrinter::PdfFormat);
  nowhere.setOutputFileName("/no/such/folder/table.pdf");
  EXPECT_THROW(printTable(nowhere, form.rpcTable, "Table"), RuntimeError);
}

class TableWindowsTest : public DesktopTest {
 protected:
  // A table of so many records is selected.
  void startWithRecords(int records) {
    std::string script = "CREATE TABLE Sale (id int NOT NULL, town varchar(20))\nGO\n";
    for (int i = 0; i < records; ++i)
      script += (i % 1000 == 0 ? "\nINSERT INTO Sale VALUES (" : ", (") + std::to_string(i) + ", 'Town " +
                std::to_string(i % 7) + "')";
    load("One", "Shop", script);
    start({"One"});
    press(main(), Qt::Key_F5);
    for (const char* list : {"pvlDb_0", "pvlDb_1"}) choose(main(), list, "Shop");
  }
  // Acts as soon as the window's load is at its end: not from within it, where it would wait for this.
  void whenLoaded(QWidget& window, std::function<void()> act) {
    QTimer::singleShot(5, &window, [this, &window, act = std::move(act)] {
      if (find<QWidget>(window, "cmdStop").isEnabled()) return whenLoaded(window, act);
      act();
    });
  }
};

TEST_F(TableWindowsTest, RecordsAreViewedAndAnalyzed) {
  startWithRecords(500);
  bool viewed = false;
  when("frmDataView", [&](QWidget& window) {
    whenLoaded(window, [&] {
      viewed = true;
      auto& view = find<QTableView>(window, "VSFlexGrid1");
      EXPECT_EQ(view.model()->rowCount(), 500);
      EXPECT_EQ(view.model()->index(499, 2).data().toString(), "Town 2");
      EXPECT_EQ(view.rowAt(0), 0);
      press(window, Qt::Key_Escape);
    });
  });
  press(main(), Qt::Key_V, Qt::AltModifier);
  EXPECT_TRUE(viewed);
  when("frmDataAnalyze", [this](QWidget& window) {
    press(window, Qt::Key_F5);
    auto& view = find<QTableView>(window, "rpcReport");
    EXPECT_EQ(rows(view), "id town ");
    EXPECT_EQ(view.model()->index(1, 2).data().toString(), "7");
    when("QPrintPreviewDialog", [](QWidget& preview) { preview.close(); });
    click(window, "cmdPrintPreview");
    press(window, Qt::Key_Escape);
  });
  click(main(), "cmdAnalyzeData_1");
  EXPECT_TRUE(allDone());
  EXPECT_FALSE(startUp.mainWindow()->workspace.mblnBusy);
}

TEST_F(TableWindowsTest, ALoadOrAnAnalysisThatIsClosedGoesAtOnce) {
  startWithRecords(60000);
  for (const char* name : {"frmDataView", "frmDataAnalyze"}) {
    const bool viewer = std::string(name) == "frmDataView";
    when(name, [viewer](QWidget& window) {
      const QPointer<QWidget> guarded(&window);
      QTimer::singleShot(viewer ? 0 : 60, &window, [guarded] {
        if (guarded) guarded->close();
      });
      if (!viewer) press(window, Qt::Key_F5);
    });
    if (viewer)
      press(main(), Qt::Key_V, Qt::AltModifier);
    else
      click(main(), "cmdAnalyzeData_0");
    EXPECT_TRUE(allDone()) << name;
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(startUp.mainWindow()->workspace.mblnBusy);
  }
}

}  // namespace
}  // namespace qrel
