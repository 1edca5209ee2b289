// The window that compares the objects of one type: it starts by itself and shows the progress.
#pragma once

#include <functional>

#include "compare/all/CompareAllWindow.h"

namespace qrel {

class frmCompareAllTables : public CompareAllWindow {
 public:
  explicit frmCompareAllTables(Program& program);

  // Before ShowUp: only these objects are compared.
  void SetVarsForSelectiveComparison(ObjectSelection selection);

  // Modal. blnStructure False compares the data of the tables, through CompareAll_Data. blnResult tells whether the
  // comparison came to its end.
  void ShowUp(const std::string& strSourceDb, const std::string& strTargetDb, long enmObjectType, bool blnDetails,
              bool blnStructure, bool& blnResult);

  // The data comparison, with the meaning of CompareAll_Structure's arguments. Whoever shows the window for data sets
  // it, for it stands above this folder.
  std::function<bool(CompareAllControls& frmOwner, const CompareAllInput& input)> CompareAll_Data;

  // Checks the type's box; an unknown type is told in a box, and nothing will run.
  void load() override;
  void activate() override;

 private:
  bool runComparison() override;

  CompareAllInput input_;
  long menmObjectType_ = 0;
  bool structure_ = true;
  bool waiting_ = false;  // for the first activation
};

}  // namespace qrel
