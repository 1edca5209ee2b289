#include "db/modPanels.h"

#include "app/settings.h"
#include "app/trace.h"
#include "app/trap.h"
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/mdlServers.h"
#include "db/modSchema.h"

namespace qrel {

void CheckSQLServerVersion(Program& program, tServer& server) {
  if (!server.Version.empty()) return;
  if (server.RegIndex > 0) server.Version = ReadServerValue(program, server.RegIndex, "Version");
  if (!server.Version.empty()) return;
  server.Version = GetServerVersion(program, server);
  if (!server.Version.empty() && server.RegIndex > 0)
    SaveServerValue(program, server.RegIndex, "Version", server.Version);
}

void CanConnectToDb(Program& program, const tServer& server, const std::string& strDb, int index, bool& result) {
  const QuietScope quiet(program);
  RecordsetPtr rs;
  const std::string strSql =
      BuildObjSQLString(program, objTables, program.settings.IgnoreSysObjects, "", "", index);
  result = GetAdoRS(program, server, adCmdText, strSql, rs, strDb) != -1;
}

namespace {

void fillDatabases(Program& program, const tServer& server, Recordset& rs, CheckList& listDb, int index) {
  listDb.tag = "OFF";
  listDb.setRedraw(false);
  listDb.clear();
  for (; !rs.Eof(); rs.MoveNext()) {
    const std::string strName = rs.Fields("name").Text();
    bool blnKeep = true;
    if (program.settings.FilterOfflineDbs) CanConnectToDb(program, server, strName, index, blnKeep);
    if (!blnKeep) continue;
    listDb.add(strName);
    WriteDebugLog(program, "   Added database " + strName);
  }
  if (listDb.count() > 0) listDb.select(0);
  listDb.tag.clear();
  listDb.setRedraw(true);
}

// Selects the database used last, by its exact name, and returns the working database.
std::string chooseDatabase(Program& program, const tServer& server, CheckList& listDb, bool blnLoadMRUDb) {
  std::string strDb = Workspace::selectedText(listDb);
  if (!blnLoadMRUDb || !ReadFlag(program, "PreserveDbSel") || server.MRUDb.empty()) return strDb;
  for (std::size_t row = 0; row < listDb.count(); ++row) {
    if (listDb.cell(row, 0) != server.MRUDb) continue;
    listDb.tag = "OFF";
    listDb.select(row);
    listDb.tag.clear();
    return server.MRUDb;
  }
  return strDb;
}

void clearMuted(CheckList& list) {
  list.tag = "OFF";
  list.clear();
  list.tag.clear();
}

void loadObjectsOfDb(Program& program, Workspace& workspace, const std::string& strDb, int index, bool blnUpdateText) {
  const auto side = static_cast<std::size_t>(index);
  clearMuted(workspace.pvlSqlObj[side]);
  LoadObjects(program, program.main.gtypSelServ[side], workspace.pvlSqlObj[side], workspace.txtTXProc[side],
              workspace.objectType(), strDb, blnUpdateText, "", index, false);
}

}  // namespace

void LoadServer(Program& program, Workspace& workspace, bool blnLoadMRUDb, int index, bool blnUpdateText, bool& result) {
  result = trap(program, "frmMain", "LoadServer", false, [&] {
    const auto side = static_cast<std::size_t>(index);
    tServer& server = program.main.gtypSelServ[side];
    WriteDebugLog(program, "Begin LoadServer, p_Serv.strName = " + server.Name);
    CheckSQLServerVersion(program, server);
    RecordsetPtr rs;
    if (GetAdoRS(program, server, adCmdText, "SELECT name FROM sysdatabases ORDER BY name", rs, "master") == -1) {
      WriteDebugLog(program, "End LoadServer");
      return false;
    }
    CheckList& listDb = workspace.pvlDb[side];
    fillDatabases(program, server, *rs, listDb, index);
    rs->Close();
    const std::string strDb = chooseDatabase(program, server, listDb, blnLoadMRUDb);
    LoadOwners(program, server, strDb, workspace.cmbType, workspace.cmbOwners[side]);
    loadObjectsOfDb(program, workspace, strDb, index, blnUpdateText);
    WriteDebugLog(program, "End LoadServer");
    return true;
  });
}

void SelectServer(Program& program, Workspace& workspace, int index, bool blnUpdateText) {
  const auto side = static_cast<std::size_t>(index);
  if (workspace.cmbServer[side].muted()) return;
  tServer chosen;
  chosen.Name = workspace.cmbServer[side].text();
  GetServerData(program, chosen);
  copyServerRecord(chosen, program.main.gtypSelServ[side]);
  ClearFilters(program, index);
  bool result = false;
  LoadServer(program, workspace, true, index, blnUpdateText, result);
}

void SelectDatabase(Program& program, Workspace& workspace, int index, bool blnUpdateText) {
  const auto side = static_cast<std::size_t>(index);
  if (workspace.pvlDb[side].muted()) return;
  tServer& server = program.main.gtypSelServ[side];
  const std::string strDb = Workspace::selectedText(workspace.pvlDb[side]);
  ClearFilters(program, index);
  loadObjectsOfDb(program, workspace, strDb, index, blnUpdateText);
  LoadOwners(program, server, strDb, workspace.cmbType, workspace.cmbOwners[side]);
  if (server.RegIndex <= 0) return;
  server.MRUDb = strDb;
  auto& servers = program.servers.gtypServers;
  if (static_cast<std::size_t>(server.RegIndex) <= servers.size())
    servers[static_cast<std::size_t>(server.RegIndex - 1)].MRUDb = strDb;
  SaveServerValue(program, server.RegIndex, "MRUDb", strDb);
}

}  // namespace qrel
