// Runs the console program in this process.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "console/commands.h"

namespace qrel {

struct QrelRun {
  int code = 0;
  std::string out, err;
};

inline QrelRun runQrel(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "qrel");
  std::vector<const char*> pointers;
  for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
  std::ostringstream out, err;
  const int code = runConsole(static_cast<int>(pointers.size()), pointers.data(), out, err);
  return {code, out.str(), err.str()};
}

}  // namespace qrel
