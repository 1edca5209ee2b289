// Where settings, profile files and embedded servers lie.
#pragma once

#include <filesystem>

namespace qrel {

struct Folders {
  std::filesystem::path program;    // trace and tips
  std::filesystem::path documents;  // profile files
  std::filesystem::path settings;   // the settings' file
  std::filesystem::path servers;    // the embedded server's instances
};

// With QREL_HOME set everything lies under that folder; otherwise settings in the desktop's configuration folder,
// embedded servers in its data folder, and profile files in the user's documents folder. `programFile` is argv[0]'s
// path.
Folders findFolders(const std::filesystem::path& programFile);

}  // namespace qrel
