// The data of many tables compared in one run: the report, what stops it, and the commands that start it.
#include <random>

#include "app/mdlMain.h"
#include "compare/all/frmListObjects.h"
#include "compare/data/dataCompareCommands.h"
#include "compare/data/frmCompareData.h"
#include "compare/structure/modIgnoreColumns.h"
#include "platform/text.h"
#include "tests/db/scriptedServer.h"

namespace qrel {
namespace {

class BulkData : public testing::Test, public CompareAllSteps {
 protected:
  BulkData() {
    SetFilePaths(program);
    ConnectIgnoredColumns(program);
    program.main.gtypSelServ = {TestProgram::server("S"), TestProgram::server("S")};
  }

  void load(const std::string& source, const std::string& target) {
    for (const char* database : {"A", "B"}) test.servers.dropDatabase("S", database);
    test.load("S", "A", source);
    test.load("S", "B", target);
  }
  // One letter is one table. Each has two records; a capital's second is another, and there is a third.
  static std::string tables(const std::string& letters) {
    std::string script;
    for (const char letter : letters) {
      const std::string name(1, lowerCase(std::string(1, letter))[0]);
      script += "CREATE TABLE " + name + " (n int)\nINSERT " + name + " VALUES (1)\nINSERT " + name +
                (letter < 'a' ? " VALUES (3)\nINSERT " + name + " VALUES (4)\n" : " VALUES (2)\n");
    }
    return script;
  }

  // Runs a command that shows at most this many windows one after the other.
  void run(const std::function<void()>& command) {
    for (int i = 0; i < 20; ++i) test.host.windows.push_back([](Form&) {});
    shownText.clear();
    command();
    test.host.windows.clear();
  }
  // The report of a run over all tables, or over a selection, behind its head; empty when there is none.
  std::string report(const ObjectSelection* selection = nullptr) {
    run([&] {
      if (selection)
        DataCompareSelective(program, workspace, *this, 0, "A", "B", true, false, {true, "", false}, *selection);
      else
        DataCompareAll(program, workspace, *this, {});
    });
    if (shownText.empty()) return {};
    const std::string text = replaceAll(shownText, "\r\n", "\n");
    const std::string head =
        "Comparison of databases\n\nSource database S.A\nTarget database S.B\n\n" + std::string(selection ? "\n" : "");
    EXPECT_TRUE(text.starts_with(head)) << text;
    return text.substr(head.size());
  }

  std::string DatabaseName(int side) const override { return side == 0 ? "A" : "B"; }
  void ShowReport(const CompareAllReportCall& shownCall) override {
    call = shownCall;
    shownText = program.report.gstrReportText;
  }

  // What couldn't be compared, as the console is told.
  std::string notCompared() {
    std::string names;
    for (const NotComparedObject& each : runState.arrNotCompared) names += each.strName + ";" + each.strWhy + "|";
    return names;
  }

