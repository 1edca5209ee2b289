// A data comparison from the command to its last message: what is asked, told, shown and stopped.
#include <filesystem>

#include "app/settings.h"
#include "compare/data/frmCompareDataOptions.h"
#include "db/mdlObjects.h"
#include "tests/compare/data/twoTables.h"

namespace qrel {
namespace {

class DataDriver : public TwoTables {
 protected:
  DataDriver() {
    load(R"(CREATE TABLE t (Id int, b varchar(20), A varchar(20))
GO
INSERT t VALUES (1, 'one', 'x'), (2, 'two', 'x'), (3, 'three', 'x')
CREATE TABLE Same (Id int)
INSERT Same VALUES (1)
CREATE TABLE Less (Id int, Extra int)
INSERT Less VALUES (1, 5), (2, NULL)
)",
         R"(CREATE TABLE t (Id int, b varchar(20), A varchar(20))
GO
INSERT t VALUES (1, 'ONE', 'x'), (2, 'zwei', 'y'), (3, 'three', 'x'), (4, 'four', 'x')
CREATE TABLE Same (Id int)
INSERT Same VALUES (1)
CREATE TABLE Less (Other int, Id int, More int)
INSERT Less VALUES (1, 2, 3), (2, 4, 6)
)");
    program.settings.gblnDataCaseSensitive = true;
    SaveSetting(program, *findSetting("ShowDataCompOpt"), 0);
    workspace.cmbType.add("Tables", objTables);
    workspace.cmbType.add("Views", objViews);
    workspace.cmbType.select(0);
    for (TextPane& pane : workspace.txtTXProc) pane.setText("[Id] [int]");
  }

