// The comparison of the selected pair: its verdicts, its report, what it asks of its surroundings.
#include <gtest/gtest.h>

#include <algorithm>

#include "app/Workspace.h"
#include "compare/structure/modCompareObjects.h"
#include "compare/structure/modCompareSelected.h"
#include "compare/structure/modMarkDifferences.h"
#include "db/mdlObjects.h"
#include "db/mdlQueryCode.h"
#include "tests/support.h"

namespace qrel {
namespace {

class SelectedPair : public testing::Test, public PairComparisonSteps, public ControlObserver {
 protected:
  SelectedPair() {
    program.settings.IgnoreWhitespace = program.settings.IgnoreComments = program.settings.IgnoreColSeq = false;
    const char* const servers[] = {"One", "Two"};
    const char* const databases[] = {"Shop", "ShopTest"};
    for (std::size_t side = 0; side < 2; ++side) {
      program.main.gtypSelServ[side].Name = servers[side];
      workspace.pvlDb[side].add(databases[side]);
      workspace.pvlDb[side].select(0);
      workspace.pvlSqlObj[side].add("Orders");
      workspace.pvlSqlObj[side].select(0);
    }
  }

  bool CanStartComparison() override { return canStart; }
  // A pane changes while two are compared: it gets its colours.
  void controlChanged(Control&) override {
    EXPECT_TRUE(workspace.mblnBusy);
    EXPECT_EQ(test.host.pointer(), Pointer::Hourglass);
  }
  void ShowReport(const PairReport& shownReport) override {
    report = shownReport;
    text = program.report.gstrReportText;
    EXPECT_EQ(test.host.pointer(), Pointer::Default);
  }
  bool printRunInProgress() override { return printing; }
  void PrintPane(const std::string& heading, TextPane& pane) override { printed += heading + pane.text() + "|"; }

  void compare(long type, const std::string& source, const std::string& target) {
    workspace.cmbType.clear();
    workspace.cmbType.add("type", type);
    workspace.cmbType.select(0);
    workspace.txtTXProc[0].setText(source);
    workspace.txtTXProc[1].setText(target);
    text.clear();
    report = {};
    for (TextPane& pane : workspace.txtTXProc) pane.observer = this;
    CompareSelProcs(program, workspace, *this, false, "", "");
    for (TextPane& pane : workspace.txtTXProc) pane.observer = nullptr;
    EXPECT_FALSE(workspace.mblnBusy);
    EXPECT_EQ(test.host.pointer(), Pointer::Default);
    EXPECT_EQ(program.report.gstrReportText, "");
  }
  bool identical() const { return text.find("are identical.") != std::string::npos; }
  // The marks of a side's lines as the report has them, "40 10 "; "!" for a line whose pane is painted otherwise.
  std::string marks(std::size_t side) const {
    std::string all;
    for (const CompLine& line : report.arrLines[side]) {
      all += std::to_string(line.lngMark) + " ";
      const auto& painted = workspace.txtTXProc[side].backgrounds();
      if (std::none_of(painted.begin(), painted.end(), [&](const TextPane::Range& range) {
            return range.start == static_cast<std::size_t>(line.lngStart) && range.colour == GetMarkColor(line.lngMark);
          }))
        all += "! ";
    }
    return all;
  }

