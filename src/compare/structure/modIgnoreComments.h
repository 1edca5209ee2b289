// Texts without their comments.
#pragma once

#include <string>
#include <string_view>

namespace qrel {

class Program;

// Removes /* */ and -- comments, for comparison only: every LF becomes CR LF first, and a LF in front of a comment goes
// with it. A mark inside a literal counts as a comment, "/*/" is a whole one. No more comments are taken than marks
// were counted in the text, overlapping ones included. A block without an end doubles what stands before it, once for
// each mark still counted; a text that grows beyond 4 MB this way raises error 7.
std::string StripCommentsFromProc(std::string_view strText);

// The same for a caller that has another way with such a text: False without a result.
bool StripCommentsWithin(std::string_view strText, std::string& strStripped);

// Whether two texts are the same without their comments, under the settings IgnoreWhitespace and CaseSensitive and,
// for views, after AdjustCreateViewStatements; however long they get, for their repetitions are never written out.
// Error 7 only beyond 2 to the power of 62 bytes.
bool SameWithoutComments(Program& program, std::string_view strA, std::string_view strB, bool blnViews);

}  // namespace qrel
