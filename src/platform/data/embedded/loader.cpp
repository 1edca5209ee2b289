#include "platform/data/embedded/loader.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <map>
#include <set>

#include "platform/data/embedded/session.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;
using tsql::StatementOutcome;

constexpr std::string_view loadingMark = ".loading-";
constexpr std::int64_t statementsBetweenProgress = 64;

[[noreturn]] void fail(const fs::path& path, const std::string& what) {
  throw RuntimeError(errorNumber::pathAccess, "'" + path.string() + "' " + what);
}

std::string readBytes(const fs::path& file) {
  std::error_code error;
  const auto size = fs::file_size(file, error);
  std::ifstream in(file, std::ios::binary);
  if (error || !in) fail(file, "cannot be read: " + (error ? error.message() : std::strerror(errno)) + ".");
  std::string bytes(size, '\0');
  in.read(bytes.data(), static_cast<std::streamsize>(size));
  if (in.gcount() != static_cast<std::streamsize>(size)) fail(file, "cannot be read to its end.");
  return bytes;
}

// The files to load: those named, and the .sql files of the folders named.
std::vector<fs::path> scriptFiles(const std::vector<fs::path>& paths) {
  std::vector<fs::path> files;
  for (const fs::path& path : paths) {
    std::error_code error;
    if (!fs::exists(path, error)) fail(path, "does not exist.");
    if (!fs::is_directory(path)) {
      files.push_back(path);
      continue;
    }
    std::vector<fs::path> inside;
    for (fs::directory_iterator it(path, error), end; !error && it != end; it.increment(error))
      if (equalNoCase(it->path().extension().string(), ".sql") && !it->is_directory()) inside.push_back(it->path());
    if (error) fail(path, "cannot be read: " + error.message() + ".");
    if (inside.empty()) fail(path, "holds no .sql file.");
    std::sort(inside.begin(), inside.end(), [](const fs::path& a, const fs::path& b) {
      const int order = compareCollated(a.filename().string(), b.filename().string());
      return order != 0 ? order < 0 : a < b;
    });
    files.insert(files.end(), inside.begin(), inside.end());
  }
  return files;
}

// The copy of a database that a load works on. It goes when nobody has put it in the database's place.
class WorkCopy {
 public:
  explicit WorkCopy(fs::path target)
      : target_(std::move(target)), path_(target_.string() + std::string(loadingMark) + std::to_string(::getpid())) {
    removeLeftovers();
  }
  WorkCopy(const WorkCopy&) = delete;
  WorkCopy& operator=(const WorkCopy&) = delete;
  ~WorkCopy() { removeFiles(path_); }

  const fs::path& path() const { return path_; }

  // Starts from the database as it is, or empty.
  void fill(bool keepOld) {
    if (keepOld && fs::exists(target_)) {
      sqlite::Database from(target_, sqlite::OpenMode::ReadOnly);
      sqlite::Database into(path_, sqlite::OpenMode::Create);
      sqlite3_backup* backup = sqlite3_backup_init(into.get(), "main", from.get(), "main");
      if (!backup) into.fail(sqlite3_errcode(into.get()), "");
      sqlite3_backup_step(backup, -1);
      if (const int code = sqlite3_backup_finish(backup); code != SQLITE_OK) into.fail(code, "");
    } else {
      sqlite::Database fresh(path_, sqlite::OpenMode::Create);
      fresh.execute("pragma synchronous = off");
      tsql::Catalogue::createStorage(fresh);
    }
  }

  // Puts the copy in the database's place; it's all there or not at all.
  void takePlace() {
    flush(path_);
    std::error_code error;
    // What a program left behind that was ended in the middle of a change: it belongs to the file that goes.
    fs::remove(target_.string() + "-journal", error);
    if (error) fail(target_, "cannot be replaced: " + error.message() + ".");
    fs::rename(path_, target_, error);
    if (error) fail(target_, "cannot be replaced: " + error.message() + ".");
    flush(target_.parent_path());
  }

 private:
  static void flush(const fs::path& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) fail(path, "cannot be written: " + std::string(std::strerror(errno)) + ".");
    const int result = ::fsync(file);
    const int reason = errno;
    ::close(file);
    if (result != 0 && reason != EINVAL) fail(path, "cannot be written: " + std::string(std::strerror(reason)) + ".");
  }

  static void removeFiles(const fs::path& path) {
    std::error_code ignored;
    fs::remove(path, ignored);
    fs::remove(path.string() + "-journal", ignored);
  }

  // Copies of runs that are no more.
  void removeLeftovers() const {
    const std::string prefix = target_.filename().string() + std::string(loadingMark);
    std::error_code ignored;
    std::vector<fs::path> gone;
    for (fs::directory_iterator it(target_.parent_path(), ignored), end; !ignored && it != end; it.increment(ignored)) {
      const std::string name = it->path().filename().string();
      if (!name.starts_with(prefix)) continue;
      int process = 0;
      std::from_chars(name.data() + prefix.size(), name.data() + name.size(), process);
      const bool alive = process > 0 && process != ::getpid() && (::kill(process, 0) == 0 || errno == EPERM);
      if (!alive) gone.push_back(it->path());
    }
    for (const fs::path& path : gone) fs::remove(path, ignored);
  }

  fs::path target_;
  fs::path path_;
};

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
  sqlite::Statement indexes(database, "select object_id, name from cat_indexes where kind = 'IX'");
  while (indexes.step()) contents.indexes.emplace(indexes.integer(0), indexes.text(1));
  return contents;
}

