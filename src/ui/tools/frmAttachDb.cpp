#include "ui/tools/frmAttachDb.h"

#include "app/trap.h"
#include "db/mdlData.h"
#include "platform/files.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::size_t nameField = 0, dataField = 1, logField = 2;

Parameter textParameter(const char* name, long size, const std::string& strValue) {
  Parameter parameter;
  parameter.Name = name;
  parameter.Type = adVarWChar;
  parameter.Direction = adParamInput;
  parameter.Size = size;
  parameter.Value = Value::ofText(strValue);
  return parameter;
}

}  // namespace

frmAttachDb::frmAttachDb(Program& program) : Form("frmAttachDb"), program_(program) {
  add(lblServer);
  for (TextBox& box : txtPath) add(box);
  for (Button& button : cmdFileSelect) add(button);
  for (Control* control : std::initializer_list<Control*>{&chkAttachSingleFile, &cmdOK, &cmdCancel}) add(*control);
  caption = "Attach Database";
  for (const std::size_t which : {0U, 1U}) cmdFileSelect[which].onClick = [this, which] { selectFile(which); };
  chkAttachSingleFile.onClick = [this] {
    txtPath[logField].setEnabled(!chkAttachSingleFile.checked());
    cmdFileSelect[1].setEnabled(!chkAttachSingleFile.checked());
  };
  cmdOK.isDefault = true;
  cmdOK.onClick = [this] { cmdOK_Click(); };
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { close(); };
}

void frmAttachDb::ShowUp(bool& blnAttached) {
  attached_ = false;
  lblServer.setText("Server: " + program_.main.gtypSelServ[0].Name);
  program_.host.showModal(*this);
  blnAttached = attached_;
}

void frmAttachDb::selectFile(std::size_t which) {
  trap(program_, "frmAttachDb", "cmdFileSelect_Click", [&] {
    const std::string strExtension = which == 0 ? "mdf" : "ldf";
    FileDialog dialog;
    dialog.title = which == 0 ? "Select Database File" : "Select Log File";
    dialog.filter = std::string("SQL Server ") + (which == 0 ? "Database" : "Log") + " files (*." + strExtension +
                    ")|*." + strExtension;
    dialog.defaultFile = txtPath[which + 1].text();
    dialog.defaultExtension = strExtension;
    if (const std::string strPath = program_.host.openFileDialog(dialog); !strPath.empty())
      txtPath[which + 1].setText(strPath);
  });
}

bool frmAttachDb::refuse(std::size_t field, const std::string& strMessage) {
  program_.host.messageBox(strMessage, Icon::Warning);
  txtPath[field].setFocus(true);
  return false;
}

bool frmAttachDb::inputIsValid() {
  for (TextBox& box : txtPath) box.setText(std::string(trimBlanks(box.text())));
  const bool withLog = !chkAttachSingleFile.checked();
  if (txtPath[nameField].text().empty()) return refuse(nameField, "Please specify database name.");
  if (txtPath[dataField].text().empty()) return refuse(dataField, "Please specify database file.");
  if (withLog && txtPath[logField].text().empty()) return refuse(logField, "Please specify log file.");
  for (const std::size_t field : {dataField, logField}) {
    if (field == logField && !withLog) continue;
    const std::string& strPath = txtPath[field].text();
    if (!files::exists(strPath)) return refuse(field, "File " + strPath + " doesn't exist.");
  }
  return true;
}

void frmAttachDb::attach() {
  const bool withLog = !chkAttachSingleFile.checked();
  auto connection = std::make_shared<Connection>(program_.data);
  connection->ConnectionString = connectionStringForRun(program_.main.gtypSelServ[0], "master");
  connection->Open();
  Command command;
  command.ActiveConnection = connection;
  command.CommandText = withLog ? "sp_attach_db" : "sp_attach_single_file_db";
  command.CommandType = adCmdStoredProc;
  command.CommandTimeout = program_.settings.Timeout;
  constexpr long nameSize = 256, pathSize = 520;
  command.Parameters.push_back(textParameter("dbname", nameSize, txtPath[nameField].text()));
  command.Parameters.push_back(textParameter("filename1", pathSize, txtPath[dataField].text()));
  if (withLog) command.Parameters.push_back(textParameter("filename2", pathSize, txtPath[logField].text()));
  command.Execute();
  connection->Close();
}

void frmAttachDb::cmdOK_Click() {
  trapAlone(program_, mblnBusy, "frmAttachDb", "cmdOK_Click", [&] {
    if (!inputIsValid()) return;
    {
      const PointerScope pointer(program_.host, Pointer::Hourglass);
      attach();
    }
    attached_ = true;
    program_.host.messageBox("Attached Successfully");
    close();
  });
}

}  // namespace qrel
