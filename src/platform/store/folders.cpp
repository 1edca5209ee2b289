#include "platform/store/folders.h"

#include <cstdlib>
#include <string>

namespace qrel {

namespace fs = std::filesystem;

namespace {

fs::path fromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value && *value ? fs::path(value) : fs::path();
}

fs::path firstSet(const fs::path& first, const fs::path& second) { return first.empty() ? second : first; }

}  // namespace

Folders findFolders(const fs::path& programFile) {
  std::error_code ignored;
  Folders folders;
  if (const fs::path home = fromEnvironment("QREL_HOME"); !home.empty()) {
    const fs::path root = fs::absolute(home, ignored);
    folders.program = folders.documents = root;
    folders.settings = root / "settings.txt";
    folders.servers = root / "servers";
    return folders;
  }
  const fs::path user = firstSet(fromEnvironment("HOME"), ".");
  const fs::path linked = fs::read_symlink("/proc/self/exe", ignored);
  folders.program = (linked.empty() ? fs::absolute(programFile, ignored) : linked).parent_path();
  folders.documents = firstSet(fromEnvironment("XDG_DOCUMENTS_DIR"), user / "Documents");
  if (!fs::is_directory(folders.documents, ignored)) folders.documents = user;
  folders.settings = firstSet(fromEnvironment("XDG_CONFIG_HOME"), user / ".config") / "qrel" / "settings.txt";
  folders.servers = firstSet(fromEnvironment("XDG_DATA_HOME"), user / ".local" / "share") / "qrel" / "servers";
  return folders;
}

}  // namespace qrel
