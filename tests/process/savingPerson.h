// A person in the window that saves a comparison, for ScriptedHost::windows.
#pragma once

#include <functional>
#include <string>

#include "process/frmSaveComparison.h"

namespace qrel {

inline std::function<void(Form&)> personSavesAs(const std::string& name) {
  return [name](Form& form) {
    auto& dialog = dynamic_cast<frmSaveComparison&>(form);
    dialog.txtProcessName.personTypes(name);
    dialog.cmdOK.personClicks();
  };
}

inline void personCancels(Form& form) { form.personPressesEsc(); }

}  // namespace qrel
