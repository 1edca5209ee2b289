// Where settings, profile files and embedded servers lie.
#pragma once

#include <filesystem>

namespace qrel {

struct Folders {
  std::filesystem::path program;    // trace and tips
  std::filesystem::path installed;  // of the program file, whatever QREL_HOME says
  std::filesystem::path documents;  // profile files
  std::filesystem::path settings;   // the settings' file
  std::filesystem::path servers;    // the embedded server's instances
  std::filesystem::path help;       // the topics of the help; empty when they aren't installed
};

// With QREL_HOME set everything lies under that folder; otherwise settings in the desktop's configuration folder,
// embedded servers in its data folder, and profile files in the user's documents folder. `programFile` is argv[0]'s
// path.
Folders findFolders(const std::filesystem::path& programFile);
// The help of a program in that folder: installed beside it (../share/quorrel/help), else in the source tree around it
// (docs/help). Empty when there is none.
std::filesystem::path findHelp(const std::filesystem::path& programFolder);

}  // namespace qrel
