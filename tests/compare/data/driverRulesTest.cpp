// A data comparison's rules of pairing, stopping and telling.
#include "compare/data/CompareTableRecords.h"
#include "db/mdlObjects.h"
#include "platform/files.h"
#include "platform/text.h"
#include "report/frmExport.h"
#include "tests/compare/data/twoTables.h"
#include "tests/db/scriptedServer.h"

namespace qrel {
namespace {

class DriverRules : public TwoTables {
 protected:
  // Calls `act` at the first yield of a comparison that it accepts.
  void once(std::function<bool(frmCompareStatus&)> when, std::function<void(frmCompareStatus&)> act) {
    test.host.onDoEvents = [this, when = std::move(when), act = std::move(act), done = false]() mutable {
      if (done || !status || !when(*status)) return;
      done = true;
      act(*status);
    };
  }
  // Compares with a progress window that `once` can see; the differences window stays in the state.
  tDataCompResult compare(const tDataCompRequest& wanted) {
    frmCompareStatus window(program);
    status = &window;
    state.differences.reset();
    test.host.windows.push_back([](Form&) {});
    tDataCompResult result;
    window.ShowUp(wanted, result);
    status = nullptr;
    test.host.onDoEvents = nullptr;
    return result;
  }
  // The number of the record at work once the records are compared or listed, else 0.
  static long recordAtWork(const frmCompareStatus& window) {
    return window.lblStatus.visible() ? 0 : numericPrefix(replaceAll(window.lblCurRec.text(), ",", ""));
  }

