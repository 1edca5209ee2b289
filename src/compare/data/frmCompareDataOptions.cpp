#include "compare/data/frmCompareDataOptions.h"

#include <algorithm>

#include "app/settings.h"
#include "app/trap.h"
#include "compare/structure/modIgnoreColumns.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* inFrmCompareDataOptions = "frmCompareDataOptions";
constexpr std::array levelNames = {"Primary", "Secondary", "Tertiary"};
constexpr std::array operators = {"=", "<", ">", "<=", ">=", "<>"};
constexpr std::array helpTexts = {
    "You can specify the comparison method to be used by the program.",
    "The program tries to match Source table data with Target table data by Primary Key, or other field specified by "
    "the user (note: that field should store unique data for each record).",
    "The program compares data record by record, in the original sequence of data as it is stored in the table or in "
    "the sequence specified by the user (see other options: 'Sorting Data' and 'Comparison Offset').",
    "With that method, one extra record inserted at the beginning of the table can 'spoil' the comparison process - "
    "extra record would 'push down' all following records, which in turn would cause that the different pairs of "
    "records would be compared than before insertion of extra record.",
    "To accomodate for this situation you can specify the offset for comparison process.",
    "This option applies only to 'record by record' comparison.",
    "Sometimes data in two compared tables is sorted differently, which is causing Qrel to mark all records as "
    "different.",
    "To ensure that compared data is sorted identically you can specify sort order to be used during comparison.",
    "Selected columns are processed during comparison.",
    "Deselect columns which you want to be ignored by the comparison process.",
    "You can specify the filter criteria to be applied before comparison"};

// Selects a row without raising the list's event.
void put(ComboBox& list, int row) {
  const std::string tag = std::exchange(list.tag, "OFF");
  list.select(row);
  list.tag = tag;
}

// The row of exactly that text; -1 when there is none.
int rowOf(const ComboBox& list, const std::string& strText) {
  for (std::size_t row = 0; row < list.count(); ++row)
    if (list.row(row) == strText) return static_cast<int>(row);
  return -1;
}

void putText(ComboBox& list, const std::string& strText) {
  const int row = strText.empty() ? -1 : rowOf(list, strText);
  if (row >= 0) put(list, row);
}

// A sort key list stands beyond "Default Order".
std::string chosenColumn(const ComboBox& list) { return list.selected() > 0 ? list.text() : std::string(); }

// The lists that are cleared when a key or filter list goes back to its first entry.
std::vector<std::size_t> fieldsAfter(std::size_t index) {
  switch (index) {
    case 0:
      return {2, 4, 3, 5};
    case 1:
      return {3, 5};
    case 2:
      return {4, 5};
    case 3:
      return {5};
    default:
      return {};
  }
}

}  // namespace

frmCompareDataOptions::frmCompareDataOptions(Program& program) : Form(inFrmCompareDataOptions), program_(program) {
  caption = "Data Comparison Options";
  registerControls();
  setTexts();
  wireEvents();
}

void frmCompareDataOptions::registerControls() {
  const auto addAll = [this](auto&... arrays) {
    const auto addArray = [this](auto& array) {
      for (Control& control : array) add(control);
    };
    (addArray(arrays), ...);
  };
  add(tbcContainer);
  addAll(lblHelp, optGen, lblSortKey, cmbGen, fraPK, lblPK, cmbPK, cmbFilt, cmbOper, txtFiltCrit, lblOffset, txtOffset,
         pvlSqlObj, cmdSelectAll, cmdDeselectAll, cmdValidate);
  add(chkDoNotShowDialog);
  add(cmdOK);
  add(cmdCancel);
}

void frmCompareDataOptions::setTexts() {
  for (std::size_t i = 0; i < helpTexts.size(); ++i) lblHelp[i].setText(helpTexts[i]);
  optGen[compRecordByRecord].setText("Recod by record comparison");
  optGen[compPrimaryKey].setText("Primary Key/Index comparison");
  for (std::size_t i = 0; i < 6; ++i) {
    lblSortKey[i].setText(std::string(levelNames[i % 3]) + " Sort Key");
    lblPK[i].setText(std::string(levelNames[i / 2]) + " Field");
    cmbOper[i].setToolTip("Select operand to be applied to filter");
    txtFiltCrit[i].setToolTip("Enter filter criteria here");
  }
  for (std::size_t side = 0; side < 2; ++side) {
    lblOffset[side].setText("Start comparison from record");
    txtOffset[side].numeric = true;
    cmdSelectAll[side].setText("Select All");
    cmdDeselectAll[side].setText("Deselect All");
    cmdValidate[side].setText("Validate");
    cmdValidate[side].setToolTip("Check if selected fields store unique data and don't contain nulls");
  }
  chkDoNotShowDialog.setText("Do not show this dialog again");
}

