// The export window and the file dialog behind it, as a person uses them.
#include <QFileDialog>
#include <QLabel>

#include "platform/files.h"
#include "process/modSavedProcess.h"
#include "report/frmExport.h"
#include "tests/desktop/desktopFixture.h"

namespace qrel {
namespace {

class ExportWindowTest : public DesktopTest {
 protected:
  ExportWindowTest() {
    program.main.gstrDataPath = folder.path().string() + "/";
    grid.setColumnCount(2);
    grid.setRowCount(3);
    grid.setText(1, 1, "a");
    source.VSFlexGrid1 = &grid;
  }
  tExportResult show(const tExportRequest& request = {}) {
    frmExport window(program);
    window.mlngMode = exportFromDataView;
    return window.ShowUp(source, request);
  }
  std::string path(const char* name) const { return (folder.path() / name).string(); }

  Grid grid{"VSFlexGrid1"};
  tExportSource source;
};

TEST_F(ExportWindowTest, ANameWithoutExtensionGetsOneAndWhatIsThereIsAskedFor) {
  folder.write("mine.csv", "old");
  std::string offered, filter;
  when("frmExport", [&](QWidget& window) {
    when("QFileDialog", [&](QWidget& shown) {
      auto& dialog = dynamic_cast<QFileDialog&>(shown);
      offered = fromQt(dialog.selectedFiles().value(0));
      filter = fromQt(dialog.nameFilters().join("|"));
      dialog.selectFile(toQt(path("mine")));
      whenBox(QMessageBox::Yes);  // to replace it
      press(dialog, Qt::Key_Return);
      EXPECT_NE(boxText.find("mine.csv already exists"), std::string::npos) << boxText;
    });
    whenBox(QMessageBox::Yes);  // to wrap
    whenBox(QMessageBox::No);   // to look at it
    click(window, "optGen_1");
    press(window, Qt::Key_Return);
  });
  const tExportResult result = show();
  EXPECT_TRUE(result.blnOK);
  EXPECT_EQ(result.strPath, path("mine.csv"));
  EXPECT_EQ(files::readWholeFile(path("mine.csv")), "\"\",\"\"\r\n\"\",\"a\"\r\n\"\",\"\"\r\n");
  EXPECT_EQ(filter, "Export Files (*.csv)");
  const std::string ending = ".csv";
  EXPECT_EQ(offered.substr(offered.size() - ending.size()), ending);
  EXPECT_EQ(offered.find(path("")), 0U) << offered;
}

TEST_F(ExportWindowTest, AReplayNeedsNobody) {
  program.main.gblnCloseAfterRun = true;
  EXPECT_TRUE(show({path("out.csv"), exportCsv, 0, "", true, false}).blnOK);
  EXPECT_EQ(files::readWholeFile(path("out.csv")), ",\r\n,a\r\n,\r\n");
}

TEST_F(ExportWindowTest, EscInTheMiddleOfAnExportStopsIt) {
  grid.setRowCount(200'000);
  when("frmExport", [&](QWidget& window) {
    when("QFileDialog", [&](QWidget& shown) {
      dynamic_cast<QFileDialog&>(shown).selectFile(toQt(path("mine.htm")));
      press(shown, Qt::Key_Return);
    });
    QTimer::singleShot(0, &window, [&window] { click(window, "cmdOK"); });
  });
  QElapsedTimer sinceEsc;
  // Pressed as soon as rows are counted.
  QTimer watch;
  watch.callOnTimeout([&] {
    QWidget* window = QApplication::activeModalWidget();
    const auto* count = window ? window->findChild<QLabel*>("lblGen_1") : nullptr;
    if (!count || sinceEsc.isValid() || count->text().indexOf(" of 199,999") <= 0) return;
    EXPECT_TRUE(count->isVisible() && find<QWidget>(*window, "ProgressBar").isVisible());
    EXPECT_FALSE(find<QWidget>(*window, "optGen_0").isVisible());
    sinceEsc.start();
    press(*window, Qt::Key_Escape);
  });
  watch.start(1);
  when("QMessageBox", [&](QWidget& box) {
    EXPECT_LT(sinceEsc.elapsed(), 500);
    EXPECT_EQ(fromQt(dynamic_cast<QMessageBox&>(box).text()), "Operation cancelled by user.");
    press(box, Qt::Key_Return);
  });
  EXPECT_FALSE(show().blnOK);
  EXPECT_TRUE(sinceEsc.isValid());
  EXPECT_EQ(files::readWholeFile(path("mine.htm")).find("</TABLE>"), std::string::npos);
}

}  // namespace
}  // namespace qrel
