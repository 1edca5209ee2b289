// The system's calls under their own names: a program's definitions go before those of the C library, for the libraries
// that it uses, too. Without a FailingCall they only pass on.
#include "tests/console/failingCall.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <utility>

namespace qrel {

namespace {

FailingCall* active = nullptr;
std::array<bool, 4096> watched{};  // open files below the folder

bool isWatched(int file) { return active && file >= 0 && std::cmp_less(file, watched.size()) && watched[file]; }

int opened(int file, bool below) {
  if (file >= 0 && std::cmp_less(file, watched.size())) watched[file] = below;
  return file;
}

template <typename Function>
Function* real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

FailingCall::FailingCall(SystemCall kind, long nth, int error, std::string folder, bool andAllAfter)
    : kind_(kind), nth_(nth), error_(error), folder_(std::move(folder)), andAllAfter_(andAllAfter) {
  watched.fill(false);
  active = this;
}

FailingCall::~FailingCall() { active = nullptr; }

bool FailingCall::fails(SystemCall kind) {
  if (kind != kind_) return false;
  ++calls_;
  if (calls_ != nth_ && !(andAllAfter_ && calls_ > nth_)) return false;
  errno = error_;
  return true;
}

}  // namespace qrel

using qrel::active;
using qrel::isWatched;
using qrel::real;
using qrel::SystemCall;

extern "C" {

ssize_t write(int file, const void* data, size_t size) {
  if (isWatched(file) && active->fails(SystemCall::Write)) return -1;
  static auto* const next = real<decltype(write)>("write");
  return next(file, data, size);
}

ssize_t writev(int file, const iovec* parts, int count) {
  if (isWatched(file) && active->fails(SystemCall::Write)) return -1;
  static auto* const next = real<decltype(writev)>("writev");
  return next(file, parts, count);
}

ssize_t pwrite64(int file, const void* data, size_t size, off64_t at) {
  if (isWatched(file) && active->fails(SystemCall::Write)) return -1;
  static auto* const next = real<decltype(pwrite64)>("pwrite64");
  return next(file, data, size, at);
}

ssize_t read(int file, void* data, size_t size) {
  if (isWatched(file) && active->fails(SystemCall::Read)) return -1;
  static auto* const next = real<decltype(read)>("read");
  return next(file, data, size);
}

ssize_t pread64(int file, void* data, size_t size, off64_t at) {
  if (isWatched(file) && active->fails(SystemCall::Read)) return -1;
  static auto* const next = real<decltype(pread64)>("pread64");
  return next(file, data, size, at);
}

// Nothing reaches the disk here: what is tested is whether a failure is noticed.
int fsync(int file) { return isWatched(file) && active->fails(SystemCall::Sync) ? -1 : 0; }
int fdatasync(int file) { return isWatched(file) && active->fails(SystemCall::Sync) ? -1 : 0; }

int rename(const char* from, const char* to) noexcept {
  if (active && active->below(to) && active->fails(SystemCall::Rename)) return -1;
  static auto* const next = real<int(const char*, const char*)>("rename");
  return next(from, to);
}

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  const bool below = active && active->below(path);
  if (below && active->fails(SystemCall::Open)) return -1;
  static auto* const next = real<int(const char*, int, ...)>("open");
  return qrel::opened(next(path, flags, mode), below);
}

int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  const bool below = active && active->below(path);
  if (below && active->fails(SystemCall::Open)) return -1;
  static auto* const next = real<int(const char*, int, ...)>("open64");
  return qrel::opened(next(path, flags, mode), below);
}

FILE* fopen(const char* path, const char* mode) {
  const bool below = active && active->below(path);
  if (below && active->fails(SystemCall::Open)) return nullptr;
  static auto* const next = real<decltype(fopen)>("fopen");
  FILE* const stream = next(path, mode);
  if (stream) qrel::opened(fileno(stream), below);
  return stream;
}

FILE* fopen64(const char* path, const char* mode) {
  const bool below = active && active->below(path);
  if (below && active->fails(SystemCall::Open)) return nullptr;
  static auto* const next = real<decltype(fopen64)>("fopen64");
  FILE* const stream = next(path, mode);
  if (stream) qrel::opened(fileno(stream), below);
  return stream;
}

}  // extern "C"
