#include "compare/all/frmCompareAllTables.h"

namespace qrel {

frmCompareAllTables::frmCompareAllTables(Program& program) : CompareAllWindow(program, "frmCompareAllTables") {
  caption = "Compare All Objects";
}

void frmCompareAllTables::SetVarsForSelectiveComparison(ObjectSelection selection) {
  input_.blnSelective = true;
  input_.selection = std::move(selection);
  caption = "Compare Selected Objects";
}

void frmCompareAllTables::ShowUp(const std::string& strSourceDb, const std::string& strTargetDb, long enmObjectType,
                                 bool blnDetails, bool blnStructure, bool& blnResult) {
  input_.arrDatabases = {strSourceDb, strTargetDb};
  input_.blnDetails = blnDetails;
  menmObjectType_ = enmObjectType;
  structure_ = blnStructure;
  program_.host.showModal(*this);
  blnResult = result_;
}

void frmCompareAllTables::load() {
  CompareAllWindow::load();
  const long index = CompareAllIndex(menmObjectType_);
  waiting_ = index >= 0;
  if (waiting_) {
    parts.chkObjType[static_cast<std::size_t>(index)].setChecked(true);
  } else {
    program_.host.messageBox("Wrong index value in Form_Load frmCompareAllTables, menmObjectType = " +
                             std::to_string(menmObjectType_));
  }
}

void frmCompareAllTables::activate() {
  if (!waiting_) return;
  waiting_ = false;
  startRun();
}

bool frmCompareAllTables::runComparison() {
  if (!structure_) return CompareAll_Data && CompareAll_Data(parts, input_);
  std::string strTypesFlags;
  return CompareAll_Structure(program_, parts, strTypesFlags, input_);
}

}  // namespace qrel
