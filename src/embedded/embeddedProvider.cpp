#include "embedded/embeddedProvider.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "embedded/instance/databaseFiles.h"
#include "embedded/session/session.h"
#include "platform/error.h"
#include "platform/system.h"
#include "platform/text.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostIdle = 12;
constexpr std::string_view localPrefix = "(localdb)\\";

// What tells one file from another that took its place under the same name. For a file that is open `id` alone is
// enough: no other one gets it meanwhile. A file that isn't open is another one when `written` differs, too.
struct FileIdentity {
  system::FileId id;
  system::FileTime written;
  bool usable = false;

  bool sameFile(const FileIdentity& other) const { return usable && other.usable && id == other.id; }
  bool operator==(const FileIdentity&) const = default;
};

FileIdentity identityOf(const fs::path& file) {
  system::FileFacts facts;
  if (system::look(file, facts) != 0) return {};
  return {facts.id, facts.written, facts.kind == system::Kind::File && facts.size > 0};
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
  using Lease = std::function<std::shared_ptr<tsql::OpenDatabase>()>;

  // `lease` gives the open database; it is asked for with the first command, so that a connection that waits for its
  // turn leaves the file to the others.
  explicit EmbeddedConnection(Lease lease) : lease_(std::move(lease)) {}

  CommandResult execute(const CommandRequest& request) override {
    if (!session_) {
      auto open = lease_();
      const std::lock_guard lock(mutex_);
      session_.emplace(open);
      open_ = std::move(open);
    }
    open_->database.startClock(request.timeoutSeconds);
    try {
      CommandResult result = request.isProcedure ? session_->runProcedure(request.text, request.parameters)
                                                 : session_->run(request.text, nullptr, &request.parameters);
      open_->database.stopClock();
      return result;
    } catch (...) {
      open_->database.stopClock();
      throw;
    }
  }

  void interrupt() override {
    const std::lock_guard lock(mutex_);
    if (open_) open_->database.interrupt();
  }

 private:
  Lease lease_;
  std::mutex mutex_;  // of open_: interrupt comes from another thread
  std::shared_ptr<tsql::OpenDatabase> open_;
  std::optional<tsql::Session> session_;
};

}  // namespace

// An open file, and which one it was when it was opened.
struct EmbeddedProvider::Idle {
  std::unique_ptr<tsql::OpenDatabase> open;
  FileIdentity identity;
  FileIdentity version;  // of the file that says which version the server has
};

// Open files that nobody uses at the moment, the latest last.
class EmbeddedProvider::Pool {
 public:
  // The latest idle handle that `asked` names and whose file and server are still what they were; no handle when there
  // is none. Handles that are outdated by now are closed. `stands` (stillStands) decides which are.
  template <typename Asked, typename Stands = bool (*)(const Idle&)>
  Idle take(Asked asked, Stands stands = &Pool::stillStands) {
    std::list<Idle> gone;  // closed behind the lock
    const std::lock_guard lock(mutex_);
    for (auto each = idle_.end(); each != idle_.begin();) {
      const auto candidate = std::prev(each);
      if (!asked(std::as_const(*candidate->open))) {
        each = candidate;
        continue;
      }
      if (stands(std::as_const(*candidate))) {
        Idle found = std::move(*candidate);
        idle_.erase(candidate);
        return found;
      }
      gone.splice(gone.end(), idle_, candidate);
    }
    return {};
  }

  // The handle just as it was given back; no handle when somebody else has it by now.
  Idle takeAgain(const tsql::OpenDatabase* handle) {
    const std::lock_guard lock(mutex_);
    const auto found =
        std::find_if(idle_.begin(), idle_.end(), [&](const Idle& idle) { return idle.open.get() == handle; });
    if (found == idle_.end()) return {};
    Idle idle = std::move(*found);
    idle_.erase(found);
    return idle;
  }

  // Returns the handle, which the pool owns now; nullptr when it can't be used again and was closed.
  const tsql::OpenDatabase* giveBack(Idle idle) {
    sqlite3* handle = idle.open->database.get();
    if (sqlite3_get_autocommit(handle) == 0 && sqlite3_exec(handle, "rollback", nullptr, nullptr, nullptr) != SQLITE_OK)
      return nullptr;
    // What an error has left half read would go on reading that state of the file.
    idle.open->database.resetAll();
    // Another database that was attached would be kept open with it.
    if (sqlite3_db_name(handle, 2)) return nullptr;
    const tsql::OpenDatabase* kept = idle.open.get();
    std::list<Idle> gone;
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(idle));
    if (idle_.size() > mostIdle) gone.splice(gone.end(), idle_, idle_.begin());
    return kept;
  }

 private:
  static bool stillStands(const Idle& idle) {
    return idle.identity.sameFile(identityOf(idle.open->database.file())) &&
           idle.version == identityOf(EmbeddedServers::versionFileIn(idle.open->facts.folder));
  }

  std::mutex mutex_;
  std::list<Idle> idle_;
};

