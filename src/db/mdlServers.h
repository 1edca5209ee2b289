// The list of servers: in the registry, in memory, and in the windows that show it.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "app/Program.h"
#include "app/Workspace.h"

namespace qrel {

// The number of servers, as far as their keys are there; the list in memory is read anew.
std::int32_t GetServersCount(Program& program);
// Rebuilds gtypServers from the registry.
void LoadServers(Program& program);
// Fills the record whose Name is given from the registry; a warning when there is no such server.
void GetServerData(Program& program, tServer& server);
// Gives both panels the first server of the list, or none.
void InitSelectedServers(Program& program);
// Takes over what the registry knows of a server; version number and schema check of the record stay.
void copyServerRecord(const tServer& from, tServer& to);

// Fills a combo, muted, with the names and selects the row at `index`; an empty list leaves it empty.
void FillServerCombo(Program& program, ComboBox& combo, int index);
void FillServerList(Program& program, CheckList& list);

// Appends a server to the registry. Both raise RuntimeError when that can't be kept; the list is then as it was.
void AppendServer(Program& program, const tServer& server);
// Removes a server by its exact name and closes the gap in the numbering.
void RemoveServer(Program& program, const std::string& strName);
// Whether the name is in the list, without regard to case.
bool IsServerInList(Program& program, const std::string& strName);
// Whether a server that isn't in the list yet can be reached. Silent; why not is in the state.
bool TestServerConnection(Program& program, const tServer& server);
struct ServerTestState {
  std::string strReason;  // the data access layer's own sentence; empty when the last test succeeded
};

// The values of a server's key that hold the database each panel used last: Source, Target.
inline constexpr std::array<const char*, 2> panelDatabaseValues = {"MRUDbSource", "MRUDbTarget"};

// Writes one text value of a server's registry key, by the way (settings.h): a failure is told once. Nothing is written
// when the key holds another server by now than the list in memory.
void SaveServerValue(Program& program, std::int32_t lngRegIndex, const std::string& strValue,
                     const std::string& strText);
// Empty then, too.
std::string ReadServerValue(Program& program, std::int32_t lngRegIndex, const std::string& strValue);

// The commands "Add Server" and "Remove Server": open the dialog; True when the list changed.
bool MenuAddServer(Program& program);
bool MenuRemoveServer(Program& program);

// False when the data access layer is missing, or when there is no server: then the Add dialog has been shown, whatever
// came of it. `addServer` opens it in place of MenuAddServer, for a caller that follows a change of the list.
bool ServerInfoSet(Program& program, const std::function<void()>& addServer = {});

}  // namespace qrel
