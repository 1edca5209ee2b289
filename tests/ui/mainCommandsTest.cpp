// The main window's commands: the table, its dispatch, the context menu, keys, tips and scrolling.
#include <map>
#include <utility>

#include "app/frmErrorReport.h"
#include "app/mdlMain.h"
#include "compare/all/frmListObjects.h"
#include "compare/all/modCompareAll.h"
#include "compare/structure/frmIgnoreColumnsAdd.h"
#include "compare/structure/frmIgnoreColumnsView.h"
#include "compare/structure/modMarkDifferences.h"
#include "process/modSavedProcess.h"
#include "report/frmReport.h"
#include "tests/process/savedProcesses.h"
#include "tests/ui/mainWindow.h"
#include "ui/frmCompareAndPrint.h"

namespace qrel {
namespace {

class MainCommands : public testing::Test, public MainWindow {
 protected:
  // The menu bar, one line for each item: depth as dashes, id, caption.
  std::string bar() const {
    std::string text;
    for (const MenuItem& menu : form.barCommands.menus()) write(menu, 0, text);
    return text;
  }
  static void write(const MenuItem& item, std::size_t depth, std::string& text) {
    text += std::string(depth, '-') + std::to_string(item.id) + " " + item.caption + "\n";
    EXPECT_EQ(item.popup, !item.items.empty()) << item.id;
    EXPECT_TRUE(item.enabled) << item.id;
    for (const MenuItem& each : item.items) write(each, depth + 1, text);
  }
  void choose(long id) { form.barCommands.personChooses(id); }

