#include "platform/store/fileChange.h"

#include <chrono>
#include <string>

#include "platform/error.h"

namespace qrel {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds longestWait(10);

// Beside what a link leads to, so that all ways to the file have one lock.
fs::path lockOf(const fs::path& file) {
  const fs::path target = files::linkTarget(file);
  return target.parent_path() / ("." + target.filename().string().substr(0, 200) + ".lock");
}

// With the lock in hand no living writer has a temporary file.
void removeTemporaries(const fs::path& file) {
  std::error_code ignored;
  for (const fs::path& each : files::temporaryFiles(files::linkTarget(file))) fs::remove(each, ignored);
}

}  // namespace

FileLock lockForChange(const fs::path& file, files::Access access) {
  if (!file.has_filename()) throw RuntimeError(errorNumber::pathAccess, "There is no file name to write to.");
  files::makeFolder(file.parent_path(), access);
  FileLock lock(lockOf(file));
  FileLock::Outcome outcome = FileLock::Outcome::TimedOut;
  try {
    outcome = lock.lock(longestWait);
  } catch (const RuntimeError& error) {
    throw RuntimeError(error.number, "'" + file.string() + "' cannot be written: " + error.description +
                                         " Make its folder writable, with space in it, and try again.");
  }
  if (outcome != FileLock::Outcome::Locked)
    throw RuntimeError(errorNumber::pathAccess, "'" + file.string() +
                                                    "' cannot be written: another program has been changing it for "
                                                    "more than ten seconds. Try again when that program is done.");
  removeTemporaries(file);
  return lock;
}

void removeLeftovers(const fs::path& file) {
  try {
    if (files::temporaryFiles(files::linkTarget(file)).empty()) return;
    FileLock lock(lockOf(file));
    if (lock.tryLock()) removeTemporaries(file);
  } catch (const RuntimeError&) {
    // They stay until somebody can remove them; nothing depends on it.
  }
}

}  // namespace qrel
