// Goes through the desktop program as a person does and saves a picture of each window that comes up, and what is
// printed as PDF files.
// Usage: pictures FOLDER light|dark WIDTH HEIGHT, with two versions of the sample shop as demo/ShopV1 and demo/ShopV2.
#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QMessageBox>
#include <QPrinter>
#include <QRegularExpression>
#include <QTimer>
#include <cstdlib>
#include <functional>
#include <map>
#include <set>

#include "app/settings.h"
#include "app/trap.h"
#include "compare/data/frmCompareDataValidation.h"
#include "compare/data/frmCompareStatus.h"
#include "db/mdlObjects.h"
#include "desktop/printing.h"
#include "desktop/qtHost.h"
#include "desktop/text.h"
#include "desktop/theme.h"
#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "embedded/load/embeddedScriptLoader.h"
#include "platform/store/folders.h"
#include "process/frmSaveCompRun.h"
#include "process/frmSaveComparison.h"
#include "ui/frmCompareAndPrint.h"
#include "ui/startUp.h"
#include "ui/tools/frmTip.h"

namespace {

// Saves what comes up and answers it.
class Album : public QObject {
 public:
  Album(QString folder, QSize size) : folder_(std::move(folder)), size_(size) {
    QDir().mkpath(folder_);
    timer_.callOnTimeout(this, [this] { look(); });
    timer_.start(150);
  }

  // The button that is pressed in a window; the others are closed. Windows of one step are called "step-window".
  void begin(const QString& step, std::map<QString, QString> answers) {
    step_ = step;
    answers_ = std::move(answers);
    seen_.clear();
  }
  void saveMain(QWidget& window, const QString& name) {
    window.resize(size_);
    save(window, name);
  }
  void save(QWidget& window, const QString& name) {
    QApplication::processEvents();
    window.grab().save(folder_ + '/' + name + QStringLiteral(".png"));
  }

 private:
  void look() {
    QWidget* window = QApplication::activeModalWidget();
    if (!window || busy_) return;
    busy_ = true;
    const QString name = qobject_cast<QMessageBox*>(window) ? QStringLiteral("box") : window->objectName();
    if (seen_.insert(name).second) {
      save(*window, step_ + '-' + name);
      answer(*window, name);
      looks_ = 0;
    } else if (name == QStringLiteral("box") || answers_.count(name) == 0 || ++looks_ > mostLooks) {
      if (looks_ > mostLooks) save(*window, step_ + '-' + name + QStringLiteral("-after"));
      window->close();
    }
    busy_ = false;
  }
  void answer(QWidget& window, const QString& name) {
    const auto found = answers_.find(name);
    auto* button = found == answers_.end() ? nullptr : window.findChild<QAbstractButton*>(found->second);
    for (auto* type : window.findChildren<QCheckBox*>(QRegularExpression(QStringLiteral("chkObjType_[0-6]"))))
      if (button && !type->isChecked()) type->click();
    // Not from here: the handler may open the next window.
    if (button) QTimer::singleShot(0, button, [button] { button->click(); });
    if (found == answers_.end()) QTimer::singleShot(0, &window, [&window] { window.close(); });
  }

  QString folder_;
  QSize size_;
  QTimer timer_;
  QString step_;
  std::map<QString, QString> answers_;
  std::set<QString> seen_;
  static constexpr int mostLooks = 20;  // at a window that was answered and stays
  int looks_ = 0;
  bool busy_ = false;
};

// What is printed becomes PDF files among the pictures.
class PaperHost : public qrel::QtHost {
 public:
  PaperHost(qrel::KeyStore& places, QString folder) : QtHost(places), folder_(std::move(folder)) {}
  void print(const qrel::PrintJob& job) override {
    QPrinter printer(QPrinter::HighResolution);
    qrel::setUsualMargins(printer);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QStringLiteral("%1/print-%2.pdf").arg(folder_).arg(++count_));
    qrel::printPages(printer, job);
  }

 private:
  QString folder_;
  int count_ = 0;
};

void select(qrel::CheckList& list, const std::string& text) { qrel::SelectRowByText(list, text); }

void selectBoth(qrel::frmMain& window, const std::string& object) {
  select(window.workspace.pvlSqlObj[0], object);
  select(window.workspace.pvlSqlObj[1], object);
}

