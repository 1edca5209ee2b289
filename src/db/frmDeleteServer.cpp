#include "db/frmDeleteServer.h"

#include "app/trap.h"
#include "db/mdlServers.h"

namespace qrel {

frmDeleteServer::frmDeleteServer(Program& program) : Form("frmDeleteServer"), program_(program) {
  for (Control* control : std::initializer_list<Control*>{&lstServers, &cmdRemove, &cmdCancel}) add(*control);
  caption = "Remove SQL Server";
  FillServerList(program_, lstServers);
  cmdRemove.isDefault = true;
  cmdRemove.onClick = [this] { remove(); };
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { close(); };
}

void frmDeleteServer::ShowUp(bool& changed) {
  changed_ = false;
  program_.host.showModal(*this);
  changed = changed_;
}

void frmDeleteServer::remove() {
  const int row = lstServers.firstSelected();
  if (row < 0) {
    program_.host.messageBox("Please select the server to be removed from the list.");
    lstServers.setFocus();
    return;
  }
  const std::string strName = lstServers.cell(static_cast<std::size_t>(row), 0);
  const Answer answer = program_.host.messageBox(
      "Are you sure that you want to remove\r\n\r\n" + strName + "\r\n\r\nfrom the list of servers?", Icon::Question,
      "Confirm Removing Server", Buttons::YesNo);
  if (answer != Answer::Yes) return;
  trap(program_, "frmDeleteServer", "cmdRemove_Click", [&] {
    RemoveServer(program_, strName);
    LoadServers(program_);
    InitSelectedServers(program_);
    changed_ = true;
    close();
  });
}

}  // namespace qrel
