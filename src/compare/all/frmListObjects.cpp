#include "compare/all/frmListObjects.h"

#include "platform/text.h"

namespace qrel {

frmListObjects::frmListObjects(Program& program) : Form("frmListObjects"), program_(program) {
  for (Control* control :
       std::initializer_list<Control*>{&lblServer1, &lblServer2, &lblDb1, &lblDb2, &lblObjectType, &pvlSqlObj[0],
                                       &pvlSqlObj[1], &cmdSelectAll, &cmdDeselectAll, &cmdOK, &cmdCancel})
    add(*control);
  caption = "Select Objects";
  for (std::size_t side = 0; side < 2; ++side)
    pvlSqlObj[side].onTick = [this, side](std::size_t row) { tickNamesake(side, row); };
  cmdSelectAll.onClick = [this] { tickAll(true); };
  cmdDeselectAll.onClick = [this] { tickAll(false); };
  cmdOK.isDefault = true;
  cmdOK.onClick = [this] { ok(); };
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { close(); };
}

void frmListObjects::ShowUp(const std::string& strSourceDb, const std::string& strTargetDb, long enmObjectType,
                            bool& blnOk, bool& blnAllSelected, ObjectSelection& selection) {
  databases_ = {strSourceDb, strTargetDb};
  type_ = enmObjectType;
  ok_ = false;
  program_.host.showModal(*this);
  blnOk = ok_;
  if (!ok_) return;
  selection.arrSelectedSource = tickedNames(0);
  selection.arrSelectedTarget = tickedNames(1);
  selection.lngSelectedSource = static_cast<long>(selection.arrSelectedSource.size());
  selection.lngSelectedTarget = static_cast<long>(selection.arrSelectedTarget.size());
  blnAllSelected = selection.arrSelectedSource.size() == pvlSqlObj[0].count() &&
                   selection.arrSelectedTarget.size() == pvlSqlObj[1].count();
}

void frmListObjects::load() {
  const auto& servers = program_.main.gtypSelServ;
  lblServer1.setText(servers[0].Name);
  lblServer2.setText(servers[1].Name);
  lblDb1.setText(databases_[0]);
  lblDb2.setText(databases_[1]);
  lblObjectType.setText(upperCase(GetObjectTypeName(type_, false)));
  for (std::size_t side = 0; side < 2; ++side) loadList(side);
}

void frmListObjects::loadList(std::size_t side) {
  CheckList& list = pvlSqlObj[side];
  TextPane noPane("txtTXProc");
  LoadObjects(program_, program_.main.gtypSelServ[side], list, noPane, type_, databases_[side], false, "",
              static_cast<int>(side), true);
  rowsByName_[side].clear();
  for (std::size_t row = 0; row < list.count(); ++row) rowsByName_[side].try_emplace(list.cell(row, 0), row);
}

void frmListObjects::tickNamesake(std::size_t side, std::size_t row) {
  const std::size_t other = 1 - side;
  const auto namesake = rowsByName_[other].find(pvlSqlObj[side].cell(row, 0));
  if (namesake != rowsByName_[other].end()) pvlSqlObj[other].setTicked(namesake->second, pvlSqlObj[side].ticked(row));
}

void frmListObjects::tickAll(bool ticked) {
  for (CheckList& list : pvlSqlObj) {
    list.setRedraw(false);
    for (std::size_t row = 0; row < list.count(); ++row) list.setTicked(row, ticked);
    list.setRedraw(true);
  }
}

std::vector<std::string> frmListObjects::tickedNames(std::size_t side) const {
  std::vector<std::string> names;
  const CheckList& list = pvlSqlObj[side];
  for (std::size_t row = 0; row < list.count(); ++row)
    if (list.ticked(row)) names.push_back(list.cell(row, 0));
  return names;
}

void frmListObjects::ok() {
  const bool source = !tickedNames(0).empty();
  const bool target = !tickedNames(1).empty();
  if (source && target) {
    ok_ = true;
    close();
    return;
  }
  const std::string where = !source && !target ? "" : !source ? " in Source database" : " in Target database";
  program_.host.messageBox("Please select at least one object" + where + " or click Cancel button.");
}

}  // namespace qrel
