// The window that narrows an object list to chosen schemas or owners.
#pragma once

#include <string>
#include <vector>

#include "app/Program.h"
#include "platform/controls/form.h"

namespace qrel {

class frmFilterBySchema : public Form {
 public:
  explicit frmFilterBySchema(Program& program);

  Label lblInfo{"lblInfo"};
  CheckList grdNames{"grdNames"};  // row 0 is "(Select All)", then one row per name
  Button cmdOK{"cmdOK"};
  Button cmdCancel{"cmdCancel"};

  // Modal, for the first lngCount names, a side (0 Source, 1 Target) and the kind 1 (schemas) or 2 (owners). `changed`
  // tells whether the choice was confirmed; then strFilter holds the chosen names with commas between them. All names
  // or none mean no filter: blnFilter False and an empty text. Otherwise both stay as they were.
  void ShowUp(const std::vector<std::string>& arrNames, long lngCount, int side, bool& blnFilter,
              std::string& strFilter, long kind, bool& changed);

 private:
  void describe(long kind);
  void fill(const std::vector<std::string>& arrNames, long lngCount, int side);
  void ticked(std::size_t row);
  std::size_t tickedNames() const;

  Program& program_;
  bool saved_ = false;
};

}  // namespace qrel
