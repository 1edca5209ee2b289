// Reading ahead: queries that will be sent soon are run by threads of this layer's own, and each result is kept for the
// moment when exactly that query is asked for.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/data/columnStore.h"
#include "platform/data/provider.h"

namespace qrel {

// A result as it came, with all its rows.
struct ReadAhead {
  std::vector<ColumnInfo> columns;
  ColumnStore cells;
};

// A query that will be sent in these very words. Only one that reads is run ahead.
struct PrefetchHint {
  std::string connectionString;
  std::string sql;
  int timeoutSeconds = 30;
  // For how many steps of the caller's (Prefetcher::nextStep) after the present one the result is kept.
  std::size_t keepSteps = 0;
  // The program will hold all the rows in any case, so that a large result may be kept.
  bool whole = false;
  // What will be asked for because of the result; called by another thread, so it owns all that it works with. What it
  // gives is kept as long as this hint. May be empty.
  std::function<std::vector<PrefetchHint>(const ReadAhead&)> next{};
};

// Which thread may call what: everything here is for the program's one thread; the threads made here only run queries.
// A hint never changes what the program sees: one that fails, that is too large or that came too late is forgotten, and
// the program's own query gives the answer or tells the failure.
class Prefetcher {
 public:
  // How the threads get a connection of a connection string, and how many of them at once.
  struct Opening {
    std::function<std::unique_ptr<ProviderConnection>()> open;
    std::size_t most = 0;
  };
  // `opening` says so, called by the program's thread; `stopAsked` is the program's wish to end a command, asked while
  // it waits for a result that is on its way.
  Prefetcher(std::function<Opening(const std::string& connectionString)> opening,
             const std::function<bool()>& stopAsked);
  ~Prefetcher();
  Prefetcher(const Prefetcher&) = delete;
  Prefetcher& operator=(const Prefetcher&) = delete;

  // No more connections at once than this for each connection string's provider; 0 switches reading ahead off.
  void setMost(std::size_t most) { most_ = most; }
  // Hints are taken while something lives that begin gave. May be nested; with the last one everything is forgotten.
  std::shared_ptr<void> begin();
  bool active() const;

  void hint(PrefetchHint hint);
  // The walk has come to its next object: forgets what was kept for the ones before.
  void nextStep();
  // Whether a result is there, on its way or waited for, for this connection string.
  bool knows(const std::string& connectionString) const;
  // The rows of the query, of which the caller is the only owner; empty when they aren't to be had from here. Waits for
  // a query that runs; raises "Operation canceled" when stopAsked says so meanwhile.
  std::unique_ptr<RowSource> take(const std::string& connectionString, const CommandRequest& request);
  // Throws everything away: what is known may be older than the last change.
  void forget();

  // Whether a command is a query that changes nothing.
  static bool isQuery(const CommandRequest& request);

 private:
  struct Job;
  struct Road;
  struct State;

  std::shared_ptr<Road> roadTo(const std::string& connectionString);
  void end();

  std::function<Opening(const std::string&)> opening_;
  const std::function<bool()>& stopAsked_;
  std::size_t most_;
  std::weak_ptr<void> token_;
  std::map<std::string, std::shared_ptr<Road>> roads_;
  std::shared_ptr<State> state_;
};

// On a thread of the prefetcher: whether the query that it runs is to end. Elsewhere null.
const std::function<bool()>* stopOfPrefetchThread();

}  // namespace qrel
