#include "compare/script/updateScript.h"

#include <algorithm>

#include "compare/script/modScript.h"
#include "compare/script/modSql.h"
#include "db/mdlObjects.h"
#include "db/modSchema.h"
#include "db/readFailures.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

struct TableParts {
  std::string strText, strIndexText;
  std::vector<tTableColumn> arrColumns, arrIndexes;
  long lngIndexes = 0;
};
using BothParts = std::array<TableParts, 2>;

bool readTable(Program& program, const tScriptTable& table, TableParts& parts) {
  tTableStructure structure;
  const ReadingScope reading(program, "table " + table.strTable);
  const ReadWatch reads(program);
  if (!GetTableStructure(program, table.server, {table.strDb, table.strTable, table.lngId}, structure)) return false;
  parts.strText = std::move(structure.strText);
  parts.arrColumns = std::move(structure.arrColumns);
  parts.strIndexText = GetIndexes(program, table.server, table.strTable, table.strDb, false, "", true, parts.arrIndexes,
                                  parts.lngIndexes);
  return !reads.failed();
}

std::string bareName(Program& program, const tScriptTable& table) {
  if (PointIsPartOfName(program, table.server, table.strDb, objTables, table.strTable, table.lngId))
    return table.strTable;
  return table.strTable.substr(table.strTable.rfind('.') + 1);
}

// A column can't be altered while an index that stays is over it.
void markSameIndexesOnChangedColumns(TableParts& target) {
  for (tTableColumn& index : target.arrIndexes) {
    if (index.lngScriptStatus != scriptSame) continue;
    const std::string strUpper = upperCase(index.strLine);
    const auto column = std::find_if(target.arrColumns.begin(), target.arrColumns.end(),
                                     [&](const tTableColumn& each) { return upperCase(each.strName) == strUpper; });
    if (column != target.arrColumns.end() && column->lngScriptStatus == scriptChanged)
      index.lngScriptStatus = scriptSameOnChangedColumn;
  }
}

std::string dropStatements(Program& program, const TableParts& target, const std::string& strTable) {
  std::string strDrops;
  for (const tTableColumn& index : target.arrIndexes) {
    const std::int32_t status = index.lngScriptStatus;
    if (status == scriptDropped || status == scriptChanged || status == scriptSameOnChangedColumn)
      strDrops += BuildIndexDropStatement(program, index, strTable) + "\r\n";
  }
  return strDrops;
}

// The status is the Target's, the statement that of the Source's index at the same place.
std::string createStatements(Program& program, const BothParts& parts, const std::string& strTable) {
  std::string strCreates;
  const auto& arrSource = parts[0].arrIndexes;
  const auto& arrTarget = parts[1].arrIndexes;
  for (std::size_t i = 0; i < arrTarget.size(); ++i) {
    const std::int32_t status = arrTarget[i].lngScriptStatus;
    if (status != scriptAdded && status != scriptChanged && status != scriptSameOnChangedColumn) continue;
    if (i >= arrSource.size()) throw RuntimeError(errorNumber::subscript, "Subscript out of range");
    strCreates += BuildIndexCreateStatement(program, arrSource[i], strTable) + "\r\n";
  }
  return strCreates;
}

}  // namespace

UpdateScript BuildUpdateScript(Program& program, const std::array<tScriptTable, 2>& arrTables) {
  UpdateScript result;
  BothParts parts;
  for (const std::size_t side : {0u, 1u})
    if (!readTable(program, arrTables[side], parts[side])) return result;
  result.blnRead = true;
  const std::string strTable = bareName(program, arrTables[1]);
  for (const tScriptTable& table : arrTables)
    if (bareName(program, table) != table.strTable) result.blnIndexesUnknown = true;

  ScriptCounts columns;
  bool blnColumnsSame = parts[0].strText == parts[1].strText;
  if (!blnColumnsSame) {
    if (!UpdateScript_Tables(program, strTable, parts[0].arrColumns, parts[1].arrColumns, columns, result.strScript))
      return {};
    blnColumnsSame = columns.lngDropped + columns.lngAdded + columns.lngChanged == 0;
  }
  const bool blnIndexesExist = parts[0].lngIndexes >= 1 || parts[1].lngIndexes >= 1;
  const bool blnIndexesSame = parts[0].strIndexText == parts[1].strIndexText;
  if ((blnColumnsSame && blnIndexesSame) || !blnIndexesExist) return result;

  ScriptCounts indexes;
  if (!CompareIndexes(program, parts[0].arrIndexes, parts[1].arrIndexes, blnIndexesSame, indexes)) return {};
  for (const tTableColumn& index : parts[0].arrIndexes)
    if (index.lngScriptStatus == scriptAdded) result.arrNewIndexes.push_back(index.strName);
  markSameIndexesOnChangedColumns(parts[1]);
  result.strScript = dropStatements(program, parts[1], strTable) + result.strScript;
  result.strScript += createStatements(program, parts, strTable);
  result.blnResult = true;
  return result;
}

}  // namespace qrel
