#include <cerrno>

#include "app/mdlMain.h"
#include "app/settings.h"
#include "compare/data/frmCompareDataOptions.h"
#include "compare/structure/modIgnoreColumns.h"
#include "platform/fileFaults.h"
#include "platform/files.h"
#include "tests/support.h"

namespace qrel {
namespace {

using Names = std::vector<std::string>;
using Script = std::function<void(frmCompareDataOptions&)>;

// Source S.A.t has the columns Id, Name, Code, Memo (text); Target S.B.u has Id, name, Code, Memo, More.
class DataOptions : public ::testing::Test {
 protected:
  DataOptions() {
    SetFilePaths(program);
    test.load("S", "A", "CREATE TABLE t (Id int NOT NULL, Name varchar(10), Code char(3), Memo text)\n");
    test.load("S", "B", "CREATE TABLE u (Id int NOT NULL, name varchar(10), Code char(3), Memo text, More int)\n");
    program.main.gtypSelServ = {TestProgram::server("S"), TestProgram::server("S")};
  }

  bool show(const Script& script) {
    frmCompareDataOptions form(program);
    test.host.windows.push_back([&](Form&) { script(form); });
    bool blnOK = false;
    form.ShowUp(tables, result, blnOK);
    return blnOK;
  }
  // The boxes since the last call, one a line.
  std::string boxes() {
    std::string text;
    for (const auto& box : test.host.boxes) text += (text.empty() ? "" : "\n") + box.text;
    test.host.boxes.clear();
    return text;
  }
  static void pick(ComboBox& list, const std::string& strText) {
    for (std::size_t row = 0; row < list.count(); ++row)
      if (list.row(row) == strText) return list.select(static_cast<int>(row));
    ADD_FAILURE() << list.name << " has no " << strText;
  }
  static std::string texts(const std::array<ComboBox, 6>& lists) {
    std::string text;
    for (const ComboBox& list : lists) text += (text.empty() ? "" : ",") + list.text();
    return text;
  }
  std::string stored() { return files::readWholeFile(program.main.gstrTablesCompsIni); }
  Names ignoredOf(const std::string& strName) {
    Names names;
    GetIgnoredColumns(program, ignoredColsData, strName, names);
    return names;
  }

