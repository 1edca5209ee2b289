#include "compare/data/modCompareData.h"

#include "app/modStrings.h"
#include "app/settings.h"
#include "app/trap.h"
#include "compare/data/frmCompareData.h"
#include "compare/data/frmCompareDataOptions.h"
#include "compare/data/frmCompareStatus.h"
#include "db/mdlObjects.h"
#include "db/mdlQueryCode.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* inModCompareData = "modCompareData";

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ",") + name;
  return text;
}

}  // namespace

modCompareDataState::modCompareDataState() = default;
modCompareDataState::~modCompareDataState() = default;

std::string CompMethodToString(std::int32_t lngCompMethod) {
  if (lngCompMethod == compRecordByRecord) return "Record by Record";
  return lngCompMethod == compPrimaryKey ? "Primary Key" : "N/A";
}

bool NamesKey(const std::string& strKey) { return !strKey.empty() && strKey != noField; }

SqlText BuildOrderByClause(const std::string& strKey1, const std::string& strKey2, const std::string& strKey3) {
  SqlText text;
  for (const std::string* key : {&strKey1, &strKey2, &strKey3}) {
    const std::string_view trimmed = trimBlanks(*key);
    if (trimmed.empty()) break;
    text << (text.empty() ? SqlText(" ORDER BY ") : SqlText(", ")) << inBrackets(trimmed);
  }
  if (!text.empty()) text << " ";
  return text;
}

SqlText BuildSqlSelectStringWithColumns(Program& program, tServer& server, const std::string& strDb,
                                        const std::string& strTable, const std::string& strExtName,
                                        SqlText& strSelectPart, long lngObjId, const std::string& strListed) {
  strSelectPart = {};
  return trap(program, "mdlMisc", "BuildSqlSelectStringWithColumns", SqlText(), [&] {
    SqlText strList;
    tTableStructure table;
    if (GetTableStructure(program, server, {strDb, strTable, lngObjId, ignoredColsData, strListed}, table))
      for (const tTableColumn& column : table.arrColumns) {
        if (!strList.empty()) strList << ",";
        strList << inBrackets(column.strName);
      }
    strSelectPart << "SELECT " << (strList.empty() ? SqlText("*") : strList) << " FROM ";
    return SqlText(strSelectPart) << asName(strExtName);
  });
}

SqlText BuildSelectForTargetTable(const SqlText& strSelectPart, const std::string& strExtName2,
                                  const SqlText& strOrderBy2) {
  if (strSelectPart.empty()) return {};
  SqlText strSql = strSelectPart;
  strSql << " " << asName(strExtName2);
  if (!strOrderBy2.empty()) strSql << " " << strOrderBy2;
  return strSql;
}

std::array<std::vector<std::string>, 2> IgnoredDataColumns(Program& program, const tDataCompRequest& request) {
  std::array<std::vector<std::string>, 2> arrIgnored;
  const auto& source = program.state<IgnoredColumnsSource>();
  for (const std::size_t side : {0u, 1u}) {
    const std::string& strListed = request.arrListed[side];
    if (source.lookUp)
      arrIgnored[side] = source.lookUp(ignoredColsData, program.main.gtypSelServ[side], request.arrDbs[side],
                                       strListed.empty() ? request.arrTables[side] : strListed);
  }
  return arrIgnored;
}

std::string DataCompCountsText(const tDataCompResult& result) {
  return "Number of records in first table: " + FormatThousands(result.arrRecs[0]) +
         "\r\nNumber of records in second table: " + FormatThousands(result.arrRecs[1]) +
         "\r\nNumber of different records: " + FormatThousands(result.lngDiffs);
}

std::string IgnoredColumns_PutToString(const std::vector<std::string>& astrCols1,
                                       const std::vector<std::string>& astrCols2) {
  std::string text;
  if (!astrCols1.empty()) text = "Source - " + joined(astrCols1);
  if (!astrCols2.empty()) text += (text.empty() ? "Target - " : " Target - ") + joined(astrCols2);
  return text;
}

