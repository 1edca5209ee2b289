// The main window's checks, run when an action starts, and what is selected on a side.
#include "app/mdlMain.h"
#include "app/modStrings.h"
#include "app/trap.h"
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "db/modPanels.h"
#include "ui/frmMain.h"

namespace qrel {

void frmMain::GetNamesOfSelServerDbAndObject(int Index, std::string& strServer, std::string& strDb,
                                             std::string& strObject, long& lngObjId) const {
  strServer.clear();
  strDb.clear();
  strObject.clear();
  lngObjId = 0;
  if (Index != 0 && Index != 1) return;
  const auto side = static_cast<std::size_t>(Index);
  strServer = program_.main.gtypSelServ[side].Name;
  strDb = SelectedDatabase(workspace, Index);
  const CheckList& list = workspace.pvlSqlObj[side];
  strObject = Workspace::selectedText(list);
  lngObjId = Workspace::selectedId(list);
}

bool frmMain::selectionIsEmpty(int Index) const {
  std::string strServer, strDb, strObject;
  long lngObjId = 0;
  GetNamesOfSelServerDbAndObject(Index, strServer, strDb, strObject, lngObjId);
  return strObject.empty() || lngObjId == 0;
}

bool frmMain::CanSearchForObject(int Index, CheckedObject& found) {
  found = {};
  return trap(program_, "frmMain", "CanSearchForObject", false, [&] {
    if (!CheckMdac(program_)) return false;
    const auto refuse = [&](const std::string& strText) {
      program_.host.messageBox("Cannot search for object - " + strText, Icon::Warning, "Cannot Search");
      return false;
    };
    const std::string strDb = SelectedDatabase(workspace, Index);
    if (strDb.empty()) return refuse("the list of databases is empty.");
    const long type = workspace.objectType();
    if (selectionIsEmpty(Index)) return refuse("the list of " + GetObjectTypeName(type, false) + " is empty.");
    found.strDb = strDb;
    found.enmType = type;
    return true;
  });
}

bool frmMain::refuseType(const std::string& strText, const std::string& strTitle) {
  program_.host.messageBox(strText, Icon::Information, strTitle);
  workspace.cmbType.setFocus();
  return false;
}

bool frmMain::tablesAreActive(const std::string& strTitle) {
  if (workspace.objectType() == objTables) return true;
  return refuseType(
      "This functionality is enabled only when Tables are selected as active objects.\r\n\r\n"
      "To set Tables as active objects set focus to Objects Type combo box (using mouse or by pressing key F6) and "
      "select first item from the list.",
      strTitle);
}

bool frmMain::CanViewAnalyzeData(long enmAction, int Index, CheckedObject& found) {
  found = {};
  return trap(program_, "frmMain", "CanViewAnalyzeData", false, [&] {
    if (!CheckMdac(program_)) return false;
    const std::string strWord = enmAction == 0 ? "view" : enmAction == 1 ? "analyze" : "";
    const std::string strTitle = std::string("Cannot ") + (enmAction == 0 ? "View" : enmAction == 1 ? "Analyze" : "");
    const auto tell = [&](const std::string& strText) {
      program_.host.messageBox(strText, Icon::Information, strTitle);
      return false;
    };
    if (strWord.empty()) tell("Function CanViewAnalyzeData - wrong parameter passed.");
    found.strDb = SelectedDatabase(workspace, Index);
    if (found.strDb.empty()) return tell("Cannot " + strWord + " - the list of databases is empty.");
    found.enmType = workspace.objectType();
    if (!tablesAreActive(strTitle)) return false;
    if (selectionIsEmpty(Index)) return tell("Cannot " + strWord + " - the list of tables is empty.");
    std::string strServer, strDb, strObject, strRest;
    GetNamesOfSelServerDbAndObject(Index, strServer, strDb, strObject, found.lngId);
    found.strTable = GetLastWord(strObject, strRest, ".");
    found.strExtended = GetExtendedObjectName(program_, program_.main.gtypSelServ[static_cast<std::size_t>(Index)],
                                              found.strDb, found.strTable, objTables, found.lngId);
    return true;
  });
}

bool frmMain::CanUseModules() {
  if (!CheckMdac(program_)) return false;
  const long type = workspace.objectType();
  if (type == objProcedures || type == objFunctions || type == objViews) return true;
  return refuseType(
      "This functionality is enabled only when procedures, functions or views are selected as active objects.\r\n\r\n"
      "To set active objects, set focus to Objects Type combo box (using mouse or by pressing key F6) and select the "
      "desired item from the list.",
      "");
}

bool frmMain::CanFilter(int Index, long penmFilterType, CheckedObject& found) {
  found = {};
  return trap(program_, "frmMain", "CanFilter", false, [&] {
    if (!CheckMdac(program_)) return false;
    const auto refuse = [&](const std::string& strText) {
      program_.host.messageBox(strText, Icon::Warning, "Cannot Filter");
      return false;
    };
    if (penmFilterType != filterSchema && penmFilterType != filterOwner)
      return refuse("Function CanFilter - wrong parameter passed (penmFilterType = " + std::to_string(penmFilterType) +
                    ").");
    const std::string strCannot =
        std::string("Cannot filter by ") + (penmFilterType == filterSchema ? "schema" : "owner") + " - ";
    const std::string strDb = SelectedDatabase(workspace, Index);
    if (strDb.empty()) return refuse(strCannot + "the list of databases is empty.");
    const long type = workspace.objectType();
    if (selectionIsEmpty(Index))
      return refuse(strCannot + "the list of " + GetObjectTypeName(type, false) + " is empty.");
    // A number that was never computed is computed here; one left over from the server before stands.
    tServer& server = program_.main.gtypSelServ[static_cast<std::size_t>(Index)];
    if (server.VersionNum == 0) server.VersionNum = GetVersionNumber(server.Version);
    if (penmFilterType == filterSchema && server.VersionNum < 9)
      return refuse("Cannot filter by schema - schemas were introduced in SQL Server 2005.");
    found.strDb = strDb;
    found.enmType = type;
    return true;
  });
}

}  // namespace qrel
