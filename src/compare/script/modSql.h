// An object's CREATE statement, and the statements that drop and add an index.
#pragma once

#include <string>

#include "app/Program.h"
#include "db/mdlQueryCode.h"

namespace qrel {

// What a CREATE statement is made for, and how.
struct tCreateStatement {
  std::string strServerName;
  std::string strDatabase;
  std::string strObject;  // as it is listed
  long enmObjectType = 0;
  long lngObjectId = 0;        // 0: by name
  std::string strDelimiter;    // behind each column of a table; not behind the last one
  std::string strReplaceFrom;  // without regard to case, in the name and in a stored source; empty: nothing
  std::string strReplaceTo;
  bool blnNoHeader = false;
};

// A script that drops the object and makes it again: USE, the guarded DROP (also in strDropStatement), then the
// object's own text, a table's within CREATE TABLE. Empty after a warning when server, database, object or type is
// missing, and when the object's name can't be read, can't be told from its schema's or would end the text it stands
// in. An object whose text is empty (encrypted) gives a script with nothing in it. Raises error 91 when the stored
// source can't be read; a table that can't be read in full is reported, so that whoever hands the script on watches the
// reads (readFailures.h).
std::string GetSqlCreateStatement(Program& program, tServer& server, const tCreateStatement& what,
                                  std::string& strDropStatement);

// "ALTER TABLE [t] DROP " or " ADD " for an index of strTable, a bare name: its definition's first word is what is
// dropped. Empty without a table, a name or a definition.
std::string BuildIndexDropStatement(Program& program, const tTableColumn& ptIndex, const std::string& strTable);
std::string BuildIndexCreateStatement(Program& program, const tTableColumn& ptIndex, const std::string& strTable);

}  // namespace qrel
