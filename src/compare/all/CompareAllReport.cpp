#include "compare/all/CompareAllReport.h"

#include "compare/structure/modDetails.h"

namespace qrel {

namespace {

constexpr const char* crLf = "\r\n";

std::string withoutLastLineEnd(std::string text) {
  text.resize(text.size() - 2);
  return text;
}

}  // namespace

void CompareAllReport::appendNameLine(std::string& text, const std::string& strName) const {
  ((text += '\t') += input_ && input_->shownName ? input_->shownName(strName) : strName) += crLf;
}

void CompareAllReport::begin(const CompareAllInput& input, const std::array<std::string, 2>& arrNames,
                             const std::string& strFiltering) {
  input_ = &input;
  strReport = "Comparison of databases\r\n\r\n";
  strReport += "Source database " + arrNames[0] + crLf;
  strReport += "Target database " + arrNames[1] + crLf;
  if (!strFiltering.empty()) strReport += strFiltering + crLf;
}

void CompareAllReport::reset(long lngType, const CompareAllInput& input) {
  blnTables = lngType == objTables;
  blnSelective = input.blnSelective;
  type = GetObjectTypeName(lngType, false);
  for (std::string* block : {&strSourceOnly, &strTargetOnly, &strNotCompared, &strIdentical, &strDetails})
    block->clear();
  lngIdenticalCount = lngDifferentCount = lngSourceOnlyCount = lngTargetOnlyCount = lngNotComparedCount = 0;
  blnFindings = blnData = false;
}

void CompareAllReport::beginType(long lngType, const CompareAllInput& input) {
  reset(lngType, input);
  strReport +=
      blnSelective ? "\r\n\r\nSelective comparison of " + type + "\r\n\r\n" : "\r\n\r\nComparison of " + type + crLf;
  appendSelected(input);
}

void CompareAllReport::beginData(const CompareAllInput& input) {
  reset(objTables, input);
  blnData = true;
  strReport +=
      blnSelective ? "\r\n\r\nSelective comparison of " + type + crLf : "\r\nComparison of data in " + type + crLf;
  appendSelected(input);
}

void CompareAllReport::appendSelected(const CompareAllInput& input) {
  if (!blnSelective) return;
  strReport += std::to_string(input.selection.lngSelectedSource) + " objects selected in Source database\r\n";
  strReport += std::to_string(input.selection.lngSelectedTarget) + " objects selected in Target database\r\n\r\n";
}

std::string CompareAllReport::countLine(std::size_t count, const std::string& strSide) const {
  const std::string where = " in " + strSide + " database.";
  if (count == 0) return "There are no " + type + where;
  if (count == 1) return "There is 1 " + singular() + where;
  return "There are " + std::to_string(count) + " " + type + where;
}

void CompareAllReport::addCounts(std::size_t sourceCount, std::size_t targetCount) {
  if (blnData) strReport += crLf;
  strReport += countLine(sourceCount, "Source") + crLf + countLine(targetCount, "Target") + crLf;
  if (blnData) strReport += crLf;
}

void CompareAllReport::addIdentical(const std::string& strName) {
  appendNameLine(strIdentical, strName);
  ++lngIdenticalCount;
}

void CompareAllReport::addDifferent(const std::string& strName) {
  if (lngDifferentCount == 0) strReport += "List of " + type + " which differ:\r\n";
  appendNameLine(strReport, strName);
  ++lngDifferentCount;
  blnFindings = true;
}

void CompareAllReport::addDetails(const Program& program, const std::string& strName, const std::string& strSource,
                                  const std::string& strTarget) {
  const std::string strShown = input_ && input_->shownName ? input_->shownName(strName) : strName;
  AddDifferencesToDetails(program, strDetails, type, strShown, lngDifferentCount, strSource, strTarget);
}

void CompareAllReport::addSourceOnly(const std::string& strName) {
  if (lngSourceOnlyCount == 0) {
    strSourceOnly = "List of " + type + " which exist in Source database but not in Target database:\r\n";
  }
  appendNameLine(strSourceOnly, strName);
  ++lngSourceOnlyCount;
}

void CompareAllReport::addTargetOnly(const std::string& strName) {
  if (lngTargetOnlyCount == 0) {
    strTargetOnly = "List of " + type + " which exist in Target database but not in Source database:\r\n";
  }
  appendNameLine(strTargetOnly, strName);
  ++lngTargetOnlyCount;
  blnFindings = true;
}

void CompareAllReport::appendFound(long lngCount) {
  strReport += "\t(" + std::to_string(lngCount) + " " + (lngCount == 1 ? singular() : type) + ")\r\n";
}

void CompareAllReport::endSourcePass() {
  if (lngDifferentCount > 0) appendFound(lngDifferentCount);
  if (lngSourceOnlyCount == 0) return;
  strReport += strSourceOnly;
  appendFound(lngSourceOnlyCount);
}

void CompareAllReport::addNotCompared(const std::string& strName) {
  if (lngNotComparedCount == 0) strNotCompared = "List of " + type + " which could not be compared:\r\n";
  appendNameLine(strNotCompared, strName);
  ++lngNotComparedCount;
  blnFindings = true;
}

void CompareAllReport::addUnreadList() {
  strReport += unreadLine() + crLf;
  blnFindings = true;
}

void CompareAllReport::endTargetPass() {
  if (lngTargetOnlyCount > 0) {
    strReport += strTargetOnly;
    appendFound(lngTargetOnlyCount);
  }
  if (lngNotComparedCount > 0) {
    strReport += strNotCompared;
    appendFound(lngNotComparedCount);
  }
}

void CompareAllReport::appendIdenticalSummary() {
  const std::string what = blnData ? "data" : "structure";
  if (lngIdenticalCount == 0) {
    strReport += blnTables ? "There are no tables which have identical " + what + " in both databases."
                           : "There are no " + type + " which are identical in both databases.";
  } else if (lngIdenticalCount == 1) {
    strReport += "One " + singular() + " [" + withoutLastLineEnd(strIdentical.substr(1)) + "] has identical " + what +
                 " in both databases.";
  } else {
    strReport += "All " + std::to_string(lngIdenticalCount);
    strReport += blnData     ? " remaining tables have identical data:"
                 : blnTables ? " remaining tables have identical structures:"
                             : " remaining " + type + " are identical:";
    strReport += crLf + withoutLastLineEnd(std::move(strIdentical));
  }
}

void CompareAllReport::appendCleanSentence(bool blnSomeColumnsIgnored) {
  const std::string which = blnSelective ? "selected " : "";
  if (blnData) {
    strReport += "Data in all " + which + "tables in both databases is identical.";
    return;
  }
  if (!blnTables) {
    strReport += "All " + which + type + " in both databases are identical.";
    return;
  }
  strReport += "The structure of all " + which + "tables in both databases is identical.";
  if (blnSomeColumnsIgnored) strReport += " (Some columns were ignored during comparison.)";
}

void CompareAllReport::endType(bool blnSomeColumnsIgnored) {
  if (!blnFindings) {
    appendCleanSentence(blnSomeColumnsIgnored);
    return;
  }
  appendIdenticalSummary();
  if (lngDifferentCount > 0) strReport += strDetails;
}

void CompareAllReport::endUnreadType() { strReport += unreadLine(); }

void CompareAllReport::endEmptyType() { strReport.resize(strReport.size() - 2); }

std::string CompareAllReport::finish(const std::string& strElapsed) {
  strReport += "\r\n\r\nTime Elapsed: " + strElapsed;
  return std::move(strReport);
}

}  // namespace qrel
