// Serves an instance of the embedded server by TDS, for a client that is tried by hand and for measuring:
//   QREL_HOME=FOLDER tdsEnd INSTANCE [--port N] [--user NAME] [--password TEXT] [--latency MS]
// prints its port and serves until its input ends or it is interrupted.
#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "platform/error.h"
#include "platform/store/folders.h"
#include "tests/support/tds/server.h"

namespace {

volatile std::sig_atomic_t interrupted = 0;

constexpr const char* usage =
    "usage: QREL_HOME=FOLDER tdsEnd INSTANCE [--port N] [--user NAME] [--password TEXT] [--latency MS]\n";

// Until a signal comes or standard input ends; what it says is let go by.
void waitForEnd() {
  std::signal(SIGINT, [](int) { interrupted = 1; });
  std::signal(SIGTERM, [](int) { interrupted = 1; });
  char ignored[256];
  while (!interrupted) {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, 100) > 0 && read(STDIN_FILENO, ignored, sizeof ignored) <= 0) return;
  }
}

}  // namespace

int main(int argc, char** argv) {
  qrel::tds::ServerOptions options;
  int latency = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string_view name = argv[i];
    const bool valued = name.starts_with("--") && i + 1 < argc;
    const std::string value = valued ? argv[i + 1] : "";
    if (valued) ++i;
    if (name == "--port" && valued) {
      options.port = static_cast<std::uint16_t>(std::atoi(value.c_str()));
    } else if (name == "--user" && valued) {
      options.user = value;
    } else if (name == "--password" && valued) {
      options.password = value;
    } else if (name == "--latency" && valued) {
      latency = std::atoi(value.c_str());
    } else if (!name.starts_with("--") && options.instance.empty()) {
      options.instance = name;
    } else {
      std::cerr << usage;
      return 2;
    }
  }
  if (options.instance.empty()) {
    std::cerr << usage;
    return 2;
  }
  try {
    qrel::EmbeddedServers servers(qrel::findFolders(argv[0]).servers);
    qrel::tds::Server server(servers, options);
    server.switches().latencyMilliseconds = latency;
    std::cout << server.port() << std::endl;
    waitForEnd();
    server.stop();
    const qrel::tds::Traffic& traffic = server.traffic();
    std::cerr << traffic.connections << " connections, " << traffic.roundTrips << " round trips, " << traffic.rows
              << " rows\n";
  } catch (const qrel::RuntimeError& error) {
    std::cerr << error.description << "\n";
    return 1;
  }
  return 0;
}
