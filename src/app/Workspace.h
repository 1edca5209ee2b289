// What every command reads of the main window: the two panels' lists and panes and the flags around them. The main
// window owns the behaviour; comparison code reads this record.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/controls/control.h"
#include "platform/controls/textPane.h"

namespace qrel {

// Set while a saved process is replayed: no person is there to choose or to ask.
struct tReplay {
  bool mblnReplay = false;
  std::int32_t mlngReplaySubType = 0;  // kind of comparison, as the process stores it
  std::int32_t mlngReplaySubSubType = 0;
  std::string mstrReplayObjTypes;    // eight flags
  std::string mstrReplayExportPath;  // where the result is written; empty: nowhere
  bool mblnReplayPrint = false;
};

// Side 0 is Source, side 1 is Target in all pairs.
struct Workspace {
  ComboBox cmbType{"cmbType"};  // item data: the object type code
  std::array<ComboBox, 2> cmbServer{ComboBox{"cmbServer(0)"}, ComboBox{"cmbServer(1)"}};
  std::array<CheckList, 2> pvlDb{CheckList{"pvlDb(0)"}, CheckList{"pvlDb(1)"}};
  // A row's id is its object's.
  std::array<CheckList, 2> pvlSqlObj{CheckList{"pvlSqlObj(0)"}, CheckList{"pvlSqlObj(1)"}};
  std::array<TextPane, 2> txtTXProc{TextPane{"txtTXProc(0)"}, TextPane{"txtTXProc(1)"}};
  std::array<ComboBox, 2> cmbOwners{ComboBox{"cmbOwners(0)"}, ComboBox{"cmbOwners(1)"}};

  bool mblnBusy = false;  // while True, panel side effects and new commands are inert
  tReplay replay;

  // The selected type's code; 0 when none is selected.
  long objectType() const {
    return cmbType.selected() < 0 ? 0 : cmbType.itemData(static_cast<std::size_t>(cmbType.selected()));
  }
  // Text of the first selected row, empty without one.
  static std::string selectedText(const CheckList& list) {
    return list.firstSelected() < 0 ? std::string() : list.cell(static_cast<std::size_t>(list.firstSelected()), 0);
  }
  // Id of the first selected row, 0 without one.
  static std::int32_t selectedId(const CheckList& list) {
    return list.firstSelected() < 0 ? 0 : list.id(static_cast<std::size_t>(list.firstSelected()));
  }
};

}  // namespace qrel
