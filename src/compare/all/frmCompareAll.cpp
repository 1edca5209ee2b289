#include "compare/all/frmCompareAll.h"

#include <algorithm>

#include "app/modRegistry.h"
#include "app/modStrings.h"
#include "app/settings.h"

namespace qrel {

namespace {

// Where the ticks are kept, beside the windows' places: "1,0,1" of the types from the first on.
constexpr const char* ticksValue = "frmCompareAll.types";
std::string ticksKey() { return std::string(productKey) + "\\Windows"; }

}  // namespace

frmCompareAll::frmCompareAll(Program& program) : CompareAllWindow(program, "frmCompareAll") {
  caption = "Compare Databases";
  parts.cmdCompare.isDefault = true;
  add(lblDatabases);
  add(cmdSelectAll);
  parts.cmdCompare.onClick = [this] {
    keepTicks();
    compare();
  };
  cmdSelectAll.onClick = [this] {
    for (std::size_t type = 0; type < TypesInUse(program_); ++type) parts.chkObjType[type].setChecked(true);
  };
  tickAsLastTime();
}

void frmCompareAll::ShowUp(const std::string& strSourceDb, const std::string& strTargetDb, std::string& strTypesFlags,
                           bool& blnResult) {
  input_.arrDatabases = {strSourceDb, strTargetDb};
  const auto& servers = program_.main.gtypSelServ;
  lblDatabases.setText("Source: " + servers[0].Name + "." + strSourceDb + "\nTarget: " + servers[1].Name + "." +
                       strTargetDb);
  program_.host.showModal(*this);
  blnResult = result_;
  strTypesFlags = typesFlags_;
}

void frmCompareAll::RunSavedProc(const std::string& strSourceDb, const std::string& strTargetDb,
                                 const std::string& strTypesFlags, bool& blnResult) {
  for (CheckBox& box : parts.chkObjType) box.setChecked(false);
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

// A type that came into use since then is ticked.
void frmCompareAll::tickAsLastTime() {
  OneBased<std::string> flags;
  const std::string strFlags = GetSettingString(program_.store, HKEY_CURRENT_USER, ticksKey(), ticksValue, "");
  const long count = strFlags.empty() ? 0 : StringToArray(strFlags, flags, ",");
  for (std::size_t type = 0; type < TypesInUse(program_); ++type) {
    const auto place = static_cast<long>(type) + 1;
    parts.chkObjType[type].setChecked(place > count || flags[place] == "1");
  }
}

void frmCompareAll::keepTicks() {
  const std::string strFlags = FlagsOfBoxes(parts).substr(0, 2 * TypesInUse(program_) - 1);
  if (strFlags.find('1') == std::string::npos) return;
  SaveByTheWay(program_,
               [&] { SaveSettingString(program_.store, HKEY_CURRENT_USER, ticksKey(), ticksValue, strFlags); });
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
