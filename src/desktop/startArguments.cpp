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

std::string whyNotStart(const StartArguments& arguments) {
  const std::string& theme = arguments.theme;
  if (theme.empty() || theme == "light" || theme == "dark") return {};
  return "There is no theme \"" + theme + "\". Use --theme light or --theme dark, or leave it out.";
}

std::string startHelp() {
  return "Usage: quorrel [--theme light|dark] [/RunSavedComp ID]\n"
         "Compares two SQL Server databases and says what differs.\n\n"
         "  -h, --help            shows this\n"
         "  -v, --version         shows the version\n"
         "  --theme light|dark    else as the desktop is\n"
         "  /RunSavedComp ID      runs a saved comparison process; the exit code then tells how it ended: 0 "
         "identical,\n"
         "                        1 differences, 3 not found or not readable, 4 incomplete. Without a display the\n"
         "                        process is run without a window.\n\n"
         "Other arguments are ignored.\n";
}

}  // namespace qrel
