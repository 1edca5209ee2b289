#include "platform/fileLock.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/error.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds betweenTries(20);

[[noreturn]] void fail(system::Error error, const fs::path& path) {
  throw RuntimeError(system::isDiskFull(error) ? errorNumber::diskFull : errorNumber::pathAccess,
                     "The folder '" + path.parent_path().string() + "' cannot be written, so that no other program " +
                         "can be kept from changing the same files: " + std::generic_category().message(error) + ".");
}

// Whether the open file is still the one of this name: its last holder removes it.
bool isStillNamed(const system::OpenFile& file, const fs::path& path) {
  system::FileFacts open;
  system::FileFacts named;
  return file.facts(open) == 0 && system::look(path, named) == 0 && open.id == named.id;
}

}  // namespace

FileLock::FileLock(fs::path path) : path_(std::move(path)) {}

FileLock::~FileLock() { unlock(); }

FileLock::FileLock(FileLock&& other) noexcept = default;

FileLock& FileLock::operator=(FileLock&& other) noexcept {
  std::swap(path_, other.path_);
  std::swap(file_, other.file_);
  return *this;
}

bool FileLock::tryLock() {
  if (locked()) return true;
  while (true) {
    system::OpenFile file;
    system::Error error = file.open(path_, system::Open::Make);
    // Another user's lock: reading is enough to lock it.
    if (error == EACCES && file.open(path_, system::Open::Read) == 0) error = 0;
    if (error != 0) fail(error, path_);
    error = file.lock();
    if (error == EWOULDBLOCK) return false;
    if (error != 0) fail(error, path_);
    if (isStillNamed(file, path_)) {
      file_ = std::move(file);
      return true;
    }
    // Released and removed between our two calls.
  }
}

FileLock::Outcome FileLock::lock(std::chrono::milliseconds timeOut, const std::function<bool()>& stopAsked) {
  const auto end = std::chrono::steady_clock::now() + timeOut;
  while (!tryLock()) {
    if (stopAsked && stopAsked()) return Outcome::Stopped;
    const auto left = end - std::chrono::steady_clock::now();
    if (left <= left.zero()) return Outcome::TimedOut;
    std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(left, betweenTries));
  }
  return Outcome::Locked;
}

void FileLock::unlock() {
  if (!locked()) return;
  // Removed before it is released, so that nobody can hold the lock on a file whose name is about to go.
  system::removeFile(path_);
  file_.close();
}

}  // namespace qrel
