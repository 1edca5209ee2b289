// What the options window checks before it accepts the choices, and before key fields are tested.
#include <algorithm>

#include "app/trap.h"
#include "compare/data/frmCompareDataOptions.h"
#include "compare/data/frmCompareDataValidation.h"
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "platform/text.h"

namespace qrel {

namespace {

// The name of which there are two among the fields of one side; empty when there is none. Nothing is tested unless the
// first two are chosen.
std::string duplicateOf(const std::string& strFirst, const std::string& strSecond, const std::string& strThird,
                        const std::string& strEmpty) {
  if (strFirst == strEmpty || strSecond == strEmpty) return {};
  if (strFirst == strSecond) return strSecond;
  const bool third = strThird != strEmpty && (strSecond == strThird || strFirst == strThird);
  return third ? strThird : std::string();
}

bool isSide(Program& program, long lngSide) {
  if (lngSide == 0 || lngSide == 1) return true;
  program.host.messageBox("Wrong value of server index passed: " + std::to_string(lngSide), Icon::Warning);
  return false;
}

}  // namespace

void frmCompareDataOptions::SelectedPKFieldsAreUnique(long lngSide, std::string& strDuplicate, bool& blnUnique) {
  strDuplicate.clear();
  blnUnique = true;
  if (!isSide(program_, lngSide)) return;
  const auto first = static_cast<std::size_t>(lngSide);
  strDuplicate = duplicateOf(cmbPK[first].text(), cmbPK[first + 2].text(), cmbPK[first + 4].text(), noField);
  blnUnique = strDuplicate.empty();
}

void frmCompareDataOptions::SelectedSortFieldsAreUnique(long lngSide, std::string& strDuplicate, bool& blnUnique) {
  strDuplicate.clear();
  blnUnique = true;
  if (!isSide(program_, lngSide)) return;
  const std::size_t first = static_cast<std::size_t>(lngSide) * 3;
  strDuplicate = duplicateOf(cmbGen[first].text(), cmbGen[first + 1].text(), cmbGen[first + 2].text(), defaultOrder);
  blnUnique = strDuplicate.empty();
}

bool frmCompareDataOptions::FieldsSelectionIsValid() {
  for (const long lngSide : {0, 1}) {
    std::string strDuplicate;
    bool blnUnique = true;
    if (optGen[compRecordByRecord].chosen())
      SelectedSortFieldsAreUnique(lngSide, strDuplicate, blnUnique);
    else
      SelectedPKFieldsAreUnique(lngSide, strDuplicate, blnUnique);
    if (blnUnique) continue;
    program_.host.messageBox("Field " + strDuplicate + " in " + (lngSide == 0 ? "source" : "target") +
                                 " table is selected more than once - please make sure that the selected fields are "
                                 "unique.",
                             Icon::Information);
    return false;
  }
  return true;
}

bool frmCompareDataOptions::ValidateIgnoredColumns(long lngChecked1, long lngChecked2, long lngIgnored1,
                                                   long lngIgnored2, const std::vector<std::string>& astrIgnored1,
                                                   const std::vector<std::string>& astrIgnored2) {
  if (lngChecked1 < 1 || lngChecked2 < 1) {
    program_.host.messageBox(
        "All columns cannot be ignored.\r\n\r\nPlease select at least one column to be processed during the "
        "comparison.",
        Icon::Warning);
    return false;
  }
  if (lngIgnored1 < 1 && lngIgnored2 < 1) return true;
  if (lngChecked1 != lngChecked2) {
    program_.host.messageBox("Currently there are " + std::to_string(lngChecked1) +
                                 " columns selected for comparison in Source and " + std::to_string(lngChecked2) +
                                 " in Target.\r\n\r\nPlease make sure that the same number of columns to compare is "
                                 "selected for Source and Target table.",
                             Icon::Warning);
    return false;
  }
  if (lngIgnored1 > 0 && keysAreIgnored(0, astrIgnored1)) return false;
  return lngIgnored2 < 1 || !keysAreIgnored(1, astrIgnored2);
}

bool frmCompareDataOptions::keysAreIgnored(std::size_t side, const std::vector<std::string>& astrIgnored) {
  // Of the key fields only the first counts here.
  if (!optGen[compRecordByRecord].chosen())
    return IsIgnoredColumnInUse(cmbPK[side].text(), astrIgnored, "Primary", side);
  for (std::size_t i = side * 3; i < side * 3 + 3 && cmbGen[i].selected() > 0; ++i)
    if (IsIgnoredColumnInUse(cmbGen[i].text(), astrIgnored, lblSortKey[i].text(), side)) return true;
  return false;
}

bool frmCompareDataOptions::IsIgnoredColumnInUse(const std::string& strColumn,
                                                 const std::vector<std::string>& astrIgnored,
                                                 const std::string& strLabel, std::size_t side) {
  if (std::find(astrIgnored.begin(), astrIgnored.end(), strColumn) == astrIgnored.end()) return false;
  program_.host.messageBox("Column '" + strColumn +
                               "' is marked as the column to be ignored during comparison.\r\nThis column is also "
                               "marked as " +
                               strLabel + " column (" + (side == 0 ? "Source" : "Target") +
                               ") for comparison.\r\n\r\nPlease remove this column from the list of ignored columns.",
                           Icon::Warning);
  return true;
}

std::string frmCompareDataOptions::GetColumnString(const std::string& strColumn, long lngSide) const {
  if (strColumn == noField) return {};
  for (const tTableColumn& column : arrColumns_.at(static_cast<std::size_t>(lngSide)))
    if (equalNoCase(column.strName, strColumn)) return column.strLine;
  return {};
}

void frmCompareDataOptions::ValidateFieldsSelection(long lngSide) {
  Host& host = program_.host;
  program_.state<KeyValidationState>().lngEnd = KeyValidationEnd::NotDone;
  if (!optGen[compPrimaryKey].chosen()) {
    host.messageBox("You can validlate fields selection only when Primary Key/Index comparison method is used.");
    return;
  }
  std::string strDuplicate;
  bool blnUnique = true;
  SelectedPKFieldsAreUnique(lngSide, strDuplicate, blnUnique);
  if (!blnUnique) {
    host.messageBox("Field " + strDuplicate +
                    " is selected more than once - please make sure that the selected fields are unique.");
    return;
  }
  if (lngSide != 0 && lngSide != 1) {
    host.messageBox("Wrong value of server index passed: " + std::to_string(lngSide));
    return;
  }
  const auto side = static_cast<std::size_t>(lngSide);
  if (cmbPK[side].text() == noField) {
    host.messageBox("Please select Primary Field to be used by Primary Key/Index comparison method.",
                    Icon::Information);
    if (cmbPK[side].enabled()) cmbPK[side].setFocus();
    return;
  }
  handToValidation(side);
}

void frmCompareDataOptions::handToValidation(std::size_t side) {
  constexpr const char* title = "Validate Fields Selection";
  tServer& server = program_.main.gtypSelServ[side];
  KeyValidationEnd& lngEnd = program_.state<KeyValidationState>().lngEnd;
  KeyValidation fields;
  fields.strServer = tables_.arrServers[side];
  fields.strDb = tables_.arrDbs[side];
  fields.strTable = tables_.arrTables[side];
  fields.lngObjId = tables_.arrObjIds[side];
  fields.lngSide = static_cast<long>(side);
  fields.strExtName =
      GetExtendedObjectName(program_, server, fields.strDb, fields.strTable, objTables, fields.lngObjId);
  fields.lngRecs = GetNumberOfRecordsInTable(program_, server, fields.strExtName, fields.strDb);
  if (fields.lngRecs == -1) {
    program_.host.messageBox("Error while reading data from table " + fields.strTable + ".", Icon::Warning, title);
    return;
  }
  if (fields.lngRecs == 0) {
    lngEnd = KeyValidationEnd::NoData;
    program_.host.messageBox("Table " + fields.strTable + " doesn't contain any data.", Icon::Information, title);
    return;
  }
  for (std::size_t i = 0; i < 3; ++i) {
    fields.arrFields[i] = cmbPK[side + 2 * i].text();
    fields.arrColDefs[i] = GetColumnString(fields.arrFields[i], fields.lngSide);
  }
  frmCompareDataValidation(program_).ShowUp(fields);
}

}  // namespace qrel
