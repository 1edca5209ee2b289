// What the desktop program is started with.
#pragma once

#include <string>

namespace qrel {

// Of "--help" ("-h"), "--version" ("-v") and "--theme light|dark" the last of a kind counts. All other arguments, known
// to the program or not, are its command line with a blank between.
struct StartArguments {
  bool help = false;
  bool version = false;
  std::string theme;  // as given; empty: as the desktop is
  std::string commandLine;
};

// `arguments` begin with the program's own name.
StartArguments readStartArguments(int count, const char* const* arguments);

// Why the program can't be started with these, with what to do; empty when it can.
std::string whyNotStart(const StartArguments& arguments);

// What --help prints.
std::string startHelp();

}  // namespace qrel
