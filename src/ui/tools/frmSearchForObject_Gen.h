// The search for an object by the beginning of its name.
#pragma once

#include <string>

#include "app/Program.h"
#include "platform/controls/form.h"
#include "platform/controls/textPane.h"

namespace qrel {

// What a person has chosen: an id of -1 and an empty name when nothing.
struct FoundObject {
  long enmType = 0;
  std::string strName;  // without its schema
  long lngId = -1;
};

class frmSearchForObject_Gen : public Form {
 public:
  explicit frmSearchForObject_Gen(Program& program);

  Label lblServer1{"lblServer1"};
  Label lblDb1{"lblDb1"};
  Label lblFind{"lblFind"};
  Label lblHint{"lblHint"};
  ComboBox cmbType{"cmbType"};
  TextBox txtFind{"txtFind"};
  Button cmdFind{"cmdFind"};
  CheckList pvlSqlObj{"pvlSqlObj"};  // what was found
  TextPane txtTXProc{"txtTXProc"};   // of the list; it isn't shown
  Button cmdOK{"cmdOK"};
  Button cmdCancel{"cmdCancel"};

  // Modal, over one database of side Index (0 Source, 1 Target); enmType is searched for at first.
  FoundObject ShowUp(long enmType, int Index, const std::string& strDb);

  void load() override;
  void activate() override { mblnActivated = true; }

 private:
  void showType();
  void cmbType_Click();
  void cmdFind_Click();
  void cmdOK_Click();

  Program& program_;
  FoundObject found_;
  long menmType = 0;
  int mlngIndex = 0;
  std::string mstrDb, mstrName, mstrHint;  // the type's singular name; what to do
  bool mblnActivated = false;
  bool mblnBusy = false;
};

}  // namespace qrel
