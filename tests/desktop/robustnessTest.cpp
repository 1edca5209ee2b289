// What a person does at the wrong moment: closing, Esc and second clicks while something else is on.
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <memory>

#include "compare/all/modCompareAll.h"
#include "compare/structure/frmColorSchema.h"
#include "platform/error.h"
#include "tests/desktop/desktopFixture.h"

namespace qrel {
namespace {

class RobustnessTest : public DesktopTest {
 protected:
  // Two databases with as many tables, all of which differ.
  void startWithTables(int tables, int records = 0) {
    for (const char* name : {"One", "Two"}) {
      const std::string type = std::string(name) == "One" ? "int" : "bigint";
      std::string script;
      for (int i = 0; i < tables; ++i)
        script += "CREATE TABLE Table" + std::to_string(i) + " (id int NOT NULL, amount " + type + ")\nGO\n";
      for (int i = 0; i < records; ++i)
        script += (i % 1000 == 0 ? "\nINSERT INTO Table0 VALUES (" : ", (") + std::to_string(i) + ", " +
                  std::to_string(type.size()) + ")";
      load(name, "Shop", script);
    }
    start({"One", "Two"});
    press(main(), Qt::Key_F5);
    chooseInCombo(main(), "cmbServer_1", "Two");
    for (const char* list : {"pvlDb_0", "pvlDb_1"}) choose(main(), list, "Shop");
  }
  // Acts in the midst of something that runs, as soon as it is so.
  void during(std::function<bool()> so, std::function<void()> act) {
    QTimer::singleShot(1, &context_, [this, so = std::move(so), act = std::move(act)] {
      if (so()) return act();
      during(so, act);
    });
  }
  // Starts comparing all tables and does `act` when the first of them has been compared. True if it ran then.
  bool runAllTables(const std::function<void(QWidget&)>& act) {
    bool acted = false;
    when("frmCompareAll", [&](QWidget& window) {
      const QPointer<QWidget> guarded(&window);
      during([guarded] { return guarded && !find<QLabel>(*guarded, "lblCurProcName").text().isEmpty(); },
             [&, guarded] {
               acted = true;
               act(*guarded);
             });
      click(window, "cmdCompare");
    });
    press(main(), Qt::Key_F8);
    EXPECT_TRUE(allDone());
    return acted;
  }
  bool busy() { return startUp.mainWindow()->workspace.mblnBusy; }

