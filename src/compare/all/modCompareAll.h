// Comparing all objects of the chosen types in two databases, with the result as one plain text report.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "app/Program.h"
#include "compare/all/CompareAllControls.h"
#include "db/mdlData.h"
#include "db/readFailures.h"

namespace qrel {

// The objects that a person chose on each side, from index 0.
struct ObjectSelection {
  long lngSelectedSource = 0;
  long lngSelectedTarget = 0;
  std::vector<std::string> arrSelectedSource;
  std::vector<std::string> arrSelectedTarget;
};

// An object that is there and whose text is empty, though every query worked: it is encrypted.
struct UnreadableObject {
  int side = 0;  // 0 Source, 1 Target
  long lngType = 0;
  std::string strName;  // as listed
};

// An object without a verdict, or with one that rests on less than there is: a read for it failed, its records weren't
// compared to their end, or its name can't be used.
struct NotComparedObject {
  long lngType = 0;
  std::string strName;  // as listed
  std::string strWhy;   // half a sentence; empty: the failed reads say it (db/readFailures.h)
};

enum class VerdictState : std::uint8_t { Identical, Different, SourceOnly, TargetOnly, NotCompared };

// What a run has found about one object.
struct ObjectVerdict {
  long lngType = 0;
  std::string strName;  // as listed, in Target for one that is there alone, else in Source
  VerdictState state = VerdictState::NotCompared;
};

struct modCompareAllState {
  bool gblnCancelCompare = false;  // the stop flag of bulk runs; Cancel sets it

  // Of the last run, over all its types; the report's wording doesn't depend on them. When one side has no
  // object of a type at all, the other side's objects count here although the report doesn't list them.
  long lngDifferent = 0;
  long lngSourceOnly = 0;
  long lngTargetOnly = 0;
  std::vector<UnreadableObject> arrUnreadable;
  std::vector<NotComparedObject> arrNotCompared;
  std::vector<NotComparedObject> arrWithoutDetails;  // that differ, but whose lines couldn't be listed
  // Of all objects that took part, in the order in which they were met. The first one about an object is what is known
  // for certain: what differs may be told as not compared to its end behind that.
  std::vector<ObjectVerdict> arrVerdicts;
  bool blnDataCompared = false;  // the verdicts are about records
  long lngTypesRead = 0;         // types of which both lists could be read
};

struct CompareAllInput {
  std::array<std::string, 2> arrDatabases;  // 0 Source, 1 Target
  bool blnSelective = false;                // only the objects of the selection
  ObjectSelection selection;
  bool blnDetails = false;                                 // with the lines that differ
  std::function<std::string(std::string_view)> shownName;  // how the report writes a name; unset: as it is
};

// Compares the types whose boxes are checked on the two selected servers. True when the run came to its end: the report
// text then holds the report, strTypesFlags the eight flags of the boxes. False without a report after a message (no
// connection), after an error report, or when the stop flag was set. The window is closed in any case.
bool CompareAll_Structure(Program& program, CompareAllControls& frmOwner, std::string& strTypesFlags,
                          const CompareAllInput& input);

// How many types take part, from the first on: constraints and permissions only where they are switched on.
std::size_t TypesInUse(const Program& program);
// "1,0,0,0,0,0,0,0" when the box of tables alone is checked.
std::string FlagsOfBoxes(const CompareAllControls& frmOwner);
// The time since startTicks as hh:mm:ss.
std::string ElapsedTime(const Program& program, std::int64_t startTicks);

// The names of a selection, made once for a run.
class SelectedNames {
 public:
  explicit SelectedNames(const ObjectSelection& selection);
  bool hasBounds() const { return hasBounds_; }  // both sides have at least one
  bool contains(const std::string& strName) const { return names_.contains(strName); }

 private:
  bool hasBounds_;
  std::unordered_set<std::string> names_;  // of both sides
};

// Whether an object takes part, by its name as it is listed: any in a run that isn't selective, otherwise one that was
// selected on either side under that name or under its bare one. Never an empty name, and none at all when a side has
// no selection.
bool ProceedWithThisObject(const std::string& strName, bool blnSelective, const SelectedNames& selected);

// Makes sure that a table is compared with its namesake in the same schema. blnProceed: go on with the comparison;
// lngOtherId: the namesake's id in the other database, 0 where names alone count (any other type, a version below 9).
// blnProceed False: there is no table of that name and schema. A False result, after a failed look-up, ends the run.
bool CompareAll_CheckForDuplicateNames(Program& program, long enmObjectType, tServer& tThisServer,
                                       const std::string& strName, const std::string& strThisDb, tServer& tOtherServer,
                                       const std::string& strOtherDb, long lngObjectId, long& lngOtherId,
                                       bool& blnProceed);

// The first fields of a record set, made once for a run through many names. A record set that isn't there has none; one
// that fails on the way raises its error.
class NamesInRecordset {
 public:
  explicit NamesInRecordset(const RecordsetPtr& rs);
  bool contains(const std::string& strName) const;

 private:
  std::unordered_set<std::string> names_;  // lower case
};

// Whether the name is among them, case not counting.
bool ObjectExistsInRecordset(const NamesInRecordset& names, const std::string& strName);

// The yields of a run: cheap enough to be asked at every object.
class RunPulse {
 public:
  RunPulse(Program& program, CompareAllControls& controls) : program_(program), controls_(controls) {}
  // Shows the elapsed time and lets events run, if the last time was some milliseconds ago or blnAlways is set. False
  // when the run is to stop.
  bool goOn(bool blnAlways = false);

 private:
  Program& program_;
  CompareAllControls& controls_;
  std::int64_t lastTicks_ = -1;
};

}  // namespace qrel
