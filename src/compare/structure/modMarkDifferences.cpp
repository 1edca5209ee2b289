#include "compare/structure/modMarkDifferences.h"

#include <algorithm>
#include <utility>

#include "app/modStrings.h"
#include "app/modTextPane.h"
#include "app/trap.h"
#include "db/mdlObjects.h"
#include "platform/controls/textPane.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* inModMarkDifferences = "modMarkDifferences";
constexpr long linesAhead = 20;  // searched behind the current one

// Walks both texts side by side; a line that isn't met looks for itself in the lines ahead, Source's line first.
void walkBoth(CompLineArray& arrSource, CompLineArray& arrTarget, std::int32_t lngCountSource,
              std::int32_t lngCountTarget) {
  long i = 1;
  long j = 1;
  for (long k = 1; k <= lngCountSource; ++k, ++i, ++j) {
    if (i > lngCountSource) return MarkLineRange(arrTarget, j, lngCountTarget, markOnlyInTarget);
    if (j > lngCountTarget) return MarkLineRange(arrSource, i, lngCountSource, markOnlyInSource);
    long before = 0;
    std::int32_t mark = markUnchanged;
    if (arrSource[i].strLine == arrTarget[j].strLine) {
      // They meet here.
    } else if (FindLineAhead(arrSource, arrTarget, lngCountSource, lngCountTarget, i, j, before)) {
      MarkLineRange(arrTarget, j, before, markOnlyInTarget);
      j = before + 1;
    } else if (FindLineAhead(arrTarget, arrSource, lngCountTarget, lngCountSource, j, i, before)) {
      MarkLineRange(arrSource, i, before, markOnlyInSource);
      i = before + 1;
    } else {
      mark = markChanged;
    }
    arrSource[i].lngMark = arrTarget[j].lngMark = mark;
  }
}

std::string_view firstWordOf(std::string_view strLine) {
  const std::string_view text = trimBlanks(strLine);
  return text.substr(0, text.find(' '));
}

}  // namespace

void Mark_Differences(Program& program, TextPane& paneSource, TextPane& paneTarget, CompLineArray& arrSource,
                      CompLineArray& arrTarget, std::int32_t& lngError, long enmObjectType) {
  trap(program, inModMarkDifferences, "Mark_Differences", [&] {
    lngError = 0;
    if (paneSource.text() == paneTarget.text()) return;
    const std::int32_t lngCountSource = TXText_ConvTextToArray(paneSource, arrSource, lngError);
    std::int32_t lngCountTarget = 0;
    if (lngError == 0) lngCountTarget = TXText_ConvTextToArray(paneTarget, arrTarget, lngError);
    if (lngError != 0) {
      program.host.messageBox("Error occurred.");
      return;
    }
    if (lngCountSource == 0) return MarkLineRange(arrTarget, 1, lngCountTarget, markOnlyInTarget);
    if (lngCountTarget == 0) return MarkLineRange(arrSource, 1, lngCountSource, markOnlyInSource);
    if (enmObjectType == objTables) {
      MarkLineRange(arrTarget, 1, lngCountTarget, markOnlyInTarget);
      Mark_Differences_Tables(program, arrSource, arrTarget, lngCountSource, lngCountTarget);
    } else {
      walkBoth(arrSource, arrTarget, lngCountSource, lngCountTarget);
    }
    MarkUnmarkedTail(arrSource, lngCountSource, markOnlyInSource);
    MarkUnmarkedTail(arrTarget, lngCountTarget, markOnlyInTarget);
    PaintLines(paneSource, arrSource, lngCountSource);
    PaintLines(paneTarget, arrTarget, lngCountTarget);
  });
}

void Mark_Differences_Tables(Program& program, CompLineArray& arrSource, CompLineArray& arrTarget,
                             std::int32_t lngCountSource, std::int32_t lngCountTarget) {
  trap(program, inModMarkDifferences, "Mark_Differences_Tables", [&] {
    const TableLines targetLines(arrTarget, lngCountTarget);
    for (long line = 1; line <= lngCountSource; ++line)
      Mark_Differences_PerSourceLine(program, arrSource, arrTarget, targetLines, arrSource[line].strLine, line);
  });
}

