// T-SQL text as a run of names, signs and the rest: without comments, with names in one piece.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qrel {

struct SqlItem {
  enum class Kind { Name, Variable, Temporary, Literal, Sign, End } kind = Kind::End;
  std::vector<std::string> parts;  // of a name or a temporary table: "a.b" has two; an omitted one is empty
  bool bare = false;               // a name of one part, without brackets or quotes: it can be a keyword
  bool quoted = false;             // a name of one part in double quotes, which may as well be a string
  std::string word;                // a bare name in lower case, or the sign; empty otherwise
  long line = 0;                   // 1-based

  bool is(std::string_view text) const { return word == text; }
};

// All items, with an End behind them. An unclosed comment, string or bracket goes to the text's end.
std::vector<SqlItem> ScanSql(std::string_view text);

}  // namespace qrel