  frmCompareStatus* status = nullptr;
};

std::string numbers(const std::string& table, int from, int to, const std::string& word) {
  std::string script = "CREATE TABLE " + table + " (Id int, w varchar(10))\nGO\n";
  for (int i = from; i <= to; ++i)
    script +=
        (((i - from) % 100 == 0) ? "\nINSERT " + table + " VALUES (" : ", (") + std::to_string(i) + ", '" + word + "')";
  return script + "\nGO\n";
}

TEST_F(DriverRules, TheTargetsSecondaryKeySaysWhetherThereAreSeveral) {
  load(
      "CREATE TABLE one (Id int, b varchar(5))\nINSERT one VALUES (1, 'x'), (2, 'y')\n"
      "CREATE TABLE two (Id int, b varchar(5))\nINSERT two VALUES (1, '1')",
      "CREATE TABLE one (Id int, b varchar(5))\nINSERT one VALUES (2, 'y'), (1, 'x')\n"
      "CREATE TABLE two (Id int, b varchar(5))\nINSERT two VALUES (1, 'x'), (1, '1')");
  const auto diffs = [&](const std::string& table, const char* source, const char* target) {
    select(table);
    tDataCompRequest wanted = request({"Id"});
    wanted.arrCompKeys[0][1] = source;
    wanted.arrCompKeys[1][1] = target;
    wanted.blnDisplayDiffs = false;
    return compare(wanted).lngDiffs;
  };
  EXPECT_EQ(diffs("one", "b", noField), 0) << "Source's second key isn't looked at";
  EXPECT_EQ(diffs("one", "b", ""), 0);
  // Target's asks for a second value, which is the first field where Source names none.
  EXPECT_EQ(diffs("two", noField, "b"), 1) << "the pair is equal; one record more is left";
  EXPECT_EQ(diffs("two", noField, noField), 2) << "by Id alone the first record is met, and differs";
}

TEST_F(DriverRules, TheSourcesTertiaryKeySaysWhetherThereIsAThird) {
  const std::string tables =
      "CREATE TABLE one (Id int, b varchar(5), c varchar(5))\nINSERT one VALUES (1, 'x', 'p')\n"
      "CREATE TABLE two (Id int, b varchar(5), c varchar(5))\n";
  load(tables + "INSERT two VALUES (1, 'x', 'p'), (1, 'x', 'q')",
       tables + "INSERT two VALUES (1, 'x', 'q'), (1, 'x', 'p')");
  const auto diffs = [&](const std::string& table, const char* source) {
    select(table);
    tDataCompRequest wanted = request({"Id", "b", "c"});
    wanted.arrCompKeys[0][2] = source;
    wanted.blnDisplayDiffs = false;
    return compare(wanted).lngDiffs;
  };
  EXPECT_EQ(diffs("two", "c"), 0);
  EXPECT_EQ(diffs("two", noField), 2) << "by two keys each meets the other first";
  EXPECT_EQ(diffs("one", noField), 0) << "Target's third key isn't looked at";
}

TEST(FieldIndex, IsOfTheFirstFieldOfThatVeryName) {
  std::vector<ColumnInfo> columns;
  for (const char* name : {"a", "A", "b", "A"}) columns.push_back(fakeColumn(name, DataType::Integer));
  Recordset rs;
  rs.Open(std::make_unique<FakeRows>(columns, std::vector<FakeRow>{{"1", "2", "3", "4"}}));
  const std::pair<const char*, std::size_t> cases[] = {{"a", 0}, {"A", 1}, {"b", 2}, {"B", 0}, {"", 0}, {"b ", 0}};
  for (const auto& [name, index] : cases) EXPECT_EQ(GetFieldIndexByName(rs, name), index) << name;
}

// Stopped at a yield in the middle: what is at work then isn't counted any more.
TEST_F(DriverRules, TheWalkYieldsOnItsWay) {
  load(numbers("t", 1, 1000, "a"), numbers("t", 1, 1000, "b") + numbers("far", 5001, 6000, "a"));
  struct Case {
    const char* target;
    bool byKey;
  };
  for (const Case& each : {Case{"t", false}, Case{"t", true}, Case{"far", true}}) {
    SCOPED_TRACE(std::string(each.target) + (each.byKey ? " by key" : " by position"));
    select("t");
    tDataCompRequest wanted = request(each.byKey ? std::vector<std::string>{"Id"} : std::vector<std::string>{});
    wanted.arrTables[1] = each.target;
    wanted.blnDisplayDiffs = false;
    long stoppedAt = 0;
    once([](frmCompareStatus& window) { return recordAtWork(window) >= 500; },
         [&](frmCompareStatus& window) {
           stoppedAt = recordAtWork(window);
           window.cmdStop.personClicks();
         });
    const std::int32_t diffs = compare(wanted).lngDiffs;
    EXPECT_EQ(diffs, stoppedAt - 1);
    EXPECT_GE(stoppedAt, 500);
    EXPECT_LT(stoppedAt, 500 + recordsPerYield) << "a person doesn't wait for long";
  }
}

// Counts what the table tells its face.
class Redraws : public ControlObserver {
 public:
  void controlChanged(Control&) override { ++count; }
  int count = 0;
};

TEST_F(DriverRules, TheTableIsDrawnAgainHoweverItEnds) {
  load(numbers("t", 1, 200, "a"), numbers("t", 1, 200, "b"));
  enum End { toTheEnd, stopped, failed };
  for (const End end : {toTheEnd, stopped, failed}) {
    SCOPED_TRACE(end);
    test.host.boxes.clear();
    Redraws redraws;
    select("t");
    tDataCompRequest wanted = request();
    if (end == failed) wanted.arrOffsets[1] = 300;
    once([this](frmCompareStatus& window) { return recordAtWork(window) >= 1 && state.differences; },
         [&](frmCompareStatus& window) {
           state.differences->VSFlexGrid1.observer = &redraws;
           state.differences->VSFlexGrid1.setText(0, 0, "Row");
           EXPECT_EQ(redraws.count, 0) << "not while records are compared";
           if (end == stopped) window.cmdStop.personClicks();
         });
    compare(wanted);
    ASSERT_TRUE(state.differences);
    EXPECT_GE(redraws.count, 1);
    const int before = redraws.count;
    state.differences->VSFlexGrid1.setText(0, 0, "Row");
    EXPECT_EQ(redraws.count, before + 1);
    EXPECT_EQ(boxes().starts_with("Error occured while comparing records."), end == failed);
    state.differences->VSFlexGrid1.observer = nullptr;
  }
}

TEST_F(DriverRules, StopEndsTheListOfLoneRecords) {
  load(numbers("t", 1, 2, "a"), numbers("t", 1, 300, "a"));
  select("t");
  for (const bool stops : {false, true}) {
    long stoppedAt = 301;
    once([](frmCompareStatus& window) { return recordAtWork(window) >= 100; },
         [&](frmCompareStatus& window) {
           if (!stops) return;
           stoppedAt = recordAtWork(window);
           window.cmdStop.personClicks();
         });
    const tDataCompResult result = compare(request());
    EXPECT_FALSE(result.blnIdentical);
    EXPECT_EQ(result.lngDiffs, 298);
    ASSERT_TRUE(state.differences);
    const Grid& grid = state.differences->VSFlexGrid1;
    ASSERT_EQ(grid.rowCount(), 299U) << "all rows are made in one step";
    const auto rowOf = [](long record) { return static_cast<std::size_t>(record - 2); };
    EXPECT_EQ(grid.text(1, 0), "3");
    EXPECT_EQ(grid.text(rowOf(stoppedAt - 1), 0), std::to_string(stoppedAt - 1));
    if (stops) {
      EXPECT_EQ(grid.text(rowOf(stoppedAt), 0), "") << "the record at work isn't listed any more";
    }
    EXPECT_EQ(grid.backColour(1, 0), stops ? Grid::noColour : COLOR_TARGET_ONLY) << "and nothing is painted";
  }
  bool seen = false;
  test.host.onDoEvents = [&] {
    if (!seen && state.differences && state.differences->VSFlexGrid1.rowCount() > 1)
      seen = state.gblnStopComparison = true;
  };
  test.host.windows.push_back([](Form&) {});
  tDataCompResult result;
  RunDataComparison(program, request(), result);
  EXPECT_TRUE(seen);
  EXPECT_EQ(boxes(), "Operation cancelled by the user.");
  EXPECT_FALSE(state.differences);
}

// Rows whose second block can't be had.
class FailingRows : public FakeRows {
 public:
  FailingRows(std::int32_t error) : FakeRows({fakeColumn("Id", DataType::Integer)}, {{"1"}, {"2"}}), error_(error) {}
  std::size_t fetch(ColumnStore& store, std::size_t most) override {
    if (fetched_) throw RuntimeError(error_, "no more");
    fetched_ = true;
    return FakeRows::fetch(store, most);
  }

