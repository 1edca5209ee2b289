#include <ostream>

#include "console/commands.h"
#include "console/loadReport.h"

namespace qrel {

ExitCode runLoad(Console& console, const LoadArguments& arguments) {
  const std::size_t slash = arguments.target.find('/');
  if (slash == std::string::npos || slash == 0 || slash + 1 == arguments.target.size())
    throw CommandFailure{ExitCode::Usage, "\"" + arguments.target + "\": expected SERVER/DATABASE."};
  const std::string server = arguments.target.substr(0, slash);
  const std::string database = arguments.target.substr(slash + 1);

  LoadOptions options;
  options.replace = arguments.replace;
  options.stop = stopRequested;
  for (const std::string& variable : arguments.variables) {
    const std::size_t equals = variable.find('=');
    if (equals == std::string::npos || equals == 0)
      throw CommandFailure{ExitCode::Usage, "--variable " + variable + ": expected NAME=VALUE."};
    options.variables.emplace_back(variable.substr(0, equals), variable.substr(equals + 1));
  }
  if (console.progress)
    options.progress = [&](const std::string& file, std::size_t line) {
      console.err << '\r' << file << ": line " << line << "\033[K" << std::flush;
    };

  if (!console.servers.exists(server))
    console.servers.create(server, arguments.version.empty() ? defaultProductVersion : arguments.version);
  else if (!arguments.version.empty())
    console.servers.setVersion(server, arguments.version);
  const LoadReport report =
      loadScripts(console.servers, server, database, {arguments.paths.begin(), arguments.paths.end()}, options);
  if (console.progress) console.err << "\r\033[K";
  if (report.stopped) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user. Nothing was changed."};
  listSkipped(console.err, report);
  printLoadReport(console.out, report);
  return report.failed.empty() && report.skipped.empty() ? ExitCode::Identical : ExitCode::Incomplete;
}

}  // namespace qrel
