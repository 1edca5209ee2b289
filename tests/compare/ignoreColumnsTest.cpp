#include <cerrno>

#include "compare/structure/frmIgnoreColumnsAdd.h"
#include "compare/structure/frmIgnoreColumnsView.h"
#include "compare/structure/modIgnoreColumns.h"
#include "platform/fileFaults.h"
#include "platform/files.h"
#include "tests/compare/compareAllFixture.h"

namespace qrel {
namespace {

using Names = std::vector<std::string>;

class IgnoredColumns : public CompareAllTest {
 protected:
  IgnoredColumns() { ConnectIgnoredColumns(program); }

  Names list(long enmList, const std::string& strFullName) {
    Names names{"old"};
    const std::int32_t lngCount = GetIgnoredColumns(program, enmList, strFullName, names);
    EXPECT_EQ(static_cast<std::size_t>(lngCount), names.size());
    return names;
  }
  void save(long enmList, const std::string& strFullName, const Names& names) {
    SaveIgnoredColumns(program, enmList, strFullName, names, static_cast<std::int32_t>(names.size()));
  }
  // What a person does in the window for table S.A.t, and whether it was saved.
  bool edit(const std::function<void(frmIgnoreColumnsAdd&)>& script, long enmList = ignoredColsStruct) {
    frmIgnoreColumnsAdd form(program);
    test.host.windows.push_back([&](Form&) { script(form); });
    bool blnSaved = false;
    form.ShowUp(enmList, 0, "S", "A", "t", 0, blnSaved, ignored);
    return blnSaved;
  }
  static std::string ticks(const frmIgnoreColumnsAdd& form) {
    std::string text;
    for (std::size_t row = 0; row < form.pvlSqlObj0.count(); ++row)
      text += (form.pvlSqlObj0.ticked(row) ? "+" : "-") + form.pvlSqlObj0.cell(row, 0);
    return text;
  }

