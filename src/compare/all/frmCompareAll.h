// The window in which a person chooses the object types to be compared, and which then shows the progress.
#pragma once

#include "compare/all/CompareAllWindow.h"

namespace qrel {

class frmCompareAll : public CompareAllWindow {
 public:
  explicit frmCompareAll(Program& program);

  Label lblDatabases{"lblDatabases"};  // what is compared with what
  Button cmdSelectAll{"cmdSelectAll"};

  // Modal. The boxes are ticked as they were when a person last started a comparison, all of them the first time.
  // blnResult tells whether a comparison came to its end; strTypesFlags then receives the flags of its types.
  void ShowUp(const std::string& strSourceDb, const std::string& strTargetDb, std::string& strTypesFlags,
              bool& blnResult);
  // The same for a saved process: the boxes follow the eight flags and the comparison starts at once.
  void RunSavedProc(const std::string& strSourceDb, const std::string& strTargetDb, const std::string& strTypesFlags,
                    bool& blnResult);

  void activate() override;

 private:
  void compare();
  void tickAsLastTime();
  void keepTicks();
  bool runComparison() override;

  CompareAllInput input_;
  std::string typesFlags_;
  bool startsAtOnce_ = false;
};

}  // namespace qrel
