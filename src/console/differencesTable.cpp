#include "console/differencesTable.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "compare/data/dataValues.h"
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

// The cells of a row as shown: the first column, whose row it is, the values.
std::vector<std::string> cellsOf(const Grid& grid, std::size_t row) {
  std::vector<std::string> cells;
  for (std::size_t column = 0; column < grid.columnCount(); ++column)
    cells.push_back((differs(grid, row, column) ? "*" : "") + onOneLine(grid.text(row, column)));
  cells.insert(cells.begin() + 1, row == 0 ? "" : whose(grid.backColour(row, 0)));
  return cells;
}

}  // namespace

void printDifferences(std::ostream& out, const Grid& grid, bool colours) {
  if (grid.columnCount() == 0) return;
  std::vector<std::size_t> widths(grid.columnCount() + 1);
  for (std::size_t row = 0; row < grid.rowCount(); ++row) {
    const std::vector<std::string> cells = cellsOf(grid, row);
    for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], width(cells[i]));
  }
  for (std::size_t row = 0; row < grid.rowCount(); ++row) {
    const std::vector<std::string> cells = cellsOf(grid, row);
    std::string line;
    std::size_t missing = 0;  // blanks up to the next column
    for (std::size_t i = 0; i < cells.size(); ++i) {
      line.append(missing, ' ');
      const bool inRed = colours && i > 1 && differs(grid, row, i - 1);
      line += inRed ? "\033[31m" + cells[i] + "\033[0m" : cells[i];
      missing = widths[i] - width(cells[i]) + 2;
    }
    out << std::string_view(line).substr(0, line.find_last_not_of(' ') + 1) << '\n';
  }
}

}  // namespace qrel
