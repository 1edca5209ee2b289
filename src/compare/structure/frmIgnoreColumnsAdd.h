// The window in which a person unticks the columns of one table that are to be ignored.
#pragma once

#include <cstdint>
#include <string>

#include "app/Program.h"
#include "platform/controls/form.h"

namespace qrel {

class frmIgnoreColumnsAdd : public Form {
 public:
  explicit frmIgnoreColumnsAdd(Program& program);

  Label lblGen0{"lblGen(0)"};  // the instruction
  Label lblTableName{"lblTableName"};
  Label lblSide{"lblSide"};              // "Target: database Shop, server One"
  CheckList pvlSqlObj0{"pvlSqlObj(0)"};  // a tick: the column takes part
  LinkLabel lblGen2{"lblGen(2)"};        // ticks all
  LinkLabel lblGen3{"lblGen(3)"};        // unticks all
  Button cmdOK{"cmdOK"};
  Button cmdCancel{"cmdCancel"};

  // Modal. The table is one of the selected server lngSide (0 Source, 1 Target); lngTableId 0: by its name. blnSaved
  // tells whether the list enmList was saved; lngIgnored, the number of columns on it, is set only then.
  void ShowUp(long enmList, long lngSide, const std::string& strServer, const std::string& strDatabase,
              const std::string& strTable, long lngTableId, bool& blnSaved, std::int32_t& lngIgnored);

  void load() override;

 private:
  void setTexts();
  void loadColumns();
  void tickAll(bool ticked);
  void ok();

  Program& program_;
  long menmMode_ = 0;
  long side_ = 0;
  std::string server_, database_, table_;
  long tableId_ = 0;
  bool saved_ = false;
  std::int32_t ignored_ = 0;
};

}  // namespace qrel
