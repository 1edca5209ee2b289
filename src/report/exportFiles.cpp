#include "report/exportFiles.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "platform/data/numberText.h"
#include "platform/host/host.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view labelGround = "CCCCC";  // of the header and of column 0
constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint32_t viewerEvenRows = 0xFFFF00;  // whatever the window paints

bool isAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0x80U) != 0; });
}

// A table as both kinds of file read it; row 0 is the header.
class Table {
 public:
  explicit Table(const Grid& grid) : grid_(grid) {}
  explicit Table(const ReportControl& report) : grid_(report), hasImageRows_(true) {}

  std::size_t rows() const { return grid_.rowCount(); }
  std::size_t columns() const { return grid_.columnCount(); }
  const Grid& grid() const { return grid_; }
  // Behind a column 1 that says "image" a record has nothing that could be written.
  std::string_view text(std::size_t row, std::size_t column) const {
    if (hasImageRows_ && row > 0 && column > 1 && grid_.text(row, 1) == "image") return {};
    return grid_.text(row, column);
  }
  bool isAsciiOnly() const {
    for (std::size_t row = 0; row < rows(); ++row)
      for (std::size_t column = 0; column < columns(); ++column)
        if (!isAscii(text(row, column))) return false;
    return true;
  }

 private:
  const Grid& grid_;
  bool hasImageRows_ = false;
};

bool goesOn(const ExportStep& step, std::size_t row) { return step(static_cast<std::int32_t>(row)); }

// Neither of the formats has room for a word about its encoding without changing what every reader sees; the mark is
// read by browsers and spreadsheets alike and left out where it decides nothing.
void writeMark(files::AtomicFile& file, bool asciiOnly) {
  if (!asciiOnly) file.write(byteOrderMark);
}

struct HtmlParts {
  std::string title;
  std::string heading;
  std::string note;  // behind the closing tags; empty: none
  std::function<std::uint32_t(std::size_t row, std::size_t column)> ground;
};

std::string htmlHead(const HtmlParts& parts, const Table& table) {
  std::string out;
  const auto line = [&out](std::string_view text) { out.append(text).append(lineEnd); };
  line("<HTML><HEAD><TITLE>" + parts.title + "</TITLE></HEAD>");
  line("<BODY BGCOLOR = \"FFFFFF\">");
  line("<p align='center'><b> " + parts.heading);
  line("<TABLE BGCOLOR = \"000000\" WIDTH = \"100%\">");
  line("<TR>");
  for (std::size_t column = 0; column < table.columns(); ++column) {
    out.append("<TD BGCOLOR = ").append(labelGround).append("><B>&nbsp ").append(trimBlanks(table.text(0, column)));
    line(" &nbsp</B></TD>");
  }
  line("</TR>");
  return out;
}

void appendHtmlRow(std::string& out, const HtmlParts& parts, const Table& table, std::size_t row) {
  out.append("<TR>").append(lineEnd);
  for (std::size_t column = 0; column < table.columns(); ++column) {
    out += "<TD BGCOLOR = ";
    if (column == 0)
      out += labelGround;
    else
      out += RGBToHTMLColor(parts.ground(row, column));
    out.append("><FONT COLOR = ").append(RGBToHTMLColor(table.grid().textColour(row, column))).append(">&nbsp ");
    out.append(trimBlanks(table.text(row, column))).append(" &nbsp</TD>").append(lineEnd);
  }
  out.append("</TR>").append(lineEnd);
}

bool writeHtml(const HtmlParts& parts, const Table& table, files::AtomicFile& file, const ExportStep& step) {
  writeMark(file, isAscii(parts.heading) && isAscii(parts.note) && table.isAsciiOnly());
  file.write(htmlHead(parts, table));
  std::string out;
  for (std::size_t row = 1; row < table.rows(); ++row) {
    if (!goesOn(step, row)) return false;
    out.clear();
    appendHtmlRow(out, parts, table, row);
    file.write(out);
  }
  file.write("</TABLE></BODY></HTML>\r\n");
  file.write(parts.note);
  return true;
}

// The number that a label shows, as in "1,234"; 0 where it shows none.
std::int64_t numericValue(const std::string& text) {
  const auto plain = plainDecimal(text);
  return plain ? wholeNumber(*plain).value_or(0) : 0;
}

