// Finding one's way in the main window: marks, filters, object states, and from a report to its pairs.
#include "compare/structure/modMarkDifferences.h"
#include "report/frmReport.h"
#include "tests/ui/mainWindow.h"

namespace qrel {
namespace {

// Source's tables against Target's, and a procedure that both have; long enough for marks to be out of sight.
class MainMarks : public testing::Test, public MainWindow {
 protected:
  MainMarks() {
    const std::string columns = longColumns();
    load("One", "Shop",
         "CREATE TABLE Alone (a int)\nCREATE TABLE Orders (" + columns +
             "changed int, b1 int, b2 int, gone int, e int)\nCREATE TABLE Same (a int)\nGO\n"
             "CREATE PROCEDURE GetA AS SELECT 1");
    load("Two", "Shop",
         "CREATE TABLE Orders (" + columns + "changed bigint, b1 int, b2 int, e int, more int)\n" +
             "CREATE TABLE Parcels (a int)\nCREATE TABLE Same (a int)\nGO\nCREATE PROCEDURE GetA AS SELECT 2");
    addServer("One");
    addServer("Two");
    connect();
    work.cmbServer[1].select(1);
    for (const int side : {0, 1}) {
      chooseDb(side, "Shop");
      chooseObject(side, "Orders");
    }
  }
  static std::string longColumns() {
    std::string columns;
    for (int i = 10; i < 40; ++i) columns += "c" + std::to_string(i) + " int, ";
    return columns;
  }
  // The caret's line in each pane.
  std::string carets() const {
    std::string text;
    for (const TextPane& pane : work.txtTXProc)
      text += pane.lineText(pane.lineAt(pane.selectionStart())).substr(0, 7) + "|";
    return text;
  }
  void report(const std::function<void(frmReport&)>& act = {}) {
    host.windows.push_back([act](Form& shown) {
      if (act) act(dynamic_cast<frmReport&>(shown));
    });
  }
  static std::size_t lineOf(const TextPane& pane, const std::string& text) {
    for (std::size_t line = 0; line < pane.lineCount(); ++line)
      if (pane.lineText(line) == text) return line;
    ADD_FAILURE() << text << " isn't a line of\n" << pane.text();
    return 0;
  }
  std::string notes(std::size_t side) const {
    const CheckList& list = work.pvlSqlObj[side];
    std::string text;
    for (std::size_t row = 0; row < list.count(); ++row) text += list.cell(row, 0) + ": " + list.note(row) + "|";
    return text;
  }
};

TEST_F(MainMarks, AComparisonShowsItsFirstMarkAndTheKeysGoOnFromThere) {
  form.personPressesKey("Alt+Down");
  EXPECT_EQ(host.beeps, 1) << "nothing is marked yet";
  EXPECT_NE(form.lblStatus.text().find("No lines are marked"), std::string::npos);
  report([&](frmReport&) {
    EXPECT_EQ(carets(), "[change|[change|") << "behind the report already";
    for (const TextPane& pane : work.txtTXProc) EXPECT_EQ(pane.topLine(), 27U) << "three lines above it";
  });
  form.personPressesKey("F7");
  const auto go = [&](const char* key) {
    form.personPressesKey(key);
    return carets();
  };
  EXPECT_EQ(go("Alt+Down"), "[gone] |[e] [in|");
  EXPECT_EQ(form.lblStatus.text().substr(0, 19), "Marked block 2 of 3");
  const std::string last = go("Alt+Down");
  EXPECT_NE(last.find("|[more] |"), std::string::npos) << last;
  EXPECT_EQ(go("Alt+Down"), last);
  EXPECT_EQ(host.beeps, 2) << "there is none behind it";
  EXPECT_EQ(go("Alt+Up"), "[gone] |[e] [in|");
  // From where a person has clicked.
  work.txtTXProc[0].onPointedAt(true);
  work.txtTXProc[0].setSelection(static_cast<std::size_t>(work.txtTXProc[0].lineOffset(31)), 0);
  EXPECT_EQ(go("Alt+Up"), "[change|[change|");
}

TEST_F(MainMarks, AFilterNarrowsWhatIsShownAndNothingElse) {
  EXPECT_EQ(form.lblCount[0].text(), "3");
  form.txtFilter[0].personTypes("AL");
  EXPECT_EQ(form.lblCount[0].text(), "1 of 3");
  EXPECT_FALSE(work.pvlSqlObj[0].passes(1));
  report([](frmReport& window) {
    EXPECT_NE(window.txtReport.text().find("There are 3 tables in Source database."), std::string::npos);
  });
  host.windows.push_back([](Form&) {});
  std::swap(host.windows[0], host.windows[1]);
  form.CommandBars_Execute(205);
  chooseType(objProcedures);
  EXPECT_EQ(form.lblCount[0].text(), "0 of 1") << "the filter stays";
  form.txtFilter[0].personTypes("");
  EXPECT_EQ(form.lblCount[0].text(), "1");
  form.personPressesKey("Ctrl+L");
  EXPECT_EQ(form.txtFilter[0].focusRequests() + form.txtFilter[1].focusRequests(), 1U);
}

TEST_F(MainMarks, AReportLeadsToItsPairsAndTheListsShowWhatWasFound) {
  const auto activate = [&](frmReport& window) {
    TextPane& pane = window.txtReport;
    for (const char* line : {"Comparison of tables", "Source database One.Shop", ""})
      EXPECT_FALSE(window.canChoose(lineOf(pane, line))) << line;
    // The differing procedure, by the context menu, while tables are listed.
    pane.setSelection(static_cast<std::size_t>(pane.lineOffset(lineOf(pane, "\tGetA"))), 0);
    host.menuChoices = {1};
    report([&](frmReport& pair) {
      EXPECT_NE(pair.txtReport.text().find("The selected procedures are different."), std::string::npos);
    });
    pane.onMouseUp(2);
    EXPECT_EQ(selectedObject(0) + selectedObject(1), "GetAGetA");
    // The identical one, which a sentence names; and one that only Source has.
    report([&](frmReport& pair) {
      EXPECT_NE(pair.txtReport.text().find("The selected tables are identical."), std::string::npos);
    });
    pane.onLineChosen(lineOf(pane, "One table [Same] has identical structure in both databases."));
    EXPECT_EQ(selectedObject(0) + selectedObject(1), "SameSame");
    pane.onLineChosen(lineOf(pane, "\tAlone"));
    EXPECT_EQ(lastBox(), "There is nothing to compare: 'Alone' is only in Source.");
    EXPECT_EQ(selectedObject(0), "Alone");
  };
  host.windows.push_back([](Form& shown) { shown.personPressesEnter(); });
  report(activate);
  form.personPressesKey("F8");
  EXPECT_EQ(notes(0), "Alone: only here|Orders: differs|Same: identical|");
  EXPECT_EQ(notes(1), "Orders: differs|Parcels: only here|Same: identical|");
  form.RefreshDisplayForPanel(0);
  EXPECT_EQ(notes(0), "Alone: |Orders: |Same: |") << "loaded anew";
}

TEST_F(MainMarks, EachPanelComesBackToItsOwnDatabase) {
  load("One", "Archive", "CREATE TABLE Old (a int)");
  work.cmbServer[1].select(0);
  chooseDb(1, "Archive");
  chooseDb(0, "Shop");
  frmMain again(program);
  again.load();
  again.activate();
  again.cmdConnect.personClicks();
  EXPECT_EQ(SelectedDatabase(again.workspace, 0) + SelectedDatabase(again.workspace, 1), "ShopArchive");
}

// Ctrl and a click take a row out of the selection; where there is one selection it stays.
TEST_F(MainMarks, TheSelectedDatabaseCantBeUnselected) {
  work.pvlDb[0].personSelects({});
  EXPECT_EQ(SelectedDatabase(work, 0), "Shop");
  EXPECT_EQ(ReadServerValue(program, 1, "MRUDb"), "Shop");
  EXPECT_NE(objects(0), "");
}

}  // namespace
}  // namespace qrel
