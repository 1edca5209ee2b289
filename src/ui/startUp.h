// What Main asks of the layers above it: the server list and the main window.
#pragma once

#include <memory>

#include "app/mdlMain.h"
#include "ui/frmMain.h"

namespace qrel {

// A desktop program makes one, hands it to Main and keeps it as long as its windows live.
class StartUp : public MainSteps {
 public:
  explicit StartUp(Program& program, MainWindowSteps steps = {});

  void LoadServers() override;
  // Makes the main window and has the host show it.
  void ShowMainWindow() override;

  // Owned here; null when Main failed before it was made.
  frmMain* mainWindow() const { return mainWindow_.get(); }

 private:
  Program& program_;
  MainWindowSteps steps_;
  std::unique_ptr<frmMain> mainWindow_;
};

}  // namespace qrel
