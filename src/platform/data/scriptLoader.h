// Loading script files into a database, as the windows know it. What carries a load out is known to those alone who put
// the program together; where they hand nothing over, scripts can't be loaded from a window.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qrel {

struct ScriptLoadRequest {
  std::string server, database;    // both are made when they aren't there
  std::vector<std::string> paths;  // files and folders, in the order in which they run
  bool replace = false;            // an existing database is emptied first
  bool add = false;                // without `replace`: what an existing database holds is added to
};

struct ScriptLoadProgress {
  // Told now and then where the load stands; `line` is 1-based.
  std::function<void(const std::string& file, std::size_t line)> at;
  // Asked often; true ends the load, which then leaves everything as it was.
  std::function<bool()> stop;
  // Told once when another process loads into the same database and is waited for.
  std::function<void()> waiting;
};

// What became of a load, in the words of `qrel load`; lines end in LF.
struct ScriptLoadResult {
  std::int64_t occupied = 0;  // not 0: the database holds so many objects and was to be neither emptied nor added to
  bool stopped = false;       // nothing was changed
  bool incomplete = false;    // something of the scripts isn't in the database
  std::string table;          // how many of what were made
  std::string skipped;        // each statement that wasn't carried out, with its place and why; empty: none
};

class ScriptLoader {
 public:
  virtual ~ScriptLoader() = default;
  // Names of the servers that scripts can be loaded into and that are there, and of the databases of one.
  virtual std::vector<std::string> servers() const = 0;
  virtual std::vector<std::string> databases(const std::string& server) const = 0;
  // Raises RuntimeError with path and reason when the files can't be read or the database can't be written.
  virtual ScriptLoadResult load(const ScriptLoadRequest& request, const ScriptLoadProgress& progress) = 0;
};

// Where the program keeps the loader that it was handed (Program::state); null: none.
struct ScriptLoaderState {
  ScriptLoader* loader = nullptr;  // not owned
};

}  // namespace qrel
