// All that a load reads, in the order in which it runs.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "embedded/load/scriptFiles.h"
#include "embedded/load/scriptPaths.h"
#include "embedded/load/scriptText.h"

namespace qrel {

struct ScriptSet {
  struct Script {
    std::filesystem::path file;
    std::shared_ptr<ScriptPaths> paths;  // of the folder that files may lie in which it names
  };
  // What waits for another statement waits until the end of its stage: a project's PreDeploy, Build and PostDeploy
  // scripts are three, all others are one.
  std::vector<std::vector<Script>> stages;
  ScriptVariables variables;  // of projects

  std::size_t count() const;
};

// Files and folders as scriptFiles() has them, projects as readSqlProject() has them. A file of a folder that another
// one of it names with :r is read there alone. `stop` is asked while files are looked through for that. Raises
// RuntimeError with the path for what can't be read.
ScriptSet scriptSet(const std::vector<std::filesystem::path>& paths, const std::function<bool()>& stop,
                    std::vector<LoadRemark>& remarks);

}  // namespace qrel
