// How the lines of two objects differ, as marks and as background colours of the panes.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "app/CompLine.h"

namespace qrel {

class Program;
class TextPane;

// The values of CompLine::lngMark.
constexpr std::int32_t markNone = 0;
constexpr std::int32_t markUnchanged = 10;
constexpr std::int32_t markChanged = 20;
constexpr std::int32_t markOnlyInTarget = 30;
constexpr std::int32_t markOnlyInSource = 40;

// Cuts two panes into lines, marks the lines and paints them. Lines are compared byte by byte; tables (50) match each
// Source line by its first word instead, wherever it stands. Equal texts are left alone with empty arrays. When one
// pane is empty the other's lines get their marks, but nothing is painted. lngError is 0, or -1 after a message when a
// pane can't be cut into lines.
void Mark_Differences(Program& program, TextPane& paneSource, TextPane& paneTarget, CompLineArray& arrSource,
                      CompLineArray& arrTarget, std::int32_t& lngError, long enmObjectType);

// Marks two tables' lines. The Target lines come in with mark 30 and keep it unless a Source line has their first word.
// Case doesn't count. A blank Source line stays without a mark; one of a single word shows GetFirstWord's box.
void Mark_Differences_Tables(Program& program, CompLineArray& arrSource, CompLineArray& arrTarget,
                             std::int32_t lngCountSource, std::int32_t lngCountTarget);

// The Target lines of a table by their first words.
struct TableLines {
  TableLines(const CompLineArray& arrTarget, std::int32_t lngCountTarget);

  std::vector<std::string> arrUpper;                     // line n, in upper case, is element n - 1
  std::unordered_map<std::string, long> lngByFirstWord;  // the first line, from 1, with that upper-case word
};

// Marks one Source line and the first Target line with the same first word, which several Source lines may claim.
void Mark_Differences_PerSourceLine(Program& program, CompLineArray& arrSource, CompLineArray& arrTarget,
                                    const TableLines& targetLines, const std::string& strLine, long lngSourceIndex);

// An upper-case column line without what follows "CONSTRAINT" or "DEFAULT" (not at its very start), trimmed.
std::string StripExtraColInfo(Program& program, const std::string& strLine);

// Marks lines lngFirst to lngLast; none when lngFirst is the greater.
void MarkLineRange(CompLineArray& arr, long lngFirst, long lngLast, std::int32_t lngMark);

// Looks for line lngIndexA of A in B, from line lngIndexB to 20 lines further on. True sets lngFoundBefore to the
// number of the line before the first hit.
bool FindLineAhead(const CompLineArray& arrA, const CompLineArray& arrB, std::int32_t lngCountA, std::int32_t lngCountB,
                   long lngIndexA, long lngIndexB, long& lngFoundBefore);

// Marks the unmarked lines at the end, from the last one up to the first that has a mark.
void MarkUnmarkedTail(CompLineArray& arr, std::int32_t lngCount, std::int32_t lngMark);

// Gives the pane's lines the colours of their marks, in place of all colours it had. The character that was dropped
// behind a line isn't painted. Text and selection stay.
void PaintLines(TextPane& pane, const CompLineArray& arr, std::int32_t lngCount);

// 0x00BBGGRR; black for anything but the five marks.
std::uint32_t GetMarkColor(std::int32_t lngMark);

}  // namespace qrel
