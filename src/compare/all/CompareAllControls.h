// The controls that a whole-database run works with. The windows that start such a run own them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "db/mdlObjects.h"
#include "platform/controls/form.h"
#include "platform/controls/textPane.h"

namespace qrel {

// The types of a run in its order, which is also that of the type boxes and of the eight flags.
inline constexpr std::array<long, 8> compareAllTypes = {objTables,   objProcedures,    objFunctions,   objViews,
                                                        objTriggers, objRelationships, objConstraints, objPermissions};

// The type's index in that order (0-based), -1 for any other code; and the code at an index, 0 outside the table.
long CompareAllIndex(long lngType);
long CompareAllType(long lngIndex);

// "name(0)", "name(1)" and so on.
template <class AnyControl, std::size_t... index>
std::array<AnyControl, sizeof...(index)> controlArray(const std::string& name, std::index_sequence<index...>) {
  return {AnyControl(name + "(" + std::to_string(index) + ")")...};
}
template <class AnyControl, std::size_t count>
std::array<AnyControl, count> controlArray(const std::string& name) {
  return controlArray<AnyControl>(name, std::make_index_sequence<count>());
}

struct CompareAllControls {
  explicit CompareAllControls(Form& owner) : window(owner) {}

  Form& window;  // which the run closes at its end

  std::array<Control, 2> fraContainer = controlArray<Control, 2>("fraContainer");  // 0 the type boxes, 1 the progress
  std::array<CheckBox, 8> chkObjType = controlArray<CheckBox, 8>("chkObjType");
  std::array<Label, 8> lblComparing = controlArray<Label, 8>("lblComparing");  // the types done and at work, from 0
  Label lblProgress{"lblProgress"};  // which of how many objects lblCurProcName names
  Label lblCurProcName{"lblCurProcName"};
  Label lblTime{"lblTime"};                                                    // elapsed, hh:mm:ss
  std::array<Control, 15> shpStatus = controlArray<Control, 15>("shpStatus");  // one of them is visible at a time
  Timer tmrStatus{"tmrStatus", 200};                                           // enabled: a run is on
  Button cmdCompare{"cmdCompare"};
  Button cmdCancel{"cmdCancel"};

  // Never shown: where a run keeps the lists and the texts of the two sides.
  std::array<CheckList, 2> pvlSqlObj = controlArray<CheckList, 2>("pvlSqlObj");
  std::array<TextPane, 2> txtTXProc = controlArray<TextPane, 2>("txtTXProc");

  std::int64_t startTicks = 0;  // the host's clock at the start of the run
};

}  // namespace qrel
