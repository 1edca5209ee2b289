#include "compare/all/CompareAllObjects.h"

#include <algorithm>

#include "app/modStrings.h"
#include "app/trace.h"
#include "db/modSchema.h"
#include "platform/text.h"

namespace qrel {

CompareAllRunEnd::~CompareAllRunEnd() {
  run_.frm.tmrStatus.setEnabled(false);
  for (ConnectionPtr& connection : run_.arrConnections)
    if (connection) connection->Close();
  run_.program.host.setPointer(Pointer::Default);
  run_.frm.window.close();
}

void ShowRunProgress(CompareAllRun& run) {
  run.frm.fraContainer[0].setVisible(false);
  run.frm.fraContainer[1].setVisible(true);
  run.frm.lblCurProcName.setText("");
  run.frm.startTicks = run.program.host.ticks();
  run.frm.tmrStatus.setEnabled(true);
  ClearDebugLog(run.program);
}

std::array<std::string, 2> RunDatabaseNames(CompareAllRun& run) {
  return {run.server(0).Name + "." + run.database(0), run.server(1).Name + "." + run.database(1)};
}

std::string CompareAllObjects::bareName(const std::string& strName) {
  std::string strRest;
  return GetLastWord(strName, strRest, ".");
}

bool CompareAllObjects::compare() {
  CompareAllReport& report = run_.report;
  const auto& lists = run_.frm.pvlSqlObj;
  beginReport();
  bool blnRead = false;
  if (!loadLists(blnRead)) return false;
  if (!blnRead) {
    report.endUnreadType();
    return true;
  }
  ++program_.state<modCompareAllState>().lngTypesRead;
  if (!run_.input.blnSelective) report.addCounts(lists[0].count(), lists[1].count());
  if (lists[0].count() == 0 && lists[1].count() == 0) {
    report.endEmptyType();
  } else if (lists[0].count() == 0 || lists[1].count() == 0) {
    countUnlisted();
  } else {
    if (!sourcePass() || !targetPass()) return false;
    report.endTargetPass();
    report.endType(run_.blnSomeColumnsIgnored);
    countTotals();
  }
  return true;
}

bool CompareAllObjects::loadLists(bool& blnRead) {
  blnRead = true;
  const ReadingScope reading(program_, "the list of " + GetObjectTypeName(type_, false));
  for (int side = 0; side < 2; ++side) {
    const auto index = static_cast<std::size_t>(side);
    if (!LoadObjects(program_, run_.server(side), run_.frm.pvlSqlObj[index], run_.frm.txtTXProc[index], type_,
                     run_.database(side), false, "", side, true))
      blnRead = false;
    if (!run_.pulse.goOn(true)) return false;
  }
  if (type_ == objTables && blnRead) namesakes_.emplace(program_, run_.input.arrDatabases);
  return true;
}

CompareAllObjects::Item CompareAllObjects::itemAt(int side, std::size_t row) const {
  const CheckList& list = run_.frm.pvlSqlObj[static_cast<std::size_t>(side)];
  Item item;
  item.strPrinted = list.cell(row, 0);
  item.strName = bareName(item.strPrinted);
  item.lngId = list.id(row);
  item.side = side;
  return item;
}

bool CompareAllObjects::proceed(const std::string& strListed) const {
  return ProceedWithThisObject(strListed, run_.input.blnSelective, run_.selected);
}

std::string CompareAllObjects::wordsFor(const std::string& strName) const {
  return lowerCase(GetObjectTypeName(type_, true)) + " " + strName;
}

bool CompareAllObjects::nameIsCut(const Item& item) {
  if (!PointIsPartOfName(program_, run_.server(item.side), run_.database(item.side), type_, item.strPrinted,
                         item.lngId))
    return false;
  notCompared(item, "the point in its name can't be told from the one behind a schema");
  return true;
}

void CompareAllObjects::notCompared(const Item& item, const std::string& strWhy) {
  if (!notCompared_.insert(item.strPrinted).second) return;
  run_.report.addNotCompared(item.strPrinted);
  noteVerdict(item, VerdictState::NotCompared);
  program_.state<modCompareAllState>().arrNotCompared.push_back({type_, item.strPrinted, strWhy});
}

void CompareAllObjects::noteVerdict(const Item& item, VerdictState state) {
  program_.state<modCompareAllState>().arrVerdicts.push_back({type_, item.strPrinted, state});
}

bool CompareAllObjects::findNamesake(int side, const std::string& strName, long lngId, long& lngOtherId,
                                     bool& blnProceed) {
  const int other = 1 - side;
  lngOtherId = namesakes_ ? namesakes_->find(side, bareName(strName), lngId) : 0;
  blnProceed = lngOtherId > 0;
  if (blnProceed) return true;
  return CompareAll_CheckForDuplicateNames(program_, type_, run_.server(side), strName, run_.database(side),
                                           run_.server(other), run_.database(other), lngId, lngOtherId, blnProceed);
}

long CompareAllObjects::knownNamesake(int side, const Item& item) const {
  return namesakes_ ? namesakes_->find(side, bareName(item.strName), item.lngId) : 0;
}

std::size_t CompareAllObjects::countOfItems(int side) const {
  const CheckList& list = run_.frm.pvlSqlObj[static_cast<std::size_t>(side)];
  if (!run_.input.blnSelective) return list.count();
  std::size_t count = 0;
  for (std::size_t row = 0; row < list.count(); ++row) count += proceed(list.cell(row, 0)) ? 1 : 0;
  return count;
}

bool CompareAllObjects::eachItem(int side, const std::function<bool(const Item&)>& handle) {
  const std::size_t count = run_.frm.pvlSqlObj[static_cast<std::size_t>(side)].count();
  const std::string strOf = " of " + std::to_string(countOfItems(side)) + (side == 0 ? " in Source:" : " in Target:");
  std::size_t number = 0;
  std::size_t ahead = 0;  // the first row that nothing was read ahead for
  for (std::size_t row = 0; row < count; ++row) {
    if (!run_.pulse.goOn()) return false;
    const Item item = itemAt(side, row);
    readAheadOf(side, row, ahead);
    if (!proceed(item.strPrinted)) continue;
    run_.frm.lblProgress.setText(std::to_string(++number) + strOf);
    run_.frm.lblCurProcName.setText(item.strPrinted);
    if (!handle(item)) return false;
  }
  return true;
}

// The items up to a few behind this row; far enough that many connections have something to do.
void CompareAllObjects::readAheadOf(int side, std::size_t row, std::size_t& ahead) {
  constexpr std::size_t itemsAhead = 16;
  if (!program_.data.readsAhead()) return;
  program_.data.prefetcher().nextStep();
  const std::size_t end = std::min(row + itemsAhead, run_.frm.pvlSqlObj[static_cast<std::size_t>(side)].count());
  for (; ahead < end; ++ahead)
    if (const Item item = itemAt(side, ahead); proceed(item.strPrinted)) readAhead(item, ahead - row);
}

bool CompareAllObjects::sourcePass() {
  if (!eachItem(0, [this](const Item& item) { return compareItem(item); })) return false;
  run_.frm.lblProgress.setText("");
  run_.frm.lblCurProcName.setText("");
  run_.report.endSourcePass();
  return true;
}

void CompareAllObjects::countTotals() {
  auto& state = program_.state<modCompareAllState>();
  state.lngDifferent += run_.report.differentCount();
  state.lngSourceOnly += run_.report.sourceOnlyCount();
  state.lngTargetOnly += run_.report.targetOnlyCount();
}

void CompareAllObjects::countUnlisted() {
  auto& state = program_.state<modCompareAllState>();
  const int side = run_.frm.pvlSqlObj[0].count() > 0 ? 0 : 1;
  const std::size_t count = run_.frm.pvlSqlObj[static_cast<std::size_t>(side)].count();
  for (std::size_t row = 0; row < count; ++row) {
    const Item item = itemAt(side, row);
    if (!proceed(item.strPrinted)) continue;
    ++(side == 0 ? state.lngSourceOnly : state.lngTargetOnly);
    noteVerdict(item, side == 0 ? VerdictState::SourceOnly : VerdictState::TargetOnly);
  }
}

}  // namespace qrel
