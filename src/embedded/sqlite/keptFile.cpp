#include "embedded/sqlite/keptFile.h"

#include <sqlite3.h>

#include <charconv>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace qrel::sqlite {

namespace {

constexpr const char* vfsName = "qrel-kept";
constexpr std::string_view namePrefix = "kept-";

// SQLite's view of a kept file. Nobody writes it any more: it needs no locks.
struct OpenKept {
  sqlite3_file base;
  system::OpenFile file;  // from openKept to closeKept: the memory is SQLite's
};

system::OpenFile& fileOf(sqlite3_file* file) { return reinterpret_cast<OpenKept*>(file)->file; }

int closeKept(sqlite3_file* file) {
  std::destroy_at(&fileOf(file));
  return SQLITE_OK;
}

int readKept(sqlite3_file* file, void* into, int size, sqlite3_int64 offset) {
  auto* bytes = static_cast<char*>(into);
  while (size > 0) {
    std::size_t got = 0;
    if (fileOf(file).readAt(offset, bytes, static_cast<std::size_t>(size), got) != 0) return SQLITE_IOERR_READ;
    if (got == 0) {
      std::memset(bytes, 0, static_cast<std::size_t>(size));
      return SQLITE_IOERR_SHORT_READ;
    }
    bytes += got;
    offset += static_cast<sqlite3_int64>(got);
    size -= static_cast<int>(got);
  }
  return SQLITE_OK;
}

int sizeOfKept(sqlite3_file* file, sqlite3_int64* size) {
  system::FileFacts facts;
  if (fileOf(file).facts(facts) != 0) return SQLITE_IOERR_FSTAT;
  *size = static_cast<sqlite3_int64>(facts.size);
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
  std::intptr_t number = -1;
  if (wanted.starts_with(namePrefix))
    std::from_chars(wanted.data() + namePrefix.size(), wanted.data() + wanted.size(), number);
  system::OpenFile own;
  if (number < 0 || own.openAgain(number) != 0) return SQLITE_CANTOPEN;
  std::construct_at(&fileOf(file), std::move(own));
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

KeptFile::KeptFile(const std::filesystem::path& file) {
  file_.open(file, system::Open::Read);  // none that can't be opened is kept
}

const char* KeptFile::vfs() {
  static sqlite3_vfs kept = makeVfs();
  static const int registered = sqlite3_vfs_register(&kept, 0);
  return registered == SQLITE_OK ? vfsName : nullptr;
}

std::string KeptFile::uri() const { return "file:" + name() + "?mode=ro&vfs=" + (vfs() ? vfs() : ""); }

}  // namespace qrel::sqlite
