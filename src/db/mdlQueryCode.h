// A table as canonical text, one line a column and one line an index: what is shown and what is compared.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "app/Program.h"

namespace qrel {

// One column, or one entry of an index.
struct tTableColumn {
  std::string strName;          // the column's or the index's name
  std::string strType;          // the type as the server gives it
  std::string strPrec;          // for types that have one
  std::string strTypeText;      // "varchar (50)", "decimal (18,2) "
  std::string strLine;          // the column's whole line, or the column of the index entry
  std::int16_t blnMatched = 0;  // for the update script
  std::int32_t lngScriptStatus = 0;
  std::string strDefinition;  // the index's whole line
};

// The lists of ignored columns: one for each kind of work.
enum IgnoredList : long {
  ignoredColsData = 1,          // data comparison
  ignoredColsStruct = 2,        // structure comparison
  ignoredColsDataAnalysis = 3,  // Data Analyzer
};

// Who knows a table's ignored columns. Set by the layer that keeps them; unset means none.
struct IgnoredColumnsSource {
  std::function<std::vector<std::string>(IgnoredList enmList, const tServer& server, const std::string& strDb,
                                         const std::string& strTable)>
      lookUp;  // of a table as it is listed, perhaps with its schema
};

// The whole text: the columns and, unless IgnoreIndexes is set or only the clustered one is wanted, the indexes behind
// an empty line. lngIgnored receives the number of ignored columns (0 without blnIgnoreCols). lngId 0: the table by
// name. strListed: the name to look its ignored columns up under; empty: strTable.
std::string GetTableText(Program& program, tServer& server, const std::string& strTable, const std::string& strDb,
                         bool blnIgnoreCols, long& lngIgnored, long lngId, const std::string& strLineSuffix,
                         bool blnClusteredOnly, const std::string& strIndexSuffix, const std::string& strListed = {});

// The columns: text and array (from 0; lngUpper is its highest index, -1 for none). An unknown table gives an empty
// text and True; False comes after an error report, with what was read by then. With blnIgnoreCols the columns of the
// table's list enmList are left out; strListed as above.
bool GetTableStructure(Program& program, tServer& server, const std::string& strDb, const std::string& strTable,
                       std::string& strText, std::vector<tTableColumn>& arrColumns, long& lngUpper, bool blnIgnoreCols,
                       long& lngIgnored, std::vector<std::string>& arrIgnored, long lngId,
                       const std::string& strLineSuffix, IgnoredList enmList = ignoredColsStruct,
                       const std::string& strListed = {});

// The same for callers that tell a failure themselves: it raises RuntimeError, with what was read by then in the
// arguments.
void ReadTableStructure(Program& program, tServer& server, const std::string& strDb, const std::string& strTable,
                        std::string& strText, std::vector<tTableColumn>& arrColumns, long& lngUpper, bool blnIgnoreCols,
                        long& lngIgnored, std::vector<std::string>& arrIgnored, long lngId,
                        const std::string& strLineSuffix, IgnoredList enmList = ignoredColsStruct,
                        const std::string& strListed = {});

// The index lines, each with a line end; empty for a table without indexes, and for one without any child object such
// as a constraint. With blnFillArray lngCount receives the number of indexes and arrIndexes an entry for each: its
// strLine is the index's last column.
std::string GetIndexes(Program& program, const tServer& server, const std::string& strTable, const std::string& strDb,
                       bool blnClusteredOnly, const std::string& strIndexSuffix, bool blnFillArray,
                       std::vector<tTableColumn>& arrIndexes, long& lngCount);

// Number of columns that aren't ignored.
long GetColumnsCount(Program& program, tServer& server, const std::string& strDb, const std::string& strTable,
                     std::vector<std::string>& arrIgnored, long lngId, IgnoredList enmList = ignoredColsStruct);

// A column's default as the server keeps it, in its brackets; empty when there is none.
std::string GetDefaultValue(Program& program, const tServer& server, const std::string& strDb, long lngTableId,
                            long lngColId);
std::string GetDefaultConstraintName(Program& program, const tServer& server, const std::string& strDb, long lngTableId,
                                     long lngDefaultId);

// A statement that adds the table's default constraints, for a script that declares @Database and @ErrorVal.
std::string GetTableConstraints(Program& program, const tServer& server, const std::string& strTable,
                                const std::string& strDb);
// Statements that make a view's indexes, for such a script; empty for any other type.
std::string GetExtras(Program& program, const tServer& server, const std::string& strTable, const std::string& strDb,
                      long type);

}  // namespace qrel