 private:
  std::int32_t error_;
  bool fetched_ = false;
};

TEST_F(DriverRules, ATableThatCanNotGrowIsTold) {
  for (const std::int32_t error : {Grid::outOfRows, errorNumber::outOfMemory}) {
    frmCompareStatus window(program);
    frmCompareData differences(program);
    differences.VSFlexGrid1.setColumnCount(2);
    Recordset rs;
    rs.CacheSize = 2;
    rs.Open(std::make_unique<FailingRows>(error));
    Label lblCurRec{"lblCurRec"};
    differences.AddMultipleRecordsToGrid(window, window.ProgressBar, lblCurRec, rs, COLOR_SOURCE_ONLY, 1, 5);
    ASSERT_EQ(test.host.boxes.size(), 1U);
    const auto& box = test.host.boxes.back();
    if (error == Grid::outOfRows) {
      EXPECT_TRUE(box.text.starts_with("Only first ") && box.text.ends_with(" records can be displayed.")) << box.text;
      EXPECT_EQ(box.icon, Icon::Information);
    } else {
      EXPECT_EQ(box.text, "Error in Sub AddMultipleRecordsToGrid, error nr 7 (no more).");
      EXPECT_EQ(box.icon, Icon::Critical);
    }
    EXPECT_EQ(box.title, "");
    EXPECT_EQ(differences.VSFlexGrid1.text(2, 0), "2");
    boxes();
  }
}

TEST_F(DriverRules, IgnoredColumnsAreCountedOrNamed) {
  load("CREATE TABLE t (Id int)", "CREATE TABLE t (Id int)");
  select("t");
  struct Case {
    const char* source;
    const char* target;
    const char* note;  // empty: hidden
  };
  const Case cases[] = {{"", "", ""},
                        {"0=a\r\n", "", "Ignored Column: a"},
                        {"", "0=b\r\n", "Ignored Column: b"},
                        {"0=a\r\n", "0=b\r\n", "NOTE: 2 columns were ignored."},
                        {"0=a\r\n1=c\r\n2=d\r\n", "", "NOTE: 3 columns were ignored."}};
  for (const Case& each : cases) {
    test.folder.write("qrel_ignored_cols_data.ini",
                      std::string("[S.A.t]\r\n") + each.source + "[S.B.t]\r\n" + each.target);
    frmCompareData form(program);
    test.host.windows.push_back(
        [&](Form&) { EXPECT_EQ(form.lblGen0.visible() ? form.lblGen0.text() : "", each.note); });
    form.ShowUp(request(), 9, "the words");
    EXPECT_EQ(form.lngIgnored(), 9);
    EXPECT_EQ(form.strIgnored(), "the words");
  }
}

TEST_F(DriverRules, AReplayExportsByItselfAndMayCloseBehindIt) {
  load("CREATE TABLE t (Id int)", "CREATE TABLE t (Id int)");
  select("t");
  const std::string file = (test.folder.path() / "out").string();
  struct Case {
    std::string file;
    std::int32_t format;
    bool closes;
    std::string written;  // the beginning; empty: nothing
  };
  for (const Case& each : {Case{file, 2, false, "\"Row\",\"Id\"\r\n"}, Case{file, 2, true, "\"Row\",\"Id\"\r\n"},
                           Case{file, 1, true, "<HTML>"}, Case{"", 2, true, ""}, Case{file, 0, false, ""}}) {
    int recorded = 0, acted = 0;
    program.state<DataDifferencesSteps>().RecordExport = [&](const std::string&, const tDataExport&) { ++recorded; };
    program.main.gblnCloseAfterRun = each.closes;
    tDataCompRequest wanted = request();
    wanted.strExportFile = each.file;
    wanted.lngExportFormat = each.format;
    wanted.blnWrap = wanted.blnAuto = true;
    frmCompareData form(program);
    form.LoadData(workspace);
    form.lblStats[3].setText("7");
    if (!each.written.empty()) test.host.windows.push_back([](Form&) { ADD_FAILURE() << "the export doesn't close"; });
    if (each.format == 1 || !(each.closes || each.written.empty())) test.host.answers.push_back(Answer::No);
    test.host.windows.push_back([&](Form&) {
      ++acted;
      files::removeFile(file);
      form.activate();
    });
    form.ShowUp(wanted, 3, "NOTE: of 3");
    EXPECT_EQ(acted, each.closes ? 0 : 1) << "a window that closes behind its run waits for nobody";
    const std::string text = files::exists(file) ? files::readWholeFile(file) : "";
    files::removeFile(file);
    EXPECT_EQ(text.substr(0, each.written.size()), each.closes ? each.written : "") << "at the first activation alone";
    if (each.format == 1) {
      for (const char* part :
           {"<b> Differences between data in tables 't' and 't'</b><p> Source Table: t (Database: A, "
            "Server: S)<br> Target Table: t (Database: B, Server: S)<p>",
            "<b> Number of records in  in Source Table: 7<br> Number of records in  in Target Table: "
            "<br> Number of different records: <br> NOTE: of 3</b>"})
        EXPECT_NE(text.find(part), std::string::npos) << text;
    }
    EXPECT_EQ(recorded, 0);
    EXPECT_EQ(form.cmdExit.focusRequests(), 1U);
  }
  program.main.gblnCloseAfterRun = false;
}

TEST_F(DriverRules, AnExportBehindASaveIsRecordedOnce) {
  load("CREATE TABLE t (Id int)", "CREATE TABLE t (Id int)");
  select("t");
  const std::string file = (test.folder.path() / "out").string();
  std::string log, name = "Nightly";
  auto& steps = program.state<DataDifferencesSteps>();
  frmCompareData form(program);
  form.LoadData(workspace);
  steps.RecordExport = [&](const std::string& strName, const tDataExport& made) {
    EXPECT_EQ(made.strFile, file);
    log += "record:" + strName + ":" + std::to_string(made.lngFormat) + (made.blnWrap ? "w " : " ");
  };
  steps.Save = [&](const frmCompareData&, std::string& strName) {
    log += "save ";
    strName = name;
    return true;
  };
  // Exports by hand: as CSV with or without wrapping, as HTML, or not at all.
  const auto exportAs = [&](const std::string& how) {
    test.host.windows.push_back([&, how](Form& window) {
      auto& dialog = dynamic_cast<frmExport&>(window);
      form.cmdSave.personClicks();
      form.cmdExport.personClicks();
      if (how == "html") dialog.optGen[0].choose();
      if (how != "html") dialog.optGen[1].choose();
      test.host.files = {how == "none" ? "" : file};
      if (how == "csv wrapped" || how == "csv") test.host.answers = {how == "csv" ? Answer::No : Answer::Yes};
      if (how != "none") test.host.answers.push_back(Answer::No);  // to look at it
      dialog.cmdOK.personClicks();
    });
    form.cmdExport.personClicks();
    return std::exchange(log, "");
  };
  test.host.windows.push_back([&](Form&) {
    EXPECT_EQ(exportAs("csv"), "") << "nothing was saved";
    form.cmdSave.personClicks();
    EXPECT_EQ(exportAs("none"), "save ") << "nothing was written";
    EXPECT_EQ(exportAs("csv wrapped"), "record:Nightly:2w ") << "an export keeps the other clicks out";
    EXPECT_TRUE(form.request().blnWrap) << "a process saved from now on has it";
    EXPECT_EQ(exportAs("csv"), "");
    EXPECT_FALSE(form.request().blnWrap);
    name = "";
    form.cmdSave.personClicks();
    EXPECT_EQ(exportAs("html"), "save ") << "without a name there is no process to add to";
  });
  form.ShowUp(request(), 0, "");
}

TEST(OrderBy, EndsAtTheFirstEmptyKey) {
  const struct {
    const char* keys[3];
    const char* clause;
  } cases[] = {{{"", "b", "c"}, ""},
               {{"  ", "b", ""}, ""},
               {{"a", "", ""}, " ORDER BY [a] "},
               {{"a", "", "c"}, " ORDER BY [a] "},
               {{" a ", "b b", " "}, " ORDER BY [a], [b b] "},
               {{"a", "b", "c]"}, " ORDER BY [a], [b], [c]] "}};
  for (const auto& each : cases)
    EXPECT_EQ(BuildOrderByClause(each.keys[0], each.keys[1], each.keys[2]).shown(), each.clause);
}

TEST(SentSelects, AskForTheSourcesColumnsOnBothSides) {
  ScriptedServer test;
  test.load("S", "A", "CREATE TABLE Orders (b int, a int, c int)\nINSERT Orders VALUES (1, 2, 3)");
  test.load("S", "B",
            "CREATE TABLE Orders (a int, b int)\nINSERT Orders VALUES (2, 1)\nCREATE TABLE Full (a int, c int, b "
            "int, d int)\nINSERT Full VALUES (2, 3, 1, 9)");
  SetFilePaths(test.program);
  test.program.main.gtypSelServ = {ScriptedServer::record(), ScriptedServer::record()};
  const auto selects = [&](const char* target) {
    tDataCompRequest wanted;
    wanted.arrDbs = {"A", "B"};
    wanted.arrTables = {"Orders", target};
    wanted.arrOrderBy = {BuildOrderByClause("a", "b", ""), BuildOrderByClause("b", "a", "")};
    wanted.blnDisplayDiffs = false;
    wanted.blnSilent = true;
    test.host.windows.push_back([](Form&) {});
    test.said();
    tDataCompResult result;
    RunDataComparison(test.program, wanted, result);
    std::string text;
    for (const auto& each : test.sent)
      if (each.text.starts_with("SELECT [") && each.text.find(']') != std::string::npos &&
          each.text.find("[" + std::string(each.database == "A" ? "Orders" : target) + "]") != std::string::npos)
        text += each.database + ": " + each.text + "|\n";
    return text;
  };
  const std::string source = "A: SELECT [b],[a],[c] FROM [Orders]  ORDER BY [a], [b] |\n";
  const std::string full = "B: SELECT [b],[a],[c] FROM  [Full]  ORDER BY [b], [a] |\n";
  EXPECT_EQ(selects("Full"), full + source + full) << "tried once, then fetched";
  EXPECT_EQ(selects("Orders"), "B: SELECT [b],[a],[c] FROM  [Orders]  ORDER BY [b], [a] |\n" + source +
                                   "B: SELECT [a],[b] FROM [Orders]  ORDER BY [b], [a] |\n");
}

}  // namespace
}  // namespace qrel
