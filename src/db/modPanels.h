// A panel of the main window and its server: what the panel loads from it.
#pragma once

#include <string>

#include "app/Program.h"
#include "app/Workspace.h"

namespace qrel {

// Fills side `Index` (0 Source, 1 Target) from its current server: version, databases, owners, and the objects of the
// active type with the text of the first one. With pblnLoadMRUDb the database used last is selected, if it is still
// there. Events run between the stages. False when the catalogue can't be read, after the query layer's report: the
// panel stays as it was. mblnActivated: the main window is on screen.
bool LoadServer(Program& program, Workspace& workspace, bool pblnLoadMRUDb, int Index, bool mblnActivated);

// The database that is selected on a side, empty without one.
std::string SelectedDatabase(const Workspace& workspace, int Index);
// Reloads a side's object list and the text of its first object; the list's own event stays silent.
void ReloadObjects(Program& program, Workspace& workspace, long type, const std::string& strDb, int Index,
                   bool mblnActivated);

// Completes a record without a version: from the registry, then from the server, whose answer is kept in both. Unknown
// stays empty.
void CheckSQLServerVersion(Program& program, tServer& server);
// Whether the object list of a database can be read, whatever is in it. Silent.
bool CanConnectToDb(Program& program, const tServer& server, const std::string& strDb, int Index);

}  // namespace qrel
