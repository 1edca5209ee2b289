// The records that a data comparison found different: a table with a row per record, coloured by what is the matter
// with it.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "app/Program.h"
#include "compare/all/CompareAllControls.h"
#include "compare/data/dataValues.h"
#include "compare/data/modCompareData.h"
#include "platform/controls/form.h"
#include "platform/controls/grid.h"
#include "report/exportFiles.h"

namespace qrel {

class frmCompareStatus;

// A file that the differences are written to, or were.
struct tDataExport {
  std::string strFile;
  std::int32_t lngFormat = 0;  // 0: none
  bool blnWrap = false;
  bool blnAuto = false;  // without a person
};

class frmCompareData : public Form {
 public:
  explicit frmCompareData(Program& program);

  std::array<Label, 2> lblTableName = controlArray<Label, 2>("lblTableName");
  std::array<Label, 6> lblStats = controlArray<Label, 6>("lblStats");  // three captions, then their numbers
  Label lblGen0{"lblGen(0)"};                                          // ignored columns
  Label lblGen1{"lblGen(1)"};                                          // what red means
  Label lblGen11{"lblGen(11)"};                                        // the method
  Label lblMaxRows{"lblMaxRows"};
  std::array<Label, 4> lblColor = controlArray<Label, 4>("lblColor");
  std::array<Label, 4> lblColorDesc = controlArray<Label, 4>("lblColorDesc");
  Grid VSFlexGrid1{"VSFlexGrid1"};  // column 0: the row's number, then the columns of the Source table
  Button cmdExport{"cmdExport"};
  Button cmdSave{"cmdSave"};
  Button cmdExit{"cmdExit"};

  // Takes the names from the main window's selection and makes an empty table with the Source table's columns.
  void LoadData(const Workspace& frmOwner);
  // One record as row lngRow; the table ends with it.
  void AddRecordToGrid(Recordset& rs, std::uint32_t lngColor, std::int32_t lngRow);
  // A pair as two more rows, what differs in red. An error is told in a box.
  void AddRecordToGrid_MarkDiff(Recordset& rs1, Recordset& rs2, std::uint32_t lngColor1, std::uint32_t lngColor2,
                                std::int32_t lngDiffNo);
  // A run of records without partners, from the current one's next on (from the first for lngStartRec 1); the numbers
  // are the first and last record's. The table grows to its limit at most. Ends early when the comparison is stopped.
  void AddMultipleRecordsToGrid(frmCompareStatus& frmStatus, ProgressBar& progress, Label& lblCurRec, Recordset& rs,
                                std::uint32_t lngColor, std::int32_t lngStartRec, std::int32_t lngEndRec);
  // Takes rows without a number off the end.
  void RemoveEmptyGridRows();

  // Modal.
  void ShowUp(const tDataCompRequest& request, std::int32_t lngIgnored, const std::string& strIgnored);

  void activate() override;
  void unload() override;

  // What an export of the table takes; it must not outlive the window.
  tExportSource exportSource() const;
  // What was compared, once ShowUp was called, and the ignored columns as a number and in words.
  const tDataCompRequest& request() const { return request_; }
  std::int32_t lngIgnored() const { return ignored_; }
  const std::string& strIgnored() const { return ignoredText_; }
  // server.database.table
  const std::array<std::string, 2>& dottedNames() const { return dottedNames_; }
  const std::array<long, 2>& objectIds() const { return objectIds_; }

 private:
  struct Listing;

  void setTexts();
  void addListedRecord(Listing& listing, Recordset& rs, std::int32_t lngRec);
  void listRecords(Listing& listing, frmCompareStatus& frmStatus, ProgressBar& progress, Label& lblCurRec,
                   Recordset& rs, std::int32_t lngStartRec, std::int32_t lngEndRec);
  void showMethod();
  void showIgnored();
  void popUpMenu();
  void mnuPopUpSortColumns_Click();
  void exportTable(tDataExport file);
  bool runExport(tDataExport& file);
  void save();

  Program& program_;
  tDataCompRequest request_;
  std::array<std::string, 2> servers_;
  std::array<std::string, 2> dottedNames_;
  std::array<long, 2> objectIds_{};
  std::int32_t ignored_ = 0;
  std::string ignoredText_;
  bool busy_ = false;
  bool activated_ = false;
  bool saved_ = false;  // and no export recorded since
  std::string savedName_;
};

}  // namespace qrel
