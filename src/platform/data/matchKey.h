// When two cells of one column are equal, and which comes first: text without case and trailing blanks, numbers and
// dates by value, Nulls equal to each other and before all else.
#pragma once

#include <string>

#include "platform/data/value.h"

namespace qrel {

// Appends bytes that are the same for cells that compareCells calls equal, and for no others of the same type.
void appendMatchKey(std::string& out, const Cell& cell);

// Whether two cells would append the same bytes.
bool sameMatchKey(const Cell& a, const Cell& b);

// Whether both are numbers (integers, doubles, decimals) and the same one: 1.50 is 1.5000, whatever column it is from.
// A double is the number that its text form tells.
bool sameNumber(const Cell& a, const Cell& b);

// Orders two cells of the same type: negative, 0 or positive. Numbers of different types compare by value.
int compareCells(const Cell& a, const Cell& b);

}  // namespace qrel
