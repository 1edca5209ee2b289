// Scripts and references from the main window, as a person asks for them.
#include "report/frmReport.h"
#include "tests/ui/mainWindow.h"

namespace qrel {
namespace {

class MainScripts : public testing::Test, public MainWindow {
 protected:
  MainScripts() {
    load("One", "Shop",
         "CREATE TABLE Orders (Id int NOT NULL CONSTRAINT PK_Orders PRIMARY KEY, Note text NULL)\nGO\n"
         "CREATE PROCEDURE GetA @a int AS SELECT Id, gone FROM Orders WHERE @a = 1 OR @b = 2\nGO\n"
         "CREATE PROCEDURE GetB AS EXEC getc\nGO\nCREATE PROCEDURE getc AS PRINT 1\nGO\n");
    load("Two", "Shop", "CREATE TABLE Orders (Id int NOT NULL CONSTRAINT PK_Orders PRIMARY KEY, Note varchar(9) NULL)");
    addServer("One");
    addServer("Two");
    program.main.gstrAppPath = folder.path().string() + "/";  // where the trace goes
    program.main.gblnDebugMode = true;
    connect();
    work.cmbServer[1].select(1);
    for (const int side : {0, 1}) {
      chooseDb(side, "Shop");
      chooseObject(side, "Orders");
    }
  }
  void choose(long id) { form.barCommands.personChooses(id); }
  void chooseInContextMenu(int side, long id) {
    host.menuChoices.push_back(id);
    work.txtTXProc[static_cast<std::size_t>(side)].onMouseUp(2);
  }
  // The title and the text of the report window that follows.
  template <class Act>
  std::string reportOf(Act&& act) {
    std::string text = "no window";
    host.windows.push_back([&](Form& shown) {
      auto& report = dynamic_cast<frmReport&>(shown);
      EXPECT_FALSE(report.cmdSave.visible());
      text = report.caption + ": " + report.txtReport.givenText();
    });
    act();
    EXPECT_FALSE(work.mblnBusy);
    EXPECT_EQ(program.report.gstrReportText, "");
    return text;
  }
  static bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
};

TEST_F(MainScripts, ACreateStatementIsOfTheMenusOrTheClickedPane) {
  const std::string source = "[Note] [text] NULL", target = "[Note] [varchar] (9) NULL";
  const std::string menu = reportOf([&] { choose(420); });
  EXPECT_TRUE(menu.starts_with("SQL CREATE Statement: USE [Shop]\r\nGO\r\n/****** Object: Table [dbo].[Orders]  "))
      << menu;
  EXPECT_TRUE(has(menu, "CREATE TABLE [dbo].[Orders] (\r\n[Id] [int] NOT NULL,\r\n" + target)) << menu;
  EXPECT_TRUE(has(reportOf([&] { choose(410); }), source));
  EXPECT_TRUE(has(reportOf([&] { chooseInContextMenu(1, 750); }), target));
  EXPECT_EQ(form.mlngClickedPane, 0);

  work.txtTXProc[0].setText("  ");
  choose(410);
  EXPECT_EQ(lastBox(), "Cannot continue - there is no structure displayed for selected object.");
  work.txtTXProc[0].setText("x");
  work.pvlSqlObj[0].clear();
  choose(410);
  EXPECT_EQ(host.boxes.front().text, "Cannot build SQL CREATE statement - wrong parameters passed");
  EXPECT_EQ(lastBox(), "Couldn't generate SQL CREATE statement.");
}

TEST_F(MainScripts, ReferencesAreListedAsOftenAsTheyStand) {
  form.cmdNonExistent_Click(0);
  EXPECT_TRUE(has(lastBox(), "This functionality is enabled only when procedures, functions or views are selected"));
  chooseType(objProcedures);
  chooseObject(0, "GetA");
  chooseInContextMenu(0, 760);
  EXPECT_EQ(host.boxes.back().icon, Icon::None);
  EXPECT_EQ(lastBox(),
            "Procedure 'GetA' contains following references to non-existent objects:\r\n\r\nid\r\ngone\r\norders");
  EXPECT_EQ(host.pointer(), Pointer::Default);
  chooseObject(0, "GetB");
  form.cmdNonExistent_Click(0);
  EXPECT_EQ(host.boxes.back().icon, Icon::Information);
  EXPECT_EQ(lastBox(), "Procedure\r\n\r\nGetB\r\n\r\ndoesn't contain any references to non-existent objects.");
  work.txtTXProc[1].setText("");
  chooseInContextMenu(1, 760);
  EXPECT_EQ(lastBox(), "Cannot continue - there is no structure displayed for selected Procedure.");
  work.mblnBusy = true;
  form.cmdNonExistent_Click(0);
  EXPECT_TRUE(host.boxes.empty());
}

TEST_F(MainScripts, TheUpdateScriptIsThereForDebugging) {
  EXPECT_TRUE(form.cmdDebugScript.visible());
  const auto press = [&] { form.cmdDebugScript.personClicks(); };
  EXPECT_EQ(reportOf(press), "Generate Update Script: ALTER TABLE Orders ALTER COLUMN [Note] [text] NULL\r\n");
  bool result = false;
  reportOf([&] { form.Debug_GenerateUpdateScript(objTables, result); });
  EXPECT_TRUE(result);

  work.cmbServer[1].select(0);
  chooseDb(1, "Shop");
  chooseObject(1, "Orders");
  press();
  EXPECT_EQ(host.boxes.back().title, "Generate Update Script");
  EXPECT_EQ(lastBox(), "The selected tables are identical.");
  work.txtTXProc[1].setText(" ");
  press();
  EXPECT_EQ(lastBox(), "Cannot continue - there is no structure displayed for selected object.");
  work.txtTXProc[1].setText("another text of the same table");
  press();
  EXPECT_EQ(lastBox(), "The selected tables are identical.");
  chooseType(objProcedures);
  press();
  EXPECT_TRUE(has(lastBox(), "only when Tables are selected as active objects."));
  chooseType(objTables);
  work.pvlDb[0].clear();
  press();
  EXPECT_EQ(lastBox(), "Please connect to the server first.");
  program.main.gblnDebugMode = false;
  frmMain ordinary(program);
  ordinary.load();
  EXPECT_FALSE(ordinary.cmdDebugScript.visible());
}

}  // namespace
}  // namespace qrel
