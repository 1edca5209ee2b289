// Loading T-SQL scripts into a database of an embedded instance.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/embedded/instances.h"

namespace qrel {

// A statement that was skipped or failed.
struct SkippedStatement {
  std::string file;
  std::size_t line = 1;  // 1-based in the file
  std::string firstWords;
  std::string reason;
};

struct LoadReport {
  std::int64_t tables = 0, procedures = 0, functions = 0, views = 0, triggers = 0, relationships = 0, indexes = 0,
               types = 0, sequences = 0, rows = 0;
  std::int64_t statements = 0;
  // What became of them; with those skipped and failed it adds up to `statements`.
  std::int64_t made = 0, ran = 0, withoutEffect = 0;
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

// One batch of a script: its text, where it begins, how often it runs.
struct Batch {
  std::string_view text;
  std::size_t firstLine = 1;  // 1-based in the file
  int count = 1;              // 0 behind "GO 0"
};
// Splits at GO (alone on its line, any case, optional count, optional semicolon or line comment behind it), not inside
// strings, brackets or block comments. One that is never closed ends at a GO line all the same, so that the batch which
// opens it is lost alone: whoever runs that finds something open at its end.
std::vector<Batch> splitBatches(std::string_view script);
// Replaces $(name) by its value and carries out :setvar; other sqlcmd commands (:r, :on error ...) are blanked and told
// in `unknown` with their lines. An undefined $(name) stays as it is. Line count and line ends stay.
std::string applySqlcmd(std::string_view script, std::vector<std::pair<std::string, std::string>>& variables,
                        std::vector<SkippedStatement>& unknown);

}  // namespace qrel
