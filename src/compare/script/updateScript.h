// How the Target's table would have to change to be the Source's: a draft, to be read before it is used.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "app/Program.h"

namespace qrel {

struct tScriptTable {
  tServer& server;
  std::string strDb;
  std::string strTable;  // as it is listed
  long lngId = 0;
};

struct UpdateScript {
  bool blnRead = false;    // False: a read failed, which has been told; there is no script then
  bool blnResult = false;  // every step was taken, to the last one: there were indexes, and something differed
  std::string strScript;   // empty: nothing to script
  bool blnIndexesUnknown =
      false;  // a table is listed with its schema, and its indexes can't be asked for under that name
  std::vector<std::string> arrNewIndexes;  // only in Source; they get no ADD
};

// Index 0 Source, 1 Target; the Target's bare name stands in the script. Without any index on both sides the columns
// alone are scripted. An index that has to be added again takes the definition at its own place in the Source's list;
// without one there error 9 is raised and there is no script.
UpdateScript BuildUpdateScript(Program& program, const std::array<tScriptTable, 2>& arrTables);

}  // namespace qrel
