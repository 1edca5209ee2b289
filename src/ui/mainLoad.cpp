// The main window's way to scripts: loading them, and showing what was loaded.
#include "app/trap.h"
#include "db/frmLoadScripts.h"
#include "db/mdlServers.h"
#include "platform/text.h"
#include "ui/frmMain.h"

namespace qrel {

namespace {

// The row of a server's name, case not counting; -1 without it.
int rowOfServer(const ComboBox& combo, const std::string& strServer) {
  for (std::size_t row = 0; row < combo.count(); ++row)
    if (equalNoCase(combo.row(row), strServer)) return static_cast<int>(row);
  return -1;
}

}  // namespace

void frmMain::MenuLoadScripts(const std::vector<std::string>& paths, int Index) {
  trap(program_, "frmMain", "MenuLoadScripts", [&] {
    ScriptLoader* loader = program_.state<ScriptLoaderState>().loader;
    if (!loader) {
      program_.host.messageBox("This program can't load scripts.", Icon::Information, "Cannot Load");
      return;
    }
    std::string strServer, strDb;
    frmLoadScripts(program_, *loader).ShowUp(paths, strServer, strDb);
    if (!strServer.empty()) showLoaded(strServer, strDb, Index);
  });
}

// The server comes into the list if it isn't there. A panel shows the database when it was asked to, and when it shows
// that server already or none at all; what it shows of another server stays.
void frmMain::showLoaded(const std::string& strServer, const std::string& strDb, int Index) {
  if (!IsServerInList(program_, strServer)) {
    tServer added;
    added.Name = strServer;
    added.MRUDb = strDb;
    AppendServer(program_, added);
    LoadServers(program_);
    for (ComboBox& combo : workspace.cmbServer) FillServerCombo(program_, combo, std::max(combo.selected(), 0));
    if (program_.main.gtypSelServ[0].Name.empty()) InitSelectedServers(program_);
  }
  for (int side = 0; side < 2; ++side) {
    const auto at = static_cast<std::size_t>(side);
    ComboBox& combo = workspace.cmbServer[at];
    const bool shown = equalNoCase(combo.text(), strServer) && workspace.pvlDb[at].count() > 0;
    if (side != Index && !shown) continue;
    combo.select(rowOfServer(combo, strServer));
    cmdConnect.setImage(imageConnected);
    if (side == Index) SelectRowByText(workspace.pvlDb[at], strDb);
  }
}

}  // namespace qrel
