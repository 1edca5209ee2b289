#include "platform/data/prefetcher.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <utility>

#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::size_t mostThreads = 32;
constexpr std::size_t mostHints = 2048;                      // waiting, running and done
constexpr std::size_t mostBytes = std::size_t{32} << 20;     // of all results that are kept
constexpr std::size_t largestResult = std::size_t{4} << 20;  // of one, unless the program holds it as a whole anyway
constexpr std::size_t rowsAtOnce = 256;
constexpr auto betweenLooks = std::chrono::milliseconds(5);
constexpr auto mostWaitForEnd = std::chrono::milliseconds(100);

thread_local const std::function<bool()>* stopOfThread = nullptr;

std::string keyOf(const std::string& connectionString, const std::string& sql, int timeoutSeconds) {
  return connectionString + '\n' + std::to_string(timeoutSeconds) + '\n' + sql;
}

// Rows that are here already.
class RowsAhead : public RowSource {
 public:
  explicit RowsAhead(std::unique_ptr<ReadAhead> result) : result_(std::move(result)) {}
  const std::vector<ColumnInfo>& columns() const override { return result_->columns; }

  std::size_t fetch(ColumnStore& store, std::size_t most) override {
    const ColumnStore& cells = result_->cells;
    std::size_t count = 0;
    for (; count < most && next_ < cells.rowCount(); ++count, ++next_)
      for (std::size_t column = 0; column < result_->columns.size(); ++column)
        append(store, column, cells.cell(column, next_));
    return count;
  }
  void rewind() override { next_ = 0; }
  std::int64_t count() override { return static_cast<std::int64_t>(result_->cells.rowCount()); }
  bool takeAll(ColumnStore& store) override {
    if (next_ > 0) return false;
    store = std::move(result_->cells);
    return true;
  }

 private:
  static void append(ColumnStore& store, std::size_t column, const Cell& cell) {
    if (cell.null) return store.appendNull(column);
    switch (cell.type) {
      case DataType::Integer:
      case DataType::Boolean:
        return store.appendInteger(column, cell.integer, cell.type);
      case DataType::Double:
        return store.appendDouble(column, cell.real);
      default:
        return store.appendText(column, cell.type, cell.text);
    }
  }

  std::unique_ptr<ReadAhead> result_;
  std::size_t next_ = 0;
};

// Whether the values are still those that came: a store makes texts of a column that gets values of two types, which a
// record set that reads by windows does for each window by itself.
bool keptAsTheyCame(const ReadAhead& result) {
  for (std::size_t column = 0; column < result.columns.size(); ++column) {
    const DataType declared = result.columns[column].type;
    const DataType held = result.cells.type(column);
    if (held != declared && (declared != DataType::Empty || held == DataType::Text)) return false;
  }
  return true;
}

}  // namespace

const std::function<bool()>* stopOfPrefetchThread() { return stopOfThread; }

// The connections for one connection string that wait for the next query.
struct Prefetcher::Road {
  Opening opening;
  std::size_t running = 0;
  std::size_t known = 0;  // jobs that are not Gone
  bool closed = false;
  std::vector<std::unique_ptr<ProviderConnection>> idle;
};

struct Prefetcher::Job {
  enum class Stage { Waiting, Running, Done, Gone };  // Gone: failed or forgotten

  PrefetchHint hint;
  std::string key;
  std::shared_ptr<Road> road;
  std::size_t lastStep = 0;
  Stage stage = Stage::Waiting;
  std::atomic<bool> stop = false;
  std::unique_ptr<ReadAhead> result;
  std::size_t bytes = 0;
};

// What the threads share with the program's thread.
struct Prefetcher::State {
  using JobPtr = std::shared_ptr<Job>;

  std::mutex mutex;
  std::condition_variable wake;     // there may be something to do
  std::condition_variable changed;  // a job has ended
  std::deque<JobPtr> waiting;
  std::unordered_map<std::string, JobPtr> jobs;  // by key: those that are not Gone
  std::size_t running = 0;                       // queries on a thread, forgotten ones counted in
  std::size_t bytes = 0;
  std::size_t step = 0;
  bool quit = false;
  std::vector<std::thread> threads;

  // All with the lock held.
  void add(PrefetchHint hint, std::shared_ptr<Road> road, std::size_t lastStep, bool first);
  void drop(const JobPtr& job);
  JobPtr nextJob();
  void finish(const JobPtr& job, std::unique_ptr<ReadAhead> result, std::vector<PrefetchHint> next);

  void loop();
  static std::unique_ptr<ReadAhead> run(Job& job, ProviderConnection& connection);
};

