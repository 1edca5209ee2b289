// What killed runs have left: told from what a running process works on by the locks that such a process holds.
#include <set>

#include "embedded/instance/databaseFiles.h"
#include "embedded/instance/instances.h"
#include "platform/error.h"
#include "platform/system.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;

// Does `work` when nobody holds the lock. What can't be locked stays as it is.
template <class Work>
void whenFree(FileLock lock, Work&& work) {
  try {
    if (lock.tryLock()) work();
  } catch (const RuntimeError&) {
  }
}

std::vector<fs::path> entriesOf(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
    entries.push_back(it->path());
  return entries;
}

// The working copies of databases in a folder, with their journals.
void removeWorkCopies(const fs::path& folder) {
  std::error_code ignored;
  for (const fs::path& entry : entriesOf(folder)) {
    const fs::path database = databaseFileOfWorkCopy(entry);
    if (!database.empty()) whenFree(databaseLock(database), [&] { fs::remove(entry, ignored); });
  }
}

// Locks of processes that are no more: taking one and giving it back removes it.
void removeLocks(const fs::path& folder) {
  for (const fs::path& entry : entriesOf(folder)) {
    const std::string name = entry.filename().string();
    if (name.front() == '.' && name.ends_with(lockEnding)) whenFree(FileLock(entry), [] {});
  }
}

void removeInstanceRests(const fs::path& folder, const std::function<FileLock()>& serverLock) {
  std::error_code ignored;
  const std::string versions = "." + EmbeddedServers::versionFileIn("").string() + ".";
  for (const fs::path& entry : entriesOf(folder))
    if (const std::string name = entry.filename().string(); name.starts_with(versions) && name.ends_with(".tmp"))
      whenFree(serverLock(), [&] { fs::remove(entry, ignored); });
  std::set<fs::path> folders = {folder};
  // A database may be a link; its copies lie beside what it leads to.
  for (const fs::path& entry : entriesOf(folder))
    if (!databaseNameOf(entry).empty() && fs::is_symlink(entry, ignored))
      folders.insert(fs::weakly_canonical(entry, ignored).parent_path());
  for (const fs::path& each : folders) removeWorkCopies(each);
  removeLocks(folder);
}

void removeTemporaryInstances(const fs::path& parent, std::string_view prefix) {
  for (const fs::path& entry : entriesOf(parent)) {
    const std::string name = entry.filename().string();
    if (!name.starts_with(prefix) || name.find_first_not_of("0123456789", prefix.size()) != std::string::npos ||
        !system::isOwnFolder(entry))
      continue;
    whenFree(FileLock(entry / lockEnding), [&] {
      std::error_code ignored;
      fs::remove_all(entry, ignored);
    });
  }
}

}  // namespace

void EmbeddedServers::removeLeftovers() {
  std::error_code ignored;
  for (const fs::path& entry : entriesOf(root_)) {
    const std::string name = entry.filename().string();
    if (name.front() != '.') {
      if (fs::is_directory(entry, ignored)) removeInstanceRests(entry, [&] { return serverLock(name); });
    } else if (name.ends_with(loadingEnding) && name.size() > loadingEnding.size() + 1) {
      whenFree(serverLock(name.substr(1, name.size() - 1 - loadingEnding.size())),
               [&] { fs::remove_all(entry, ignored); });
    }
  }
  removeLocks(root_);
  const fs::path temporary = fs::temp_directory_path(ignored);
  if (!ignored) removeTemporaryInstances(temporary, temporaryPrefix);
}

}  // namespace qrel
