// Finding one's way in the main window: from mark to mark, to a text, to an object, and from a report to its pairs.
#include <algorithm>
#include <unordered_map>

#include "app/modStrings.h"
#include "app/trap.h"
#include "compare/all/reportObjects.h"
#include "compare/structure/modCompareSelected.h"
#include "platform/text.h"
#include "ui/frmMain.h"

namespace qrel {

namespace {

constexpr std::size_t linesAbove = 3;  // are seen above a marked block

std::size_t caretLine(const TextPane& pane) { return pane.lineAt(pane.selectionStart()); }

// The words beside objects, by the names under which a list may have them.
class StateWords {
 public:
  StateWords(const modCompareAllState& run, long lngType, int side) {
    for (const ObjectVerdict& verdict : run.arrVerdicts) {
      if (verdict.lngType != lngType) continue;
      const std::string strWords = VerdictWords(verdict.state, run.blnDataCompared, side);
      listed_.emplace(verdict.strName, strWords);
      // Two schemas may have objects of one name.
      if (const auto [at, isNew] = bare_.emplace(bareName(verdict.strName), strWords); !isNew && at->second != strWords)
        at->second.clear();
    }
  }
  std::string of(const std::string& strListed) const {
    if (const auto found = listed_.find(strListed); found != listed_.end()) return found->second;
    const auto found = bare_.find(bareName(strListed));
    return found == bare_.end() ? "" : found->second;
  }

 private:
  static std::string bareName(const std::string& strName) {
    std::string strRest;
    return lowerCase(GetLastWord(strName, strRest, "."));
  }
  std::unordered_map<std::string, std::string> listed_, bare_;
};

}  // namespace

void frmMain::wireLists() {
  for (std::size_t side = 0; side < 2; ++side) {
    CheckList& list = workspace.pvlSqlObj[side];
    list.onRows = [this, side] { showCount(side); };
    txtFilter[side].onChange = [this, side] { workspace.pvlSqlObj[side].setFilter(txtFilter[side].text()); };
    const auto dropped = [this, side](const std::vector<std::string>& paths) {
      if (!workspace.mblnBusy) MenuLoadScripts(paths, static_cast<int>(side));
    };
    for (Control* control : std::initializer_list<Control*>{&list, &workspace.pvlDb[side], &workspace.txtTXProc[side]})
      control->onFilesDropped = dropped;
    for (Control* control : std::initializer_list<Control*>{&list, &workspace.pvlDb[side], &workspace.txtTXProc[side],
                                                            &txtFilter[side], &workspace.cmbServer[side]})
      control->onPointedAt = [this, side](bool here) {
        if (here) lastSide_ = side;
      };
  }
}

void frmMain::showCount(std::size_t side) {
  const CheckList& list = workspace.pvlSqlObj[side];
  std::size_t shown = list.count();
  if (!list.filter().empty()) {
    shown = 0;
    for (std::size_t row = 0; row < list.count(); ++row) shown += list.passes(row) ? 1 : 0;
  }
  const std::string strAll = std::to_string(list.count());
  const std::string strText = shown == list.count() ? strAll : std::to_string(shown) + " of " + strAll;
  if (lblCount[side].text() != strText) lblCount[side].setText(strText);
}

void frmMain::showMark(std::size_t number) {
  for (std::size_t side = 0; side < 2; ++side) {
    TextPane& pane = workspace.txtTXProc[side];
    const std::size_t line = std::min(marks_[number][side], pane.lineCount() - 1);
    pane.setSelection(static_cast<std::size_t>(pane.lineOffset(line)), 0);
    pane.setTopLine(line > linesAbove ? line - linesAbove : 0);
  }
  lblStatus.setText("Marked block " + std::to_string(number + 1) + " of " + std::to_string(marks_.size()) +
                    " (Alt+Down: next, Alt+Up: previous)");
}

void frmMain::ShowFirstMark() {
  marks_ = MarkedPlaces(workspace.txtTXProc[0], workspace.txtTXProc[1]);
  if (!marks_.empty()) showMark(0);
}

void frmMain::MoveToMark(int step) {
  const auto& panes = workspace.txtTXProc;
  marks_ = MarkedPlaces(panes[0], panes[1]);
  if (marks_.empty()) {
    program_.host.beep();
    return lblStatus.setText("No lines are marked. Compare selected objects (F7) marks the lines that differ.");
  }
  const auto at = std::find(marks_.begin(), marks_.end(), MarkedPlace{caretLine(panes[0]), caretLine(panes[1])});
  const std::size_t line = caretLine(panes[lastSide_]);
  const auto isBefore = [&](const MarkedPlace& place) { return place[lastSide_] < line; };
  const auto isBeforeOrAt = [&](const MarkedPlace& place) { return place[lastSide_] <= line; };
  auto next = static_cast<std::ptrdiff_t>(at - marks_.begin()) + step;
  if (at == marks_.end())
    next = step > 0 ? std::count_if(marks_.begin(), marks_.end(), isBeforeOrAt)
                    : std::count_if(marks_.begin(), marks_.end(), isBefore) - 1;
  const auto last = static_cast<std::ptrdiff_t>(marks_.size()) - 1;
  if (next < 0 || next > last) program_.host.beep();
  showMark(static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(next, 0, last)));
}

void frmMain::FindInPane() { workspace.txtTXProc[lastSide_].askSearch(); }

void frmMain::FocusFilter() { txtFilter[lastSide_].setFocus(true); }

void frmMain::ShowObjectStates() {
  for (int side = 0; side < 2; ++side) {
    CheckList& list = workspace.pvlSqlObj[static_cast<std::size_t>(side)];
    const StateWords words(program_.state<modCompareAllState>(), workspace.objectType(), side);
    list.setRedraw(false);
    for (std::size_t row = 0; row < list.count(); ++row) list.setNote(row, words.of(list.cell(row, 0)));
    list.setRedraw(true);
  }
}

void frmMain::CompareObjectOfReport(const ObjectVerdict& verdict) {
  trap(program_, "frmMain", "CompareObjectOfReport", [&] {
    const bool blnData = program_.state<modCompareAllState>().blnDataCompared;
    if (workspace.objectType() != verdict.lngType) {
      ShowObjectType(verdict.lngType);
      ShowObjectStates();
    }
    const bool blnInSource = SelectRowByText(workspace.pvlSqlObj[0], verdict.strName);
    std::string strRest;
    const bool blnInTarget = SelectRowByText(workspace.pvlSqlObj[1], verdict.strName) ||
                             SelectRowByText(workspace.pvlSqlObj[1], GetLastWord(verdict.strName, strRest, "."));
    if (blnInSource && blnInTarget) {
      if (blnData) return CompareDataOfSelection();
      return CompareSelProcs(program_, workspace, compare_, false, "", "");
    }
    const std::string strWhere = blnInSource ? " is only in Source" : blnInTarget ? " is only in Target" : " is gone";
    program_.host.messageBox("There is nothing to compare: '" + verdict.strName + "'" + strWhere + ".",
                             Icon::Information, "Cannot Compare");
  });
}

}  // namespace qrel
