#include "app/modTextPane.h"

#include "platform/controls/textPane.h"

namespace qrel {

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

std::string TXText_ConvArrayToText(const CompLineArray& arr, std::int32_t lngCount, std::int32_t& lngError) {
  lngError = lngCount > arr.count() ? -1 : 0;
  if (lngCount < 1 || lngError != 0) return {};
  std::string text;
  for (std::int32_t line = 1; line <= lngCount; ++line) (text += arr[line].strLine) += "\r\n";
  return text;
}

}  // namespace qrel