tDataCompRequest RequestOfSelection(const Workspace& workspace) {
  tDataCompRequest request;
  for (const std::size_t side : {0u, 1u}) {
    const CheckList& list = workspace.pvlSqlObj[side];
    request.arrDbs[side] = Workspace::selectedText(workspace.pvlDb[side]);
    request.arrTables[side] = Workspace::selectedText(list);
    request.arrObjIds[side] = Workspace::selectedId(list);
  }
  return request;
}

void cmdCompData_Click(Program& program, Workspace& workspace) {
  trap(program, "frmMain", "cmdCompData_Click", [&] {
    const std::array<std::string, 2> texts{std::string(trimBlanks(workspace.txtTXProc[0].givenText())),
                                           std::string(trimBlanks(workspace.txtTXProc[1].givenText()))};
    if (texts[0].empty() && texts[1].empty()) {
      program.host.messageBox("Cannot compare - the list of objects is empty.", Icon::Information, "Cannot Compare");
      return;
    }
    if (workspace.objectType() != objTables) {
      program.host.messageBox(
          "This functionality is enabled only when Tables are selected as active objects.\r\n"
          "To set Tables as active objects set focus to Objects Type combo box "
          "(using mouse or by pressing key F6) and select first item from the list.",
          Icon::Information);
      workspace.cmbType.setFocus();
      return;
    }
    if (texts[0] != texts[1] &&
        program.host.messageBox("Compared tables have different structures.\r\n\r\nDo you still want to compare them?",
                                Icon::Question, "Different Structures", Buttons::YesNo) != Answer::Yes)
      return;
    auto& state = program.state<modCompareDataState>();
    state.mainWindow = &workspace;
    tDataCompResult result;
    PerformDataComparison(program, RequestOfSelection(workspace), state.blnShowOptionsOnce, result);
  });
}

namespace {

// The options window. False: cancelled.
bool askForSettings(Program& program, const tDataCompRequest& request, tDataCompSettings& settings) {
  DataCompTables tables;
  for (const std::size_t side : {0u, 1u}) {
    tables.arrServers[side] = program.main.gtypSelServ[side].Name;
    tables.arrDbs[side] = request.arrDbs[side];
    tables.arrTables[side] = request.arrTables[side];
    tables.arrObjIds[side] = request.arrObjIds[side];
  }
  bool blnOK = false;
  frmCompareDataOptions(program).ShowUp(tables, settings, blnOK);
  return blnOK;
}

void readSettings(Program& program, const tDataCompRequest& request, tDataCompSettings& settings) {
  for (const std::size_t side : {0u, 1u})
    ReadDataCompSettings(program, side == 0, request.arrDbs[side], request.arrTables[side], settings.arrSides[side],
                         settings.lngCompMethod);
  settings.blnDefaultOrder = false;
}

}  // namespace

void ApplyDataCompSettings(const tDataCompSettings& settings, tDataCompRequest& request) {
  request.lngCompMethod = settings.lngCompMethod;
  for (const std::size_t side : {0u, 1u}) {
    const tDataCompSide& chosen = settings.arrSides[side];
    if (!settings.blnDefaultOrder)
      request.arrOrderBy[side] =
          BuildOrderByClause(chosen.strPrimarySort, chosen.strSecondarySort, chosen.strTertiarySort);
    request.arrOffsets[side] = chosen.lngOffset;
    request.arrCompKeys[side] = {chosen.strCompKey, chosen.strSecondaryCompKey, chosen.strTertiaryCompKey};
  }
}

void ApplyStoredDataCompSettings(Program& program, tDataCompRequest& request) {
  tDataCompSettings settings;
  readSettings(program, request, settings);
  ApplyDataCompSettings(settings, request);
}

void PerformDataComparison(Program& program, tDataCompRequest request, bool& blnShowOptionsOnce,
                           tDataCompResult& result) {
  result = {};
  trap(program, inModCompareData, "PerformDataComparison", [&] {
    const bool blnShowOptions = !request.blnSilent && (ReadFlag(program, "ShowDataCompOpt") || blnShowOptionsOnce);
    blnShowOptionsOnce = false;
    tDataCompSettings settings;
    if (!blnShowOptions)
      readSettings(program, request, settings);
    else if (!askForSettings(program, request, settings))
      return;
    ApplyDataCompSettings(settings, request);
    RunDataComparison(program, request, result);
  });
}

