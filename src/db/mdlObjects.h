// The object catalogue: which objects of a type a database holds.
#pragma once

#include <string>
#include <vector>

#include "app/Program.h"
#include "app/Workspace.h"
#include "app/modArrays.h"
#include "db/mdlData.h"

namespace qrel {

enum enmObjectType : long {
  objProcedures = 10,
  objFunctions = 20,
  objViews = 30,
  objTriggers = 40,
  objTables = 50,
  objRelationships = 60,
  objConstraints = 80,
  objPermissions = 90,
};

// "Table" or "tables" and so on; "Object" or "objects" for any other code.
std::string GetObjectTypeName(long type, bool blnSingular);

// The query for a type's objects: name, reference date, id, in order of name. strFilter is a condition on the name,
// such as SqlText("LIKE ") << inQuotes("a%"); side (0 Source, 1 Target) selects the schema filter. An unknown code
// shows a message and gives an empty text.
SqlText BuildObjSQLString(Program& program, long type, bool blnIgnoreSysObjects, const std::string& strObjName,
                          const SqlText& strFilter, int side);

// Fills rs with one record whose first field is the number of objects, without any filter.
void CountObjects(Program& program, const tServer& server, const std::string& strDb, long type, RecordsetPtr& rs);

// Fills a panel's object list, with the first row selected. With blnUpdateText its text pane follows. False when the
// list couldn't be read, or not to its end: it then shows what there is.
bool LoadObjects(Program& program, tServer& server, CheckList& list, TextPane& textPanel, long type,
                 const std::string& strDb, bool blnUpdateText, const SqlText& strFilter, int side, bool blnQuiet);

// The same query on an open connection; False when it failed.
bool LoadObjects_ToRecordset(Program& program, const ConnectionPtr& connection, RecordsetPtr& rs, const tServer& server,
                             long type, const std::string& strDb, int side);

// All objects of a type, from index 0. False after a warning.
bool GetAllObjectsOfType(Program& program, long type, const tServer& server, const std::string& strDb,
                         std::vector<TwoStr>& arr, long& count, int side);
// All types together, in the order 10, 20, 30, 40, 50, 60, 80, 90. The first failure ends it with False.
bool GetListOfAllObjects(Program& program, const tServer& server, const std::string& strDb, std::vector<TwoStr>& arr,
                         long& count, int side);
// Asks for all columns of the database and hands out none: count is 0.
bool GetListOfAllColumns(Program& program, const tServer& server, const std::string& strDb, std::vector<TwoStr>& arr,
                         long& count);
// Whether the trimmed, lower-cased name equals an entry exactly; an empty name is none.
bool IsItDbObject(const std::string& strName, const std::vector<TwoStr>& arr, long count);

// Prefixes the names that occur in several schemas, where neighbours are equal.
void AddSchemaToDuplicateNames(Program& program, tServer& server, long type, const std::string& strDb,
                               std::vector<TwoStr>& arr, long count);

// Shows an array in a list: name, upper-cased date, id; the first row selected.
void LoadListView(Program& program, CheckList& list, const std::vector<TwoStr>& arr, long count);

// Fills the type combo, muted, with the first row selected.
void FillObjectTypes(Program& program, ComboBox& cmbType);
// Selects the row with that code if it isn't current, holding `flag` down meanwhile if blnKeepFlag is set.
void SelectObjectType(ComboBox& combo, long type, bool& flag, bool blnKeepFlag);

// Never set: the type Permissions stands ready and isn't offered.
inline constexpr bool gblnPermissionsEnabled = false;

}  // namespace qrel
