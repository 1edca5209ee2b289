// LIKE patterns: %, _, [a-z], [^a-z] and an escape character, without case.
#pragma once

#include <string_view>

namespace qrel::tsql {

// `escape` is one character or empty.
bool matchesLike(std::string_view text, std::string_view pattern, std::string_view escape = {});

}  // namespace qrel::tsql
