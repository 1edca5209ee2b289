// The main window's scripts: CREATE statements, the update script, and the search for references to non-existent
// objects.
#include <array>

#include "app/mdlMain.h"
#include "app/trap.h"
#include "compare/script/modNonExistObjects.h"
#include "compare/script/modSql.h"
#include "compare/script/updateScript.h"
#include "db/mdlObjects.h"
#include "db/modPanels.h"
#include "db/readFailures.h"
#include "platform/text.h"
#include "report/frmReport.h"
#include "ui/flagScope.h"
#include "ui/frmMain.h"

namespace qrel {

namespace {

constexpr const char* updateScriptTitle = "Generate Update Script";

void showScript(Program& program, const std::string& strTitle, std::string strText) {
  program.report.gstrReportText = std::move(strText);
  frmReport(program).ShowUp_Generic(strTitle);
  program.report.gstrReportText.clear();
}

void tellNothingToScript(Program& program, const UpdateScript& script) {
  std::string strText = "There is nothing to script.";
  if (!script.arrNewIndexes.empty()) strText += "\r\n\r\nIndexes that are only in Source are left out:";
  for (const std::string& strIndex : script.arrNewIndexes) strText += "\r\n" + strIndex;
  program.host.messageBox(strText, Icon::Information, updateScriptTitle);
}

std::string referencesMessage(const std::string& strObject, const std::string& strType,
                              const std::vector<std::string>& arrRefs) {
  std::string strText = strType + " '" + strObject + "' contains following references to non-existent objects:\r\n";
  for (const std::string& strRef : arrRefs) strText += "\r\n" + strRef;
  return strText;
}

}  // namespace

std::string frmMain::paneText(int Index) const {
  if (Index != 0 && Index != 1) return {};
  return std::string(trimBlanks(workspace.txtTXProc[static_cast<std::size_t>(Index)].givenText()));
}

void frmMain::MenuSqlCreate(int Index) {
  mlngClickedPane = Index + 1;
  BuildSQLCreateStatement();
}

void frmMain::BuildSQLCreateStatement() {
  trap(program_, "frmMain", "BuildSQLCreateStatement", [&] {
    const int Index = static_cast<int>(mlngClickedPane) - 1;
    if (paneText(Index).empty()) {
      program_.host.messageBox("Cannot continue - there is no structure displayed for selected object.",
                               Icon::Information, "Cannot Continue");
      return;
    }
    tCreateStatement what;
    what.enmObjectType = workspace.objectType();
    GetNamesOfSelServerDbAndObject(Index, what.strServerName, what.strDatabase, what.strObject, what.lngObjectId);
    what.strDelimiter = ",";
    const ReadWatch reads(program_);
    std::string strDropStatement;
    std::string strStatement = GetSqlCreateStatement(
        program_, program_.main.gtypSelServ[static_cast<std::size_t>(Index)], what, strDropStatement);
    // Half an object isn't shown as if it were one.
    if (strStatement.empty() || reads.failed())
      program_.host.messageBox("Couldn't generate SQL CREATE statement.");
    else
      showScript(program_, "SQL CREATE Statement", std::move(strStatement));
    mlngClickedPane = 0;
  });
}

void frmMain::cmdNonExistent_Click(int Index) {
  if (workspace.mblnBusy) return;
  trap(program_, "frmMain", "cmdNonExistent_Click", [&] {
    const FlagScope busy(workspace.mblnBusy);
    SearchRefToNonExistentObjects(Index);
  });
}

bool frmMain::databaseIsSelected(int Index) {
  if (!SelectedDatabase(workspace, Index).empty()) return true;
  program_.host.messageBox("Please connect to the server first.", Icon::Warning);
  return false;
}

void frmMain::SearchRefToNonExistentObjects(long lngSide) {
  trap(program_, "frmMain", "SearchRefToNonExistentObjects", [&] {
    const int Index = static_cast<int>(lngSide < 0 ? mlngClickedPane - 1 : lngSide);
    if (!CanUseModules() || (Index != 0 && Index != 1) || !databaseIsSelected(Index)) return;
    const long enmType = workspace.objectType();
    const std::string strType = GetObjectTypeName(enmType, true);
    const std::string strText = paneText(Index);
    if (strText.empty()) {
      program_.host.messageBox("Cannot continue - there is no structure displayed for selected " + strType + ".",
                               Icon::Information, "Cannot Continue");
      return;
    }
    const PointerScope pointer(program_.host, Pointer::Hourglass);
    std::string strServer, strDb, strObject;
    long lngObjId = 0;
    GetNamesOfSelServerDbAndObject(Index, strServer, strDb, strObject, lngObjId);
    const tServer& server = program_.main.gtypSelServ[static_cast<std::size_t>(Index)];
    std::vector<TwoStr> arrObjects, arrColumns;
    long lngObjects = 0, lngColumns = 0, lngRefs = 0;
    if (!GetListOfAllObjects(program_, server, strDb, arrObjects, lngObjects, Index)) {
      program_.host.messageBox("Couldn't retrieve list of all objects.", Icon::Warning);
      return;
    }
    GetListOfAllColumns(program_, server, strDb, arrColumns, lngColumns);
    std::vector<std::string> arrRefs;
    const std::size_t lngReports = program_.state<ErrorReportsState>().lngShown;
    if (FindRefToNonExistentObjects(program_, enmType, strText, arrObjects, lngObjects, lngRefs, arrRefs))
      program_.host.messageBox(referencesMessage(strObject, strType, arrRefs));
    else if (program_.state<ErrorReportsState>().lngShown == lngReports)  // a text that wasn't searched has no verdict
      program_.host.messageBox(
          strType + "\r\n\r\n" + strObject + "\r\n\r\ndoesn't contain any references to non-existent objects.",
          Icon::Information);
  });
}

void frmMain::cmdDebugScript_Click() {
  if (workspace.mblnBusy) return;
  const FlagScope busy(workspace.mblnBusy);
  bool blnResult = false;
  Debug_GenerateUpdateScript(workspace.objectType(), blnResult);
}

bool frmMain::canScriptUpdate() {
  return CheckMdac(program_) && tablesAreActive(updateScriptTitle) && ServerInfoSet() && databaseIsSelected(0);
}

void frmMain::Debug_GenerateUpdateScript(long, bool& blnResult) {
  blnResult = false;
  trap(program_, "frmMain", "Debug_GenerateUpdateScript", [&] {
    if (!canScriptUpdate()) return;
    const std::string strSource = paneText(0), strTarget = paneText(1);
    if (strSource.empty() || strTarget.empty()) {
      program_.host.messageBox("Cannot continue - there is no structure displayed for selected object.",
                               Icon::Information, updateScriptTitle);
      return;
    }
    struct Selection {
      std::string strServer, strDb, strTable;
      long lngId = 0;
      bool operator==(const Selection&) const = default;
    };
    std::array<Selection, 2> chosen;
    for (int Index = 0; Index < 2; ++Index) {
      Selection& one = chosen[static_cast<std::size_t>(Index)];
      GetNamesOfSelServerDbAndObject(Index, one.strServer, one.strDb, one.strTable, one.lngId);
    }
    if (strSource == strTarget || chosen[0] == chosen[1]) {
      program_.host.messageBox("The selected tables are identical.", Icon::Information, updateScriptTitle);
      return;
    }
    auto& servers = program_.main.gtypSelServ;
    const UpdateScript script =
        BuildUpdateScript(program_, {tScriptTable{servers[0], chosen[0].strDb, chosen[0].strTable, chosen[0].lngId},
                                     tScriptTable{servers[1], chosen[1].strDb, chosen[1].strTable, chosen[1].lngId}});
    if (!script.blnRead) return;
    blnResult = script.blnResult;
    if (script.strScript.empty())
      tellNothingToScript(program_, script);
    else
      showScript(program_, updateScriptTitle, script.strScript);
  });
}

}  // namespace qrel
