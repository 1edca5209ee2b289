// The entry point: paths, settings, command line, and then the main window.
#pragma once

#include <string>

#include "app/Program.h"

namespace qrel {

// What Main needs of the layers above it.
class MainSteps {
 public:
  virtual ~MainSteps() = default;
  virtual void LoadServers() = 0;
  virtual void ShowMainWindow() = 0;
};

// Starts the program in the told order. An error goes to the error report and ends it; settings that can't be written
// are none.
void Main(Program& program, MainSteps& steps);

// A warning when the settings' file is there and can't be read in full.
void TellDamagedSettings(Program& program);
// Sets the folders and profile file paths from program.programFolder and program.documentsFolder.
void SetFilePaths(Program& program);
// Notes the running version in VerNum; a first run of version 1.1 drops a server list that can't be read.
void CheckProgramVersion(Program& program, const std::string& strAppVer = programVersion);
// Reads the settings that have a working copy, and the server list between them.
void ReadOptions(Program& program, MainSteps& steps);
// Writes the program's folder to Location.
void SaveLocation(Program& program);
// Takes the process id of /RunSavedComp from program.commandLine, the digits that its value begins with; 0 without any
// and beyond 32 bits. Anything else on the line is left alone.
void ParseCommandLine(Program& program);
// The same id of any command line.
std::int32_t RunSavedCompId(const std::string& strCommandLine);

// The data access layer's version, 0 when it isn't there.
double GetMdacVersion(Program& program);
// False, after a message, when the data access layer is missing or older than 2.5.
bool CheckMdac(Program& program);

// The folder with a separator at its end.
std::string withSeparator(std::string strFolder);

}  // namespace qrel
