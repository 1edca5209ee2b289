// A table as canonical text, one line a column and one line an index: what is shown and what is compared.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
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

// Which table's columns are asked for.
struct tTableQuery {
  std::string strDb;
  std::string strTable;
  long lngId = 0;                           // 0: the table by its name
  std::optional<IgnoredList> enmIgnored{};  // the list whose columns are left out; none: all columns
  std::string strListed{};                  // the name to look them up under; empty: strTable
  std::string strLineSuffix{};              // behind each column's line
};

// A table's columns: as a text of a line each, in their order, and the ignored ones that were left out.
struct tTableStructure {
  std::string strText;
  std::vector<tTableColumn> arrColumns;
  std::vector<std::string> arrIgnored;
};

// The whole text: the columns and, unless IgnoreIndexes is set or only the clustered one is wanted, the indexes behind
// an empty line. lngIgnored, if it is asked for, receives the number of ignored columns.
std::string GetTableText(Program& program, tServer& server, const tTableQuery& query, long* lngIgnored = nullptr,
                         bool blnClusteredOnly = false, const std::string& strIndexSuffix = {});

// Reads ahead what GetTableText will ask for, with all indexes, and keeps it for lngSteps steps of the run.
void PrefetchTableText(Program& program, const tServer& server, const tTableQuery& query, std::size_t lngSteps);

// An unknown table gives an empty text and True; False comes after an error report, with what was read by then.
bool GetTableStructure(Program& program, tServer& server, const tTableQuery& query, tTableStructure& table);

// The same for callers that tell a failure themselves: it raises RuntimeError, with what was read by then in `table`.
void ReadTableStructure(Program& program, tServer& server, const tTableQuery& query, tTableStructure& table);

// The index lines, each with a line end; empty for a table without indexes, and for one without any child object such
// as a constraint. With blnFillArray lngCount receives the number of indexes and arrIndexes an entry for each: its
// strLine is the index's last column.
std::string GetIndexes(Program& program, const tServer& server, const std::string& strTable, const std::string& strDb,
                       bool blnClusteredOnly, const std::string& strIndexSuffix, bool blnFillArray,
                       std::vector<tTableColumn>& arrIndexes, long& lngCount);

// Number of columns that aren't ignored.
long GetColumnsCount(Program& program, tServer& server, const tTableQuery& query);

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