  // Opens the context menu of a side, closes it with that choice, and gives its ids; a disabled one in brackets.
  std::string contextMenu(int side, long choice = 0) {
    host.menuChoices.push_back(choice);
    work.txtTXProc[static_cast<std::size_t>(side)].onMouseUp(2);
    std::string text;
    for (const MenuItem& item : host.menus.back())
      text += (item.separatorBefore ? "| " : "") +
              (item.enabled ? std::to_string(item.id) : "(" + std::to_string(item.id) + ")") + " ";
    return text;
  }
  static bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
};

TEST_F(MainCommands, TheBarHasWhatCanBeDone) {
  addServer("One");
  open();
  const std::string menus = bar();
  // A popup with its items directly below it.
  const std::map<std::string, std::string> parts = {
      {"File", "100 &File\n-101 &Connect to the Server\n-102 Refresh - &Source\n-103 Refresh - &Target\n"},
      {"exit", "-105 E&xit\n200 &Structure Comparisons\n-201 Compare &Selected Objects\n-202 Compare &All Objects\n"},
      {"bulk", "-203 &Bulk Comparisons\n--204 &Simple\n---205 Compare All &Tables\n---206 Compare All &Procedures\n"},
      {"bulk end",
       "---209 Compare All T&riggers\n---210 Compare All R&elationships\n---211 Compare All &Constraints\n"},
      {"bulk details", "--220 &Details\n---221 Compare All &Tables - Details\n"},
      {"selective", "-230 &Selective Comparisons\n--0 &Simple\n---231 Compare Selected &Tables\n"},
      {"selective details", "--240 &Details\n---241 Compare Selected &Tables - Details\n"},
      {"details end",
       "---247 Compare Selected &Constraints - Details\n-250 Compare and Print All Tables\n300 &Data Comparisons\n"},
      {"Data",
       "300 &Data Comparisons\n-310 Compare &Data in Single Pair of Tables\n"
       "-320 Compare Data in &Selected Tables\n-330 Compare Data in &All Tables\n400 &S&QL\n"},
      {"SQL",
       "400 &S&QL\n-410 Build SQL CREATE Statement - &Source\n-420 Build SQL CREATE Statement - &Target\n500 &Tools\n"},
      {"Tools",
       "500 &Tools\n-501 &Add Server\n-502 &Remove Server\n-503 Data Analyzer\n--504 Analyze Data in Source Table\n"
       "--505 Analyze Data in Target Table\n-506 &Find Object\n--507 In &Source Database\n--508 In &Target Database\n"
       "-509 Atta&ch Database\n-510 List All Ignored Columns - &Data Comparisons\n"
       "-511 List All Ignored Columns - &Structure Comparisons\n-513 &Options...\n"},
      {"Help", "600 &Help\n-610 &Index...\n-620 &Tip of the Day...\n-630 Technical &Support\n-660 &About...\n"}};
  for (const auto& [name, part] : parts) EXPECT_TRUE(has(menus, part)) << name << " in\n" << menus;
  EXPECT_EQ(form.barCommands.menus()[0].items[0].toolTip, "Connect to the server (F5)");
  EXPECT_EQ(form.barCommands.menus()[0].items[1].toolTip, "");
}

// What the report of each of the four commands of a type is saved as.
TEST_F(MainCommands, ABulkCommandIsOfItsTypeExtentAndDetail) {
  makeServers();
  connect();
  work.cmbServer[1].select(1);
  chooseDb(0, "Shop");
  chooseDb(1, "Shop");
  SetFilePaths(program);
  const auto run = [&](long id, bool selective) {
    if (selective)
      host.windows.push_back([](Form& shown) {
        auto& list = dynamic_cast<frmListObjects&>(shown);
        for (CheckList& side : list.pvlSqlObj)
          if (side.count() > 0) side.personTicks(0, true);
        list.cmdOK.personClicks();
      });
    host.windows.push_back([](Form&) {});
    host.windows.push_back([](Form& shown) { dynamic_cast<frmReport&>(shown).cmdSave.personClicks(); });
    host.windows.push_back(personSavesAs(std::to_string(id)));
    choose(id);
    const tSavedProcess saved = GetSavedProcessDetails(program, std::to_string(id));
    return saved.strEncObjTypes + " " + std::to_string(saved.lngCompSubType) + " " +
           std::to_string(saved.lngCompSubSubType);
  };
  const std::map<long, std::string> expected = {{205, "1,0,0,0,0,0,0,0 20 10"},
                                                {206, "0,1,0,0,0,0,0,0 20 10"},
                                                {225, "0,0,0,0,1,0,0,0 20 20"},
                                                {231, "1,0,0,0,0,0,0,0 30 30"},
                                                {241, "1,0,0,0,0,0,0,0 30 40"}};
  for (const auto& [id, words] : expected) EXPECT_EQ(run(id, id > 230), words) << id;
}

TEST_F(MainCommands, ACommandRunsAloneAndOnlyInAnOpenWindow) {
  choose(501);
  EXPECT_TRUE(host.shown.empty()) << "before the first activation";
  makeServers();
  connect();
  work.mblnBusy = true;
  choose(501);
  choose(101);
  EXPECT_TRUE(host.shown.empty()) << "busy";
  work.mblnBusy = false;

  bool busyMeanwhile = false;
  host.windows.push_back([&](Form&) {
    busyMeanwhile = work.mblnBusy;
    choose(501);
  });
  choose(501);
  EXPECT_TRUE(busyMeanwhile);
  EXPECT_FALSE(work.mblnBusy);
  EXPECT_EQ(host.shown, std::vector<std::string>{"frmAddServer"});

  // The commands that look at the flag themselves.
  work.pvlDb[0].clear();
  choose(101);
  EXPECT_TRUE(has(databases(0), "*Archive "));
  work.txtTXProc[0].setText("");
  work.txtTXProc[1].setText("");
  host.boxes.clear();
  choose(201);
  EXPECT_EQ(host.boxes.size(), 1U);
  host.boxes.clear();
  host.windows.push_back([](Form& shown) { shown.close(); });
  choose(202);
  EXPECT_EQ(host.shown.back(), "frmCompareAll");

  for (const long id : {0L, 106L, 200L, 204L, 801L, 9999L}) choose(id);
  EXPECT_EQ(host.shown.size(), 2U);
  EXPECT_EQ(work.cmbType.focusRequests(), 0U) << "what only a key starts has no number";
  choose(105);
  EXPECT_TRUE(form.closed());
}

TEST_F(MainCommands, WithoutAServerACommandWithThatGuardOffersToAddOne) {
  host.windows.push_back([](Form& shown) { shown.close(); });
  open();
  lastBox();
  host.windows.push_back([](Form& shown) { shown.close(); });
  choose(250);
  EXPECT_TRUE(has(lastBox(), "There is no SQL server to connect to."));
  EXPECT_EQ(host.shown.back(), "frmAddServer");
  choose(502);
  EXPECT_EQ(lastBox(), "There are no servers stored in the list.");
}

TEST_F(MainCommands, AnErrorInACommandIsReportedUnderItsLabel) {
  makeServers();
  connect();
  std::string shown;
  host.windows.push_back([](Form&) { throw RuntimeError(5, "no legend"); });
  host.windows.push_back([&](Form& report) { shown = dynamic_cast<frmErrorReport&>(report).txtErrDesc.text(); });
  contextMenu(0, 710);
  EXPECT_TRUE(has(shown, " Error 5 (frmMain:ID_DEBUG_ERROR_REPORT)\r\n\r\nno legend")) << shown;
  EXPECT_FALSE(work.mblnBusy);
}

TEST_F(MainCommands, RefreshDiesOnceAContextMenuHasClosed) {
  makeServers();
  connect();
  chooseDb(1, "Shop");
  const auto goneAndRefreshed = [&](int side, long id) {
    work.pvlSqlObj[static_cast<std::size_t>(side)].remove(0);
    const std::string before = objects(side);
    choose(id);
    return objects(side) != before;
  };
  EXPECT_TRUE(goneAndRefreshed(0, 102));
  EXPECT_TRUE(goneAndRefreshed(1, 103));
  contextMenu(1);
  EXPECT_EQ(form.mlngPopupPanel, -1);
  EXPECT_FALSE(goneAndRefreshed(0, 102));
  EXPECT_FALSE(goneAndRefreshed(1, 103));
  // The menu's own refresh goes on working, for the pane that it was opened on.
  const std::string source = objects(0);
  contextMenu(1, 700);
  EXPECT_TRUE(has(objects(1), "Customers"));
  EXPECT_EQ(objects(0), source);
  EXPECT_FALSE(work.mblnBusy);
}

TEST_F(MainCommands, TheContextMenuIsEnabledWhileAPaneHasText) {
  makeServers();
  form.load();
  work.txtTXProc[0].onMouseUp(2);
  EXPECT_TRUE(host.menus.empty()) << "the window isn't active yet";
  form.activate();
  form.cmdConnect.personClicks();
  EXPECT_EQ(contextMenu(0), "700 | 710 720 | 730 740 | 750 (760) | 770 780 ");
  std::string captions;
  for (const MenuItem& item : host.menus.back()) captions += item.caption + "|";
  EXPECT_EQ(captions,
            "Refresh|Show Color Schema|Visualize Differences|Ignore Columns|Compare Highlighted Sections|Build SQL "
            "CREATE Statement|"
            "Find references to non-existent objects|Print|Print Source And Target|");
  work.txtTXProc[0].setText("");
  EXPECT_TRUE(has(contextMenu(0), "700 ")) << "the other pane's text counts";
  work.txtTXProc[1].setText("  ");
  EXPECT_EQ(contextMenu(0), "(700) | (710) (720) | (730) (740) | (750) (760) | (770) (780) ");
  work.txtTXProc[0].setText("x");
  work.cmbType.tag = "OFF";
  chooseType(objViews);
  EXPECT_EQ(contextMenu(0), "700 | 710 720 | (730) 740 | 750 760 | 770 780 ") << "columns are those of tables";
  const std::size_t opened = host.menus.size();
  work.txtTXProc[0].onMouseUp(1);
  work.mblnBusy = true;
  work.txtTXProc[0].onMouseUp(2);
  EXPECT_EQ(host.menus.size(), opened) << "left button, busy window";
}

TEST_F(MainCommands, ColumnsAreIgnoredForTheTableOfTheClickedPane) {
  makeServers();
  connect();
  SetFilePaths(program);
  chooseDb(1, "Shop");
  chooseObject(1, "Orders");
  host.windows.push_back([](Form& shown) {
    auto& window = dynamic_cast<frmIgnoreColumnsAdd&>(shown);
    EXPECT_EQ(window.lblTableName.text(), "Table: Orders");
    EXPECT_EQ(window.pvlSqlObj0.cell(0, 0), "b");
  });
  contextMenu(1, 730);
  work.txtTXProc[0].setText(" ");
  contextMenu(1, 730);
  EXPECT_EQ(lastBox(), "Cannot continue - there is no structure displayed for selected table.");
  chooseType(objProcedures);
  form.ExecuteAction(730);  // no menu is open
  EXPECT_EQ(lastBox(), "");
  contextMenu(1, 730);
  EXPECT_TRUE(has(lastBox(), "only when Tables are selected"));
  const std::map<long, std::string> lists = {{510, "data"}, {511, "structure"}};
  for (const auto& [id, words] : lists) {
    host.windows.push_back([&, part = words](Form& shown) {
      EXPECT_EQ(dynamic_cast<frmIgnoreColumnsView&>(shown).lblGen.text(),
                "The columns listed below are ignored during " + part + " comparisons.");
    });
    choose(id);
  }
}

TEST_F(MainCommands, ThePanesArePrintedFromTheContextMenu) {
  makeServers();
  connect();
  chooseDb(1, "Shop");
  contextMenu(1, 770);
  ASSERT_EQ(host.printed.size(), 1U);
  EXPECT_EQ(host.printed[0].header, "Customers (Database: Shop, Server: One)");
  contextMenu(0, 780);
  ASSERT_EQ(host.printed.size(), 3U);
  EXPECT_EQ(host.printed[1].header, "Source: Old (Database: Archive, Server: One)");
  EXPECT_EQ(host.printed[2].header, "Target: Customers (Database: Shop, Server: One)");
  host.windows.push_back([](Form& shown) { EXPECT_EQ(shown.name, "frmColorSchema"); });
  contextMenu(0, 710);
}

TEST_F(MainCommands, AllTablesArePrintedThatDiffer) {
  makeServers();
  connect();
  choose(250);
  EXPECT_EQ(host.boxes.back().title, "Cannot Compare");
  EXPECT_EQ(host.boxes.back().icon, Icon::Information);
  EXPECT_EQ(lastBox(), "Cannot compare - Source and Target database are the same.");
  for (const std::size_t side : {0U, 1U}) {
    const std::string name = std::exchange(program.main.gtypSelServ[side].Name, "");
    form.CompareAndPrintAllTables();
    EXPECT_EQ(lastBox(), side == 0 ? "Please select Source server first." : "Please select Target server first.");
    program.main.gtypSelServ[side].Name = name;
    work.pvlDb[side].clearSelection();
    form.CompareAndPrintAllTables();
    EXPECT_EQ(lastBox(), "Cannot compare - the list of databases is empty.");
    chooseDb(static_cast<int>(side), side == 0 ? "Archive" : "Shop");
  }
  for (const int side : {0, 1}) {
    chooseDb(side, "master");
    form.CompareAndPrintAllTables();
    EXPECT_EQ(lastBox(), side == 0 ? "Cannot compare - there are no tables in Source database."
                                   : "Cannot compare - there are no tables in Target database.");
    chooseDb(side, "Archive");
  }
  work.cmbServer[1].select(1);
  chooseDb(0, "Shop");
  chooseDb(1, "Shop");
  chooseType(objProcedures);
  const auto state = [&] {
    return program.state<PrintRunState>().gblnCompareAndPrint || program.state<modCompareAllState>().gblnCancelCompare;
  };
  // Customers and sales.Rates have no namesake; Orders differs.
  host.windows.push_back([](Form&) {});
  choose(250);
  EXPECT_EQ(work.objectType(), objTables);
  ASSERT_EQ(host.printed.size(), 2U);
  EXPECT_EQ(host.printed[0].header, "Source: Orders (Database: Shop, Server: One)");
  EXPECT_EQ(host.printed[1].header, "Target: Orders (Database: Shop, Server: Two)");
  EXPECT_FALSE(state() || work.mblnBusy);

  // Stopped at its first yield.
  host.printed.clear();
  program.state<PrintRunState>().gblnCompareAndPrint = true;
  MainCompare steps(program, form);
  frmCompareAndPrint run(program, work, steps);
  host.onDoEvents = [&] { EXPECT_FALSE(run.closeRequested()); };
  host.windows.push_back([](Form&) {});
  host.showModal(run);
  host.onDoEvents = nullptr;
  EXPECT_TRUE(run.closed() && host.printed.empty());
  EXPECT_EQ(run.lblCurProcName.text(), "Customers");
}

TEST_F(MainCommands, RecordsOfOneTable) {
  makeServers();
  connect();
  chooseObject(0, "Old");
  chooseObject(1, "Orders");
  const std::string end = " (Database: Archive, Server: One) doesn't contain any data.";
  for (const int side : {0, 1}) {
    const auto place = static_cast<std::size_t>(side);
    const std::string told = std::string("Table ") + (side == 0 ? "Old" : "Orders") + end;
    form.personPressesKey(side == 0 ? "Alt+V" : "Alt+W");
    EXPECT_EQ(lastBox(), told);
    form.barCommands.personChooses(504 + side);
    EXPECT_EQ(lastBox(), told);
    form.cmdAnalyzeData[place].personClicks();
    EXPECT_EQ(lastBox(), told);
    work.mblnBusy = true;
    form.cmdViewData[place].personClicks();
    form.cmdAnalyzeData[place].personClicks();
    EXPECT_EQ(lastBox(), "");
    work.mblnBusy = false;
  }
  EXPECT_EQ(form.cmdViewData[1].toolTip(), "View data stored in selected table (Alt + W)");
}

TEST_F(MainCommands, KeysAndTips) {
  makeServers();
  open();
  form.personPressesKey("F5");
  EXPECT_TRUE(has(databases(0), "*Archive "));
  const std::size_t asked = work.cmbType.focusRequests();
  form.personPressesKey("F6");
  EXPECT_EQ(work.cmbType.focusRequests(), asked + 1);
  host.windows.push_back([](Form& shown) { shown.close(); });
  form.personPressesKey("F8");
  EXPECT_EQ(host.shown.back(), "frmCompareAll");
  for (const auto& [key, side] : {std::pair{"Alt+O", 0}, std::pair{"Alt+Y", 1}}) {
    work.txtTXProc[static_cast<std::size_t>(side)].setText(std::string("text of ") + key);
    form.personPressesKey(key);
    EXPECT_EQ(host.clipboard, std::string("text of ") + key + "\r\n");
  }
  host.files = {"", ""};
  form.personPressesKey("Alt+P");
  form.personPressesKey("Alt+I");
  EXPECT_EQ(host.fileDialogs.size(), 2U);

  const std::map<Control*, std::string> expected = {
      {&form.cmdConnect, "Connect to the server (F5)"},
      {&form.cmdCompareAll, "Compare all objects (F8)"},
      {&work.cmbType, "Select object type (F6)"},
      {&form.cmdCopyClip[1], "Copy selected object structure to the clipboard (Alt + Y)"},
      {&form.cmdCopyToFile[0], "Copy selected object structure to the file (Alt + P)"}};
  for (const auto& [control, tip] : expected) {
    control->onPointedAt(true);
    EXPECT_EQ(form.lblStatus.text(), tip);
    control->onPointedAt(false);
    EXPECT_EQ(form.lblStatus.text(), "");
  }
  chooseType(objViews);
  form.cmdCompare.onPointedAt(true);
  EXPECT_EQ(form.lblStatus.text(), "Compare selected views (F7)");
}

// Two lines stand in Target alone, one in Source alone.
TEST_F(MainCommands, MarkedPanesScrollTogetherLineByLine) {
  TextPane& source = work.txtTXProc[0];
  TextPane& target = work.txtTXProc[1];
  source.setText("a\r\nb\r\ngone\r\n\r\nc\r\nd");
  target.setText("a\r\nnew\r\n\r\nnew2\r\nb\r\nc\r\nd\r\ne");
  source.personScrolls(4);
  EXPECT_EQ(target.topLine(), 0U) << "nothing is marked yet";
  const auto mark = [](TextPane& pane, std::size_t line, std::int32_t kind) {
    pane.setBackground(static_cast<std::size_t>(pane.lineOffset(line)), 1, GetMarkColor(kind));
  };
  for (const std::size_t line : {0U, 1U, 4U, 5U}) mark(source, line, markUnchanged);
  mark(source, 2, markOnlyInSource);
  for (const std::size_t line : {0U, 4U, 5U}) mark(target, line, markUnchanged);
  mark(target, 6, markChanged);
  for (const std::size_t line : {1U, 3U, 7U}) mark(target, line, markOnlyInTarget);

  const std::map<std::size_t, std::size_t> fromSource = {{0, 0}, {1, 4}, {2, 5}, {4, 5}, {5, 6}};
  for (const auto& [here, there] : fromSource) {
    source.personScrolls(here);
    EXPECT_EQ(target.topLine(), there) << "from line " << here;
  }
  const std::map<std::size_t, std::size_t> fromTarget = {{0, 0}, {1, 1}, {3, 1}, {4, 1}, {5, 4}, {6, 5}, {7, 5}};
  for (const auto& [there, here] : fromTarget) {
    target.personScrolls(there);
    EXPECT_EQ(source.topLine(), here) << "from line " << there;
  }
  form.chkScrollTogether.personSets(false);
  source.personScrolls(1);
  EXPECT_EQ(target.topLine(), 7U);
}

TEST_F(MainCommands, ClosingStopsARun) {
  EXPECT_TRUE(form.closeRequested());
  EXPECT_FALSE(program.state<modCompareAllState>().gblnCancelCompare);
  work.mblnBusy = true;
  EXPECT_TRUE(form.closeRequested());
  EXPECT_TRUE(program.state<modCompareAllState>().gblnCancelCompare);
}

}  // namespace
}  // namespace qrel
