#include "app/modTextPane.h"

#include <algorithm>

#include "app/Program.h"
#include "app/settings.h"
#include "platform/controls/textPane.h"

namespace qrel {

namespace {

constexpr std::int32_t leastPageWidth = 20000;  // twips
constexpr std::int32_t leastPageHeight = 15840;
constexpr double paneFontSize = 8.25;  // points

}  // namespace

void InitializeTXTextControl(Program& program, TextPane& pane) {
  std::int32_t stored[2] = {};  // width, height
  std::int32_t raised[2] = {};
  int line = 1;
  try {
    pane.setText({});
    line = 2;
    stored[0] = ReadNumber(program, "PageWidth");
    stored[1] = ReadNumber(program, "PageHeight");
    line = 3;
    raised[0] = std::max(stored[0], leastPageWidth);
    raised[1] = std::max(stored[1], leastPageHeight);
    pane.pageWidth = raised[0];
    pane.pageHeight = raised[1];
    pane.fontSize = paneFontSize;
  } catch (const std::exception& error) {
    const ErrorInfo info = describeError(error);
    program.host.messageBox(
        "Error in Sub InitializeTXTextControl, error nr " + std::to_string(info.number) + " (" + info.description +
        ").\r\nPageWidth = " + std::to_string(stored[0]) + ", PageHeight = " + std::to_string(stored[1]) +
        ", new PageWidth = " + std::to_string(raised[0]) + ", new PageHeight = " + std::to_string(raised[1]) +
        "\r\nLine num = " + std::to_string(line));
  }
}

std::int32_t TXText_ConvTextToArray(const TextPane& pane, CompLineArray& arr, std::int32_t& lngError) {
  lngError = 0;
  arr.clear();
  const std::string& text = pane.text();
  const std::size_t count = pane.lineCount();
  if (count < 1 || text.empty()) return 0;
  arr.reserve(count);
  for (std::size_t line = 0; line < count; ++line) {
    const long start = pane.lineOffset(line);
    const bool last = line + 1 == count;
    const long end = last ? static_cast<long>(text.size()) : pane.lineOffset(line + 1) - 1;
    if (start == -1 || end < start) {
      lngError = -1;
      return 0;
    }
    arr.add({text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)), 0,
             static_cast<std::int32_t>(start), static_cast<std::int32_t>(end)});
  }
  return static_cast<std::int32_t>(count);
}

bool TXText_LinesOrBox(Program& program, const TextPane& pane, const std::string& strWhat, CompLineArray& arr,
                       std::int32_t& lngCount) {
  std::int32_t lngError = 0;
  lngCount = TXText_ConvTextToArray(pane, arr, lngError);
  if (lngError == 0) return true;
  program.host.messageBox(strWhat + " - error occurred.");
  return false;
}

std::string TXText_ConvArrayToText(const CompLineArray& arr, std::int32_t lngCount, std::int32_t& lngError) {
  lngError = lngCount > arr.count() ? -1 : 0;
  if (lngCount < 1 || lngError != 0) return {};
  std::string text;
  for (std::int32_t line = 1; line <= lngCount; ++line) (text += arr[line].strLine) += "\r\n";
  return text;
}

void InsertHeader(TextPane& pane, const std::string& strText) { pane.header = strText; }

void InsertFooter(TextPane& pane) { pane.pageNumbers = true; }

namespace {

constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint32_t nothingThere = 0xE8E8E8;  // of a row without a line

// The colour that each line has from its start on.
std::vector<std::uint32_t> coloursOfLines(const TextPane& pane) {
  if (pane.backgrounds().empty()) return {};
  std::vector<std::uint32_t> colours(pane.lineCount(), white);
  std::vector<TextPane::Range> ranges = pane.backgrounds();
  std::stable_sort(ranges.begin(), ranges.end(),
                   [](const auto& left, const auto& right) { return left.start < right.start; });
  std::size_t line = 0;
  for (const TextPane::Range& range : ranges) {
    while (line + 1 < colours.size() && static_cast<std::size_t>(pane.lineOffset(line + 1)) <= range.start) ++line;
    if (static_cast<std::size_t>(pane.lineOffset(line)) == range.start) colours[line] = range.colour;
  }
  return colours;
}

}  // namespace

void PrintTextControl(Program& program, const TextPane& pane, const std::string& strTitle, const std::string& strName) {
  PrintJob job{strTitle, pane.text(), pane.header, pane.pageNumbers, {}, strName};
  if (pane.rows().empty()) {
    job.lineColours = coloursOfLines(pane);
  } else {
    job.text.clear();
    for (const TextPane::Row& row : pane.rows()) {
      if (!job.lineColours.empty()) job.text += '\n';
      if (row.line >= 0) job.text += pane.lineText(static_cast<std::size_t>(row.line));
      job.lineColours.push_back(row.line >= 0 ? row.colour : nothingThere);
    }
  }
  program.host.print(job);
}

void TxText_CopyToClipboard(Program& program, const TextPane& pane) {
  CompLineArray arr;
  std::int32_t lngError = 0;
  const std::int32_t lngCount = TXText_ConvTextToArray(pane, arr, lngError);
  program.host.setClipboardText(TXText_ConvArrayToText(arr, lngCount, lngError));
}

}  // namespace qrel
