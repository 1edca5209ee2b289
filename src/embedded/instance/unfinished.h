// What must not outlive a run: folders of temporary instances, and what a load has on disk until it is in place. All of
// it may be called from any thread; removing is for a process that is about to end while another thread still works.
#pragma once

#include <filesystem>
#include <mutex>
#include <set>

#include "platform/fileLock.h"

namespace qrel {

class UnfinishedWork {
 public:
  // Files or folders, with all that is in them; told before they are made, so that none is missed.
  void add(const std::filesystem::path& path);
  void forget(const std::filesystem::path& path);

  // Takes a lock, when nobody holds it, together with its file; gives both back.
  bool tryLock(FileLock& lock);
  void unlock(FileLock& lock);

  // A load is under way until endLoad. Loads may stand within one another.
  void beginLoad();
  void endLoad();
  // While this is held abandon waits. Taken around the steps that put a load in its place.
  [[nodiscard]] std::unique_lock<std::mutex> finishing() { return std::unique_lock(mutex_); }
  // To be called while finishing: from here on a database is another than before.
  void setChanged() { changed_ = true; }

  // Removes everything and lets no load finish any more; the caller ends the process. False, and nothing is done, when
  // a load has already taken its place, or with `onlyLoads` when none is under way.
  bool abandon(bool onlyLoads);

 private:
  std::mutex mutex_;
  std::set<std::filesystem::path> paths_;
  int loads_ = 0;
  bool changed_ = false;
};

}  // namespace qrel
