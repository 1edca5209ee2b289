// The window that adds a server to the list.
#pragma once

#include "app/Program.h"
#include "platform/controls/form.h"

namespace qrel {

class frmAddServer : public Form {
 public:
  explicit frmAddServer(Program& program);

  // What no control shows of how a server is reached by way of ODBC: its driver, as in tServer, and the strict
  // encryption of later versions.
  std::string strOdbcDriver;
  bool blnStrict = false;

  Label lblKnown{"lblKnown"};
  ComboBox cmbKnown{"cmbKnown"};  // servers that are known to be there and aren't in the list; both hidden without any
  TextBox txtServer{"txtServer"};
  TextBox txtDatabase{"txtDatabase"};
  OptionButton optGen0{"optGen(0)"};  // Windows authentication
  OptionButton optGen1{"optGen(1)"};  // SQL Server authentication
  Label lblLogin{"lblLogin"};
  Label lblPassword{"lblPassword"};
  TextBox txtLogin{"txtLogin"};
  TextBox txtPassword{"txtPassword"};
  CheckBox chkLocalDb{"chkLocalDb"};
  // Of connections by way of ODBC alone.
  CheckBox chkEncrypt{"chkEncrypt"};
  CheckBox chkTrustCertificate{"chkTrustCertificate"};  // encrypt without asking whose certificate it is
  Button cmdOK{"cmdOK"};
  Button cmdCancel{"cmdCancel"};

  // Modal; `changed` tells whether a server was added.
  void ShowUp(bool& changed);

 private:
  void enableLogin(bool enabled);
  void chooseLocalDb();
  void ok();
  // Shows the message, puts the focus into the box with its text selected, and returns False.
  bool refuse(TextBox& box, const std::string& strMessage);
  bool inputIsValid();
  tServer serverFromInput() const;
  // False when the list has a server of that name by now. Raises RuntimeError when it can't be written.
  bool append(const tServer& server);

  Program& program_;
  bool changed_ = false;
};

}  // namespace qrel
