// Words that T-SQL itself brings, all in lower case.
#pragma once

#include <string>

namespace qrel {

// A built-in function, also one that gives rows.
bool IsBuiltInFunction(const std::string& strLower);
// A built-in type.
bool IsBuiltInType(const std::string& strLower);
// A word of a statement that is no reserved one: options, hints, parts of dates, set options.
bool IsStatementWord(const std::string& strLower);
// An object that every database has: system tables and procedures by their bare names.
bool IsSystemObject(const std::string& strLower);

}  // namespace qrel
