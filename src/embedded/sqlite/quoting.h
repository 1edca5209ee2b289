// Names and texts as SQLite's SQL wants them.
#pragma once

#include <string>
#include <string_view>

namespace qrel::tsql {

// "name" with doubled quotes: an identifier for SQLite. 'text' with doubled quotes: a literal.
std::string quoteName(std::string_view name);
std::string quoteText(std::string_view text);

}  // namespace qrel::tsql
