#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/text.h"

namespace qrel::files {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(int error, const fs::path& path) {
  const std::string reason = std::generic_category().message(error);
  if (error == ENOSPC || error == EDQUOT || error == EFBIG) {
    throw RuntimeError(errorNumber::diskFull, "Disk full: " + path.string() + " (" + reason + ")");
  }
  throw RuntimeError(errorNumber::pathAccess, "Path/File access error: " + path.string() + " (" + reason + ")");
}

// An open file that is closed at the end of its scope. `shown` is the path of its error messages.
class OpenFile {
 public:
  OpenFile(const fs::path& path, int flags, mode_t mode, fs::path shown)
      : shown_(std::move(shown)), descriptor_(::open(path.c_str(), flags | O_CLOEXEC, mode)) {
    if (descriptor_ < 0) fail(errno, shown_);
  }
  ~OpenFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  void write(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) fail(errno, shown_);
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
  }
  // Appends what the file holds.
  void read(std::string& out) {
    struct stat facts {};
    if (::fstat(descriptor_, &facts) == 0 && facts.st_size > 0)
      out.reserve(static_cast<std::size_t>(facts.st_size) + 1);
    char buffer[1 << 16];
    while (true) {
      const ssize_t count = ::read(descriptor_, buffer, sizeof buffer);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) fail(errno, shown_);
      if (count == 0) return;
      out.append(buffer, static_cast<std::size_t>(count));
    }
  }
  void setMode(mode_t mode) {
    if (::fchmod(descriptor_, mode) != 0) fail(errno, shown_);
  }
  // Flushes to the disk and closes.
  void finish() {
    if (::fsync(descriptor_) != 0) fail(errno, shown_);
    if (::close(std::exchange(descriptor_, -1)) != 0) fail(errno, shown_);
  }

 private:
  fs::path shown_;
  int descriptor_;
};

// Removes the temporary file unless it has taken its place.
class TemporaryFile {
 public:
  explicit TemporaryFile(fs::path path) : path_(std::move(path)) {}
  ~TemporaryFile() {
    if (!path_.empty()) ::unlink(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const fs::path& path() const { return path_; }
  void replace(const fs::path& target, const fs::path& shown) {
    if (::rename(path_.c_str(), target.c_str()) != 0) fail(errno, shown);
    path_.clear();
  }

 private:
  fs::path path_;
};

bool isTaken(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(path, ignored));
}

fs::path folderOf(const fs::path& path) { return path.has_parent_path() ? path.parent_path() : fs::path("."); }

// Makes sure that a rename outlasts a power failure, where the file system can do that.
void flushFolder(const fs::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

}  // namespace

bool exists(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(path, ignored) && !fs::is_directory(path, ignored);
}

std::string readWholeFile(const fs::path& path) {
  struct stat facts {};
  if (::stat(path.c_str(), &facts) != 0 && errno == ENOENT) {
    throw RuntimeError(fileNotFound, "File not found: " + path.string());
  }
  std::string bytes;
  OpenFile(path, O_RDONLY, 0, path).read(bytes);
  return bytes;
}

void appendLine(const fs::path& path, std::string_view line) {
  OpenFile(path, O_WRONLY | O_CREAT | O_APPEND, 0666, path).write(line);
}

void writeAtomically(const fs::path& path, std::string_view bytes, Access access) {
  std::error_code error;
  const fs::path target = fs::is_symlink(path, error) ? fs::weakly_canonical(path) : path;
  struct stat before {};
  const bool replaces = ::stat(target.c_str(), &before) == 0;
  if (replaces && S_ISDIR(before.st_mode)) fail(EISDIR, path);
  const mode_t mode = access == Access::OwnerOnly ? 0600 : 0666;
  TemporaryFile temporary(temporaryName(target));
  OpenFile file(temporary.path(), O_WRONLY | O_CREAT | O_EXCL, mode, path);
  if (replaces && access == Access::Usual) file.setMode(before.st_mode & 0777);
  file.write(bytes);
  file.finish();
  temporary.replace(target, path);
  flushFolder(folderOf(target));
}

void removeFile(const fs::path& path) {
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) fail(errno, path);
}

void removeFilesEndingWith(const fs::path& folder, std::string_view ending) {
  const std::string wanted = lowerCase(ending);
  std::error_code ignored;
  std::vector<fs::path> found;
  fs::directory_iterator entry(folder, ignored);
  for (const fs::directory_iterator end; entry != end; entry.increment(ignored)) {
    const std::string name = lowerCase(entry->path().filename().string());
    if (name.ends_with(wanted) && name.front() != '.' && !entry->is_directory(ignored)) found.push_back(entry->path());
  }
  for (const fs::path& path : found) fs::remove(path, ignored);
}

void makeFolder(const fs::path& path, Access access) {
  std::error_code ignored;
  if (path.empty() || fs::is_directory(path, ignored)) return;
  makeFolder(path.parent_path(), access);
  const mode_t mode = access == Access::OwnerOnly ? 0700 : 0777;
  if (::mkdir(path.c_str(), mode) != 0 && errno != EEXIST) fail(errno, path);
}

fs::path temporaryName(const fs::path& path) {
  std::random_device random;
  fs::path name;
  do {
    char digits[20];
    std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(random()));
    // File names end at 255 bytes.
    name = folderOf(path) / ("." + path.filename().string().substr(0, 200) + "." + digits + ".tmp");
  } while (isTaken(name));
  return name;
}

}  // namespace qrel::files
