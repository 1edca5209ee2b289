// Comparing from the main window, as a person does: the panes and the report windows that follow.
#include "app/mdlMain.h"
#include "compare/all/frmCompareAll.h"
#include "compare/all/frmListObjects.h"
#include "compare/structure/modMarkDifferences.h"
#include "db/mdlQueryCode.h"
#include "platform/files.h"
#include "process/modSavedProcess.h"
#include "report/frmReport.h"
#include "tests/process/savedProcesses.h"
#include "tests/ui/mainWindow.h"

namespace qrel {
namespace {

// Shop of server One on the left and ShopTest of Two on the right.
class Comparing : public testing::Test, public MainWindow {
 protected:
  Comparing() {
    SetFilePaths(program);
    load("One", "Shop", "CREATE TABLE Orders (Id int, Gone int, Note varchar(20))\nGO\n" + procedures("1"));
    load("Two", "ShopTest",
         "CREATE TABLE Orders (Id int, Note varchar(30), Paid bit)\nGO\nCREATE TABLE Parcels (d int)\nGO\n" +
             procedures("2"));
    addServer("One");
    addServer("Two");
    connect();
    work.cmbServer[1].select(1);
    chooseDb(0, "Shop");
    chooseDb(1, "ShopTest");
    chooseObject(0, "Orders");
    chooseObject(1, "Orders");
  }

  // GetA that returns `value`, and GetB.
  static std::string procedures(const std::string& value) {
    return "CREATE PROCEDURE GetA AS SELECT " + value + "\nGO\nCREATE PROCEDURE GetB AS SELECT 1\n";
  }

  // Presses a button that ends in a report window and gives its text.
  std::string reportOf(Button& button) {
    std::string report;
    host.windows.push_back([&](Form& shown) { report = dynamic_cast<frmReport&>(shown).txtReport.givenText(); });
    button.personClicks();
    EXPECT_FALSE(work.mblnBusy);
    return report;
  }

  // The background behind a word of a pane; white when it has none.
  std::uint32_t colourBehind(int side, const std::string& word) const {
    const TextPane& pane = work.txtTXProc[static_cast<std::size_t>(side)];
    const std::size_t at = pane.text().find(word);
    EXPECT_NE(at, std::string::npos) << word << " in " << pane.text();
    for (const TextPane::Range& range : pane.backgrounds())
      if (at >= range.start && at < range.start + range.length) return range.colour;
    return 0xFFFFFF;
  }

