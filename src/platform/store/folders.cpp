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

fs::path findHelp(const fs::path& programFolder) {
  constexpr int deepestBuildFolder = 5;  // of a program below the source tree: build/dev/src/desktop
  std::error_code ignored;
  if (fs::path installed = programFolder.parent_path() / "share" / "quorrel" / "help";
      fs::is_directory(installed, ignored))
    return installed;
  fs::path around = programFolder;
  for (int depth = 0; depth < deepestBuildFolder && !around.empty(); ++depth, around = around.parent_path())
    if (fs::path help = around / "docs" / "help"; fs::is_directory(help, ignored)) return help;
  return {};
}

Folders findFolders(const fs::path& programFile) {
  std::error_code ignored;
  Folders folders;
  const fs::path running = system::programFile();
  const fs::path programFolder = (running.empty() ? fs::absolute(programFile, ignored) : running).parent_path();
  folders.installed = programFolder;
  folders.help = findHelp(programFolder);
  if (const fs::path home = fromEnvironment("QREL_HOME"); !home.empty()) {
    const fs::path root = fs::absolute(home, ignored);
    folders.program = folders.documents = root;
    folders.settings = root / "settings.txt";
    folders.servers = root / "servers";
    return folders;
  }
  folders.program = programFolder;
  const system::UserFolders user = system::userFolders();
  folders.documents = fs::is_directory(user.documents, ignored) ? user.documents : user.home;
  folders.settings = user.settings / "qrel" / "settings.txt";
  folders.servers = user.data / "qrel" / "servers";
  return folders;
}

}  // namespace qrel
