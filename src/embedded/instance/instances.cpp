#include "embedded/instance/instances.h"

#include <algorithm>
#include <cerrno>
#include <random>
#include <thread>

#include "embedded/catalogue/catalogue.h"
#include "embedded/instance/databaseFiles.h"
#include "embedded/sqlite/sqlite.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/system.h"
#include "platform/text.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;

constexpr const char* versionFile = "instance.txt";
constexpr std::size_t mostVersionParts = 4;
constexpr std::size_t mostVersionDigits = 5;
constexpr std::chrono::milliseconds waitUntold(300);
constexpr std::chrono::milliseconds betweenTries(20);

[[noreturn]] void fail(const std::string& text) { throw RuntimeError(errorNumber::pathAccess, text); }

void checkName(std::string_view name, const char* what) {
  if (!isLegalName(name)) fail("'" + std::string(name) + "' can't be the name of " + what + ".");
}

// The entries of a folder; none when there is no such folder.
std::vector<fs::path> entriesIfThere(const fs::path& folder) {
  std::error_code ignored;
  if (fs::status(folder, ignored).type() == fs::file_type::not_found) return {};
  return folderEntries(folder);
}

bool isThere(const fs::path& file) {
  std::error_code error;
  const bool there = fs::exists(file, error);
  if (error) fail("The file '" + file.string() + "' cannot be looked at: " + error.message() + ".");
  return there;
}

// The folder of a server; empty when there is none.
fs::path findServer(const fs::path& root, std::string_view name) {
  fs::path exact = root / std::string(name);
  std::error_code ignored;
  if (fs::exists(exact, ignored)) return exact;
  for (const fs::path& entry : entriesIfThere(root))
    if (const std::string file = entry.filename().string(); file.front() != '.' && equalNoCase(file, name))
      return entry;
  return {};
}

void writeVersion(const fs::path& folder, std::string_view version) {
  files::writeAtomically(folder / versionFile, std::string(version) + "\n");
}

void checkVersion(std::string_view version) {
  if (!EmbeddedServers::isVersion(version))
    fail("'" + std::string(version) + "' is no product version such as 11.0.2100.60.");
}

// The hidden file beside `name` that is locked for it.
fs::path lockFile(const fs::path& folder, std::string_view name) {
  return folder / ("." + lowerCase(name) + std::string(lockEnding));
}

// Does `work`; an error's text names the path that the person knows instead of one that is used meanwhile.
template <class Work>
void showAs(const fs::path& used, const fs::path& known, Work&& work) {
  try {
    work();
  } catch (RuntimeError& error) {
    error.description = replaceAll(error.description, used.string(), known.string());
    throw;
  }
}

// Makes an empty database in a file that isn't there; the file is whole or not there at all. The caller keeps others
// from making it too.
void createEmptyDatabase(const fs::path& file) {
  const fs::path fresh = workCopyOf(file);
  std::error_code error;
  try {
    sqlite::Database database(fresh, sqlite::OpenMode::Create);
    tsql::Catalogue::createStorage(database);
    fs::rename(fresh, file, error);
    if (error) fail("The file '" + file.string() + "' cannot be made: " + error.message() + ".");
  } catch (...) {
    fs::remove(fresh, error);
    fs::remove(fresh.string() + "-journal", error);
    showAs(fresh, file, [] { throw; });
  }
}

void fillInstance(const fs::path& folder, std::string_view version) {
  const fs::path master = databaseFileFor(folder, "master");
  if (!fs::exists(master)) createEmptyDatabase(master);
  // Last: the folder is an instance as soon as it says which version.
  writeVersion(folder, version);
}

}  // namespace

EmbeddedServers::EmbeddedServers(fs::path root) : root_(std::move(root)) {}

EmbeddedServers::~EmbeddedServers() {
  std::error_code ignored;
  for (const auto& [name, temporary] : temporary_) fs::remove_all(temporary.folder, ignored);
}

bool EmbeddedServers::isTemporary(std::string_view name) const { return temporary_.count(lowerCase(name)) != 0; }

bool EmbeddedServers::exists(std::string_view name) const {
  if (isTemporary(name)) return true;
  const fs::path found = name.empty() ? fs::path() : findServer(root_, name);
  return !found.empty() && found.filename() != "." && isThere(found / versionFile);
}

