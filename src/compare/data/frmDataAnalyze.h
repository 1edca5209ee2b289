// The Data Analyzer: how many values each column of a table holds, and which ten of them most or least often.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "app/Program.h"
#include "compare/data/ColumnValues.h"
#include "compare/data/oneTable.h"
#include "platform/controls/form.h"
#include "platform/controls/reportControl.h"
#include "report/exportFiles.h"

namespace qrel {

class frmDataAnalyze : public Form {
 public:
  explicit frmDataAnalyze(Program& program);

  TextBox fedRecsToAnalyze{"fedRecsToAnalyze"};
  Label lblGen0{"lblGen(0)"};  // the current column
  Label lblGen2{"lblGen(2)"};  // number of columns
  Label lblGen3{"lblGen(3)"};  // number of records
  Label lblGen9{"lblGen(9)"};  // number of ignored columns
  Label lblInfo{"lblInfo"};    // what the window is for
  Label lblCurRec{"lblCurRec"};
  Label lblTime{"lblTime"};
  Button btnIgnoreColumns{"btnIgnoreColumns"};
  std::array<OptionButton, 2> rdbFrequency{{OptionButton("rdbFrequency(0)"), OptionButton("rdbFrequency(1)")}};
  ProgressBar prbColumns{"prbColumns"};
  ProgressBar prbRows{"prbRows"};
  ReportControl rpcReport{"rpcReport"};  // a record per column: name, type, number of values, ten values and counts
  Button cmdStart{"cmdStart"};
  Button cmdStop{"cmdStop"};
  Button cmdExport{"cmdExport"};
  Button cmdPrint{"cmdPrint"};
  Button cmdPrintPreview{"cmdPrintPreview"};
  Button cmdPageSetup{"cmdPageSetup"};
  Button cmdExit{"cmdExit"};

  // Modal. The table is one of the selected server lngSide; strTable is its name without a schema, strExtName how it
  // stands in SQL. A table that can't be read or is empty is told of in a box instead.
  void ShowUp(const std::string& strExtName, const std::string& strTable, const std::string& strDb, long lngSide,
              long lngObjId);

  void load() override;
  // The first activation fills the labels.
  void activate() override;
  // While it analyzes, the window stays and the analysis closes it.
  bool closeRequested() override;
  void unload() override;

  // What an export of the table takes; it must not outlive the window.
  tExportSource exportSource() const;
  // Of the table, once ShowUp was called; -1: couldn't be counted.
  std::int32_t lngRecs() const { return table_.lngRecs; }

 private:
  void setTexts();
  void wireEvents();
  void ScreenInitializeDataAnalysis_GridRep();
  void SetUpColumnsLabels();
  void LoadData();
  void analyzeColumns();
  bool analyzeOne(const tTableColumn& column, double percent);
  bool AnalyzeColumn(const std::string& strColumn, ColumnValues& values);
  bool countValues(Recordset& rs, const std::string& strColumn, std::int32_t lngRows, ColumnValues& values);
  void sortValues(ColumnValues& values);
  bool LoadColumnDataToGrid(const tTableColumn& column, ColumnValues& values);
  void ValidateRecordsToAnalyze();
  bool RepControl_NoData(const std::string& strMessage);
  void ignoreColumns();
  void exportTable();
  template <class Command>
  void command(const char* strProcName, Command&& run);
  bool endAsked() const { return stop_ || closeAsked_; }

  Program& program_;
  tOneTable table_;
  RecordProgress progress_;
  std::int32_t recsToAnalyze_ = 0;
  bool mostFrequent_ = true;
  bool busy_ = false;       // a command is running
  bool analyzing_ = false;  // and it is the analysis
  bool stop_ = false;
  bool closeAsked_ = false;
  bool activated_ = false;
};

}  // namespace qrel
