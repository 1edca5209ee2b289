// Saved processes on the console: finding one, and saving what a command has compared.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "console/console.h"
#include "process/modSavedProcess.h"

namespace qrel {

// All names in the order of the file.
std::vector<std::string> savedProcessNames(Console& console);
// The name of the process called so (as it is written, else without regard to case) or, failing that, with this id.
// Throws CommandFailure when there is none.
std::string findSavedProcess(Console& console, const std::string& nameOrId);

// What --save asks for.
struct SaveArguments {
  std::string name;  // empty: nothing is saved
  bool replace = false;
  bool print = false;
  bool autoClose = false;
  bool given() const { return !name.empty(); }
};

// Throws CommandFailure when the comparison can't be saved under this name, or not between these sides: before anything
// is compared.
void checkSave(Console& console, const SaveArguments& arguments, const std::string& source, const std::string& target);
// Fills in servers, databases and what the arguments say, and saves. Throws CommandFailure when that fails.
void saveProcess(Console& console, const SaveArguments& arguments, const std::array<const Side*, 2>& sides,
                 tSavedProcess process);
// As it is stored: from any folder.
std::string absolutePath(const std::string& file);

}  // namespace qrel
