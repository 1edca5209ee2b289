// The data viewer: all records of one table, row by row, without comparing anything.
#pragma once

#include <cstdint>
#include <string>

#include "app/Program.h"
#include "compare/data/oneTable.h"
#include "platform/controls/form.h"
#include "platform/controls/grid.h"
#include "report/exportFiles.h"

namespace qrel {

class frmDataView : public Form {
 public:
  explicit frmDataView(Program& program);

  Label lblTableName{"lblTableName"};
  Label lblStats{"lblStats"};
  Label lblCur{"lblCur"};  // stands before lblCurRec
  Label lblCurRec{"lblCurRec"};
  Label lblTimeCaption{"lblTimeCaption"};  // stands before lblTime
  Label lblTime{"lblTime"};
  qrel::ProgressBar ProgressBar{"ProgressBar"};
  Grid VSFlexGrid1{"VSFlexGrid1"};  // column 0: the row's number, then the table's columns
  Button cmdStop{"cmdStop"};
  Button cmdExport{"cmdExport"};
  Button cmdExit{"cmdExit"};

  // Modal. The table is one of the selected server lngSide; strTable is its name without a schema, strExtName how it
  // stands in SQL. A table that can't be read or is empty is told of in a box instead.
  void ShowUp(const std::string& strExtName, const std::string& strTable, const std::string& strDb, long lngSide,
              long lngObjId);

  void load() override;
  // The first activation loads the records.
  void activate() override;
  // While it loads, the window stays and the load closes it.
  bool closeRequested() override;
  void unload() override;

  // What an export of the table takes; it must not outlive the window.
  tExportSource exportSource() const;
  // Of the table, once ShowUp was called; -1: couldn't be counted.
  std::int32_t lngRecs() const { return table_.lngRecs; }

 private:
  void setTexts();
  void ShowHideControls(long lngPhase);
  void LoadData();
  void readRecords();
  void showRecords(Recordset& rs);
  void showBatch();
  void tellError(const std::exception& error);
  void endLoad();
  void focusButton();
  bool endAsked() const { return stop_ || closeAsked_; }

  Program& program_;
  GridRefreshState& refresh_;
  tOneTable table_;
  RecordProgress progress_;
  std::int32_t rec_ = 0;  // the record at work, from 1; 0: none was reached
  bool loading_ = false;
  bool stop_ = false;
  bool closeAsked_ = false;
  bool activated_ = false;
};

}  // namespace qrel
