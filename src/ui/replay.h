// The replay of a saved process: the panels are moved to its servers, databases and objects, and the command that it
// was saved from is run with nobody to ask.
#pragma once

#include <cstdint>
#include <string>

#include "app/Program.h"
#include "process/modSavedProcess.h"
#include "ui/mainCompare.h"

namespace qrel {

class frmMain;

class Replay {
 public:
  Replay(Program& program, frmMain& window, MainCompare& compare);

  // Runs the process with this id; below 1 the person chooses one. An id that no process has does nothing. What can't
  // be found is told in a message, and the panels stay as far as they had come. Closes the main window afterwards when
  // the process asks for that and was found whole. How it ended stands in the program's ReplayOutcome.
  void RunSavedProcess(std::int32_t lngId);
  // The same for a process that is at hand.
  void RunProcess(const tSavedProcess& process);

 private:
  template <class Body>
  void replay(Body&& body);
  void run(const tSavedProcess& process);
  bool detailsComplete(const tSavedProcess& process);
  bool selectServers(const tSavedProcess& process);
  bool selectDatabases(const tSavedProcess& process);
  void RunSavedProcess_DataComp(const tSavedProcess& process);
  void RunSavedProcess_MetaDataComp(const tSavedProcess& process);
  void RunSavedProcess_Data_Single(const tSavedProcess& process);
  void RunSavedProcess_Data_All(const tSavedProcess& process);
  void RunSavedProcess_Data_Selective(const tSavedProcess& process);
  void CompareObjectPairByName(std::int32_t lngTypeIndex, const std::string& strName1, const std::string& strName2);
  bool selectObjects(const std::string& strWhat, const std::string& strName1, const std::string& strName2);
  void CannotRun(const std::string& strWhy);

  Program& program_;
  frmMain& window_;
  MainCompare& compare_;
  Workspace& workspace_;
};

}  // namespace qrel
