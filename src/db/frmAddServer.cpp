#include "db/frmAddServer.h"

#include "app/modRegistry.h"
#include "app/settings.h"
#include "app/trap.h"
#include "db/mdlServers.h"
#include "platform/text.h"

namespace qrel {

namespace {
constexpr const char* alreadyAdded = "This server is already added to the list.";
}

frmAddServer::frmAddServer(Program& program) : Form("frmAddServer"), program_(program) {
  for (Control* control : std::initializer_list<Control*>{
           &lblKnown, &cmbKnown, &txtServer, &txtDatabase, &optGen0, &optGen1, &lblLogin, &lblPassword, &txtLogin,
           &txtPassword, &chkLocalDb, &chkEncrypt, &chkTrustCertificate, &cmdOK, &cmdCancel})
    add(*control);
  caption = "Add SQL Server";
  for (const std::string& strServer : program.data.knownServers())
    if (!IsServerInList(program, strServer)) cmbKnown.add(strServer);
  lblKnown.setVisible(cmbKnown.count() > 0);
  cmbKnown.setVisible(cmbKnown.count() > 0);
  cmbKnown.onClick = [this] {
    chkLocalDb.setChecked(false);
    txtServer.setText(cmbKnown.text());
  };
  txtDatabase.setText("master");
  txtPassword.password = true;
  optGen0.setText("Windows authentication");
  optGen1.setText("SQL Server authentication");
  OptionButton::group({&optGen0, &optGen1});
  optGen0.choose();
  enableLogin(false);
  optGen0.onClick = [this] {
    enableLogin(false);
    txtLogin.setText("");
    txtPassword.setText("");
  };
  optGen1.onClick = [this] { enableLogin(true); };
  chkLocalDb.onClick = [this] { chooseLocalDb(); };
  chkEncrypt.setChecked(true);
  chkEncrypt.onClick = [this] { chkTrustCertificate.setEnabled(chkEncrypt.checked()); };
  cmdOK.isDefault = true;
  cmdOK.onClick = [this] { ok(); };
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { close(); };
}

void frmAddServer::ShowUp(bool& changed) {
  changed_ = false;
  program_.host.showModal(*this);
  changed = changed_;
}

void frmAddServer::enableLogin(bool enabled) {
  for (Control* control : std::initializer_list<Control*>{&lblLogin, &lblPassword, &txtLogin, &txtPassword})
    control->setEnabled(enabled);
}

void frmAddServer::chooseLocalDb() {
  if (!chkLocalDb.checked()) return;
  optGen0.choose();
  txtServer.setText("(localdb)\\InstanceName");
}

bool frmAddServer::refuse(TextBox& box, const std::string& strMessage) {
  program_.host.messageBox(strMessage);
  box.setFocus(true);
  return false;
}

bool frmAddServer::inputIsValid() {
  const auto trimmed = [](TextBox& box) {
    box.setText(std::string(trimBlanks(box.text())));
    return box.text();
  };
  if (trimmed(txtServer).empty()) return refuse(txtServer, "Please enter server name.");
  if (trimmed(txtDatabase).empty()) return refuse(txtDatabase, "Please enter database name.");
  if (optGen1.chosen()) {
    if (trimmed(txtLogin).empty()) return refuse(txtLogin, "Please enter Login name.");
    trimmed(txtPassword);
  }
  if (IsServerInList(program_, txtServer.text())) return refuse(txtServer, alreadyAdded);
  return true;
}

tServer frmAddServer::serverFromInput() const {
  tServer server;
  server.Name = txtServer.text();
  server.SQLAuth = optGen1.chosen();
  server.LoginName = txtLogin.text();
  server.Password = txtPassword.text();
  server.MRUDb = txtDatabase.text();
  server.LocalDb = chkLocalDb.checked();
  // Encrypted is what nothing needs to be said about.
  server.Encrypt = !chkEncrypt.checked() ? "no" : blnStrict ? "strict" : "";
  server.TrustServerCertificate = chkEncrypt.checked() && chkTrustCertificate.checked();
  server.OdbcDriver = strOdbcDriver;
  return server;
}

bool frmAddServer::append(const tServer& server) {
  KeyStore::Change change(program_.store);
  LoadServers(program_);
  // Another process may have added it while the connection was tried.
  if (IsServerInList(program_, server.Name)) return false;
  // A count without servers in memory is one that can't be loaded: the key goes before the server is added. A key that
  // does hold servers has subkeys and stays.
  if (program_.servers.gtypServers.empty() && ReadNumber(program_, "Count") >= 1)
    DeleteRegKey(program_.store, HKEY_CURRENT_USER, std::string(productKey) + "\\Servers");
  AppendServer(program_, server);
  change.commit();
  return true;
}

void frmAddServer::ok() {
  trap(program_, "frmAddServer", "cmdOK_Click", [&] {
    if (!inputIsValid()) return;
    const tServer server = serverFromInput();
    if (!TestServerConnection(program_, server)) {
      const std::string& strReason = program_.state<ServerTestState>().strReason;
      const std::string strWhy = strReason.empty() ? "" : "\r\n\r\n" + strReason;
      program_.host.messageBox(
          "Cannot connect to the server - server does not exist or access denied.\r\n\r\nPlease enter correct server "
          "data." +
              strWhy,
          Icon::Warning, "Cannot Connect To The Server");
      txtServer.setFocus(true);
      return;
    }
    if (!append(server)) {
      refuse(txtServer, alreadyAdded);
      return;
    }
    LoadServers(program_);
    InitSelectedServers(program_);
    changed_ = true;
    close();
  });
}

}  // namespace qrel