void frmCompareDataOptions::wireEvents() {
  const auto on = [this](const char* strProcedure, auto&& body) {
    return [this, strProcedure, body](auto&&...) { trap(program_, inFrmCompareDataOptions, strProcedure, body); };
  };
  OptionButton::group({&optGen[0], &optGen[1]});
  for (OptionButton& option : optGen) option.onClick = on("optGen_Click", [this] { methodChanged(); });
  for (std::size_t i = 0; i < 6; ++i) {
    cmbGen[i].onClick = on("cmbGen_Click", [this, i] { pickSortKey(i); });
    cmbPK[i].onClick = on("cmbPK_Click", [this, i] { pickField(cmbPK, i); });
    cmbFilt[i].onClick = on("cmbFilt_Click", [this, i] { pickField(cmbFilt, i); });
    cmbOper[i].onClick = on("cmbOper_Click", [this, i] {
      if (!filterLineIsOpen(i)) put(cmbOper[i], 0);
    });
    txtFiltCrit[i].onChange = on("txtFiltCrit_Change", [this, i] {
      if (!filterLineIsOpen(i)) txtFiltCrit[i].setText("");
    });
  }
  for (std::size_t side = 0; side < 2; ++side) {
    pvlSqlObj[side].onTick = on("pvlSqlObj_Click", [this, side] { columnTicked(side); });
    cmdSelectAll[side].onClick = on("cmdSelectAll_Click", [this, side] { tickAll(side, true); });
    cmdDeselectAll[side].onClick = on("cmdDeselectAll_Click", [this, side] { tickAll(side, false); });
    cmdValidate[side].onClick =
        on("cmdValidate_Click", [this, side] { ValidateFieldsSelection(static_cast<long>(side)); });
  }
  chkDoNotShowDialog.onClick = on("chkDoNotShowDialog_Click", [this] { doNotShowChanged(); });
  cmdOK.isDefault = true;
  cmdOK.onClick = on("cmdOK_Click", [this] { ok(); });
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { close(); };
}

void frmCompareDataOptions::ShowUp(const DataCompTables& tables, tDataCompSettings& settings, bool& blnOK) {
  tables_ = tables;
  settings_ = {};
  accepted_ = false;
  program_.host.showModal(*this);
  blnOK = accepted_;
  settings = settings_;
}

void frmCompareDataOptions::load() {
  trap(program_, inFrmCompareDataOptions, "Form_Load", [&] {
    for (const std::size_t side : {0, 1}) readStructure(side);
    fillLists();
    showStored();
    methodChanged();
    chkDoNotShowDialog.setChecked(!ReadFlag(program_, "ShowDataCompOpt"));
    for (const std::size_t side : {0, 1}) fillColumns(side);
    blnColumnsChanged_ = false;
  });
}

void frmCompareDataOptions::readStructure(std::size_t side) {
  tTableStructure table;
  try {
    ReadTableStructure(program_, program_.main.gtypSelServ[side],
                       {tables_.arrDbs[side], tables_.arrTables[side], tables_.arrObjIds[side]}, table);
  } catch (const std::exception& error) {
    const ErrorInfo info = describeError(error);
    program_.host.messageBox("Error occured while attempting to load structure of table.\r\n\r\nError " +
                                 std::to_string(info.number) + " (" + info.description + ").",
                             Icon::Warning);
  }
  arrColumns_[side] = std::move(table.arrColumns);  // after a failure: what was read by then
}

void frmCompareDataOptions::fillLists() {
  const auto fill = [this](ComboBox& list, std::size_t side, const char* strFirst) {
    list.clear();
    list.add(strFirst);
    for (const tTableColumn& column : arrColumns_[side]) list.add(column.strName);
    put(list, 0);
  };
  for (std::size_t i = 0; i < 6; ++i) {
    fill(cmbGen[i], i / 3, defaultOrder);
    fill(cmbPK[i], i % 2, noField);
    fill(cmbFilt[i], i % 2, noField);
    cmbOper[i].clear();
    for (const char* strOperator : operators) cmbOper[i].add(strOperator);
    put(cmbOper[i], 0);
    txtFiltCrit[i].setText("");
  }
}