  std::int32_t ignored = -1;
};

TEST_F(IgnoredColumns, EachListHasAFileAndEachTableASection) {
  save(ignoredColsStruct, "S.A.t", {"c", "a"});
  save(ignoredColsStruct, "S.B.t", {"x"});
  save(ignoredColsData, "S.A.t", {"d"});
  EXPECT_EQ(list(ignoredColsStruct, "S.A.t"), (Names{"c", "a"}));
  EXPECT_EQ(list(ignoredColsStruct, "S.B.t"), Names{"x"});
  EXPECT_EQ(list(ignoredColsData, "S.A.t"), Names{"d"});
  EXPECT_EQ(list(ignoredColsDataAnalysis, "S.A.t"), Names{});
  EXPECT_EQ(list(4, "S.A.t"), Names{});
  save(ignoredColsStruct, "S.A.t", {"b"});
  save(ignoredColsStruct, "S.B.t", {});
  EXPECT_EQ(files::readWholeFile(test.folder.path() / "qrel_ignored_cols_struct.ini"), "[S.A.t]\r\n0=b\r\n");
}

TEST_F(IgnoredColumns, AFileMadeElsewhereIsReadWhateverItsKeys) {
  test.folder.write("qrel_ignored_cols_struct.ini",
                    "[S.A.t]\n7=a\nx = b c \n[srv.x.db.dbo.t]\n0=z\n[empty.e.e]\n[u]\n0=w\n");
  EXPECT_EQ(list(ignoredColsStruct, "S.A.t"), (Names{"a", "b c"}));
  std::string strListing = "old";
  std::vector<tIgnoredColumn> arrRecords(3);
  EXPECT_EQ(GetAllIgnoredColumns(program, ignoredColsStruct, strListing, arrRecords), 4);
  EXPECT_EQ(strListing, "S, A, t, a\r\nS, A, t, b c\r\nsrv, x, db, z\r\nu, , , w\r\n");
  EXPECT_EQ(arrRecords[2].strTable, "db");
}

TEST_F(IgnoredColumns, AListThatCanNotBeSavedIsToldAndStays) {
  save(ignoredColsStruct, "S.A.t", {"old", "older"});
  const std::string strFile = program.main.gstrIgnoredColsStructIni;
  const std::string before = files::readWholeFile(strFile);
  {
    const files::FaultScope full([](files::Operation operation, const std::filesystem::path&) {
      return operation == files::Operation::Write ? ENOSPC : 0;
    });
    test.host.windows.push_back(leaveAlone);
    EXPECT_FALSE(SaveIgnoredLists(program, ignoredColsStruct, {{"S.A.t", {"a"}}, {"S.B.t", {"b"}}}));
  }
  EXPECT_EQ(test.host.shown.back(), "frmErrorReport");
  EXPECT_TRUE(test.host.boxes.empty());
  EXPECT_EQ(files::readWholeFile(strFile), before);

  // A file that can't be read is no empty list, and isn't replaced by one.
  const std::string damaged = before + "[half";
  files::writeAtomically(strFile, damaged);
  test.host.windows.push_back(leaveAlone);
  EXPECT_EQ(list(ignoredColsStruct, "S.A.t"), Names{});
  test.host.windows.push_back(leaveAlone);
  EXPECT_FALSE(SaveIgnoredColumns(program, ignoredColsStruct, "S.A.t", {"a"}, 1));
  ASSERT_EQ(test.host.boxes.size(), 1u);
  EXPECT_EQ(test.host.boxes[0].text, "Saving list of ignored columns - delete section failed.");
  EXPECT_EQ(test.host.boxes[0].icon, Icon::Information);
  EXPECT_EQ(files::readWholeFile(strFile), damaged);
}

TEST_F(IgnoredColumns, TheTextIsReadWithoutTheColumnsOfItsOwnList) {
  load("CREATE TABLE t (a int, b int, c int)", "CREATE TABLE t (a int, b int, c int)");
  save(ignoredColsStruct, "S.A.t", {"B", "gone"});
  save(ignoredColsData, "S.A.t", {"a"});
  tServer& server = program.main.gtypSelServ[0];
  const struct {
    const char* database;
    std::optional<IgnoredList> list;
    const char* text;
    std::size_t ignored;
  } cases[] = {{"A", ignoredColsStruct, "[a] [int] NULL\r\n[c] [int] NULL", 2},
               {"A", ignoredColsData, "[b] [int] NULL\r\n[c] [int] NULL", 1},
               {"A", ignoredColsDataAnalysis, "[a] [int] NULL\r\n[b] [int] NULL\r\n[c] [int] NULL", 0},
               {"A", std::nullopt, "[a] [int] NULL\r\n[b] [int] NULL\r\n[c] [int] NULL", 0},
               {"B", ignoredColsStruct, "[a] [int] NULL\r\n[b] [int] NULL\r\n[c] [int] NULL", 0}};
  for (const auto& each : cases) {
    tTableStructure table;
    EXPECT_TRUE(GetTableStructure(program, server, {each.database, "t", 0, each.list}, table));
    EXPECT_EQ(table.strText, each.text);
    EXPECT_EQ(table.arrIgnored.size(), each.ignored) << each.text;
  }
}

TEST_F(IgnoredColumns, ARunOverTablesLeavesThemOut) {
  load("CREATE TABLE t (a int, b int)", "CREATE TABLE t (a int, b char(3))");
  program.settings.IgnoreColSeq = false;
  save(ignoredColsStruct, "S.A.t", {"b"});
  EXPECT_NE(section(objTables).find("\tt (some columns ignored during comparison)\n\t(1 table)"), std::string::npos);
  save(ignoredColsStruct, "S.B.t", {"b"});
  EXPECT_TRUE(section(objTables).ends_with("identical. (Some columns were ignored during comparison.)"));
}

TEST_F(IgnoredColumns, AreThoseOfTheListedNameThenOfTheBareOne) {
  const std::string schema = "CREATE SCHEMA s\nGO\n";
  load(schema + "CREATE TABLE t (a int)\nCREATE TABLE s.t (a int, x int)",
       schema + "CREATE TABLE t (a int, y int)\nCREATE TABLE s.t (a int)");
  program.settings.IgnoreColSeq = false;
  save(ignoredColsStruct, "S.A.s.t", {"x"});
  save(ignoredColsStruct, "S.B.t", {"y"});
  const std::tuple<const char*, const char*, Names> cases[] = {
      {"A", "s.t", {"x"}}, {"A", "dbo.t", {}}, {"A", "t", {}}, {"B", "dbo.t", {"y"}}, {"B", "s.t", {"y"}}};
  for (const auto& [database, table, names] : cases)
    EXPECT_EQ(IgnoredColumnsOfTable(program, ignoredColsStruct, "S", database, table), names) << database << table;
  EXPECT_TRUE(section(objTables).ends_with("identical. (Some columns were ignored during comparison.)"));
  save(ignoredColsStruct, "S.B.dbo.t", {"a"});
  EXPECT_NE(section(objTables).find("\tdbo.t (some columns ignored during comparison)\n\t(1 table)"), std::string::npos)
      << "a list of its own wins";
}

TEST_F(IgnoredColumns, TheWindowIsOfOneTableOfOneSide) {
  const std::string schema = "CREATE SCHEMA s\nGO\n";
  load(schema + "CREATE TABLE s.t (wrong int)", schema + "CREATE TABLE t (wrong int)\nCREATE TABLE s.t (a int, b int)");
  save(ignoredColsStruct, "S.B.t", {"b"});
  std::vector<TwoStr> tables;
  long count = 0;
  ASSERT_TRUE(GetAllObjectsOfType(program, objTables, program.main.gtypSelServ[1], "B", tables, count, 1));
  program.main.gtypSelServ[0].Name = "Nowhere";
  frmIgnoreColumnsAdd form(program);
  test.host.windows.push_back([&](Form&) {
    EXPECT_EQ(ticks(form), "+a-b") << "what is in force is shown";
    form.pvlSqlObj0.personTicks(0, false);
    form.pvlSqlObj0.personTicks(1, true);
    form.personPressesEnter();
  });
  bool blnSaved = false;
  form.ShowUp(ignoredColsStruct, 1, "S", "B", "s.t", tables.at(1).lngId, blnSaved, ignored);
  EXPECT_EQ(list(ignoredColsStruct, "S.B.s.t"), Names{"a"});
  EXPECT_EQ(list(ignoredColsStruct, "S.B.t"), Names{"b"});
}

TEST_F(IgnoredColumns, TheWindowShowsAndSavesATablesList) {
  load("CREATE TABLE t (a int, b int, c int)", "");
  save(ignoredColsStruct, "S.A.t", {"c", "gone", "B"});
  EXPECT_TRUE(edit([&](frmIgnoreColumnsAdd& form) {
    EXPECT_EQ(form.caption, "Ignore Columns - Structure Comparison");
    EXPECT_EQ(form.lblGen0.text(), "Deselect columns which you want to be ignored during structure comparison.");
    EXPECT_EQ(form.lblTableName.text(), "Table: t");
    EXPECT_EQ(ticks(form), "+a+b-c") << "a name in other case is not this column's";
    form.pvlSqlObj0.personTicks(0, false);
    form.personPressesEnter();
    EXPECT_TRUE(form.closed());
  }));
  EXPECT_EQ(ignored, 2);
  EXPECT_EQ(list(ignoredColsStruct, "S.A.t"), (Names{"a", "c"})) << "only columns that the table has";

  EXPECT_TRUE(edit([](frmIgnoreColumnsAdd& form) {
    form.lblGen2.personClicks();
    EXPECT_EQ(ticks(form), "+a+b+c");
    form.cmdOK.personClicks();
  }));
  EXPECT_EQ(ignored, 0);
  EXPECT_EQ(files::readWholeFile(test.folder.path() / "qrel_ignored_cols_struct.ini"), "");
}

TEST_F(IgnoredColumns, AllColumnsCanNotBeIgnoredAndCancelSavesNothing) {
  load("CREATE TABLE t (a int, b int)", "");
  EXPECT_FALSE(edit([&](frmIgnoreColumnsAdd& form) {
    form.lblGen3.personClicks();
    EXPECT_EQ(ticks(form), "-a-b");
    form.cmdOK.personClicks();
    ASSERT_EQ(test.host.boxes.size(), 1u);
    EXPECT_EQ(test.host.boxes[0].text, "Please select at least one column or click Cancel button.");
    EXPECT_FALSE(form.closed());
    form.pvlSqlObj0.personTicks(0, true);
    form.personPressesEsc();
  }));
  EXPECT_EQ(ignored, -1);
  EXPECT_EQ(list(ignoredColsStruct, "S.A.t"), Names{});
  EXPECT_FALSE(edit([](frmIgnoreColumnsAdd& form) { form.cmdCancel.personClicks(); }, 9));
  EXPECT_EQ(test.host.boxes.back().text, "menmMode not set");
}

TEST_F(IgnoredColumns, TheViewListsAWholeFileAndHandsItOn) {
  save(ignoredColsData, "S.A.t", {"a", "b"});
  save(ignoredColsData, "S.B.dbo.u", {"c"});
  const std::string strAll = "S, A, t, a\r\nS, A, t, b\r\nS, B, dbo, c\r\n";
  const std::string strFile = (test.folder.path() / "list.txt").string();
  frmIgnoreColumnsView form(program);
  test.host.windows.push_back([&](Form&) {
    EXPECT_EQ(form.caption, "Ignore Columns - Data Comparison");
    EXPECT_EQ(form.lblGen.text(), "The columns listed below are ignored during data comparisons.");
    EXPECT_EQ(form.lblCount.text(), "Number of columns listed: 3");
    ASSERT_EQ(form.vsfGrid.rowCount(), 4u);
    EXPECT_EQ(form.vsfGrid.text(2, 3), "b");
    EXPECT_EQ(form.vsfGrid.text(3, 2), "dbo");
    form.cmdCopyClip.personClicks();
    test.host.files.push_back(strFile);
    form.cmdCopyToFile.personClicks();
    form.cmdSendToNotepad.personClicks();
    form.cmdExit.personClicks();
  });
  form.ShowUp(ignoredColsData);
  EXPECT_EQ(test.host.clipboard, strAll);
  EXPECT_EQ(files::readWholeFile(strFile), strAll);
  EXPECT_TRUE(test.host.fileDialogs.at(0).defaultFile.ends_with("/Report.txt"));
  ASSERT_EQ(test.host.opened.size(), 1u);
  EXPECT_EQ(files::readWholeFile(test.host.opened[0]), strAll);
}

TEST_F(IgnoredColumns, AnEmptyViewHasNothingToCopy) {
  frmIgnoreColumnsView form(program);
  test.host.windows.push_back([&](Form&) {
    EXPECT_EQ(form.caption, "Ignore Columns - Structure Comparison");
    EXPECT_EQ(form.lblCount.text(), "Number of columns listed: 0");
    form.cmdCopyClip.personClicks();
    form.cmdCopyToFile.personClicks();
  });
  form.ShowUp(ignoredColsStruct);
  ASSERT_EQ(test.host.boxes.size(), 2u);
  EXPECT_EQ(test.host.boxes[0].text, "There is nothing to copy to the Clipboard.");
  EXPECT_EQ(test.host.boxes[1].text, "There is nothing to copy to file.");
}

}  // namespace
}  // namespace qrel
