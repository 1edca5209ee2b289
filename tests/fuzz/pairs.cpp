// Two scripts, parted by the first line "----", are loaded and compared, their structure and their records.
#include <cstdlib>
#include <sstream>

#include "console/commands.h"
#include "platform/text.h"
#include "tests/fuzz/fuzz.h"

namespace {

int run(const std::vector<const char*>& arguments) {
  std::ostringstream out, err;
  return qrel::runConsole(static_cast<int>(arguments.size()), arguments.data(), out, err);
}

// Loops without end are for the target of scripts, which stops them.
bool mayLoop(std::string_view text) {
  const std::string lower = qrel::lowerCase(text);
  return lower.find("while") != std::string::npos || lower.find("goto") != std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qrel;
  static TemporaryFolder folder;
  static const bool apart = [] { return setenv("QREL_HOME", folder.path().c_str(), 1) == 0; }();
  const std::string_view text = textOf(data, size);
  if (!apart || mayLoop(text)) return -1;
  const std::size_t line = text.find("\n----\n");
  const std::string second(line == std::string_view::npos ? text : text.substr(line + 6));
  const std::string source = folder.write("a.sql", std::string(text.substr(0, line))).string();
  const std::string target = folder.write("b.sql", second).string();
  fuzzed([&] {
    run({"qrel", "compare", source.c_str(), target.c_str(), "--details"});
    run({"qrel", "data", source.c_str(), target.c_str(), "--all"});
  });
  return 0;
}
