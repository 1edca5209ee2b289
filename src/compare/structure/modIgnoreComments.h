// Texts without their comments.
#pragma once

#include <string>
#include <string_view>

namespace qrel {

// Removes /* */ and -- comments, for comparison only: every LF becomes CR LF first, and a LF in front of a comment goes
// with it. A mark inside a literal counts as a comment, "/*/" is a whole one. No more comments are taken than marks
// were counted in the text, overlapping ones included. A block without an end doubles what stands before it, once for
// each mark still counted; a text that grows beyond 64 MB this way raises error 7.
std::string StripCommentsFromProc(std::string_view strText);

}  // namespace qrel
