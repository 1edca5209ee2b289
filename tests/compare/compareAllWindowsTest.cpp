// The windows and commands of a whole-database comparison.
#include "compare/all/frmCompareAll.h"
#include "compare/all/frmListObjects.h"
#include "db/modSchema.h"
#include "embedded/load/loader.h"
#include "tests/compare/compareAllFixture.h"

namespace qrel {
namespace {

using CompareAllWindows = CompareAllTest;

// Does something at every change of a control.
class OnChange : public ControlObserver {
 public:
  OnChange(Control& control, std::function<void()> action) : action_(std::move(action)) { control.observer = this; }
  void controlChanged(Control&) override { action_(); }

 private:
  std::function<void()> action_;
};

TEST_F(CompareAllWindows, SeveralTypesOneAfterTheOther) {
  load(procedure("p") + "CREATE TABLE t (a int)", "CREATE TABLE t (a int)");
  program.state<modSchemaState>().gblnSchemaFilter[1] = true;
  program.state<modSchemaState>().gstrSchemaFilter[1] = "dbo";
  frmCompareAll* form = nullptr;
  std::string labels;
  test.host.windows.push_back([&](Form& shown) {
    form = dynamic_cast<frmCompareAll*>(&shown);
    EXPECT_EQ(form->parts.txtTXProc[1].pageWidth, 20000) << "the hidden panes are set up";
    EXPECT_FALSE(form->parts.chkObjType[6].visible() || form->parts.chkObjType[7].visible());
    for (CheckBox& box : form->parts.chkObjType) box.personSets(false);
    form->personPressesEnter();
    EXPECT_EQ(test.host.boxes.back().text, "Please select at least one object type to be compared.");
    form->parts.chkObjType[6].setChecked(true);
    form->personPressesEnter();
    EXPECT_EQ(test.host.boxes.size(), 2U) << "constraints are not in use, so nothing is checked";
    form->parts.chkObjType[0].personSets(true);
    form->parts.chkObjType[1].personSets(true);
    test.host.onDoEvents = [&] { test.host.tickCount = 3723999; };
    form->personPressesEnter();
    EXPECT_TRUE(form->closed());
    EXPECT_EQ(form->lblDatabases.text(), "Source: S.A\nTarget: S.B");
    for (const Label& label : form->parts.lblComparing)
      if (label.visible()) labels += label.text() + "|";
  });
  cmdCompareAll_Click(program, *this, {});
  EXPECT_EQ(labels, "Comparing tables... Finished|Comparing procedures... Finished|");
  EXPECT_EQ(replaceAll(shownText, "\r\n", "\n"),
            "Comparison of databases\n\nSource database S.A\nTarget database S.B\n"
            "Target - applied filtering by Schema: dbo\n"
            "\n\nComparison of tables\nThere is 1 table in Source database.\nThere is 1 table in Target database.\n"
            "The structure of all tables in both databases is identical."
            "\n\nComparison of procedures\nThere is 1 procedure in Source database.\n"
            "There are no procedures in Target database.\n\n\nTime Elapsed: 01:02:03");
  EXPECT_EQ(call.strObjectTypes, "1,1,0,0,0,0,1,0");
  EXPECT_EQ(call.intCompSubType * 100 + call.intDetailType, 1000);
  EXPECT_EQ(state().lngSourceOnly, 1);
  EXPECT_EQ(program.report.gstrReportText, "") << "cleared once it was shown";
}

TEST_F(CompareAllWindows, TypesAreTickedAsLastTime) {
  const auto ticks = [&] {
    const frmCompareAll window(program);
    return FlagsOfBoxes(window.parts);
  };
  EXPECT_EQ(ticks(), "1,1,1,1,1,1,0,0") << "all that are in use";
  load(procedure("p"), procedure("p"));
  std::string progress;
  OnChange* watched = nullptr;
  test.host.windows.push_back([&](Form& shown) {
    auto& window = dynamic_cast<frmCompareAll&>(shown);
    for (CheckBox& box : window.parts.chkObjType) box.personSets(false);
    window.cmdSelectAll.personClicks();
    EXPECT_EQ(FlagsOfBoxes(window.parts), "1,1,1,1,1,1,0,0");
    window.parts.chkObjType[0].personSets(false);
    OnChange each(window.parts.lblProgress, [&] { progress += window.parts.lblProgress.text() + "|"; });
    watched = &each;
    window.personPressesEnter();
  });
  cmdCompareAll_Click(program, *this, {});
  EXPECT_NE(watched, nullptr);
  EXPECT_EQ(progress, "1 of 1 in Source:||1 of 1 in Target:|");
  EXPECT_EQ(ticks(), "0,1,1,1,1,1,0,0");
  program.settings.AnalyzeConstraints = true;
  EXPECT_EQ(ticks(), "0,1,1,1,1,1,1,0") << "a type that came into use since";
}

TEST_F(CompareAllWindows, SavedProcessStartsAtOnce) {
  load(procedure("p"), procedure("p"));
  // The flags of a process that an earlier version stored.
  const tReplay replay{true, 10, 0, "0,1,1,0,0,0", "out.txt", true};
  test.host.windows.push_back(leaveAlone);
  cmdCompareAll_Click(program, *this, replay);
  EXPECT_NE(shownText.find("All procedures in both databases are identical.\r\n\r\nComparison of functions\r\n"),
            std::string::npos);
  EXPECT_TRUE(call.replay.blnAuto && call.replay.strExportPath == "out.txt" && call.replay.blnPrint);
  EXPECT_EQ(call.strObjectTypes, "0,1,1,0,0,0,0,0");
}

TEST_F(CompareAllWindows, CancelInTheMiddleLeavesNoReport) {
  std::string script;
  for (int i = 0; i < 30; ++i) script += procedure("p" + std::to_string(i));
  load(script, script);
  for (const int millisecondsAnObject : {0, 5}) {
    frmCompareAllTables form(program);
    int names = 0, yields = 0;
    OnChange each(form.parts.lblCurProcName, [&] {
      ++names;
      test.host.tickCount += millisecondsAnObject;
    });
    test.host.onDoEvents = [&] {
      ++yields;
      EXPECT_FALSE(form.closeRequested()) << "a run is on";
      if (names > 40) form.personPressesEsc();
    };
    test.host.windows.push_back(leaveAlone);
    bool blnResult = false;
    program.report.gstrReportText.clear();
    form.ShowUp("A", "B", objProcedures, false, true, blnResult);
    EXPECT_EQ(blnResult, millisecondsAnObject == 0) << "a standing clock gives no occasion to press it";
    EXPECT_EQ(program.report.gstrReportText.empty(), !blnResult);
    EXPECT_EQ(yields > 30, millisecondsAnObject > 0) << yields;
    EXPECT_TRUE(form.closed() && !form.parts.tmrStatus.enabled());
    EXPECT_EQ(test.host.pointer(), Pointer::Default);
  }
  test.host.onDoEvents = [&] { state().gblnCancelCompare = true; };
  test.host.windows.push_back(leaveAlone);
  CompStruct_BulkSel_SimpleDet_All(program, *this, 1, false, false);
  EXPECT_EQ(shownText, "") << "no report window";
}

// A load that takes a database's place in the middle of a run shows in the next run, as a whole, and not in this one.
TEST_F(CompareAllWindows, ARunReadsOneStateOfEachDatabase) {
  std::string script;
  for (int i = 0; i < 30; ++i) script += procedure("p" + std::to_string(i));
  load(script, script);
  const auto compareOnce = [&](const std::function<void()>& whileItRuns) {
    frmCompareAllTables form(program);
    int names = 0;
    OnChange each(form.parts.lblCurProcName, [&] {
      if (++names == 10) whileItRuns();
    });
    test.host.windows.push_back(leaveAlone);
    bool blnResult = false;
    form.ShowUp("A", "B", objProcedures, false, true, blnResult);
    EXPECT_TRUE(blnResult);
    EXPECT_GE(names, 10);
    return state().lngDifferent + state().lngSourceOnly + state().lngTargetOnly;
  };
  EXPECT_EQ(compareOnce([&] {
              LoadOptions replace;
              replace.replace = true;
              const auto fresh = test.folder.write("fresh.sql", procedure("p20"));
              EXPECT_TRUE(loadScripts(test.servers, "S", "B", {fresh}, replace).failed.empty());
            }),
            0);
  EXPECT_EQ(compareOnce([] {}), 29);
}

TEST_F(CompareAllWindows, TimerShowsTheRun) {
  load("", "");
  frmCompareAll form(program);
  const auto lit = [&] {
    std::string names;
    for (const Control& shape : form.parts.shpStatus)
      if (shape.visible()) names += shape.name;
    return names;
  };
  EXPECT_EQ(lit(), "shpStatus(0)");
  form.parts.tmrStatus.setEnabled(true);
  test.host.tickCount = 61000;
  for (int i = 0; i < 16; ++i) form.parts.tmrStatus.tick();
  EXPECT_EQ(lit(), "shpStatus(1)") << "15 in a cycle";
  EXPECT_EQ(form.parts.lblTime.text(), "00:01:01");
  form.parts.tmrStatus.setEnabled(false);
  form.personPressesEsc();
  EXPECT_TRUE(form.closed()) << "Esc closes the window while no run is on";
}

TEST_F(CompareAllWindows, NoConnectionNoReport) {
  load("", "");
  const auto run = [&](const std::string& source, const std::string& target) {
    test.host.windows.push_back(leaveAlone);  // the report of the error
    test.host.windows.push_back(leaveAlone);
    databases = {source, target};
    CompStruct_BulkSel_SimpleDet_All(program, *this, 0, false, false);
    EXPECT_EQ(test.host.boxes.back().icon, Icon::Warning);
    return test.host.boxes.back().text;
  };
  EXPECT_EQ(run("Nowhere", "B"), "Cannot connect to Source database - aborting.");
  EXPECT_EQ(run("A", "Nowhere"), "Cannot connect to Target database - aborting.");
  program.main.gtypSelServ[1].Name = "(localdb)\\S";
  program.main.gtypSelServ[1].LocalDb = true;
  EXPECT_EQ(run("A", "B"), "Cannot connect to Target database - aborting.");
  EXPECT_EQ(shownText, "");

  databases = {"A", ""};
  cmdCompareAll_Click(program, *this, {});
  EXPECT_EQ(test.host.boxes.back().text, "Cannot compare - the list of databases is empty.");
  EXPECT_EQ(test.host.boxes.back().title, "Cannot Compare");
  databases = {"A", "B"};
  CompStruct_BulkSel_SimpleDet_All(program, *this, 8, false, false);
  EXPECT_EQ(test.host.boxes.back().text, "Wrong index value in Sub mnuComparisonAllObjects_Click, Index = 8");
}

TEST_F(CompareAllWindows, ListOfObjectsTicksTwinsAndRefusesOneSidedChoices) {
  load(procedure("a") + procedure("b") + procedure("Same"), procedure("b") + procedure("same"));
  test.host.windows.push_back([&](Form& shown) {
    auto& form = dynamic_cast<frmListObjects&>(shown);
    EXPECT_EQ(form.lblServer1.text() + form.lblDb1.text() + form.lblServer2.text() + form.lblDb2.text() +
                  form.lblObjectType.text(),
              "SASBPROCEDURES");
    auto& [source, target] = form.pvlSqlObj;
    const auto refused = [&] {
      form.personPressesEnter();
      EXPECT_FALSE(form.closed());
      return test.host.boxes.back().text;
    };
    EXPECT_EQ(refused(), "Please select at least one object or click Cancel button.");
    source.personTicks(0, true);
    EXPECT_EQ(refused(), "Please select at least one object in Target database or click Cancel button.");
    source.personTicks(2, true);
    EXPECT_FALSE(target.ticked(1)) << "names in another case are no twins";
    form.cmdDeselectAll.personClicks();
    target.personTicks(1, true);
    EXPECT_EQ(refused(), "Please select at least one object in Source database or click Cancel button.");
    source.personTicks(1, true);
    EXPECT_TRUE(target.ticked(0));
    target.personTicks(0, false);
    EXPECT_FALSE(source.ticked(1));
    source.personTicks(1, true);
    form.personPressesEnter();
    EXPECT_TRUE(form.closed());
  });
  test.host.windows.push_back([&](Form& shown) { EXPECT_EQ(shown.caption, "Compare Selected Objects"); });
  CompStruct_BulkSel_SimpleDet_All(program, *this, 1, true, false);
  EXPECT_EQ(call.intCompSubType * 100 + call.intDetailType, 3030);
  EXPECT_EQ(call.selection.arrSelectedSource, std::vector<std::string>{"b"});
  EXPECT_EQ(call.selection.arrSelectedTarget, (std::vector<std::string>{"b", "same"}));
  EXPECT_EQ(call.selection.lngSelectedSource * 10 + call.selection.lngSelectedTarget, 12);
  EXPECT_EQ(call.strObjectTypes, "0,1,0,0,0,0,0,0");
  EXPECT_NE(shownText.find("2 objects selected in Target database"), std::string::npos);
}

TEST_F(CompareAllWindows, CommandsNameTheirKindOfRun) {
  load(procedure("a") + procedure("b"), procedure("a"));
  const auto leave = [](Form& form) { form.personPressesEsc(); };
  const auto chooseAll = [](Form& form) {
    auto& list = dynamic_cast<frmListObjects&>(form);
    list.cmdSelectAll.personClicks();
    list.cmdOK.personClicks();
  };
  const auto chooseOne = [](Form& form) {
    auto& list = dynamic_cast<frmListObjects&>(form);
    list.pvlSqlObj[0].personTicks(0, true);
    list.cmdOK.personClicks();
  };
  struct Case {
    bool selective;
    bool details;
    std::function<void(Form&)> choice;
    int kind;  // 100 * sub type + detail type; 0: no report
    bool selectiveReport;
  };
  const Case cases[] = {
      {false, false, nullptr, 2010, false}, {false, true, nullptr, 2020, false},  {true, false, chooseOne, 3030, true},
      {true, true, chooseOne, 3040, true},  {true, true, chooseAll, 2020, false}, {true, false, leave, 0, false},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.kind);
    call = {};
    shownText.clear();
    if (each.choice) test.host.windows.push_back(each.choice);
    if (each.kind > 0) test.host.windows.push_back(leaveAlone);
    CompStruct_BulkSel_SimpleDet_All(program, *this, 1, each.selective, each.details);
    EXPECT_EQ(call.intCompSubType * 100 + call.intDetailType, each.kind);
    EXPECT_EQ(shownText.find("Selective comparison") != std::string::npos, each.selectiveReport);
    EXPECT_EQ(call.selection.arrSelectedTarget.size(), each.selectiveReport ? 1U : 0U);
  }
  test.host.windows.push_back(leaveAlone);
  MenuCompareAll_Click(program, *this, 1, "A", "B", true, false, {true, "out.txt", false}, {1, 1, {"b"}, {"b"}});
  EXPECT_NE(shownText.find("\tb\r\n\t(1 procedure)"), std::string::npos) << "a saved process brings its selection";
  EXPECT_EQ(call.replay.strExportPath, "out.txt");
}

}  // namespace
}  // namespace qrel
