// A text pane as the program uses it: set up, cut into lines, copied.
#pragma once

#include <cstdint>
#include <string>

#include "app/CompLine.h"

namespace qrel {

class Program;
class TextPane;

// Empties a pane and gives it the page of the settings PageWidth and PageHeight, at least 20000 by 15840 twips, so that
// hardly a line wraps, and its font size. An error is shown in a box with the measures so far.
void InitializeTXTextControl(Program& program, TextPane& pane);

// Cuts the pane's text into lines and returns their count, 0 for an empty text. Each line ends one character before the
// next one starts, which is the pane's line end. lngError is 0, or -1 when the pane's line
// offsets make no sense; the result is 0 then.
std::int32_t TXText_ConvTextToArray(const TextPane& pane, CompLineArray& arr, std::int32_t& lngError);
// The same with the count in lngCount; where the lines can't be had, false after the box "<strWhat> - error occurred.".
bool TXText_LinesOrBox(Program& program, const TextPane& pane, const std::string& strWhat, CompLineArray& arr,
                       std::int32_t& lngCount);

// The first lngCount lines, each followed by CR LF; empty for a count below 1. lngError is 0, or -1 with an empty
// result when there are fewer lines.
std::string TXText_ConvArrayToText(const CompLineArray& arr, std::int32_t lngCount, std::int32_t& lngError);

// What prints on top of each page, and "Page: x of y" at the foot of each.
void InsertHeader(TextPane& pane, const std::string& strText);
void InsertFooter(TextPane& pane);
// Prints all of the pane's pages once, as the pane shows them: its rows where it has some, with the colours of its
// lines. strTitle is the job's title, strName what is offered as the name of a file where there is no printer (empty:
// the title). Raises RuntimeError when it can't be printed.
void PrintTextControl(Program& program, const TextPane& pane, const std::string& strTitle,
                      const std::string& strName = {});

// Puts the pane's text, by way of its lines, on the clipboard in place of what is there.
void TxText_CopyToClipboard(Program& program, const TextPane& pane);

}  // namespace qrel
