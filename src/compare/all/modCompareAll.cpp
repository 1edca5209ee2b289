#include "compare/all/modCompareAll.h"

#include <algorithm>
#include <cstdio>

#include "app/modStrings.h"
#include "app/trap.h"
#include "compare/all/CompareAllSection.h"
#include "db/modSchema.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* inModCompareAll = "modCompareAll";
constexpr std::int64_t pulseMilliseconds = 5;

}  // namespace

long CompareAllIndex(long lngType) {
  const auto found = std::find(compareAllTypes.begin(), compareAllTypes.end(), lngType);
  return found == compareAllTypes.end() ? -1 : static_cast<long>(found - compareAllTypes.begin());
}

long CompareAllType(long lngIndex) {
  const bool known = lngIndex >= 0 && lngIndex < static_cast<long>(compareAllTypes.size());
  return known ? compareAllTypes[static_cast<std::size_t>(lngIndex)] : 0;
}

std::size_t TypesInUse(const Program& program) {
  if (gblnPermissionsEnabled) return 8;
  return program.settings.AnalyzeConstraints ? 7 : 6;
}

std::string FlagsOfBoxes(const CompareAllControls& frmOwner) {
  std::string flags;
  for (const CheckBox& box : frmOwner.chkObjType) {
    if (!flags.empty()) flags += ',';
    flags += box.checked() ? '1' : '0';
  }
  return flags;
}

std::string ElapsedTime(const Program& program, std::int64_t startTicks) {
  const auto seconds = static_cast<long long>((program.host.ticks() - startTicks) / 1000);
  char text[32];
  std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
  return text;
}

SelectedNames::SelectedNames(const ObjectSelection& selection)
    : hasBounds_(!selection.arrSelectedSource.empty() && !selection.arrSelectedTarget.empty()),
      names_(selection.arrSelectedSource.begin(), selection.arrSelectedSource.end()) {
  names_.insert(selection.arrSelectedTarget.begin(), selection.arrSelectedTarget.end());
}

bool ProceedWithThisObject(const std::string& strName, bool blnSelective, const SelectedNames& selected) {
  if (strName.empty()) return false;
  if (!blnSelective) return true;
  std::string strRest;
  return selected.hasBounds() && (selected.contains(strName) || selected.contains(GetLastWord(strName, strRest, ".")));
}

namespace {

// The major version, kept in the record.
std::int32_t versionOf(tServer& server) {
  if (server.VersionNum == 0) server.VersionNum = GetVersionNumber(server.Version);
  return server.VersionNum;
}

// The tables of that name in the database, whatever the panel filters by; empty when the query fails.
RecordsetPtr tablesNamed(Program& program, const tServer& server, const std::string& strDb,
                         const std::string& strName) {
  constexpr int noSide = -1;
  RecordsetPtr rs;
  GetAdoRS(program, server, adCmdText,
           BuildObjSQLString(program, objTables, program.settings.IgnoreSysObjects, strName, "", noSide), rs, strDb);
  return rs;
}

// Looks among the tables of rs for one in that schema; lngId stays 0 when there is none. False after a failed look-up.
bool findInSchema(Program& program, tServer& server, const std::string& strDb, Recordset& rs,
                  const std::string& strSchema, long& lngId) {
  if (rs.Bof() && rs.Eof()) return true;
  for (rs.MoveFirst(); !rs.Eof() && lngId == 0; rs.MoveNext()) {
    const long lngRowId = integerOf(rs.Fields(2).cell);
    std::string strRowSchema;
    if (!Db_GetObjSchemaById(program, server, objTables, strDb, lngRowId, strRowSchema)) return false;
    if (strRowSchema == strSchema) lngId = lngRowId;
  }
  return true;
}

}  // namespace

