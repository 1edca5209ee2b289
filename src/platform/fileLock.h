// A lock between processes (and between objects of one process), held on a file of its own.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>

#include "platform/system.h"

namespace qrel {

// Whoever holds the lock has the file `path` open and locked; it is made for the purpose and removed when the lock is
// released. The system releases the lock of a process that ends, however it ends: a file left by a killed process is
// no lock, and the next holder takes it over. All failures but a lock that others hold raise RuntimeError with the path
// (75, or 61 for a full disk): a folder that isn't there or can't be written, a file system without locks.
class FileLock {
 public:
  // Not locked yet; the folder of `path` must be there when the lock is taken.
  explicit FileLock(std::filesystem::path path);
  ~FileLock();  // releases
  FileLock(FileLock&& other) noexcept;
  FileLock& operator=(FileLock&& other) noexcept;
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  // Takes the lock when nobody else holds it; false when somebody does.
  bool tryLock();

  enum class Outcome : std::uint8_t { Locked, TimedOut, Stopped };
  // Waits for the lock. `stopAsked` (may be empty) is asked about every 20 milliseconds while waiting.
  Outcome lock(std::chrono::milliseconds timeOut, const std::function<bool()>& stopAsked = {});

  void unlock();
  bool locked() const { return file_.isOpen(); }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  system::OpenFile file_;
};

}  // namespace qrel
