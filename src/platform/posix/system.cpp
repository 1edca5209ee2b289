#include "platform/system.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace qrel::system {

namespace {

namespace fs = std::filesystem;

constexpr mode_t writeBits = 0222;
constexpr mode_t allModeBits = 07777;
// The other bits (a program that runs as its owner) would be another user's right when the owner can't be kept.
constexpr mode_t permissionBits = 0777;

Error outcome(int result) { return result == 0 ? 0 : errno; }

FileTime fileTime(const struct timespec& time) { return {time.tv_sec, time.tv_nsec}; }

FileFacts factsOf(const struct stat& status) {
  FileFacts facts;
  facts.kind = S_ISREG(status.st_mode) ? Kind::File : S_ISDIR(status.st_mode) ? Kind::Folder : Kind::Other;
  facts.id = {status.st_dev, status.st_ino};
  facts.size = static_cast<std::uintmax_t>(status.st_size);
  facts.written = fileTime(status.st_mtim);
  facts.changed = fileTime(status.st_ctim);
  facts.rights = {status.st_uid, status.st_gid, status.st_mode & allModeBits};
  return facts;
}

int flagsFor(Open how) {
  switch (how) {
    case Open::Read:
      return O_RDONLY;
    case Open::ReadAtOnce:
      return O_RDONLY | O_NONBLOCK;
    case Open::Write:
      return O_WRONLY;
    case Open::ReadAndWrite:
      return O_RDWR;
    case Open::Append:
      return O_WRONLY | O_CREAT | O_APPEND;
    case Open::Make:
      return O_RDWR | O_CREAT;
    case Open::MakeNew:
      return O_WRONLY | O_CREAT | O_EXCL;
  }
  return O_RDONLY;
}

// A descriptor is a small number; the header has room for other systems' handles.
int descriptor(std::intptr_t number) { return static_cast<int>(number); }

Error flushDescriptor(int file) {
  while (::fsync(file) != 0)
    if (errno != EINTR) return errno;
  return 0;
}

fs::path fromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value && *value ? fs::path(value) : fs::path();
}

fs::path firstSet(const fs::path& first, const fs::path& second) { return first.empty() ? second : first; }

}  // namespace

bool isDiskFull(Error error) { return error == ENOSPC || error == EDQUOT; }

Error look(const fs::path& path, FileFacts& facts) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return errno;
  facts = factsOf(status);
  return 0;
}

bool isReadOnly(const fs::path& file, const FileRights& rights) {
  return (rights.permissions & writeBits) == 0 || ::access(file.c_str(), W_OK) != 0;
}

Error checkFolderWritable(const fs::path& folder) { return outcome(::access(folder.c_str(), W_OK | X_OK)); }

bool isOwnFolder(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid();
}

OpenFile::~OpenFile() {
  if (isOpen()) ::close(descriptor(number_));
}

OpenFile::OpenFile(OpenFile&& other) noexcept : number_(std::exchange(other.number_, none)) {}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept {
  std::swap(number_, other.number_);
  return *this;
}

Error OpenFile::open(const fs::path& path, Open how, Access access) {
  const mode_t mode = access == Access::OwnerOnly ? 0600 : 0666;
  int opened = -1;
  do {
    opened = ::open(path.c_str(), flagsFor(how) | O_CLOEXEC, mode);
  } while (opened < 0 && errno == EINTR);
  if (opened < 0) return errno;
  number_ = opened;
  return 0;
}

Error OpenFile::close() {
  if (::close(descriptor(std::exchange(number_, none))) == 0 || errno == EINTR) return 0;
  return errno;
}

Error OpenFile::openAgain(std::intptr_t number) {
  const int opened = ::fcntl(descriptor(number), F_DUPFD_CLOEXEC, 0);
  if (opened < 0) return errno;
  number_ = opened;
  return 0;
}

Error OpenFile::facts(FileFacts& facts) const {
  struct stat status {};
  if (::fstat(descriptor(number_), &status) != 0) return errno;
  facts = factsOf(status);
  return 0;
}