  void click(const std::string& table) {
    select(table);
    cmdCompData_Click(program, workspace);
  }
  // What happens in the next windows: the progress, then the differences.
  void expectProgress() {
    test.host.windows.push_back([](Form& form) { EXPECT_EQ(form.name, "frmCompareStatus"); });
  }
  void expectDifferences(std::function<void(frmCompareData&)> look) {
    test.host.windows.push_back([look = std::move(look)](Form& form) { look(dynamic_cast<frmCompareData&>(form)); });
  }
  tDataCompResult run(const tDataCompRequest& wanted) {
    tDataCompResult result;
    expectProgress();
    RunDataComparison(program, wanted, result);
    return result;
  }
  void ignore(const std::string& columns) { test.folder.write("qrel_ignored_cols_data.ini", "[S.A.t]\r\n" + columns); }
};

TEST_F(DataDriver, TheCommandAsksBeforeItCompares) {
  for (TextPane& pane : workspace.txtTXProc) pane.setText("  ");
  click("Same");
  EXPECT_EQ(boxes(), "Cannot compare - the list of objects is empty.");
  workspace.txtTXProc[1].setText("[Id] [bigint]");
  workspace.cmbType.select(1);
  click("Same");
  EXPECT_TRUE(
      boxes().starts_with("This functionality is enabled only when Tables are selected as active objects.\r\n"));
  workspace.cmbType.select(0);
  test.host.answers = {Answer::No};
  click("Same");
  EXPECT_EQ(boxes(), "Compared tables have different structures.\r\n\r\nDo you still want to compare them?");
  test.host.answers = {Answer::Yes};
  expectProgress();
  click("Same");
  EXPECT_TRUE(boxes().ends_with("Data stored in both tables is identical."));

  // With the options asked for, a person can leave it there.
  SaveSetting(program, *findSetting("ShowDataCompOpt"), 1);
  workspace.txtTXProc[0].setText(workspace.txtTXProc[1].text());
  test.host.windows.push_back([](Form& form) { dynamic_cast<frmCompareDataOptions&>(form).cmdCancel.personClicks(); });
  click("Same");
  EXPECT_EQ(boxes(), "");
}

TEST_F(DataDriver, TheTargetsStoredMethodWins) {
  test.folder.write("qrel_tables_comps.ini",
                    "[S.A.t]\r\nCompMethod=0\r\nPrimarySortKey=Id\r\n[S.B.t]\r\nCompMethod=1\r\nCompKey=Id\r\n");
  expectProgress();
  expectDifferences([](frmCompareData& form) {
    EXPECT_EQ(form.lblGen11.text(), "Comparison method: Primary Key \r\nSource PK: \r\nTarget PK: Id");
  });
  click("t");
  test.folder.write("qrel_tables_comps.ini", "[S.A.t]\r\nCompMethod=1\r\nCompKey=Id\r\n");
  expectProgress();
  expectDifferences(
      [](frmCompareData& form) { EXPECT_EQ(form.lblGen11.text(), "Comparison method: Record by Record"); });
  click("t");
}

TEST_F(DataDriver, WhatIsToldAtTheEnd) {
  select("t");
  tDataCompRequest wanted = request();
  wanted.blnDisplayDiffs = false;
  EXPECT_EQ(run(wanted).lngDiffs, 3);
  const std::string counts =
      "Number of records in first table: 3\r\nNumber of records in second table: 4\r\nNumber of different records: 3";
  EXPECT_EQ(boxes(), counts);
  ignore("0=b\r\n");
  wanted.blnSilent = true;
  EXPECT_EQ(run(wanted).strResult,
            "Number of records in first table: 3\r\nNumber of records in second table: 4\r\nNumber of different "
            "records: 2\r\nColumn ignored during comparison: Source - b");
  EXPECT_EQ(boxes(), "");
  test.folder.write("qrel_ignored_cols_data.ini", "[S.A.Same]\r\n0=q\r\n1=r\r\n[S.B.Same]\r\n0=s\r\n");
  select("Same");
  wanted = request();
  EXPECT_TRUE(run(wanted).blnIdentical);
  EXPECT_EQ(boxes(),
            "Data stored in both tables is identical.\r\nColumns ignored during comparison: Source - q,r Target - s");
  EXPECT_EQ(state.differences, nullptr);
}

TEST_F(DataDriver, TheLimitIsToldOnceItIsPassed) {
  select("t");
  for (const int limit : {3, 2}) {
    program.settings.glngMaxRowsInDiffTable = limit;
    expectProgress();
    expectDifferences([limit](frmCompareData& form) {
      EXPECT_EQ(form.lblMaxRows.visible(), limit == 2);
      EXPECT_EQ(form.lblStats[3].text() + form.lblStats[4].text() + form.lblStats[5].text(), "343");
      EXPECT_EQ(form.lblTableName[1].text(), "Target Table: t (Database: B, Server: S)");
    });
    tDataCompResult result;
    RunDataComparison(program, request(), result);
    const std::string told = boxes();
    EXPECT_EQ(told.empty(), limit == 3) << told;
    EXPECT_EQ(told.find("There are 3 differences found by the program.\r\n\r\n") != std::string::npos, limit == 2);
  }
}

TEST_F(DataDriver, ATargetWithoutAColumnOfTheSourceIsReadWithItsOwn) {
  select("Less");
  expectProgress();
  expectDifferences([](frmCompareData& form) {
    // Id, Extra against Other, Id: by place.
    EXPECT_EQ(form.VSFlexGrid1.text(1, 2), "5");
    EXPECT_EQ(form.VSFlexGrid1.text(2, 2), "2");
  });
  tDataCompResult result;
  RunDataComparison(program, request(), result);
  EXPECT_EQ(result.lngDiffs, 2);
}

TEST_F(DataDriver, TheDifferencesWindow) {
  ignore("0=Id\r\n");
  select("t");
  tDataCompRequest wanted = request({"b", "A"});
  expectProgress();
  expectDifferences([this](frmCompareData& form) {
    EXPECT_EQ(form.caption, "Differences between data in tables 't' and 't'");
    EXPECT_EQ(form.lblGen11.text(), "Comparison method: Primary Key \r\nSource PK: b, A\r\nTarget PK: b, A");
    EXPECT_EQ(form.lblGen0.text(), "Ignored Column: Id");
    EXPECT_TRUE(form.lblGen0.visible());
    EXPECT_EQ(form.lblColorDesc[3].text(), "Records present in Target Table but not in Source Table");
    EXPECT_EQ(form.lblColor[3].backColour, 0xC0E0FFU);
    const auto header = [&] {
      std::string names;
      for (std::size_t column = 0; column < 3; ++column)
        names.append(column > 0 ? "," : "").append(form.VSFlexGrid1.text(0, column));
      return names;
    };
    EXPECT_EQ(header(), "Row,b,A");
    const std::string row(form.VSFlexGrid1.text(1, 1));
    test.host.menuChoices = {1};
    form.VSFlexGrid1.onMouseUp(2);
    EXPECT_EQ(test.host.menus.back().front().caption, "Sort Columns");
    EXPECT_EQ(header(), "A,Row,b");
    EXPECT_EQ(form.VSFlexGrid1.text(1, 2), row);
  });
  tDataCompResult result;
  RunDataComparison(program, wanted, result);
}

// Stopped at every phase in turn: the phase is known by what the progress window says.
TEST_F(DataDriver, StopEndsItAtAnyPhase) {
  struct Phase {
    std::string status;  // empty: the walk
    std::string count1, count2;
  };
  for (const Phase& phase : std::vector<Phase>{{"Counting records in first table...", "Counting...", "N/A"},
                                               {"Counting records in second table...", "3", "Counting..."},
                                               {"Getting data from first table...", "3", "4"},
                                               {"Getting data from second table...", "3", "4"},
                                               {"", "3", "4"}}) {
    for (const bool byKey : {false, true}) {
      SCOPED_TRACE(phase.status);
      select("t");
      frmCompareStatus status(program);
      bool seen = false;
      test.host.onDoEvents = [&] {
        if (seen || status.lblStatus.visible() == phase.status.empty()) return;
        if (!phase.status.empty() && status.lblStatus.text() != phase.status) return;
        seen = true;
        EXPECT_EQ(status.lblRecsCount1.text(), phase.count1);
        EXPECT_EQ(status.lblRecsCount2.text(), phase.count2);
        EXPECT_EQ(status.ProgressBar.visible(), phase.status.empty());
        status.cmdStop.personClicks();
      };
      expectProgress();
      tDataCompResult result;
      status.ShowUp(request(byKey ? std::vector<std::string>{"Id"} : std::vector<std::string>{}), result);
      test.host.onDoEvents = nullptr;
      EXPECT_TRUE(seen);
      EXPECT_TRUE(state.gblnStopComparison);
      EXPECT_FALSE(result.blnIdentical);
      EXPECT_EQ(boxes(), "");
      state.differences.reset();
    }
  }
  bool stopped = false;
  test.host.onDoEvents = [&] {
    state.gblnStopComparison = state.gblnStopComparison || !stopped;
    stopped = true;
  };
  run(request());
  EXPECT_EQ(boxes(), "Operation cancelled by the user.");
  EXPECT_FALSE(state.gblnStopComparison);
}

// The table changes, then goes, between the count and the fetch.
TEST_F(DataDriver, ATableThatChangesMeanwhileIsTold) {
  for (const std::string change : {"ALTER TABLE t ADD More int", "DROP TABLE t"}) {
    SCOPED_TRACE(change);
    const bool drops = change.starts_with("DROP");
    select("t");
    frmCompareStatus status(program);
    bool done = false;
    test.host.onDoEvents = [&] {
      if (done || status.lblStatus.text() != "Getting data from first table...") return;
      done = true;
      for (const char* database : {"A", "B"}) {
        const auto file = test.folder.write("change.sql", change);
        EXPECT_TRUE(loadScripts(test.servers, "S", database, {file}, {}).failed.empty());
      }
    };
    std::string report;
    if (drops)
      test.host.windows.push_back([&](Form& form) {
        for (Control* control : form.controls())
          if (const auto* box = dynamic_cast<TextBox*>(control)) report += box->text();
      });
    expectProgress();  // its run comes before what a person does in it
    tDataCompResult result;
    status.ShowUp(request(), result);
    test.host.onDoEvents = nullptr;
    EXPECT_FALSE(result.blnIdentical);
    EXPECT_EQ(result.lngDiffs, drops ? 0 : 3);
    EXPECT_EQ(state.lngEnd, drops ? DataCompEnd::NotRead : DataCompEnd::Done);
    EXPECT_EQ(report.find("Invalid object name") != std::string::npos, drops) << report;
    state.differences.reset();
  }
}

TEST_F(DataDriver, AFileThatIsCutShortIsTold) {
  std::string rows = "CREATE TABLE Big (Id int, Words varchar(200))\nGO\n";
  for (int i = 0; i < 40; ++i) {
    rows += "INSERT Big VALUES ";
    for (int j = 0; j < 100; ++j)
      rows += (j == 0 ? "(" : ", (") + std::to_string(i * 100 + j) + ", '" + std::string(180, 'x') + "')";
    rows += "\nGO\n";
  }
  load(rows, rows);
  for (const bool byKey : {false, true}) {
    select("Big");
    frmCompareStatus status(program);
    const auto file = test.folder.path() / "servers" / "S" / "B.mdf";
    const auto size = std::filesystem::file_size(file);
    std::filesystem::copy_file(file, test.folder.path() / "kept");
    bool cut = false;
    test.host.onDoEvents = [&] {
      if (cut || status.lblStatus.text() != "Getting data from second table...") return;
      cut = true;
      std::filesystem::resize_file(file, size / 2);
    };
    test.host.windows.push_back([](Form&) {});
    for (int i = 0; i < 8; ++i) test.host.windows.push_back([](Form&) {});
    tDataCompResult result;
    status.ShowUp(request(byKey ? std::vector<std::string>{"Id"} : std::vector<std::string>{}), result);
    test.host.onDoEvents = nullptr;
    EXPECT_TRUE(cut);
    EXPECT_FALSE(result.blnIdentical);
    const bool told = test.host.windows.size() < 8 || boxes().starts_with("Error occured while comparing records.");
    EXPECT_TRUE(told);
    EXPECT_NE(state.lngEnd, DataCompEnd::Done);
    test.host.windows.clear();
    state.differences.reset();
    std::filesystem::rename(test.folder.path() / "kept", file);
  }
}

}  // namespace
}  // namespace qrel
