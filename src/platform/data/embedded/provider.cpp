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

// Open files that nobody uses at the moment, the latest last.
class EmbeddedProvider::Pool {
 public:
  // Empty when no open handle of this file is idle. Handles of a file that was replaced meanwhile are closed.
  std::unique_ptr<tsql::OpenDatabase> take(const fs::path& file, const FileIdentity& identity,
                                           const std::string& productVersion) {
    std::list<Idle> gone;  // closed behind the lock
    const std::lock_guard lock(mutex_);
    for (auto each = idle_.begin(); each != idle_.end();) {
      const auto next = std::next(each);
      if (each->open->database.file() == file) {
        const bool same =
            identity.usable && each->identity == identity && each->open->facts.productVersion == productVersion;
        if (same) {
          std::unique_ptr<tsql::OpenDatabase> found = std::move(each->open);
          idle_.erase(each);
          return found;
        }
        gone.splice(gone.end(), idle_, each);
      }
      each = next;
    }
    return nullptr;
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
  struct Idle {
    std::unique_ptr<tsql::OpenDatabase> open;
    FileIdentity identity;
  };
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
  if (!servers_.exists(instance))
    cannotConnect("SQL Server does not exist or access denied: there is no embedded server '" + instance +
                  "'. \"qrel load " + instance + "/DATABASE FILE\" makes one from a script.");
  std::string wanted(trimBlanks(connectionString.database()));
  if (wanted.empty()) wanted = "master";
  const std::vector<std::string> databases = servers_.databases(instance);
  const auto found = std::find_if(databases.begin(), databases.end(),
                                  [&](const std::string& name) { return equalNoCase(name, wanted); });
  if (found == databases.end())
    cannotConnect("Cannot open database \"" + wanted +
                      "\" requested by the login. The login failed. Choose one of the " +
                      "server's databases, or make this one with \"qrel load " + instance + "/" + wanted + " FILE\".",
                  "42000");
  const fs::path file = servers_.databaseFile(instance, *found);
  const std::string version = servers_.productVersion(instance);
  const FileIdentity identity = identityOf(file);
  std::unique_ptr<tsql::OpenDatabase> open = pool_->take(file, identity, version);
  if (!open) {
    const tsql::ServerFacts facts{instance, *found, version, servers_.folder(instance)};
    open = std::make_unique<tsql::OpenDatabase>(file, facts, majorVersion(version), sqlite::OpenMode::ReadWrite);
    checkCatalogue(*open);
  }
  open->catalogue.forget();
  open->database.startClock(0);
  std::shared_ptr<tsql::OpenDatabase> shared(open.release(),
                                             [pool = std::weak_ptr(pool_), identity](tsql::OpenDatabase* used) {
                                               std::unique_ptr<tsql::OpenDatabase> owned(used);
                                               if (const auto alive = pool.lock())
                                                 alive->giveBack(std::move(owned), identity);
                                             });
  return std::make_unique<EmbeddedConnection>(std::move(shared));
}

}  // namespace qrel
