#include "compare/script/modScript.h"

#include <algorithm>

#include "app/trap.h"
#include "platform/text.h"

namespace qrel {

namespace {

tTableColumn* sameNameNoCase(std::vector<tTableColumn>& columns, const std::string& strName) {
  const std::string strUpper = upperCase(strName);
  const auto found = std::find_if(columns.begin(), columns.end(),
                                  [&](const tTableColumn& each) { return upperCase(each.strName) == strUpper; });
  return found == columns.end() ? nullptr : &*found;
}

// Sets the status of a Source column and its partner's, and gives its clause; empty when nothing changes.
std::string sourceClause(Program& program, tTableColumn& source, std::vector<tTableColumn>& arrTargetCols,
                         ScriptCounts& counts) {
  tTableColumn* target = sameNameNoCase(arrTargetCols, source.strName);
  if (!target) {
    source.lngScriptStatus = scriptAdded;
    ++counts.lngAdded;
    return "ADD " + source.strLine;
  }
  target->blnMatched = -1;
  const bool blnSame = source.strLine == target->strLine;
  source.lngScriptStatus = target->lngScriptStatus = blnSame ? scriptSame : scriptChanged;
  ++(blnSame ? counts.lngSame : counts.lngChanged);
  return blnSame ? std::string() : ScriptColDiffs(program, source.strName, source, *target);
}

void setAll(std::vector<tTableColumn>& indexes, ScriptStatus status) {
  for (tTableColumn& index : indexes) index.lngScriptStatus = status;
}

tTableColumn* sameName(std::vector<tTableColumn>& indexes, const std::string& strName) {
  const auto found =
      std::find_if(indexes.begin(), indexes.end(), [&](const tTableColumn& each) { return each.strName == strName; });
  return found == indexes.end() ? nullptr : &*found;
}

void matchIndexes(std::vector<tTableColumn>& arrSource, std::vector<tTableColumn>& arrTarget, ScriptCounts& counts) {
  for (tTableColumn& target : arrTarget) {
    tTableColumn* source = sameName(arrSource, target.strName);
    if (!source) {
      target.lngScriptStatus = scriptDropped;
      ++counts.lngDropped;
      continue;
    }
    const bool blnSame = source->strDefinition == target.strDefinition;
    source->lngScriptStatus = target.lngScriptStatus = blnSame ? scriptSame : scriptChanged;
    ++(blnSame ? counts.lngSame : counts.lngChanged);
  }
  for (tTableColumn& source : arrSource) {
    if (sameName(arrTarget, source.strName)) continue;
    source.lngScriptStatus = scriptAdded;
    ++counts.lngAdded;
  }
}

}  // namespace

bool UpdateScript_Tables(Program& program, const std::string& strTable, std::vector<tTableColumn>& arrSourceCols,
                         std::vector<tTableColumn>& arrTargetCols, ScriptCounts& counts, std::string& strScript) {
  counts = {};
  return trap(program, "modScript", "UpdateScript_Tables", false, [&] {
    strScript = "ALTER TABLE " + strTable + " ";
    for (tTableColumn& source : arrSourceCols) {
      const std::string strClause = sourceClause(program, source, arrTargetCols, counts);
      if (!strClause.empty()) strScript += strClause + "\r\n";
    }
    for (tTableColumn& target : arrTargetCols) {
      if (target.blnMatched) continue;
      target.lngScriptStatus = scriptDropped;
      ++counts.lngDropped;
      strScript += " DROP COLUMN " + target.strLine + "\r\n";
    }
    if (counts.lngDropped + counts.lngAdded + counts.lngChanged == 0) strScript.clear();
    return true;
  });
}

std::string ScriptColDiffs(Program& program, const std::string&, const tTableColumn& tSourceCol, const tTableColumn&) {
  return trap(program, "modScript", "ScriptColDiffs", std::string(),
              [&] { return "ALTER COLUMN " + tSourceCol.strLine; });
}

bool CompareIndexes(Program& program, std::vector<tTableColumn>& arrSource, std::vector<tTableColumn>& arrTarget,
                    bool blnIdentical, ScriptCounts& counts) {
  counts = {};
  return trap(program, "modScript", "CompareIndexes", false, [&] {
    if (arrSource.empty() && arrTarget.empty()) return true;
    if (blnIdentical) {
      setAll(arrSource, scriptSame);
      setAll(arrTarget, scriptSame);
      counts.lngSame = static_cast<long>(arrSource.size());
    } else if (arrTarget.empty()) {
      setAll(arrSource, scriptAdded);
      counts.lngAdded = static_cast<long>(arrSource.size());
    } else if (arrSource.empty()) {
      setAll(arrTarget, scriptDropped);
      counts.lngDropped = static_cast<long>(arrTarget.size());
    } else {
      matchIndexes(arrSource, arrTarget, counts);
    }
    return true;
  });
}

}  // namespace qrel