  TestProgram test;
  Program& program = test.program;
  DataCompTables tables{{"S", "S"}, {"A", "B"}, {"t", "u"}, {0, 0}};
  tDataCompSettings result;
};

TEST_F(DataOptions, NothingStoredAndOkAtOnceStoresTheDefaults) {
  result.arrSides[0].strPrimarySort = "left over";
  EXPECT_TRUE(show([](frmCompareDataOptions& form) {
    EXPECT_EQ(form.caption, "Data Comparison Options");
    EXPECT_TRUE(form.optGen[0].chosen());
    EXPECT_EQ(form.txtOffset[0].text(), "");
    EXPECT_FALSE(form.chkDoNotShowDialog.checked());
    EXPECT_EQ(form.cmbGen[5].count(), 6u);
    form.personPressesEnter();
  }));
  EXPECT_TRUE(result.blnDefaultOrder);
  EXPECT_EQ(result.arrSides[0].strPrimarySort, "");
  EXPECT_EQ(result.arrSides[1].strTertiaryCompKey, "No Field");
  const std::string strKeys =
      "PrimarySortKey=\r\nSecondarySortKey=\r\nTertiarySortKey=\r\nOffsetStartRec=0\r\nDbType=SQL Server\r\n"
      "CompMethod=0\r\nCompKey=No Field\r\nSecondaryCompKey=No Field\r\nTertiaryCompKey=No Field\r\n";
  EXPECT_EQ(stored(), "[S.A.t]\r\n" + strKeys + "IgnoreColumn=\r\n[S.B.u]\r\n" + strKeys);
  EXPECT_FALSE(files::exists(program.main.gstrIgnoredColsDataIni)) << "no column was changed";
}

TEST_F(DataOptions, ChoicesComeBackTheNextTime) {
  EXPECT_TRUE(show([](frmCompareDataOptions& form) {
    form.optGen[1].choose();
    pick(form.cmbPK[0], "Code");
    pick(form.cmbPK[2], "Id");
    pick(form.cmbGen[0], "Name");
    pick(form.cmbGen[1], "Id");
    pick(form.cmbGen[3], "name");
    form.txtOffset[0].personTypes("1x2");
    form.txtOffset[1].personTypes("1");
    form.cmdOK.personClicks();
  }));
  EXPECT_FALSE(result.blnDefaultOrder);
  EXPECT_EQ(result.lngCompMethod, compPrimaryKey);
  EXPECT_EQ(result.arrSides[0].strSecondarySort, "Id");
  EXPECT_EQ(result.arrSides[1].strPrimarySort, "name");
  EXPECT_EQ(result.arrSides[0].lngOffset, 12);
  EXPECT_EQ(result.arrSides[1].strSecondaryCompKey, "Id");

  const tDataCompSettings before = result;
  EXPECT_FALSE(show([](frmCompareDataOptions& form) {
    EXPECT_EQ(texts(form.cmbGen), "Name,Id,Default Order,name,Default Order,Default Order");
    EXPECT_EQ(texts(form.cmbPK), "Code,Code,Id,Id,No Field,No Field");
    EXPECT_TRUE(form.optGen[1].chosen());
    EXPECT_EQ(form.txtOffset[0].text() + "," + form.txtOffset[1].text(), "12,");
    pick(form.cmbGen[0], "Code");
    form.personPressesEsc();
  }));
  EXPECT_EQ(result.arrSides[0].strCompKey, "") << "nothing is handed out on Cancel";
  EXPECT_NE(stored().find("PrimarySortKey=Name\r\n"), std::string::npos);
  for (const std::size_t side : {0, 1}) {
    tDataCompSide read;
    std::int32_t lngMethod = -1;
    ReadDataCompSettings(program, side == 0, tables.arrDbs[side], tables.arrTables[side], read, lngMethod);
    EXPECT_EQ(lngMethod, compPrimaryKey);
    EXPECT_EQ(read.strPrimarySort, before.arrSides[side].strPrimarySort);
    EXPECT_EQ(read.strSecondaryCompKey, before.arrSides[side].strSecondaryCompKey);
    EXPECT_EQ(read.lngOffset, before.arrSides[side].lngOffset);
  }
  program.main.gtypSelServ[0].Name = "S2";
  tDataCompSide renamed;
  std::int32_t lngMethod = -1;
  ReadDataCompSettings(program, true, "A", "t", renamed, lngMethod);
  EXPECT_EQ(renamed.strPrimarySort, "") << "another server's table";
  EXPECT_EQ(boxes(), "");
}

TEST_F(DataOptions, BothTablesAreStoredTogetherOrNotAtAll) {
  const auto accept = [](frmCompareDataOptions& form) { form.personPressesEnter(); };
  EXPECT_TRUE(show(accept));
  const std::string before = stored();
  EXPECT_NE(before.find("[S.B.u]"), std::string::npos);
  int renames = 0;
  const files::FaultScope fault([&](files::Operation operation, const std::filesystem::path&) {
    return operation == files::Operation::Rename && ++renames == 2 ? ENOSPC : 0;
  });
  const auto change = [](frmCompareDataOptions& form) {
    form.optGen[1].choose();
    form.personPressesEnter();
  };
  EXPECT_TRUE(show(change));
  EXPECT_EQ(renames, 1);
  const std::string after = stored();
  EXPECT_TRUE(show(accept)) << "what can't be stored counts for this comparison";
  EXPECT_EQ(renames, 1) << "nothing new";
  EXPECT_TRUE(show([](frmCompareDataOptions& form) {
    form.optGen[0].choose();
    form.personPressesEnter();
  }));
  EXPECT_EQ(renames, 2);
  EXPECT_EQ(stored(), after);
  EXPECT_NE(boxes().find("qrel_tables_comps.ini"), std::string::npos);
}

TEST_F(DataOptions, KeysAreOpenByMethodAlone) {
  show([](frmCompareDataOptions& form) {
    const auto enabled = [&] {
      return std::string(form.cmbPK[5].enabled() ? "k" : "") + (form.lblPK[0].enabled() ? "l" : "") +
             (form.fraPK[1].enabled() ? "f" : "") + (form.cmdValidate[1].enabled() ? "v" : "") +
             (form.cmbGen[0].enabled() && form.txtOffset[0].enabled() ? "s" : "");
    };
    EXPECT_EQ(enabled(), "s");
    form.optGen[1].choose();
    EXPECT_EQ(enabled(), "klfvs");
    form.optGen[0].choose();
    EXPECT_EQ(enabled(), "s");
  });
}

TEST_F(DataOptions, AChainOfListsHasNoGap) {
  show([&](frmCompareDataOptions& form) {
    form.optGen[1].choose();
    pick(form.cmbGen[0], "Memo");
    EXPECT_EQ(boxes(), "The text, ntext, and image data types cannot be compared or sorted.");
    pick(form.cmbGen[4], "Id");
    EXPECT_EQ(boxes(), "Please specify Primary Sort Key before specifying Secondary Sort Key.");
    EXPECT_EQ(texts(form.cmbGen),
              "Default Order,Default Order,Default Order,Default Order,Default Order,Default Order");
    for (const std::size_t i : {0, 1, 2}) pick(form.cmbGen[i], i == 1 ? "Name" : "Id");
    for (const std::size_t i : {3, 4, 5}) pick(form.cmbGen[i], "More");
    pick(form.cmbGen[1], "Default Order");
    EXPECT_EQ(texts(form.cmbGen), "Id,Default Order,Default Order,More,More,More");
    pick(form.cmbGen[3], "Default Order");
    EXPECT_EQ(texts(form.cmbGen), "Id,Default Order,Default Order,Default Order,Default Order,Default Order");
    EXPECT_EQ(boxes(), "");

    pick(form.cmbPK[4], "Id");
    EXPECT_EQ(boxes(), "Please specify Secondary Field before specifying Tertiary Field.");
    pick(form.cmbPK[0], "Id");
    pick(form.cmbPK[2], "Name");
    EXPECT_EQ(texts(form.cmbPK), "Id,Id,Name,No Field,No Field,No Field") << "Target has no column Name";
    pick(form.cmbPK[3], "name");
    pick(form.cmbPK[4], "Code");
    EXPECT_EQ(texts(form.cmbPK), "Id,Id,Name,name,Code,Code");
    pick(form.cmbPK[3], "No Field");
    EXPECT_EQ(texts(form.cmbPK), "Id,Id,Name,No Field,Code,No Field");
    pick(form.cmbPK[2], "Memo");
    EXPECT_EQ(texts(form.cmbPK), "Id,Id,No Field,No Field,No Field,No Field");
    EXPECT_NE(boxes(), "");
    pick(form.cmbPK[1], "More");
    EXPECT_EQ(form.cmbPK[0].text(), "Id") << "only Target follows";
    pick(form.cmbPK[0], "No Field");
    EXPECT_EQ(form.cmbPK[1].text(), "No Field");
  });
}

TEST_F(DataOptions, AFilterLineWantsItsFieldFirst) {
  show([&](frmCompareDataOptions& form) {
    form.cmbOper[2].select(3);
    form.txtFiltCrit[5].personTypes("7");
    EXPECT_EQ(boxes(), "Please select Secondary Field first\nPlease select Tertiary Field first");
    EXPECT_EQ(form.cmbOper[2].text() + form.txtFiltCrit[5].text(), "=");
    pick(form.cmbFilt[0], "Code");
    EXPECT_EQ(form.cmbFilt[1].text(), "Code");
    form.cmbOper[1].select(5);
    form.txtFiltCrit[1].personTypes("7");
    EXPECT_EQ(form.cmbOper[1].text() + form.txtFiltCrit[1].text(), "<>7");
    EXPECT_EQ(boxes(), "");
  });
}

TEST_F(DataOptions, AColumnIsSelectedOnlyOnce) {
  const auto twice = [](const std::string& strName, const std::string& strSide) {
    return "Field " + strName + " in " + strSide +
           " table is selected more than once - please make sure that the selected fields are unique.";
  };
  EXPECT_FALSE(show([&](frmCompareDataOptions& form) {
    for (const std::size_t i : {3, 4}) pick(form.cmbGen[i], "More");
    form.cmdOK.personClicks();
    EXPECT_EQ(boxes(), twice("More", "target"));
    form.optGen[1].choose();
    for (const std::size_t i : {0, 2}) pick(form.cmbPK[i], "Id");
    form.cmdOK.personClicks();
    EXPECT_EQ(boxes(), twice("Id", "source"));
    pick(form.cmbPK[2], "Code");
    pick(form.cmbPK[4], "Id");
    form.cmdValidate[0].personClicks();
    EXPECT_EQ(boxes(), "Field Id is selected more than once - please make sure that the selected fields are unique.");
    std::string strDuplicate;
    bool blnUnique = false;
    form.SelectedSortFieldsAreUnique(2, strDuplicate, blnUnique);
    EXPECT_TRUE(blnUnique);
    EXPECT_EQ(boxes(), "Wrong value of server index passed: 2");
    EXPECT_FALSE(form.closed());
  }));
}

// Rows are unticked on each side; the box is what OK then says, empty when it is content.
TEST_F(DataOptions, IgnoredColumnsMustLeaveSomethingToCompare) {
  const auto inUse = [](const std::string& strColumn, const std::string& strLabel) {
    return "Column '" + strColumn +
           "' is marked as the column to be ignored during comparison.\r\nThis column is also marked as " + strLabel +
           " for comparison.\r\n\r\nPlease remove this column from the list of ignored columns.";
  };
  const struct {
    std::vector<std::size_t> source, target;
    Script keys;
    std::string box;
  } cases[] = {
      {{}, {3}, {}, ""},
      {{0}, {}, {}, "Currently there are 3 columns selected for comparison in Source and 5 in Target."},
      {{0}, {0, 4}, [](auto& form) { pick(form.cmbGen[0], "Id"); }, inUse("Id", "Primary Sort Key column (Source)")},
      {{},
       {4},
       [](auto& form) {
         pick(form.cmbGen[3], "Id");
         pick(form.cmbGen[4], "More");
       },
       inUse("More", "Secondary Sort Key column (Target)")},
      {{},
       {4},
       [](auto& form) {
         form.optGen[1].choose();
         pick(form.cmbPK[1], "More");
         pick(form.cmbGen[3], "More");
       },
       inUse("More", "Primary column (Target)")},
      {{},
       {4},
       [](auto& form) {
         form.optGen[1].choose();
         pick(form.cmbPK[0], "Id");
         pick(form.cmbPK[3], "More");
       },
       ""},
  };
  for (const auto& each : cases) {
    for (const char* strFile : {"qrel_ignored_cols_data.ini", "qrel_tables_comps.ini"})
      files::removeFile(test.folder.path() / strFile);
    const bool blnOK = show([&](frmCompareDataOptions& form) {
      if (each.keys) each.keys(form);
      for (const std::size_t row : each.source) form.pvlSqlObj[0].personTicks(row, false);
      for (const std::size_t row : each.target) form.pvlSqlObj[1].personTicks(row, false);
      form.cmdOK.personClicks();
    });
    const std::string strBoxes = boxes();
    EXPECT_EQ(blnOK, each.box.empty()) << strBoxes;
    EXPECT_EQ(strBoxes.substr(0, each.box.empty() ? std::string::npos : each.box.size()), each.box);
    EXPECT_EQ(ignoredOf("S.B.u").empty(), !blnOK);
  }
}

TEST_F(DataOptions, TheListsOfIgnoredColumnsAreShownAndSaved) {
  SaveIgnoredColumns(program, ignoredColsData, "S.A.t", {"Code", "gone"}, 2);
  SaveIgnoredColumns(program, ignoredColsStruct, "S.A.t", {"Id"}, 1);
  EXPECT_TRUE(show([&](frmCompareDataOptions& form) {
    EXPECT_TRUE(form.pvlSqlObj[0].ticked(0));
    EXPECT_FALSE(form.pvlSqlObj[0].ticked(2));
    form.cmdDeselectAll[1].personClicks();
    EXPECT_EQ(boxes(), "Please select at least one column.");
    form.cmdOK.personClicks();
    EXPECT_EQ(boxes().substr(0, 29), "All columns cannot be ignored");
    for (const std::size_t row : {0, 1, 3}) form.pvlSqlObj[1].personTicks(row, true);
    form.pvlSqlObj[1].personTicks(3, true);
    form.cmdOK.personClicks();
  }));
  EXPECT_EQ(ignoredOf("S.A.t"), Names{"Code"});
  EXPECT_EQ(ignoredOf("S.B.u"), (Names{"Code", "More"}));
  EXPECT_TRUE(show([](frmCompareDataOptions& form) {
    form.cmdSelectAll[0].personClicks();
    form.cmdSelectAll[1].personClicks();
    form.cmdOK.personClicks();
  })) << "tables of different width pass with all columns";
  EXPECT_EQ(ignoredOf("S.B.u"), Names{});
  EXPECT_EQ(boxes(), "");
}

TEST_F(DataOptions, TheWindowCanBeSwitchedOffAtOnce) {
  show([&](frmCompareDataOptions& form) {
    form.chkDoNotShowDialog.personSets(true);
    EXPECT_EQ(boxes().substr(0, 50), "This dialog screen will not be shown anymore.\r\n\r\nT");
    EXPECT_FALSE(ReadFlag(program, "ShowDataCompOpt"));
    form.cmdCancel.personClicks();
  });
  show([&](frmCompareDataOptions& form) {
    EXPECT_TRUE(form.chkDoNotShowDialog.checked());
    form.chkDoNotShowDialog.personSets(false);
  });
  EXPECT_TRUE(ReadFlag(program, "ShowDataCompOpt"));
  EXPECT_EQ(boxes(), "");
}

TEST_F(DataOptions, KeyFieldsAreTestedOnceThereIsSomethingToTest) {
  show([&](frmCompareDataOptions& form) {
    form.ValidateFieldsSelection(0);
    EXPECT_EQ(boxes(), "You can validlate fields selection only when Primary Key/Index comparison method is used.");
    form.optGen[1].choose();
    form.cmdValidate[1].personClicks();
    EXPECT_EQ(boxes(), "Please select Primary Field to be used by Primary Key/Index comparison method.");
    EXPECT_EQ(form.cmbPK[1].focusRequests(), 1u);
    pick(form.cmbPK[1], "More");
    form.cmdValidate[1].personClicks();
    EXPECT_EQ(boxes(), "Table u doesn't contain any data.");
    pick(form.cmbPK[3], "More");
    form.cmdValidate[1].personClicks();
    EXPECT_EQ(boxes(), "Field More is selected more than once - please make sure that the selected fields are unique.");
    test.load("S", "B", "INSERT INTO u (Id, name, More) VALUES (1, 'a', 5), (2, 'a', 5)\n");
    pick(form.cmbPK[3], "name");
    test.host.windows.push_back([](Form&) {});
    form.cmdValidate[1].personClicks();
    EXPECT_EQ(test.host.shown.back(), "frmCompareDataValidation");
  });
  EXPECT_EQ(boxes().substr(0, 64), "Selected fields (More, name) contain duplicate values (5,a) and ");
}

TEST_F(DataOptions, ATableThatCanNotBeReadIsToldAndTheWindowOpens) {
  tables.arrDbs[0] = "none";
  show([&](frmCompareDataOptions& form) {
    EXPECT_EQ(boxes().find("Error occured while attempting to load structure of table.\r\n\r\nError -2147467259 ("),
              0u);
    EXPECT_EQ(form.cmbPK[0].count(), 1u);
    EXPECT_EQ(form.cmbPK[1].count(), 6u);
  });
}

}  // namespace
}  // namespace qrel
