// Two texts side by side, line by line: which lines belong together, which stand alone, which words differ. The
// alignment is for the eye: it has no part in any verdict or mark.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace qrel {

class Program;

// What counts when two lines are compared.
struct AlignOptions {
  bool letterCase = true;
  bool blanks = true;    // false: runs of blanks and tabs are one blank, those at a line's ends none; empty lines too
  bool comments = true;  // false: -- and /* */ outside of strings are left out, also over several lines
};
// As the options CaseSensitive, IgnoreWhitespace and IgnoreComments say.
AlignOptions AlignOptionsOf(const Program& program);

enum class RowKind : std::uint8_t {
  Same,          // byte by byte
  LeftOut,       // differs, or stands alone, only by what doesn't count
  Changed,       // two lines that are alike
  OnlyInSource,  // stands alone
  OnlyInTarget,
};

struct AlignedStretch {
  std::size_t start = 0;  // bytes from the line's start
  std::size_t length = 0;
};

struct AlignedRow {
  RowKind kind = RowKind::Same;
  std::array<long, 2> lines{-1, -1};                   // 0-based, of Source and Target; -1: none
  std::array<std::vector<AlignedStretch>, 2> changes;  // of a changed row: what the other line doesn't have
};

// Every line of both texts once and in order. Lines end at a LF; a final one is followed by an empty line. As few lines
// as possible are left without an equal partner; of those that stand at the same place, lines that are alike share a
// row.
std::vector<AlignedRow> AlignTexts(std::string_view strSource, std::string_view strTarget, const AlignOptions& options);

// The lines of a text as views into it.
std::vector<std::string_view> LinesOf(std::string_view strText);

}  // namespace qrel
