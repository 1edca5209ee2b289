#include "process/modSavedProcess.h"

#include <set>
#include <utility>

#include "app/trace.h"
#include "app/trap.h"
#include "platform/controls/control.h"
#include "platform/text.h"
#include "process/cInifile.h"
#include "process/savedProcessLists.h"

namespace qrel {

namespace {

constexpr const char* inModSavedProcess = "modSavedProcess";

cInifile openSection(const Program& program, const std::string& strName) {
  cInifile ini;
  ini.Path = program.main.gstrCompsIni;
  ini.Section = strName;
  return ini;
}

void putText(cInifile& ini, const char* strKey, const std::string& strText) {
  ini.Key = strKey;
  ini.SetValue(strText);
}

void putNumber(cInifile& ini, const char* strKey, std::int32_t lngNumber) {
  putText(ini, strKey, std::to_string(lngNumber));
}

void putFlag(cInifile& ini, const char* strKey, bool blnFlag) { putText(ini, strKey, blnFlag ? "True" : "False"); }

std::string textOf(cInifile& ini, const char* strKey) {
  ini.Key = strKey;
  return ini.Value();
}

std::int32_t numberOf(cInifile& ini, const char* strKey) { return numericPrefix(textOf(ini, strKey)); }

bool flagOf(cInifile& ini, const char* strKey) { return equalNoCase(textOf(ini, strKey), "True"); }

// 0 for a number that is none of the program's: one damaged process keeps nobody from the others.
std::int32_t idOf(cInifile& ini) {
  const std::string strId = textOf(ini, "Id");
  try {
    return numericPrefix(strId);
  } catch (const RuntimeError&) {
    return 0;
  }
}

OneBased<std::string> namesOf(const cInifile& ini) {
  OneBased<std::string> arrNames;
  long lngCount = 0;
  ini.EnumerateAllSections(arrNames, lngCount);
  return arrNames;
}

// Of all processes as they stand, those in an open change too.
std::int32_t nextId(cInifile ini) {
  std::set<std::int32_t> taken;
  for (const std::string& strName : namesOf(ini)) {
    ini.Section = strName;
    taken.insert(idOf(ini));
  }
  std::int32_t lngId = 1;
  while (taken.contains(lngId)) ++lngId;
  return lngId;
}

void putKeysBeforeId(cInifile& ini, const tSavedProcess& process) {
  putText(ini, "Name", process.strName);
  putNumber(ini, "CompType", process.lngCompType);
  putNumber(ini, "CompSubType", process.lngCompSubType);
  putNumber(ini, "CompSubSubType", process.lngCompSubSubType);
  putText(ini, "EncObjTypes", process.strEncObjTypes);
  putNumber(ini, "CompMethod", process.lngCompMethod);
  putText(ini, "ServerName1", process.strServer1);
  putText(ini, "ServerName2", process.strServer2);
  putText(ini, "DbName1", process.strDb1);
  putText(ini, "DbName2", process.strDb2);
  putText(ini, "TableName1", process.strTable1);
  putText(ini, "TableName2", process.strTable2);
  putText(ini, "ExportFilePath", process.strExportFilePath);
  putNumber(ini, "ExportType", process.lngExportType);
}

void putKeysFromId(cInifile& ini, const tSavedProcess& process, std::int32_t lngId) {
  putNumber(ini, "Id", lngId);
  putNumber(ini, "SelCompCountSource", process.lngSelCountSource);
  putNumber(ini, "SelCompCountTarget", process.lngSelCountTarget);
  putFlag(ini, "Print", process.blnPrint);
  putNumber(ini, "ObjId1", process.lngObjId1);
  putNumber(ini, "ObjId2", process.lngObjId2);
  putFlag(ini, "CSVWrapInQuot", process.blnCSVWrapInQuot);
  putFlag(ini, "AutoClose", process.blnAutoClose);
}

// The lists of a process that is being saved; they go again when it isn't.
class NewLists {
 public:
  NewLists(const tSavedProcess& process, std::int32_t lngId, std::string strFolder)
      : id_(lngId), folder_(std::move(strFolder)) {
    try {
      WriteProcessList(process.arrSource, id_, folder_, process.lngSelCountSource, true);
      WriteProcessList(process.arrTarget, id_, folder_, process.lngSelCountTarget, false);
    } catch (const RuntimeError&) {
      RemoveProcessLists(id_, folder_);
      throw;
    }
  }
  ~NewLists() {
    if (!kept_) RemoveProcessLists(id_, folder_);
  }
  void keep() { kept_ = true; }
  NewLists(const NewLists&) = delete;
  NewLists& operator=(const NewLists&) = delete;

