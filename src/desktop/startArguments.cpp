#include "desktop/startArguments.h"

#include <string_view>

namespace qrel {

StartArguments readStartArguments(int count, const char* const* arguments) {
  constexpr std::string_view themeIs = "--theme=";
  StartArguments result;
  for (int i = 1; i < count; ++i) {
    const std::string_view argument = arguments[i];
    if (argument == "--help" || argument == "-h") {
      result.help = true;
    } else if (argument == "--version" || argument == "-v") {
      result.version = true;
    } else if (argument.starts_with(themeIs)) {
      result.theme = argument.substr(themeIs.size());
    } else if (argument == "--theme") {
      if (i + 1 < count) result.theme = arguments[++i];
    } else {
      result.commandLine.append(result.commandLine.empty() ? "" : " ").append(argument);
    }
  }
  return result;
}

std::string startHelp() {
  return "Usage: quorrel [--theme light|dark]\n"
         "Compares two SQL Server databases and says what differs.\n\n"
         "  -h, --help            shows this\n"
         "  -v, --version         shows the version\n"
         "  --theme light|dark    else as the desktop is\n\n"
         "Other arguments are ignored.\n";
}

}  // namespace qrel
