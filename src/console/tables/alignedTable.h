// Two texts in two columns, lines that belong together on one height.
#pragma once

#include <iosfwd>
#include <string_view>

#include "compare/structure/alignedTexts.h"

namespace qrel {

struct AlignedForm {
  int columns = 0;       // characters that a row may take; below 40 it is 40
  bool colours = false;  // of a terminal
};

// Source at the left, Target at the right, between them the sign of each row: blank, "~" changed, "-" only in Source,
// "+" only in Target, "." differs in what doesn't count. What is longer than its column goes on in the next row, whose
// sign is blank. In colours the words that differ are underlined.
void printAligned(std::ostream& out, std::string_view strSource, std::string_view strTarget,
                  const AlignOptions& options, const AlignedForm& form);

}  // namespace qrel