Error OpenFile::read(char* into, std::size_t size, std::size_t& got) {
  ssize_t count = 0;
  do {
    count = ::read(descriptor(number_), into, size);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return errno;
  got = static_cast<std::size_t>(count);
  return 0;
}

Error OpenFile::readAt(std::int64_t offset, char* into, std::size_t size, std::size_t& got) const {
  ssize_t count = 0;
  do {
    count = ::pread(descriptor(number_), into, size, offset);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return errno;
  got = static_cast<std::size_t>(count);
  return 0;
}

Error OpenFile::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor(number_), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return written == 0 ? EIO : errno;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

Error OpenFile::flush() { return flushDescriptor(descriptor(number_)); }

void OpenFile::writeBack([[maybe_unused]] std::int64_t offset, [[maybe_unused]] std::int64_t bytes) {
#ifdef SYNC_FILE_RANGE_WRITE
  ::sync_file_range(descriptor(number_), offset, bytes,
                    SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
#endif
}

Error OpenFile::takeRights(const FileRights& before) {
  const int file = descriptor(number_);
  struct stat mine {};
  if (::fstat(file, &mine) != 0) return errno;
  if ((mine.st_uid != before.owner || mine.st_gid != before.group) && ::fchown(file, before.owner, before.group) != 0 &&
      ::fchown(file, static_cast<uid_t>(-1), before.group) != 0 && errno != EPERM)
    return errno;
  return outcome(::fchmod(file, before.permissions & permissionBits));
}

Error OpenFile::lock() {
  while (::flock(descriptor(number_), LOCK_EX | LOCK_NB) != 0)
    if (errno != EINTR) return errno;
  return 0;
}

Error replaceFile(const fs::path& from, const fs::path& target) {
  return outcome(::rename(from.c_str(), target.c_str()));
}

Error flushFolder(const fs::path& folder) {
  const int file = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return 0;  // a folder may be writable and not readable
  const Error error = flushDescriptor(file);
  ::close(file);
  // Any other is a file system that doesn't flush folders.
  return error == EIO || isDiskFull(error) ? error : 0;
}

Error removeFile(const fs::path& path) { return outcome(::unlink(path.c_str())); }

Error makeFolder(const fs::path& path, Access access) {
  return outcome(::mkdir(path.c_str(), access == Access::OwnerOnly ? 0700 : 0777));
}

std::tm localTime(std::time_t time) {
  std::tm parts{};
  ::localtime_r(&time, &parts);
  return parts;
}

std::tm utcTime(std::time_t time) {
  std::tm parts{};
  ::gmtime_r(&time, &parts);
  return parts;
}

std::int64_t processId() { return ::getpid(); }

void endProcess(int exitCode) { ::_exit(exitCode); }

fs::path programFile() {
  std::error_code ignored;
  return fs::read_symlink("/proc/self/exe", ignored);
}

namespace {

// The documents folder as the desktop of a language other than English calls it: a line of a file of shell assignments,
// XDG_DOCUMENTS_DIR="$HOME/Dokumente". Empty when the file doesn't say.
fs::path documentsOfDesktop(const fs::path& settings, const fs::path& home) {
  constexpr std::string_view name = "XDG_DOCUMENTS_DIR=\"", atHome = "$HOME";
  std::ifstream file(settings / "user-dirs.dirs");
  fs::path found;
  for (std::string line; std::getline(file, line);) {
    line.erase(0, line.find_first_not_of(" \t"));
    const std::size_t end = line.rfind('"');
    if (!line.starts_with(name) || end < name.size()) continue;
    std::string value;
    for (std::size_t at = name.size(); at < end; ++at)
      if (line[at] != '\\' || ++at < end) value += line[at];
    if (value.starts_with(atHome))
      found = home / value.substr(std::min(atHome.size() + 1, value.size()));
    else if (value.starts_with('/'))
      found = value;
  }
  return found;
}

}  // namespace

UserFolders userFolders() {
  UserFolders folders;
  folders.home = firstSet(fromEnvironment("HOME"), ".");
  folders.settings = firstSet(fromEnvironment("XDG_CONFIG_HOME"), folders.home / ".config");
  folders.documents =
      firstSet(fromEnvironment("XDG_DOCUMENTS_DIR"),
               firstSet(documentsOfDesktop(folders.settings, folders.home), folders.home / "Documents"));
  folders.data = firstSet(fromEnvironment("XDG_DATA_HOME"), folders.home / ".local" / "share");
  return folders;
}

int terminalColumns() {
  winsize size{};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  const std::string columns = fromEnvironment("COLUMNS").string();
  return columns.size() < 5 ? std::atoi(columns.c_str()) : 0;
}

bool isTerminal(Stream stream) {
  const int file = stream == Stream::Input ? STDIN_FILENO : stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO;
  return ::isatty(file) != 0;
}

std::optional<std::string> readSecret(std::string_view prompt) {
  termios before{};
  if (::tcgetattr(STDIN_FILENO, &before) != 0) return std::nullopt;
  termios silent = before;
  // Ctrl+C comes as a character: the terminal has to show again what is typed before the program ends.
  constexpr char controlC = 3;
  silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
  silent.c_cc[VEOL] = controlC;  // a line's end, too: what is typed is handed over by lines
  if (::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) != 0) return std::nullopt;
  writeToErrors(prompt);
  std::optional<std::string> line = std::string();
  for (char c = 0; c != '\n';) {
    const ssize_t count = ::read(STDIN_FILENO, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count != 1 || c == controlC) {
      line.reset();
      break;
    }
    if (c != '\n') *line += c;
  }
  ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
  writeToErrors("\n");
  return line;
}

void writeToErrors(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

bool hasDisplay() {
#ifdef __linux__
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
    if (!fromEnvironment(name).empty()) return true;
  return false;
#else
  return true;
#endif
}

void preferLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  ::madvise(memory, bytes, MADV_HUGEPAGE);  // refused, the memory is as good
#endif
}

}  // namespace qrel::system