// A database as it is read for the length of a run.
struct EmbeddedProvider::Kept {
  FileIdentity identity;
  FileIdentity version;
  tsql::ServerFacts facts;
  fs::path path;
  sqlite::KeptFile file;
};

// The databases that stay what they are. Nothing is kept while nobody asks for it.
class EmbeddedProvider::Holding {
 public:
  std::shared_ptr<void> begin(const std::shared_ptr<Holding>& self) {
    const std::lock_guard lock(mutex_);
    if (auto alive = token_.lock()) return alive;
    std::shared_ptr<void> token(self.get(), [weak = std::weak_ptr(self)](void*) {
      const auto holding = weak.lock();
      if (!holding) return;
      const std::lock_guard locked(holding->mutex_);
      // Somebody else may have begun meanwhile: then the databases are theirs.
      if (holding->token_.expired()) holding->kept_.clear();
    });
    kept_.clear();
    token_ = token;
    return token;
  }

  bool active() const {
    const std::lock_guard lock(mutex_);
    return !token_.expired();
  }
  std::shared_ptr<const Kept> find(const std::string& instance, const std::string& database) const {
    const std::lock_guard lock(mutex_);
    const auto found = kept_.find(key(instance, database));
    return found == kept_.end() || token_.expired() ? nullptr : found->second;
  }
  // The first one stays.
  std::shared_ptr<const Kept> keep(const std::string& instance, const std::string& database, Kept kept) {
    const std::lock_guard lock(mutex_);
    auto& place = kept_[key(instance, database)];
    if (!place) place = std::make_shared<const Kept>(std::move(kept));
    return place;
  }

 private:
  static std::string key(const std::string& instance, const std::string& database) {
    return lowerCase(instance) + '\n' + lowerCase(database);
  }

  mutable std::mutex mutex_;
  std::weak_ptr<void> token_;
  std::map<std::string, std::shared_ptr<const Kept>> kept_;
};

EmbeddedProvider::EmbeddedProvider(EmbeddedServers& servers, const std::function<bool()>* stopAsked)
    : servers_(servers),
      stopAsked_(stopAsked),
      pool_(std::make_shared<Pool>()),
      holding_(std::make_shared<Holding>()) {}

EmbeddedProvider::~EmbeddedProvider() = default;

std::shared_ptr<void> EmbeddedProvider::holdState() { return holding_->begin(holding_); }

LoadLosses EmbeddedProvider::lossesOfLoads(const std::string& instance, const std::string& database) {
  Idle used = take(instance, database);
  used.open->database.startClock(0);
  const LoadLosses losses = readLoadLosses(used.open->database);
  pool_->giveBack(std::move(used));
  return losses;
}

std::unique_ptr<ProviderConnection> EmbeddedProvider::open(const ConnectionString& connectionString) {
  std::string instance(trimBlanks(connectionString.server()));
  if (equalNoCase(std::string_view(instance).substr(0, localPrefix.size()), localPrefix))
    instance.erase(0, localPrefix.size());
  std::string wanted(trimBlanks(connectionString.database()));
  if (wanted.empty()) wanted = "master";
  const tsql::OpenDatabase* waiting = pool_->giveBack(take(instance, wanted));
  return std::make_unique<EmbeddedConnection>([this, instance, wanted, waiting] {
    Idle again = pool_->takeAgain(waiting);
    return lease(again.open ? std::move(again) : take(instance, wanted));
  });
}

std::shared_ptr<tsql::OpenDatabase> EmbeddedProvider::lease(Idle used) {
  used.open->catalogue.forget();
  used.open->database.startClock(0);
  tsql::OpenDatabase* open = used.open.release();
  return {open, [pool = std::weak_ptr(pool_), identity = used.identity, version = used.version](auto* done) {
            std::unique_ptr<tsql::OpenDatabase> owned(done);
            if (const auto alive = pool.lock()) alive->giveBack({std::move(owned), identity, version});
          }};
}

EmbeddedProvider::Idle EmbeddedProvider::take(const std::string& instance, const std::string& wanted) {
  if (!holding_->active()) return takePresent(instance, wanted);
  for (;;) {
    if (const auto kept = holding_->find(instance, wanted)) return takeKept(*kept);
    Idle present = takePresent(instance, wanted);
    Kept kept{present.identity, present.version, present.open->facts, present.open->database.file(), {}};
    kept.file = sqlite::KeptFile(kept.path);
    // Replaced since it was opened: the next attempt meets the new one.
    if (!identityOf(kept.path).sameFile(kept.identity)) continue;
    if (holding_->keep(instance, wanted, std::move(kept))->identity.sameFile(present.identity)) return present;
  }
}

