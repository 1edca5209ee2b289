// Loading T-SQL scripts into a database of an embedded instance.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/embedded/batches.h"
#include "platform/data/embedded/instances.h"

namespace qrel {

struct LoadReport {
  std::int64_t tables = 0, procedures = 0, functions = 0, views = 0, triggers = 0, relationships = 0, indexes = 0,
               types = 0, sequences = 0, rows = 0;
  std::int64_t statements = 0;
  std::vector<SkippedStatement> skipped;  // not understood, in order
  std::vector<SkippedStatement> failed;   // understood and refused, in order
  bool stopped = false;
};

struct LoadOptions {
  // An existing database is emptied first.
  bool replace = false;
  // Told now and then where the load stands.
  std::function<void(const std::string& file, std::size_t line)> progress;
  // Asked between statements; true ends the load, which then leaves the database as it was.
  std::function<bool()> stop;
  // sqlcmd $(name), on top of the script's :setvar.
  std::vector<std::pair<std::string, std::string>> variables;
};

// Loads files in the given order, folders as their .sql files in name order (one level). USE, CREATE DATABASE and DROP
// DATABASE of the script don't lead elsewhere: everything goes into `database`. An existing database without `replace`
// is added to. Work goes to a copy beside the database that takes its place when all files have run: a failure, a full
// disk or a killed run leaves the database as it was. With several files, what a statement of an earlier file misses
// may stand in a later one: such statements are tried again at the end, and only those that still fail are told. Raises
// RuntimeError or DataError with path and reason for files that can't be read or written.
LoadReport loadScripts(EmbeddedServers& servers, std::string_view instance, std::string_view database,
                       const std::vector<std::filesystem::path>& paths, const LoadOptions& options);

}  // namespace qrel