TableLines::TableLines(const CompLineArray& arrTarget, std::int32_t lngCountTarget) {
  arrUpper.reserve(static_cast<std::size_t>(lngCountTarget));
  for (long line = 1; line <= lngCountTarget; ++line) {
    arrUpper.push_back(upperCase(arrTarget[line].strLine));
    const std::string_view word = firstWordOf(arrUpper.back());
    if (!word.empty()) lngByFirstWord.try_emplace(std::string(word), line);
  }
}

void Mark_Differences_PerSourceLine(Program& program, CompLineArray& arrSource, CompLineArray& arrTarget,
                                    const TableLines& targetLines, const std::string& strLine, long lngSourceIndex) {
  trap(program, inModMarkDifferences, "Mark_Differences_PerSourceLine", [&] {
    if (trimBlanks(strLine).empty()) return;
    const std::string strUpper = upperCase(strLine);
    std::string strRest;
    const std::string strWord = GetFirstWord(program.host, strUpper, strRest, " ");
    const auto hit = targetLines.lngByFirstWord.find(strWord);
    if (hit == targetLines.lngByFirstWord.end()) {
      arrSource[lngSourceIndex].lngMark = markOnlyInSource;
      return;
    }
    const std::string& strTarget = targetLines.arrUpper[static_cast<std::size_t>(hit->second - 1)];
    const bool isColumn = strWord != "CONSTRAINT" && strWord != "INDEX";
    const bool same = strTarget == strUpper ||
                      (isColumn && StripExtraColInfo(program, strTarget) == StripExtraColInfo(program, strUpper));
    arrSource[lngSourceIndex].lngMark = arrTarget[hit->second].lngMark = same ? markUnchanged : markChanged;
  });
}

std::string StripExtraColInfo(Program& program, const std::string& strLine) {
  return trap(program, inModMarkDifferences, "StripExtraColInfo", std::string(), [&] {
    std::string_view rest = strLine;
    for (const std::string_view clause : {"CONSTRAINT", "DEFAULT"}) rest = rest.substr(0, rest.find(clause, 1));
    return std::string(trimBlanks(rest));
  });
}

void MarkLineRange(CompLineArray& arr, long lngFirst, long lngLast, std::int32_t lngMark) {
  for (long line = lngFirst; line <= lngLast; ++line) arr[line].lngMark = lngMark;
}

bool FindLineAhead(const CompLineArray& arrA, const CompLineArray& arrB, std::int32_t lngCountA, std::int32_t lngCountB,
                   long lngIndexA, long lngIndexB, long& lngFoundBefore) {
  if (lngIndexA > lngCountA) return false;
  const std::string& strLine = arrA[lngIndexA].strLine;
  const long last = std::min<long>(lngIndexB + linesAhead, lngCountB);
  for (long line = lngIndexB; line <= last; ++line) {
    if (arrB[line].strLine != strLine) continue;
    lngFoundBefore = line - 1;
    return true;
  }
  return false;
}

void MarkUnmarkedTail(CompLineArray& arr, std::int32_t lngCount, std::int32_t lngMark) {
  for (long line = lngCount; line >= 1 && arr[line].lngMark == markNone; --line) arr[line].lngMark = lngMark;
}

void PaintLines(TextPane& pane, const CompLineArray& arr, std::int32_t lngCount) {
  std::vector<TextPane::Range> ranges;
  ranges.reserve(static_cast<std::size_t>(std::max(lngCount, 0)));
  for (long line = 1; line <= lngCount; ++line) {
    const CompLine& each = arr[line];
    ranges.push_back({static_cast<std::size_t>(each.lngStart), static_cast<std::size_t>(each.lngEnd - each.lngStart),
                      GetMarkColor(each.lngMark)});
  }
  pane.setBackgrounds(std::move(ranges));
}

std::uint32_t GetMarkColor(std::int32_t lngMark) {
  switch (lngMark) {
    case markNone:
      return 0x00FFFF;
    case markUnchanged:
      return 0xFFFFFF;
    case markChanged:
      return 0xC0FFC0;
    case markOnlyInTarget:
      return 0xD9C37A;
    case markOnlyInSource:
      return 0xC0C0FF;
    default:
      return 0;
  }
}

}  // namespace qrel
