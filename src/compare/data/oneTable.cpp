#include "compare/data/oneTable.h"

#include "app/modStrings.h"
#include "compare/all/modCompareAll.h"
#include "compare/data/dataValues.h"
#include "db/mdlData.h"

namespace qrel {

namespace {

constexpr int labelColumnWidth = 540;  // twips
constexpr int columnWidth = 1440;

}  // namespace

std::string LongTableName(const std::string& strTable, const std::string& strDb, const std::string& strServer) {
  return strTable + " (Database: " + strDb + ", Server: " + strServer + ")";
}

tOneTable OpenTable(Program& program, const std::string& strExtName, const std::string& strTable,
                    const std::string& strDb, long lngSide, long lngObjId) {
  tOneTable table;
  table.server = program.main.gtypSelServ.at(static_cast<std::size_t>(lngSide));
  table.strExtName = strExtName;
  table.strTable = strTable;
  table.strDb = strDb;
  table.lngSide = lngSide;
  table.lngObjId = lngObjId;
  table.strDisplayName = LongTableName(strTable, strDb, table.server.Name);
  table.lngRecs = GetNumberOfRecordsInTable(program, table.server, table.strExtName, strDb);
  return table;
}

bool HasRecordsToShow(Program& program, const tOneTable& table) {
  if (table.lngRecs < 0)
    program.host.messageBox("Error while reading data from table " + table.strDisplayName + ".", Icon::Warning,
                            "View Data");
  if (table.lngRecs == 0)
    program.host.messageBox("Table " + table.strDisplayName + " doesn't contain any data.", Icon::Information,
                            "View Data");
  return table.lngRecs > 0;
}

void SetGridColumnHeaders(Grid& grid, const std::vector<tTableColumn>& arrColumns) {
  grid.setRowCount(1);
  grid.setColumnCount(arrColumns.size() + 1);
  grid.setText(0, 0, "Row");
  grid.setColumnWidth(0, labelColumnWidth);
  for (std::size_t column = 1; column <= arrColumns.size(); ++column) {
    grid.setText(0, column, arrColumns[column - 1].strName);
    grid.setColumnWidth(column, columnWidth);
  }
}

void WriteRecordToGrid(Grid& grid, Recordset& rs, std::uint32_t lngColor, std::int32_t lngRow) {
  const auto row = static_cast<std::size_t>(lngRow);
  grid.setText(row, 0, std::to_string(lngRow));
  const std::size_t fields = rs.FieldCount();
  std::string text;
  for (std::size_t field = 0; field < fields; ++field) {
    text.clear();
    AppendFieldValueOrNull(text, rs.Fields(field).cell);
    grid.setText(row, field + 1, text);
  }
  grid.paint(row, row, 0, fields, lngColor);
}

void RecordProgress::start() {
  startTicks_ = program_.host.ticks();
  shownSecond_ = -1;
}

void RecordProgress::UpdateTimeElapsed() {
  constexpr std::int64_t second = 1000;
  const std::int64_t seconds = (program_.host.ticks() - startTicks_) / second;
  if (seconds == shownSecond_) return;
  shownSecond_ = seconds;
  lblTime_.setText(ElapsedTime(program_, startTicks_));
}

void RecordProgress::show(std::int32_t lngRec, std::int32_t lngRecs) {
  lblCurRec_.setText(FormatThousands(lngRec));
  bar_.setValue(static_cast<double>(lngRec) / lngRecs * 100);
  UpdateTimeElapsed();
  program_.host.doEvents();
}

}  // namespace qrel
