// Between a text pane and its array of lines.
#pragma once

#include <cstdint>
#include <string>

#include "app/CompLine.h"

namespace qrel {

class TextPane;

// Cuts the pane's text into lines and returns their count, 0 for an empty text. Each line ends one character before the
// next one starts: with CR LF it keeps its CR, and the last line has none. lngError is 0, or -1 when the pane's line
// offsets make no sense; the result is 0 then.
std::int32_t TXText_ConvTextToArray(const TextPane& pane, CompLineArray& arr, std::int32_t& lngError);

// The first lngCount lines, each followed by CR LF; empty for a count below 1. lngError is 0, or -1 with an empty
// result when there are fewer lines.
std::string TXText_ConvArrayToText(const CompLineArray& arr, std::int32_t lngCount, std::int32_t& lngError);

}  // namespace qrel