 private:
  QObject context_;
};

TEST_F(RobustnessTest, ARunGoesOnUntilItIsCancelled) {
  startWithTables(200);
  EXPECT_TRUE(runAllTables([&](QWidget& window) {
    EXPECT_TRUE(find<QWidget>(window, "fraContainer_1").isVisible());
    EXPECT_FALSE(find<QWidget>(window, "cmdCompare").isEnabled());
    press(main(), Qt::Key_F8);
    startUp.mainWindow()->personPressesKey("F8");
    click(main(), "cmdConnect");
    EXPECT_EQ(QApplication::activeModalWidget(), &window);
    window.close();
    EXPECT_TRUE(window.isVisible());
    press(window, Qt::Key_Escape);
  }));
  // No report comes, and the window is as it was.
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_FALSE(busy());
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  when("frmCompareAll", [](QWidget& window) { window.close(); });
  press(main(), Qt::Key_F8);
  EXPECT_TRUE(allDone());
}

TEST_F(RobustnessTest, ClosingTheMainWindowStopsARunAndEndsTheProgram) {
  startWithTables(200);
  EXPECT_TRUE(runAllTables([&](QWidget&) { main().close(); }));
  EXPECT_TRUE(startUp.mainWindow()->closed());
  EXPECT_FALSE(main().isVisible());
  host.run();  // returns at once
  EXPECT_EQ(host.windowOf(*startUp.mainWindow()), nullptr);
}

TEST_F(RobustnessTest, ClosingTheMainWindowWhileRecordsAreCompared) {
  startWithTables(1, 40000);
  for (const char* list : {"pvlSqlObj_0", "pvlSqlObj_1"}) choose(main(), list, "Table0");
  whenBox(QMessageBox::Yes);
  when("frmCompareDataOptions", [](QWidget& window) { press(window, Qt::Key_Return); });
  bool stopped = false;
  const auto stop = [&] {
    stopped = true;
    main().close();
    click(*QApplication::activeModalWidget(), "cmdStop");
  };
  during(
      [] {
        QWidget* front = QApplication::activeModalWidget();
        return front && front->objectName() == "frmCompareStatus" &&
               find<QProgressBar>(*front, "ProgressBar").isVisible();
      },
      stop);
  whenBox(QMessageBox::Ok);
  press(main(), Qt::Key_F9);
  EXPECT_TRUE(stopped);
  EXPECT_EQ(boxText, "Operation cancelled by the user.");
  EXPECT_TRUE(startUp.mainWindow()->closed());
}

// The progress of a table stands before the window of the run, whose Cancel can be pressed all the same.
TEST_F(RobustnessTest, CancelEndsARunOverTheDataOfManyTables) {
  startWithTables(3, 40000);
  for (const char* list : {"pvlSqlObj_0", "pvlSqlObj_1"}) choose(main(), list, "Table0");
  const auto status = []() -> QWidget* {
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window->objectName() == "frmCompareStatus" && window->isVisible() &&
          find<QProgressBar>(*window, "ProgressBar").isVisible())
        return window;
    return nullptr;
  };
  bool cancelled = false;
  during([&] { return status() != nullptr; },
         [&] {
           QWidget& run = *QApplication::activeModalWidget();
           ASSERT_EQ(run.objectName(), "frmCompareAllTables");
           click(main(), "cmdConnect");
           click(run, "cmdCancel");
           cancelled = program.state<modCompareAllState>().gblnCancelCompare;
           click(*status(), "cmdStop");
         });
  startUp.mainWindow()->barCommands.personChooses(330);
  EXPECT_TRUE(cancelled);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "no report comes";
  EXPECT_FALSE(busy());
}

TEST_F(RobustnessTest, EscAndTheCloseBoxLeaveEveryDialog) {
  startWithTables(1);
  for (const char* list : {"pvlSqlObj_0", "pvlSqlObj_1"}) choose(main(), list, "Table0");
  const auto key = [this](Qt::Key pressed) { return [this, pressed] { press(main(), pressed); }; };
  const auto command = [this](long id) { return [this, id] { startUp.mainWindow()->barCommands.personChooses(id); }; };
  const auto rightClick = [this] {
    auto& pane = *find<QPlainTextEdit>(main(), "txtTXProc_0").viewport();
    QTest::mouseClick(main().windowHandle(), Qt::RightButton, {}, pane.mapTo(&main(), QPoint(40, 40)));
  };
  struct Dialog {
    const char* name;
    std::function<void()> open;
    const char* before = "";  // a caption of the context menu, or a box that is answered with Yes
  };
  const std::vector<Dialog> dialogs = {{"frmReport", key(Qt::Key_F7)},
                                       {"frmCompareAll", key(Qt::Key_F8)},
                                       {"frmCompareDataOptions", key(Qt::Key_F9), "box"},
                                       {"frmListObjects", command(231)},
                                       {"frmAddServer", command(501)},
                                       {"frmDeleteServer", command(502)},
                                       {"frmIgnoreColumnsView", command(511)},
                                       {"frmFilterBySchema", [this] { click(main(), "cmdFilterBySchema_0"); }},
                                       {"frmColorSchema", rightClick, "Show Color Schema"},
                                       {"frmIgnoreColumnsAdd", rightClick, "Ignore Columns"}};
  for (const bool byKey : {true, false})
    for (const Dialog& dialog : dialogs) {
      const std::string before = dialog.before;
      if (before == "box")
        whenBox(QMessageBox::Yes);
      else if (!before.empty())
        when("QMenu", [&](QWidget& menu) {
          clickAt(menu, dynamic_cast<QMenu&>(menu).actionGeometry(actionOf(menu, dialog.before)).center());
        });
      bool left = false;
      when(dialog.name, [&](QWidget& window) {
        if (byKey)
          press(window, Qt::Key_Escape);
        else
          window.close();
        left = true;
      });
      dialog.open();
      ASSERT_TRUE(left) << dialog.name;
      EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << dialog.name;
      EXPECT_FALSE(busy()) << dialog.name;
    }
}

TEST_F(RobustnessTest, DoubleClickOnConnect) {
  startWithTables(1);
  auto& button = find<QWidget>(main(), "cmdConnect");
  QTest::mouseDClick(main().windowHandle(), Qt::LeftButton, {}, button.mapTo(&main(), button.rect().center()));
  QCoreApplication::processEvents();
  EXPECT_EQ(rows(find<QAbstractItemView>(main(), "pvlDb_0")), "master Shop ");
  EXPECT_FALSE(busy());
}

TEST_F(RobustnessTest, EscAnswersABoxWithItsMildestButton) {
  const auto answer = [this](Buttons buttons) {
    when("QMessageBox", [](QWidget& box) { press(box, Qt::Key_Escape); });
    return host.messageBox("Text", Icon::Question, "", buttons);
  };
  EXPECT_EQ(answer(Buttons::Ok), Answer::Ok);
  EXPECT_EQ(answer(Buttons::OkCancel), Answer::Cancel);
  EXPECT_EQ(answer(Buttons::YesNo), Answer::No);
  EXPECT_EQ(answer(Buttons::YesNoCancel), Answer::Cancel);
  EXPECT_EQ(answer(Buttons::RetryCancel), Answer::Cancel);
  when("QMessageBox", [](QWidget& box) { press(box, Qt::Key_Return); });
  EXPECT_EQ(host.messageBox("Text", Icon::Question, "", Buttons::YesNo, 2), Answer::No);
}

TEST_F(RobustnessTest, ErrorsOfAWindowAreToldInABox) {
  class Failing : public frmColorSchema {
   public:
    void load() override { throw RuntimeError(53, "can't load"); }
    void activate() override { throw RuntimeError(53, "can't activate"); }
    void unload() override { throw RuntimeError(53, "can't unload"); }
  } form;
  std::string told;
  const auto read = [&](QWidget& widget) {
    told += fromQt(dynamic_cast<QMessageBox&>(widget).text()) + ". ";
    press(widget, Qt::Key_Escape);
  };
  when("QMessageBox", read);
  when("QMessageBox", [&](QWidget& widget) {
    when("frmColorSchema", [](QWidget& window) { window.close(); });
    read(widget);
  });
  when("QMessageBox", read);
  host.showModal(form);
  EXPECT_EQ(told, "can't load. can't activate. can't unload. ");
}

}  // namespace
}  // namespace qrel
