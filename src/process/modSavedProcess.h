// The saved comparison processes: a section each of the profile file gstrCompsIni, the name of the section being the
// process's; the names of the objects of a selective comparison lie in two text files beside it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qrel {

class CheckList;
class Program;

// CompType
inline constexpr std::int32_t compData = 0;
inline constexpr std::int32_t compStructure = 1;
// CompSubType
inline constexpr std::int32_t compAllObjects = 10;
inline constexpr std::int32_t compBulk = 20;
inline constexpr std::int32_t compSelective = 30;
inline constexpr std::int32_t compIndividual = 35;
inline constexpr std::int32_t compDataSingle = 40;
inline constexpr std::int32_t compDataSelective = 50;
inline constexpr std::int32_t compDataAll = 60;
// ExportType
inline constexpr std::int32_t exportNone = 0;
inline constexpr std::int32_t exportHtml = 1;
inline constexpr std::int32_t exportCsv = 2;

// A process as it is stored; 1 is Source, 2 Target.
struct tSavedProcess {
  std::string strName;
  std::int32_t lngCompType = -1;
  std::int32_t lngCompSubType = 0;
  std::int32_t lngCompSubSubType = 0;  // 10, 30 simple; 20, 40 details; 0 none
  std::string strEncObjTypes;          // "1,0,0,0,0,0,0,0"; empty: none
  std::int32_t lngCompMethod = -1;     // 0 record by record, 1 primary key, -1 none
  std::string strServer1, strServer2;
  std::string strDb1, strDb2;
  std::string strTable1, strTable2;  // empty for bulk comparisons
  std::string strExportFilePath;     // empty: nothing is written
  std::int32_t lngExportType = exportNone;
  std::int32_t lngId = 0;  // from 1; given by the store when it saves
  std::int32_t lngSelCountSource = 0, lngSelCountTarget = 0;
  std::vector<std::string> arrSource, arrTarget;  // names of the selected objects
  bool blnPrint = false;
  std::int32_t lngObjId1 = 0, lngObjId2 = 0;  // 0: none
  bool blnCSVWrapInQuot = false;
  bool blnAutoClose = false;
};

// Writes the process under its name, over one that has it (names are found without case), with the smallest free id: a
// process that is saved over gets another one, and its old lists stay behind. The file and the two lists are changed
// all together or not at all, whenever the program ends and whoever else saves. False after a message when that fails.
bool SaveComparisonProcess(Program& program, const tSavedProcess& process);
// What is stored under the name; a key that isn't there reads as empty, 0 or False. For an empty name, and after the
// report of a file that can't be read, all has its initial value. A box tells when a list has another length than is
// stored; the list as it was read is the one given.
tSavedProcess GetSavedProcessDetails(Program& program, const std::string& strName);

std::int32_t GetSavedProcessCount(Program& program);
// The first process in the file that has this id; empty without any.
std::string GetSavedProcessNameById(Program& program, std::int32_t lngId);
// 0 for an empty or unknown name.
std::int32_t GetSavedProcessId(Program& program, const std::string& strName);
// The smallest number from 1 that no process has.
std::int32_t GetNextSavedProcessId(Program& program);
// All names in the order of the file; arrNames is 0-based.
void FillSavedProcessList(Program& program, CheckList& list, std::vector<std::string>& arrNames);
// Removes the process and then its two lists. Raises RuntimeError when the file can't be written.
void DeleteSavedProcess(Program& program, const std::string& strName);

// The list of one side of a process: a file with a name per line, none for a count below 1. strFolder ends in a
// separator. Errors are told in a box; reading then gives what it has.
void ArraySaveToFile(Program& program, const std::vector<std::string>& arr, std::int32_t lngId,
                     const std::string& strFolder, std::int32_t lngCount, bool blnSource);
std::int32_t ArrayReadFromFile(Program& program, std::vector<std::string>& arr, std::int32_t lngId,
                               const std::string& strFolder, bool blnSource);

// Adds an export file, or printing, to a process that was saved. False after a report of the error.
bool AddExportInfoToSavedProcess(Program& program, const std::string& strName, const std::string& strExportFilePath,
                                 std::int32_t lngExportType, bool blnCSVWrapInQuot);
bool AddPrintInfoToSavedProcess(Program& program, const std::string& strName, bool blnPrint);
// The former, and a box that tells what was added.
void RecordExportingResultsToTxtFile(Program& program, const std::string& strName, const std::string& strExportFilePath,
                                     std::int32_t lngExportType, bool blnCSVWrapInQuot, std::int32_t lngCompType);

// Values in words; "N/A" for one that has none.
std::string GetCompTypeText(std::int32_t lngCompType);
std::string GetCompSubTypeText(std::int32_t lngCompSubType);
std::string GetCompSubSubTypeText(std::int32_t lngCompSubSubType);
std::string GetCompMethodText(std::int32_t lngCompMethod);
std::string GetExportTypeText(std::int32_t lngExportType);
std::string GetObjectTypesText(const std::string& strEncObjTypes);

// The process in words, and the box that shows them.
std::string SavedProcessText(Program& program, const std::string& strName);
void ShowSavedProcessProperties(Program& program, const std::string& strName);

// The flags of the object types in the order Tables, Procedures, Functions, Views, Triggers, Relationships,
// Constraints, Permissions: of one type code ("1,0,0,0,0,0,0,0" for tables, none set for 0, empty for an unknown one),
// and eight flags of a text of six, seven or eight; empty when it isn't valid.
std::string ObjectTypeFlags(long lngType);
std::string PaddedObjectTypeFlags(const std::string& strFlags);
// The place of the one flag that is set, from 0; -1 when that isn't one.
std::int32_t ObjectTypeIndex(const std::string& strFlags);

}  // namespace qrel
