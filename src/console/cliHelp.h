// What the help of a command says behind its options, and which word may have been meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qrel {

// The options that every command has, examples of the command ("compare", "servers add"), the exit codes. `note` is
// said first; it may be empty.
std::string helpFooter(std::string_view command, std::string_view note);

// The one of the words that is nearest to what was written; empty when none is near.
std::string nearestWord(std::string_view written, const std::vector<std::string>& words);

}  // namespace qrel
