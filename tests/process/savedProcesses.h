// Saved processes in a temporary folder, and a person in the window that saves them (for ScriptedHost::windows).
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "process/frmSaveComparison.h"
#include "tests/support.h"

namespace qrel {

inline std::function<void(Form&)> personSavesAs(const std::string& name) {
  return [name](Form& form) {
    auto& dialog = dynamic_cast<frmSaveComparison&>(form);
    dialog.txtProcessName.personTypes(name);
    dialog.cmdOK.personClicks();
  };
}

inline void personCancels(Form& form) { form.personPressesEsc(); }

class SavedProcesses : public ::testing::Test {
 protected:
  SavedProcesses() {
    program.main.gstrDataPath = test.folder.path().string() + "/";
    program.main.gstrCompsIni = path("qrel_comps.ini");
  }
  std::string path(const std::string& file) const { return (test.folder.path() / file).string(); }
  // The boxes since the last call.
  std::vector<ScriptedHost::Box> boxes() { return std::exchange(test.host.boxes, {}); }
  // The text of the one box since then.
  std::string lastBox() {
    const auto shown = boxes();
    return shown.size() == 1 ? shown[0].text : std::to_string(shown.size()) + " boxes";
  }

  TestProgram test;
  Program& program = test.program;
};

}  // namespace qrel
