#include "compare/all/frmCompareAll.h"

#include <algorithm>

#include "app/modStrings.h"

namespace qrel {

frmCompareAll::frmCompareAll(Program& program) : CompareAllWindow(program, "frmCompareAll") {
  caption = "Compare Databases";
  parts.cmdCompare.isDefault = true;
  parts.cmdCompare.onClick = [this] { compare(); };
}

void frmCompareAll::ShowUp(const std::string& strSourceDb, const std::string& strTargetDb, std::string& strTypesFlags,
                           bool& blnResult) {
  input_.arrDatabases = {strSourceDb, strTargetDb};
  program_.host.showModal(*this);
  blnResult = result_;
  strTypesFlags = typesFlags_;
}

void frmCompareAll::RunSavedProc(const std::string& strSourceDb, const std::string& strTargetDb,
                                 const std::string& strTypesFlags, bool& blnResult) {
  OneBased<std::string> flags;
  const long count = StringToArray(strTypesFlags, flags, ",");
  for (long i = 0; i < std::min(count, static_cast<long>(parts.chkObjType.size())); ++i)
    parts.chkObjType[static_cast<std::size_t>(i)].setChecked(flags[i + 1] == "1");
  startsAtOnce_ = true;
  std::string strFlags;
  ShowUp(strSourceDb, strTargetDb, strFlags, blnResult);
}

void frmCompareAll::activate() {
  if (!startsAtOnce_) return;
  startsAtOnce_ = false;
  compare();
}

void frmCompareAll::compare() {
  const auto end = parts.chkObjType.begin() + static_cast<std::ptrdiff_t>(TypesInUse(program_));
  if (std::none_of(parts.chkObjType.begin(), end, [](const CheckBox& box) { return box.checked(); })) {
    program_.host.messageBox("Please select at least one object type to be compared.");
    return;
  }
  startRun();
}

bool frmCompareAll::runComparison() { return CompareAll_Structure(program_, parts, typesFlags_, input_); }

}  // namespace qrel
