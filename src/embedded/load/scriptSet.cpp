#include "embedded/load/scriptSet.h"

#include <map>
#include <set>
#include <system_error>

#include "embedded/load/sqlProject.h"
#include "platform/error.h"

namespace qrel {

namespace fs = std::filesystem;

namespace {

// Takes out what other files of the same folder name with :r; where files name each other in a circle, the first stays.
std::vector<fs::path> withoutIncluded(const std::vector<fs::path>& files, ScriptPaths& paths,
                                      const std::function<bool()>& stop) {
  std::map<fs::path, std::vector<fs::path>> names;
  std::set<fs::path> named;
  const auto real = [](const fs::path& path) {
    std::error_code ignored;
    return fs::canonical(path, ignored);
  };
  for (const fs::path& file : files) {
    if (stop && stop()) return files;
    std::vector<fs::path> included;
    try {
      included = includedFiles(file, paths, stop);
    } catch (const RuntimeError&) {  // told when it is run
    }
    const fs::path own = real(file);
    for (const fs::path& each : included) {
      const fs::path other = real(each);
      if (other == own) continue;
      names[own].push_back(other);
      named.insert(other);
    }
  }
  if (named.empty()) return files;
  std::set<fs::path> reached;
  const auto reach = [&](const fs::path& from) {
    std::vector<fs::path> open{from};
    while (!open.empty()) {
      const fs::path file = open.back();
      open.pop_back();
      if (!reached.insert(file).second) continue;
      const auto& further = names[file];
      open.insert(open.end(), further.begin(), further.end());
    }
  };
  std::set<fs::path> kept;
  for (const bool circles : {false, true}) {
    for (const fs::path& file : files) {
      const fs::path own = real(file);
      if (circles ? reached.count(own) != 0 : named.count(own) != 0) continue;
      kept.insert(own);
      reach(own);
    }
  }
  std::vector<fs::path> result;
  for (const fs::path& file : files)
    if (kept.count(real(file)) != 0) result.push_back(file);
  return result;
}

}  // namespace

std::size_t ScriptSet::count() const {
  std::size_t count = 0;
  for (const auto& stage : stages) count += stage.size();
  return count;
}

ScriptSet scriptSet(const std::vector<fs::path>& paths, const std::function<bool()>& stop,
                    std::vector<LoadRemark>& remarks) {
  ScriptSet set;
  bool project = true;  // the last stage is a project's: others don't join it
  const auto add = [&](const std::vector<fs::path>& files, const std::shared_ptr<ScriptPaths>& folder) {
    for (const fs::path& file : files) set.stages.back().push_back({file, folder});
  };
  for (const fs::path& path : paths) {
    std::error_code ignored;
    const bool isFolder = fs::is_directory(path, ignored);
    const auto folder = std::make_shared<ScriptPaths>(isFolder ? path : path.parent_path());
    const std::vector<fs::path> files = scriptFiles({path}, remarks);
    if (!isFolder && isSqlProject(path)) {
      SqlProject read = readSqlProject(path, *folder, remarks);
      std::vector<fs::path> all;
      for (const auto* stage : {&read.preDeploy, &read.postDeploy, &read.build})  // what is deployed names others
        all.insert(all.end(), stage->begin(), stage->end());
      const std::vector<fs::path> kept = withoutIncluded(all, *folder, stop);
      const std::set<fs::path> own(kept.begin(), kept.end());
      std::erase_if(read.build, [&](const fs::path& each) { return own.count(each) == 0; });
      for (const auto* stage : {&read.preDeploy, &read.build, &read.postDeploy}) {
        set.stages.emplace_back();
        add(*stage, folder);
      }
      set.variables.insert(set.variables.end(), read.variables.begin(), read.variables.end());
      project = true;
      continue;
    }
    if (project) set.stages.emplace_back();
    project = false;
    add(isFolder && files.size() > 1 ? withoutIncluded(files, *folder, stop) : files, folder);
  }
  return set;
}

}  // namespace qrel
