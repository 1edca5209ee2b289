#include "embedded/load/loader.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>

#include "embedded/load/collector.h"
#include "embedded/load/workCopy.h"
#include "embedded/session/session.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/system.h"
#include "platform/text.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;
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

void countObjects(LoadReport& report, sqlite::Database& database) {
  sqlite::Statement objects(database, "select count(*) from cat_objects");
  if (objects.step()) report.occupied = objects.integer(0);
}

// Runs the files of one load.
class ScriptRun {
 public:
  ScriptRun(tsql::Session& session, sqlite::Database& database, const LoadOptions& options, LoadReport& report,
            bool tryAgain)
      : session_(session),
        database_(database),
        options_(options),
        report_(report),
        collector_(report, options, session, tryAgain) {}

  bool stopped() { return collector_.stopRequested(); }

  void run(const ScriptSet& set, ScriptVariables variables) {
    for (const auto& stage : set.stages) {
      for (const ScriptSet::Script& script : stage)
        if (!stopped()) runFile(script, variables);
      if (!stopped()) collector_.tryAgain(database_);
    }
  }

 private:
  void runFile(const ScriptSet::Script& script, ScriptVariables& variables) {
    ScriptText text = readScriptText(script.file, *script.paths, variables, options_.stop, report_.remarks);
    if (stopped()) return;
    // Of a script without any command they are most likely no variables at all.
    const bool sure = text.carriedOut > 0 || !text.told.empty() || !options_.variables.empty();
    for (const ScriptText::Told& each : text.quoted) {
      if (sure)
        text.told.push_back(each);
      else
        report_.remarks.push_back({each.what.file,
                                   "line " + std::to_string(each.what.line) + ": " + each.what.firstWords +
                                       " stays as it is: " + each.what.reason,
                                   false});
    }
    std::stable_sort(text.told.begin(), text.told.end(), [](const auto& a, const auto& b) { return a.at < b.at; });
    std::size_t told = 0;
    const auto tellUpTo = [&](std::size_t line) {
      for (; told < text.told.size() && text.told[told].at <= line; ++told) collector_.skipped(text.told[told].what);
    };
    collector_.startScript(text);
    const std::vector<Batch> batches = splitBatches(text.text);
    for (std::size_t i = 0; i < batches.size() && !stopped(); ++i) {
      tellUpTo(batches[i].firstLine);
      if (!runBatch(batches[i], text, *script.paths) && i + 1 < batches.size()) {
        const ScriptText::Place place = text.placeOf(batches[i + 1].firstLine);
        collector_.skipped({place.file.string(), place.line, ":on error exit",
                            "the script has raised an error: what follows of it is not run"});
        break;
      }
    }
    tellUpTo(std::string::npos);
  }

  // False when the script is to end here.
  bool runBatch(const Batch& batch, const ScriptText& text, ScriptPaths& paths) {
    const ScriptText::Place place = text.placeOf(batch.firstLine);
    if (batch.count == 0)
      collector_.skipped(
          {place.file.string(), place.line, "GO 0", "the batch that begins here is to be run no time at all"});
    session_.setDataFiles([&paths, folder = place.file.parent_path()](std::string_view written) {
      std::string why;
      const fs::path found = paths.find(folder, written, why);
      if (found.empty())
        throw DataError(errorNumber::badSql, "Cannot bulk load because the file \"" + std::string(written) +
                                                 "\" could not be opened: below the script's folder it " + why + ".");
      return found;
    });
    for (int turn = 0; turn < batch.count && !stopped(); ++turn) {
      collector_.startBatch(batch.firstLine);
      session_.run(batch.text, &collector_);
    }
    const auto lines = static_cast<std::size_t>(std::count(batch.text.begin(), batch.text.end(), '\n'));
    return !collector_.raised || !text.exitsOnError(batch.firstLine + lines);
  }

  tsql::Session& session_;
  sqlite::Database& database_;
  const LoadOptions& options_;
  LoadReport& report_;
  Collector collector_;
};

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

  void run(const ScriptSet& files) {
    try {
      if (!findPlace() || stopped()) return;
      WorkCopy copy(target_, servers_.unfinished());
      copy_ = copy.path();
      if (!copy.fill(!options_.replace, options_.stop)) report_.stopped = true;
      if (!report_.stopped && options_.onlyIntoEmpty && !options_.replace) lookForObjects(copy);
      if (report_.occupied > 0) return;
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

  void lookForObjects(const WorkCopy& copy) {
    sqlite::Database database(copy.path(), sqlite::OpenMode::ReadOnly);
    countObjects(report_, database);
  }

  ScriptVariables variables(const ScriptSet& files) const {
    ScriptVariables all = options_.variables;
    all.insert(all.end(), files.variables.begin(), files.variables.end());
    const std::string name = EmbeddedServers::databaseFileIn(folder_, database_).stem().string();
    for (const auto& [known, value] : {std::pair("SQLCMDDBNAME", name), {"SQLCMDSERVER", instance_}})
      all.emplace_back(known, value);
    // A project's scripts may name their database in this way.
    if (!files.variables.empty() || files.stages.size() > 1) all.emplace_back("DatabaseName", name);
    return all;
  }

  void runScripts(const WorkCopy& copy, const ScriptSet& files) {
    const tsql::ServerFacts server = facts();
    int major = 0;
    std::from_chars(server.productVersion.data(), server.productVersion.data() + server.productVersion.size(), major);
    const auto open = std::make_shared<tsql::OpenDatabase>(copy.path(), server, major, sqlite::OpenMode::ReadWrite);
    open->database.stopAsked = &options_.stop;
    open->database.execute("pragma synchronous = off; pragma locking_mode = exclusive; begin");
    const Contents before = contentsOf(open->database);
    tsql::Session session(open);
    ScriptRun run(session, open->database, options_, report_, files.count() > 1);
    run.run(files, variables(files));
    if (run.stopped()) return;
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
  const ScriptSet files = scriptSet(paths, options.stop, report.remarks);
  Load(servers, instance, database, options, report).run(files);
  return report;
}

}  // namespace qrel
