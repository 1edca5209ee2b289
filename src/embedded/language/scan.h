// Looking through T-SQL text without making tokens: where quoted parts and comments end.
#pragma once

#include <cstddef>
#include <string_view>

namespace qrel::tsql {

// When a string, a bracketed or quoted name or a comment begins at `at`, the offset behind it; otherwise `at`. What is
// not closed runs to the end. Block comments nest. A line comment ends before its line end.
std::size_t skipQuotedOrComment(std::string_view text, std::size_t at);

// A quoted part or block comment that stands open at some place of a text.
struct OpenPart {
  char mark = 0;       // ' or " or [ or, for a comment, *; 0 when nothing is open
  int depth = 0;       // of comments within comments
  std::size_t at = 0;  // where it opens
};
// What is open at `end`, when `before` is open at `begin`.
OpenPart openPartAt(std::string_view text, std::size_t begin, std::size_t end, OpenPart before = {});

// Like skipQuotedOrComment for comments and blanks alone: the offset of the first character that is neither.
std::size_t skipBlanksAndComments(std::string_view text, std::size_t at);

// The offset of the line end of the line that `at` stands on; the text's size on the last line.
std::size_t lineEnd(std::string_view text, std::size_t at);
// The line from `at` on, without its line end.
inline std::string_view lineAt(std::string_view text, std::size_t at) {
  return text.substr(at, lineEnd(text, at) - at);
}

// The offset behind the line end (LF, CR LF or CR) of the line that `at` stands on; the text's size on the last line.
std::size_t nextLine(std::string_view text, std::size_t at);

// Where a long run of statements may be cut: the offset of a line that starts with INSERT, at least `least` bytes on,
// outside every bracket and BEGIN ... END, behind a semicolon or a VALUES list. The text's size when there is none.
std::size_t findCut(std::string_view text, std::size_t least);

}  // namespace qrel::tsql
