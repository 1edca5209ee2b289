// The loader: the input is a script that is loaded into an empty database.
#include <chrono>

#include "embedded/instance/instances.h"
#include "embedded/load/loader.h"
#include "tests/fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qrel;
  static TemporaryFolder folder;
  static EmbeddedServers servers(folder.path() / "servers");
  static const bool made = (servers.create("S", defaultProductVersion), true);
  (void)made;
  // A script may loop for ever on a server too: what matters is that it can be stopped.
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  LoadOptions options;
  options.replace = true;
  options.stop = [end] { return std::chrono::steady_clock::now() > end; };
  fuzzed([&] {
    const LoadReport report =
        loadScripts(servers, "S", "shop", {folder.write("script.sql", std::string(textOf(data, size)))}, options);
    if (report.statements() < 0) __builtin_trap();
  });
  return 0;
}
