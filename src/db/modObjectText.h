// One object as text: stored source, scripted table, or a description of a few lines.
#pragma once

#include <functional>
#include <string>

#include "app/Program.h"
#include "app/Workspace.h"
#include "db/mdlData.h"

namespace qrel {

// Puts the text of the list's selected object (or of strObjName and lngId, when lngId is above 0) into a panel. Several
// selected rows, or none, show "<<Nothing to show>>"; an empty text leaves the panel as it was.
void UpdateProcedureTextBox(Program& program, tServer& server, TextPane& textPanel, CheckList& list, long type,
                            const std::string& strDb, std::string strObjName, long lngId, int side,
                            bool blnResetPointer);

// The text of one object, by type. lngId 0: by name alone.
std::string GetTextOfObject(Program& program, tServer& server, const std::string& strDb, long type,
                            const std::string& strObjName, long lngId, int side);

// The stored source, blanks and breaks at its ends cut; empty for a missing or encrypted object. A query that fails
// raises error 91.
std::string GetObjectText(Program& program, const tServer& server, const std::string& strObjName,
                          const std::string& strDb, long type);
std::string GetObjectTextConn(Program& program, const ConnectionPtr& connection, const tServer& server,
                              const std::string& strObjName, const std::string& strDummy);
// Reads ahead what GetRelationshipText, GetConstraintText or, for another type, GetObjectTextConn will ask for, and
// keeps it for lngSteps steps of the run. connection: of the last of them, empty for the others.
void PrefetchText(Program& program, const tServer& server, const ConnectionPtr& connection, const std::string& strDb,
                  long type, const std::string& strObjName, std::size_t lngSteps);
std::string GetRelationshipText(Program& program, const tServer& server, const std::string& strObjName,
                                const std::string& strDb);
std::string GetConstraintText(Program& program, const tServer& server, const std::string& strObjName,
                              const std::string& strDb);

// The name as the program's own SQL uses it: "[name]", or "[schema].[name]" where that is known. lngId 0: by name.
// Empty when the schema can't be read, and for an object of the catalogue (lngId) whose name can't stand in brackets;
// both are told.
std::string GetExtendedObjectName(Program& program, tServer& server, const std::string& strDb,
                                  const std::string& strName, long type, long lngId);

// The head of an object's script; strDrop receives the guarded DROP. strName as GetExtendedObjectName gives it.
std::string GetScriptHeader(Program& program, const std::string& strDb, long type, const std::string& strName,
                            std::string& strDrop);

// Rewrites a statement for execution through EXEC in strDb, or, with an empty strDb, for a script that declares
// @Database and @ErrorVal. What stands before "create" is cut from strSql itself too.
std::string WrapSqlInExec(std::string& strSql, const std::string& strDb);

// An object list as text, a line an object, with the number of records for tables. `cancelled` is asked before each
// row; `label` shows the name at work.
std::string RecordsetToString(Program& program, const std::function<bool()>& cancelled, Label& label, RecordsetPtr& rs,
                              long type, tServer& server, const std::string& strDb, bool blnNumbers);

// Blanks, tabs, CR and LF cut at both ends of a text of more than one character.
std::string TrimBlanksAndBreaks(const std::string& strText);

}  // namespace qrel
