#include "embedded/load/workCopy.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "embedded/catalogue/catalogue.h"
#include "embedded/instance/databaseFiles.h"
#include "embedded/sqlite/sqlite.h"
#include "platform/error.h"
#include "platform/system.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;

constexpr int pagesPerStep = 256;
constexpr std::int64_t bytesPerFlush = 8 << 20;
constexpr int mostBusySteps = 2;  // each waits some seconds itself

[[noreturn]] void fail(system::Error error, const fs::path& path, const std::string& what) {
  throw RuntimeError(system::isDiskFull(error) ? errorNumber::diskFull : errorNumber::pathAccess,
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
  system::FileFacts facts;
  if (const system::Error error = system::look(target, facts); error != 0) {
    if (error != ENOENT) fail(error, target, "cannot be read");
    return;
  }
  if (facts.kind != system::Kind::File)
    throw RuntimeError(errorNumber::pathAccess, "'" + target.string() + "' is no file that a database could be in.");
  if (system::isReadOnly(target, facts.rights))
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
  const system::Error reason = system::OpenFile().open(path_, system::Open::MakeNew);
  if (reason == 0) return;
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
  const auto check = [this](system::Error error) {
    if (error != 0) fail(error, target_, "cannot be written");
  };
  system::OpenFile file;
  check(file.open(path_, system::Open::ReadAndWrite));
  system::FileFacts own;
  check(file.facts(own));
  // Piece by piece, so that a stop needn't wait for all of it.
  for (std::int64_t at = 0; std::cmp_less(at, own.size); at += bytesPerFlush) {
    if (stop && stop()) return false;
    file.writeBack(at, bytesPerFlush);
  }
  system::FileFacts old;
  if (system::look(target_, old) == 0) check(file.takeRights(old.rights));
  check(file.flush());
  return true;
}

void WorkCopy::takePlace() {
  // What a program left behind that was ended in the middle of a change: it belongs to the file that goes.
  if (const system::Error error = system::removeFile(target_.string() + "-journal"); error != 0 && error != ENOENT)
    fail(error, target_, "cannot be replaced");
  if (const system::Error error = system::replaceFile(path_, target_)) fail(error, target_, "cannot be replaced");
  // From here on the database is the new one: that a power failure might undo it is no reason to call it failed.
  system::flushFolder(target_.parent_path());
}

}  // namespace qrel