bool CompareAll_CheckForDuplicateNames(Program& program, long enmObjectType, tServer& tThisServer,
                                       const std::string& strName, const std::string& strThisDb, tServer& tOtherServer,
                                       const std::string& strOtherDb, long lngObjectId, long& lngOtherId,
                                       bool& blnProceed) {
  blnProceed = true;
  lngOtherId = 0;
  return trap(program, inModCompareAll, "CompareAll_CheckForDuplicateNames", true, [&] {
    if (enmObjectType != objTables) return true;
    if (versionOf(tThisServer) < 9 || versionOf(tOtherServer) < 9) return true;
    std::string strRest, strSchema;
    const std::string strBare = GetLastWord(strName, strRest, ".");
    if (!Db_GetObjSchemaById(program, tThisServer, enmObjectType, strThisDb, lngObjectId, strSchema)) return false;
    const RecordsetPtr rs = tablesNamed(program, tOtherServer, strOtherDb, strBare);
    if (rs && !findInSchema(program, tOtherServer, strOtherDb, *rs, strSchema, lngOtherId)) return false;
    blnProceed = lngOtherId != 0;
    return true;
  });
}

NamesInRecordset::NamesInRecordset(const RecordsetPtr& rs) {
  if (!hasRecords(rs)) return;
  for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) names_.insert(lowerCase(rs->Fields(0).Text()));
}

bool NamesInRecordset::contains(const std::string& strName) const { return names_.contains(lowerCase(strName)); }

bool ObjectExistsInRecordset(const NamesInRecordset& names, const std::string& strName) {
  return names.contains(strName);
}

bool RunPulse::goOn(bool blnAlways) {
  const std::int64_t now = program_.host.ticks();
  if (blnAlways || lastTicks_ < 0 || now - lastTicks_ >= pulseMilliseconds) {
    lastTicks_ = now;
    controls_.lblTime.setText(ElapsedTime(program_, controls_.startTicks));
    program_.host.doEvents();
  }
  return !program_.state<modCompareAllState>().gblnCancelCompare;
}

namespace {

bool openConnections(CompareAllRun& run) {
  for (int side = 0; side < 2; ++side) {
    if (ADO_Connection_Open(run.program, run.arrConnections[static_cast<std::size_t>(side)], run.server(side),
                            run.database(side)))
      continue;
    const std::string strSide = side == 0 ? "Source" : "Target";
    run.program.host.messageBox("Cannot connect to " + strSide + " database - aborting.", Icon::Warning);
    return false;
  }
  return true;
}

bool compareTypes(CompareAllRun& run) {
  std::size_t done = 0;
  for (std::size_t index = 0; index < TypesInUse(run.program); ++index) {
    if (!run.frm.chkObjType[index].checked()) continue;
    const long lngType = compareAllTypes[index];
    Label& label = run.frm.lblComparing[done++];
    label.setText("Comparing " + GetObjectTypeName(lngType, false) + "...");
    label.setVisible(true);
    if (!CompareAllSection(run, lngType).compare()) return false;
    label.setText(label.text() + " Finished");
  }
  return true;
}

bool compareAll(CompareAllRun& run, std::string& strTypesFlags) {
  if (!openConnections(run)) return false;
  ShowRunProgress(run);
  run.report.begin(run.input, RunDatabaseNames(run), BuildSchemaFilteringString(run.program));
  if (!compareTypes(run)) return false;
  run.program.report.gstrReportText = run.report.finish(ElapsedTime(run.program, run.frm.startTicks));
  strTypesFlags = FlagsOfBoxes(run.frm);
  return true;
}

}  // namespace

bool CompareAll_Structure(Program& program, CompareAllControls& frmOwner, std::string& strTypesFlags,
                          const CompareAllInput& input) {
  program.state<modCompareAllState>() = {};
  strTypesFlags.clear();
  const auto heldState = program.data.holdState();
  CompareAllRun run(program, frmOwner, input);
  const CompareAllRunEnd end(run);
  return trap(program, inModCompareAll, "CompareAll_Structure", false, [&] { return compareAll(run, strTypesFlags); });
}

}  // namespace qrel
