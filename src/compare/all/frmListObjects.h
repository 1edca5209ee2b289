// The window in which a person ticks the objects of one type that are to be compared.
#pragma once

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

#include "app/Program.h"
#include "compare/all/modCompareAll.h"
#include "platform/controls/form.h"

namespace qrel {

class frmListObjects : public Form {
 public:
  explicit frmListObjects(Program& program);

  Label lblServer1{"lblServer1"};
  Label lblServer2{"lblServer2"};
  Label lblDb1{"lblDb1"};
  Label lblDb2{"lblDb2"};
  Label lblObjectType{"lblObjectType"};
  std::array<CheckList, 2> pvlSqlObj = controlArray<CheckList, 2>("pvlSqlObj");  // 0 Source, 1 Target
  Button cmdSelectAll{"cmdSelectAll"};
  Button cmdDeselectAll{"cmdDeselectAll"};
  Button cmdOK{"cmdOK"};
  Button cmdCancel{"cmdCancel"};

  // Modal. blnOk False: left without a choice, and the rest stays as it was. blnAllSelected: every object of both lists
  // was ticked.
  void ShowUp(const std::string& strSourceDb, const std::string& strTargetDb, long enmObjectType, bool& blnOk,
              bool& blnAllSelected, ObjectSelection& selection);

  void load() override;

 private:
  void loadList(std::size_t side);
  void tickNamesake(std::size_t side, std::size_t row);
  void tickAll(bool ticked);
  std::vector<std::string> tickedNames(std::size_t side) const;
  void ok();

  Program& program_;
  std::array<std::string, 2> databases_;
  long type_ = 0;
  std::array<std::unordered_map<std::string, std::size_t>, 2> rowsByName_;  // each name's first row
  bool ok_ = false;
};

}  // namespace qrel
