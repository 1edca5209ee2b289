// A panel of the main window and its server: what choosing a server or a database loads.
#pragma once

#include <string>

#include "app/Program.h"
#include "app/Workspace.h"

namespace qrel {

// Loads side `index` (0 Source, 1 Target) from its server: version, databases, owners, objects of the chosen type.
// `result` is true if the catalogue could be read; otherwise the panel stays as it was. blnUpdateText: the text pane
// follows too.
void LoadServer(Program& program, Workspace& workspace, bool blnLoadMRUDb, int index, bool blnUpdateText, bool& result);

// A person chose a row of cmbServer(index); nothing happens while it is muted.
void SelectServer(Program& program, Workspace& workspace, int index, bool blnUpdateText);
// A person chose a row of pvlDb(index).
void SelectDatabase(Program& program, Workspace& workspace, int index, bool blnUpdateText);

// The record's version, else the registry's, else the server's (then kept in the registry). Unknown stays empty.
void CheckSQLServerVersion(Program& program, tServer& server);
// Whether the object list of a database can be read. Silent.
void CanConnectToDb(Program& program, const tServer& server, const std::string& strDb, int index, bool& result);

}  // namespace qrel