void Prefetcher::State::add(PrefetchHint hint, std::shared_ptr<Road> road, std::size_t lastStep, bool first) {
  std::string key = keyOf(hint.connectionString, hint.sql, hint.timeoutSeconds);
  if (const auto known = jobs.find(key); known != jobs.end()) {
    known->second->lastStep = std::max(known->second->lastStep, lastStep);
    return;
  }
  if (jobs.size() >= mostHints) return;
  auto job = std::make_shared<Job>();
  job->hint = std::move(hint);
  job->key = key;
  job->road = std::move(road);
  ++job->road->known;
  job->lastStep = lastStep;
  if (first)
    waiting.push_front(job);
  else
    waiting.push_back(job);
  jobs.emplace(std::move(key), std::move(job));
  wake.notify_one();
}

void Prefetcher::State::drop(const JobPtr& job) {
  --job->road->known;
  job->stop = true;
  job->stage = Job::Stage::Gone;
  job->result.reset();
  bytes -= std::exchange(job->bytes, 0);
  jobs.erase(job->key);
}

// The first one whose server has a connection left. Beyond what may be kept only what the program holds anyway is read.
Prefetcher::State::JobPtr Prefetcher::State::nextJob() {
  for (auto each = waiting.begin(); each != waiting.end();) {
    if ((*each)->stage != Job::Stage::Waiting) {
      each = waiting.erase(each);
      continue;
    }
    const bool room = bytes < mostBytes || (*each)->hint.whole;
    if (room && (*each)->road->running < (*each)->road->opening.most) {
      JobPtr job = std::move(*each);
      waiting.erase(each);
      return job;
    }
    ++each;
  }
  return {};
}

void Prefetcher::State::loop() {
  std::unique_lock lock(mutex);
  while (true) {
    JobPtr job;
    wake.wait(lock, [&] { return quit || (job = nextJob()); });
    if (quit) return;
    Road& road = *job->road;
    job->stage = Job::Stage::Running;
    ++running;
    ++road.running;
    std::unique_ptr<ProviderConnection> connection;
    if (!road.idle.empty()) {
      connection = std::move(road.idle.back());
      road.idle.pop_back();
    }
    lock.unlock();

    const std::function<bool()> stopAsked = [&job] { return job->stop.load(std::memory_order_relaxed); };
    stopOfThread = &stopAsked;
    std::unique_ptr<ReadAhead> result;
    std::vector<PrefetchHint> next;
    try {
      if (!connection) connection = road.opening.open();
      result = run(*job, *connection);
      if (result && job->hint.next) next = job->hint.next(*result);
    } catch (...) {
      // The program's own query will tell what is wrong; on a connection of its own, for this one may be the reason.
      connection.reset();
      result.reset();
      next.clear();
    }
    stopOfThread = nullptr;

    lock.lock();
    --running;
    --road.running;
    if (connection && !road.closed) road.idle.push_back(std::move(connection));
    finish(job, std::move(result), std::move(next));
    if (connection) {
      lock.unlock();
      connection.reset();
      lock.lock();
    }
    changed.notify_all();
    wake.notify_one();  // the server has a connection left again
  }
}

// Empty: stopped, or too much to be kept.
std::unique_ptr<ReadAhead> Prefetcher::State::run(Job& job, ProviderConnection& connection) {
  CommandRequest request;
  request.text = job.hint.sql;
  request.timeoutSeconds = job.hint.timeoutSeconds;
  if (job.stop) return {};
  const CommandResult answer = connection.execute(request);
  if (!answer.rows) return {};
  const std::vector<ColumnInfo>& columns = answer.rows->columns();
  auto result = std::make_unique<ReadAhead>(ReadAhead{columns, ColumnStore(columns)});
  while (answer.rows->fetch(result->cells, rowsAtOnce) > 0) {
    if (job.stop) return {};
    if (!job.hint.whole && result->cells.memoryUsed() > largestResult) return {};
  }
  if (!keptAsTheyCame(*result)) result.reset();
  return result;
}

void Prefetcher::State::finish(const JobPtr& job, std::unique_ptr<ReadAhead> result, std::vector<PrefetchHint> next) {
  if (job->stage != Job::Stage::Running) return;  // forgotten meanwhile
  if (!result) return drop(job);
  job->result = std::move(result);
  job->bytes = job->result->cells.memoryUsed();
  bytes += job->bytes;
  job->stage = Job::Stage::Done;
  for (auto each = next.rbegin(); each != next.rend(); ++each) add(std::move(*each), job->road, job->lastStep, true);
}

Prefetcher::Prefetcher(std::function<Opening(const std::string&)> opening, const std::function<bool()>& stopAsked)
    : opening_(std::move(opening)), stopAsked_(stopAsked), most_(mostThreads), state_(std::make_shared<State>()) {}

Prefetcher::~Prefetcher() {
  end();
  {
    const std::lock_guard lock(state_->mutex);
    state_->quit = true;
  }
  state_->wake.notify_all();
  for (std::thread& thread : state_->threads) thread.join();
}

