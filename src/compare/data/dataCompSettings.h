// How the data of two tables is compared: the choices of the options window, kept per server, database and table in the
// profile file of table comparisons.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "app/Program.h"

namespace qrel {

enum DataCompMethod : std::int32_t {
  compRecordByRecord = 0,  // in the order of the sort keys, from the offsets on
  compPrimaryKey = 1,      // by the key fields
};

// What stands in a list of key fields or of sort keys when no column is chosen.
inline constexpr const char* noField = "No Field";
inline constexpr const char* defaultOrder = "Default Order";

// The choices for one table of a pair.
struct tDataCompSide {
  std::string strPrimarySort;  // column names, as shown; empty: none
  std::string strSecondarySort;
  std::string strTertiarySort;
  std::int32_t lngOffset = 0;  // 1-based record at which the comparison starts; 0 and 1 mean the first
  std::string strCompKey;      // key fields: column names or noField; empty when nothing was ever stored
  std::string strSecondaryCompKey;
  std::string strTertiaryCompKey;
};

// The choices for a pair.
struct tDataCompSettings {
  std::array<tDataCompSide, 2> arrSides;            // 0 Source, 1 Target
  bool blnDefaultOrder = true;                      // true: no sort keys on either side
  std::int32_t lngCompMethod = compRecordByRecord;  // a DataCompMethod, or whatever number was stored
};

// Reads what is stored for a table of the selected Source or Target server. What is missing reads as empty, 0 and
// record by record; an offset or a method beyond 16 bits is told in a box and reads as 0, and a file that can't be read
// in the error report. lngCompMethod is set by each call, so that of two reads the last one wins.
void ReadDataCompSettings(Program& program, bool blnSource, const std::string& strDb, const std::string& strTable,
                          tDataCompSide& side, std::int32_t& lngCompMethod);

// Writes both tables' sections in full, together or not at all. False after telling in a box why that failed.
bool SaveDataCompSettings(Program& program, const std::array<std::string, 2>& arrDbs,
                          const std::array<std::string, 2>& arrTables, const tDataCompSettings& settings);

}  // namespace qrel
