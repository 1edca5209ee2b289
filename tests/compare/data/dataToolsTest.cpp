// The windows over the records of one table: Data Analyzer and data viewer.
#include <random>

#include "app/mdlMain.h"
#include "app/shellSort.h"
#include "compare/data/dataValues.h"
#include "compare/data/frmDataAnalyze.h"
#include "compare/data/frmDataView.h"
#include "compare/structure/frmIgnoreColumnsAdd.h"
#include "compare/structure/modIgnoreColumns.h"
#include "report/frmExport.h"
#include "tests/db/scriptedServer.h"

namespace qrel {
namespace {

class DataTools : public ::testing::Test {
 protected:
  DataTools() {
    SetFilePaths(program);
    ConnectIgnoredColumns(program);
    program.main.gtypSelServ = {ScriptedServer::record(), ScriptedServer::record()};
    // v has a once, b twice, c once, d three times, e twice, and they come in this order.
    test.load("S", "A",
              "CREATE TABLE t (v varchar(5), n varchar(10), k int)\n"
              "CREATE TABLE none (v int)\n"
              "INSERT t VALUES ('a', NULL, NULL), ('b', 'Null', NULL), ('c', 'x', NULL), ('d', 'X', NULL),"
              " ('e', 'x ', NULL), ('b', NULL, NULL), ('d', 'x', NULL), ('d', 'x', NULL), ('e', 'x', NULL)\n");
  }
  void analyze(const std::function<void(frmDataAnalyze&)>& person, const char* table = "t") {
    frmDataAnalyze window(program);
    test.host.windows.push_front([&](Form&) { person(window); });
    window.ShowUp("[" + std::string(table) + "]", table, "A", 1, 0);
    if (test.host.shown.empty() || test.host.shown.back() != window.name) test.host.windows.clear();
  }
  void view(const std::function<void(frmDataView&)>& person, const char* table = "t") {
    frmDataView window(program);
    test.host.windows.push_front([&](Form&) { person(window); });
    onView(window);
    window.ShowUp("[" + std::string(table) + "]", table, "A", 0, 0);
    if (test.host.shown.empty() || test.host.shown.back() != window.name) test.host.windows.clear();
  }
  std::function<void(frmDataView&)> onView = [](frmDataView&) {};  // before it opens

  // A row without its empty end.
  static std::string row(const Grid& grid, std::size_t number) {
    std::string text;
    for (std::size_t column = 0; column < grid.columnCount(); ++column)
      text.append(column > 0 ? "|" : "").append(grid.text(number, column));
    return text.substr(0, text.find_last_not_of('|') + 1);
  }
  static std::string rows(const Grid& grid) {
    std::string text;
    for (std::size_t number = 1; number < grid.rowCount(); ++number)
      text += (number > 1 ? "\n" : "") + row(grid, number);
    return text;
  }
  std::string boxes() {
    std::string text;
    for (const auto& box : test.host.boxes) {
      static const char* const icons[] = {"plain", "info", "question", "warning", "critical"};
      text += std::string(text.empty() ? "" : "\n") + icons[static_cast<std::size_t>(box.icon)] + "|" + box.title +
              "|" + box.text;
    }
    test.host.boxes.clear();
    return text;
  }

