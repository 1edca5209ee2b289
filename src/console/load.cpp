#include <ostream>

#include "console/commands.h"
#include "embedded/load/loadReport.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

void readVariables(LoadOptions& options, const std::vector<std::string>& variables) {
  for (const std::string& variable : variables) {
    const std::size_t equals = variable.find('=');
    if (equals == std::string::npos || equals == 0)
      throw CommandFailure{ExitCode::Usage, "--variable " + variable + ": expected NAME=VALUE."};
    options.variables.emplace_back(variable.substr(0, equals), variable.substr(equals + 1));
  }
}

}  // namespace

ExitCode runLoad(Console& console, const LoadArguments& arguments) {
  const std::size_t slash = arguments.target.find('/');
  if (slash == std::string::npos || slash == 0 || slash + 1 == arguments.target.size())
    throw CommandFailure{ExitCode::Usage, "\"" + arguments.target + "\": expected SERVER/DATABASE."};
  if (arguments.versionGiven && !EmbeddedServers::isVersion(arguments.version))
    throw CommandFailure{ExitCode::Usage, "--version \"" + visibleText(arguments.version) +
                                              "\": expected one to four numbers with points between, such as 9, "
                                              "8.00.2039 or 11.0.2100.60."};
  LoadOptions options = console.loadOptions();
  options.replace = arguments.replace;
  options.onlyIntoEmpty = !arguments.add;
  options.productVersion = arguments.version;
  readVariables(options, arguments.variables);
  options.waiting = [&] {
    console.err << "qrel: waiting for another process to end its load into " << visibleText(arguments.target)
                << " ...\n"
                << std::flush;
  };
  const LoadReport report =
      loadScripts(console.servers, arguments.target.substr(0, slash), arguments.target.substr(slash + 1),
                  {arguments.paths.begin(), arguments.paths.end()}, options);
  console.clearProgress();
  if (report.stopped) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user. Nothing was changed."};
  if (report.occupied > 0)
    throw CommandFailure{ExitCode::Usage, "The database \"" + visibleText(arguments.target) + "\" holds " +
                                              withThousands(report.occupied) +
                                              " objects already. --replace empties it first, --add adds to it. Nothing "
                                              "was changed."};
  console.changed = true;
  listSkipped(console.err, report);
  printLoadReport(console.out, report);
  return report.incomplete() ? ExitCode::Incomplete : ExitCode::Identical;
}

}  // namespace qrel
