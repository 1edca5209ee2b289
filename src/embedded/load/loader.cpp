#include "embedded/load/loader.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <unordered_map>

#include "embedded/load/workCopy.h"
#include "embedded/session/session.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/system.h"
#include "platform/text.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;
using tsql::StatementOutcome;

constexpr std::int64_t statementsBetweenProgress = 64;
// Texts of statements that are kept for another try, in bytes; those beyond stay refused.
constexpr std::size_t mostPendingBytes = std::size_t{256} << 20;

// What a database holds, for telling afterwards what is new.
struct Contents {
  std::set<std::int64_t> objects;
  std::set<std::int64_t> types;
  std::set<std::pair<std::int64_t, std::string>> indexes;
};

Contents contentsOf(sqlite::Database& database) {
  Contents contents;
  sqlite::Statement objects(database, "select id from cat_objects");
  while (objects.step()) contents.objects.insert(objects.integer(0));
  sqlite::Statement types(database, "select xusertype from cat_types");
  while (types.step()) contents.types.insert(types.integer(0));
  sqlite::Statement indexes(
      database, "select object_id, name from cat_indexes where kind not in ('PK', 'UQ', 'ST') and object_id < " +
                    std::to_string(tsql::firstTableTypeObject));
  while (indexes.step()) contents.indexes.emplace(indexes.integer(0), indexes.text(1));
  return contents;
}

void countNew(LoadReport& report, sqlite::Database& database, const Contents& before) {
  const std::map<std::string, std::int64_t*, std::less<>> counters = {
      {"U", &report.tables},     {"P", &report.procedures},    {"FN", &report.functions},
      {"IF", &report.functions}, {"TF", &report.functions},    {"V", &report.views},
      {"TR", &report.triggers},  {"F", &report.relationships}, {"SO", &report.sequences},
  };
  sqlite::Statement objects(database, "select id, xtype from cat_objects");
  while (objects.step()) {
    const auto counter = counters.find(objects.text(1));
    if (counter != counters.end() && before.objects.count(objects.integer(0)) == 0) ++*counter->second;
  }
  const Contents after = contentsOf(database);
  for (const auto type : after.types) report.types += before.types.count(type) == 0;
  for (const auto& index : after.indexes) report.indexes += before.indexes.count(index) == 0;
}

// A statement that failed because something was missing which a later file may make.
struct Pending {
  std::size_t entry = 0;  // its place in LoadReport::failed; behind the last one when it isn't listed
  std::string text;
  std::int64_t times = 1;
};

// Collects what becomes of the statements of one file after the other.
class Collector : public tsql::BatchListener {
 public:
  Collector(LoadReport& report, const LoadOptions& options, bool tryAgain)
      : report_(report), options_(options), tryAgain_(tryAgain) {}

  void statementDone(const StatementOutcome& outcome) override {
    const std::size_t line = firstLine_ + outcome.line - 1;
    if (options_.progress && report_.statements() % statementsBetweenProgress == 0) options_.progress(file_, line);
    if (outcome.kind == StatementOutcome::Kind::Skipped) {
      skipped({file_, line, outcome.firstWords, outcome.what});
    } else if (outcome.kind == StatementOutcome::Kind::Failed) {
      ++report_.statementsFailed;
      const std::size_t entry = note(report_.failed, "f", {file_, line, outcome.firstWords, outcome.what});
      if (tryAgain_ && mayComeLater(outcome)) keep(entry, outcome.text);
    } else {
      count(report_, outcome.kind);
    }
  }
  bool useDatabase(const std::string&) override { return true; }
  bool stopRequested() override {
    if (!report_.stopped && options_.stop && options_.stop()) report_.stopped = true;
    return report_.stopped;
  }

  static void count(LoadReport& report, StatementOutcome::Kind kind) {
    ++(kind == StatementOutcome::Kind::Made  ? report.statementsMade
       : kind == StatementOutcome::Kind::Ran ? report.statementsRan
                                             : report.statementsWithoutEffect);
  }
  void startFile(std::string name) { file_ = std::move(name); }
  void startBatch(std::size_t line) {
    firstLine_ = line;
    if (options_.progress) options_.progress(file_, line);
  }
  void skipped(SkippedStatement statement) {
    ++report_.statementsSkipped;
    note(report_.skipped, "s", std::move(statement));
  }

  std::vector<Pending> pending;

 private:
  // Counts the statement with its likes, or lists it; its place in the list.
  std::size_t note(std::vector<SkippedStatement>& list, const char* kind, SkippedStatement statement) {
    std::string key = kind;
    for (const std::string& part : {statement.file, std::to_string(statement.line), statement.firstWords})
      key.append(part) += '\0';
    key += statement.reason;
    if (const auto found = places_.find(key); found != places_.end()) {
      ++list[found->second].times;
      return found->second;
    }
    const std::size_t place = list.size();
    if (place >= LoadReport::mostListed) return place;
    list.push_back(std::move(statement));
    places_.emplace(std::move(key), place);
    return place;
  }
  static bool mayComeLater(const StatementOutcome& outcome) {
    const auto startsWith = [&](std::string_view word) {
      return equalNoCase(std::string_view(outcome.firstWords).substr(0, word.size()), word);
    };
    return outcome.errorNumber == errorNumber::invalidObjectName &&
           (startsWith("create") || startsWith("alter") || startsWith("insert"));
  }
  void keep(std::size_t entry, const std::string& text) {
    if (!pending.empty() && pending.back().entry == entry && pending.back().text == text) {
      ++pending.back().times;
    } else if (pendingBytes_ + text.size() <= mostPendingBytes) {
      pendingBytes_ += text.size() + sizeof(Pending);
      pending.push_back({entry, text});
    }
  }

