#include "compare/structure/frmIgnoreColumnsAdd.h"

#include "app/trap.h"
#include "compare/structure/modIgnoreColumns.h"

namespace qrel {

frmIgnoreColumnsAdd::frmIgnoreColumnsAdd(Program& program) : Form("frmIgnoreColumnsAdd"), program_(program) {
  for (Control* control : std::initializer_list<Control*>{&lblGen0, &lblTableName, &lblSide, &pvlSqlObj0, &lblGen2,
                                                          &lblGen3, &cmdOK, &cmdCancel})
    add(*control);
  caption = "Ignore Columns";
  lblGen2.setText("Select All");
  lblGen2.onClick = [this] { tickAll(true); };
  lblGen3.setText("Deselect All");
  lblGen3.onClick = [this] { tickAll(false); };
  cmdOK.isDefault = true;
  cmdOK.onClick = [this] { ok(); };
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { close(); };
}

void frmIgnoreColumnsAdd::ShowUp(long enmList, long lngSide, const std::string& strServer,
                                 const std::string& strDatabase, const std::string& strTable, long lngTableId,
                                 bool& blnSaved, std::int32_t& lngIgnored) {
  menmMode_ = enmList;
  side_ = lngSide;
  server_ = strServer;
  database_ = strDatabase;
  table_ = strTable;
  tableId_ = lngTableId;
  saved_ = false;
  program_.host.showModal(*this);
  blnSaved = saved_;
  if (saved_) lngIgnored = ignored_;
}

void frmIgnoreColumnsAdd::load() {
  trap(program_, "frmIgnoreColumnsAdd", "Form_Load", [&] {
    setTexts();
    loadColumns();
  });
}

void frmIgnoreColumnsAdd::setTexts() {
  lblTableName.setText("Table: " + table_);
  lblSide.setText((side_ == 0 ? "Source: database " : "Target: database ") + database_ + ", server " + server_);
  const auto instruct = [this](const char* strKind, const char* strWork) {
    caption = std::string("Ignore Columns - ") + strKind;
    lblGen0.setText(std::string("Deselect columns which you want to be ignored during ") + strWork + ".");
  };
  switch (menmMode_) {
    case ignoredColsData:
      return instruct("Data Comparison", "data comparison");
    case ignoredColsStruct:
      return instruct("Structure Comparison", "structure comparison");
    case ignoredColsDataAnalysis:
      return instruct("Data Analysis", "data analysis");
    default:
      program_.host.messageBox("menmMode not set");
  }
}

void frmIgnoreColumnsAdd::loadColumns() {
  tTableStructure table;
  GetTableStructure(program_, program_.main.gtypSelServ.at(static_cast<std::size_t>(side_)),
                    {database_, table_, tableId_}, table);
  pvlSqlObj0.clear();
  for (const tTableColumn& column : table.arrColumns) pvlSqlObj0.add(column.strName);
  ListBox_DeselectIgnored(pvlSqlObj0, IgnoredColumnsOfTable(program_, menmMode_, server_, database_, table_));
}

void frmIgnoreColumnsAdd::tickAll(bool ticked) {
  pvlSqlObj0.setRedraw(false);
  for (std::size_t row = 0; row < pvlSqlObj0.count(); ++row) pvlSqlObj0.setTicked(row, ticked);
  pvlSqlObj0.setRedraw(true);
}

void frmIgnoreColumnsAdd::ok() {
  trap(program_, "frmIgnoreColumnsAdd", "cmdOK_Click", [&] {
    std::vector<std::string> arrIgnored;
    for (std::size_t row = 0; row < pvlSqlObj0.count(); ++row)
      if (!pvlSqlObj0.ticked(row)) arrIgnored.push_back(pvlSqlObj0.cell(row, 0));
    if (arrIgnored.size() == pvlSqlObj0.count()) {
      program_.host.messageBox("Please select at least one column or click Cancel button.");
      return;
    }
    ignored_ = static_cast<std::int32_t>(arrIgnored.size());
    if (!SaveIgnoredColumns(program_, menmMode_, GetFullObjectName(server_, database_, table_), arrIgnored, ignored_))
      return;
    saved_ = true;
    close();
  });
}

}  // namespace qrel