 private:
  std::int32_t id_;
  std::string folder_;
  bool kept_ = false;
};

// Whether the file on the disk has the section with this id, or can't be asked. A write may fail behind its last step.
bool mayBeStored(const Program& program, const std::string& strName, std::int32_t lngId) {
  try {
    cInifile ini = openSection(program, strName);
    return idOf(ini) == lngId;
  } catch (const RuntimeError&) {
    return true;
  }
}

enum class Step : std::uint8_t { Section, Lists };

// Writes section and lists together. The lists go first: their id is nobody's until the section has it, so that a
// program that ends in between leaves every process with its own lists. All of it happens under the file's lock, which
// no message box may hold; `step` tells where an error was.
void save(const Program& program, cInifile& ini, const tSavedProcess& process, Step& step) {
  cInifile::Change change(ini);
  putKeysBeforeId(ini, process);
  // A process that is saved over still has its id here, and so gets another.
  const std::int32_t lngId = nextId(ini);
  putKeysFromId(ini, process, lngId);
  step = Step::Lists;
  NewLists lists(process, lngId, program.main.gstrDataPath);
  step = Step::Section;
  try {
    change.commit();
    lists.keep();
  } catch (const RuntimeError&) {
    if (mayBeStored(program, process.strName, lngId)) lists.keep();
    throw;
  }
}

void readLists(Program& program, tSavedProcess& process) {
  ArrayReadFromFile(program, process.arrSource, process.lngId, program.main.gstrDataPath, true);
  ArrayReadFromFile(program, process.arrTarget, process.lngId, program.main.gstrDataPath, false);
}

void readKeys(cInifile& ini, tSavedProcess& process) {
  const cInifile::Reading reading(ini);
  process.lngCompType = numberOf(ini, "CompType");
  process.lngCompSubType = numberOf(ini, "CompSubType");
  process.lngCompSubSubType = numberOf(ini, "CompSubSubType");
  process.strEncObjTypes = textOf(ini, "EncObjTypes");
  process.lngCompMethod = numberOf(ini, "CompMethod");
  process.strServer1 = textOf(ini, "ServerName1");
  process.strDb1 = textOf(ini, "DbName1");
  process.strTable1 = textOf(ini, "TableName1");
  process.strServer2 = textOf(ini, "ServerName2");
  process.strDb2 = textOf(ini, "DbName2");
  process.strTable2 = textOf(ini, "TableName2");
  process.strExportFilePath = textOf(ini, "ExportFilePath");
  process.lngExportType = numberOf(ini, "ExportType");
  process.lngId = numberOf(ini, "Id");
  process.lngSelCountSource = numberOf(ini, "SelCompCountSource");
  process.lngSelCountTarget = numberOf(ini, "SelCompCountTarget");
  process.blnPrint = flagOf(ini, "Print");
  process.lngObjId1 = numberOf(ini, "ObjId1");
  process.lngObjId2 = numberOf(ini, "ObjId2");
  process.blnCSVWrapInQuot = flagOf(ini, "CSVWrapInQuot");
  process.blnAutoClose = flagOf(ini, "AutoClose");
}

void tellInconsistency(Program& program, const tSavedProcess& process, const std::string& strSide,
                       std::size_t lngLines) {
  // Both boxes show Target's count, whichever was tested.
  program.host.messageBox(
      "Inconsistent data while retrieving details of saved comparison process.\r\n\r\nComparison Id: " +
          std::to_string(process.lngId) + "\r\n\r\n" + strSide +
          " objects count: " + std::to_string(process.lngSelCountTarget) + "\r\n" + strSide +
          " objects in file: " + std::to_string(lngLines),
      Icon::Warning, "Inconsistent Data");
}

void checkLists(Program& program, const tSavedProcess& process) {
  if (std::cmp_not_equal(process.lngSelCountSource, process.arrSource.size()))
    tellInconsistency(program, process, "Source", process.arrSource.size());
  if (std::cmp_not_equal(process.lngSelCountTarget, process.arrTarget.size()))
    tellInconsistency(program, process, "Target", process.arrTarget.size());
}

}  // namespace

bool SaveComparisonProcess(Program& program, const tSavedProcess& process) {
  return trap(program, inModSavedProcess, "SaveComparisonProcess", false, [&] {
    const PointerScope hourglass(program.host, Pointer::Hourglass);
    cInifile ini = openSection(program, process.strName);
    // A file that can't be read is reported as that, not as one that can't be written.
    { const cInifile::Reading readable(ini); }
    Step step = Step::Section;
    try {
      save(program, ini, process, step);
      return true;
    } catch (const RuntimeError& error) {
      WriteDebugLog(program, "SaveComparisonProcess: " + error.description);
      if (step == Step::Lists)
        TellProcessListError(program, "ArraySaveToFile", error);
      else
        program.host.messageBox("Failed to save comparison's process name.", Icon::Information);
      return false;
    }
  });
}

tSavedProcess GetSavedProcessDetails(Program& program, const std::string& strName) {
  tSavedProcess nothing;
  nothing.strName = strName;
  if (strName.empty()) return nothing;
  return trap(program, inModSavedProcess, "GetSavedProcessDetails", nothing, [&] {
    tSavedProcess process = nothing;
    cInifile ini = openSection(program, strName);
    std::string strSection;
    // Another program that saves over the process between the two reads gives it other lists.
    do {
      strSection = ini.INISection();
      readKeys(ini, process);
      readLists(program, process);
    } while (ini.INISection() != strSection);
    checkLists(program, process);
    return process;
  });
}

std::int32_t GetSavedProcessCount(Program& program) {
  return trap(program, inModSavedProcess, "GetSavedProcessCount", 0,
              [&] { return static_cast<std::int32_t>(namesOf(openSection(program, "")).count()); });
}

std::string GetSavedProcessNameById(Program& program, std::int32_t lngId) {
  return trap(program, inModSavedProcess, "GetSavedProcessNameById", std::string(), [&] {
    cInifile ini = openSection(program, "");
    const cInifile::Reading reading(ini);
    for (const std::string& strName : namesOf(ini)) {
      ini.Section = strName;
      if (idOf(ini) == lngId) return strName;
    }
    return std::string();
  });
}

std::int32_t GetSavedProcessId(Program& program, const std::string& strName) {
  if (strName.empty()) return 0;
  return trap(program, inModSavedProcess, "GetSavedProcessId", 0, [&] {
    cInifile ini = openSection(program, strName);
    return idOf(ini);
  });
}

std::int32_t GetNextSavedProcessId(Program& program) {
  return trap(program, inModSavedProcess, "GetNextSavedProcessId", 0, [&] {
    cInifile ini = openSection(program, "");
    const cInifile::Reading reading(ini);
    return nextId(ini);
  });
}

void FillSavedProcessList(Program& program, CheckList& list, std::vector<std::string>& arrNames) {
  list.clear();
  arrNames.clear();
  trap(program, inModSavedProcess, "FillSavedProcessList", [&] {
    for (const std::string& strName : namesOf(openSection(program, ""))) {
      list.add(strName);
      arrNames.push_back(strName);
    }
  });
}

void DeleteSavedProcess(Program& program, const std::string& strName) {
  cInifile ini = openSection(program, strName);
  cInifile::Change change(ini);
  const std::int32_t lngId = idOf(ini);
  ini.DeleteSection();
  change.commit();
  // Under the lock still: the id is free, and the next process to take it writes lists of its own.
  RemoveProcessLists(lngId, program.main.gstrDataPath);
}

bool AddExportInfoToSavedProcess(Program& program, const std::string& strName, const std::string& strExportFilePath,
                                 std::int32_t lngExportType, bool blnCSVWrapInQuot) {
  return trap(program, inModSavedProcess, "AddExportInfoToSavedProcess", false, [&] {
    const PointerScope hourglass(program.host, Pointer::Hourglass);
    cInifile ini = openSection(program, strName);
    cInifile::Change change(ini);
    putText(ini, "ExportFilePath", strExportFilePath);
    putNumber(ini, "ExportType", lngExportType);
    putFlag(ini, "CSVWrapInQuot", blnCSVWrapInQuot);
    change.commit();
    return true;
  });
}

bool AddPrintInfoToSavedProcess(Program& program, const std::string& strName, bool blnPrint) {
  return trap(program, inModSavedProcess, "AddPrintInfoToSavedProcess", false, [&] {
    const PointerScope hourglass(program.host, Pointer::Hourglass);
    cInifile ini = openSection(program, strName);
    cInifile::Change change(ini);
    putFlag(ini, "Print", blnPrint);
    change.commit();
    return true;
  });
}

}  // namespace qrel
