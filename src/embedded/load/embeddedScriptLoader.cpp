#include "embedded/load/embeddedScriptLoader.h"

#include <sstream>

#include "embedded/load/loadReport.h"

namespace qrel {

std::vector<std::string> EmbeddedScriptLoader::databases(const std::string& server) const {
  return servers_.exists(server) ? servers_.databases(server) : std::vector<std::string>();
}

ScriptLoadResult EmbeddedScriptLoader::load(const ScriptLoadRequest& request, const ScriptLoadProgress& progress) {
  LoadOptions options;
  options.replace = request.replace;
  options.onlyIntoEmpty = !request.add;
  options.progress = progress.at;
  options.stop = progress.stop;
  options.waiting = progress.waiting;
  const LoadReport report =
      loadScripts(servers_, request.server, request.database, {request.paths.begin(), request.paths.end()}, options);
  ScriptLoadResult result;
  result.stopped = report.stopped;
  result.occupied = report.occupied;
  if (report.stopped || report.occupied > 0) return result;
  result.incomplete = report.incomplete();
  std::ostringstream table, skipped;
  printLoadReport(table, report);
  listSkipped(skipped, report);
  result.table = table.str();
  result.skipped = skipped.str();
  return result;
}

}  // namespace qrel