  // Compares all tables and procedures: ticks the types, and is in the window `atStart` before the run.
  void compareAll(const std::function<void(frmCompareAll&)>& atStart) {
    host.windows.push_back([atStart](Form& shown) {
      auto& window = dynamic_cast<frmCompareAll&>(shown);
      for (std::size_t type = 2; type < 8; ++type) window.parts.chkObjType[type].setChecked(false);
      atStart(window);
      window.parts.cmdCompare.personClicks();
    });
    form.cmdCompareAll.personClicks();
  }
};

TEST_F(Comparing, APairShowsItsVerdictAndItsMarks) {
  const std::string head = "Source: One.Shop.Orders\r\nTarget: Two.ShopTest.Orders\r\n\r\nThe selected tables are ";
  EXPECT_EQ(reportOf(form.cmdCompare), head + "different.");
  EXPECT_EQ(colourBehind(0, "[Id]"), GetMarkColor(markUnchanged));
  EXPECT_EQ(colourBehind(0, "[Gone]"), GetMarkColor(markOnlyInSource));
  EXPECT_EQ(colourBehind(0, "[Note]"), GetMarkColor(markChanged));
  EXPECT_EQ(colourBehind(1, "[Note]"), GetMarkColor(markChanged));
  EXPECT_EQ(colourBehind(1, "[Paid]"), GetMarkColor(markOnlyInTarget));

  // Each side has its own list of columns that don't count; the panes go on showing them.
  program.state<IgnoredColumnsSource>().lookUp = [](IgnoredList, const tServer& server, const std::string& db,
                                                    const std::string& table) -> std::vector<std::string> {
    const std::string name = server.Name + "." + db + "." + table;
    if (name == "One.Shop.Orders") return {"gone", "note"};
    if (name == "Two.ShopTest.Orders") return {"note", "paid"};
    return {};
  };
  program.settings.IgnoreColSeq = false;
  EXPECT_EQ(reportOf(form.cmdCompare),
            head + "identical.\r\n\r\nPlease note that some columns were ignored during comparison.");
  EXPECT_NE(text(1).find("[Paid]"), std::string::npos);

  chooseType(objProcedures);
  chooseObject(0, "GetA");
  chooseObject(1, "GetA");
  work.mblnBusy = true;
  form.cmdCompare.personClicks();  // busy
  work.mblnBusy = false;
  EXPECT_NE(reportOf(form.cmdCompare).find("procedures are different."), std::string::npos);
  for (TextPane& pane : work.txtTXProc) pane.setSelection(0, std::string("CREATE PROCEDURE").size());
  host.windows.push_back([](Form& shown) {
    EXPECT_NE(dynamic_cast<frmReport&>(shown).txtReport.text().find("are identical."), std::string::npos);
  });
  form.CompareHighlightedSections();
}

TEST_F(Comparing, OfDataAsksForItsOptionsWhileShiftIsHeld) {
  set("ShowDataCompOpt", 0);
  host.answers = {Answer::Yes, Answer::Yes};
  host.shift = true;
  host.windows.push_back([](Form& options) { options.personPressesEsc(); });
  form.cmdCompData.personClicks();
  EXPECT_EQ(host.shown, std::vector<std::string>{"frmCompareDataOptions"});
  host.shift = false;
  host.shown.clear();
  host.windows.push_back([](Form&) {});
  form.cmdCompData.personClicks();
  EXPECT_EQ(host.shown.front(), "frmCompareStatus") << "only this once";
}

TEST_F(Comparing, APrintRunPrintsThePairThatDiffersUnderItsNames) {
  program.state<PrintRunState>().gblnCompareAndPrint = true;
  form.cmdCompare.personClicks();
  ASSERT_EQ(host.printed.size(), 2U);
  EXPECT_EQ(host.printed[0].header, "Source: Orders (Database: Shop, Server: One)");
  EXPECT_EQ(host.printed[1].header, "Target: Orders (Database: ShopTest, Server: Two)");
  EXPECT_EQ(host.printed[1].title, "Quorrel");
  EXPECT_EQ(host.printed[1].name, "Orders (Two, ShopTest)");
  EXPECT_TRUE(host.printed[1].pageNumbers);
  // The colours of the pane's lines, one each.
  std::set<std::uint32_t> colours(host.printed[1].lineColours.begin(), host.printed[1].lineColours.end());
  EXPECT_EQ(host.printed[1].lineColours.size(), work.txtTXProc[1].lineCount());
  EXPECT_TRUE(colours.count(GetMarkColor(markUnchanged)) && colours.size() > 1);
  EXPECT_NE(host.printed[1].text.find("[Paid]"), std::string::npos);
  host.printed.clear();
  work.txtTXProc[1].setText(work.txtTXProc[0].text());
  form.cmdCompare.personClicks();
  EXPECT_TRUE(host.printed.empty()) << "identical";
  work.txtTXProc[1].setText("  ");
  form.PrintStructure(1, true, "");
  EXPECT_TRUE(host.boxes.empty()) << "silent";
  form.PrintStructure(1, false, "");
  EXPECT_EQ(lastBox(), "Cannot continue - there is no structure displayed for selected table.");
}

// The pane's rows as line numbers from 1 on, "." an empty place, "!" behind what has a colour.
std::string rowsOf(const TextPane& pane) {
  std::string text;
  for (const TextPane::Row& row : pane.rows())
    text += (row.line < 0 ? "." : std::to_string(row.line + 1)) + (row.line < 0 || row.colour == 0xFFFFFF ? "" : "!");
  return text;
}

TEST_F(Comparing, TextsThatDifferStandSideBySideWhenAskedTo) {
  TextPane& source = work.txtTXProc[0];
  TextPane& target = work.txtTXProc[1];
  const auto compare = [&](const char* first, const char* second) {
    source.setText(first);
    target.setText(second);
    host.windows.push_back([](Form&) {});
    form.cmdCompare.personClicks();
  };
  EXPECT_FALSE(form.chkAligned.checked()) << "at first";
  compare("[a] int\n[b] int", "[x] int\n[a] int\n[B] int");
  EXPECT_EQ(rowsOf(source), "") << "not asked for";
  const std::vector<TextPane::Range> marks = target.backgrounds();
  form.chkAligned.personSets(true);
  EXPECT_EQ(rowsOf(source), ".12!");
  EXPECT_EQ(rowsOf(target), "1!23!");
  set("CaseSensitive", 0);
  form.AlignPanes();
  EXPECT_EQ(source.rows()[2].colour, target.rows()[2].colour);
  EXPECT_NE(source.rows()[2].colour, GetMarkColor(markChanged)) << "only in what doesn't count";
  EXPECT_EQ(target.backgrounds().size(), marks.size());
  EXPECT_EQ(target.text(), "[x] int\n[a] int\n[B] int");

  target.personScrolls(2);
  EXPECT_EQ(source.topLine(), 2U) << "row by row";
  source.setTopLine(0);
  EXPECT_EQ(source.topLine(), 1U) << "the row that shows the line";
  form.PrintStructure(0, false, "");
  EXPECT_EQ(host.printed.back().text, "\n[a] int\n[b] int");
  EXPECT_EQ(host.printed.back().lineColours.size(), 3U);

  target.setText("other");
  EXPECT_TRUE(source.rows().empty()) << "nothing to stand beside";
  compare("a", "b");
  EXPECT_EQ(rowsOf(source), "1!.");
  compare("a", "a");
  EXPECT_TRUE(source.rows().empty() && target.rows().empty());
  EXPECT_TRUE(frmMain(program).chkAligned.checked()) << "kept";
}

TEST_F(Comparing, AWholeDatabaseStopsAtCancelWithoutAReport) {
  // Time passes at each object, so that the run has occasion to listen.
  struct Clock : ControlObserver {
    explicit Clock(ScriptedHost& scripted) : host(scripted) {}
    void controlChanged(Control&) override { host.tickCount += 50; }
    ScriptedHost& host;
  } clock(host);
  int yields = 0;
  compareAll([&](frmCompareAll& window) {
    window.parts.lblCurProcName.observer = &clock;
    host.onDoEvents = [&] {
      form.cmdCompare.personClicks();
      form.cmdCompareAll.personClicks();
      if (++yields == 2) window.personPressesEsc();
    };
  });
  host.onDoEvents = nullptr;
  EXPECT_GE(yields, 2);
  EXPECT_EQ(host.shown, std::vector<std::string>{"frmCompareAll"});
  EXPECT_FALSE(work.mblnBusy);
}

TEST_F(Comparing, AWholeDatabaseEndsWithAReportToCopyAndToSave) {
  const std::string path = (folder.path() / "all.txt").string();
  host.files = {path};
  std::string report;
  const auto useReport = [&](Form& shown) {
    auto& window = dynamic_cast<frmReport&>(shown);
    report = window.txtReport.givenText();
    window.cmdCopyClip.personClicks();
    window.cmdCopyToFile.personClicks();
    window.cmdSave.personClicks();
  };
  compareAll([&](frmCompareAll&) {
    host.windows.push_back(useReport);
    host.windows.push_back(personSavesAs("all"));
  });
  for (const char* part : {"Source database One.Shop\r\nTarget database Two.ShopTest\r\n", "\tParcels\r\n",
                           "\tGetA\r\n", "One procedure [GetB] has identical structure in both databases."})
    EXPECT_NE(report.find(part), std::string::npos) << part << " in " << report;
  EXPECT_NE(host.clipboard.find("\tParcels\r\n"), std::string::npos);
  EXPECT_NE(files::readWholeFile(path).find("Parcels"), std::string::npos);
  tSavedProcess saved = GetSavedProcessDetails(program, "all");
  EXPECT_EQ(saved.strServer2 + "." + saved.strDb2 + " " + saved.strEncObjTypes, "Two.ShopTest 1,1,0,0,0,0,0,0");
  EXPECT_EQ((std::vector<std::int32_t>{saved.lngCompType, saved.lngCompSubType, saved.lngCompSubSubType}),
            (std::vector<std::int32_t>{1, 10, 0}));

  // A selection of one type, with its details.
  host.windows.push_back([](Form& shown) {
    auto& list = dynamic_cast<frmListObjects&>(shown);
    list.pvlSqlObj[0].personTicks(0, true);
    list.cmdOK.personClicks();
  });
  host.windows.push_back([](Form&) {});
  host.windows.push_back([](Form& shown) { dynamic_cast<frmReport&>(shown).cmdSave.personClicks(); });
  host.windows.push_back(personSavesAs("selection"));
  form.CompStruct_BulkSel_SimpleDet_All(1, true, true);
  saved = GetSavedProcessDetails(program, "selection");
  EXPECT_EQ((std::vector<std::int32_t>{saved.lngCompType, saved.lngCompSubType, saved.lngCompSubSubType}),
            (std::vector<std::int32_t>{1, 30, 40}));
  EXPECT_EQ(saved.arrSource, std::vector<std::string>{"GetA"});
  EXPECT_EQ(saved.lngSelCountTarget, 1);
}

TEST_F(Comparing, EachSideCopiesItsOwnPane) {
  form.cmdCopyClip[1].personClicks();
  EXPECT_NE(host.clipboard.find("[Paid]"), std::string::npos);
  host.files = {(folder.path() / "left.txt").string()};
  form.cmdCopyToFile[0].personClicks();
  EXPECT_NE(files::readWholeFile((folder.path() / "left.txt").string()).find("[Gone]"), std::string::npos);
}

}  // namespace
}  // namespace qrel