std::vector<std::string> EmbeddedServers::list() const {
  std::vector<std::string> names;
  for (const fs::path& entry : entriesIfThere(root_)) {
    std::error_code none;
    const std::string name = entry.filename().string();
    if (name.front() != '.' && fs::exists(entry / versionFile, none)) names.push_back(name);
  }
  std::sort(names.begin(), names.end(),
            [](const std::string& a, const std::string& b) { return compareCollated(a, b) < 0; });
  return names;
}

void EmbeddedServers::create(std::string_view name, std::string_view productVersion) {
  const auto fresh = NewInstance::begin(*this, name, productVersion, {});
  if (!fresh) fail("There is a server '" + std::string(name) + "' already.");
  fresh->keep();
}

FileLock EmbeddedServers::serverLock(std::string_view name) const { return FileLock(lockFile(root_, name)); }

bool EmbeddedServers::isVersion(std::string_view text) {
  const std::vector<std::string> parts = splitAt(text, '.');
  return !text.empty() && text.front() != '0' && parts.size() <= mostVersionParts &&
         std::all_of(parts.begin(), parts.end(), [](const std::string& part) {
           return !part.empty() && part.size() <= mostVersionDigits &&
                  part.find_first_not_of("0123456789") == std::string::npos;
         });
}

void EmbeddedServers::setVersion(std::string_view name, std::string_view productVersion) {
  checkVersion(productVersion);
  WaitedLock lock(serverLock(name), unfinished_);
  if (!isTemporary(name)) lock.wait({}, "The server '" + std::string(name) + "'");
  writeVersion(folder(name), productVersion);
}

std::string EmbeddedServers::productVersion(std::string_view name) const {
  return versionIn(folder(name)).value_or(defaultProductVersion);
}

std::optional<std::string> EmbeddedServers::versionIn(const fs::path& folder) {
  const fs::path file = folder / versionFile;
  if (!isThere(file)) return {};
  // What can't be read is no reason to take the server for another version.
  std::string version = files::readWholeFile(file);
  version.erase(std::min(version.find_first_of(" \t\r\n"), version.size()));
  if (!isVersion(version))
    fail("The file '" + file.string() +
         "' holds no product version such as 11.0.2100.60. \"qrel load\" with --version writes it.");
  return version;
}

fs::path EmbeddedServers::versionFileIn(const fs::path& folder) { return folder / versionFile; }

fs::path EmbeddedServers::folder(std::string_view name) const {
  if (const auto found = temporary_.find(lowerCase(name)); found != temporary_.end()) return found->second.folder;
  if (!exists(name)) fail("There is no server '" + std::string(name) + "' in '" + root_.string() + "'.");
  return findServer(root_, name);
}

std::string EmbeddedServers::createTemporary() {
  std::string name;
  for (int number = 1; name.empty() || exists(name); ++number) name = "script" + std::to_string(number);
  std::random_device random;
  const fs::path parent = fs::temp_directory_path();
  for (int attempt = 0; attempt < 100; ++attempt) {
    const fs::path folder =
        parent / (std::string(temporaryPrefix) + std::to_string(random()) + std::to_string(random()));
    unfinished_.add(folder);
    if (const system::Error reason = system::makeFolder(folder, system::Access::OwnerOnly); reason != 0) {
      unfinished_.forget(folder);
      if (reason == EEXIST) continue;
      fail("The folder '" + folder.string() + "' cannot be made: " + std::generic_category().message(reason) + ".");
    }
    const auto made = temporary_.emplace(name, Temporary{folder, FileLock(folder / lockEnding)}).first;
    // Until it is locked, another process may take the folder for one that is left over.
    std::error_code ignored;
    const auto giveUp = [&] {
      unfinished_.forget(folder);
      temporary_.erase(made);
    };
    try {
      if (made->second.lock.tryLock()) {
        fillInstance(folder, defaultProductVersion);
        return name;
      }
    } catch (...) {
      const bool taken = !fs::exists(folder, ignored);
      fs::remove_all(folder, ignored);
      giveUp();
      if (taken) continue;
      throw;
    }
    giveUp();
  }
  fail("No temporary folder can be made in '" + parent.string() + "'.");
}

std::vector<std::string> EmbeddedServers::databases(std::string_view instance) const {
  return databaseNames(folder(instance));
}

fs::path EmbeddedServers::databaseFile(std::string_view instance, std::string_view database) const {
  return databaseFileIn(folder(instance), database);
}