EmbeddedProvider::Idle EmbeddedProvider::takePresent(const std::string& instance, const std::string& wanted) {
  // A handle under the very names that are asked for spares the search through the folders.
  Idle used = pool_->take(
      [&](const tsql::OpenDatabase& open) { return open.facts.database == wanted && open.facts.server == instance; });
  return used.open ? std::move(used) : find(instance, wanted);
}

EmbeddedProvider::Idle EmbeddedProvider::takeKept(const Kept& kept) {
  const auto isKept = [&](const Idle& idle) { return idle.identity.sameFile(kept.identity); };
  Idle idle = pool_->take(
      [&](const tsql::OpenDatabase& open) {
        return open.database.file() == kept.path && open.facts.server == kept.facts.server;
      },
      isKept);
  if (idle.open) return idle;
  if (identityOf(kept.path).sameFile(kept.identity)) {
    idle = openFile(kept.facts.server, kept.facts.database, kept.path);
    if (isKept(idle)) return idle;
  }
  if (!kept.file)
    cannotConnect("The database file '" + kept.path.string() +
                  "' was replaced while it was being read. Start again to read the new one.");
  idle.identity = kept.identity;
  idle.version = kept.version;
  idle.open = std::make_unique<tsql::OpenDatabase>(kept.path, kept.facts, majorVersion(kept.facts.productVersion),
                                                   sqlite::OpenMode::ReadOnly, &kept.file);
  idle.open->database.stopAsked = stopAsked_;
  connectSiblings(*idle.open, kept.facts.server);
  return idle;
}

EmbeddedProvider::Idle EmbeddedProvider::find(const std::string& instance, const std::string& wanted) {
  if (!servers_.exists(instance))
    cannotConnect("SQL Server does not exist or access denied: there is no embedded server '" + instance +
                  "'. \"qrel load " + instance + "/DATABASE FILE\" makes one from a script.");
  const fs::path file = findDatabaseFile(servers_.folder(instance), wanted);
  if (file.empty())
    cannotConnect("Cannot open database \"" + wanted +
                      "\" requested by the login. The login failed. Choose one of the " +
                      "server's databases, or make this one with \"qrel load " + instance + "/" + wanted + " FILE\".",
                  "42000");
  Idle idle = pool_->take([&](const tsql::OpenDatabase& open) { return open.database.file() == file; });
  return idle.open ? std::move(idle) : openFile(instance, databaseNameOf(file), file);
}

EmbeddedProvider::Idle EmbeddedProvider::openFile(const std::string& instance, const std::string& database,
                                                  const fs::path& file) {
  for (int attempt = 1;; ++attempt) {
    Idle idle;
    idle.identity = identityOf(file);
    idle.version = identityOf(EmbeddedServers::versionFileIn(servers_.folder(instance)));
    const tsql::ServerFacts facts{instance, database, servers_.productVersion(instance), servers_.folder(instance)};
    idle.open = std::make_unique<tsql::OpenDatabase>(file, facts, majorVersion(facts.productVersion),
                                                     sqlite::OpenMode::ReadOnly);
    // What was opened is what was looked at, unless another file came between.
    if (attempt < 10 && idle.identity.usable && !identityOf(file).sameFile(idle.identity)) continue;
    idle.open->database.stopAsked = stopAsked_;
    connectSiblings(*idle.open, instance);
    tsql::Catalogue::requireWhole(idle.open->database);
    return idle;
  }
}

// USE and names such as Other.dbo.Track lead to databases that are opened here, too: for reading, and kept in a run.
void EmbeddedProvider::connectSiblings(tsql::OpenDatabase& open, const std::string& instance) {
  open.sibling = [this, instance](const std::string& name) -> std::shared_ptr<tsql::OpenDatabase> {
    return hasDatabase(instance, name) ? lease(take(instance, name)) : nullptr;
  };
  open.siblingFile = [this, instance](const std::string& name) { return fileToAttach(instance, name); };
}

bool EmbeddedProvider::hasDatabase(const std::string& instance, const std::string& name) const {
  if (holding_->find(instance, name)) return true;
  return !findDatabaseFile(servers_.folder(instance), name).empty();
}

std::string EmbeddedProvider::fileToAttach(const std::string& instance, const std::string& name) {
  if (!hasDatabase(instance, name)) return {};
  Idle opened = take(instance, name);
  const std::string path = opened.open->database.file().string();
  pool_->giveBack(std::move(opened));
  const auto kept = holding_->find(instance, name);
  return kept && kept->file ? kept->file.uri() : path;
}

}  // namespace qrel
