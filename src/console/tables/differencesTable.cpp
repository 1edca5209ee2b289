#include "console/tables/differencesTable.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "compare/data/dataValues.h"
#include "compare/data/frmCompareData.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

constexpr std::size_t widestValue = 40;  // characters
constexpr std::uint32_t red = 255;

std::size_t width(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

// A value on one line, cut to what a column shows.
std::string onOneLine(std::string_view value) {
  std::size_t characters = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const bool starts = (static_cast<unsigned char>(value[i]) & 0xC0) != 0x80;
    if (starts && ++characters > widestValue) return visibleText(value.substr(0, i)) + "...";
  }
  return visibleText(value);
}

const char* whose(std::uint32_t backColour) {
  switch (backColour) {
    case COLOR_DIFF_SOURCE:
      return "Source";
    case COLOR_DIFF_TARGET:
      return "Target";
    case COLOR_SOURCE_ONLY:
      return "Source only";
    case COLOR_TARGET_ONLY:
      return "Target only";
    default:
      return "";
  }
}

// Red, in a row that has a partner: a lone record may have come to stand where a pair was.
bool differs(const Grid& grid, std::size_t row, std::size_t column) {
  const std::uint32_t back = grid.backColour(row, column);
  return (back == COLOR_DIFF_SOURCE || back == COLOR_DIFF_TARGET) && grid.textColour(row, column) == red;
}

// Which columns are shown: column 0, the row's number, always.
std::vector<std::size_t> shownColumns(const Grid& grid, const DifferencesForm& form) {
  std::vector<std::size_t> columns{0};
  for (std::size_t column = 1; column < grid.columnCount(); ++column) {
    bool shown = !form.onlyDiffering || std::find(form.keyColumns.begin(), form.keyColumns.end(),
                                                  grid.text(0, column)) != form.keyColumns.end();
    for (std::size_t row = 1; !shown && row < grid.rowCount(); ++row) shown = differs(grid, row, column);
    if (shown) columns.push_back(column);
  }
  return columns;
}

std::string inRed(const std::string& text, const DifferencesForm& form, bool differing) {
  return form.colours && differing ? "\033[31m" + text + "\033[0m" : text;
}

// The cells of a row as shown: the first column, whose row it is, the values.
std::vector<std::string> cellsOf(const Grid& grid, std::size_t row, const std::vector<std::size_t>& columns) {
  std::vector<std::string> cells;
  cells.reserve(columns.size() + 1);
  for (const std::size_t column : columns)
    cells.push_back((differs(grid, row, column) ? "*" : "") + onOneLine(grid.text(row, column)));
  cells.insert(cells.begin() + 1, row == 0 ? "" : whose(grid.backColour(row, 0)));
  return cells;
}

// A line per row, its columns aligned.
void printTable(std::ostream& out, const Grid& grid, const DifferencesForm& form,
                const std::vector<std::size_t>& columns) {
  std::vector<std::size_t> widths(columns.size() + 1);
  for (std::size_t row = 0; row < grid.rowCount(); ++row) {
    const std::vector<std::string> cells = cellsOf(grid, row, columns);
    for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], width(cells[i]));
  }
  for (std::size_t row = 0; row < grid.rowCount(); ++row) {
    const std::vector<std::string> cells = cellsOf(grid, row, columns);
    std::string line;
    std::size_t missing = 0;  // blanks up to the next column
    for (std::size_t i = 0; i < cells.size(); ++i) {
      line.append(missing, ' ');
      line += inRed(cells[i], form, i > 1 && differs(grid, row, columns[i - 1]));
      missing = widths[i] - width(cells[i]) + 2;
    }
    out << std::string_view(line).substr(0, line.find_last_not_of(' ') + 1) << '\n';
  }
}

// A line per value under one that names the row; of a pair, with onlyDiffering, its own differences and its key.
void printVertical(std::ostream& out, const Grid& grid, const DifferencesForm& form,
                   const std::vector<std::size_t>& columns) {
  std::size_t widest = 0;
  for (const std::size_t column : columns) widest = std::max(widest, width(visibleText(grid.text(0, column))));
  const auto isKey = [&](std::size_t column) {
    return std::find(form.keyColumns.begin(), form.keyColumns.end(), grid.text(0, column)) != form.keyColumns.end();
  };
  for (std::size_t row = 1; row < grid.rowCount(); ++row) {
    if (row > 1) out << '\n';
    const std::uint32_t back = grid.backColour(row, 0);
    const bool ofPair = back == COLOR_DIFF_SOURCE || back == COLOR_DIFF_TARGET;
    out << "Row " << visibleText(grid.text(row, 0)) << "  " << whose(back) << '\n';
    for (const std::size_t column : columns) {
      const bool differing = differs(grid, row, column);
      if (column == 0 || (form.onlyDiffering && ofPair && !differing && !isKey(column))) continue;
      const std::string name = visibleText(grid.text(0, column));
      out << (differing ? "* " : "  ") << name << std::string(widest - width(name) + 2, ' ')
          << inRed(visibleText(grid.text(row, column)), form, differing) << '\n';
    }
  }
}

}  // namespace

void printDifferences(std::ostream& out, const Grid& grid, const DifferencesForm& form) {
  if (grid.columnCount() == 0) return;
  const std::vector<std::size_t> columns = shownColumns(grid, form);
  if (form.vertical)
    printVertical(out, grid, form, columns);
  else
    printTable(out, grid, form, columns);
}

void printDifferencesWindow(std::ostream& out, const frmCompareData& window, DifferencesForm form) {
  const auto line = [&](const std::string& text) { out << visibleLines(replaceAll(text, "\r\n", "\n")) << '\n'; };
  for (const Label& label : window.lblTableName) line(label.text());
  line(window.lblGen11.text());
  line("Number of records in first table: " + window.lblStats[3].text());
  line("Number of records in second table: " + window.lblStats[4].text());
  line("Number of different records: " + window.lblStats[5].text());
  for (const Label* label : {&window.lblGen0, &window.lblMaxRows})
    if (label->visible()) line(label->text());
  if (window.VSFlexGrid1.rowCount() < 2) return;
  out << '\n';
  if (window.request().lngCompMethod == compPrimaryKey)
    for (const std::string& key : window.request().arrCompKeys[0])
      if (NamesKey(key)) form.keyColumns.push_back(key);
  printDifferences(out, window.VSFlexGrid1, form);
}

}  // namespace qrel
