#include "embedded/load/workCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "embedded/catalogue/catalogue.h"
#include "embedded/instance/databaseFiles.h"
#include "embedded/sqlite/sqlite.h"
#include "platform/error.h"
#include "platform/fileReplacement.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;

constexpr int pagesPerStep = 256;
constexpr off_t bytesPerFlush = 8 << 20;
constexpr int mostBusySteps = 2;  // each waits some seconds itself

[[noreturn]] void fail(int error, const fs::path& path, const std::string& what) {
  const bool full = error == ENOSPC || error == EDQUOT;
  throw RuntimeError(full ? errorNumber::diskFull : errorNumber::pathAccess,
                     "'" + path.string() + "' " + what + ": " + std::generic_category().message(error) + ".");
}

void removeFiles(const fs::path& path) {
  std::error_code ignored;
  fs::remove(path, ignored);
  fs::remove(path.string() + "-journal", ignored);
}

// Copies of runs that are no more: whoever made them doesn't hold the lock any longer.
void removeOthers(const fs::path& target) {
  const std::string own = workCopyOf(target).filename().string();
  const std::string prefix = own.substr(0, own.rfind('-') + 1);
  std::error_code ignored;
  std::vector<fs::path> gone;
  for (fs::directory_iterator it(target.parent_path(), ignored), end; !ignored && it != end; it.increment(ignored))
    if (it->path().filename().string().starts_with(prefix)) gone.push_back(it->path());
  for (const fs::path& path : gone) fs::remove(path, ignored);
}

// Refuses what a rename would replace although it is not to be written.
void checkWritable(const fs::path& target) {
  struct stat facts {};
  if (::stat(target.c_str(), &facts) != 0) {
    if (errno != ENOENT) fail(errno, target, "cannot be read");
    return;
  }
  if (!S_ISREG(facts.st_mode))
    throw RuntimeError(errorNumber::pathAccess, "'" + target.string() + "' is no file that a database could be in.");
  if (files::isReadOnly(target, facts))
    throw RuntimeError(errorNumber::pathAccess, "The database file '" + target.string() +
                                                    "' is read-only. Nothing was changed; make it writable to load "
                                                    "into it.");
}

}  // namespace

WorkCopy::WorkCopy(fs::path target, UnfinishedWork& unfinished)
    : target_(std::move(target)), path_(workCopyOf(target_)), unfinished_(unfinished) {
  checkWritable(target_);
  removeOthers(target_);
  unfinished_.add(path_);
  unfinished_.add(path_.string() + "-journal");
  const int file = ::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file >= 0) {
    ::close(file);
    return;
  }
  const int reason = errno;
  forget();
  fail(reason, target_.parent_path(), "cannot be written, and a load needs a file of its own in that folder");
}

WorkCopy::~WorkCopy() {
  removeFiles(path_);
  forget();
}

void WorkCopy::forget() {
  unfinished_.forget(path_);
  unfinished_.forget(path_.string() + "-journal");
}

bool WorkCopy::fill(bool keepOld, const std::function<bool()>& stop) {
  std::error_code error;
  if (keepOld && fs::exists(target_, error)) return copyOld(stop);
  sqlite::Database fresh(path_, sqlite::OpenMode::Create);
  fresh.execute("pragma synchronous = off");
  tsql::Catalogue::createStorage(fresh);
  return true;
}

bool WorkCopy::copyOld(const std::function<bool()>& stop) const {
  sqlite::Database from(target_, sqlite::OpenMode::ReadOnly);
  sqlite::Database into(path_, sqlite::OpenMode::Create);
  into.execute("pragma synchronous = off");
  sqlite3_backup* backup = sqlite3_backup_init(into.get(), "main", from.get(), "main");
  if (!backup) into.fail(sqlite3_errcode(into.get()), "");
  int code = SQLITE_OK;
  bool stopped = false;
  for (int busy = 0; code == SQLITE_OK && !stopped;) {
    stopped = stop && stop();
    if (!stopped) code = sqlite3_backup_step(backup, pagesPerStep);
    if ((code == SQLITE_BUSY || code == SQLITE_LOCKED) && ++busy < mostBusySteps) code = SQLITE_OK;
  }
  const int finished = sqlite3_backup_finish(backup);
  if (stopped) return false;
  if (finished != SQLITE_OK) into.fail(finished, "");
  if (code != SQLITE_DONE) from.fail(code, "");
  return true;
}

bool WorkCopy::prepare(const std::function<bool()>& stop) {
  const int file = ::open(path_.c_str(), O_RDWR | O_CLOEXEC);
  if (file < 0) fail(errno, target_, "cannot be written");
  struct stat old {};
  struct stat size {};
  int error = ::fstat(file, &size) == 0 ? 0 : errno;
  bool stopped = false;
  // Piece by piece, so that a stop needn't wait for all of it.
  for (off_t at = 0; error == 0 && !stopped && at < size.st_size; at += bytesPerFlush) {
    stopped = stop && stop();
#ifdef SYNC_FILE_RANGE_WRITE
    if (!stopped)
      ::sync_file_range(file, at, bytesPerFlush,
                        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
#endif
  }
  if (error == 0 && !stopped && ::stat(target_.c_str(), &old) == 0) error = files::takeAfter(file, old);
  if (error == 0 && !stopped) error = files::flush(file);
  ::close(file);
  if (error != 0) fail(error, target_, "cannot be written");
  return !stopped;
}

void WorkCopy::takePlace() {
  // What a program left behind that was ended in the middle of a change: it belongs to the file that goes.
  if (::unlink((target_.string() + "-journal").c_str()) != 0 && errno != ENOENT)
    fail(errno, target_, "cannot be replaced");
  if (const int error = files::renameInto(path_, target_)) fail(error, target_, "cannot be replaced");
  // From here on the database is the new one: that a power failure might undo it is no reason to call it failed.
  files::flushFolder(target_.parent_path());
}

}  // namespace qrel
