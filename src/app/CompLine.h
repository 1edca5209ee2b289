// One line of an object's text, the record of every line array of the structure comparison.
#pragma once

#include <cstdint>
#include <string>

#include "app/OneBased.h"

namespace qrel {

struct CompLine {
  std::string strLine;
  std::int32_t lngMark = 0;   // 0, 10, 20, 30 or 40: how the line differs
  std::int32_t lngStart = 0;  // 0-based offset (bytes) of the line's first character in the pane's text
  std::int32_t lngEnd = 0;    // offset just past its last character
};

// Line 1 is element 1.
using CompLineArray = OneBased<CompLine>;

}  // namespace qrel
