// The commands that start a whole-database structure comparison and show its report.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "app/Program.h"
#include "app/Workspace.h"
#include "compare/all/modCompareAll.h"
#include "report/AutoReport.h"

namespace qrel {

// What the report window shows and saves besides the report text; index 0 Source, 1 Target.
struct CompareAllReportCall {
  std::string strTitle = "Comparison Report";
  std::array<std::string, 2> arrServers;
  std::array<std::string, 2> arrDatabases;
  std::int32_t lngCompType = 1;  // 0 data, 1 structure
  int intCompSubType = 0;        // 10 several types, 20 all objects of one type, 30 a selection of them
  int intDetailType = 0;         // 10 simple and 20 details of a type; 30 and 40 the same of a selection
  std::string strObjectTypes;    // eight flags
  ObjectSelection selection;     // empty unless the run was selective
  AutoReport replay;
};

// What these commands ask of the windows around them.
class CompareAllSteps {
 public:
  virtual ~CompareAllSteps() = default;
  // The database selected on a side (0 Source, 1 Target) of the main window; empty when there is none.
  virtual std::string DatabaseName(int side) const = 0;
  // Shows the report window over the program's report text and waits for it.
  virtual void ShowReport(const CompareAllReportCall& call) = 0;
};

// Compares several types at once, as chosen in frmCompareAll or, in a replay, by the flags of its process.
void cmdCompareAll_Click(Program& program, CompareAllSteps& steps, const tReplay& replay);

// Compares one type; lngIndex is its place in the order of the type boxes. A selective run asks for the objects in
// frmListObjects, unless a replay brings its selection. When everything is selected the run is not selective.
void MenuCompareAll_Click(Program& program, CompareAllSteps& steps, long lngIndex, const std::string& strSourceDb,
                          const std::string& strTargetDb, bool blnSelective, bool blnDetails, const AutoReport& replay,
                          ObjectSelection selection);

// The menu's way to it: on the databases that the main window shows.
void CompStruct_BulkSel_SimpleDet_All(Program& program, CompareAllSteps& steps, long lngIndex, bool blnSelective,
                                      bool blnDetails);

}  // namespace qrel
