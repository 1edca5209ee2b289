#include "embedded/instance/unfinished.h"

#include <chrono>
#include <thread>

namespace qrel {

namespace {
constexpr int removals = 4;
constexpr std::chrono::milliseconds betweenRemovals(3);
}  // namespace

void UnfinishedWork::add(const std::filesystem::path& path) {
  const std::lock_guard lock(mutex_);
  paths_.insert(path);
}

void UnfinishedWork::forget(const std::filesystem::path& path) {
  const std::lock_guard lock(mutex_);
  paths_.erase(path);
}

bool UnfinishedWork::tryLock(FileLock& lock) {
  const std::lock_guard guard(mutex_);
  if (!lock.tryLock()) return false;
  paths_.insert(lock.path());
  return true;
}

void UnfinishedWork::unlock(FileLock& lock) {
  const std::lock_guard guard(mutex_);
  if (!lock.locked()) return;
  paths_.erase(lock.path());
  lock.unlock();
}

void UnfinishedWork::beginLoad() {
  const std::lock_guard lock(mutex_);
  ++loads_;
}

void UnfinishedWork::endLoad() {
  const std::lock_guard lock(mutex_);
  --loads_;
}

bool UnfinishedWork::abandon(bool onlyLoads) {
  std::unique_lock lock(mutex_);
  if (changed_ || (onlyLoads && loads_ == 0)) return false;
  std::error_code ignored;
  // More than once: the other thread may be about to make one of them. It comes to a halt here soon.
  for (int pass = 0; pass < removals; ++pass) {
    if (pass > 0) std::this_thread::sleep_for(betweenRemovals);
    for (const std::filesystem::path& path : paths_) std::filesystem::remove_all(path, ignored);
  }
  lock.release();  // stays locked: nobody finishes anything in a process that ends
  return true;
}

}  // namespace qrel
