#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>
#include <random>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/fileFaults.h"
#include "platform/fileReplacement.h"
#include "platform/text.h"

namespace qrel::files {
namespace {

namespace fs = std::filesystem;

// What a person can do about a failure.
std::string_view adviceFor(int error, bool writing) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return "Free some space there and try again.";
    case EACCES:
    case EPERM:
    case EROFS:
      return writing ? "Make the file and its folder writable and try again." : "Make it readable and try again.";
    case EISDIR:
    case ENOTDIR:
    case ELOOP:
      return "Move away what stands in its place and try again.";
    case ENOENT:
    case ENAMETOOLONG:
      return "Choose a folder that is there and a name that it can hold.";
    default:
      return "Check the disk and try again.";
  }
}

[[noreturn]] void fail(int error, const fs::path& path, bool writing) {
  const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
  std::string text = "'" + path.string() + (writing ? "' cannot be written: " : "' cannot be read: ");
  text.append(std::generic_category().message(error)).append(". ").append(adviceFor(error, writing));
  throw RuntimeError(full ? errorNumber::diskFull : errorNumber::pathAccess, std::move(text));
}

// An open file that is closed at the end of its scope. `shown` is the path of its error messages.
class OpenFile {
 public:
  OpenFile(const fs::path& path, int flags, mode_t mode, fs::path shown)
      : shown_(std::move(shown)), writing_((flags & O_ACCMODE) != O_RDONLY) {
    ask(Operation::Open);
    do {
      descriptor_ = ::open(path.c_str(), flags | O_CLOEXEC, mode);
    } while (descriptor_ < 0 && errno == EINTR);
    if (descriptor_ < 0) fail(errno, shown_, writing_);
  }
  ~OpenFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  void write(std::string_view bytes) {
    while (!bytes.empty()) {
      ask(Operation::Write);
      const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) fail(written == 0 ? EIO : errno, shown_, true);
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
  }
  // Appends what the file holds.
  void read(std::string& out, std::uintmax_t mostBytes) {
    struct stat facts {};
    if (::fstat(descriptor_, &facts) == 0 && facts.st_size > 0 &&
        static_cast<std::uintmax_t>(facts.st_size) < mostBytes)
      out.reserve(static_cast<std::size_t>(facts.st_size) + 1);
    char buffer[1 << 16];
    while (true) {
      ask(Operation::Read);
      const ssize_t count = ::read(descriptor_, buffer, sizeof buffer);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) fail(errno, shown_, false);
      if (count == 0) return;
      out.append(buffer, static_cast<std::size_t>(count));
      if (out.size() > mostBytes)
        throw RuntimeError(errorNumber::pathAccess,
                           "'" + shown_.string() + "' cannot be read: it holds more than " +
                               std::to_string(mostBytes / 1'000'000) +
                               " MB, which no file of its kind does. Move it away and try again.");
    }
  }
  void takeAfter(const struct stat& before) {
    if (const int error = files::takeAfter(descriptor_, before)) fail(error, shown_, true);
  }
  // Flushes to the disk and closes.
  void finish() {
    ask(Operation::Flush);
    if (const int error = flush(descriptor_)) fail(error, shown_, true);
    ask(Operation::Close);
    if (::close(std::exchange(descriptor_, -1)) != 0 && errno != EINTR) fail(errno, shown_, true);
  }

 private:
  void ask(Operation operation) const {
    if (const int error = injectedFault(operation, shown_)) fail(error, shown_, writing_);
  }

  fs::path shown_;
  bool writing_;
  int descriptor_ = -1;
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
    if (const int error = injectedFault(Operation::Rename, shown)) fail(error, shown, true);
    if (const int error = renameInto(path_, target)) fail(error, shown, true);
    path_.clear();
  }

 private:
  fs::path path_;
};

bool isTaken(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(path, ignored));
}

void flushFolderOf(const fs::path& target, const fs::path& shown) {
  if (const int error = injectedFault(Operation::Flush, shown)) fail(error, shown, true);
  if (const int error = flushFolder(folderOf(target))) fail(error, shown, true);
}

// How names of temporary files for this one begin. File names end at 255 bytes.
std::string temporaryPrefix(const fs::path& path) { return "." + path.filename().string().substr(0, 200) + "."; }
constexpr std::string_view temporaryEnding = ".tmp";
constexpr std::size_t temporaryDigits = 8;

// The file that will be replaced, which must be one that may be written; false when there is none.
bool lookAtReplaced(const fs::path& target, const fs::path& shown, struct stat& facts) {
  if (::stat(target.c_str(), &facts) != 0) {
    if (errno != ENOENT) fail(errno, shown, true);
    return false;
  }
  if (S_ISDIR(facts.st_mode)) fail(EISDIR, shown, true);
  if (isReadOnly(target, facts))
    throw RuntimeError(errorNumber::pathAccess,
                       "'" + shown.string() + "' cannot be written: it is read-only. Make it writable and try again.");
  return true;
}

}  // namespace

