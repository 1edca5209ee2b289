// The columns that don't take part in comparisons: a list per kind of work and table, in a profile file per kind. The
// section of a table is its full name, server, database and table with points between, without regard to what they
// hold. Nothing is kept in memory: every look-up reads the file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/Program.h"
#include "db/mdlQueryCode.h"
#include "platform/controls/grid.h"

namespace qrel {

// An entry in the listing of a whole file.
struct tIgnoredColumn {
  std::string strServer, strDatabase, strTable;  // the first three parts of the section's name
  std::string strColumn;
};

// Makes the lists known to whoever reads a table's columns. Once for each program.
void ConnectIgnoredColumns(Program& program);

// "server.database.table".
std::string GetFullObjectName(const std::string& strServer, const std::string& strDatabase,
                              const std::string& strTable);

// Empty for a number that is no list's.
std::string GetIgnoredColsFilePath(const Program& program, long enmList);

// The column names in file order, and their number: 0 for a table without a list and for a missing file, and after an
// error report for a file that can't be read.
std::int32_t GetIgnoredColumns(Program& program, long enmList, const std::string& strFullName,
                               std::vector<std::string>& arrColumns);

// The columns that are in force for a table as it is listed: those of that name ("sales.Orders" where two schemas have
// one), else those of its bare name.
std::vector<std::string> IgnoredColumnsOfTable(Program& program, long enmList, const std::string& strServer,
                                               const std::string& strDatabase, const std::string& strTable);

// Replaces a table's list by the first lngCount names; with 0 the table has none any more. False, with the list as it
// was, when that can't be kept: an error report says why, after a box when the file couldn't even be begun to change.
bool SaveIgnoredColumns(Program& program, long enmList, const std::string& strFullName,
                        const std::vector<std::string>& arrColumns, std::int32_t lngCount);

// The same for the lists of several tables, together or not at all.
struct tIgnoredList {
  std::string strFullName;  // of the table
  std::vector<std::string> arrColumns;
};
bool SaveIgnoredLists(Program& program, long enmList, const std::vector<tIgnoredList>& arrLists);

// Every entry of a list's file: as records, and as lines "server, database, table, column" in strListing. Returns their
// number.
std::int32_t GetAllIgnoredColumns(Program& program, long enmList, std::string& strListing,
                                  std::vector<tIgnoredColumn>& arrRecords);

// The first three parts between points; those that are missing are empty.
void SplitIgnoredColsSection(const std::string& strSection, std::string& strServer, std::string& strDatabase,
                             std::string& strTable);

// A row per record below the grid's heading, and their number in the label.
void ScreenWriteAllIgnoredCols(Program& program, Grid& grid, Label& lblCount,
                               const std::vector<tIgnoredColumn>& arrRecords, std::int32_t lngCount);

// Ticks all rows but, for each ignored column, the first that has exactly its name.
void ListBox_DeselectIgnored(CheckList& lstColumns, const std::vector<std::string>& arrIgnored);

}  // namespace qrel
