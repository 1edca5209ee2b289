#include "ui/tools/frmSearchForObject_Gen.h"

#include "app/modStrings.h"
#include "app/trap.h"
#include "db/mdlObjects.h"
#include "platform/text.h"

namespace qrel {

namespace {
constexpr const char* inSearch = "frmSearchForObject_Gen";
}

frmSearchForObject_Gen::frmSearchForObject_Gen(Program& program) : Form(inSearch), program_(program) {
  for (Control* control : std::initializer_list<Control*>{&lblServer1, &lblDb1, &lblFind, &lblHint, &cmbType, &txtFind,
                                                          &cmdFind, &pvlSqlObj, &txtTXProc, &cmdOK, &cmdCancel})
    add(*control);
  txtTXProc.shown = false;
  pvlSqlObj.columnWidths = {1, 0, 0};
  cmdFind.isDefault = true;
  cmdCancel.isCancel = true;
  cmbType.onClick = [this] { cmbType_Click(); };
  cmdFind.onClick = [this] { cmdFind_Click(); };
  cmdOK.onClick = [this] { cmdOK_Click(); };
  cmdCancel.onClick = [this] { close(); };
  pvlSqlObj.onDoubleClick = [this] { cmdOK_Click(); };
}

FoundObject frmSearchForObject_Gen::ShowUp(long enmType, int Index, const std::string& strDb) {
  menmType = enmType;
  mlngIndex = Index;
  mstrDb = strDb;
  found_ = {enmType, "", -1};
  program_.host.showModal(*this);
  return found_;
}

void frmSearchForObject_Gen::load() {
  trap(program_, inSearch, "Form_Load", [&] {
    caption = "Find Object";
    lblServer1.setText("Server: " + program_.main.gtypSelServ[static_cast<std::size_t>(mlngIndex)].Name);
    lblDb1.setText("Database: " + mstrDb);
    FillObjectTypes(program_, cmbType);
    cmbType.tag = "OFF";
    SelectObjectType(cmbType, menmType, mblnBusy, false);
    cmbType.tag.clear();
    showType();
    txtFind.setFocus();
  });
}

void frmSearchForObject_Gen::showType() {
  mstrName = GetObjectTypeName(menmType, true);
  mstrHint = "Type the first letters of the name of the " + mstrName +
             " you want to search for and click button 'Search' (or press Enter).";
  lblFind.setText("Find " + mstrName);
  lblHint.setText(mstrHint);
}

void frmSearchForObject_Gen::cmbType_Click() {
  if (cmbType.selected() < 0) return;
  menmType = cmbType.itemData(static_cast<std::size_t>(cmbType.selected()));
  pvlSqlObj.clear();  // the words stay those of the type that the window was opened with
}

void frmSearchForObject_Gen::cmdFind_Click() {
  if (!mblnActivated) return;
  trapAlone(program_, mblnBusy, inSearch, "cmdFind_Click", [&] {
    const std::string strText(trimBlanks(txtFind.text()));
    if (strText.empty()) {
      program_.host.messageBox(mstrHint + ".", Icon::Warning);
      txtFind.setFocus();
      return;
    }
    const std::string strPattern = strText + "%";
    SqlText strCondition = "LIKE ";
    LoadObjects(program_, program_.main.gtypSelServ[static_cast<std::size_t>(mlngIndex)], pvlSqlObj, txtTXProc,
                menmType, mstrDb, false, strCondition << inQuotes(strPattern), mlngIndex, mblnActivated);
  });
}

void frmSearchForObject_Gen::cmdOK_Click() {
  trapAlone(program_, mblnBusy, inSearch, "cmdOK_Click", [&] {
    const int row = pvlSqlObj.firstSelected();
    if (row < 0) {
      program_.host.messageBox("Please select the " + lowerCase(mstrName) + " you want to view.", Icon::Information,
                               "Cannot View");
      return;
    }
    std::string strRest;
    const auto at = static_cast<std::size_t>(row);
    found_ = {menmType, GetLastWord(pvlSqlObj.cell(at, 0), strRest, "."), pvlSqlObj.id(at)};
    close();
  });
}

}  // namespace qrel
