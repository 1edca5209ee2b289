#include "platform/files.h"

#include <cerrno>
#include <cstdio>
#include <optional>
#include <random>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/fileFaults.h"
#include "platform/system.h"
#include "platform/text.h"

namespace qrel::files {
namespace {

namespace fs = std::filesystem;

bool needsSpace(system::Error error) { return system::isDiskFull(error) || error == EFBIG; }

// What a person can do about a failure.
std::string_view adviceFor(system::Error error, bool writing) {
  if (needsSpace(error)) return "Free some space there and try again.";
  switch (error) {
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

[[noreturn]] void fail(system::Error error, const fs::path& path, bool writing) {
  std::string text = "'" + path.string() + (writing ? "' cannot be written: " : "' cannot be read: ");
  text.append(std::generic_category().message(error)).append(". ").append(adviceFor(error, writing));
  throw RuntimeError(needsSpace(error) ? errorNumber::diskFull : errorNumber::pathAccess, std::move(text));
}

// An open file whose failures are told. `shown` is the path of its error messages.
class OpenFile {
 public:
  OpenFile(const fs::path& path, system::Open how, fs::path shown, Access access = Access::Usual)
      : shown_(std::move(shown)), writing_(how != system::Open::Read) {
    ask(Operation::Open);
    check(file_.open(path, how, access));
  }

  void write(std::string_view bytes) {
    if (bytes.empty()) return;
    ask(Operation::Write);
    check(file_.write(bytes));
  }
  // Appends what the file holds.
  void read(std::string& out, std::uintmax_t mostBytes) {
    system::FileFacts facts;
    if (file_.facts(facts) == 0 && facts.size > 0 && facts.size < mostBytes) out.reserve(facts.size + 1);
    char buffer[1 << 16];
    while (true) {
      ask(Operation::Read);
      std::size_t count = 0;
      check(file_.read(buffer, sizeof buffer, count));
      if (count == 0) return;
      out.append(buffer, count);
      if (out.size() > mostBytes)
        throw RuntimeError(errorNumber::pathAccess,
                           "'" + shown_.string() + "' cannot be read: it holds more than " +
                               std::to_string(mostBytes / 1'000'000) +
                               " MB, which no file of its kind does. Move it away and try again.");
    }
  }
  void takeRights(const system::FileRights& before) { check(file_.takeRights(before)); }
  // Flushes to the disk and closes.
  void finish() {
    ask(Operation::Flush);
    check(file_.flush());
    ask(Operation::Close);
    check(file_.close());
  }

 private:
  void ask(Operation operation) const { check(injectedFault(operation, shown_)); }
  void check(system::Error error) const {
    if (error != 0) fail(error, shown_, writing_);
  }

  fs::path shown_;
  bool writing_;
  system::OpenFile file_;
};

// Removes the temporary file unless it has taken its place.
class TemporaryFile {
 public:
  explicit TemporaryFile(fs::path path) : path_(std::move(path)) {}
  ~TemporaryFile() {
    if (!path_.empty()) system::removeFile(path_);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const fs::path& path() const { return path_; }
  void replace(const fs::path& target, const fs::path& shown) {
    if (const system::Error error = injectedFault(Operation::Rename, shown)) fail(error, shown, true);
    if (const system::Error error = system::replaceFile(path_, target)) fail(error, shown, true);
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
  if (const system::Error error = injectedFault(Operation::Flush, shown)) fail(error, shown, true);
  if (const system::Error error = system::flushFolder(folderOf(target))) fail(error, shown, true);
}

// How names of temporary files for this one begin. File names end at 255 bytes.
std::string temporaryPrefix(const fs::path& path) { return "." + path.filename().string().substr(0, 200) + "."; }
constexpr std::string_view temporaryEnding = ".tmp";
constexpr std::size_t temporaryDigits = 8;

// The file that will be replaced, which must be one that may be written; false when there is none.
bool lookAtReplaced(const fs::path& target, const fs::path& shown, system::FileFacts& facts) {
  if (const system::Error error = system::look(target, facts); error != 0) {
    if (error != ENOENT) fail(error, shown, true);
    return false;
  }
  if (facts.kind == system::Kind::Folder) fail(EISDIR, shown, true);
  if (system::isReadOnly(target, facts.rights))
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
  system::FileFacts facts;
  if (system::look(path, facts) == ENOENT) throw RuntimeError(fileNotFound, "File not found: " + path.string());
  std::string bytes;
  OpenFile(path, system::Open::Read, path).read(bytes, mostBytes);
  return bytes;
}

fs::path folderOf(const fs::path& file) { return file.has_parent_path() ? file.parent_path() : fs::path("."); }

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

void appendLine(const fs::path& path, std::string_view line) { OpenFile(path, system::Open::Append, path).write(line); }

struct AtomicFile::Parts {
  fs::path shown;
  fs::path target;
  std::optional<TemporaryFile> temporary;  // none for a device or a pipe
  std::optional<OpenFile> file;
};

AtomicFile::AtomicFile(const fs::path& path, Access access) : parts_(std::make_unique<Parts>()) {
  parts_->shown = path;
  parts_->target = linkTarget(path);
  system::FileFacts before;
  const bool replaces = lookAtReplaced(parts_->target, path, before);
  if (replaces && before.kind != system::Kind::File) {
    parts_->file.emplace(parts_->target, system::Open::Write, path);
    return;
  }
  // The place of a file is taken with its permissions, which may be narrower than those of a new one.
  const Access first = replaces ? Access::OwnerOnly : access;
  const TemporaryFile& temporary = parts_->temporary.emplace(temporaryName(parts_->target));
  parts_->file.emplace(temporary.path(), system::Open::MakeNew, path, first);
  if (replaces) parts_->file->takeRights(before.rights);
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

system::Error putInPlace(const fs::path& from, const fs::path& target) {
  system::OpenFile file;
  if (const system::Error error = file.open(from, system::Open::Read)) return error;
  system::Error error = file.flush();
  file.close();
  if (error == 0) error = system::replaceFile(from, target);
  if (error == 0) system::flushFolder(folderOf(target));
  return error;
}

void removeFile(const fs::path& path) {
  if (const system::Error error = injectedFault(Operation::Remove, path)) fail(error, path, true);
  if (const system::Error error = system::removeFile(path); error != 0 && error != ENOENT) fail(error, path, true);
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
  files::makeFolder(path.parent_path(), access);
  if (const system::Error error = injectedFault(Operation::MakeFolder, path)) fail(error, path, true);
  const system::Error failure = system::makeFolder(path, access);
  if (failure == 0) return;
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
