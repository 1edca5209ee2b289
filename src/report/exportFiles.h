// Tables as HTML and CSV files, to the byte. What is written is UTF-8 with CR LF; a byte order mark stands in front of
// a file with any other than ASCII characters and of no other. Texts lose the blanks at their ends and are written as
// they stand, so that a "<" or a quotation mark in the data is one in the file.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/controls/reportControl.h"
#include "platform/files.h"

namespace qrel {

class Host;

// Which window a table comes from.
inline constexpr std::int32_t exportFromCompareData = 1;
inline constexpr std::int32_t exportFromDataView = 2;
inline constexpr std::int32_t exportFromDataAnalyze = 3;

// What is read of that window: its caption and its labels' captions, and the table, which isn't owned.
struct tExportSource {
  std::string strCaption;
  std::array<std::string, 2> lblTableName;  // the viewer has the first
  std::array<std::string, 6> lblStats;      // three words and their numbers; the viewer has the first
  bool blnCurRecVisible = false;            // the viewer's
  std::string lblCurRec;
  const Grid* VSFlexGrid1 = nullptr;         // of the differences and the viewer
  const ReportControl* rpcReport = nullptr;  // of the analyzer
};

// How a CSV file is written. By itself a field is its text, wrapped in quotation marks when they are asked for.
struct tCsvForm {
  bool blnWrapInQuot = false;
  // As RFC 4180 has it: texts keep their blanks, quotation marks in them are doubled, and a field with one, with a
  // comma or with a line end is wrapped.
  bool rfc4180 = false;
};

// Asked before each data row, with its number from 1; false: the file ends before it.
using ExportStep = std::function<bool(std::int32_t lngRow)>;

// Each writes the whole file or, when a step says so, its beginning, and gives false then; finishing the file is the
// caller's. The note stands at the end when the count is above 0. Failures raise RuntimeError.
bool GridToHtml(const tExportSource& source, std::int32_t lngMode, std::int32_t lngLimitCount,
                const std::string& strLimitText, files::AtomicFile& file, const ExportStep& step);
bool RepControlToHtml(const tExportSource& source, files::AtomicFile& file, const ExportStep& step);
// A grid's header is a row like the others, number 0.
bool GridToCSV(const Grid& grid, const tCsvForm& form, files::AtomicFile& file, const ExportStep& step);
bool RepControlToCSV(const ReportControl& report, const tCsvForm& form, files::AtomicFile& file,
                     const ExportStep& step);

// "20040503.csv" for the extension "csv" on that day; an empty extension is "txt".
std::string GetDefaultExportFileName(const Host& host, const std::string& strExtension);

// Six hexadecimal digits, red first, of a colour 0x00BBGGRR.
std::string RGBToHTMLColor(std::uint32_t lngColor);

}  // namespace qrel