std::shared_ptr<void> Prefetcher::begin() {
  if (auto alive = token_.lock()) return alive;
  if (most_ == 0) return {};
  std::shared_ptr<void> token(this, [](void* self) { static_cast<Prefetcher*>(self)->end(); });
  token_ = token;
  return token;
}

bool Prefetcher::active() const { return !token_.expired(); }

std::shared_ptr<Prefetcher::Road> Prefetcher::roadTo(const std::string& connectionString) {
  std::shared_ptr<Road>& road = roads_[connectionString];
  if (road) return road;
  road = std::make_shared<Road>();
  road->opening = opening_(connectionString);
  road->opening.most = std::min(road->opening.most, most_);
  return road;
}

void Prefetcher::hint(PrefetchHint hint) {
  CommandRequest request;
  request.text = hint.sql;
  if (!active() || !isQuery(request)) return;
  std::shared_ptr<Road> road = roadTo(hint.connectionString);
  if (road->opening.most == 0) return;
  const std::lock_guard lock(state_->mutex);
  const std::size_t threads = std::min({road->opening.most, most_, mostThreads});
  while (state_->threads.size() < threads) state_->threads.emplace_back([state = state_.get()] { state->loop(); });
  const std::size_t lastStep = state_->step + hint.keepSteps;
  state_->add(std::move(hint), std::move(road), lastStep, false);
}

void Prefetcher::nextStep() {
  if (!active()) return;
  const std::lock_guard lock(state_->mutex);
  ++state_->step;
  std::vector<State::JobPtr> old;
  for (const auto& [key, job] : state_->jobs)
    if (job->lastStep < state_->step) old.push_back(job);
  for (const State::JobPtr& job : old) state_->drop(job);
  if (!old.empty()) state_->wake.notify_all();
}

bool Prefetcher::knows(const std::string& connectionString) const {
  if (!active()) return false;
  const std::lock_guard lock(state_->mutex);
  const auto road = roads_.find(connectionString);
  return road != roads_.end() && road->second->known > 0;
}

std::unique_ptr<RowSource> Prefetcher::take(const std::string& connectionString, const CommandRequest& request) {
  if (!active() || request.isProcedure || !request.parameters.empty()) return {};
  std::unique_lock lock(state_->mutex);
  const auto found = state_->jobs.find(keyOf(connectionString, request.text, request.timeoutSeconds));
  if (found == state_->jobs.end()) return {};
  const State::JobPtr job = found->second;
  // What nobody has begun the program does itself at once.
  if (job->stage == Job::Stage::Waiting) {
    state_->drop(job);
    return {};
  }
  while (job->stage == Job::Stage::Running) {
    state_->changed.wait_for(lock, betweenLooks, [&] { return job->stage != Job::Stage::Running; });
    if (job->stage != Job::Stage::Running || !stopAsked_) continue;
    lock.unlock();
    const bool stopped = stopAsked_();
    lock.lock();
    if (!stopped) continue;
    if (job->stage != Job::Stage::Gone) state_->drop(job);
    throw DataError(errorNumber::cancelled, "Operation canceled.", "HY008", request.text);
  }
  if (job->stage != Job::Stage::Done) return {};
  std::unique_ptr<ReadAhead> result = std::move(job->result);
  state_->drop(job);
  state_->wake.notify_all();  // there may be room again
  lock.unlock();
  return std::make_unique<RowsAhead>(std::move(result));
}

void Prefetcher::forget() {
  const std::lock_guard lock(state_->mutex);
  while (!state_->jobs.empty()) state_->drop(State::JobPtr(state_->jobs.begin()->second));
  state_->waiting.clear();
}

// A query that doesn't end at once is left to its thread, which then closes the connection by itself.
void Prefetcher::end() {
  forget();
  std::vector<std::unique_ptr<ProviderConnection>> closing;
  {
    std::unique_lock lock(state_->mutex);
    for (auto& [text, road] : roads_) {
      road->closed = true;
      for (auto& connection : road->idle) closing.push_back(std::move(connection));
      road->idle.clear();
    }
    state_->changed.wait_for(lock, mostWaitForEnd, [&] { return state_->running == 0; });
  }
  roads_.clear();
}

bool Prefetcher::isQuery(const CommandRequest& request) {
  constexpr std::string_view select = "select", into = "into";
  const std::string_view text = trimBlanks(std::string_view(request.text));
  if (request.isProcedure || !equalNoCase(text.substr(0, select.size()), select)) return false;
  // A condition that a person has typed may hold more than a condition: it is run once, and not ahead.
  if (text.find(';') != std::string_view::npos) return false;
  for (std::size_t at = 0; at + into.size() <= text.size(); ++at)
    if ((text[at] == 'i' || text[at] == 'I') && equalNoCase(text.substr(at, into.size()), into)) return false;
  return true;
}

}  // namespace qrel
