// Tables of the databases S/A and S/B selected in two panels, and their records compared.
#pragma once

#include "app/mdlMain.h"
#include "compare/data/frmCompareData.h"
#include "compare/data/frmCompareStatus.h"
#include "compare/structure/modIgnoreColumns.h"
#include "tests/support.h"

namespace qrel {

class TwoTables : public ::testing::Test {
 protected:
  TwoTables() {
    SetFilePaths(program);
    ConnectIgnoredColumns(program);
    program.main.gtypSelServ = {TestProgram::server("S"), TestProgram::server("S")};
    state.mainWindow = &workspace;
  }

  void load(const std::string& source, const std::string& target) {
    test.load("S", "A", source);
    test.load("S", "B", target);
  }
  // Selects a table as the two panels would.
  void select(const std::string& table) {
    for (std::size_t side : {0U, 1U}) {
      for (CheckList* list : {&workspace.pvlDb[side], &workspace.pvlSqlObj[side]}) list->clear();
      workspace.pvlDb[side].select(workspace.pvlDb[side].add(side == 0 ? "A" : "B"));
      workspace.pvlSqlObj[side].select(workspace.pvlSqlObj[side].add(table));
    }
  }
  // A request for the selected tables, by these keys or, without any, by position.
  tDataCompRequest request(const std::vector<std::string>& keys = {}) {
    tDataCompRequest made = RequestOfSelection(workspace);
    made.lngCompMethod = keys.empty() ? compRecordByRecord : compPrimaryKey;
    for (auto& ofSide : made.arrCompKeys) {
      ofSide = {noField, noField, noField};
      std::copy(keys.begin(), keys.end(), ofSide.begin());
    }
    return made;
  }
  // Compares without a window and gives the number of differences.
  std::int32_t differences(const std::string& table, const std::vector<std::string>& keys = {}) {
    select(table);
    tDataCompRequest silent = request(keys);
    silent.blnSilent = true;
    silent.blnDisplayDiffs = false;
    tDataCompResult result;
    test.host.windows.push_back([](Form&) {});
    RunDataComparison(program, silent, result);
    EXPECT_EQ(state.lngEnd, DataCompEnd::Done);
    EXPECT_EQ(result.blnIdentical, result.lngDiffs == 0);
    return result.lngDiffs;
  }
  // The boxes since the last call, one a line.
  std::string boxes() {
    std::string text;
    for (const auto& box : test.host.boxes) text += (text.empty() ? "" : "\n") + box.text;
    test.host.boxes.clear();
    return text;
  }

  TestProgram test;
  Program& program = test.program;
  modCompareDataState& state = program.state<modCompareDataState>();
  Workspace workspace;
};

}  // namespace qrel
