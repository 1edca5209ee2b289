#include "ui/startUp.h"

#include <utility>

#include "compare/structure/modIgnoreColumns.h"
#include "db/mdlServers.h"

namespace qrel {

StartUp::StartUp(Program& program, MainWindowSteps steps) : program_(program), steps_(std::move(steps)) {
  ConnectIgnoredColumns(program);
}

void StartUp::LoadServers() { qrel::LoadServers(program_); }

void StartUp::ShowMainWindow() {
  mainWindow_ = std::make_unique<frmMain>(program_, steps_);
  program_.host.show(*mainWindow_);
}

}  // namespace qrel
