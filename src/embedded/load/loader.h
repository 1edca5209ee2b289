// Loading T-SQL scripts into a database of an embedded instance.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/instance/instances.h"
#include "embedded/load/batches.h"
#include "embedded/load/loadLosses.h"
#include "embedded/load/scriptSet.h"

namespace qrel {

struct LoadReport {
  std::int64_t tables = 0, procedures = 0, functions = 0, views = 0, triggers = 0, relationships = 0, indexes = 0,
               types = 0, sequences = 0, rows = 0;
  // What became of all statements that were met: statements() is the sum.
  std::int64_t statementsMade = 0, statementsRan = 0, statementsWithoutEffect = 0, statementsSkipped = 0,
               statementsFailed = 0;
  std::int64_t statements() const {
    return statementsMade + statementsRan + statementsWithoutEffect + statementsSkipped + statementsFailed;
  }
  // Not understood; understood and refused; in order. Beyond mostListed entries each, statements are counted only.
  static constexpr std::size_t mostListed = 10000;
  std::vector<SkippedStatement> skipped;
  std::vector<SkippedStatement> failed;
  // What scripts have printed, as `firstWords`, with its place. Beyond mostMessages texts they are counted only.
  static constexpr std::size_t mostMessages = 100;
  std::vector<SkippedStatement> messages;
  std::int64_t messageCount = 0;
  std::vector<LoadRemark> remarks;  // on files and folders
  bool stopped = false;
  // Not 0: the database holds so many objects, and the load was to go into an empty one: nothing was changed.
  std::int64_t occupied = 0;

  // What of the scripts isn't in the database, and whether there is such a thing.
  LoadLosses losses() const;
  bool incomplete() const;
};

struct LoadOptions {
  // An existing database is emptied first.
  bool replace = false;
  // Without `replace`, a database that holds objects is left as it is.
  bool onlyIntoEmpty = false;
  // The server's product version from this load on; empty: as it is, or the default one for a new server.
  std::string productVersion;
  // Told now and then where the load stands.
  std::function<void(const std::string& file, std::size_t line)> progress;
  // Asked often, also within a statement; true ends the load, which then leaves everything as it was.
  std::function<bool()> stop;
  // Told once when another process loads into the same database and is waited for, and how long at most.
  std::function<void()> waiting;
  std::chrono::milliseconds waitAtMost{std::chrono::minutes(2)};
  // sqlcmd $(name), on top of the script's :setvar.
  std::vector<std::pair<std::string, std::string>> variables;
};

// Loads the files of scriptSet in order into a database of a server, which is made when it isn't there. USE, CREATE
// DATABASE and DROP DATABASE of the script don't lead elsewhere: everything goes into `database`. An existing database
// without `replace` is added to, or left alone with `onlyIntoEmpty`. Work goes to a copy beside the database that takes
// its place when all files have run: a failure, a full disk, a stop or a killed run leaves the database, its server's
// version and the list of servers as they were. Only one load at a time works on a database; others wait. With several
// files, what a statement of an earlier file misses may stand in a later one: such statements are tried again at the
// end, what makes objects before what changes rows, and only those that still fail are told, with their last reason.
// Files may be script files, folders of them and database projects. Raises RuntimeError or DataError with path and
// reason for files that can't be read or written.
LoadReport loadScripts(EmbeddedServers& servers, std::string_view instance, std::string_view database,
                       const std::vector<std::filesystem::path>& paths, const LoadOptions& options);

}  // namespace qrel
