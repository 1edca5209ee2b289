#include "compare/data/frmDataAnalyze.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/modStrings.h"
#include "app/shellSort.h"
#include "app/trap.h"
#include "compare/data/dataValues.h"
#include "compare/data/readScopes.h"
#include "compare/structure/frmIgnoreColumnsAdd.h"
#include "compare/structure/modIgnoreColumns.h"
#include "db/mdlData.h"
#include "platform/data/numberText.h"
#include "platform/text.h"
#include "report/frmExport.h"

namespace qrel {

namespace {

constexpr const char* inFrmDataAnalyze = "frmDataAnalyze";
constexpr const char* howToStart = "Click button 'Start' (or press F5) to analyze data.";
constexpr const char* noColumn = "None";

constexpr std::size_t columnName = 0, dataType = 1, uniqueValues = 2, firstValue = 3;  // columns of the table
constexpr std::size_t shownValues = 10;
constexpr std::uint32_t evenPair = 0xC0FFFF, oddPair = 0xFFFFC0;

}  // namespace

frmDataAnalyze::frmDataAnalyze(Program& program)
    : Form(inFrmDataAnalyze), program_(program), progress_(program, lblCurRec, prbRows, lblTime) {
  for (Control* control : std::initializer_list<Control*>{
           &fedRecsToAnalyze, &lblGen0,      &lblGen2,          &lblGen3,         &lblGen9,         &lblInfo,
           &lblCurRec,        &lblTime,      &btnIgnoreColumns, &rdbFrequency[0], &rdbFrequency[1], &prbColumns,
           &prbRows,          &rpcReport,    &cmdStart,         &cmdStop,         &cmdExport,       &cmdPrint,
           &cmdPrintPreview,  &cmdPageSetup, &cmdExit})
    add(*control);
  setTexts();
  wireEvents();
}

void frmDataAnalyze::setTexts() {
  OptionButton::group({&rdbFrequency[0], &rdbFrequency[1]});
  rdbFrequency[0].setText("Most Frequently");
  rdbFrequency[1].setText("Least Frequently");
  rdbFrequency[0].choose();
  btnIgnoreColumns.setToolTip("Specify the columns to be ignored");
  lblGen0.setText(noColumn);
  lblInfo.setText(std::string(howToStart) +
                  "\r\n\r\nData Analyzer will scan the values stored in particular columns to find number of unique "
                  "values stored in each columns and most frequently (or least frequently, depending on your choice) "
                  "values stored in each column.\r\n\r\nTo stop the process at any time click button 'Stop' (or press "
                  "F6).");
  cmdStart.setText("&Start");
  cmdStop.setText("S&top");
  cmdExport.setText("&Export");
  cmdPrint.setText("&Print");
  cmdPrintPreview.setText("Print Pre&view");
  cmdPageSetup.setText("Page Set&up");
  cmdExit.setText("E&xit");
  cmdExit.isCancel = true;
}

// A command of the window, while no other one runs.
template <class Command>
void frmDataAnalyze::command(const char* strProcName, Command&& run) {
  trapAlone(program_, busy_, inFrmDataAnalyze, strProcName, std::forward<Command>(run));
}

void frmDataAnalyze::wireEvents() {
  const auto print = [this](const char* strProcName, void (ReportControl::*run)(const std::string&) const) {
    command(strProcName, [&] {
      if (!RepControl_NoData("There is no data to be printed.")) (rpcReport.*run)(caption);
    });
  };
  cmdStart.onClick = [this] {
    command("cmdStart_Click", [this] {
      stop_ = false;
      mostFrequent_ = rdbFrequency[0].chosen();
      LoadData();
    });
  };
  cmdStop.onClick = [this] { stop_ = true; };
  btnIgnoreColumns.onClick = [this] { command("btnIgnoreColumns_Click", [this] { ignoreColumns(); }); };
  cmdExport.onClick = [this] { command("cmdExport_Click", [this] { exportTable(); }); };
  cmdPrint.onClick = [print] { print("cmdPrint_Click", &ReportControl::print); };
  cmdPrintPreview.onClick = [print] { print("cmdPrintPreview_Click", &ReportControl::printPreview); };
  cmdPageSetup.onClick = [this] { command("cmdPageSetup_Click", [this] { rpcReport.pageSetup(); }); };
  cmdExit.onClick = [this] {
    if (closeRequested()) close();
  };
  addKey("F5", [this] { cmdStart.personClicks(); });
  addKey("F6", [this] { cmdStop.personClicks(); });
}

void frmDataAnalyze::ShowUp(const std::string& strExtName, const std::string& strTable, const std::string& strDb,
                            long lngSide, long lngObjId) {
  trap(program_, inFrmDataAnalyze, "ShowUp", [&] {
    table_ = OpenTable(program_, strExtName, strTable, strDb, lngSide, lngObjId);
    if (!HasRecordsToShow(program_, table_)) return;
    lblGen3.setText(FormatThousands(table_.lngRecs));
    fedRecsToAnalyze.setText(FormatThousands(table_.lngRecs));
    program_.host.showModal(*this);
  });
}

void frmDataAnalyze::load() {
  program_.state<GridRefreshState>().glngGridRefreshMode = 1;
  caption = "Data Analyzer     Table: " + table_.strDisplayName;
  ScreenInitializeDataAnalysis_GridRep();
}

void frmDataAnalyze::unload() { program_.state<GridRefreshState>().glngGridRefreshMode = 0; }

void frmDataAnalyze::ScreenInitializeDataAnalysis_GridRep() {
  constexpr int wide = 2100, narrow = 1050;  // twips
  if (rpcReport.columnCount() > 0) return;
  rpcReport.addColumn("Column Name", wide);
  rpcReport.addColumn("Data Type", wide);
  rpcReport.addColumn("Unique Values", 1400);
  for (std::size_t pair = 1; pair <= shownValues; ++pair) {
    rpcReport.addColumn("Value " + std::to_string(pair), wide);
    rpcReport.addColumn("Count", narrow);
  }
}

void frmDataAnalyze::activate() {
  if (std::exchange(activated_, true)) return;
  SetUpColumnsLabels();
}

void frmDataAnalyze::SetUpColumnsLabels() {
  trap(program_, inFrmDataAnalyze, "SetUpColumnsLabels", [&] {
    std::vector<std::string> arrIgnored;
    lblGen2.setText(FormatThousands(GetColumnsCount(
        program_, table_.server, {table_.strDb, table_.strTable, table_.lngObjId, ignoredColsDataAnalysis})));
    const std::string strFullName = GetFullObjectName(table_.server.Name, table_.strDb, table_.strTable);
    lblGen9.setText(FormatThousands(GetIgnoredColumns(program_, ignoredColsDataAnalysis, strFullName, arrIgnored)));
  });
}

bool frmDataAnalyze::closeRequested() {
  if (!analyzing_) return true;
  closeAsked_ = true;
  return false;
}

void frmDataAnalyze::ignoreColumns() {
  bool blnSaved = false;
  std::int32_t lngIgnored = 0;
  frmIgnoreColumnsAdd(program_).ShowUp(ignoredColsDataAnalysis, table_.lngSide, table_.server.Name, table_.strDb,
                                       table_.strTable, table_.lngObjId, blnSaved, lngIgnored);
  if (blnSaved) lblGen9.setText(FormatThousands(lngIgnored));
}

void frmDataAnalyze::LoadData() {
  {
    const PointerScope pointer(program_.host, Pointer::Hourglass);
    progress_.start();
    analyzing_ = true;
    trap(program_, inFrmDataAnalyze, "LoadData", [&] { analyzeColumns(); });
    analyzing_ = false;
    lblGen0.setText(noColumn);
  }
  program_.host.setPointer(Pointer::Default);
  if (std::exchange(closeAsked_, false)) close();
}

void frmDataAnalyze::analyzeColumns() {
  tTableStructure table;
  if (!GetTableStructure(program_, table_.server,
                         {table_.strDb, table_.strTable, table_.lngObjId, ignoredColsDataAnalysis}, table))
    return;
  ValidateRecordsToAnalyze();
  for (ProgressBar* bar : {&prbColumns, &prbRows}) bar->setValue(0);
  rpcReport.clear();
  const std::vector<tTableColumn>& arrColumns = table.arrColumns;
  const auto lngLast = static_cast<double>(arrColumns.size()) - 1;
  for (std::size_t column = 0; column < arrColumns.size(); ++column) {
    const double percent = lngLast > 0 ? static_cast<double>(column) / lngLast * 100 : 100;
    if (!analyzeOne(arrColumns[column], percent)) return;
  }
  if (cmdExit.enabled())
    cmdExit.setFocus();
  else if (cmdStop.enabled())
    cmdStop.setFocus();
}

// False: the analysis ends with it.
bool frmDataAnalyze::analyzeOne(const tTableColumn& column, double percent) {
  prbColumns.setValue(percent);
  lblGen0.setText(column.strName);
  prbRows.setValue(0);
  program_.host.doEvents();
  if (endAsked()) return false;
  ColumnValues values;
  if (!AnalyzeColumn(column.strName, values)) return false;
  sortValues(values);
  if (!LoadColumnDataToGrid(column, values)) return false;
  progress_.UpdateTimeElapsed();
  return !endAsked();
}

// False when it was stopped on the way or failed, so that the column gets no record. A column that couldn't be fetched,
// which has been told by then, has no values.
bool frmDataAnalyze::AnalyzeColumn(const std::string& strColumn, ColumnValues& values) {
  return trap(program_, inFrmDataAnalyze, "AnalyzeColumn", false, [&] {
    const std::int32_t lngWanted = std::max(recsToAnalyze_, 1);
    const std::int32_t lngRows = std::min(lngWanted, table_.lngRecs);
    SqlText strSql = "SELECT ";
    if (lngWanted < table_.lngRecs) strSql << "TOP " << static_cast<long>(lngWanted) << " ";
    strSql << inBrackets(strColumn) << " FROM " << asName(table_.strExtName);
    const StopScope stopping(program_, [this] { return endAsked(); });
    RecordsetPtr rs;
    GetAdoRS(program_, table_.server, adCmdText, strSql, rs, table_.strDb);
    program_.host.doEvents();
    if (endAsked()) return false;
    try {
      return !hasRecords(rs) || countValues(*rs, strColumn, lngRows, values);
    } catch (const std::exception& error) {
      if (endAsked() && IsCancelled(error)) return false;
      throw;
    }
  });
}

// False when it was stopped.
bool frmDataAnalyze::countValues(Recordset& rs, const std::string& strColumn, std::int32_t lngRows,
                                 ColumnValues& values) {
  std::string text;
  for (std::int32_t lngRec = 1; lngRec <= lngRows; ++lngRec) {
    if (lngRec == 1)
      rs.MoveFirst();
    else
      rs.MoveNext();
    if (rs.Eof()) break;
    progress_.show(lngRec, lngRows);
    if (endAsked()) return false;
    text.clear();
    AppendFieldValueOrNull(text, rs.Fields(strColumn).cell);
    values.add(text);
  }
  return true;
}

// More values than the sort can count are reported and stay in the order in which they came.
void frmDataAnalyze::sortValues(ColumnValues& values) {
  trap(program_, inFrmDataAnalyze, "ShellSortArray_TwoStr_ByLongEl",
       [&] { ShellSort(values.values(), mostFrequent_, [](const tColumnValue& value) { return value.lngCount; }); });
}

bool frmDataAnalyze::LoadColumnDataToGrid(const tTableColumn& column, ColumnValues& values) {
  return trap(program_, inFrmDataAnalyze, "LoadColumnDataToGrid", false, [&] {
    const std::vector<tColumnValue>& atValues = values.values();
    rpcReport.setRedraw(false);
    const std::size_t record = rpcReport.addRecord();
    rpcReport.setText(record, columnName, column.strName);
    rpcReport.setText(record, dataType, column.strTypeText);
    rpcReport.setText(record, uniqueValues, FormatThousands(static_cast<std::int64_t>(atValues.size())));
    for (std::size_t i = 0; i < std::min(shownValues, atValues.size()); ++i) {
      const std::size_t place = firstValue + 2 * i;
      rpcReport.setText(record, place, atValues[i].strValue);
      rpcReport.setText(record, place + 1, std::to_string(atValues[i].lngCount));
      rpcReport.paint(record, record, place, place + 1, i % 2 == 0 ? evenPair : oddPair);
    }
    rpcReport.setRedraw(true);
    return true;
  });
}

void frmDataAnalyze::ValidateRecordsToAnalyze() {
  trap(program_, inFrmDataAnalyze, "ValidateRecordsToAnalyze", [&] {
    recsToAnalyze_ = table_.lngRecs;
    if (const auto number = doubleOf(trimBlanks(fedRecsToAnalyze.text()))) {
      const double whole = std::nearbyint(*number);
      if (whole >= 1 && whole < table_.lngRecs) recsToAnalyze_ = static_cast<std::int32_t>(whole);
    }
    fedRecsToAnalyze.setText(FormatThousands(recsToAnalyze_));
  });
}

bool frmDataAnalyze::RepControl_NoData(const std::string& strMessage) {
  if (rpcReport.recordCount() > 0) return false;
  program_.host.messageBox(strMessage + "\r\n\r\n" + howToStart, Icon::Information);
  return true;
}

tExportSource frmDataAnalyze::exportSource() const {
  tExportSource source;
  source.strCaption = caption;
  source.rpcReport = &rpcReport;
  return source;
}

void frmDataAnalyze::exportTable() {
  if (RepControl_NoData("There is no data to be exported.")) return;
  frmExport window(program_);
  window.mlngMode = exportFromDataAnalyze;
  window.ShowUp(exportSource(), {});
}

}  // namespace qrel
