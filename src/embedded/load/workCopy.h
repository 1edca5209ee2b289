// The copy of a database that a load works on.
#pragma once

#include <filesystem>
#include <functional>

#include "embedded/instance/instances.h"

namespace qrel {

// Beside the database's file (beside what it leads to, when it is a link). Belongs to the holder of the database's
// lock; it goes when it hasn't taken the database's place.
class WorkCopy {
 public:
  // `target` is the file itself, not a link. Removes what earlier runs have left. Raises RuntimeError with folder or
  // file and what is missing when the database can't be replaced: a read-only file, a folder that can't be written.
  WorkCopy(std::filesystem::path target, UnfinishedWork& unfinished);
  ~WorkCopy();
  WorkCopy(const WorkCopy&) = delete;
  WorkCopy& operator=(const WorkCopy&) = delete;

  const std::filesystem::path& path() const { return path_; }
  const std::filesystem::path& target() const { return target_; }

  // Starts from the database as it is, or empty. False when `stop` (may be empty) said so meanwhile.
  bool fill(bool keepOld, const std::function<bool()>& stop);
  // Writes all to the disk and gives the copy the old file's mode and owner; false when stopped.
  bool prepare(const std::function<bool()>& stop);
  // Puts the prepared copy in the database's place: it's all there or not at all.
  void takePlace();

 private:
  void forget();
  bool copyOld(const std::function<bool()>& stop) const;

  std::filesystem::path target_;
  std::filesystem::path path_;
  UnfinishedWork& unfinished_;
};

}  // namespace qrel