void frmCompareDataOptions::showStored() {
  std::int32_t lngMethod = compRecordByRecord;
  for (TextBox& box : txtOffset) box.setText("");
  for (const std::size_t side : {0, 1}) {
    tDataCompSide stored;
    ReadDataCompSettings(program_, side == 0, tables_.arrDbs[side], tables_.arrTables[side], stored, lngMethod);
    putText(cmbGen[side * 3], stored.strPrimarySort);
    putText(cmbGen[side * 3 + 1], stored.strSecondarySort);
    putText(cmbGen[side * 3 + 2], stored.strTertiarySort);
    putText(cmbPK[side], stored.strCompKey);
    putText(cmbPK[side + 2], stored.strSecondaryCompKey);
    putText(cmbPK[side + 4], stored.strTertiaryCompKey);
    if (stored.lngOffset > 1) txtOffset[side].setText(std::to_string(stored.lngOffset));
  }
  if (lngMethod == compRecordByRecord || lngMethod == compPrimaryKey)
    optGen[static_cast<std::size_t>(lngMethod)].choose();
}

void frmCompareDataOptions::fillColumns(std::size_t side) {
  CheckList& list = pvlSqlObj[side];
  list.clear();
  for (const tTableColumn& column : arrColumns_[side]) list.add(column.strName);
  std::vector<std::string> arrIgnored;
  GetIgnoredColumns(program_, ignoredColsData,
                    GetFullObjectName(tables_.arrServers[side], tables_.arrDbs[side], tables_.arrTables[side]),
                    arrIgnored);
  ListBox_DeselectIgnored(list, arrIgnored);
}

void frmCompareDataOptions::methodChanged() {
  const bool byKey = optGen[compPrimaryKey].chosen();
  for (ComboBox& list : cmbPK) list.setEnabled(byKey);
  for (Label& label : lblPK) label.setEnabled(byKey);
  for (Control& frame : fraPK) frame.setEnabled(byKey);
  for (Button& button : cmdValidate) button.setEnabled(byKey);
}

bool frmCompareDataOptions::refuseType(ComboBox& list, std::size_t side) {
  if (list.selected() < 1) return false;
  const std::string& strType = arrColumns_[side].at(static_cast<std::size_t>(list.selected()) - 1).strType;
  if (strType != "text" && strType != "ntext" && strType != "image") return false;
  program_.host.messageBox("The text, ntext, and image data types cannot be compared or sorted.", Icon::Warning);
  put(list, 0);
  return true;
}

bool frmCompareDataOptions::refuseGap(ComboBox& list, const ComboBox& before, const Label& captionBefore,
                                      const Label& captionHere) {
  if (list.selected() < 1 || before.selected() > 0) return false;
  program_.host.messageBox("Please specify " + captionBefore.text() + " before specifying " + captionHere.text() + ".",
                           Icon::Information);
  put(list, 0);
  return true;
}

void frmCompareDataOptions::pickSortKey(std::size_t index) {
  ComboBox& list = cmbGen[index];
  const std::size_t level = index % 3;
  refuseType(list, index / 3);
  if (level > 0) refuseGap(list, cmbGen[index - 1], lblSortKey[index - 1], lblSortKey[index]);
  if (list.selected() > 0) return;
  for (std::size_t after = 1; level + after < 3; ++after) put(cmbGen[index + after], 0);
}

void frmCompareDataOptions::pickField(Lists& lists, std::size_t index) {
  ComboBox& list = lists[index];
  refuseType(list, index % 2);
  if (index >= 2) refuseGap(list, lists[index - 2], lblPK[index - 2], lblPK[index]);
  if (list.selected() < 1)
    for (const std::size_t after : fieldsAfter(index)) put(lists[after], 0);
  if (index % 2 != 0) return;
  // The Target list of the level follows, under the same rules.
  ComboBox& target = lists[index + 1];
  const int row = rowOf(target, list.text());
  if (row >= 0 && row != target.selected()) target.select(row);
}

