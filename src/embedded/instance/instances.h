// The embedded server's instances: a folder each, with a file instance.txt that holds the product version and a .mdf
// file per database.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/instance/unfinished.h"
#include "platform/fileLock.h"

namespace qrel {

inline constexpr const char* defaultProductVersion = "11.0.2100.60";

class EmbeddedServers {
 public:
  // `root` holds the instances; it need not exist yet.
  explicit EmbeddedServers(std::filesystem::path root);
  ~EmbeddedServers();  // removes temporary instances

  // Names compare without case. "(localdb)\Name" is not taken apart here: pass Name.
  bool exists(std::string_view name) const;
  std::vector<std::string> list() const;  // without temporary ones, in order without case
  // Makes the folder, instance.txt and an empty master, all at once or nothing. Raises RuntimeError with the path when
  // it can't, and for a name that isn't legal (databaseFiles.h).
  void create(std::string_view name, std::string_view productVersion = defaultProductVersion);
  // One to four numbers with points between, the first not 0.
  static bool isVersion(std::string_view text);
  void setVersion(std::string_view name, std::string_view productVersion);
  std::string productVersion(std::string_view name) const;
  // The same of an instance's folder; nothing when the folder holds no instance. Raises RuntimeError when it can't be
  // read.
  static std::optional<std::string> versionIn(const std::filesystem::path& folder);
  // The file that says so.
  static std::filesystem::path versionFileIn(const std::filesystem::path& folder);
  std::filesystem::path folder(std::string_view name) const;
  // An instance in a folder of its own under the system's temporary folder, gone with this object. Returns its name:
  // "script1", or the next number that no instance has.
  std::string createTemporary();
  bool isTemporary(std::string_view name) const;
  // Removes what killed runs have left here and under the system's temporary folder. What a running process works on
  // stays, as does all that can't be removed.
  void removeLeftovers();
  UnfinishedWork& unfinished() { return unfinished_; }

  // Which files are databases is said by databaseFiles.h. Path for a new or existing one.
  std::vector<std::string> databases(std::string_view instance) const;
  std::filesystem::path databaseFile(std::string_view instance, std::string_view database) const;
  static std::filesystem::path databaseFileIn(const std::filesystem::path& folder, std::string_view database);
  // Makes an empty database; false when there is one of that name.
  bool createDatabase(std::string_view instance, std::string_view database);
  bool dropDatabase(std::string_view instance, std::string_view database);

 private:
  friend class NewInstance;
  struct Temporary {
    std::filesystem::path folder;
    FileLock lock;  // held as long as somebody needs the folder
  };

  static constexpr std::string_view temporaryPrefix = "qrel-scripts-";  // then digits
  // The lock of whoever makes the instance of this name or changes its version.
  FileLock serverLock(std::string_view name) const;

  std::filesystem::path root_;
  std::map<std::string, Temporary> temporary_;
  UnfinishedWork unfinished_;
};

// Ends waiting for a lock that another process holds.
struct LockWait {
  std::chrono::milliseconds atMost{std::chrono::minutes(2)};
  std::function<bool()> stop;     // asked while waiting; may be empty
  std::function<void()> waiting;  // called once when it takes longer; may be empty
};

// A lock that is waited for, and given back with this object.
class WaitedLock {
 public:
  WaitedLock(FileLock lock, UnfinishedWork& unfinished) : lock_(std::move(lock)), unfinished_(unfinished) {}
  ~WaitedLock() { release(); }
  WaitedLock(const WaitedLock&) = delete;
  WaitedLock& operator=(const WaitedLock&) = delete;
  // True when it is held, false when stopped; raises RuntimeError saying that `what` is in use when it takes too long.
  bool wait(const LockWait& wait, const std::string& what);
  void release() { unfinished_.unlock(lock_); }

 private:
  FileLock lock_;
  UnfinishedWork& unfinished_;
};

// An instance that is being made beside the others: nobody sees it until it is kept, and without that it goes.
class NewInstance {
 public:
  // Only one process at a time makes an instance of this name; nothing when one was made meanwhile, or when `wait` has
  // been stopped. Raises RuntimeError when it can't be made or the wait was in vain.
  static std::unique_ptr<NewInstance> begin(EmbeddedServers& servers, std::string_view name, std::string_view version,
                                            const LockWait& wait);
  ~NewInstance();
  NewInstance(const NewInstance&) = delete;
  NewInstance& operator=(const NewInstance&) = delete;

  // Where its files lie until it is kept.
  const std::filesystem::path& folder() const { return folder_; }
  // The folder that it will be.
  const std::filesystem::path& target() const { return target_; }
  // False where the folder was there before and becomes an instance as it stands.
  bool hidden() const { return folder_ != target_; }
  void keep();

 private:
  NewInstance(EmbeddedServers& servers, std::string_view name, FileLock lock);
  void fill(std::string_view version);

  EmbeddedServers& servers_;
  WaitedLock lock_;
  std::filesystem::path target_, folder_;
  std::string version_;
  bool rootMade_ = false;
  bool kept_ = false;
};

// The lock of whoever writes a database file, found by the file's name without case. The file is removed when the lock
// is released.
FileLock databaseLock(const std::filesystem::path& databaseFile);

}  // namespace qrel
