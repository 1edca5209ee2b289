// Icons, titles and questions of the boxes of a data comparison, and the words that stand in its windows.
#include "app/settings.h"
#include "compare/data/frmCompareDataOptions.h"
#include "db/mdlObjects.h"
#include "tests/compare/data/twoTables.h"

namespace qrel {
namespace {

class DataBoxes : public TwoTables {
 protected:
  DataBoxes() {
    const std::string table = "CREATE TABLE t (Id int, b varchar(10), m text)\nCREATE TABLE none (Id int)\n";
    load(table + "INSERT t VALUES (1, 'x', ''), (2, 'y', ''), (3, 'z', '')",
         table + "INSERT t VALUES (1, 'x', ''), (2, 'Y', ''), (3, 'Z', ''), (4, 'Z', '')");
    workspace.cmbType.add("Tables", objTables);
    workspace.cmbType.add("Views", objViews);
    workspace.cmbType.select(0);
    SaveSetting(program, *findSetting("ShowDataCompOpt"), 0);
    program.settings.gblnDataCaseSensitive = true;
    select("t");
  }

  // The boxes since the last call: icon, title, buttons where there are several, first words. One a line.
  std::string told(std::size_t words = 20) {
    std::string text;
    for (const auto& box : test.host.boxes) {
      static const char* const icons[] = {"plain", "info", "question", "warning", "critical"};
      text += std::string(text.empty() ? "" : "\n") + icons[static_cast<std::size_t>(box.icon)] + "|" + box.title +
              (box.buttons == Buttons::YesNo ? "|Yes or No" : "") + "|" + box.text.substr(0, words);
    }
    test.host.boxes.clear();
    return text;
  }
  void expectWindow(std::function<void(Form&)> person = [](Form&) {}) {
    test.host.windows.push_back(std::move(person));
  }
};

TEST_F(DataBoxes, OfTheCommand) {
  cmdCompData_Click(program, workspace);
  EXPECT_EQ(told(), "info|Cannot Compare|Cannot compare - the");
  workspace.txtTXProc[0].setText("[Id] [int]");
  workspace.cmbType.select(1);
  cmdCompData_Click(program, workspace);
  EXPECT_EQ(test.host.boxes.back().text,
            "This functionality is enabled only when Tables are selected as active objects.\r\nTo set Tables as active "
            "objects set focus to Objects Type combo box (using mouse or by pressing key F6) and select first item "
            "from the list.");
  EXPECT_EQ(told(), "info||This functionality i");
  EXPECT_EQ(workspace.cmbType.focusRequests(), 1U);
  workspace.cmbType.select(0);
  for (const Answer answer : {Answer::No, Answer::Cancel}) {
    test.host.answers = {answer};
    cmdCompData_Click(program, workspace);
    EXPECT_EQ(told(), "question|Different Structures|Yes or No|Compared tables have");
  }
}

TEST_F(DataBoxes, OfTheEnd) {
  tDataCompRequest wanted = request();
  tDataCompResult result;
  wanted.blnDisplayDiffs = false;
  expectWindow();
  RunDataComparison(program, wanted, result);
  EXPECT_EQ(told(), "plain||Number of records in");
  wanted.arrOffsets = {0, 9};
  expectWindow();
  RunDataComparison(program, wanted, result);
  EXPECT_TRUE(test.host.boxes.front().text.starts_with("Error occured while comparing records.\r\n\r\nError 3021 ("));
  EXPECT_TRUE(test.host.boxes.front().text.ends_with(".\r\n"));
  EXPECT_EQ(told(), "warning||Error occured while \nplain||Number of records in");
  select("none");
  expectWindow();
  RunDataComparison(program, request(), result);
  EXPECT_EQ(told(), "plain||Data stored in both ");
  select("t");
  test.host.onDoEvents = [this] { state.gblnStopComparison = true; };
  expectWindow();
  RunDataComparison(program, request(), result);
  test.host.onDoEvents = nullptr;
  EXPECT_EQ(told(), "plain||Operation cancelled ");

  program.settings.glngMaxRowsInDiffTable = 2;
  expectWindow();
  expectWindow([](Form& form) {
    EXPECT_EQ(dynamic_cast<frmCompareData&>(form).lblMaxRows.text(), "Only first 2 different records are shown");
  });
  RunDataComparison(program, request(), result);
  EXPECT_EQ(told(2000),
            "info|Note|Not all records will be shown in the table displaying differences between two selected tables."
            "\r\n\r\nThere are 3 differences found by the program.\r\n\r\nPlease note that program's setting for "
            "maximum number of records displayed in differences table is currently set to 2.\r\n\r\nSince there is "
            "more different records than it is currently allowed to be shown in the table, only first 2 records will "
            "be shown.\r\n\r\nIf you wish to increase the number of records shown in differences table, please click "
            "menu item Tools -> Options, click tab 'Rows to Display', change the maximum number of rows and click "
            "button 'OK'.");
}

TEST_F(DataBoxes, OfTheOptions) {
  const auto pick = [](ComboBox& list, const char* text) {
    for (std::size_t row = 0; row < list.count(); ++row)
      if (list.row(row) == text) list.select(static_cast<int>(row));
    EXPECT_TRUE(list.text() == text || list.selected() == 0);
  };
  const std::string validation = "Validate Fields Selection";
  const auto show = [&](const char* table, const std::function<void(frmCompareDataOptions&)>& person) {
    frmCompareDataOptions form(program);
    expectWindow([&](Form&) { person(form); });
    tDataCompSettings settings;
    bool blnOK = false;
    form.ShowUp({{"S", "S"}, {"A", "B"}, {table, table}, {0, 0}}, settings, blnOK);
  };
  show("t", [&](frmCompareDataOptions& form) {
    pick(form.cmbGen[0], "m");
    EXPECT_EQ(told(), "warning||The text, ntext, and");
    pick(form.cmbGen[1], "b");
    EXPECT_EQ(told(), "info||Please specify Prima");
    form.txtFiltCrit[0].personTypes("1");
    EXPECT_EQ(told(), "info||Please select Primar");
    form.ValidateFieldsSelection(0);
    EXPECT_EQ(told(), "plain||You can validlate fi");
    form.cmdDeselectAll[0].personClicks();
    EXPECT_EQ(told(), "info||Please select at lea");
    form.cmdOK.personClicks();
    EXPECT_EQ(told(), "warning||All columns cannot b");
    form.pvlSqlObj[0].personTicks(0, true);
    form.cmdOK.personClicks();
    EXPECT_EQ(told(), "warning||Currently there are ");
    for (const std::size_t row : {1, 2}) form.pvlSqlObj[1].personTicks(row, false);
    pick(form.cmbGen[3], "b");
    form.cmdOK.personClicks();
    EXPECT_EQ(told(), "warning||Column 'b' is marked");
    pick(form.cmbGen[4], "b");
    form.cmdOK.personClicks();
    EXPECT_EQ(told(), "info||Field b in target ta");
    form.chkDoNotShowDialog.personSets(true);
    EXPECT_EQ(told(), "info||This dialog screen w");
    form.optGen[1].choose();
    form.cmdValidate[1].personClicks();
    EXPECT_EQ(told(), "info||Please select Primar");
    for (const std::size_t i : {1, 3}) pick(form.cmbPK[i], "Id");
    form.cmdValidate[1].personClicks();
    EXPECT_EQ(told(), "plain||Field Id is selected");
    bool blnUnique = false;
    std::string strDuplicate;
    form.SelectedPKFieldsAreUnique(2, strDuplicate, blnUnique);
    EXPECT_EQ(told(), "warning||Wrong value of serve");
  });
  show("none", [&](frmCompareDataOptions& form) {
    form.optGen[1].choose();
    pick(form.cmbPK[1], "Id");
    form.cmdValidate[1].personClicks();
    EXPECT_EQ(told(40), "info|" + validation + "|Table none doesn't contain any data.");
    for (const char* database : {"A", "B"}) {
      const auto file = test.folder.write("drop.sql", "DROP TABLE none");
      EXPECT_TRUE(loadScripts(test.servers, "S", database, {file}, {}).failed.empty());
    }
    form.cmdValidate[1].personClicks();
    EXPECT_EQ(told(39), "warning||Error while attempting to count records\nwarning|" + validation +
                            "|Error while reading data from table non");
  });
}

TEST_F(DataBoxes, WordsOfTheDifferencesWindow) {
  const frmCompareData form(program);
  const std::pair<const TextControl*, const char*> words[] = {
      {&form.lblStats[0], "Number of records in  in Source Table:"},
      {&form.lblStats[1], "Number of records in  in Target Table:"},
      {&form.lblStats[2], "Number of different records:"},
      {&form.lblGen1, "Fields for which data differs are printed in red."},
      {&form.lblColorDesc[0], "Data in Source Table"},
      {&form.lblColorDesc[1], "Data in Target Table"},
      {&form.lblColorDesc[2], "Records present in Source Table but not in Target Table"},
      {&form.lblColorDesc[3], "Records present in Target Table but not in Source Table"},
  };
  for (const auto& [control, text] : words) EXPECT_EQ(control->text(), text);
  const std::uint32_t colours[] = {0xFFFF00, 0x80FFFF, 0xC0FFC0, 0xC0E0FF};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(form.lblColor[i].backColour, colours[i]);
  EXPECT_EQ(form.cmdExit.toolTip(), "Close this form (Alt + X)");
  EXPECT_EQ(form.cmdSave.toolTip(), "Save comparison's process parameters so it can be re-run later (Alt + S)");
  EXPECT_EQ(form.cmdExport.toolTip(), "Export data differences (Alt + E)");
  EXPECT_FALSE(form.lblMaxRows.visible());

  tDataCompRequest wanted = request();
  for (const auto& each : {std::pair<std::int32_t, const char*>{0, "Record by Record"}, {7, "N/A"}}) {
    const std::string text = each.second;
    wanted.lngCompMethod = each.first;
    frmCompareData shown(program);
    expectWindow([&](Form&) { EXPECT_EQ(shown.lblGen11.text(), "Comparison method: " + text); });
    shown.ShowUp(wanted, 0, "");
  }
  frmCompareData loaded(program);
  loaded.LoadData(workspace);
  EXPECT_EQ(loaded.lblTableName[0].text(), "Source Table: t (Database: A, Server: S)");
  EXPECT_EQ(loaded.dottedNames()[1], "S.B.t");
  EXPECT_EQ(loaded.VSFlexGrid1.columnWidth(0), 540);
  EXPECT_EQ(loaded.VSFlexGrid1.columnWidth(1), 1440);
}

TEST_F(DataBoxes, WordsOfTheProgressWindow) {
  frmCompareStatus window(program);
  bool clean = true;
  test.host.onDoEvents = [&] { clean = clean && !window.lblServer1.text().empty(); };
  expectWindow();
  tDataCompResult result;
  window.ShowUp(request(), result);
  test.host.onDoEvents = nullptr;
  EXPECT_TRUE(clean);
  EXPECT_EQ(window.lblServer1.text() + window.lblDb1.text() + window.lblTable1.text(), "SAt");
  EXPECT_EQ(window.lblServer2.text() + window.lblDb2.text() + window.lblTable2.text(), "SBt");
  EXPECT_EQ(window.lblRecsCount1.text() + window.lblRecsCount2.text(), "34");
  EXPECT_EQ(test.host.pointer(), Pointer::Default);
  state.differences.reset();
}

}  // namespace
}  // namespace qrel