bool frmCompareDataOptions::filterLineIsOpen(std::size_t index) {
  if (cmbFilt[index].selected() > 0) return true;
  program_.host.messageBox(std::string("Please select ") + levelNames[index / 2] + " Field first", Icon::Information);
  return false;
}

void frmCompareDataOptions::columnTicked(std::size_t side) {
  blnColumnsChanged_ = true;
  const CheckList& list = pvlSqlObj[side];
  for (std::size_t row = 0; row < list.count(); ++row)
    if (list.ticked(row)) return;
  program_.host.messageBox("Please select at least one column.", Icon::Information);
}

void frmCompareDataOptions::tickAll(std::size_t side, bool ticked) {
  CheckList& list = pvlSqlObj[side];
  list.setRedraw(false);
  for (std::size_t row = 0; row < list.count(); ++row) list.setTicked(row, ticked);
  list.setRedraw(true);
  columnTicked(side);
}

void frmCompareDataOptions::doNotShowChanged() {
  const bool show = !chkDoNotShowDialog.checked();
  const bool saved = trap(program_, "frmCompareDataOptions", "chkDoNotShowDialog_Click", false, [&] {
    SaveSetting(program_, *findSetting("ShowDataCompOpt"), show ? 1 : 0);
    return true;
  });
  if (!saved) return;
  if (show) return;
  program_.host.messageBox(
      "This dialog screen will not be shown anymore.\r\n\r\nTo enable showing 'Data Comparison Options' screen please "
      "open the Options screen (by clicking menu item Tools -> Options...), select tab 'Data Comparison' and click on "
      "appropriate check box.",
      Icon::Information);
}

bool frmCompareDataOptions::saveIgnoredColumns() {
  std::array<std::vector<std::string>, 2> arrIgnored;
  std::array<long, 2> arrChecked{};
  for (const std::size_t side : {0, 1}) {
    const CheckList& list = pvlSqlObj[side];
    for (std::size_t row = 0; row < list.count(); ++row) {
      if (list.ticked(row))
        ++arrChecked[side];
      else
        arrIgnored[side].push_back(list.cell(row, 0));
    }
  }
  if (!ValidateIgnoredColumns(arrChecked[0], arrChecked[1], static_cast<long>(arrIgnored[0].size()),
                              static_cast<long>(arrIgnored[1].size()), arrIgnored[0], arrIgnored[1]))
    return false;
  std::vector<tIgnoredList> arrLists;
  for (const std::size_t side : {0, 1})
    arrLists.push_back(
        {GetFullObjectName(tables_.arrServers[side], tables_.arrDbs[side], tables_.arrTables[side]), arrIgnored[side]});
  return SaveIgnoredLists(program_, ignoredColsData, arrLists);
}

tDataCompSettings frmCompareDataOptions::choices() const {
  tDataCompSettings chosen;
  chosen.blnDefaultOrder =
      std::none_of(cmbGen.begin(), cmbGen.end(), [](const ComboBox& list) { return list.selected() > 0; });
  chosen.lngCompMethod = optGen[compRecordByRecord].chosen() ? compRecordByRecord : compPrimaryKey;
  for (const std::size_t side : {0, 1}) {
    tDataCompSide& choice = chosen.arrSides[side];
    choice.strPrimarySort = chosenColumn(cmbGen[side * 3]);
    if (!choice.strPrimarySort.empty()) choice.strSecondarySort = chosenColumn(cmbGen[side * 3 + 1]);
    if (!choice.strSecondarySort.empty()) choice.strTertiarySort = chosenColumn(cmbGen[side * 3 + 2]);
    choice.lngOffset = numericPrefix(txtOffset[side].text());
    choice.strCompKey = cmbPK[side].text();
    choice.strSecondaryCompKey = cmbPK[side + 2].text();
    choice.strTertiaryCompKey = cmbPK[side + 4].text();
  }
  return chosen;
}

void frmCompareDataOptions::ok() {
  if (!FieldsSelectionIsValid()) return;
  if (blnColumnsChanged_ && !saveIgnoredColumns()) return;
  {
    const PointerScope pointer(program_.host, Pointer::Hourglass);
    settings_ = choices();
    accepted_ = true;
    SaveDataCompSettings(program_, tables_.arrDbs, tables_.arrTables, settings_);
  }
  close();
}

}  // namespace qrel
