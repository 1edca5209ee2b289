// Running a saved process again with nobody there: the main window's model is moved as a person's clicks would, every
// box is answered with its default button, and what it would say goes to standard error with the time.
#include <algorithm>
#include <cstdlib>
#include <ostream>

#include "app/settings.h"
#include "compare/all/CompareAllWindow.h"
#include "compare/all/modCompareAll.h"
#include "compare/data/frmCompareData.h"
#include "compare/data/frmCompareStatus.h"
#include "console/commands.h"
#include "console/progressWatch.h"
#include "console/savedProcess.h"
#include "console/tables/differencesTable.h"
#include "console/verdict.h"
#include "platform/text.h"
#include "platform/visibleText.h"
#include "process/replayOutcome.h"
#include "report/frmExport.h"
#include "report/frmReport.h"
#include "ui/frmMain.h"

namespace qrel {

namespace {

// The servers as they are known for this run. A place in the list isn't told to the run, so that it writes nothing into
// the settings. The Target is asked for as the Source is: a run against another server than the one that was meant must
// not happen with nobody to see it.
void knowServers(Console& console, const tSavedProcess& process) {
  auto& listed = console.program.servers.gtypServers;
  for (tServer& server : listed) {
    server.RegIndex = 0;
    const char* password = std::getenv("QREL_PASSWORD");
    if (server.SQLAuth && server.Password.empty() && password) server.Password = password;
  }
  for (const std::string* name : {&process.strServer1, &process.strServer2}) {
    const bool known = std::any_of(listed.begin(), listed.end(), [&](const auto& each) { return each.Name == *name; });
    if (known || name->empty()) continue;
    if (!console.servers.exists(*name))
      throw CommandFailure{ExitCode::CannotRead, "Server " + *name + " of process \"" + process.strName +
                                                     "\" isn't in the list: add it with \"qrel servers add\"."};
    tServer server;
    server.Name = *name;
    listed.push_back(server);
  }
}

// Another file than the stored one, for this run.
void applyExport(const RunArguments& arguments, tSavedProcess& process) {
  const bool exportsTable = process.lngCompType == compData && process.lngCompSubType == compDataSingle;
  std::string format = lowerCase(arguments.format);
  if (!arguments.exportFile.empty()) process.strExportFilePath = arguments.exportFile;
  if (format.empty() && !arguments.exportFile.empty() && exportsTable) {
    const std::string extension = lowerCase(std::filesystem::path(arguments.exportFile).extension().string());
    if (extension == ".htm" || extension == ".html") format = "html";
    if (extension == ".csv") format = "csv";
    if (format.empty() && process.lngExportType == exportNone)
      throw CommandFailure{ExitCode::Usage, "--export " + arguments.exportFile + ": give --format html or csv."};
  }
  if (format.empty()) return;
  if ((format == "report") == exportsTable)
    throw CommandFailure{ExitCode::Usage, exportsTable ? "Process \"" + process.strName +
                                                             "\" compares the data of one table: "
                                                             "its formats are html and csv."
                                                       : "Process \"" + process.strName +
                                                             "\" ends in a report: its format is "
                                                             "report."};
  if (exportsTable && process.strExportFilePath.empty())
    throw CommandFailure{ExitCode::Usage, "--format " + arguments.format + " goes with --export FILE."};
  process.lngExportType = format == "html" ? exportHtml : format == "csv" ? exportCsv : exportNone;
}

// What a person would read in a window goes to standard output.
void printWindow(Console& console, const Form& form) {
  if (const auto* report = dynamic_cast<const frmReport*>(&form))
    console.out << visibleLines(report->txtReport.text()) << '\n';
  if (const auto* table = dynamic_cast<const frmCompareData*>(&form))
    printDifferencesWindow(console.out, *table, {.colours = console.colours});
}

// Whatever runs, stops.
void stopAll(Program& program) {
  program.state<modCompareAllState>().gblnCancelCompare = true;
  program.state<modCompareDataState>().gblnStopComparison = true;
  program.state<frmExportState>().gblnCancelExport = true;
}

// By the window that is open.
std::string whereIn(const Form* shown) {
  if (const auto* bulk = dynamic_cast<const CompareAllWindow*>(shown))
    return bulk->parts.lblTime.text() + ' ' + bulk->parts.lblCurProcName.text();
  if (const auto* status = dynamic_cast<const frmCompareStatus*>(shown)) return whereIn(*status);
  return {};
}

const char* words(ExitCode code) {
  switch (code) {
    case ExitCode::Identical:
      return "identical";
    case ExitCode::Different:
      return "differences";
    case ExitCode::Incomplete:
      return "compared but incomplete";
    case ExitCode::Stopped:
      return "stopped";
    default:
      return "nothing was compared";
  }
}

ExitCode codeOf(Console& console, bool lacking) {
  const auto& outcome = console.program.state<ReplayOutcome>();
  tellIncomplete(console);
  if (stopRequested() && !outcome.blnIdentical) return ExitCode::Stopped;
  const auto code = static_cast<ExitCode>(ReplayExitCode(outcome));
  return lacking && (code == ExitCode::Identical || code == ExitCode::Different) ? ExitCode::Incomplete : code;
}

}  // namespace

ExitCode runProcess(Console& console, const RunArguments& arguments) {
  Program& program = console.program;
  const std::string name = findSavedProcess(console, arguments.process);
  console.host.withTime = true;
  tSavedProcess process = GetSavedProcessDetails(program, name);
  process.strName = name;
  applyExport(arguments, process);
  console.checkProfileFiles();
  knowServers(console, process);
  const bool lacking[] = {console.lacksWhatLoadsSkipped(process.strServer1, process.strDb1),
                          console.lacksWhatLoadsSkipped(process.strServer2, process.strDb2)};
  // Constraints take part when the process was saved with them, as they do when they are named to "qrel compare".
  const std::string flags = PaddedObjectTypeFlags(process.strEncObjTypes);
  if (!flags.empty() && splitAt(flags, ',')[6] == "1") program.settings.AnalyzeConstraints = true;
  // What was connected to when the window was closed has no part in this.
  program.store.setOverride(settingKey(*findSetting("AutoConnect")), "AutoConnect", 0);

  const ProgressWatch watch(
      console,
      [&program](bool stopped) {
        if (stopped) stopAll(program);
      },
      [&console] { return whereIn(console.host.shown()); });
  console.host.onWindow = [&console](Form& form) { printWindow(console, form); };
  frmMain window(program);
  console.host.show(window);
  window.RunProcess(process);
  window.unload();
  console.host.onWindow = nullptr;
  const ExitCode code = codeOf(console, lacking[0] || lacking[1]);
  console.host.messageBox("process \"" + name + "\" has ended: " + words(code) + ".", Icon::None, "", Buttons::Ok, 1);
  return code;
}

}  // namespace qrel
