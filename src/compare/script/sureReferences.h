// References that name nothing in the database for all that can be known: what can be explained otherwise is left out.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "app/Program.h"

namespace qrel {

// What a database has, all in lower case.
struct KnownNames {
  std::string database;
  std::unordered_set<std::string> schemas;
  std::unordered_set<std::string> objects;    // of any kind, bare
  std::unordered_set<std::string> qualified;  // the same as "schema.name"
  std::unordered_set<std::string> opaque;     // views and functions with rows whose columns the server doesn't list
  std::unordered_set<std::string> columns;    // of all tables and views
  std::unordered_set<std::string> others;     // types and indexes
};

// False when one of its queries failed: then nothing can be said.
bool ReadKnownNames(Program& program, const tServer& server, const std::string& strDb, KnownNames& known);

struct SureReference {
  std::string name;  // as it is written, without brackets
  long line = 0;     // 1-based, of its first occurrence
};

// The whole text of a procedure, function, view or trigger is looked at. Where a name stands decides what it may be:
// behind FROM, JOIN, INTO, UPDATE, DELETE, INSERT, EXEC and the like it has to be an object, a name that the text
// defines or a system object; before "(" a function; behind an alias or a table, and anywhere else, a column or any
// name that the database has will do. Left out are keywords, variables, temporary tables, strings, what lies in another
// database, and columns where the text reads from something whose columns can't be known. Each name once, in order.
std::vector<SureReference> FindSureReferences(std::string_view strText, const KnownNames& known);

}  // namespace qrel
