// The commands over the saved processes: list, show, remove.
#include <cstdio>
#include <ostream>

#include "console/commands.h"
#include "console/savedProcess.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

// "Meta-Data Comparison, Bulk, Details": what there is of the three.
std::string kindOf(const tSavedProcess& process) {
  std::string text = GetCompTypeText(process.lngCompType);
  if (process.lngCompSubType != 0) text += ", " + GetCompSubTypeText(process.lngCompSubType);
  if (process.lngCompSubSubType != 0) text += ", " + GetCompSubSubTypeText(process.lngCompSubSubType);
  return text;
}

std::string sideOf(const std::string& strServer, const std::string& strDb, const std::string& strTable) {
  return strServer + "/" + strDb + (strTable.empty() ? "" : "/" + strTable);
}

std::string quoted(const std::string& text) {
  std::string json = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      json += '\\';
      json += c;
    } else if (byte < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", byte);
      json += escape;
    } else {
      json += c;
    }
  }
  return json + '"';
}

void printJson(std::ostream& out, const tSavedProcess& process) {
  out << "  {\"id\": " << process.lngId << ", \"name\": " << quoted(process.strName)
      << ", \"kind\": " << quoted(kindOf(process));
  const std::string objectTypes = PaddedObjectTypeFlags(process.strEncObjTypes);
  if (!objectTypes.empty()) out << ", \"objectTypes\": " << quoted(GetObjectTypesText(objectTypes));
  out << ",\n   \"source\": {\"server\": " << quoted(process.strServer1) << ", \"database\": " << quoted(process.strDb1)
      << ", \"object\": " << quoted(process.strTable1)
      << "},\n   \"target\": {\"server\": " << quoted(process.strServer2)
      << ", \"database\": " << quoted(process.strDb2) << ", \"object\": " << quoted(process.strTable2)
      << "},\n   \"export\": " << quoted(process.strExportFilePath) << ", \"exportType\": " << process.lngExportType
      << ", \"print\": " << (process.blnPrint ? "true" : "false")
      << ", \"autoClose\": " << (process.blnAutoClose ? "true" : "false") << '}';
}

void printLine(std::ostream& out, const tSavedProcess& process) {
  out << process.lngId << '\t' << visibleText(process.strName) << '\t' << kindOf(process) << '\t'
      << visibleText(sideOf(process.strServer1, process.strDb1, process.strTable1)) << '\t'
      << visibleText(sideOf(process.strServer2, process.strDb2, process.strTable2)) << '\t'
      << visibleText(process.strExportFilePath) << '\n';
}

}  // namespace

ExitCode runProcesses(Console& console, bool json) {
  const std::vector<std::string> names = savedProcessNames(console);
  if (json) console.out << (names.empty() ? "[" : "[\n");
  for (std::size_t i = 0; i < names.size(); ++i) {
    tSavedProcess process = GetSavedProcessDetails(console.program, names[i]);
    process.strName = names[i];
    if (json) {
      if (i > 0) console.out << ",\n";
      printJson(console.out, process);
    } else {
      printLine(console.out, process);
    }
  }
  if (json) console.out << (names.empty() ? "]\n" : "\n]\n");
  return ExitCode::Identical;
}

ExitCode runProcessesShow(Console& console, const std::string& name) {
  const std::string known = findSavedProcess(console, name);
  console.out << visibleLines(replaceAll(SavedProcessText(console.program, known), "\r\n", "\n")) << '\n';
  return ExitCode::Identical;
}

ExitCode runProcessesRemove(Console& console, const std::string& name) {
  DeleteSavedProcess(console.program, findSavedProcess(console, name));
  console.changed = true;
  return ExitCode::Identical;
}

}  // namespace qrel