void countNew(LoadReport& report, sqlite::Database& database, const Contents& before) {
  const std::map<std::string, std::int64_t*, std::less<>> counters = {
      {"U", &report.tables},     {"P", &report.procedures}, {"FN", &report.functions}, {"IF", &report.functions},
      {"TF", &report.functions}, {"V", &report.views},      {"TR", &report.triggers},  {"F", &report.relationships},
      {"SO", &report.sequences}, {"TT", &report.types},
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
  std::size_t failed = 0;  // its place in LoadReport::failed
  std::string text;
  bool done = false;
};

// Collects what becomes of the statements of one file after the other.
class Collector : public tsql::BatchListener {
 public:
  Collector(LoadReport& report, const LoadOptions& options) : report_(report), options_(options) {}

  void statementDone(const StatementOutcome& outcome) override {
    ++report_.statements;
    const std::size_t line = firstLine_ + outcome.line - 1;
    if (options_.progress && report_.statements % statementsBetweenProgress == 0) options_.progress(file_, line);
    const bool skipped = outcome.kind == StatementOutcome::Kind::Skipped;
    if (!skipped && outcome.kind != StatementOutcome::Kind::Failed) return;
    const bool mayComeLater =
        !skipped && outcome.errorNumber == errorNumber::invalidObjectName &&
        (startsWith(outcome, "create") || startsWith(outcome, "alter") || startsWith(outcome, "insert"));
    if (mayComeLater) pending.push_back({report_.failed.size(), outcome.text});
    (skipped ? report_.skipped : report_.failed).push_back({file_, line, outcome.firstWords, outcome.what});
  }
  bool useDatabase(const std::string&) override { return true; }
  bool stopRequested() override {
    if (!report_.stopped && options_.stop && options_.stop()) report_.stopped = true;
    return report_.stopped;
  }

  std::vector<Pending> pending;

  void startFile(std::string name) { file_ = std::move(name); }
  void startBatch(std::size_t line) {
    firstLine_ = line;
    if (options_.progress) options_.progress(file_, line);
  }

 private:
  static bool startsWith(const StatementOutcome& outcome, std::string_view word) {
    return equalNoCase(std::string_view(outcome.firstWords).substr(0, word.size()), word);
  }

  LoadReport& report_;
  const LoadOptions& options_;
  std::string file_;
  std::size_t firstLine_ = 1;
};

// Notices whether everything went well.
class Attempt : public tsql::BatchListener {
 public:
  void statementDone(const StatementOutcome& outcome) override {
    good = good && outcome.kind != StatementOutcome::Kind::Failed && outcome.kind != StatementOutcome::Kind::Skipped;
  }
  bool useDatabase(const std::string&) override { return true; }
  bool good = true;
};

// Tries what has failed for want of something else, again and again while that helps.
void retry(tsql::Session& session, std::vector<Pending>& pending, LoadReport& report) {
  for (bool helps = true; helps;) {
    helps = false;
    for (Pending& each : pending) {
      if (each.done) continue;
      Attempt attempt;
      session.run(each.text, &attempt);
      each.done = attempt.good;
      helps = helps || each.done;
    }
  }
  for (auto each = pending.rbegin(); each != pending.rend(); ++each)
    if (each->done) report.failed.erase(report.failed.begin() + static_cast<std::ptrdiff_t>(each->failed));
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
              std::vector<std::pair<std::string, std::string>>& variables) {
  std::string script = decodeText(readBytes(file));
  collector.startFile(file.string());
  if (mayUseSqlcmd(script)) {
    std::vector<SkippedStatement> unknown;
    script = applySqlcmd(script, variables, unknown);
    for (SkippedStatement& each : unknown) {
      each.file = file.string();
      report.skipped.push_back(std::move(each));
    }
  }
  for (const Batch& batch : splitBatches(script)) {
    for (int turn = 0; turn < batch.count && !collector.stopRequested(); ++turn) {
      collector.startBatch(batch.firstLine);
      session.run(batch.text, &collector);
    }
  }
}

}  // namespace

LoadReport loadScripts(EmbeddedServers& servers, std::string_view instance, std::string_view database,
                       const std::vector<fs::path>& paths, const LoadOptions& options) {
  LoadReport report;
  const std::vector<fs::path> files = scriptFiles(paths);
  const fs::path target = servers.databaseFile(instance, database);
  WorkCopy copy(target);
  copy.fill(!options.replace);
  tsql::ServerFacts facts;
  facts.server = instance;
  facts.database = target.stem().string();
  facts.productVersion = servers.productVersion(instance);
  facts.folder = servers.folder(instance);
  int major = 0;
  std::from_chars(facts.productVersion.data(), facts.productVersion.data() + facts.productVersion.size(), major);
  {
    auto open = std::make_shared<tsql::OpenDatabase>(copy.path(), facts, major, sqlite::OpenMode::ReadWrite);
    open->database.execute("pragma synchronous = off; pragma locking_mode = exclusive; begin");
    const Contents before = contentsOf(open->database);
    tsql::Session session(open);
    Collector collector(report, options);
    auto variables = options.variables;
    for (const fs::path& file : files)
      if (!report.stopped) loadFile(file, session, collector, report, variables);
    if (files.size() > 1 && !report.stopped) retry(session, collector.pending, report);
    session.commitAll();
    report.rows = session.rowsInserted();
    countNew(report, open->database, before);
    if (report.stopped) return report;
    open->database.execute("commit");
  }
  copy.takePlace();
  return report;
}

}  // namespace qrel