  ScriptedServer test;
  Program& program = test.program;
  modCompareAllState& runState = program.state<modCompareAllState>();
  modCompareDataState& dataState = program.state<modCompareDataState>();
  struct Panels : Workspace {
    Panels() { txtTXProc[0].setText("[n] int NULL"); }
  } workspace;
  CompareAllReportCall call;
  std::string shownText;
};

const std::string sourceOnly = "List of tables which exist in Source database but not in Target database:\n";
const std::string targetOnly = "List of tables which exist in Target database but not in Source database:\n";
const std::string differ = "List of tables which differ:\n";

TEST_F(BulkData, SentencesFollowWhatWasFound) {
  struct Case {
    const char* source;
    const char* target;
    std::string counts, rest;
    long totals[3];  // different, only in Source, only in Target
  };
  const Case cases[] = {
      {"", "", "There are no tables in Source database.\nThere are no tables in Target database.\n", "", {0, 0, 0}},
      {"a", "", "There is 1 table in Source database.\nThere are no tables in Target database.\n\n", "", {0, 1, 0}},
      {"", "ab", "There are no tables in Source database.\nThere are 2 tables in Target database.\n\n", "", {0, 0, 2}},
      {"ab",
       "ab",
       "There are 2 tables in Source database.\nThere are 2 tables in Target database.\n\n",
       "Data in all tables in both databases is identical.",
       {0, 0, 0}},
      {"ab",
       "a",
       "There are 2 tables in Source database.\nThere is 1 table in Target database.\n\n",
       sourceOnly + "\tb\n\t(1 table)\nData in all tables in both databases is identical.",
       {0, 1, 0}},
      {"a",
       "ab",
       "There is 1 table in Source database.\nThere are 2 tables in Target database.\n\n",
       targetOnly + "\tb\n\t(1 table)\nOne table [a] has identical data in both databases.",
       {0, 0, 1}},
      {"a",
       "A",
       "There is 1 table in Source database.\nThere is 1 table in Target database.\n\n",
       differ + "\ta - 2 different record(s)\n\t(1 table)\n"
                "There are no tables which have identical data in both databases.",
       {1, 0, 0}},
      {"abcdef",
       "abCDgh",
       "There are 6 tables in Source database.\nThere are 6 tables in Target database.\n\n",
       differ + "\tc - 2 different record(s)\n\td - 2 different record(s)\n\t(2 tables)\n" + sourceOnly +
           "\te\n\tf\n\t(2 tables)\n" + targetOnly +
           "\tg\n\th\n\t(2 tables)\nAll 2 remaining tables have identical data:\n\ta\n\tb",
       {2, 2, 2}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(std::string(each.source) + " and " + each.target);
    load(tables(each.source), tables(each.target));
    EXPECT_EQ(report(), "Comparison of data in tables\n\n" + each.counts + each.rest);
    const long totals[] = {runState.lngDifferent, runState.lngSourceOnly, runState.lngTargetOnly};
    for (int i = 0; i < 3; ++i) EXPECT_EQ(totals[i], each.totals[i]) << i;
    EXPECT_EQ(notCompared(), "");
  }
  EXPECT_EQ(call.lngCompType * 100 + call.intCompSubType, 60);
  EXPECT_EQ(call.strTitle + call.arrServers[1] + call.arrDatabases[1], "Comparison ReportSB");
  EXPECT_EQ(program.report.gstrReportText, "") << "cleared once it was shown";
  EXPECT_TRUE(test.host.boxes.empty());
}

TEST_F(BulkData, ASelectionIsComparedAndHandedOn) {
  load(tables("abc"), tables("aBCd"));
  const auto head = [](const char* source, const char* target) {
    return std::string("Selective comparison of tables\n") + source + " objects selected in Source database\n" +
           target + " objects selected in Target database\n\n";
  };
  const ObjectSelection onlyA{1, 1, {"a"}, {"a"}};
  EXPECT_EQ(report(&onlyA), head("1", "1") + "Data in all selected tables in both databases is identical.");
  const ObjectSelection bInTarget{1, 2, {"a"}, {"b", "d"}};
  EXPECT_EQ(report(&bInTarget), head("1", "2") + differ + "\tb - 2 different record(s)\n\t(1 table)\n" + targetOnly +
                                    "\td\n\t(1 table)\nOne table [a] has identical data in both databases.");
  EXPECT_EQ(call.lngCompType * 100 + call.intCompSubType, 50);
  EXPECT_EQ(call.selection.arrSelectedTarget, (std::vector<std::string>{"b", "d"}));
  EXPECT_TRUE(call.replay.blnAuto);
  load("", "");
  EXPECT_EQ(report(&onlyA),
            "Selective comparison of tables\n1 objects selected in Source database\n"
            "1 objects selected in Target database\n");
}

TEST_F(BulkData, NamesakesMeetInTheirSchemaUnderTheirListedNames) {
  const std::string both =
      "CREATE SCHEMA s\nGO\nCREATE TABLE t (a int, x int)\nINSERT t VALUES (1, 1)\nCREATE TABLE s.t (a int, x int)\n"
      "INSERT s.t VALUES (1, 1)\n";
  load(both, replaceAll(both, "VALUES (1, 1)", "VALUES (1, 2)"));
  SaveIgnoredLists(program, ignoredColsData, {{"S.A.s.t", {"x"}}});
  const std::string counts =
      "Comparison of data in tables\n\nThere are 2 tables in Source database.\nThere are 2 tables in Target "
      "database.\n\n";
  EXPECT_EQ(report(), counts + differ +
                          "\tdbo.t - 1 different record(s)\n\t(1 table)\n"
                          "One table [s.t] has identical data in both databases.");
  SaveIgnoredLists(program, ignoredColsData, {{"S.A.s.t", {}}, {"S.A.t", {"x"}}});
  EXPECT_EQ(report(), counts + "Data in all tables in both databases is identical.");
  load("CREATE TABLE t (a int)", "CREATE SCHEMA s\nGO\nCREATE TABLE s.t (a int)");
  EXPECT_EQ(report(),
            "Comparison of data in tables\n\nThere is 1 table in Source database.\nThere is 1 table in "
            "Target database.\n\n" +
                sourceOnly + "\tt\n\t(1 table)\n" + targetOnly +
                "\tt\n\t(1 table)\nThere are no tables which have identical data in both databases.");
}

// By key a record without partner is told to the differences window, which a run over many tables doesn't have.
TEST_F(BulkData, TablesAreComparedAsTheyWereSetUp) {
  load("CREATE TABLE a (n int)\nINSERT a VALUES (1)\nINSERT a VALUES (2)\nINSERT a VALUES (5)\n",
       "CREATE TABLE a (n int)\nINSERT a VALUES (2)\nINSERT a VALUES (1)\nINSERT a VALUES (7)\n");
  const std::string byPosition = report();
  EXPECT_NE(byPosition.find("\ta - 3 different record(s)\n"), std::string::npos) << byPosition;
  tDataCompSettings settings;
  settings.lngCompMethod = compPrimaryKey;
  for (tDataCompSide& side : settings.arrSides) side.strCompKey = "n";
  SaveDataCompSettings(program, {"A", "B"}, {"a", "a"}, settings);
  const std::string byKey = report();
  EXPECT_NE(byKey.find("\ta - 1 different record(s)\n"), std::string::npos) << byKey;
  EXPECT_EQ(dataState.differences, nullptr);
  EXPECT_TRUE(test.host.boxes.empty());
}

TEST_F(BulkData, StopEndsATableAndCancelTheRun) {
  std::string many = "CREATE TABLE b (n int)\n";
  for (int i = 0; i < 200; ++i) many += "INSERT b VALUES (" + std::to_string(i) + ")\n";
  load(tables("a") + many + tables("c"), tables("a") + replaceAll(many, "VALUES (", "VALUES (1") + tables("c"));
  // A record in 64 yields: the stop is seen before the 64th is looked at.
  const auto yieldsInSecondTable = [this](int& yields) {
    const auto windows = std::count(test.host.shown.begin(), test.host.shown.end(), "frmCompareStatus");
    return windows == 2 && dataState.lngEnd == DataCompEnd::Done ? ++yields : 0;
  };
  int yields = 0;
  test.host.onDoEvents = [&] {
    if (yieldsInSecondTable(yields) == 2) dataState.gblnStopComparison = true;
  };
  const std::string stopped = report();
  EXPECT_TRUE(stopped.ends_with("\n\n" + differ +
                                "\tb - 63 different record(s)\n\t(1 table)\n"
                                "All 2 remaining tables have identical data:\n\ta\n\tc"))
      << stopped;
  EXPECT_EQ(notCompared(), "") << "who stops it knows";
  EXPECT_FALSE(dataState.gblnStopComparison);

  for (const int table : {1, 2, 3}) {
    test.host.shown.clear();
    test.host.onDoEvents = [&] {
      if (std::count(test.host.shown.begin(), test.host.shown.end(), "frmCompareStatus") == table)
        runState.gblnCancelCompare = true;
    };
    EXPECT_EQ(report(), "") << "no report, not even after the last table";
    EXPECT_EQ(std::count(test.host.shown.begin(), test.host.shown.end(), "frmCompareStatus"), table);
  }
}

TEST_F(BulkData, BearsStopAndCancelAtAnyMoment) {
  load(tables("abC"), tables("abc"));
  const std::string whole = report();
  ASSERT_NE(whole.find("\tc - 2 different record(s)"), std::string::npos) << whole;
  std::mt19937 random(20);
  for (int round = 0; round < 100; ++round) {
    int yields = static_cast<int>(random() % 30);
    const auto what = random() % 3;
    bool cancelled = false;
    test.host.onDoEvents = [&] {
      if (yields-- != 0) return;
      if (what != 1) dataState.gblnStopComparison = true;
      if (what != 0) cancelled = runState.gblnCancelCompare = true;
    };
    const std::string text = report();
    test.host.onDoEvents = nullptr;
    EXPECT_TRUE(cancelled ? text.empty() : text.find(" identical data") != std::string::npos) << round << text;
    EXPECT_EQ(test.host.pointer(), Pointer::Default);
    if (round % 10 == 0) {
      EXPECT_EQ(report(), whole) << round;
    }
  }
}

TEST_F(BulkData, WhatCouldNotBeReadIsListed) {
  load(tables("abc"), tables("abcd"));
  const std::string counts =
      "Comparison of data in tables\n\nThere are 3 tables in Source database.\nThere are 4 tables in Target "
      "database.\n\n";
  const std::string onlyD = targetOnly + "\td\n\t(1 table)\n";
  const std::string unread = "List of tables which could not be compared:\n\tb\n\t(1 table)\n";
  const std::string rest = "All 2 remaining tables have identical data:\n\ta\n\tc";
  const std::string differs = differ + "\tb - 0 different record(s)\n\t(1 table)\n";
  struct Case {
    const char* query;
    std::int32_t error;
    bool counted;  // among those that differ
  };
  const Case cases[] = {
      {"SELECT [n] FROM [dbo].[b]", errorNumber::badSql, true},
      {"RecsCount FROM [dbo].[b]", errorNumber::cannotConnect, true},
      {"SELECT [n] FROM  [dbo].[b]", errorNumber::cannotConnect, false},  // Target is read by its own columns then
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.query);
    test.refuse(each.query, each.error);
    EXPECT_EQ(report(), counts + (each.counted ? differs : "") + onlyD + unread + rest);
    EXPECT_EQ(notCompared(), "b;|");
    EXPECT_EQ(runState.lngDifferent, each.counted ? 1 : 0);
    test.forgetAnswers();
  }
  // An old server knows no ids by schema: a table is there when it has a text.
  program.main.gtypSelServ[1] = TestProgram::server("S", "8.00.2039");
  test.refuse("so2.name = 'b'", errorNumber::cannotConnect);
  EXPECT_EQ(report(), counts + onlyD + unread + rest);
  test.forgetAnswers();
  test.refuse("select name, refdate, id");
  EXPECT_EQ(report(), "Comparison of data in tables\nCouldn't retrieve list of all tables.");
  EXPECT_EQ(runState.lngTypesRead, 0);
}

TEST_F(BulkData, CommandsCheckWhatTheyNeed) {
  load(tables("ab"), tables("ab"));
  const auto box = [&](const std::function<void()>& command) {
    test.host.boxes.clear();
    command();
    EXPECT_EQ(shownText, "");
    return test.host.boxes.size() == 1 ? test.host.boxes[0].title + ": " + test.host.boxes[0].text : "";
  };
  Workspace empty;
  EXPECT_EQ(box([&] { DataCompareAll(program, empty, *this, {}); }),
            "Cannot Compare: Cannot compare - the list of objects is empty.");
  EXPECT_EQ(box([&] { DataCompareSelective(program, empty, *this, 0, "A", "", true, false, {}, {}); }),
            "Cannot Compare: Cannot compare - the list of databases is empty.");
  EXPECT_EQ(box([&] { DataCompareSelective(program, empty, *this, 6, "A", "B", true, false, {}, {}); }),
            ": Wrong index value in Sub DataCompareSelective, Index = 6");

  // The list of objects: left, with one chosen, with all chosen.
  struct Case {
    std::function<void(frmListObjects&)> choice;
    const char* part;
    std::size_t selected;
  };
  const Case cases[] = {
      {[](frmListObjects& form) { form.cmdCancel.personClicks(); }, "", 0},
      {[](frmListObjects& form) { form.pvlSqlObj[0].personTicks(1, true); }, "1 objects selected in Target", 1},
      {[](frmListObjects& form) { form.cmdSelectAll.personClicks(); }, "\r\nComparison of data in tables", 2}};
  for (const Case& each : cases) {
    call = {};
    test.host.windows.push_back([&](Form& shown) {
      auto& form = dynamic_cast<frmListObjects&>(shown);
      each.choice(form);
      if (!form.closed()) form.cmdOK.personClicks();
    });
    run([&] { MenuDataCompSelective(program, empty, *this, {}); });
    EXPECT_EQ(shownText.empty(), each.selected == 0);
    EXPECT_NE(shownText.find(each.part), std::string::npos) << shownText;
    EXPECT_EQ(call.selection.arrSelectedSource.size(), each.selected);
    EXPECT_EQ(call.intCompSubType, each.selected == 0 ? 0 : 50);
  }
}

}  // namespace
}  // namespace qrel
