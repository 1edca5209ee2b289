// What the windows over the records of one table have in common: the table that they are opened for, its records in a
// grid, and how far they have come.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/Program.h"
#include "db/mdlQueryCode.h"
#include "platform/controls/control.h"
#include "platform/controls/grid.h"
#include "platform/data/recordset.h"

namespace qrel {

// How a grid is shown while it is filled: 0 not at all, 1 in batches with the latest in view, any other number every
// that many records.
struct GridRefreshState {
  std::int32_t glngGridRefreshMode = 0;
};

struct tOneTable {
  tServer server;
  std::string strExtName;  // as it stands in SQL
  std::string strTable;    // without its schema
  std::string strDb;
  long lngSide = 0;  // 0 Source, 1 Target
  long lngObjId = 0;
  std::int32_t lngRecs = -1;  // rows; -1: couldn't be counted
  std::string strDisplayName;
};

// The table's name with its database and server in words.
std::string LongTableName(const std::string& strTable, const std::string& strDb, const std::string& strServer);

// The table of a selected server, its rows counted. strExtName may have got its schema by that.
tOneTable OpenTable(Program& program, const std::string& strExtName, const std::string& strTable,
                    const std::string& strDb, long lngSide, long lngObjId);
// False, after a box that says so, for a table that couldn't be read or has no rows.
bool HasRecordsToShow(Program& program, const tOneTable& table);

// One header row: "Row", then the columns' names.
void SetGridColumnHeaders(Grid& grid, const std::vector<tTableColumn>& arrColumns);
// The current record into row lngRow, which is there: its number, then its values, all in that colour.
void WriteRecordToGrid(Grid& grid, Recordset& rs, std::uint32_t lngColor, std::int32_t lngRow);

// The labels and the bar that follow a walk over records.
class RecordProgress {
 public:
  RecordProgress(Program& program, Label& lblCurRec, ProgressBar& bar, Label& lblTime)
      : program_(program), lblCurRec_(lblCurRec), bar_(bar), lblTime_(lblTime) {}

  // The clock starts.
  void start();
  void UpdateTimeElapsed();
  // Record lngRec of lngRecs is at work; lets the window system run.
  void show(std::int32_t lngRec, std::int32_t lngRecs);

 private:
  Program& program_;
  Label& lblCurRec_;
  ProgressBar& bar_;
  Label& lblTime_;
  std::int64_t startTicks_ = 0;
  std::int64_t shownSecond_ = -1;
};

}  // namespace qrel
