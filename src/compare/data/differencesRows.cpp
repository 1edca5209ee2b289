// The rows of the differences window.
#include "app/modStrings.h"
#include "compare/data/frmCompareData.h"
#include "compare/data/frmCompareStatus.h"
#include "compare/data/oneTable.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::uint32_t black = 0;
constexpr std::uint32_t red = 255;

std::string errorText(const char* procedure, const ErrorInfo& error) {
  return std::string("Error in ") + procedure + ", error nr " + std::to_string(error.number) + " (" +
         error.description + ").";
}

}  // namespace

void frmCompareData::AddRecordToGrid(Recordset& rs, std::uint32_t lngColor, std::int32_t lngRow) {
  VSFlexGrid1.setRowCount(static_cast<std::size_t>(lngRow) + 1);
  WriteRecordToGrid(VSFlexGrid1, rs, lngColor, lngRow);
}

void frmCompareData::AddRecordToGrid_MarkDiff(Recordset& rs1, Recordset& rs2, std::uint32_t lngColor1,
                                              std::uint32_t lngColor2, std::int32_t lngDiffNo) {
  try {
    const std::size_t row = VSFlexGrid1.rowCount();
    VSFlexGrid1.setRowCount(row + 2);
    VSFlexGrid1.setText(row, 0, std::to_string(lngDiffNo));
    VSFlexGrid1.setText(row + 1, 0, std::to_string(lngDiffNo));
    const std::size_t columns2 = rs2.FieldCount();
    for (std::size_t field = 0; field < rs1.FieldCount(); ++field) {
      const std::string strVal1 = GetFieldValueOrNull(rs1.Fields(field).cell);
      const std::string strVal2 = field < columns2 ? GetFieldValueOrNull(rs2.Fields(field).cell) : "";
      const std::uint32_t colour = strVal1 == strVal2 ? black : red;
      VSFlexGrid1.setText(row, field + 1, strVal1);
      VSFlexGrid1.setText(row + 1, field + 1, strVal2);
      VSFlexGrid1.setTextColour(row, field + 1, colour);
      VSFlexGrid1.setTextColour(row + 1, field + 1, colour);
    }
    VSFlexGrid1.paint(row, row, 0, rs1.FieldCount(), lngColor1);
    VSFlexGrid1.paint(row + 1, row + 1, 0, rs1.FieldCount(), lngColor2);
  } catch (const std::exception& error) {
    program_.host.messageBox(errorText("Function AddRecordToGrid_MarkDiff", describeError(error)), Icon::Critical);
  }
}

// Where the listing of lone records stands.
struct frmCompareData::Listing {
  std::size_t firstRow = 0;
  std::size_t desiredRows = 0;  // of the whole table
  std::size_t row = 0;          // the next record's
  std::size_t lastRow = 0;      // of the last one listed
  std::size_t columns = 0;      // that take a field
  bool stopped = false;
};

void frmCompareData::addListedRecord(Listing& listing, Recordset& rs, std::int32_t lngRec) {
  listing.lastRow = listing.row;
  VSFlexGrid1.setText(listing.row, 0, std::to_string(lngRec));
  listing.columns = std::min(rs.FieldCount(), VSFlexGrid1.columnCount() - 1);
  for (std::size_t column = 1; column <= listing.columns; ++column)
    VSFlexGrid1.setText(listing.row, column, GetFieldValueOrNull(rs.Fields(column - 1).cell));
}

void frmCompareData::listRecords(Listing& listing, frmCompareStatus& frmStatus, ProgressBar& progress, Label& lblCurRec,
                                 Recordset& rs, std::int32_t lngStartRec, std::int32_t lngEndRec) {
  const auto& state = program_.state<modCompareDataState>();
  const double divisor = std::max(lngEndRec - lngStartRec, 1);
  for (std::int32_t lngRec = lngStartRec; lngRec <= lngEndRec; ++lngRec, ++listing.row) {
    if ((lngRec - lngStartRec) % recordsPerYield == 0 || lngRec == lngEndRec) {
      lblCurRec.setText(FormatThousands(lngRec));
      progress.setValue(lngRec / divisor * 100);
      frmStatus.UpdateTimeElapsed();
      program_.host.doEvents();
    }
    listing.stopped = state.gblnStopComparison;
    if (listing.stopped) return;
    if (lngStartRec == 1 && lngRec == 1)
      rs.MoveFirst();
    else
      rs.MoveNext();
    if (rs.Eof() || listing.row >= listing.desiredRows) return;
    addListedRecord(listing, rs, lngRec);
  }
}

void frmCompareData::AddMultipleRecordsToGrid(frmCompareStatus& frmStatus, ProgressBar& progress, Label& lblCurRec,
                                              Recordset& rs, std::uint32_t lngColor, std::int32_t lngStartRec,
                                              std::int32_t lngEndRec) {
  Listing listing;
  try {
    listing.firstRow = listing.row = VSFlexGrid1.rowCount();
    const std::int64_t wanted = std::int64_t{lngEndRec} - lngStartRec + 1 + static_cast<std::int64_t>(listing.firstRow);
    const std::int64_t limit = program_.settings.glngMaxRowsInDiffTable;
    listing.desiredRows = static_cast<std::size_t>(std::max<std::int64_t>(wanted > limit ? limit + 1 : wanted, 0));
    VSFlexGrid1.setRowCount(listing.desiredRows);
    listRecords(listing, frmStatus, progress, lblCurRec, rs, lngStartRec, lngEndRec);
    if (listing.stopped || listing.firstRow > VSFlexGrid1.rowCount() || listing.firstRow > listing.lastRow) return;
    VSFlexGrid1.paint(listing.firstRow, listing.lastRow, 0, listing.columns, lngColor);
  } catch (const std::exception& error) {
    const ErrorInfo info = describeError(error);
    if (info.number == Grid::outOfRows)
      program_.host.messageBox(
          "Only first " + FormatThousands(static_cast<std::int64_t>(listing.row) - 1) + " records can be displayed.",
          Icon::Information);
    else
      program_.host.messageBox(errorText("Sub AddMultipleRecordsToGrid", info), Icon::Critical);
  }
}

void frmCompareData::RemoveEmptyGridRows() {
  while (VSFlexGrid1.rowCount() >= 2 && VSFlexGrid1.columnCount() > 0 &&
         numericPrefix(VSFlexGrid1.text(VSFlexGrid1.rowCount() - 1, 0)) == 0)
    VSFlexGrid1.setRowCount(VSFlexGrid1.rowCount() - 1);
}

}  // namespace qrel