fs::path EmbeddedServers::databaseFileIn(const fs::path& folder, std::string_view database) {
  checkName(database, "a database");
  return databaseFileFor(folder, database);
}

bool EmbeddedServers::createDatabase(std::string_view instance, std::string_view database) {
  WaitedLock lock(databaseLock(databaseFile(instance, database)), unfinished_);
  lock.wait({}, "The database '" + std::string(instance) + "/" + std::string(database) + "'");
  const fs::path file = databaseFile(instance, database);
  if (fs::exists(file)) return false;
  createEmptyDatabase(file);
  return true;
}

bool EmbeddedServers::dropDatabase(std::string_view instance, std::string_view database) {
  std::error_code error;
  const fs::path file = databaseFile(instance, database);
  const bool removed = fs::remove(file, error);
  if (error) fail("The file '" + file.string() + "' cannot be removed: " + error.message() + ".");
  return removed;
}

FileLock databaseLock(const fs::path& databaseFile) {
  return FileLock(lockFile(databaseFile.parent_path(), databaseFile.filename().string()));
}

bool WaitedLock::wait(const LockWait& wait, const std::string& what) {
  using clock = std::chrono::steady_clock;
  const auto begin = clock::now();
  for (bool told = false; !unfinished_.tryLock(lock_);) {
    if (wait.stop && wait.stop()) return false;
    const auto waited = clock::now() - begin;
    if (waited >= wait.atMost)
      fail(what + " is being written by another process. Nothing was changed; try again when that has ended.");
    if (!told && waited >= waitUntold && wait.waiting) {
      wait.waiting();
      told = true;
    }
    std::this_thread::sleep_for(betweenTries);
  }
  return true;
}

std::unique_ptr<NewInstance> NewInstance::begin(EmbeddedServers& servers, std::string_view name,
                                                std::string_view version, const LockWait& wait) {
  checkName(name, "a server");
  checkVersion(version);
  if (servers.exists(name)) return nullptr;
  std::error_code error;
  const bool rootMade = fs::create_directories(servers.root_, error);
  if (error) fail("The folder '" + servers.root_.string() + "' cannot be made: " + error.message() + ".");
  std::unique_ptr<NewInstance> fresh(new NewInstance(servers, name, servers.serverLock(name)));
  fresh->rootMade_ = rootMade;
  if (!fresh->lock_.wait(wait, "The server '" + std::string(name) + "'")) return nullptr;
  if (servers.exists(name)) return nullptr;
  fresh->fill(version);
  return fresh;
}

NewInstance::NewInstance(EmbeddedServers& servers, std::string_view name, FileLock lock)
    : servers_(servers), lock_(std::move(lock), servers.unfinished()), target_(servers.root_ / std::string(name)) {}

void NewInstance::fill(std::string_view version) {
  std::error_code error;
  version_ = version;
  if (const fs::path there = findServer(servers_.root_, target_.filename().string()); !there.empty()) {
    // A folder that somebody has made, perhaps with databases in it, becomes an instance as it stands.
    if (!fs::is_directory(there, error)) fail("'" + there.string() + "' is no folder.");
    folder_ = target_ = there;
    return;
  }
  folder_ = target_.parent_path() / ("." + target_.filename().string() + std::string(loadingEnding));
  servers_.unfinished().add(folder_);
  fs::remove_all(folder_, error);  // of a killed run: nobody else makes this instance
  if (!fs::create_directory(folder_, error))
    fail("The folder '" + target_.string() + "' cannot be made: " + error.message() + ".");
  showAs(folder_, target_, [&] { fillInstance(folder_, version); });
}

NewInstance::~NewInstance() {
  std::error_code ignored;
  if (!kept_ && hidden() && !folder_.empty()) fs::remove_all(folder_, ignored);
  servers_.unfinished().forget(folder_);
  lock_.release();
  if (!kept_ && rootMade_) fs::remove(servers_.root_, ignored);  // only when it's empty
}

void NewInstance::keep() {
  if (!hidden()) {
    fillInstance(folder_, version_);
  } else {
    std::error_code error;
    fs::rename(folder_, target_, error);
    if (error) fail("The folder '" + target_.string() + "' cannot be made: " + error.message() + ".");
  }
  kept_ = true;
}

}  // namespace qrel
