#include "platform/fileReplacement.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace qrel::files {

namespace fs = std::filesystem;

namespace {

constexpr mode_t writeBits = 0222;
// The other bits (a program that runs as its owner) would be another user's right when the owner can't be kept.
constexpr mode_t permissionBits = 0777;

}  // namespace

fs::path folderOf(const fs::path& file) { return file.has_parent_path() ? file.parent_path() : fs::path("."); }

bool isReadOnly(const fs::path& file, const struct stat& facts) {
  return (facts.st_mode & writeBits) == 0 || ::access(file.c_str(), W_OK) != 0;
}

int takeAfter(int descriptor, const struct stat& before) {
  struct stat mine {};
  if (::fstat(descriptor, &mine) != 0) return errno;
  if ((mine.st_uid != before.st_uid || mine.st_gid != before.st_gid) &&
      ::fchown(descriptor, before.st_uid, before.st_gid) != 0 &&
      ::fchown(descriptor, static_cast<uid_t>(-1), before.st_gid) != 0 && errno != EPERM)
    return errno;
  return ::fchmod(descriptor, before.st_mode & permissionBits) == 0 ? 0 : errno;
}

int flush(int descriptor) {
  while (::fsync(descriptor) != 0)
    if (errno != EINTR) return errno;
  return 0;
}

int renameInto(const fs::path& from, const fs::path& target) {
  return ::rename(from.c_str(), target.c_str()) == 0 ? 0 : errno;
}

int flushFolder(const fs::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return 0;  // a folder may be writable and not readable
  const int error = flush(descriptor);
  ::close(descriptor);
  // Any other is a file system that doesn't flush folders.
  return error == EIO || error == ENOSPC || error == EDQUOT ? error : 0;
}

int putInPlace(const fs::path& from, const fs::path& target) {
  const int descriptor = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return errno;
  int error = flush(descriptor);
  ::close(descriptor);
  if (error == 0) error = renameInto(from, target);
  if (error == 0) flushFolder(folderOf(target));
  return error;
}

}  // namespace qrel::files
