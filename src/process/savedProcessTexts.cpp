// Saved processes in words, and the flags of their object types.
#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "app/modStrings.h"
#include "app/trap.h"
#include "db/mdlObjects.h"
#include "process/modSavedProcess.h"

namespace qrel {

namespace {

constexpr const char* notAvailable = "N/A";

struct TypeFlag {
  long lngType;
  const char* strName;
};
constexpr std::array<TypeFlag, 8> typeFlags{{{objTables, "Tables"},
                                             {objProcedures, "Procedures"},
                                             {objFunctions, "Functions"},
                                             {objViews, "Views"},
                                             {objTriggers, "Triggers"},
                                             {objRelationships, "Relationships"},
                                             {objConstraints, "Constraints"},
                                             {objPermissions, "Permissions"}}};

constexpr std::size_t flagsLength = 2 * typeFlags.size() - 1;

std::string yesOrNo(bool blnValue) { return blnValue ? "Yes" : "No"; }

// Lines that belong together; a blank line parts them from the next that has any.
using Group = std::vector<std::string>;

Group kindOf(const tSavedProcess& process) {
  Group lines = {"Comparison Type: " + GetCompTypeText(process.lngCompType)};
  if (process.lngCompSubType != 0)
    lines.push_back("Comparison Sub Type: " + GetCompSubTypeText(process.lngCompSubType));
  if (process.lngCompSubSubType != 0)
    lines.push_back("Comparison Sub Sub Type: " + GetCompSubSubTypeText(process.lngCompSubSubType));
  if (!process.strEncObjTypes.empty()) lines.push_back("Object Types: " + GetObjectTypesText(process.strEncObjTypes));
  if (process.lngCompMethod >= 0) lines.push_back("Comparison Method: " + GetCompMethodText(process.lngCompMethod));
  return lines;
}

Group selectionOf(const tSavedProcess& process) {
  if (process.lngCompSubType != compSelective || process.lngSelCountSource < 1) return {};
  return {"Number of objects compared: " + FormatThousands(process.lngSelCountSource)};
}

std::string sideText(const std::string& strServer, const std::string& strDb, const std::string& strTable) {
  return strServer + "." + strDb + (strTable.empty() ? "" : "." + strTable);
}

Group exportOf(const tSavedProcess& process) {
  Group lines;
  if (!process.strExportFilePath.empty()) lines.push_back("Export File Path: " + process.strExportFilePath);
  if (process.lngExportType == exportNone) return lines;
  lines.push_back("Export Type: " + GetExportTypeText(process.lngExportType));
  if (process.lngCompType == compData && process.lngExportType == exportCsv)
    lines.push_back("Wrap up data in quotation marks: " + yesOrNo(process.blnCSVWrapInQuot));
  return lines;
}

Group objectIdsOf(const tSavedProcess& process) {
  Group lines;
  if (process.lngObjId1 > 0) lines.push_back("Source Object Id: " + std::to_string(process.lngObjId1));
  if (process.lngObjId2 > 0) lines.push_back("Target Object Id: " + std::to_string(process.lngObjId2));
  return lines;
}

std::string joined(const std::vector<std::string>& pieces, const std::string& strBetween) {
  std::string text;
  for (const std::string& piece : pieces) text += (text.empty() ? "" : strBetween) + piece;
  return text;
}

}  // namespace

std::string GetCompTypeText(std::int32_t lngCompType) {
  switch (lngCompType) {
    case compData:
      return "Data Comparison";
    case compStructure:
      return "Meta-Data Comparison";
    default:
      return notAvailable;
  }
}

std::string GetCompSubTypeText(std::int32_t lngCompSubType) {
  switch (lngCompSubType) {
    case compAllObjects:
    case compDataAll:
      return "All";
    case compBulk:
      return "Bulk";
    case compSelective:
    case compDataSelective:
      return "Selective";
    case compIndividual:
      return "Individual";
    case compDataSingle:
      return "Single Table";
    default:
      return notAvailable;
  }
}

std::string GetCompSubSubTypeText(std::int32_t lngCompSubSubType) {
  switch (lngCompSubSubType) {
    case 10:
    case 30:
      return "Simple";
    case 20:
    case 40:
      return "Details";
    default:
      return notAvailable;
  }
}

std::string GetCompMethodText(std::int32_t lngCompMethod) {
  switch (lngCompMethod) {
    case 0:
      return "Record by Record";
    case 1:
      return "Primary Key";
    default:
      return notAvailable;
  }
}

std::string GetExportTypeText(std::int32_t lngExportType) {
  switch (lngExportType) {
    case exportHtml:
      return "Hyper Text Markup Language (HTML) file";
    case exportCsv:
      return "Excel - Comma Separated Values (CSV) file";
    default:
      return notAvailable;
  }
}

std::string GetObjectTypesText(const std::string& strEncObjTypes) {
  const std::string strFlags = PaddedObjectTypeFlags(strEncObjTypes);
  std::vector<std::string> names;
  for (std::size_t i = 0; i < typeFlags.size() && !strFlags.empty(); ++i)
    if (strFlags[2 * i] == '1') names.emplace_back(typeFlags[i].strName);
  return names.empty() ? notAvailable : joined(names, ", ");
}

std::string SavedProcessText(Program& program, const std::string& strName) {
  const tSavedProcess process = GetSavedProcessDetails(program, strName);
  const std::vector<Group> groups = {
      {"Comparison Process Name: " + strName, "Comparison Process Id: " + std::to_string(process.lngId)},
      kindOf(process),
      selectionOf(process),
      {"Source: " + sideText(process.strServer1, process.strDb1, process.strTable1),
       "Target: " + sideText(process.strServer2, process.strDb2, process.strTable2)},
      exportOf(process),
      {"Automatically print final report: " + yesOrNo(process.blnPrint)},
      objectIdsOf(process),
      {"Automatically close the program after replaying the comparison: " + yesOrNo(process.blnAutoClose)}};
  std::vector<std::string> blocks;
  for (const Group& group : groups)
    if (!group.empty()) blocks.push_back(joined(group, "\r\n"));
  return joined(blocks, "\r\n\r\n");
}

void ShowSavedProcessProperties(Program& program, const std::string& strName) {
  program.host.messageBox(SavedProcessText(program, strName), Icon::Information, "Properties");
}

void RecordExportingResultsToTxtFile(Program& program, const std::string& strName, const std::string& strExportFilePath,
                                     std::int32_t lngExportType, bool blnCSVWrapInQuot, std::int32_t lngCompType) {
  trap(program, "modSavedProcess", "RecordExportingResultsToTxtFile", [&] {
    if (!AddExportInfoToSavedProcess(program, strName, strExportFilePath, lngExportType, blnCSVWrapInQuot)) return;
    Group lines = {"Export info:", "Export File Path: " + strExportFilePath,
                   "Export Type: " + GetExportTypeText(lngExportType)};
    if (lngCompType == compData && lngExportType == exportCsv)
      lines.push_back("Wrap up data in quotation marks: " + yesOrNo(blnCSVWrapInQuot));
    lines.insert(lines.end(), {"was added to the saved comparison process:", "'" + strName + "'.",
                               "Next time when this process is run, the program will automatically export data to the "
                               "above file."});
    program.host.messageBox(joined(lines, "\r\n"), Icon::Information);
  });
}

std::string ObjectTypeFlags(long lngType) {
  std::vector<std::string> flags;
  bool blnKnown = lngType == 0;
  for (const TypeFlag& each : typeFlags) {
    flags.emplace_back(each.lngType == lngType ? "1" : "0");
    blnKnown = blnKnown || each.lngType == lngType;
  }
  return blnKnown ? joined(flags, ",") : std::string();
}

std::string PaddedObjectTypeFlags(const std::string& strFlags) {
  std::string strPadded = strFlags;
  for (const std::size_t shorter : {flagsLength - 4, flagsLength - 2})
    if (strPadded.size() == shorter) strPadded += ",0";
  const auto commas = static_cast<std::size_t>(std::count(strPadded.begin(), strPadded.end(), ','));
  return strPadded.size() == flagsLength && commas == typeFlags.size() - 1 ? strPadded : std::string();
}

std::int32_t ObjectTypeIndex(const std::string& strFlags) {
  const std::string strPadded = PaddedObjectTypeFlags(strFlags);
  if (strPadded.empty()) return -1;
  for (std::size_t i = 0; i < typeFlags.size(); ++i)
    if (ObjectTypeFlags(typeFlags[i].lngType) == strPadded) return static_cast<std::int32_t>(i);
  return -1;
}

}  // namespace qrel