  LoadReport& report_;
  const LoadOptions& options_;
  bool tryAgain_;
  std::string file_;
  std::size_t firstLine_ = 1;
  std::size_t pendingBytes_ = 0;
  std::unordered_map<std::string, std::size_t> places_;
};

// Notices whether everything went well.
class Attempt : public tsql::BatchListener {
 public:
  explicit Attempt(Collector& collector) : collector_(collector) {}
  void statementDone(const StatementOutcome& outcome) override {
    good = good && outcome.kind != StatementOutcome::Kind::Failed && outcome.kind != StatementOutcome::Kind::Skipped;
    kind = outcome.kind;
  }
  bool useDatabase(const std::string&) override { return true; }
  bool stopRequested() override { return collector_.stopRequested(); }
  bool good = true;
  StatementOutcome::Kind kind = StatementOutcome::Kind::Ran;

 private:
  Collector& collector_;
};

// Tries what has failed for want of something else, again and again while that helps.
void retry(tsql::Session& session, Collector& collector, LoadReport& report) {
  for (bool helps = true; helps && !report.stopped;) {
    helps = false;
    for (Pending& each : collector.pending) {
      while (each.times > 0 && !collector.stopRequested()) {
        Attempt attempt(collector);
        session.run(each.text, &attempt);
        if (!attempt.good || report.stopped) break;
        helps = true;
        --each.times;
        --report.statementsFailed;
        Collector::count(report, attempt.kind);
        if (each.entry < report.failed.size()) --report.failed[each.entry].times;
      }
    }
  }
  std::erase_if(report.failed, [](const SkippedStatement& each) { return each.times == 0; });
}

bool mayUseSqlcmd(std::string_view script) {
  if (script.find("$(") != std::string_view::npos) return true;
  for (std::size_t at = 0; (at = script.find_first_of(":!", at)) != std::string_view::npos; ++at) {
    std::size_t before = at;
    while (before > 0 && (script[before - 1] == ' ' || script[before - 1] == '\t')) --before;
    if (before == 0 || script[before - 1] == '\n' || script[before - 1] == '\r') return true;
  }
  return false;
}

void loadFile(const fs::path& file, tsql::Session& session, Collector& collector, LoadReport& report,
              const std::function<bool()>& stop, std::vector<std::pair<std::string, std::string>>& variables) {
  std::string script = readScript(file, stop, report.remarks);
  if (collector.stopRequested()) return;
  collector.startFile(file.string());
  if (mayUseSqlcmd(script)) {
    std::vector<SkippedStatement> unknown;
    script = applySqlcmd(script, variables, unknown);
    for (SkippedStatement& each : unknown) {
      each.file = file.string();
      collector.skipped(std::move(each));
    }
  }
  if (collector.stopRequested()) return;
  for (const Batch& batch : splitBatches(script)) {
    if (batch.count == 0)
      collector.skipped(
          {file.string(), batch.firstLine, "GO 0", "the batch that begins here is to be run no time at all"});
    for (int turn = 0; turn < batch.count && !collector.stopRequested(); ++turn) {
      collector.startBatch(batch.firstLine);
      session.run(batch.text, &collector);
    }
  }
}

// One load from the search for its place to the end.
class Load {
 public:
  Load(EmbeddedServers& servers, std::string_view instance, std::string_view database, const LoadOptions& options,
       LoadReport& report)
      : servers_(servers), instance_(instance), database_(database), options_(options), report_(report) {
    servers_.unfinished().beginLoad();
  }
  ~Load() { servers_.unfinished().endLoad(); }
  Load(const Load&) = delete;
  Load& operator=(const Load&) = delete;

  void run(const std::vector<fs::path>& files) {
    try {
      if (!findPlace() || stopped()) return;
      WorkCopy copy(target_, servers_.unfinished());
      copy_ = copy.path();
      if (!copy.fill(!options_.replace, options_.stop)) report_.stopped = true;
      if (!report_.stopped) runScripts(copy, files);
      if (!report_.stopped && !copy.prepare(options_.stop)) report_.stopped = true;
      if (!report_.stopped) takePlace(copy);
    } catch (RuntimeError& error) {
      if (error.number == errorNumber::cancelled && stopped()) return;
      // The person knows the database's file and the server's folder, not where a load keeps them meanwhile.
      if (!copy_.empty()) error.description = replaceAll(error.description, copy_.string(), target_.string());
      if (fresh_)
        error.description = replaceAll(error.description, fresh_->folder().string(), fresh_->target().string());
      throw;
    }
    if (!report_.stopped && !fresh_ && !options_.productVersion.empty()) changeVersion();
  }

