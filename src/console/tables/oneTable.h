// What the commands over the records of one table have in common.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "console/commands.h"

namespace qrel {

// The table that a command is for.
struct ChosenTable {
  std::string database;
  std::string name;      // without its schema
  std::string extended;  // as it stands in SQL
  long id = 0;
  bool incomplete = false;  // made from a script of which statements were skipped or refused
};

// Selects it on side 0. Throws CommandFailure when there is none of that name, or several.
ChosenTable chooseTable(Console& console, const TableArguments& arguments);

// A window over the table as a command works with it.
struct TableRun {
  std::function<std::int32_t()> open;      // shows it and waits; the number of records, -1: couldn't be read
  std::function<void(Form& form)> act;     // what is done in it
  std::function<std::string()> where;      // how far it is, in words
  std::function<void(bool stopped)> look;  // at each yield; a signal has asked for a stop
  std::function<void()> print;             // what came out
};
// Throws CommandFailure when a signal stopped it and where the table can't be read. An empty table prints nothing: that
// is told.
ExitCode runTable(Console& console, const ChosenTable& table, const TableRun& run);

}  // namespace qrel
