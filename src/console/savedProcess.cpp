#include "console/savedProcess.h"

#include <algorithm>
#include <ostream>

#include "db/mdlServers.h"
#include "platform/controls/control.h"
#include "platform/text.h"
#include "platform/visibleText.h"
#include "process/frmSaveComparison.h"

namespace qrel {

namespace fs = std::filesystem;

std::vector<std::string> savedProcessNames(Console& console) {
  CheckList list("lstComps");
  std::vector<std::string> names;
  FillSavedProcessList(console.program, list, names);
  return names;
}

std::string findSavedProcess(Console& console, const std::string& nameOrId) {
  const std::vector<std::string> names = savedProcessNames(console);
  for (const bool exact : {true, false})
    for (const std::string& name : names)
      if (exact ? name == nameOrId : equalNoCase(name, nameOrId)) return name;
  const bool digits =
      !nameOrId.empty() && nameOrId.size() < 10 && nameOrId.find_first_not_of("0123456789") == std::string::npos;
  std::string byId =
      digits ? GetSavedProcessNameById(console.program, static_cast<std::int32_t>(numericPrefix(nameOrId))) : "";
  if (byId.empty())
    throw CommandFailure{ExitCode::CannotRead,
                         "There is no saved process \"" + nameOrId + "\": \"qrel processes\" lists those there are."};
  return byId;
}

void checkSave(Console& console, const SaveArguments& arguments, const std::string& source, const std::string& target) {
  if (!arguments.given()) {
    if (arguments.replace || arguments.print || arguments.autoClose)
      throw CommandFailure{ExitCode::Usage, "--replace, --print and --auto-close go with --save NAME."};
    return;
  }
  const std::string why = WhyNoProcessName(arguments.name);
  if (!why.empty()) throw CommandFailure{ExitCode::Usage, replaceAll(why, "\r\n\r\n", " ")};
  std::error_code ignored;
  for (const std::string* side : {&source, &target})
    if (fs::exists(*side, ignored) || lowerCase(*side).ends_with(".sql"))
      throw CommandFailure{ExitCode::Usage, "\"" + *side +
                                                "\" can't be part of a saved process: its database is a temporary one. "
                                                "Load it with \"qrel load\" and compare SERVER/DATABASE."};
  for (const std::string& name : savedProcessNames(console))
    if (equalNoCase(name, arguments.name) && !arguments.replace)
      throw CommandFailure{ExitCode::Usage,
                           "Comparison process with name " + name + " already exists: --replace overwrites it."};
}

void saveProcess(Console& console, const SaveArguments& arguments, const std::array<const Side*, 2>& sides,
                 tSavedProcess process) {
  process.strName = arguments.name;
  process.blnPrint = arguments.print;
  process.blnAutoClose = arguments.autoClose;
  process.strServer1 = sides[0]->server.Name;
  process.strDb1 = sides[0]->database;
  process.strServer2 = sides[1]->server.Name;
  process.strDb2 = sides[1]->database;
  if (!SaveComparisonProcess(console.program, process))
    throw CommandFailure{ExitCode::CannotRead, "Comparison process not saved."};
  console.changed = true;
  console.err << "qrel: saved as process \"" << visibleText(arguments.name) << "\" with the id "
              << GetSavedProcessId(console.program, arguments.name) << ".\n";
  for (const std::string* server : {&process.strServer1, &process.strServer2})
    if (!IsServerInList(console.program, *server)) {
      console.err << "qrel: the window runs the process only when server " << visibleText(*server)
                  << " is in its list: qrel servers add " << visibleText(*server) << ".\n";
      break;
    }
}

std::string absolutePath(const std::string& file) {
  return file.empty() ? file : fs::absolute(file).lexically_normal().string();
}

}  // namespace qrel
