#include "compare/structure/CompareAllSection.h"

#include "app/modStrings.h"
#include "compare/structure/modCompareObjects.h"
#include "compare/structure/modIgnoreColumnsOrder.h"
#include "compare/structure/modIgnoreComments.h"
#include "compare/structure/modIgnoreWhiteSpaces.h"
#include "db/mdlQueryCode.h"
#include "db/modObjectText.h"
#include "platform/text.h"

namespace qrel {

namespace {

std::string bareName(const std::string& strName) {
  std::string rest;
  return GetLastWord(strName, rest, ".");
}

}  // namespace

bool CompareAllSection::compare() {
  CompareAllReport& report = run_.report;
  const auto& lists = run_.frm.pvlSqlObj;
  report.beginType(type_, run_.input);
  if (!loadLists()) return false;
  if (!run_.input.blnSelective) report.addCounts(lists[0].count(), lists[1].count());
  if (lists[0].count() == 0 && lists[1].count() == 0) {
    report.endEmptyType();
  } else if (lists[0].count() == 0 || lists[1].count() == 0) {
    countUnlisted();
  } else {
    if (!sourcePass() || !targetPass()) return false;
    report.endType(run_.blnSomeColumnsIgnored);
    countTotals();
  }
  return true;
}

bool CompareAllSection::loadLists() {
  for (int side = 0; side < 2; ++side) {
    const auto index = static_cast<std::size_t>(side);
    LoadObjects(program_, run_.server(side), run_.frm.pvlSqlObj[index], run_.frm.txtTXProc[index], type_,
                run_.database(side), false, "", side, true);
    if (!run_.pulse.goOn(true)) return false;
  }
  if (type_ == objTables) namesakes_.emplace(program_, run_.input.arrDatabases);
  return true;
}

CompareAllSection::Item CompareAllSection::itemAt(int side, std::size_t row) const {
  const CheckList& list = run_.frm.pvlSqlObj[static_cast<std::size_t>(side)];
  Item item;
  item.strPrinted = list.cell(row, 0);
  item.strName = bareName(item.strPrinted);
  item.lngId = numericPrefix(list.cell(row, 2));
  return item;
}

bool CompareAllSection::proceed(const std::string& strName) const {
  return ProceedWithThisObject(strName, run_.input.blnSelective, run_.selected);
}

bool CompareAllSection::findNamesake(int side, const std::string& strName, long lngId, long& lngOtherId,
                                     bool& blnProceed) {
  const int other = 1 - side;
  lngOtherId = namesakes_ ? namesakes_->find(side, bareName(strName), lngId) : 0;
  blnProceed = lngOtherId > 0;
  if (blnProceed) return true;
  return CompareAll_CheckForDuplicateNames(program_, type_, run_.server(side), strName, run_.database(side),
                                           run_.server(other), run_.database(other), lngId, lngOtherId, blnProceed);
}

bool CompareAllSection::sourcePass() {
  const std::size_t count = run_.frm.pvlSqlObj[0].count();
  for (std::size_t row = 0; row < count; ++row) {
    if (!run_.pulse.goOn()) return false;
    const Item item = itemAt(0, row);
    if (!proceed(item.strPrinted)) continue;
    run_.frm.lblCurProcName.setText(item.strPrinted);
    if (!compareItem(item)) return false;
  }
  run_.frm.lblCurProcName.setText("");
  run_.report.endSourcePass();
  return true;
}

bool CompareAllSection::compareItem(const Item& item) {
  CompareAllReport& report = run_.report;
  Pair pair;
  pair.arrIds[0] = item.lngId;
  bool blnProceed = false;
  if (!findNamesake(0, item.strName, item.lngId, pair.arrIds[1], blnProceed)) return false;
  if (blnProceed) fetchTexts(item, pair);
  if (pair.arrTexts[1].empty()) {
    report.addSourceOnly(item.strPrinted);
  } else if (identical(item, pair)) {
    report.addIdentical(item.strPrinted + pair.strSuffix);
  } else {
    report.addDifferent(item.strPrinted + pair.strSuffix);
    if (run_.input.blnDetails) report.addDetails(program_, item.strName, pair.arrTexts[0], pair.arrTexts[1]);
  }
  return true;
}

void CompareAllSection::fetchTexts(const Item& item, Pair& pair) {
  auto& arrUnreadable = program_.state<modCompareAllState>().arrUnreadable;
  for (int side = 0; side < 2; ++side) {
    const auto index = static_cast<std::size_t>(side);
    long lngIgnored = 0;
    try {
      pair.arrTexts[index] = fetchText(side, item, pair.arrIds[index], lngIgnored);
    } catch (const std::exception&) {
      arrUnreadable.push_back({side, type_, item.strPrinted});
      throw;
    }
    if (lngIgnored > 0) {
      pair.strSuffix = " (some columns ignored during comparison)";
      run_.blnSomeColumnsIgnored = true;
    }
  }
  for (int side = 0; side < 2; ++side) noteIfUnreadable(side, item, pair);
}

std::string CompareAllSection::fetchText(int side, const Item& item, long lngId, long& lngIgnored) {
  switch (type_) {
    case objTables:
      return GetTableText(program_, run_.server(side), item.strName, run_.database(side), true, lngIgnored, lngId, "",
                          false, "", item.strPrinted);
    case objRelationships:
      return GetRelationshipText(program_, run_.server(side), item.strName, run_.database(side));
    case objConstraints:
      return GetConstraintText(program_, run_.server(side), item.strName, run_.database(side));
    case objPermissions:
      if (side == 0) program_.host.messageBox("Compare all - structure - permissions - to be finished.");
      return {};
    default:
      return GetObjectTextConn(program_, run_.connection(side), run_.server(side), item.strName, "");
  }
}

// A Source object is there, for it was listed. A table without columns of its own text was refused by the server, and
// that has been told; it may still have index lines behind the empty line.
void CompareAllSection::noteIfUnreadable(int side, const Item& item, const Pair& pair) {
  const std::string& text = pair.arrTexts[static_cast<std::size_t>(side)];
  const bool missing = text.empty() || (type_ == objTables && pair.strSuffix.empty() && text.starts_with("\r\n"));
  if (!missing || type_ == objPermissions) return;
  if (side == 0 || targetHas(item.strName)) {
    program_.state<modCompareAllState>().arrUnreadable.push_back({side, type_, item.strPrinted});
  }
}

bool CompareAllSection::targetHas(const std::string& strName) {
  if (!targetNames_) {
    targetNames_.emplace();
    const CheckList& list = run_.frm.pvlSqlObj[1];
    for (std::size_t row = 0; row < list.count(); ++row) targetNames_->insert(lowerCase(bareName(list.cell(row, 0))));
  }
  return targetNames_->contains(lowerCase(strName));
}

bool CompareAllSection::identical(const Item& item, Pair& pair) {
  auto& [strSource, strTarget] = pair.arrTexts;
  if (strSource == strTarget) return true;
  if (program_.settings.IgnoreComments) {
    strSource = StripCommentsFromProc(strSource);
    strTarget = StripCommentsFromProc(strTarget);
  }
  if (type_ == objViews) AdjustCreateViewStatements(program_, strSource, strTarget);
  const bool blnSame = program_.settings.IgnoreWhitespace
                           ? CompareProcs_IgnoreWhiteSpaces(program_, strSource, strTarget)
                           : strSource == strTarget;
  return blnSame ||
         (program_.settings.IgnoreColSeq && pair.arrIds[0] >= 1 && pair.arrIds[1] >= 1 && sameButForOrder(item, pair));
}

bool CompareAllSection::sameButForOrder(const Item& item, const Pair& pair) {
  auto& panes = run_.frm.txtTXProc;
  for (int side = 0; side < 2; ++side) {
    const auto index = static_cast<std::size_t>(side);
    UpdateProcedureTextBox(program_, run_.server(side), panes[index], run_.frm.pvlSqlObj[index], type_,
                           run_.database(side), item.strName, pair.arrIds[index], side, false);
  }
  return CompareProcs_IgnoreColumnsOrder(program_, panes[0], panes[1]);
}

// Names stay as listed here: one with its schema is not found by name.
bool CompareAllSection::targetPass() {
  RecordsetPtr rs;
  LoadObjects_ToRecordset(program_, run_.connection(0), rs, run_.server(0), type_, run_.database(0), 0);
  const NamesInRecordset namesInSource(rs);
  if (rs) rs->Close();
  if (!run_.pulse.goOn(true)) return false;
  const std::size_t count = run_.frm.pvlSqlObj[1].count();
  for (std::size_t row = 0; row < count; ++row) {
    if (!run_.pulse.goOn()) return false;
    const Item item = itemAt(1, row);
    if (!proceed(item.strPrinted)) continue;
    run_.frm.lblCurProcName.setText(item.strPrinted);
    long lngOtherId = 0;
    bool blnProceed = false;
    if (!findNamesake(1, item.strPrinted, item.lngId, lngOtherId, blnProceed)) return false;
    if (!blnProceed || !existsInSource(item.strPrinted, lngOtherId, namesInSource)) {
      run_.report.addTargetOnly(item.strPrinted);
    }
  }
  run_.report.endTargetPass();
  return true;
}

bool CompareAllSection::existsInSource(const std::string& strName, long lngOtherId,
                                       const NamesInRecordset& namesInSource) {
  switch (type_) {
    case objTables:
      return lngOtherId > 0 || ObjectExistsInRecordset(namesInSource, strName);
    case objRelationships:
      return !GetRelationshipText(program_, run_.server(0), strName, run_.database(0)).empty();
    case objConstraints:
      return !GetConstraintText(program_, run_.server(0), strName, run_.database(0)).empty();
    case objPermissions:
      program_.host.messageBox("Compare all - structure - permissions - to be finished");
      return false;
    default:
      return ObjectExistsInRecordset(namesInSource, strName);
  }
}

void CompareAllSection::countTotals() {
  auto& state = program_.state<modCompareAllState>();
  state.lngDifferent += run_.report.differentCount();
  state.lngSourceOnly += run_.report.sourceOnlyCount();
  state.lngTargetOnly += run_.report.targetOnlyCount();
}

void CompareAllSection::countUnlisted() {
  auto& state = program_.state<modCompareAllState>();
  const int side = run_.frm.pvlSqlObj[0].count() > 0 ? 0 : 1;
  const std::size_t count = run_.frm.pvlSqlObj[static_cast<std::size_t>(side)].count();
  for (std::size_t row = 0; row < count; ++row) {
    const Item item = itemAt(side, row);
    if (!proceed(item.strPrinted)) continue;
    ++(side == 0 ? state.lngSourceOnly : state.lngTargetOnly);
  }
}

}  // namespace qrel
