#include "embedded/instance/unfinished.h"

namespace qrel {

void UnfinishedWork::add(const std::filesystem::path& path) {
  const std::lock_guard lock(mutex_);
  paths_.insert(path);
}

void UnfinishedWork::forget(const std::filesystem::path& path) {
  const std::lock_guard lock(mutex_);
  paths_.erase(path);
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
  for (const std::filesystem::path& path : paths_) std::filesystem::remove_all(path, ignored);
  lock.release();  // stays locked: nobody finishes anything in a process that ends
  return true;
}

}  // namespace qrel
