// Saved processes: every kind of comparison is done by hand, saved from its result window, and run again.
#include "app/mdlMain.h"
#include "app/modArrays.h"
#include "compare/all/frmCompareAll.h"
#include "compare/all/frmListObjects.h"
#include "compare/data/frmCompareData.h"
#include "compare/data/frmCompareDataOptions.h"
#include "platform/files.h"
#include "platform/text.h"
#include "process/frmSaveCompRun.h"
#include "process/frmSaveComparison.h"
#include "process/replayOutcome.h"
#include "report/frmReport.h"
#include "tests/ui/mainWindow.h"

namespace qrel {
namespace {

// A report without the line that every run writes anew.
std::string timeless(const std::string& report) {
  const std::size_t at = report.find("Time Elapsed: ");
  return at == std::string::npos ? report : report.substr(0, at);
}

// Shop of server One against Shop of Two; each database has another one before it in the list.
class Replaying : public testing::Test, public MainWindow {
 protected:
  Replaying() {
    SetFilePaths(program);
    for (const std::string server : {"One", "Two"}) {
      load(server, "Archive", "CREATE TABLE Old (a int)");
      const std::string own = server == "One" ? "1" : "2";
      load(server, "Shop",
           "CREATE TABLE Goods (Id int NOT NULL, Name varchar(20), CONSTRAINT pkGoods PRIMARY KEY (Id))\n"
           "CREATE TABLE Prices (Id int, Amount money)\nGO\n"
           "INSERT Goods VALUES (1, 'tea')\nINSERT Goods VALUES (2, 'cup" +
               own +
               "')\n"
               "INSERT Prices VALUES (1, 2.50)\nGO\n"
               "CREATE PROCEDURE GetA AS SELECT " +
               own + "\nGO\nCREATE PROCEDURE GetB AS SELECT 1\n");
      addServer(server);
    }
    set("ShowDataCompOpt", 0);
    connect();
    choosePanels();
  }

  void choosePanels() {
    work.cmbServer[0].select(0);
    work.cmbServer[1].select(1);
    for (const int side : {0, 1}) chooseDb(side, "Shop");
    for (const int side : {0, 1}) chooseObject(side, "Goods");
  }

  // Presses Save in a result window, types the name and accepts.
  void save(Button& cmdSave, const std::string& name, bool blnAutoClose = false) {
    host.windows.push_front([=](Form& shown) {
      auto& dialog = dynamic_cast<frmSaveComparison&>(shown);
      dialog.txtProcessName.personTypes(name);
      dialog.chkAutoClose.personSets(blnAutoClose);
      dialog.personPressesEnter();
    });
    cmdSave.personClicks();
    EXPECT_TRUE(host.boxes.back().text.starts_with("Comparison process saved successfully.")) << host.boxes.back().text;
  }

  // What is shown at the end of a comparison: the report, or the rows of the differences.
  static std::string resultIn(Form& shown) {
    if (const auto* report = dynamic_cast<frmReport*>(&shown)) return timeless(report->txtReport.givenText());
    const Grid& grid = dynamic_cast<frmCompareData&>(shown).VSFlexGrid1;
    std::string text = shown.caption;
    for (std::size_t row = 0; row < grid.rowCount(); ++row)
      for (std::size_t column = 0; column < grid.columnCount(); ++column)
        text.append("|").append(grid.text(row, column));
    return text;
  }

  // By hand: what `command` starts ends in a result window, whose result is saved under `name`. `before` are the
  // windows on the way.
  std::string byHand(const std::string& name, const std::function<void()>& command,
                     std::vector<std::function<void(Form&)>> before = {}, bool blnAutoClose = false) {
    std::string result;
    for (auto& window : before) host.windows.push_back(std::move(window));
    host.windows.push_back([&, name, blnAutoClose](Form& shown) {
      result = resultIn(shown);
      auto* report = dynamic_cast<frmReport*>(&shown);
      save(report ? report->cmdSave : dynamic_cast<frmCompareData&>(shown).cmdSave, name, blnAutoClose);
    });
    command();
    return result;
  }

  std::string byReplay(const std::string& name, int windowsBefore) {
    std::string result;
    for (int i = 0; i < windowsBefore; ++i) host.windows.push_back([](Form&) {});
    host.windows.push_back([&](Form& shown) { result = resultIn(shown); });
    form.RunSavedProcess(GetSavedProcessId(program, name));
    EXPECT_FALSE(work.mblnBusy);
    EXPECT_FALSE(work.replay.mblnReplay);
    return result;
  }