void goThrough(qrel::Program& program, qrel::QtHost& host, qrel::frmMain& window, Album& album) {
  QWidget& face = host.windowOf(window)->widget();
  const auto menu = [&](const char* step, long id, std::map<QString, QString> answers = {}) {
    album.begin(QString::fromLatin1(step), std::move(answers));
    window.barCommands.personChooses(id);
  };
  album.saveMain(face, QStringLiteral("main-empty"));
  window.cmdConnect.personClicks();
  select(window.workspace.pvlDb[0], "ShopV1");
  select(window.workspace.pvlDb[1], "ShopV2");
  selectBoth(window, "Customers");
  menu("pair", 201, {{"frmReport", "cmdPrint"}});
  window.PrintStructure(0, false, "Source: ");
  album.saveMain(face, QStringLiteral("main-marked"));
  window.chkAligned.personSets(true);
  album.saveMain(face, QStringLiteral("main-aligned"));
  window.PrintStructure(1, false, "Target: ");
  window.chkAligned.personSets(false);
  menu("all", 202, {{"frmCompareAll", "cmdCompare"}});
  menu("type", 221, {{"frmCompareAllTables", "cmdCompare"}});
  menu("selective", 231);
  menu("print", 250, {{"frmCompareAndPrint", "cmdCancel"}});
  selectBoth(window, "Products");
  program.settings.glngMaxRowsInDiffTable = 100;
  menu("data", 310,
       {{"frmCompareDataOptions", "cmdOK"}, {"frmCompareStatus", ""}, {"box", ""}, {"frmCompareData", "cmdExport"}});
  menu("someData", 320, {{"frmListObjects", "cmdSelectAll"}});
  menu("allData", 330, {{"frmCompareAllTables", ""}, {"frmCompareStatus", ""}});
  menu("analyze", 504, {{"frmDataAnalyze", "cmdStart"}});
  album.begin(QStringLiteral("view"), {});
  window.cmdViewData[0].personClicks();
  menu("load", 901);
  menu("add", 501);
  menu("remove", 502);
  menu("ignored", 511);
  menu("find", 507, {{"frmSearchForObject_Gen", "cmdFind"}});
  menu("attach", 509);
  menu("options", 513);
  menu("tip", 620);
  menu("about", 660);
  album.begin(QStringLiteral("info"), {});
  window.cmdDbInfo[0].personClicks();
  host.showHelp(10);
  for (QWidget* each : QApplication::topLevelWidgets())
    if (each->objectName() == QStringLiteral("uiHelp")) album.save(*each, QStringLiteral("help"));
  album.begin(QStringLiteral("schema"), {});
  window.cmdFilterBySchema[0].personClicks();
  album.begin(QStringLiteral("colours"), {});
  window.ShowColorSchema();
  album.begin(QStringLiteral("ignore"), {});
  window.mlngPopupPanel = 0;
  window.MenuPopUpIgnoreColumns();
  album.begin(QStringLiteral("save"), {{QStringLiteral("frmSaveComparison"), QStringLiteral("cmdOK")}});
  qrel::tSavedProcess process;
  process.strTable1 = "Customers";
  bool saved = false;
  std::string name;
  qrel::frmSaveComparison(program).ShowUp(process, saved, name);
  album.begin(QStringLiteral("run"), {});
  qrel::frmSaveCompRun(program).ShowUp();
  album.begin(QStringLiteral("error"), {});
  qrel::ShowErrorReport(program, -2147217900, "Incorrect syntax near 'FORM'.", "mdlData", "GetAdoRS",
                        "SELECT * FORM Orders");
  album.begin(QStringLiteral("status"), {});
  qrel::frmCompareStatus status(program);
  status.ShowHideControls(1);
  qrel::FormWindow shown(status, &face, program.store);
  album.save(shown.widget(), QStringLiteral("status-frmCompareStatus"));
  qrel::MainCompare steps(program, window);
  qrel::frmCompareAndPrint print(program, window.workspace, steps);
  qrel::FormWindow shownPrint(print, &face, program.store);
  print.lblCurProcName.setText("Customers");
  print.lblTime.setText("00:00:07");
  album.save(shownPrint.widget(), QStringLiteral("print-frmCompareAndPrint"));
  qrel::frmCompareDataValidation test(program);
  qrel::FormWindow shownTest(test, &face, program.store);
  test.lblServer1.setText("demo");
  test.lblDb1.setText("ShopV1");
  test.lblTable1.setText("Customers");
  test.lblInfo[0].setText("Checking if selected fields contain nulls... Done");
  test.lblInfo[1].setText("Checking if selected fields contain unique values...");
  test.lblDebug[0].setText("17");
  test.prbProgressBar.setVisible(true);
  test.prbProgressBar.setValue(40);
  album.save(shownTest.widget(), QStringLiteral("validate-frmCompareDataValidation"));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  qrel::applyTheme(argv[2]);
  const qrel::Folders folders = qrel::findFolders(argv[0]);
  qrel::EmbeddedServers servers(folders.servers);
  qrel::DataAccess data;
  data.add(std::make_unique<qrel::EmbeddedProvider>(servers, &data.stopAsked));
  qrel::EmbeddedScriptLoader loader(servers);
  qrel::KeyStore store(folders.settings);
  PaperHost host(store, QString::fromLocal8Bit(argv[1]));
  qrel::Program program(host, data, store);
  program.state<qrel::ScriptLoaderState>().loader = &loader;
  program.programFolder = folders.program.string();
  program.documentsFolder = folders.documents.string();
  host.helpFolder = folders.help.string();
  program.state<qrel::TipsState>().strInstalledFolder = folders.installed.string() + "/../../src/desktop";
  qrel::StartUp startUp(program);
  qrel::Main(program, startUp);
  if (!startUp.mainWindow()) return 3;
  Album album(QString::fromLocal8Bit(argv[1]), QSize(std::atoi(argv[3]), std::atoi(argv[4])));
  QTimer::singleShot(300, &album, [&] {
    goThrough(program, host, *startUp.mainWindow(), album);
    startUp.mainWindow()->close();
    QApplication::quit();
  });
  host.run();
  return 0;
}
