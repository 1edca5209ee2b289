#include "db/mdlServers.h"

#include <algorithm>

#include "app/mdlMain.h"
#include "app/modRegistry.h"
#include "app/settings.h"
#include "app/trace.h"
#include "db/frmAddServer.h"
#include "db/frmDeleteServer.h"
#include "db/mdlData.h"
#include "platform/text.h"

namespace qrel {

namespace {

std::string serversKey() { return std::string(productKey) + "\\Servers"; }
std::string serverKey(std::int32_t index) { return serversKey() + "\\Server" + std::to_string(index); }

// The stored number of servers, but none beyond the last key that is there. A number without a key between two others
// is a server without a name; a thousand of them in a row are nobody's list, and it ends before them.
std::int32_t storedCount(Program& program) {
  constexpr std::int32_t mostMissing = 1000;
  const std::int32_t count = GetSettingDWord(program.store, HKEY_CURRENT_USER, serversKey(), "Count", 0);
  std::int32_t last = 0;
  for (const std::int32_t number : NumberedRegKeys(program.store, HKEY_CURRENT_USER, serversKey(), "Server")) {
    if (number > count || number - last > mostMissing) break;
    last = number;
  }
  return last;
}

std::string storedText(Program& program, std::int32_t index, const std::string& strValue) {
  return GetSettingString(program.store, HKEY_CURRENT_USER, serverKey(index), strValue, "");
}

tServer readServer(Program& program, std::int32_t index) {
  const auto text = [&](const char* strValue) { return storedText(program, index, strValue); };
  const auto flag = [&](const char* strValue) {
    return GetSettingDWord(program.store, HKEY_CURRENT_USER, serverKey(index), strValue, 0) == 1;
  };
  tServer server;
  server.Name = text("Name");
  server.SQLAuth = flag("SQLAuth");
  server.LoginName = text("LoginName");
  server.Password = text("Pwd");
  server.MRUDb = text("MRUDb");
  server.RegIndex = index;
  server.Version = text("Version");
  server.LocalDb = flag("LocalDb");
  server.Encrypt = text("Encrypt");
  server.TrustServerCertificate = flag("TrustServerCertificate");
  server.OdbcDriver = text("OdbcDriver");
  return server;
}

void writeServer(Program& program, std::int32_t index, const tServer& server) {
  KeyStore& store = program.store;
  const std::string key = serverKey(index);
  CreateNewKey(store, HKEY_CURRENT_USER, key);
  SaveSettingString(store, HKEY_CURRENT_USER, key, "Name", server.Name);
  SaveSettingDWord(store, HKEY_CURRENT_USER, key, "SQLAuth", server.SQLAuth ? 1 : 0);
  SaveSettingString(store, HKEY_CURRENT_USER, key, "LoginName", server.LoginName);
  SaveSettingString(store, HKEY_CURRENT_USER, key, "Pwd", server.Password);
  SaveSettingString(store, HKEY_CURRENT_USER, key, "MRUDb", server.MRUDb);
  SaveSettingString(store, HKEY_CURRENT_USER, key, "Version", server.Version);
  SaveSettingDWord(store, HKEY_CURRENT_USER, key, "LocalDb", server.LocalDb ? 1 : 0);
  // Servers that are reached in the usual way have no more values than these.
  if (!server.Encrypt.empty()) SaveSettingString(store, HKEY_CURRENT_USER, key, "Encrypt", server.Encrypt);
  if (server.TrustServerCertificate) SaveSettingDWord(store, HKEY_CURRENT_USER, key, "TrustServerCertificate", 1);
  if (!server.OdbcDriver.empty()) SaveSettingString(store, HKEY_CURRENT_USER, key, "OdbcDriver", server.OdbcDriver);
}

void writeCount(Program& program, std::int32_t count) {
  SaveSettingDWord(program.store, HKEY_CURRENT_USER, serversKey(), "Count", count);
}

// Whether the stored server of a number is the one that the list in memory has there.
bool isStillAt(Program& program, std::int32_t lngRegIndex) {
  const auto& servers = program.servers.gtypServers;
  const auto row = static_cast<std::size_t>(lngRegIndex - 1);
  return row >= servers.size() || storedText(program, lngRegIndex, "Name") == servers[row].Name;
}

}  // namespace

std::string ReadServerValue(Program& program, std::int32_t lngRegIndex, const std::string& strValue) {
  const KeyStore::Reading together(program.store);
  return isStillAt(program, lngRegIndex) ? storedText(program, lngRegIndex, strValue) : "";
}

void SaveServerValue(Program& program, std::int32_t lngRegIndex, const std::string& strValue,
                     const std::string& strText) {
  SaveByTheWay(program, [&] {
    if (!isStillAt(program, lngRegIndex) || storedText(program, lngRegIndex, strValue) == strText) return;
    KeyStore::Change change(program.store);
    // Another process may have removed servers since the list was read: their numbers are others' now.
    if (!isStillAt(program, lngRegIndex)) return;
    SaveSettingString(program.store, HKEY_CURRENT_USER, serverKey(lngRegIndex), strValue, strText);
    change.commit();
  });
}

void LoadServers(Program& program) {
  const KeyStore::Reading together(program.store);
  ServerListState& state = program.servers;
  state.gtypServers.clear();
  state.gblnServersLoaded = false;
  const std::int32_t count = storedCount(program);
  if (count == 0) return;
  for (std::int32_t i = 1; i <= count; ++i) state.gtypServers.push_back(readServer(program, i));
  state.gblnServersLoaded = true;
}

std::int32_t GetServersCount(Program& program) {
  const KeyStore::Reading together(program.store);
  LoadServers(program);
  return storedCount(program);
}

void copyServerRecord(const tServer& from, tServer& to) {
  to.Name = from.Name;
  to.SQLAuth = from.SQLAuth;
  to.LoginName = from.LoginName;
  to.Password = from.Password;
  to.MRUDb = from.MRUDb;
  to.RegIndex = from.RegIndex;
  to.Version = from.Version;
  to.LocalDb = from.LocalDb;
  to.Encrypt = from.Encrypt;
  to.TrustServerCertificate = from.TrustServerCertificate;
  to.OdbcDriver = from.OdbcDriver;
}

void GetServerData(Program& program, tServer& server) {
  const KeyStore::Reading together(program.store);
  const std::int32_t count = storedCount(program);
  for (std::int32_t i = 1; i <= count; ++i) {
    if (storedText(program, i, "Name") != server.Name) continue;
    copyServerRecord(readServer(program, i), server);
    return;
  }
  program.host.messageBox("Server '" + server.Name + "' not found.", Icon::Warning);
}

void InitSelectedServers(Program& program) {
  for (tServer& selected : program.main.gtypSelServ) {
    if (!program.servers.gblnServersLoaded) {
      selected = {};
      continue;
    }
    copyServerRecord(program.servers.gtypServers.front(), selected);
    selected.VersionNum = GetVersionNumber(selected.Version);
  }
}

void FillServerCombo(Program& program, ComboBox& combo, int index) {
  const std::string before = combo.tag;
  combo.tag = "OFF";
  combo.clear();
  for (const tServer& server : program.servers.gtypServers) combo.add(server.Name);
  if (combo.count() > 0) combo.select(index);
  combo.tag = before;
}

void FillServerList(Program& program, CheckList& list) {
  list.clear();
  for (const tServer& server : program.servers.gtypServers) list.add(server.Name);
}

bool IsServerInList(Program& program, const std::string& strName) {
  const std::string wanted = lowerCase(strName);
  const auto& servers = program.servers.gtypServers;
  return std::any_of(servers.begin(), servers.end(),
                     [&](const tServer& server) { return lowerCase(server.Name) == wanted; });
}

void AppendServer(Program& program, const tServer& server) {
  KeyStore::Change change(program.store);
  const std::int32_t count = GetServersCount(program) + 1;
  writeCount(program, count);
  writeServer(program, count, server);
  change.commit();
}

void RemoveServer(Program& program, const std::string& strName) {
  KeyStore::Change change(program.store);
  const std::int32_t count = GetServersCount(program);
  std::vector<tServer> kept;
  std::vector<std::array<std::string, 2>> panelDatabases;
  for (std::int32_t i = 1; const tServer& server : program.servers.gtypServers) {
    if (server.Name != strName) {
      kept.push_back(server);
      panelDatabases.push_back(
          {storedText(program, i, panelDatabaseValues[0]), storedText(program, i, panelDatabaseValues[1])});
    }
    ++i;
  }
  for (std::int32_t i = 1; i <= count; ++i) DeleteRegKey(program.store, HKEY_CURRENT_USER, serverKey(i));
  for (std::size_t i = 0; i < kept.size(); ++i) {
    const auto index = static_cast<std::int32_t>(i + 1);
    writeServer(program, index, kept[i]);
    for (std::size_t side = 0; side < 2; ++side)
      if (const std::string& strDb = panelDatabases[i][side]; !strDb.empty())
        SaveSettingString(program.store, HKEY_CURRENT_USER, serverKey(index), panelDatabaseValues[side], strDb);
  }
  writeCount(program, static_cast<std::int32_t>(kept.size()));
  change.commit();
}

bool TestServerConnection(Program& program, const tServer& server) {
  const PointerScope pointer(program.host, Pointer::Hourglass);
  const std::string strDb = server.MRUDb.empty() ? "master" : server.MRUDb;
  program.mdlData.gblnNoConnErrMsg = true;
  RecordsetPtr rs;
  AdoExtras extras;
  std::int32_t result = -1;
  if (lowerCase(strDb) == "master") {
    result = GetAdoRS(program, server, adCmdText, "SELECT TOP 1 name FROM sysdatabases", rs, strDb, &extras);
  } else {
    result = GetAdoRS(program, server, adCmdText, "SELECT TOP 1 name FROM sys.databases", rs, strDb, &extras);
    if (result == -1) result = GetAdoRS(program, server, adCmdText, "", rs, "", &extras);
  }
  // This region alone ends by switching the messages on, whatever was before.
  program.mdlData.gblnNoConnErrMsg = false;
  program.state<ServerTestState>().strReason = result == -1 ? extras.errDescription : "";
  return result != -1;
}

bool MenuAddServer(Program& program) {
  bool changed = false;
  frmAddServer form(program);
  form.ShowUp(changed);
  return changed;
}

bool MenuRemoveServer(Program& program) {
  bool changed = false;
  if (GetServersCount(program) < 1) {
    program.host.messageBox("There are no servers stored in the list.");
    return false;
  }
  frmDeleteServer form(program);
  form.ShowUp(changed);
  return changed;
}

bool ServerInfoSet(Program& program, const std::function<void()>& addServer) {
  WriteDebugLog(program, "Begin ServerInfoSet");
  if (!CheckMdac(program)) return false;
  if (program.main.gtypSelServ[0].Name.empty()) {
    program.host.messageBox(
        "There is no SQL server to connect to.\r\n\r\nPlease add server by filling in following form or by clicking "
        "menu "
        "item 'Tools' -> 'Add Server' and specifying info for the server.",
        Icon::Information, "No SQL Server");
    if (addServer)
      addServer();
    else
      MenuAddServer(program);
    return false;
  }
  WriteDebugLog(program, "End ServerInfoSet");
  return true;
}

}  // namespace qrel
