#include "embedded/sqlite/keptFile.h"

#include <sqlite3.h>

#include <utility>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>
#endif

namespace qrel::sqlite {

#ifdef _WIN32

KeptFile::KeptFile(const std::filesystem::path&) {}
KeptFile::~KeptFile() = default;
const char* KeptFile::vfs() { return nullptr; }

#else

namespace {

constexpr const char* vfsName = "qrel-kept";
constexpr std::string_view namePrefix = "kept-";

// SQLite's view of a kept file. Nobody writes it any more: it needs no locks.
struct OpenKept {
  sqlite3_file base;
  int handle;
};

int handleOf(sqlite3_file* file) { return reinterpret_cast<OpenKept*>(file)->handle; }

int closeKept(sqlite3_file* file) {
  ::close(handleOf(file));
  return SQLITE_OK;
}

int readKept(sqlite3_file* file, void* into, int size, sqlite3_int64 offset) {
  auto* bytes = static_cast<char*>(into);
  while (size > 0) {
    const ssize_t got = ::pread(handleOf(file), bytes, static_cast<std::size_t>(size), offset);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return SQLITE_IOERR_READ;
    if (got == 0) {
      std::memset(bytes, 0, static_cast<std::size_t>(size));
      return SQLITE_IOERR_SHORT_READ;
    }
    bytes += got;
    offset += got;
    size -= static_cast<int>(got);
  }
  return SQLITE_OK;
}

int sizeOfKept(sqlite3_file* file, sqlite3_int64* size) {
  struct stat status {};
  if (::fstat(handleOf(file), &status) != 0) return SQLITE_IOERR_FSTAT;
  *size = status.st_size;
  return SQLITE_OK;
}

const sqlite3_io_methods* methodsOfKept() {
  static const sqlite3_io_methods methods = [] {
    sqlite3_io_methods kept{};
    kept.iVersion = 1;
    kept.xClose = closeKept;
    kept.xRead = readKept;
    kept.xWrite = [](sqlite3_file*, const void*, int, sqlite3_int64) { return SQLITE_READONLY; };
    kept.xTruncate = [](sqlite3_file*, sqlite3_int64) { return SQLITE_READONLY; };
    kept.xSync = [](sqlite3_file*, int) { return SQLITE_OK; };
    kept.xFileSize = sizeOfKept;
    kept.xLock = [](sqlite3_file*, int) { return SQLITE_OK; };
    kept.xUnlock = [](sqlite3_file*, int) { return SQLITE_OK; };
    kept.xCheckReservedLock = [](sqlite3_file*, int* taken) { return *taken = 0, SQLITE_OK; };
    kept.xFileControl = [](sqlite3_file*, int, void*) { return SQLITE_NOTFOUND; };
    kept.xSectorSize = [](sqlite3_file*) { return 4096; };
    kept.xDeviceCharacteristics = [](sqlite3_file*) { return int{SQLITE_IOCAP_IMMUTABLE}; };
    return kept;
  }();
  return &methods;
}

int openKept(sqlite3_vfs*, const char* name, sqlite3_file* file, int, int* outFlags) {
  file->pMethods = nullptr;
  const std::string_view wanted = name ? name : "";
  int handle = -1;
  if (wanted.starts_with(namePrefix))
    std::from_chars(wanted.data() + namePrefix.size(), wanted.data() + wanted.size(), handle);
  const int own = handle >= 0 ? ::fcntl(handle, F_DUPFD_CLOEXEC, 0) : -1;
  if (own < 0) return SQLITE_CANTOPEN;
  reinterpret_cast<OpenKept*>(file)->handle = own;
  file->pMethods = methodsOfKept();
  if (outFlags) *outFlags = SQLITE_OPEN_READONLY;
  return SQLITE_OK;
}

// What the system's own file system gives, but for the files themselves.
sqlite3_vfs makeVfs() {
  sqlite3_vfs made = *sqlite3_vfs_find(nullptr);
  made.pNext = nullptr;
  made.zName = vfsName;
  made.szOsFile = sizeof(OpenKept);
  made.xOpen = openKept;
  made.xDelete = [](sqlite3_vfs*, const char*, int) { return SQLITE_READONLY; };
  made.xAccess = [](sqlite3_vfs*, const char*, int, int* there) { return *there = 0, SQLITE_OK; };
  made.xFullPathname = [](sqlite3_vfs*, const char* name, int size, char* out) {
    return sqlite3_snprintf(size, out, "%s", name), SQLITE_OK;
  };
  return made;
}

}  // namespace

KeptFile::KeptFile(const std::filesystem::path& file) : handle_(::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}

KeptFile::~KeptFile() {
  if (handle_ >= 0) ::close(handle_);
}

const char* KeptFile::vfs() {
  static sqlite3_vfs kept = makeVfs();
  static const int registered = sqlite3_vfs_register(&kept, 0);
  return registered == SQLITE_OK ? vfsName : nullptr;
}

#endif

KeptFile::KeptFile(KeptFile&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}

KeptFile& KeptFile::operator=(KeptFile&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

std::string KeptFile::uri() const { return "file:" + name() + "?mode=ro&vfs=" + (vfs() ? vfs() : ""); }

}  // namespace qrel::sqlite
