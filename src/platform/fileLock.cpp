#include "platform/fileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

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

[[noreturn]] void fail(int error, const fs::path& path) {
  const bool full = error == ENOSPC || error == EDQUOT;
  throw RuntimeError(full ? errorNumber::diskFull : errorNumber::pathAccess,
                     "The folder '" + path.parent_path().string() + "' cannot be written, so that no other program " +
                         "can be kept from changing the same files: " + std::generic_category().message(error) + ".");
}

// Whether the open file is still the one of this name: its last holder removes it.
bool isStillNamed(int descriptor, const fs::path& path) {
  struct stat open {};
  struct stat named {};
  return ::fstat(descriptor, &open) == 0 && ::stat(path.c_str(), &named) == 0 && open.st_dev == named.st_dev &&
         open.st_ino == named.st_ino;
}

}  // namespace

FileLock::FileLock(fs::path path) : path_(std::move(path)) {}

FileLock::~FileLock() { unlock(); }

FileLock::FileLock(FileLock&& other) noexcept
    : path_(std::move(other.path_)), descriptor_(std::exchange(other.descriptor_, -1)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
  std::swap(path_, other.path_);
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

bool FileLock::tryLock() {
  if (locked()) return true;
  while (true) {
    int descriptor = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0 && errno == EACCES) {
      // Another user's lock: reading is enough to lock it.
      descriptor = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
      if (descriptor < 0) errno = EACCES;
    }
    if (descriptor < 0) {
      if (errno == EINTR) continue;
      fail(errno, path_);
    }
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
      const int error = errno;
      ::close(descriptor);
      if (error == EINTR) continue;
      if (error == EWOULDBLOCK) return false;
      fail(error, path_);
    }
    if (isStillNamed(descriptor, path_)) {
      descriptor_ = descriptor;
      return true;
    }
    ::close(descriptor);  // released and removed between our two calls
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
  ::unlink(path_.c_str());
  ::close(std::exchange(descriptor_, -1));
}

}  // namespace qrel