  tSavedProcess stored(const std::string& name) { return GetSavedProcessDetails(program, name); }
  void change(const std::string& name, const std::function<void(tSavedProcess&)>& edit) {
    tSavedProcess process = stored(name);
    process.strName = name;
    edit(process);
    ASSERT_TRUE(SaveComparisonProcess(program, process));
  }
  const ReplayOutcome& outcome() { return program.state<ReplayOutcome>(); }
};

const auto progress = [](Form&) {};

TEST_F(Replaying, EveryKindGivesAgainWhatItGaveByHand) {
  const auto ticks = [](Form& shown) {
    auto& list = dynamic_cast<frmListObjects&>(shown);
    list.pvlSqlObj[0].personTicks(0, true);
    list.personPressesEnter();
  };
  const auto bothTypes = [](Form& shown) {
    auto& window = dynamic_cast<frmCompareAll&>(shown);
    for (std::size_t type = 2; type < 8; ++type) window.parts.chkObjType[type].setChecked(false);
    window.parts.cmdCompare.personClicks();
  };
  struct Kind {
    const char* name;
    std::function<void()> command;
    std::vector<std::function<void(Form&)>> before;
    int progressWindows;
    std::array<std::int32_t, 3> kind;
    const char* flags;
    bool identical = false;
  };
  const Kind kinds[] = {
      {"all types", [&] { form.cmdCompareAll.personClicks(); }, {bothTypes}, 1, {1, 10, 0}, "1,1,0,0,0,0,0,0"},
      {"simple", [&] { form.CommandBars_Execute(206); }, {progress}, 1, {1, 20, 10}, "0,1,0,0,0,0,0,0"},
      {"details", [&] { form.CommandBars_Execute(222); }, {progress}, 1, {1, 20, 20}, "0,1,0,0,0,0,0,0"},
      {"some", [&] { form.CommandBars_Execute(232); }, {ticks, progress}, 1, {1, 30, 30}, "0,1,0,0,0,0,0,0"},
      {"some details", [&] { form.CommandBars_Execute(242); }, {ticks, progress}, 1, {1, 30, 40}, "0,1,0,0,0,0,0,0"},
      {"pair", [&] { form.cmdCompare.personClicks(); }, {}, 0, {1, 35, 0}, "1,0,0,0,0,0,0,0", true},
      {"data", [&] { form.cmdCompData.personClicks(); }, {progress}, 1, {0, 40, 0}, ""},
      // A table's progress window opens within the run's, and is gone before it.
      {"some data", [&] { form.CommandBars_Execute(320); }, {ticks, progress, progress}, 2, {0, 50, 0}, ""},
      {"all data", [&] { form.CommandBars_Execute(330); }, {progress, progress, progress}, 3, {0, 60, 0}, ""},
  };
  std::int32_t id = 0;
  for (const Kind& kind : kinds) {
    SCOPED_TRACE(kind.name);
    choosePanels();
    const std::string result = byHand(kind.name, kind.command, kind.before);
    ASSERT_FALSE(result.empty());
    const tSavedProcess process = stored(kind.name);
    EXPECT_EQ((std::array{process.lngCompType, process.lngCompSubType, process.lngCompSubSubType}), kind.kind);
    EXPECT_EQ(process.strEncObjTypes, kind.flags);
    EXPECT_EQ(process.lngId, ++id);
    // From other databases, as a program that was just started.
    for (const int side : {0, 1}) chooseDb(side, "Archive");
    EXPECT_EQ(byReplay(kind.name, kind.progressWindows), result);
    EXPECT_EQ(outcome().blnIdentical, std::optional(kind.identical));
    EXPECT_FALSE(outcome().blnIncomplete);
  }
}

TEST_F(Replaying, ThePairOfAnotherTypeMovesTheListsThere) {
  chooseType(objProcedures);
  for (const int side : {0, 1}) chooseObject(side, "GetB");
  const std::string result = byHand("GetB", [&] { form.cmdCompare.personClicks(); });
  chooseType(objTables);
  EXPECT_EQ(byReplay("GetB", 0), result);
  EXPECT_EQ(work.objectType(), objProcedures);
  EXPECT_EQ(outcome().blnIdentical, std::optional(true));
}

TEST_F(Replaying, OnlyTheFirstExportAfterASaveIsRecordedAndAReplayWritesItAgain) {
  const std::string path = (folder.path() / "out.txt").string();
  const std::string other = (folder.path() / "other.txt").string();
  host.files = {path, other};
  host.windows.push_back([&](Form& shown) {
    auto& report = dynamic_cast<frmReport&>(shown);
    save(report.cmdSave, "Nightly");
    report.cmdCopyToFile.personClicks();
    report.cmdCopyToFile.personClicks();
  });
  form.cmdCompare.personClicks();
  EXPECT_EQ(stored("Nightly").strExportFilePath, path);
  change("Nightly", [](tSavedProcess& process) { process.blnPrint = true; });
  const std::string written = files::readWholeFile(path);
  files::removeFile(path);
  byReplay("Nightly", 0);
  EXPECT_EQ(files::readWholeFile(path), written);
  ASSERT_EQ(host.printed.size(), 1u);
  EXPECT_EQ(host.printed[0].title, "Quorrel Report");
  EXPECT_EQ(host.fileDialogs.size(), 2u) << "a replay asks nobody";
}

TEST_F(Replaying, WhatIsNotFoundIsToldAndStopsThePanelsThere) {
  byHand(
      "p", [&] { form.cmdCompare.personClicks(); }, {}, true);
  struct Case {
    std::function<void(tSavedProcess&)> edit;
    std::string message;
  };
  const std::string cannot = "Cannot run saved process - ";
  const Case cases[] = {
      {[](auto& p) { p.strDb2.clear(); }, cannot + "couldn't retrieve all details data."},
      {[](auto& p) { p.strServer1 = "one"; }, cannot + "path one not found."},
      {[](auto& p) { p.strDb1 = "shop"; }, cannot + "SQL Server database shop not found."},
      {[](auto& p) { p.strDb2 = "Gone"; }, cannot + "SQL Server database Gone not found."},
  };
  for (const Case& each : cases) {
    change("p", each.edit);
    host.boxes.clear();
    form.RunSavedProcess(GetSavedProcessId(program, "p"));
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, each.message);
    EXPECT_EQ(host.boxes[0].icon, Icon::Warning);
    EXPECT_EQ(ReplayExitCode(outcome()), 3);
    EXPECT_FALSE(form.closed()) << "a process that isn't found whole closes nothing";
    change("p", [](auto& p) { p.strServer1 = "One", p.strDb1 = p.strDb2 = "Shop"; });
  }
  change("p", [](auto& p) { p.strTable2 = "Gone"; });
  host.boxes.clear();
  form.RunSavedProcess(GetSavedProcessId(program, "p"));
  EXPECT_EQ(lastBox(), cannot + "object Gone not found.");
  EXPECT_TRUE(form.closed()) << "found whole, it closes the program however its comparison ends";
}

TEST_F(Replaying, ATargetServerThatIsGoneLeavesTheOneBefore) {
  byHand("p", [&] { form.cmdCompare.personClicks(); });
  change("p", [](auto& p) { p.strServer2 = "Three"; });
  EXPECT_NE(byReplay("p", 0).find("Target: Two.Shop.Goods"), std::string::npos);
  EXPECT_EQ(work.cmbServer[1].selected(), -1);
}

TEST_F(Replaying, TheProgramClosesWhenTheProcessAsksForIt) {
  byHand(
      "p", [&] { form.cmdCompData.personClicks(); }, {progress}, true);
  const std::string path = (folder.path() / "out.csv").string();
  change("p", [&](auto& p) { p.strExportFilePath = path, p.lngExportType = exportCsv; });
  program.main.glngRunSavedCompId = GetSavedProcessId(program, "p");
  host.boxes.clear();
  for (int i = 0; i < 3; ++i) host.windows.push_back(progress);  // progress, export, differences
  frmMain started(program);
  host.show(started);
  EXPECT_TRUE(host.boxes.empty()) << host.boxes.front().text;
  EXPECT_TRUE(started.closed());
  EXPECT_EQ(files::readWholeFile(path), "Row,Id,Name\r\n1,2,cup1\r\n1,2,cup2\r\n");
  EXPECT_EQ(ReplayExitCode(outcome()), 1);
}

TEST_F(Replaying, ATableOfABulkReportOpensItsOwnComparison) {
  chooseType(objProcedures);
  for (int i = 0; i < 3; ++i) host.windows.push_back(progress);
  std::string rows;
  host.windows.push_back([&](Form& shown) {
    TextPane& report = dynamic_cast<frmReport&>(shown).txtReport;
    host.windows.push_back(progress);
    host.windows.push_back([&](Form& table) { rows = resultIn(table); });
    for (std::size_t line = 0; line < report.lineCount(); ++line)
      if (report.lineText(line).find("different record(s)") != std::string::npos) report.onLineChosen(line);
  });
  form.CommandBars_Execute(330);
  EXPECT_NE(rows.find("|2|cup1|1|2|cup2"), std::string::npos) << rows;
  EXPECT_EQ(work.objectType(), objTables);
}

TEST_F(Replaying, ChoosingNoneAndAnUnknownIdDoNothing) {
  form.RunSavedProcess(7);
  EXPECT_EQ(lastBox(), "There are no saved processes to run.");
  byHand("p", [&] { form.cmdCompare.personClicks(); });
  host.boxes.clear();
  form.RunSavedProcess(7);
  EXPECT_EQ(ReplayExitCode(outcome()), 3);
  host.windows.push_back([](Form& shown) { shown.personPressesEsc(); });
  form.CommandBars_Execute(104);
  EXPECT_TRUE(host.boxes.empty());
  host.windows.push_back([](Form& shown) {
    auto& list = dynamic_cast<frmSaveCompRun&>(shown);
    list.lstComps.personSelects({0});
    list.personPressesEnter();
  });
  std::string result;
  host.windows.push_back([&](Form& shown) { result = resultIn(shown); });
  form.CommandBars_Execute(104);
  EXPECT_NE(result.find("Target: Two.Shop.Goods"), std::string::npos);
}

}  // namespace
}  // namespace qrel