  ScriptedServer test;
  Program& program = test.program;
};

constexpr const char* allOfT =
    "v|varchar (5)|5|d|3|e|2|b|2|a|1|c|1\n"
    "n|varchar (10)|4|x|4|Null|3|X|1|x |1\n"
    "k|int|1|Null|9";

TEST_F(DataTools, ValuesAreCountedAndSortedAsTheyAlwaysWere) {
  analyze([&](frmDataAnalyze& window) {
    EXPECT_EQ(window.caption, "Data Analyzer     Table: t (Database: A, Server: S)");
    EXPECT_EQ(window.lblGen3.text() + "," + window.lblGen2.text() + "," + window.lblGen9.text(), "9,3,0");
    EXPECT_EQ(program.state<GridRefreshState>().glngGridRefreshMode, 1);
    const ReportControl& report = window.rpcReport;
    ASSERT_EQ(report.columnCount(), 23U);
    EXPECT_EQ(std::string(report.caption(2)) + "," + std::string(report.caption(3)) + "," +
                  std::string(report.caption(21)) + "," + std::string(report.caption(22)),
              "Unique Values,Value 1,Value 10,Count");
    window.personPressesKey("F5");
    EXPECT_EQ(rows(report), allOfT);
    EXPECT_EQ(report.backColour(1, 3), 0xC0FFFFU);
    EXPECT_EQ(report.backColour(1, 6), 0xFFFFC0U);
    EXPECT_EQ(report.backColour(3, 5), Grid::noColour);
    EXPECT_EQ(window.prbColumns.value(), 100);
    EXPECT_EQ(window.lblGen0.text(), "None");
    EXPECT_EQ(window.cmdExit.focusRequests(), 1U);
    window.rdbFrequency[1].choose();
    window.fedRecsToAnalyze.personTypes(" 4 ");
    test.said();
    window.cmdStart.personClicks();
    EXPECT_EQ(rows(report),
              "v|varchar (5)|4|a|1|b|1|c|1|d|1\n"
              "n|varchar (10)|3|x|1|X|1|Null|2\n"
              "k|int|1|Null|4");
    EXPECT_NE(test.said().find("A: SELECT TOP 4 [v] FROM [t]\n"), std::string::npos);
  });
  EXPECT_EQ(program.state<GridRefreshState>().glngGridRefreshMode, 0);
  EXPECT_EQ(boxes(), "");
}

TEST_F(DataTools, HowManyRecordsAreAnalyzed) {
  const struct {
    const char* typed;
    const char* shown;
    const char* count;  // of k's Nulls
  } cases[] = {{"", "9", "9"},  {"x", "9", "9"},   {"0", "9", "9"},  {"-3", "9", "9"},
               {"9", "9", "9"}, {"10", "9", "9"},  {"8", "8", "8"},  {"9999999999", "9", "9"},
               {"1", "1", "1"}, {"0.4", "9", "9"}, {"2.6", "3", "3"}};
  analyze([&](frmDataAnalyze& window) {
    for (const auto& each : cases) {
      window.fedRecsToAnalyze.personTypes(each.typed);
      window.cmdStart.personClicks();
      EXPECT_EQ(window.fedRecsToAnalyze.text(), each.shown) << each.typed;
      EXPECT_EQ(window.rpcReport.text(3, 4), each.count) << each.typed;
    }
  });
}

TEST_F(DataTools, TablesWithoutRecordsOpenNoWindow) {
  for (const bool analyzer : {true, false})
    for (const char* table : {"none", "gone"}) {
      const auto never = [](Form&) { ADD_FAILURE() << "a window"; };
      if (analyzer)
        analyze(never, table);
      else
        view(never, table);
      const std::string told = boxes();
      EXPECT_EQ(told.substr(told.rfind('\n') + 1),
                std::string(table) == "none"
                    ? "info|View Data|Table none (Database: A, Server: S) doesn't contain any data."
                    : "warning|View Data|Error while reading data from table gone (Database: A, Server: S).");
    }
  EXPECT_TRUE(test.host.shown.empty());
}

TEST_F(DataTools, IgnoredColumnsTakeNoPart) {
  analyze([&](frmDataAnalyze& window) {
    test.host.windows.push_back([](Form& form) {
      auto& dialog = dynamic_cast<frmIgnoreColumnsAdd&>(form);
      dialog.pvlSqlObj0.personTicks(1, false);
      dialog.cmdOK.personClicks();
    });
    window.btnIgnoreColumns.personClicks();
    EXPECT_EQ(window.lblGen9.text(), "1");
    window.cmdStart.personClicks();
    EXPECT_EQ(window.rpcReport.recordCount(), 2U);
    EXPECT_EQ(window.rpcReport.text(2, 0), "k");

    SaveIgnoredColumns(program, ignoredColsDataAnalysis, "S.A.t", {"V", "n", "K"}, 3);
    window.cmdStart.personClicks();
    EXPECT_EQ(window.rpcReport.recordCount(), 0U);
    const std::string howTo = ".\r\n\r\nClick button 'Start' (or press F5) to analyze data.";
    window.cmdExport.personClicks();
    EXPECT_EQ(boxes(), "info||There is no data to be exported" + howTo);
    for (Button* button : {&window.cmdPrint, &window.cmdPrintPreview}) {
      button->personClicks();
      EXPECT_EQ(boxes(), "info||There is no data to be printed" + howTo);
    }
  });
}

TEST_F(DataTools, TheAnalysisIsExportedAndPrinted) {
  analyze([&](frmDataAnalyze& window) {
    std::string printed;
    window.rpcReport.onPrint = [&](const std::string& title) { printed += "print " + title; };
    window.rpcReport.onPrintPreview = [&](const std::string& title) { printed += "look at " + title; };
    window.rpcReport.onPageSetup = [&] { printed += "set up"; };
    window.cmdStart.personClicks();
    for (const auto& [button, done] : {std::pair(&window.cmdPrint, "print " + window.caption),
                                       std::pair(&window.cmdPrintPreview, "look at " + window.caption),
                                       std::pair(&window.cmdPageSetup, std::string("set up"))}) {
      printed.clear();
      button->personClicks();
      EXPECT_EQ(printed, done);
    }
    test.host.windows.push_back([&](Form& form) {
      EXPECT_EQ(dynamic_cast<frmExport&>(form).mlngMode, exportFromDataAnalyze);
      form.personPressesEsc();
    });
    window.cmdExport.personClicks();
  });
}

TEST_F(DataTools, AColumnThatIsStoppedOrCantBeReadAddsNothingUntrue) {
  analyze([&](frmDataAnalyze& window) {
    // Within the second column: it adds no row, the first one stays.
    test.host.onDoEvents = [&] {
      if (window.lblGen0.text() == "n" && window.lblCurRec.text() == "3") window.personPressesKey("F6");
    };
    window.cmdStart.personClicks();
    EXPECT_EQ(rows(window.rpcReport), "v|varchar (5)|5|d|3|e|2|b|2|a|1|c|1");
    EXPECT_EQ(window.lblCurRec.text(), "3");
    test.host.onDoEvents = nullptr;
    // A column that can't be fetched has no values; the others are analyzed.
    test.refuse("SELECT [n]");
    test.expectReports(1);
    window.cmdStart.personClicks();
    EXPECT_EQ(rows(window.rpcReport), "v|varchar (5)|5|d|3|e|2|b|2|a|1|c|1\nn|varchar (10)|0\nk|int|1|Null|9");
    test.forgetAnswers();
    window.cmdStart.personClicks();
    EXPECT_EQ(rows(window.rpcReport), allOfT);
  });
  EXPECT_EQ(boxes(), "");
}

TEST_F(DataTools, MoreValuesThanTheSortCountsAreReported) {
  std::vector<std::int32_t> numbers(32767);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<std::int32_t>(i);
  const auto itself = [](std::int32_t number) { return number; };
  ShellSort(numbers, true, itself);
  EXPECT_EQ(numbers.front(), 32766);
  numbers.push_back(0);
  EXPECT_THROW(ShellSort(numbers, true, itself), RuntimeError);

  // Two of the first value, 40,000 others; as reported, they stay in the order in which they came.
  std::vector<FakeRow> many{{"first"}};
  for (int i = 1; i <= 40000; ++i) many.push_back({std::to_string(i)});
  many.push_back({"1"});
  test.answer("SELECT COUNT(*)", {"RecsCount"}, {{std::to_string(many.size())}});
  test.answer("SELECT [v]", {"v"}, many);
  SaveIgnoredColumns(program, ignoredColsDataAnalysis, "S.A.t", {"n", "k"}, 2);
  analyze([&](frmDataAnalyze& window) {
    test.expectReports(1);
    window.cmdStart.personClicks();
    EXPECT_EQ(row(window.rpcReport, 1).substr(0, 34), "v|varchar (5)|40,001|first|1|1|2|2");
  });
}

TEST_F(DataTools, TheViewerShowsEveryRecord) {
  view([&](frmDataView& window) {
    EXPECT_EQ(window.lblTableName.text(), "Table: t (Database: A, Server: S)");
    EXPECT_EQ(window.lblStats.text(), "Number of records: 9");
    const Grid& grid = window.VSFlexGrid1;
    EXPECT_EQ(row(grid, 0), "Row|v|n|k");
    ASSERT_EQ(grid.rowCount(), 10U);
    EXPECT_EQ(row(grid, 2), "2|b|Null|Null");
    EXPECT_EQ(row(grid, 9), "9|e|x|Null");
    EXPECT_EQ(grid.backColour(1, 0), 0x80FFFFU);
    EXPECT_EQ(grid.backColour(2, 3), 0xFFFF00U);
    EXPECT_EQ(grid.columnWidth(0), 540);
    EXPECT_EQ(grid.columnWidth(3), 1440);
    EXPECT_EQ(grid.topRow(), 1U);
    EXPECT_FALSE(window.lblCurRec.visible() || window.ProgressBar.visible() || window.cmdStop.enabled());
    EXPECT_TRUE(window.cmdExport.enabled());
    test.host.windows.push_back([&](Form& form) {
      EXPECT_EQ(dynamic_cast<frmExport&>(form).mlngMode, exportFromDataView);
      form.personPressesEsc();
    });
    window.cmdExport.personClicks();
  });
  EXPECT_EQ(program.state<GridRefreshState>().glngGridRefreshMode, 0);
  EXPECT_EQ(boxes(), "");
}

// Records as the viewer gets them, of one column.
std::vector<FakeRow> manyRecords(int count) {
  std::vector<FakeRow> records;
  for (int i = 1; i <= count; ++i) records.push_back({"r" + std::to_string(i)});
  return records;
}

TEST_F(DataTools, TheViewerIsWatchedStoppedAndSurvivesWhatChanges) {
  test.answer("SELECT COUNT(*)", {"RecsCount"}, {{"120"}});
  test.answer("SELECT * FROM [none]", {"v"}, manyRecords(120));
  std::string tops;
  onView = [&](frmDataView& window) {
    test.host.onDoEvents = [&] {
      const std::string top = std::to_string(window.VSFlexGrid1.topRow());
      if (!tops.ends_with(" " + top)) tops += " " + top;
      if (window.lblCurRec.text() == "100") window.cmdStop.personClicks();
    };
  };
  view(
      [&](frmDataView& window) {
        test.host.onDoEvents = nullptr;
        const Grid& grid = window.VSFlexGrid1;
        EXPECT_EQ(grid.rowCount(), 121U);
        EXPECT_EQ(row(grid, 99), "99|r99");
        EXPECT_EQ(row(grid, 100), "");
        EXPECT_EQ(tops, " 0 40");  // the batch at record 40 is shown from its end, the one at 80 from its beginning
        EXPECT_EQ(grid.topRow(), 1U);
        EXPECT_FALSE(window.cmdStop.enabled());
        EXPECT_TRUE(window.cmdExport.enabled() && window.lblCurRec.visible());
        const tExportSource source = window.exportSource();
        EXPECT_TRUE(source.blnCurRecVisible && source.lblCurRec == "100");
      },
      "none");
  // A table that has fewer records by now.
  test.answer("SELECT * FROM [none]", {"v"}, manyRecords(3));
  onView = [](frmDataView&) {};
  view(
      [&](frmDataView& window) {
        EXPECT_EQ(window.VSFlexGrid1.rowCount(), 121U);
        EXPECT_EQ(row(window.VSFlexGrid1, 3) + "," + row(window.VSFlexGrid1, 4), "3|r3,");
        EXPECT_FALSE(window.lblCurRec.visible());
      },
      "none");
  EXPECT_EQ(boxes(), "");
}

TEST_F(DataTools, ErrorsOfTheViewerAreTold) {
  const struct {
    std::int32_t number;
    const char* box;
  } cases[] = {{Grid::outOfRows, "info||Only first 4 records can be displayed."},
               {7, "critical||Error in Sub frmDataView.LoadData, error nr 7 (no more)."}};
  for (const auto& each : cases) {
    onView = [&](frmDataView& window) {
      test.host.onDoEvents = [&] {
        if (window.lblCurRec.text() == "5") throw RuntimeError(each.number, "no more");
      };
    };
    view([&](frmDataView& window) {
      EXPECT_EQ(row(window.VSFlexGrid1, 4) + row(window.VSFlexGrid1, 5), "4|d|X|Null");
      EXPECT_TRUE(window.cmdExport.enabled());
    });
    EXPECT_EQ(boxes(), each.box);
  }
  test.host.onDoEvents = nullptr;
  test.refuse("SELECT * FROM");
  onView = [&](frmDataView&) {
    test.host.windows.push_front([](Form& form) { EXPECT_EQ(form.name, "frmErrorReport"); });
  };
  view([&](frmDataView& window) { EXPECT_EQ(window.VSFlexGrid1.rowCount(), 1U); });
}

// What a person does at a random moment of a run; true when that closes the window.
bool disturb(Form& form, Button& stop, std::mt19937& random) {
  switch (random() % 4) {
    case 0:
      stop.personClicks();
      return false;
    case 1:
      form.personPressesEsc();
      return true;
    case 2:
      if (form.closeRequested()) form.close();
      return true;
    default:
      stop.personClicks();
      form.personPressesEsc();
      return true;
  }
}

TEST_F(DataTools, TheAnalyzerBearsAnythingAtAnyMoment) {
  std::mt19937 random(4711);
  for (int round = 0; round < 100; ++round) {
    program.settings.glngCursorLocation = round % 2 == 0 ? adUseServer : adUseClient;
    int yields = static_cast<int>(random() % 45);
    bool ends = false;
    bool disturbed = false;
    analyze([&](frmDataAnalyze& window) {
      test.host.onDoEvents = [&] {
        if (yields-- != 0) return;
        disturbed = true;
        ends = disturb(window, window.cmdStop, random);
      };
      window.cmdStart.personClicks();
      test.host.onDoEvents = nullptr;
      EXPECT_EQ(window.closed(), ends) << round;
      EXPECT_TRUE(std::string(allOfT).starts_with(rows(window.rpcReport))) << round << rows(window.rpcReport);
      EXPECT_EQ(test.host.pointer(), Pointer::Default);
      if (window.closed()) return;
      window.cmdStart.personClicks();
      EXPECT_EQ(rows(window.rpcReport), allOfT) << round;
    });
    EXPECT_TRUE(disturbed || yields >= 0);
  }
  EXPECT_EQ(boxes(), "");
}

TEST_F(DataTools, TheViewerBearsAnythingAtAnyMoment) {
  std::mt19937 random(815);
  for (int round = 0; round < 100; ++round) {
    program.settings.glngCursorLocation = round % 2 == 0 ? adUseServer : adUseClient;
    int yields = static_cast<int>(random() % 14);
    bool ends = false;
    bool shown = false;
    onView = [&](frmDataView& window) {
      test.host.onDoEvents = [&] {
        if (yields-- == 0) ends = disturb(window, window.cmdStop, random);
      };
    };
    view([&](frmDataView& window) {
      shown = true;
      EXPECT_TRUE(window.cmdExport.enabled() && !window.cmdStop.enabled()) << round;
      const Grid& grid = window.VSFlexGrid1;
      std::size_t filled = 1;
      while (filled < grid.rowCount() && !grid.text(filled, 0).empty()) ++filled;
      for (std::size_t number = filled; number < grid.rowCount(); ++number) EXPECT_EQ(row(grid, number), "") << round;
    });
    EXPECT_EQ(shown, !ends) << round;
    EXPECT_EQ(test.host.pointer(), Pointer::Default);
  }
  EXPECT_EQ(boxes(), "");
}

}  // namespace
}  // namespace qrel
