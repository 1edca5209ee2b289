// A database project (.sqlproj): which script files it is made of, in which order, and the values of its variables.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "embedded/load/scriptFiles.h"
#include "embedded/load/scriptPaths.h"

namespace qrel {

struct SqlProject {
  std::vector<std::filesystem::path> preDeploy, build, postDeploy;
  std::vector<std::pair<std::string, std::string>> variables;
};

bool isSqlProject(const std::filesystem::path& path);

// Reads a project's Build, PreDeploy, PostDeploy and SqlCmdVariable items, with wildcards, Exclude and Remove; one of
// the SDK's kind takes all .sql files below it unless it says otherwise. Files are found in any case, below the root of
// `paths`, which is the project's folder. Remarks tell files that are missing or lie elsewhere, conditions, which
// aren't evaluated, and references, which aren't followed. Raises RuntimeError when the file can't be read or is no
// project.
SqlProject readSqlProject(const std::filesystem::path& file, ScriptPaths& paths, std::vector<LoadRemark>& remarks);

}  // namespace qrel
