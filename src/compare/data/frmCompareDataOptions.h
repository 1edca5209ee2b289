// The options of a data comparison: how two tables are compared, by which keys, from which record on and with which
// columns.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "app/Program.h"
#include "compare/all/CompareAllControls.h"
#include "compare/data/dataCompSettings.h"
#include "db/mdlQueryCode.h"
#include "platform/controls/form.h"

namespace qrel {

// The two tables: 0 Source, 1 Target, of the selected servers. An id of 0: the table by its name.
struct DataCompTables {
  std::array<std::string, 2> arrServers, arrDbs, arrTables;
  std::array<long, 2> arrObjIds{};
};

class frmCompareDataOptions : public Form {
 public:
  explicit frmCompareDataOptions(Program& program);

  Control tbcContainer{"tbcContainer"};
  std::array<Label, 11> lblHelp = controlArray<Label, 11>("lblHelp");
  std::array<OptionButton, 2> optGen = controlArray<OptionButton, 2>("optGen");  // the index is the method
  // 0 to 2 Source's first to third, 3 to 5 Target's.
  std::array<Label, 6> lblSortKey = controlArray<Label, 6>("lblSortKey");
  std::array<ComboBox, 6> cmbGen = controlArray<ComboBox, 6>("cmbGen");
  // 0, 2, 4 Source's first to third; 1, 3, 5 Target's. So are the filter lines.
  std::array<Control, 2> fraPK = controlArray<Control, 2>("fraPK");
  std::array<Label, 6> lblPK = controlArray<Label, 6>("lblPK");
  std::array<ComboBox, 6> cmbPK = controlArray<ComboBox, 6>("cmbPK");
  std::array<ComboBox, 6> cmbFilt = controlArray<ComboBox, 6>("cmbFilt");
  std::array<ComboBox, 6> cmbOper = controlArray<ComboBox, 6>("cmbOper");
  std::array<TextBox, 6> txtFiltCrit = controlArray<TextBox, 6>("txtFiltCrit");
  std::array<Label, 2> lblOffset = controlArray<Label, 2>("lblOffset");
  std::array<TextBox, 2> txtOffset = controlArray<TextBox, 2>("txtOffset");
  std::array<CheckList, 2> pvlSqlObj = controlArray<CheckList, 2>("pvlSqlObj");  // a tick: the column is compared
  std::array<Button, 2> cmdSelectAll = controlArray<Button, 2>("cmdSelectAll");
  std::array<Button, 2> cmdDeselectAll = controlArray<Button, 2>("cmdDeselectAll");
  std::array<Button, 2> cmdValidate = controlArray<Button, 2>("cmdValidate");
  CheckBox chkDoNotShowDialog{"chkDoNotShowDialog"};
  Button cmdOK{"cmdOK"};
  Button cmdCancel{"cmdCancel"};

  // Modal. blnOK False: `settings` is cleared. Otherwise it holds the choices, the sort keys only without
  // blnDefaultOrder, and they are stored for both tables.
  void ShowUp(const DataCompTables& tables, tDataCompSettings& settings, bool& blnOK);

  void load() override;

  // False after a message when a column is selected more than once for the method's keys.
  bool FieldsSelectionIsValid();
  // lngSide 0 Source, 1 Target; any other is told in a box and passes. strDuplicate: the column that comes twice.
  void SelectedPKFieldsAreUnique(long lngSide, std::string& strDuplicate, bool& blnUnique);
  void SelectedSortFieldsAreUnique(long lngSide, std::string& strDuplicate, bool& blnUnique);
  // False after a message when the columns that remain can't be compared.
  bool ValidateIgnoredColumns(long lngChecked1, long lngChecked2, long lngIgnored1, long lngIgnored2,
                              const std::vector<std::string>& astrIgnored1,
                              const std::vector<std::string>& astrIgnored2);
  // Tests a side's key fields as far as the window can, and hands them to frmCompareDataValidation, which reads the
  // records.
  void ValidateFieldsSelection(long lngSide);
  // A column's line in its table's text, found without case; empty for any other text.
  std::string GetColumnString(const std::string& strColumn, long lngSide) const;

 private:
  using Lists = std::array<ComboBox, 6>;

  void registerControls();
  void setTexts();
  void wireEvents();
  // Loading, in this order (frmCompareDataOptions.cpp).
  void readStructure(std::size_t side);
  void fillLists();
  void showStored();
  void fillColumns(std::size_t side);
  // What a person's choices lead to.
  void methodChanged();
  void pickSortKey(std::size_t index);
  void pickField(Lists& lists, std::size_t index);
  bool refuseType(ComboBox& list, std::size_t side);
  bool refuseGap(ComboBox& list, const ComboBox& before, const Label& captionBefore, const Label& caption);
  bool filterLineIsOpen(std::size_t index);
  void columnTicked(std::size_t side);
  void tickAll(std::size_t side, bool ticked);
  void doNotShowChanged();
  void ok();
  bool saveIgnoredColumns();
  tDataCompSettings choices() const;
  // The checks (dataOptionsChecks.cpp).
  bool IsIgnoredColumnInUse(const std::string& strColumn, const std::vector<std::string>& astrIgnored,
                            const std::string& strLabel, std::size_t side);
  bool keysAreIgnored(std::size_t side, const std::vector<std::string>& astrIgnored);
  void handToValidation(std::size_t side);

  Program& program_;
  DataCompTables tables_;
  tDataCompSettings settings_;
  std::array<std::vector<tTableColumn>, 2> arrColumns_;
  bool blnColumnsChanged_ = false;
  bool accepted_ = false;
};

}  // namespace qrel
