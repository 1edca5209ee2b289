// T-SQL's functions: the one table of them, from which they get into SQLite and by which calls of them are translated.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/data/value.h"

struct sqlite3_context;
struct sqlite3_value;

namespace qrel::tsql {

// How long the text is that a function makes of its arguments.
enum class MadeWidth : std::uint8_t { Unknown, AsFirst, AsFirstOrLast, AsAll, AnyPlain };

// One function. Inside SQLite it is called "q_" and its name.
struct Function {
  enum Trait : unsigned {
    Pure = 1,       // depends on its arguments alone: SQLite may call it once for many rows
    PartFirst = 2,  // its first argument is a word, as in DATEADD(day, ...); SQLite gets it as a text
    Limited = 4,    // SQLite gets the length at which the text is cut as an argument in front of the others
    Inside = 8,     // called by translated SQL alone; no query knows it
  };

  std::string_view name;  // in lower case
  int least;              // number of arguments
  int most;
  DataType kind;  // of the result; Empty: that of the first argument, where that is a number
  void (*body)(sqlite3_context*, int, sqlite3_value**);
  unsigned traits = 0;
  MadeWidth width = MadeWidth::Unknown;
  int since = 0;  // the server's major version that had it first

  bool is(Trait trait) const { return (traits & trait) != 0; }
};

constexpr int manyArguments = 254;  // as the server has it

// The function of this name that a query may call; null when there is none.
const Function* findFunction(std::string_view lowerName);
// The tables of all files.
std::array<std::span<const Function>, 4> allFunctions();

// One per file: a function's row stands beside its body.
std::span<const Function> textFunctions();
std::span<const Function> numberFunctions();
std::span<const Function> dateFunctions();
std::span<const Function> catalogueFunctions();

}  // namespace qrel::tsql