namespace {

// Tells how a comparison ended without a window, or leaves it to the caller's caller.
void tellEnd(Program& program, const tDataCompRequest& request, tDataCompResult& result,
             const std::string& strMessage) {
  if (request.blnSilent)
    result.strResult = strMessage;
  else
    program.host.messageBox(strMessage);
}

void noteRowsNotShown(Program& program, frmCompareData& window, std::int32_t lngDiffs) {
  const std::string strDiffs = FormatThousands(lngDiffs);
  const std::string strLimit = FormatThousands(program.settings.glngMaxRowsInDiffTable);
  program.host.messageBox(
      "Not all records will be shown in the table displaying differences between two selected tables.\r\n\r\n"
      "There are " +
          strDiffs +
          " differences found by the program.\r\n\r\n"
          "Please note that program's setting for maximum number of records displayed in differences table is "
          "currently set to " +
          strLimit +
          ".\r\n\r\n"
          "Since there is more different records than it is currently allowed to be shown in the table, only first " +
          strLimit +
          " records will be shown.\r\n\r\n"
          "If you wish to increase the number of records shown in differences table, please click menu item Tools -> "
          "Options, click tab 'Rows to Display', change the maximum number of rows and click button 'OK'.",
      Icon::Information, "Note");
  window.lblMaxRows.setText("Only first " + strLimit + " different records are shown");
  window.lblMaxRows.setVisible(true);
}

struct IgnoredNote {
  std::int32_t lngIgnored = 0;
  std::string strIgnored;

  std::string below(const std::string& strMessage) const {
    return lngIgnored > 0 ? strMessage + "\r\n" + strIgnored : strMessage;
  }
};

IgnoredNote ignoredNote(Program& program, const tDataCompRequest& request) {
  const auto arrIgnored = IgnoredDataColumns(program, request);
  IgnoredNote note;
  note.lngIgnored = static_cast<std::int32_t>(arrIgnored[0].size() + arrIgnored[1].size());
  note.strIgnored = IgnoredColumns_PutToString(arrIgnored[0], arrIgnored[1]);
  if (!note.strIgnored.empty())
    note.strIgnored.insert(
        0, note.lngIgnored == 1 ? "Column ignored during comparison: " : "Columns ignored during comparison: ");
  return note;
}

void showDifferences(Program& program, const tDataCompRequest& request, const tDataCompResult& result,
                     const IgnoredNote& note) {
  auto& state = program.state<modCompareDataState>();
  // A comparison that couldn't read its tables has no window yet.
  if (!state.differences) state.differences = std::make_unique<frmCompareData>(program);
  if (result.lngDiffs > program.settings.glngMaxRowsInDiffTable)
    noteRowsNotShown(program, *state.differences, result.lngDiffs);
  state.differences->ShowUp(request, note.lngIgnored, note.strIgnored);
}

}  // namespace

void RunDataComparison(Program& program, const tDataCompRequest& request, tDataCompResult& result) {
  auto& state = program.state<modCompareDataState>();
  trap(program, inModCompareData, "RunDataComparison", [&] {
    auto heldState = program.data.holdState();
    const IgnoredNote note = ignoredNote(program, request);
    frmCompareStatus(program).ShowUp(request, result);
    heldState.reset();  // the window of the differences may stay for hours
    result.blnStopped = state.gblnStopComparison;
    if (result.blnStopped) {
      tellEnd(program, request, result, "Operation cancelled by the user.");
      state.gblnStopComparison = false;
    } else if (result.blnIdentical) {
      tellEnd(program, request, result, note.below("Data stored in both tables is identical."));
    } else if (state.gblnFillDiffTable) {
      showDifferences(program, request, result, note);
    } else {
      tellEnd(program, request, result, note.below(DataCompCountsText(result)));
    }
  });
  if (!request.blnSilent) state.differences.reset();
}

}  // namespace qrel