bool exists(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(path, ignored) && !fs::is_directory(path, ignored);
}

std::string readWholeFile(const fs::path& path, std::uintmax_t mostBytes) {
  struct stat facts {};
  if (::stat(path.c_str(), &facts) != 0 && errno == ENOENT) {
    throw RuntimeError(fileNotFound, "File not found: " + path.string());
  }
  std::string bytes;
  OpenFile(path, O_RDONLY, 0, path).read(bytes, mostBytes);
  return bytes;
}

fs::path linkTarget(const fs::path& path) {
  constexpr int mostLinks = 40;
  std::error_code error;
  fs::path target = path;
  for (int links = 0; fs::is_symlink(target, error); ++links) {
    if (links == mostLinks) fail(ELOOP, path, true);
    const fs::path next = fs::read_symlink(target, error);
    if (error) fail(error.value(), path, true);
    target = next.is_absolute() ? next : folderOf(target) / next;
  }
  return target;
}

void appendLine(const fs::path& path, std::string_view line) {
  OpenFile(path, O_WRONLY | O_CREAT | O_APPEND, 0666, path).write(line);
}

struct AtomicFile::Parts {
  fs::path shown;
  fs::path target;
  std::optional<TemporaryFile> temporary;  // none for a device or a pipe
  std::optional<OpenFile> file;
};

AtomicFile::AtomicFile(const fs::path& path, Access access) : parts_(std::make_unique<Parts>()) {
  parts_->shown = path;
  parts_->target = linkTarget(path);
  struct stat before {};
  const bool replaces = lookAtReplaced(parts_->target, path, before);
  if (replaces && !S_ISREG(before.st_mode)) {
    parts_->file.emplace(parts_->target, O_WRONLY, 0, path);
    return;
  }
  // The place of a file is taken with its permissions, which may be narrower than those of a new one.
  const mode_t mode = replaces || access == Access::OwnerOnly ? 0600 : 0666;
  const TemporaryFile& temporary = parts_->temporary.emplace(temporaryName(parts_->target));
  parts_->file.emplace(temporary.path(), O_WRONLY | O_CREAT | O_EXCL, mode, path);
  if (replaces) parts_->file->takeAfter(before);
}

AtomicFile::~AtomicFile() = default;

void AtomicFile::write(std::string_view bytes) {
  constexpr std::size_t mostGathered = 1 << 16;
  if (gathered_.size() + bytes.size() > mostGathered) writeGathered();
  if (bytes.size() > mostGathered)
    parts_->file->write(bytes);
  else
    gathered_ += bytes;
}

void AtomicFile::writeGathered() {
  parts_->file->write(gathered_);
  gathered_.clear();
}

void AtomicFile::finish() {
  writeGathered();
  if (parts_->temporary) {
    parts_->file->finish();
    parts_->temporary->replace(parts_->target, parts_->shown);
    flushFolderOf(parts_->target, parts_->shown);
  }
  parts_.reset();
}

void writeAtomically(const fs::path& path, std::string_view bytes, Access access) {
  AtomicFile file(path, access);
  file.write(bytes);
  file.finish();
}

void removeFile(const fs::path& path) {
  if (const int error = injectedFault(Operation::Remove, path)) fail(error, path, true);
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) fail(errno, path, true);
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
  if (const int error = injectedFault(Operation::MakeFolder, path)) fail(error, path, true);
  if (::mkdir(path.c_str(), mode) == 0) return;
  const int failure = errno;
  // EEXIST may be a file or a link to nowhere.
  if (failure != EEXIST || !fs::is_directory(path, ignored)) fail(failure == EEXIST ? ENOTDIR : failure, path, true);
}

fs::path temporaryName(const fs::path& path) {
  std::random_device random;
  fs::path name;
  do {
    char digits[20];
    std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(random()));
    name = folderOf(path) / (temporaryPrefix(path) + digits).append(temporaryEnding);
  } while (isTaken(name));
  return name;
}

std::vector<fs::path> temporaryFiles(const fs::path& path) {
  const std::string prefix = temporaryPrefix(path);
  std::vector<fs::path> found;
  std::error_code ignored;
  fs::directory_iterator entry(folderOf(path), ignored);
  for (const fs::directory_iterator end; entry != end; entry.increment(ignored)) {
    const std::string name = entry->path().filename().string();
    if (name.size() != prefix.size() + temporaryDigits + temporaryEnding.size()) continue;
    if (name.starts_with(prefix) && name.ends_with(temporaryEnding)) found.push_back(entry->path());
  }
  return found;
}

}  // namespace qrel::files
