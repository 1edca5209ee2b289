// The commands that compare the data of many tables and show the report.
#pragma once

#include <string>

#include "app/Program.h"
#include "app/Workspace.h"
#include "compare/all/compareAllCommands.h"
#include "report/AutoReport.h"

namespace qrel {

// All tables of the two databases that the main window shows. A box, and nothing more, when both panes are empty.
void DataCompareAll(Program& program, Workspace& workspace, CompareAllSteps& steps, const AutoReport& replay);

// The tables that a person selects, of the two databases that the main window shows.
void MenuDataCompSelective(Program& program, Workspace& workspace, CompareAllSteps& steps, const AutoReport& replay);

// A selection of tables: asked for in frmListObjects, unless a replay (replay.blnAuto) brings it. When everything is
// selected the run is not selective, though its report is that of a selection. lngIndex is the place of the object type
// in the order of the type boxes (0, tables; up to 5); the run is over tables whatever it says.
void DataCompareSelective(Program& program, Workspace& workspace, CompareAllSteps& steps, long lngIndex,
                          const std::string& strDb1, const std::string& strDb2, bool blnSelective, bool blnDetails,
                          const AutoReport& replay, ObjectSelection selection);

}  // namespace qrel
