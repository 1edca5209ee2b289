#include "platform/data/embedded/provider.h"

#include <algorithm>
#include <charconv>
#include <list>
#include <mutex>
#include <utility>

#ifndef _WIN32
#include <sys/stat.h>
#endif

#include "platform/data/embedded/session.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostIdle = 12;
constexpr std::string_view localPrefix = "(localdb)\\";

// What tells one file from another that took its place under the same name. A file that is open keeps its number, so
// the number alone is enough where there is one.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  bool usable = false;
  bool operator==(const FileIdentity&) const = default;
};

FileIdentity identityOf(const fs::path& file) {
  FileIdentity identity;
#ifdef _WIN32
  std::error_code error;
  const auto written = fs::last_write_time(file, error);
  identity.number = error ? 0 : static_cast<std::uint64_t>(written.time_since_epoch().count());
  identity.usable = !error && fs::file_size(file, error) > 0;
#else
  struct stat status {};
  if (::stat(file.c_str(), &status) == 0) {
    identity.device = status.st_dev;
    identity.number = status.st_ino;
    identity.usable = S_ISREG(status.st_mode) && status.st_size > 0;
  }
#endif
  return identity;
}

int majorVersion(const std::string& productVersion) {
  int major = 0;
  std::from_chars(productVersion.data(), productVersion.data() + productVersion.size(), major);
  return major;
}

[[noreturn]] void cannotConnect(std::string message, const char* sqlState = "08001") {
  throw DataError(errorNumber::cannotConnect, std::move(message), sqlState);
}

class EmbeddedConnection : public ProviderConnection {
 public:
  explicit EmbeddedConnection(std::shared_ptr<tsql::OpenDatabase> open) : open_(open), session_(std::move(open)) {}

  CommandResult execute(const CommandRequest& request) override {
    open_->database.startClock(request.timeoutSeconds);
    try {
      CommandResult result = session_.run(request.text, nullptr, &request.parameters);
      open_->database.stopClock();
      return result;
    } catch (...) {
      open_->database.stopClock();
      throw;
    }
  }

  void interrupt() override { open_->database.interrupt(); }

 private:
  std::shared_ptr<tsql::OpenDatabase> open_;
  tsql::Session session_;
};

}  // namespace

// An open file, and which one it was when it was opened.
struct EmbeddedProvider::Idle {
  std::unique_ptr<tsql::OpenDatabase> open;
  FileIdentity identity;
};

// Open files that nobody uses at the moment, the latest last.
class EmbeddedProvider::Pool {
 public:
  // The latest idle handle that `asked` names and whose file and server are still what they were; no handle when there
  // is none. Handles that are outdated by now are closed.
  template <typename Asked>
  Idle take(Asked asked) {
    std::list<Idle> gone;  // closed behind the lock
    const std::lock_guard lock(mutex_);
    for (auto each = idle_.end(); each != idle_.begin();) {
      const auto candidate = std::prev(each);
      if (!asked(std::as_const(*candidate->open))) {
        each = candidate;
        continue;
      }
      if (stillStands(*candidate)) {
        Idle found = std::move(*candidate);
        idle_.erase(candidate);
        return found;
      }
      gone.splice(gone.end(), idle_, candidate);
    }
    return {};
  }

  void giveBack(std::unique_ptr<tsql::OpenDatabase> open, const FileIdentity& identity) {
    sqlite3* handle = open->database.get();
    if (sqlite3_get_autocommit(handle) == 0 && sqlite3_exec(handle, "rollback", nullptr, nullptr, nullptr) != SQLITE_OK)
      return;
    // Another database that was attached would be kept open with it.
    if (sqlite3_db_name(handle, 2)) return;
    std::list<Idle> gone;
    const std::lock_guard lock(mutex_);
    idle_.push_back({std::move(open), identity});
    if (idle_.size() > mostIdle) gone.splice(gone.end(), idle_, idle_.begin());
  }

 private:
  static bool stillStands(const Idle& idle) {
    const FileIdentity now = identityOf(idle.open->database.file());
    return now.usable && now == idle.identity &&
           EmbeddedServers::versionIn(idle.open->facts.folder) == idle.open->facts.productVersion;
  }

  std::mutex mutex_;
  std::list<Idle> idle_;
};

namespace {

// Refuses a file that is a database, but none of this server.
void checkCatalogue(tsql::OpenDatabase& open) {
  auto& query = open.database.cached("select count(*) from sqlite_master where name = 'cat_objects'");
  const bool ours = query.step() && query.integer(0) == 1;
  query.reset();
  if (!ours)
    cannotConnect("The database file '" + open.database.file().string() + "' is not a database of this server.");
}

}  // namespace

EmbeddedProvider::EmbeddedProvider(EmbeddedServers& servers) : servers_(servers), pool_(std::make_shared<Pool>()) {}

EmbeddedProvider::~EmbeddedProvider() = default;

std::unique_ptr<ProviderConnection> EmbeddedProvider::open(const ConnectionString& connectionString) {
  std::string instance(trimBlanks(connectionString.server()));
  if (equalNoCase(std::string_view(instance).substr(0, localPrefix.size()), localPrefix))
    instance.erase(0, localPrefix.size());
  std::string wanted(trimBlanks(connectionString.database()));
  if (wanted.empty()) wanted = "master";
  // A handle under the very names that are asked for spares the search through the folders.
  Idle used = pool_->take(
      [&](const tsql::OpenDatabase& open) { return open.facts.database == wanted && open.facts.server == instance; });
  if (!used.open) used = find(instance, wanted);
  used.open->catalogue.forget();
  used.open->database.startClock(0);
  std::shared_ptr<tsql::OpenDatabase> shared(
      used.open.release(), [pool = std::weak_ptr(pool_), identity = used.identity](tsql::OpenDatabase* done) {
        std::unique_ptr<tsql::OpenDatabase> owned(done);
        if (const auto alive = pool.lock()) alive->giveBack(std::move(owned), identity);
      });
  return std::make_unique<EmbeddedConnection>(std::move(shared));
}

EmbeddedProvider::Idle EmbeddedProvider::find(const std::string& instance, const std::string& wanted) {
  if (!servers_.exists(instance))
    cannotConnect("SQL Server does not exist or access denied: there is no embedded server '" + instance +
                  "'. \"qrel load " + instance + "/DATABASE FILE\" makes one from a script.");
  const std::vector<std::string> databases = servers_.databases(instance);
  const auto found = std::find_if(databases.begin(), databases.end(),
                                  [&](const std::string& name) { return equalNoCase(name, wanted); });
  if (found == databases.end())
    cannotConnect("Cannot open database \"" + wanted +
                      "\" requested by the login. The login failed. Choose one of the " +
                      "server's databases, or make this one with \"qrel load " + instance + "/" + wanted + " FILE\".",
                  "42000");
  const fs::path file = servers_.databaseFile(instance, *found);
  Idle idle = pool_->take([&](const tsql::OpenDatabase& open) { return open.database.file() == file; });
  if (idle.open) return idle;
  idle.identity = identityOf(file);
  const tsql::ServerFacts facts{instance, *found, servers_.productVersion(instance), servers_.folder(instance)};
  idle.open = std::make_unique<tsql::OpenDatabase>(file, facts, majorVersion(facts.productVersion),
                                                   sqlite::OpenMode::ReadWrite);
  checkCatalogue(*idle.open);
  return idle;
}

}  // namespace qrel