std::string viewerDetail(const tExportSource& source) {
  if (!source.blnCurRecVisible) return {};
  return source.lblStats[0] + "<br> Number of records loaded: " + std::to_string(numericValue(source.lblCurRec) - 1);
}

std::string differencesNote(const tExportSource& source, std::int32_t lngLimitCount, const std::string& strLimitText) {
  const auto& stats = source.lblStats;
  std::string note = "<p align='center'><b> " + stats[0] + " " + stats[3] + "<br> " + stats[1] + " " + stats[4] +
                     "<br> " + stats[2] + " " + stats[5];
  if (lngLimitCount > 0) note += "<br> " + strLimitText;
  return note.append("</b>").append(lineEnd);
}

void appendField(std::string& out, std::string_view text, const tCsvForm& form) {
  const bool wrapped = form.blnWrapInQuot || (form.rfc4180 && text.find_first_of(",\"\r\n") != std::string_view::npos);
  if (wrapped) out += '"';
  if (form.rfc4180)
    out += replaceAll(text, "\"", "\"\"");
  else
    out += trimBlanks(text);
  if (wrapped) out += '"';
}

// From the first row that a step is asked for; the ones before it are written without.
bool writeCsv(const Table& table, std::size_t firstStep, const tCsvForm& form, files::AtomicFile& file,
              const ExportStep& step) {
  writeMark(file, table.isAsciiOnly());
  std::string out;
  for (std::size_t row = 0; row < table.rows(); ++row) {
    if (row >= firstStep && !goesOn(step, row)) return false;
    out.clear();
    for (std::size_t column = 0; column < table.columns(); ++column) {
      if (column > 0) out += ',';
      appendField(out, table.text(row, column), form);
    }
    file.write(out.append(lineEnd));
  }
  return true;
}

}  // namespace

bool GridToHtml(const tExportSource& source, std::int32_t lngMode, std::int32_t lngLimitCount,
                const std::string& strLimitText, files::AtomicFile& file, const ExportStep& step) {
  const Grid& grid = *source.VSFlexGrid1;
  const bool blnViewer = lngMode == exportFromDataView;
  HtmlParts parts;
  parts.title = "Data Differences ";
  parts.heading = source.strCaption + "</b><p> " + source.lblTableName[0] + "<br> " +
                  (blnViewer ? viewerDetail(source) : source.lblTableName[1]) + "<p>";
  if (blnViewer) {
    parts.ground = [](std::size_t row, std::size_t) { return row % 2 == 0 ? viewerEvenRows : white; };
  } else {
    parts.note = differencesNote(source, lngLimitCount, strLimitText);
    // What was never painted has no colour, whose digits are white's.
    parts.ground = [&grid](std::size_t row, std::size_t column) { return grid.backColour(row, column); };
  }
  return writeHtml(parts, Table(grid), file, step);
}

bool RepControlToHtml(const tExportSource& source, files::AtomicFile& file, const ExportStep& step) {
  HtmlParts parts;
  parts.title = "Data Differences  ";
  parts.heading = source.strCaption + "</b><p> ";
  // What the window paints behind its values is for the screen.
  parts.ground = [](std::size_t, std::size_t) { return white; };
  return writeHtml(parts, Table(*source.rpcReport), file, step);
}

bool GridToCSV(const Grid& grid, const tCsvForm& form, files::AtomicFile& file, const ExportStep& step) {
  return writeCsv(Table(grid), 0, form, file, step);
}

bool RepControlToCSV(const ReportControl& report, const tCsvForm& form, files::AtomicFile& file,
                     const ExportStep& step) {
  return writeCsv(Table(report), 1, form, file, step);
}

std::string GetDefaultExportFileName(const Host& host, const std::string& strExtension) {
  const LocalTime today = host.now();
  char date[16];
  std::snprintf(date, sizeof date, "%04d%02d%02d", today.year % 10000, today.month % 100, today.day % 100);
  return std::string(date) + "." + (strExtension.empty() ? "txt" : strExtension);
}

std::string RGBToHTMLColor(std::uint32_t lngColor) {
  const std::uint32_t red = lngColor & 0xFFU, green = (lngColor >> 8U) & 0xFFU, blue = (lngColor >> 16U) & 0xFFU;
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string text;
  for (const std::uint32_t part : {red, green, blue}) text.append({digits[part >> 4U], digits[part & 0xFU]});
  return text;
}

}  // namespace qrel
