// The console's exit codes.
#pragma once

namespace qrel {

enum class ExitCode : int {
  Identical = 0,  // also: the command did what it was asked to
  Different = 1,
  Usage = 2,       // wrong words on the command line
  CannotRead = 3,  // cannot connect, read or write
  Incomplete = 4,  // done, but something could not be read: it is listed
  Stopped = 5,
};

inline constexpr const char* exitCodeHelp =
    "Exit codes: 0 identical (or done), 1 differences, 2 wrong usage, 3 cannot connect or read,\n"
    "4 compared but incomplete (something could not be read: it is listed), 5 stopped.";

}  // namespace qrel
