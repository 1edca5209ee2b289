#include "ui/startUp.h"

#include <utility>

#include "db/mdlServers.h"

namespace qrel {

StartUp::StartUp(Program& program, MainWindowSteps steps) : program_(program), steps_(std::move(steps)) {}

void StartUp::LoadServers() { qrel::LoadServers(program_); }

void StartUp::ShowMainWindow() {
  mainWindow_ = std::make_unique<frmMain>(program_, steps_);
  program_.host.show(*mainWindow_);
}

}  // namespace qrel
