// "qrel servers test": over which road a server is reached, how fast, and what is there.
#include <algorithm>
#include <chrono>
#include <iomanip>
#include <ostream>

#include "console/commands.h"
#include "db/mdlData.h"
#include "db/modPanels.h"
#include "db/readFailures.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void printLine(Console& console, const std::string& name, const std::string& text) {
  console.out << name << '\t' << visibleText(text) << '\n';
}

// The least of several, so that what the server does once doesn't count.
double roundTrip(Console& console, const ConnectionPtr& connection, const tServer& server) {
  constexpr int times = 5;
  double least = 0;
  for (int i = 0; i < times; ++i) {
    const Clock::time_point start = Clock::now();
    RecordsetPtr rs;
    if (GetAdoRS_Conn(console.program, connection, server, adCmdText,
                      "SELECT serverproperty('ProductVersion') AS ServerVer", rs) == -1)
      return 0;
    rs.reset();
    least = i == 0 ? millisecondsSince(start) : std::min(least, millisecondsSince(start));
  }
  return least;
}

// Those that can be opened, and how many can't be.
ExitCode printDatabases(Console& console, const tServer& server) {
  RecordsetPtr rs;
  if (GetAdoRS(console.program, server, adCmdText, "SELECT name FROM sysdatabases ORDER BY name", rs, "master") == -1)
    return ExitCode::Incomplete;
  int closed = 0;
  for (; !rs->Eof(); rs->MoveNext()) {
    const std::string name = rs->Fields("name").Text();
    const AskedScope asked(console.program);
    if (CanConnectToDb(console.program, server, name, 0))
      printLine(console, "database", name);
    else
      ++closed;
  }
  if (closed > 0) printLine(console, "not to be opened", std::to_string(closed));
  return ExitCode::Identical;
}

}  // namespace

ExitCode runServersTest(Console& console, const std::string& name) {
  const tServer server = console.resolveServer(name);
  const ConnectionPtr connection = std::make_shared<Connection>(console.data);
  connection->ConnectionString = connectionStringForQuery(server, server.MRUDb.empty() ? "master" : server.MRUDb, true);
  const Clock::time_point start = Clock::now();
  connection->Open();  // what it raises is what the command tells
  const double connecting = millisecondsSince(start);
  printLine(console, "server", server.Name);
  auto facts = connection->provider()->facts();
  if (facts.empty()) facts = {{"driver", "none: an embedded server"}};
  for (const auto& [fact, text] : facts) printLine(console, fact, text);
  const std::string version = GetServerVersion(console.program, server);
  if (version.empty()) return ExitCode::CannotRead;
  printLine(console, "version", version);
  console.out << std::fixed << std::setprecision(1) << "connecting\t" << connecting << " ms\nround trip\t"
              << roundTrip(console, connection, server) << " ms\n";
  return printDatabases(console, server);
}

}  // namespace qrel
