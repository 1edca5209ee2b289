#include "db/modPanels.h"

#include "app/settings.h"
#include "app/trace.h"
#include "app/trap.h"
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/mdlServers.h"
#include "db/modSchema.h"
#include "db/readFailures.h"

namespace qrel {

void CheckSQLServerVersion(Program& program, tServer& server) {
  if (!server.Version.empty()) return;
  if (server.RegIndex > 0) server.Version = ReadServerValue(program, server.RegIndex, "Version");
  if (!server.Version.empty()) return;
  const std::string strVersion = GetServerVersion(program, server);
  if (strVersion.empty()) return;
  server.Version = strVersion;
  if (server.RegIndex > 0) SaveServerValue(program, server.RegIndex, "Version", strVersion);
}

bool CanConnectToDb(Program& program, const tServer& server, const std::string& strDb, int Index) {
  const QuietScope quiet(program);
  const AskedScope asked(program);
  RecordsetPtr rs;
  const SqlText strSql = BuildObjSQLString(program, objTables, program.settings.IgnoreSysObjects, "", "", Index);
  return GetAdoRS(program, server, adCmdText, strSql, rs, strDb) != -1;
}

std::string SelectedDatabase(const Workspace& workspace, int Index) {
  return Workspace::selectedText(workspace.pvlDb[static_cast<std::size_t>(Index)]);
}

void ReloadObjects(Program& program, Workspace& workspace, long type, const std::string& strDb, int Index,
                   bool mblnActivated) {
  const auto side = static_cast<std::size_t>(Index);
  CheckList& list = workspace.pvlSqlObj[side];
  list.tag = "OFF";
  list.select(0);
  list.tag.clear();
  LoadObjects(program, program.main.gtypSelServ[side], list, workspace.txtTXProc[side], type, strDb, true, "", Index,
              mblnActivated);
}

namespace {

void fillDatabases(Program& program, const tServer& server, Recordset& rs, CheckList& listDb, int Index) {
  listDb.tag = "OFF";
  listDb.setRedraw(false);
  listDb.clear();
  for (; !rs.Eof(); rs.MoveNext()) {
    const std::string strName = rs.Fields("name").Text();
    if (program.settings.FilterOfflineDbs && !CanConnectToDb(program, server, strName, Index)) continue;
    listDb.add(strName);
    WriteDebugLog(program, "   Added database " + strName);
  }
  listDb.select(0);
  listDb.tag.clear();
  listDb.setRedraw(true);
}

// Selects the database by its exact name and without an event; false without it.
bool selectDatabase(CheckList& listDb, const std::string& strDb) {
  for (std::size_t row = 0; !strDb.empty() && row < listDb.count(); ++row) {
    if (listDb.cell(row, 0) != strDb) continue;
    listDb.tag = "OFF";
    listDb.select(row);
    listDb.tag.clear();
    return true;
  }
  return false;
}

// Selects the database that this panel used last, else the one that was used last on either, and returns the working
// database.
std::string chooseDatabase(Program& program, const tServer& server, CheckList& listDb, bool pblnLoadMRUDb, int Index) {
  if (pblnLoadMRUDb && ReadFlag(program, "PreserveDbSel")) {
    const char* strPanel = panelDatabaseValues[static_cast<std::size_t>(Index)];
    const std::string strOwn = server.RegIndex > 0 ? ReadServerValue(program, server.RegIndex, strPanel) : "";
    if (!selectDatabase(listDb, strOwn)) selectDatabase(listDb, server.MRUDb);
  }
  return Workspace::selectedText(listDb);
}

}  // namespace

bool LoadServer(Program& program, Workspace& workspace, bool pblnLoadMRUDb, int Index, bool mblnActivated) {
  return trap(program, "frmMain", "LoadServer", false, [&] {
    const auto side = static_cast<std::size_t>(Index);
    tServer& server = program.main.gtypSelServ[side];
    WriteDebugLog(program, "Begin LoadServer, p_Serv.strName = " + server.Name);
    CheckSQLServerVersion(program, server);
    RecordsetPtr rs;
    if (GetAdoRS(program, server, adCmdText, "SELECT name FROM sysdatabases ORDER BY name", rs, "master") == -1) {
      WriteDebugLog(program, "End LoadServer");
      return false;
    }
    fillDatabases(program, server, *rs, workspace.pvlDb[side], Index);
    rs->Close();
    program.host.doEvents();
    const std::string strDb = chooseDatabase(program, server, workspace.pvlDb[side], pblnLoadMRUDb, Index);
    LoadOwners(program, server, strDb, workspace.cmbType, workspace.cmbOwners[side]);
    program.host.doEvents();
    ReloadObjects(program, workspace, workspace.objectType(), strDb, Index, mblnActivated);
    program.host.doEvents();
    WriteDebugLog(program, "End LoadServer");
    return true;
  });
}

}  // namespace qrel
