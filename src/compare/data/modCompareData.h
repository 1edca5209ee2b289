// A data comparison of two tables from the command to its result: which options it runs with, the SELECTs, the closing
// message or the differences window.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "app/Program.h"
#include "app/Workspace.h"
#include "compare/data/dataCompSettings.h"
#include "db/SqlText.h"

namespace qrel {

class frmCompareData;

// What is compared and how. Pairs are 0 Source, 1 Target, of the selected servers.
struct tDataCompRequest {
  std::array<std::string, 2> arrDbs;
  std::array<std::string, 2> arrTables;      // as the object lists show them, with a schema where they show one
  std::array<std::string, 2> arrListed;      // what ignored columns are looked up under; empty: arrTables
  std::array<SqlText, 2> arrOrderBy;         // of BuildOrderByClause
  std::array<std::int32_t, 2> arrOffsets{};  // 1-based first record; 0 and 1 both mean the first
  std::int32_t lngCompMethod = compRecordByRecord;
  std::array<std::array<std::string, 3>, 2> arrCompKeys;  // columns; noField or empty where there is no key
  bool blnDisplayDiffs = true;                            // fill and show the differences window
  bool blnSilent = false;                                 // no box: the closing text goes to strResult
  std::array<long, 2> arrObjIds{};                        // 0: not known
  // Of a saved process: the differences are written to this file at once.
  std::string strExportFile;
  std::int32_t lngExportFormat = 0;
  bool blnWrap = false;
  bool blnAuto = false;
};

struct tDataCompResult {
  std::string strResult;  // the closing text of a silent comparison
  bool blnIdentical = false;
  std::array<std::int32_t, 2> arrRecs{};  // -1: couldn't be counted
  std::int32_t lngDiffs = 0;
  bool blnStopped = false;  // by the person: the counts say how far it came
};

// How far the comparison of the records came.
enum class DataCompEnd : std::uint8_t {
  NotRead,  // stopped, or a table couldn't be read
  Broken,   // an error ended it on the way
  Done,
};

struct modCompareDataState {
  bool gblnStopComparison = false;  // set by the Stop button
  bool gblnFillDiffTable = false;
  bool gblnMarkDiffCells = true;
  bool blnShowOptionsOnce = false;        // the next comparison asks for its options even if that is switched off
  const Workspace* mainWindow = nullptr;  // what the differences window takes its names from
  std::unique_ptr<frmCompareData> differences;
  DataCompEnd lngEnd = DataCompEnd::Done;  // of the last comparison

  modCompareDataState();
  ~modCompareDataState();
};

// F9: compares the data of the two selected tables, after boxes for what stands against it.
void cmdCompData_Click(Program& program, Workspace& workspace);

// The databases and tables that are selected in the two panels; nothing else is filled in.
tDataCompRequest RequestOfSelection(const Workspace& workspace);

// Compares under the options that a person chooses or that are stored for the two tables. Of `request`, the order, the
// offsets, the method and the keys are filled in. blnShowOptionsOnce is cleared. A cancelled choice leaves an empty
// result.
void PerformDataComparison(Program& program, tDataCompRequest request, bool& blnShowOptionsOnce,
                           tDataCompResult& result);

// Fills in the order, the offsets, the method and the keys: those given, or those that are stored for the two tables.
void ApplyDataCompSettings(const tDataCompSettings& settings, tDataCompRequest& request);
void ApplyStoredDataCompSettings(Program& program, tDataCompRequest& request);

// Compares with everything settled: progress window, closing message, differences window. The differences window of a
// silent comparison stays in the state until the caller lets go of it.
void RunDataComparison(Program& program, const tDataCompRequest& request, tDataCompResult& result);

// The two counts and the number of different records, a line each.
std::string DataCompCountsText(const tDataCompResult& result);

// "Record by Record", "Primary Key" or "N/A".
std::string CompMethodToString(std::int32_t lngCompMethod);

// False for an empty text and for noField.
bool NamesKey(const std::string& strKey);

// " ORDER BY [a], [b] " of the keys up to the first empty one; empty without a first.
SqlText BuildOrderByClause(const std::string& strKey1, const std::string& strKey2, const std::string& strKey3);

// The SELECT of the table's columns less the ignored ones; of all columns when they can't be had. strSelectPart
// receives its part up to and with " FROM ". strListed: the name to look the ignored columns up under; empty: strTable.
SqlText BuildSqlSelectStringWithColumns(Program& program, tServer& server, const std::string& strDb,
                                        const std::string& strTable, const std::string& strExtName,
                                        SqlText& strSelectPart, long lngObjId, const std::string& strListed = {});

// The SELECT of the Source's columns on the Target table.
SqlText BuildSelectForTargetTable(const SqlText& strSelectPart, const std::string& strExtName2,
                                  const SqlText& strOrderBy2);

// The columns of the two tables that are ignored, 0 Source, 1 Target.
std::array<std::vector<std::string>, 2> IgnoredDataColumns(Program& program, const tDataCompRequest& request);
// "Source - a,b Target - c"; empty without any.
std::string IgnoredColumns_PutToString(const std::vector<std::string>& astrCols1,
                                       const std::vector<std::string>& astrCols2);

}  // namespace qrel
