#include "compare/all/CompareAllSection.h"

#include "app/trap.h"
#include "compare/structure/modCompareObjects.h"
#include "compare/structure/modIgnoreColumnsOrder.h"
#include "compare/structure/modIgnoreComments.h"
#include "compare/structure/modIgnoreWhiteSpaces.h"
#include "db/mdlQueryCode.h"
#include "db/modObjectText.h"
#include "platform/text.h"

namespace qrel {

bool CompareAllSection::compareItem(const Item& item) {
  const ReadingScope reading(program_, wordsFor(item.strPrinted));
  const ReadWatch reads(program_);
  if (nameIsCut(item)) return true;
  Pair pair;
  pair.arrIds[0] = item.lngId;
  bool blnProceed = false;
  if (!findNamesake(0, item.strName, item.lngId, pair.arrIds[1], blnProceed)) return false;
  try {
    if (blnProceed && !reads.failed()) fetchTexts(item, pair);
    decide(item, pair, reads);
  } catch (const std::exception& error) {
    // One object's trouble is not the run's. A failed query has been told by now.
    const ErrorInfo info = describeError(error);
    if (!reads.failed())
      ShowErrorReport(program_, info.number, info.description, "modCompareAll", "CompareAll_Structure");
    notCompared(item, reads.failed() ? "" : info.description);
  }
  return true;
}

void CompareAllSection::readAhead(const Item& item, std::size_t steps) {
  const bool blnFind = item.side == 0;  // the other pass asks for these types' texts in Source
  switch (type_) {
    case objTables:
      if (const long lngOther = blnFind ? knownNamesake(0, item) : 0; lngOther > 0)
        for (const int side : {0, 1})
          PrefetchTableText(program_, run_.server(side),
                            {run_.database(side), item.strName, side == 0 ? item.lngId : lngOther}, steps);
      break;
    case objRelationships:
    case objConstraints:
      for (int side = 0; side < (blnFind ? 2 : 1); ++side)
        PrefetchText(program_, run_.server(side), {}, run_.database(side), type_,
                     blnFind ? item.strName : item.strPrinted, steps);
      break;
    case objPermissions:
      break;
    default:
      for (int side = 0; blnFind && side < 2; ++side)
        PrefetchText(program_, run_.server(side), run_.connection(side), run_.database(side), type_, item.strName,
                     steps);
  }
}

void CompareAllSection::decide(const Item& item, Pair& pair, const ReadWatch& reads) {
  CompareAllReport& report = run_.report;
  const bool blnInTarget = !pair.arrTexts[1].empty();
  const bool blnSame = blnInTarget && !reads.failed() && identical(item, pair);
  if (reads.failed()) {
    notCompared(item);
  } else if (!blnInTarget) {
    report.addSourceOnly(item.strPrinted);
    noteVerdict(item, VerdictState::SourceOnly);
  } else if (blnSame) {
    report.addIdentical(item.strPrinted + pair.strSuffix);
    noteVerdict(item, VerdictState::Identical);
  } else {
    report.addDifferent(item.strPrinted + pair.strSuffix);
    noteVerdict(item, VerdictState::Different);
    if (!run_.input.blnDetails) return;
    if (!pair.blnTooLong) return report.addDetails(program_, item.strName, pair.arrTexts[0], pair.arrTexts[1]);
    program_.state<modCompareAllState>().arrWithoutDetails.push_back(
        {type_, item.strPrinted, "comment marks without an end make its text too long"});
  }
}

void CompareAllSection::fetchTexts(const Item& item, Pair& pair) {
  const ReadWatch reads(program_);
  for (int side = 0; side < 2; ++side) {
    const auto index = static_cast<std::size_t>(side);
    long lngIgnored = 0;
    pair.arrTexts[index] = fetchText(side, item, pair.arrIds[index], lngIgnored);
    if (lngIgnored > 0) {
      pair.strSuffix = " (some columns ignored during comparison)";
      run_.blnSomeColumnsIgnored = true;
    }
  }
  if (reads.failed()) return;
  for (int side = 0; side < 2; ++side) noteIfUnreadable(side, item, pair);
}

std::string CompareAllSection::fetchText(int side, const Item& item, long lngId, long& lngIgnored) {
  switch (type_) {
    case objTables:
      return GetTableText(program_, run_.server(side),
                          {run_.database(side), item.strName, lngId, ignoredColsStruct, item.strPrinted}, &lngIgnored);
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

// A Source object is there, for it was listed. A table without columns in its text may still have index lines behind
// the empty line.
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
  const auto& [strSource, strTarget] = pair.arrTexts;
  if (strSource == strTarget || sameWithoutComments(pair)) return true;
  return program_.settings.IgnoreColSeq && pair.arrIds[0] >= 1 && pair.arrIds[1] >= 1 && sameButForOrder(item, pair);
}

// The texts stay as the comparison has made them, for the details; those that would outgrow memory stay whole.
bool CompareAllSection::sameWithoutComments(Pair& pair) {
  auto& [strSource, strTarget] = pair.arrTexts;
  if (program_.settings.IgnoreComments) {
    std::array<std::string, 2> arrStripped;
    pair.blnTooLong =
        !StripCommentsWithin(strSource, arrStripped[0]) || !StripCommentsWithin(strTarget, arrStripped[1]);
    if (pair.blnTooLong) return SameWithoutComments(program_, strSource, strTarget, type_ == objViews);
    pair.arrTexts = std::move(arrStripped);
  }
  if (type_ == objViews) AdjustCreateViewStatements(program_, strSource, strTarget);
  return program_.settings.IgnoreWhitespace ? CompareProcs_IgnoreWhiteSpaces(program_, strSource, strTarget)
                                            : strSource == strTarget;
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
  const auto names = namesInSource();
  if (!run_.pulse.goOn(true)) return false;
  if (!names) {
    run_.report.addUnreadList();
    return true;
  }
  return eachItem(1, [&](const Item& item) { return lookForItem(item, *names); });
}

std::optional<NamesInRecordset> CompareAllSection::namesInSource() {
  const ReadingScope reading(program_, "the list of " + GetObjectTypeName(type_, false));
  RecordsetPtr rs;
  if (!LoadObjects_ToRecordset(program_, run_.connection(0), rs, run_.server(0), type_, run_.database(0), 0)) return {};
  return trap(program_, "modCompareAll", "CompareAll_Structure", std::optional<NamesInRecordset>(), [&] {
    std::optional<NamesInRecordset> names(std::in_place, rs);
    if (rs) rs->Close();
    return names;
  });
}

// Tells of a Target item that isn't in Source. False: the run is over.
bool CompareAllSection::lookForItem(const Item& item, const NamesInRecordset& names) {
  if (isNotCompared(item)) return true;
  const ReadingScope reading(program_, wordsFor(item.strPrinted));
  const ReadWatch reads(program_);
  if (type_ == objTables && nameIsCut(item)) return true;
  long lngOtherId = 0;
  bool blnProceed = false;
  if (!findNamesake(1, item.strPrinted, item.lngId, lngOtherId, blnProceed)) return false;
  bool blnExists = false;
  try {
    blnExists = blnProceed && existsInSource(item.strPrinted, lngOtherId, names);
  } catch (const std::exception&) {
    if (!reads.failed()) throw;
  }
  if (reads.failed()) {
    notCompared(item);
  } else if (!blnExists) {
    run_.report.addTargetOnly(item.strPrinted);
    noteVerdict(item, VerdictState::TargetOnly);
  }
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

}  // namespace qrel
