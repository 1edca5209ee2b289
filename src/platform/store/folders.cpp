#include "platform/store/folders.h"

#include <cstdlib>
#include <string>

#include "platform/system.h"

namespace qrel {

namespace fs = std::filesystem;

namespace {

fs::path fromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value && *value ? fs::path(value) : fs::path();
}

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
  const fs::path running = system::programFile();
  folders.program = (running.empty() ? fs::absolute(programFile, ignored) : running).parent_path();
  const system::UserFolders user = system::userFolders();
  folders.documents = fs::is_directory(user.documents, ignored) ? user.documents : user.home;
  folders.settings = user.settings / "qrel" / "settings.txt";
  folders.servers = user.data / "qrel" / "servers";
  return folders;
}

}  // namespace qrel