  TestProgram test;
  Program& program = test.program;
  Workspace workspace;
  PairReport report;
  std::string text, printed;
  bool canStart = true, printing = false;
};

TEST_F(SelectedPair, GoesThroughTheTestsFromStrictToForgiving) {
  enum Settings { none = 0, anyCase = 1, whitespace = 2, comments = 4, order = 8 };
  struct Case {
    long type;
    int settings;
    const char* source;
    const char* target;
    bool same;
  };
  const Case cases[] = {
      {objViews, none, " a b ", "a b", true},
      {objViews, none, "a b", "a  b", false},
      {objViews, none, "a\nb", "a\r\nb", false},  // the texts as they were put in
      {objViews, order, "a\nb", "a\r\nb", true},  // the panes' lines
      {objFunctions, none, "CREATE /* a VIEW dbo.x */ AS", "CREATE /* a VIEW x */ AS", false},
      {objViews, anyCase, "select A", "select a", false},
      {objTables, anyCase, "select A", "select a", false},
      {objProcedures, anyCase, "select A", "select a", true},
      {objViews, anyCase | whitespace, "select A", "select\ta", true},
      {objProcedures, none, "CREATE PROCEDURE dbo.p\r\nAS", "CREATE PROCEDURE p\r\nAS", true},
      {objProcedures, none, "create procedure [x].Dbo.p\r\nAS", "create procedure [x].p\r\nAS", true},
      {objProcedures, none, "CREATE PROCEDURE fred.p\r\nAS", "CREATE PROCEDURE p\r\nAS", false},
      {objProcedures, none, "CREATE PROCEDURE p\r\nFROM dbo.t", "CREATE PROCEDURE p\r\nFROM t", false},
      {objFunctions, none, "CREATE PROCEDURE dbo.p", "CREATE PROCEDURE p", false},
      {objProcedures, none, "CREATE PROCEDURE dbo.p \tAS", "CREATE PROCEDURE p AS", false},
      {objProcedures, whitespace, "CREATE PROCEDURE dbo.p \tAS", "CREATE PROCEDURE p AS", true},
      {objProcedures, none, "a --x\r\nb", "a --y\r\nb", false},
      {objProcedures, comments, "a --x\r\nb", "a --y\r\nb", true},
      {objProcedures, comments, "a '--x'\r\nb", "a '--y'\r\nb", true},
      {objProcedures, comments, "a /*x\r\n*/ b", "a /*y\r\n*/ b", false},  // a line at a time
      {objViews, comments, "a --x\r\nb", "a --y\r\nb", false},
      {objProcedures, comments, "a\r\n\r\nb", "a\r\nb", false},
      {objProcedures, whitespace, "a\r\n\r\nb", "a\r\nb", true},
      {objProcedures, order, "a\r\nb\r\nc", "b\r\na\r\nc", true},
      {objProcedures, none, "a\r\nb\r\nc", "b\r\na\r\nc", false},
      {objViews, none, "CREATE VIEW dbo.v AS\nx", "CREATE VIEW [v]\nAS\nx", true},
      {objViews, none, "CREATE VIEW dbo.v AS\nx", "CREATE VIEW [v]\nAS\ny", false},
      {objTables, whitespace, "CREATE VIEW dbo.v AS\nx", "CREATE VIEW [v]\nAS\nx", false},
      {objTables, whitespace | order, "", "a", false},
  };
  for (const Case& each : cases) {
    program.settings.CaseSensitive = !(each.settings & anyCase);
    program.settings.IgnoreWhitespace = each.settings & whitespace;
    program.settings.IgnoreComments = each.settings & comments;
    program.settings.IgnoreColSeq = each.settings & order;
    compare(each.type, each.source, each.target);
    EXPECT_EQ(identical(), each.same) << each.type << " with " << each.settings << ": " << each.source << " and "
                                      << each.target;
    EXPECT_EQ(report.blnIdentical, each.same) << each.source;
    EXPECT_TRUE(!each.same || marks(0) + marks(1) == "") << each.source;
  }
}

TEST_F(SelectedPair, MarksThePanesOfAPairThatDiffersByItsType) {
  program.settings.IgnoreColSeq = false;
  const std::string source = "[a] int\r\n[b] int\r\n[c] int", target = "[b] int\r\n[a] bit\r\n[d] int";
  compare(objTables, source, target);
  EXPECT_EQ(marks(0) + "| " + marks(1), "20 10 40 | 10 20 30 ") << "columns by their names";
  compare(objViews, source, target);
  EXPECT_EQ(marks(0) + "| " + marks(1), "40 10 20 | 10 20 30 ") << "lines side by side";
  compare(objViews, source, source);
  EXPECT_EQ(marks(0) + marks(1), "");
}

TEST_F(SelectedPair, ReportsTheVerdictWithItsNotes) {
  const std::string names = "Source: One.Shop.Orders\r\nTarget: Two.ShopTest.Orders\r\n\r\n";
  const std::string orderNote = "\r\n\r\nPlease note that option 'Ignore Columns Order' is set ON.";

  compare(objTriggers, "a", "b");
  EXPECT_EQ(text, names + "The selected triggers are different.");
  EXPECT_EQ(report.strTitle, "Comparison Report");
  EXPECT_EQ(report.arrServers[1], "Two");
  EXPECT_EQ(report.arrDatabases[0], "Shop");
  EXPECT_EQ(report.arrObjects[1], "Orders");
  EXPECT_EQ(report.intCompSubType, 35);
  EXPECT_EQ(report.strObjectTypes, "0,0,0,0,1,0,0,0");

  program.settings.IgnoreColSeq = true;
  compare(objTables, "a", "a");
  EXPECT_EQ(text, names + "The selected tables are identical." + orderNote);
  EXPECT_EQ(report.strObjectTypes, "1,0,0,0,0,0,0,0");

  workspace.pvlSqlObj[0].clearSelection();
  compare(objViews, "", "b");
  EXPECT_EQ(text, "Source: One.Shop\r\nTarget: Two.ShopTest.Orders\r\n\r\nThe selected views are different.");
}

TEST_F(SelectedPair, PrintsInsteadOfReportingDuringAPrintRun) {
  printing = true;
  compare(objTables, "a", "b");
  EXPECT_EQ(printed, "Source: a|Target: b|");
  compare(objTables, "a", "a");
  EXPECT_EQ(printed, "Source: a|Target: b|") << "a pair that is identical isn't printed";
  EXPECT_EQ(text, "");
}

TEST_F(SelectedPair, ReadsATableWithIgnoredColumnsByItsId) {
  const std::string schemas = "CREATE SCHEMA s\nGO\nCREATE TABLE Orders (far int)\nCREATE TABLE s.Orders ";
  test.load("One", "Shop", schemas + "(a int, gone int)");
  test.load("Two", "ShopTest", schemas + "(a int)");
  program.state<IgnoredColumnsSource>().lookUp = [](IgnoredList, const tServer& server, const std::string&,
                                                    const std::string& table) {
    return server.Name == "One" && table == "s.Orders" ? std::vector<std::string>{"gone"} : std::vector<std::string>{};
  };
  for (std::size_t side = 0; side < 2; ++side) {
    auto& server = program.main.gtypSelServ[side];
    server = TestProgram::server(server.Name);
    CheckList& list = workspace.pvlSqlObj[side];
    LoadObjects(program, server, list, workspace.txtTXProc[side], objTables, side == 0 ? "Shop" : "ShopTest", false, "",
                static_cast<int>(side), false);
    list.select(1);
    ASSERT_EQ(list.cell(1, 0), "s.Orders");
  }
  compare(objTables, "[a] [int] NULL\r\n[gone] [int] NULL", "[a] [int] NULL");
  EXPECT_TRUE(identical()) << text;
  EXPECT_NE(text.find("some columns were ignored"), std::string::npos);
}

TEST_F(SelectedPair, StopsWithoutTextsAndSurvivesAnError) {
  compare(objTables, "  ", "");
  ASSERT_EQ(test.host.boxes.size(), 1u);
  EXPECT_EQ(test.host.boxes[0].text, "Cannot compare - the list of objects is empty.");
  EXPECT_EQ(test.host.boxes[0].title, "Cannot Compare");
  EXPECT_EQ(test.host.boxes[0].icon, Icon::Information);
  EXPECT_EQ(text, "");

  program.state<IgnoredColumnsSource>().lookUp = [](auto&&...) -> std::vector<std::string> {
    throw RuntimeError(5, "Invalid procedure call or argument");
  };
  test.host.windows.push_back([](Form&) {});
  compare(objTables, "a", "b");
  EXPECT_EQ(test.host.shown, std::vector<std::string>{"frmErrorReport"});
}

TEST_F(SelectedPair, ComparesTheHighlightedSections) {
  const std::string none = "Cannot continue - there is no structure displayed for selected object.";
  const std::string noSource =
      "Cannot continue - there is no highlighted section in Source object.\r\n\r\nPlease select some section in Source "
      "text first, then some section in Target, and then (immediately after highlighting Target) right click and "
      "select "
      "'Compare Highlighted Sections'.";
  const std::string noTarget = "Cannot continue - there is no highlighted section in Target object.";
  auto& [source, target] = workspace.txtTXProc;
  const auto run = [&] {
    test.host.boxes.clear();
    CompareHighlightedSections(program, workspace, *this);
    return test.host.boxes.empty() ? std::string() : test.host.boxes[0].text;
  };
  workspace.cmbType.add("Views", objViews);
  workspace.cmbType.select(0);
  source.setText("one two");
  target.setText("  ");
  EXPECT_EQ(run(), none);
  target.setText("two three");
  target.setSelection(0, 3);
  EXPECT_EQ(run(), noSource);
  EXPECT_EQ(test.host.boxes[0].title, "Compare Highlighted Sections");
  EXPECT_EQ(source.focusRequests(), 1u);
  source.setSelection(4, 3);
  target.setSelection(0, 0);
  EXPECT_EQ(run(), noTarget);
  EXPECT_EQ(target.focusRequests(), 1u);
  target.setSelection(0, 4);
  EXPECT_EQ(run(), "");
  EXPECT_FALSE(identical());  // "two" and "two ": the sections aren't trimmed
  target.setSelection(0, 3);
  EXPECT_EQ(run(), "");
  EXPECT_TRUE(identical());
  canStart = false;
  text.clear();
  EXPECT_EQ(run(), "");
  EXPECT_EQ(text, "");
}

TEST(ViewHeaders, TakeTheFormOfTheSourceWhenTheNamesAgree) {
  const std::string same = "no change";
  const std::string blanks(20, ' ');
  struct Case {
    std::string source, target, result;
  };
  const Case cases[] = {
      {"CREATE VIEW dbo.v AS\nx", "create view \"V\"\nas\ny", "CREATE VIEW dbo.v as\ny"},
      {"  CREATE VIEW [dbo].[vé]\nAS\nx", " CREATE VIEW dbo.vÉ AS\ny", "CREATE VIEW [dbo].[vé]\nAS\ny"},
      {"CREATE VIEW v AS x", "CREATE VIEW w AS x", same},
      {"CREATE VIEW v AS x", "CREATE VIEW v as y", same},  // upper-cased headers still differ
      {"CREATE  VIEW v AS x", "CREATE VIEW v AS y", "CREATE  VIEW v AS y"},
      {"CREATE VIEW\nv AS x", "CREATE VIEW v AS y", same},       // no " VIEW "
      {"CREATE VIEW v\r\nAS\r\nx", "CREATE VIEW v AS x", same},  // the CR stays with the name
      {"CREATE VIEW v" + blanks + " AS x", "CREATE VIEW v AS x", "CREATE VIEW v" + blanks + " AS x"},
      {"CREATE VIEW v" + blanks + "  AS x", "CREATE VIEW v AS x", same},  // 21 apart
      {"CREATE VIEW v" + std::string(490, ' ') + "AS x", "CREATE VIEW v AS x", same},
      // A line of its own ends the header even behind another AS, and that one before a line with CR.
      {"CREATE VIEW v AS [q]\nAS\nx", "CREATE VIEW v AS q\nAS\ny", "CREATE VIEW v AS [q]\nAS\ny"},
      {"CREATE VIEW v\r\nAS\r\nSELECT [b] AS a", "CREATE VIEW v\r\nAS\r\nSELECT b AS c",
       "CREATE VIEW v\r\nAS\r\nSELECT [b] AS c"},
  };
  TestProgram test;
  for (const Case& each : cases) {
    std::string source = each.source, target = each.target;
    AdjustCreateViewStatements(test.program, source, target);
    if (each.result == same) {
      EXPECT_EQ(source, each.source);
      EXPECT_EQ(target, each.target);
    } else {
      EXPECT_EQ(target, each.result) << each.source;
      EXPECT_EQ(source.front(), 'C');
    }
  }
}

}  // namespace
}  // namespace qrel
