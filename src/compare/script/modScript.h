// What would have to change in a table: each column and each index gets a status, the columns a script.
#pragma once

#include <string>
#include <vector>

#include "app/Program.h"
#include "db/mdlQueryCode.h"

namespace qrel {

// tTableColumn::lngScriptStatus.
enum ScriptStatus : std::int32_t {
  scriptDropped = 1,  // only in Target
  scriptAdded = 2,    // only in Source
  scriptChanged = 3,  // in both, different
  scriptSame = 4,
  scriptSameOnChangedColumn = 5,  // an index: to be dropped and added again
};

struct ScriptCounts {
  long lngDropped = 0;
  long lngAdded = 0;
  long lngChanged = 0;
  long lngSame = 0;
};

// Compares the columns by name, whatever their case, and by their whole lines. Sets the statuses, and blnMatched of
// Target's columns, which come in unmatched. strTable: bare, as it stands in the script. The words ALTER TABLE stand
// once, before the first clause; strScript is empty when nothing changes. False after an error report.
bool UpdateScript_Tables(Program& program, const std::string& strTable, std::vector<tTableColumn>& arrSourceCols,
                         std::vector<tTableColumn>& arrTargetCols, ScriptCounts& counts, std::string& strScript);

// The clause that makes the Target's column the Source's.
std::string ScriptColDiffs(Program& program, const std::string& strColumn, const tTableColumn& tSourceCol,
                           const tTableColumn& tTargetCol);

// Compares the indexes by name and definition, both byte by byte, and sets the statuses. blnIdentical: they are known
// to be the same. False after an error report.
bool CompareIndexes(Program& program, std::vector<tTableColumn>& arrSource, std::vector<tTableColumn>& arrTarget,
                    bool blnIdentical, ScriptCounts& counts);

}  // namespace qrel