 private:
  bool stopped() {
    if (options_.stop && options_.stop()) report_.stopped = true;
    return report_.stopped;
  }

  // Finds or makes the server's folder and waits until the database is this load's alone; false when stopped.
  bool findPlace() {
    const LockWait wait{options_.waitAtMost, options_.stop, options_.waiting};
    while (true) {
      if (!servers_.exists(instance_)) {
        const std::string version = options_.productVersion.empty() ? defaultProductVersion : options_.productVersion;
        fresh_ = NewInstance::begin(servers_, instance_, version, wait);
        if (!fresh_ && stopped()) return false;
        if (!fresh_) continue;
      }
      folder_ = fresh_ ? fresh_->folder() : servers_.folder(instance_);
      target_ = files::linkTarget(EmbeddedServers::databaseFileIn(folder_, database_));
      if (fresh_ && fresh_->hidden()) return true;  // nobody else can come
      checkFolder(target_.parent_path());
      lock_ = std::make_unique<WaitedLock>(databaseLock(target_), servers_.unfinished());
      if (!lock_->wait(wait, "The database '" + instance_ + "/" + database_ + "'")) {
        report_.stopped = true;
        return false;
      }
      // Another one may have made it under a name in other case.
      if (files::linkTarget(EmbeddedServers::databaseFileIn(folder_, database_)) == target_) return true;
      lock_.reset();
    }
  }

  static void checkFolder(const fs::path& folder) {
    const system::Error reason = system::checkFolderWritable(folder);
    if (reason == 0) return;
    throw RuntimeError(errorNumber::pathAccess,
                       "The folder '" + folder.string() + "' cannot be written, and a load " +
                           "needs a file of its own there: " + std::generic_category().message(reason) + ".");
  }

  tsql::ServerFacts facts() const {
    tsql::ServerFacts facts;
    facts.server = instance_;
    facts.database = EmbeddedServers::databaseFileIn(folder_, database_).stem().string();
    facts.productVersion = options_.productVersion;
    if (facts.productVersion.empty())
      facts.productVersion = EmbeddedServers::versionIn(folder_).value_or(defaultProductVersion);
    facts.folder = folder_;
    return facts;
  }

  void runScripts(const WorkCopy& copy, const std::vector<fs::path>& files) {
    const tsql::ServerFacts server = facts();
    int major = 0;
    std::from_chars(server.productVersion.data(), server.productVersion.data() + server.productVersion.size(), major);
    const auto open = std::make_shared<tsql::OpenDatabase>(copy.path(), server, major, sqlite::OpenMode::ReadWrite);
    open->database.stopAsked = &options_.stop;
    open->database.execute("pragma synchronous = off; pragma locking_mode = exclusive; begin");
    const Contents before = contentsOf(open->database);
    tsql::Session session(open);
    Collector collector(report_, options_, files.size() > 1);
    auto variables = options_.variables;
    for (const fs::path& file : files)
      if (!collector.stopRequested()) loadFile(file, session, collector, report_, options_.stop, variables);
    if (!collector.stopRequested()) retry(session, collector, report_);
    if (collector.stopRequested()) return;
    session.commitAll();
    report_.rows = session.rowsInserted();
    countNew(report_, open->database, before);
    open->database.execute("commit");
  }

  void takePlace(WorkCopy& copy) {
    UnfinishedWork& unfinished = servers_.unfinished();
    const auto finishing = unfinished.finishing();
    if (stopped()) return;
    copy.takePlace();
    if (fresh_) fresh_->keep();
    if (!servers_.isTemporary(instance_)) unfinished.setChanged();
  }

  void changeVersion() {
    if (servers_.productVersion(instance_) == options_.productVersion) return;
    try {
      servers_.setVersion(instance_, options_.productVersion);
    } catch (RuntimeError& error) {
      error.description = "The scripts have been loaded, but the server keeps its version " +
                          servers_.productVersion(instance_) + ": " + error.description;
      throw;
    }
  }

  EmbeddedServers& servers_;
  const std::string instance_, database_;
  const LoadOptions& options_;
  LoadReport& report_;
  std::unique_ptr<NewInstance> fresh_;
  std::unique_ptr<WaitedLock> lock_;
  fs::path folder_, target_, copy_;
};

}  // namespace

bool LoadReport::incomplete() const {
  return statementsSkipped > 0 || statementsFailed > 0 ||
         std::any_of(remarks.begin(), remarks.end(), [](const LoadRemark& each) { return each.lost; });
}

LoadReport loadScripts(EmbeddedServers& servers, std::string_view instance, std::string_view database,
                       const std::vector<fs::path>& paths, const LoadOptions& options) {
  LoadReport report;
  const std::vector<fs::path> files = scriptFiles(paths, report.remarks);
  Load(servers, instance, database, options, report).run(files);
  return report;
}

}  // namespace qrel
