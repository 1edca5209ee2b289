#include "compare/data/frmCompareDataValidation.h"

#include <algorithm>

#include "app/modStrings.h"
#include "app/trap.h"
#include "compare/all/modCompareAll.h"
#include "compare/data/modCompareData.h"
#include "compare/data/readScopes.h"
#include "db/readFailures.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* inFrmCompareDataValidation = "frmCompareDataValidation";
constexpr const char* nullsLabel = "Checking if selected fields contain nulls...";
constexpr const char* uniqueLabel = "Checking if selected fields contain unique values...";
// A query of one record may take long: a person's Cancel is looked for by time, not by records.
constexpr std::int64_t millisecondsPerYield = 30;

std::string joined(const std::vector<std::string>& parts, const char* strBetween) {
  std::string text;
  for (const std::string& part : parts) text += (&part == parts.data() ? "" : strBetween) + part;
  return text;
}

}  // namespace

bool ColumnCanContainNulls(const std::string& strColDef) {
  constexpr std::size_t size = 8;
  return strColDef.size() <= size || upperCase(strColDef.substr(strColDef.size() - size)) != "NOT NULL";
}

bool ColumnIsIdentity(const std::string& strColDef) {
  return strColDef.size() > 9 && upperCase(strColDef).find("IDENTITY(") != std::string::npos;
}

frmCompareDataValidation::frmCompareDataValidation(Program& program)
    : Form(inFrmCompareDataValidation), program_(program) {
  caption = "Validate Fields Selection";
  for (Control* control : std::initializer_list<Control*>{&lblServer1, &lblDb1, &lblTable1, &lblRecsCount1, &lblCurRec,
                                                          &lblTime, &prbProgressBar, &cmdCancel, &cmdOK})
    add(*control);
  for (Label& label : lblInfo) add(label);
  for (Label& label : lblDebug) add(label);
  cmdCancel.setText("Cancel");
  cmdCancel.onClick = [this] {
    program_.state<modCompareDataState>().gblnStopComparison = true;
    close();
  };
  cmdOK.isDefault = true;
  cmdOK.setVisible(false);
}

void frmCompareDataValidation::ShowUp(const KeyValidation& fields) {
  fields_ = fields;
  if (fields.lngSide == 0 || fields.lngSide == 1)
    server_ = program_.main.gtypSelServ[static_cast<std::size_t>(fields.lngSide)];
  else
    program_.host.messageBox("Wrong source-target parameter passed: " + std::to_string(fields.lngSide), Icon::Warning);
  taken_.clear();
  for (std::size_t i = 0; i < fields.arrFields.size(); ++i)
    if (NamesKey(fields.arrFields[i])) taken_.push_back({fields.arrFields[i], fields.arrColDefs[i]});
  startTicks_ = program_.host.ticks();
  program_.state<KeyValidationState>().lngEnd = KeyValidationEnd::NotDone;
  program_.host.showModal(*this);
}

void frmCompareDataValidation::load() {
  lblServer1.setText(fields_.strServer);
  lblDb1.setText(fields_.strDb);
  lblTable1.setText(fields_.strTable);
  lblRecsCount1.setText(FormatThousands(fields_.lngRecs));
  prbProgressBar.setVisible(false);
  for (Label& label : lblInfo) label.setText("");
  lblCurRec.setText("1");
}

void frmCompareDataValidation::activate() {
  if (activated_) return;
  activated_ = true;
  program_.host.setPointer(Pointer::Default);
  {
    const auto heldState = program_.data.holdState();
    const StopScope stopping(program_, [this] { return stopped(); });
    const ReadingScope reading(program_, "table " + fields_.strTable);
    trap(program_, inFrmCompareDataValidation, "ValidateFields", [this] { ValidateFields(); });
  }
  close();
}

bool frmCompareDataValidation::closeRequested() {
  left_ = true;
  return true;
}

bool frmCompareDataValidation::stopped() const {
  return left_ || program_.state<modCompareDataState>().gblnStopComparison;
}

void frmCompareDataValidation::UpdateTimeElapsed() { lblTime.setText(ElapsedTime(program_, startTicks_)); }

void frmCompareDataValidation::showAndYield() {
  UpdateTimeElapsed();
  program_.host.doEvents();
}

std::string frmCompareDataValidation::hint(const std::string& strMessage) const {
  return strMessage +
         "\r\n\r\nPlease select different fields if possible, or change comparison method to 'Record by record' "
         "(although the 'Primary Key/Index' comparison method is preferred because it is usually faster).";
}

void frmCompareDataValidation::ValidateFields() {
  Host& host = program_.host;
  KeyValidationEnd& lngEnd = program_.state<KeyValidationState>().lngEnd;
  lblInfo[0].setText(nullsLabel);
  showAndYield();
  std::string strField, strDuplicates;
  bool blnNullsFound = false, blnDuplicates = false, blnOK = true;
  CheckForNulls(strField, blnNullsFound, blnOK);
  showAndYield();
  if (!blnOK) {
    if (!left_) host.messageBox("Cannot check for nulls - aborting validating fields.", Icon::Warning);
    return;
  }
  if (blnNullsFound) {
    lngEnd = KeyValidationEnd::Nulls;
    host.messageBox(
        hint("Field " + strField + " contains Nulls and shouldn't be used for Primary Key/Index comparison method."),
        Icon::Warning);
    return;
  }
  lblInfo[0].setText(std::string(nullsLabel) + " Done");
  lblInfo[1].setText(uniqueLabel);
  CheckForDuplications(strDuplicates, blnDuplicates, blnOK);
  if (!blnOK) return;
  if (blnDuplicates) {
    lngEnd = KeyValidationEnd::Duplicates;
    host.messageBox(hint("Selected fields (" + BuildColumnNamesString() + ") contain duplicate values (" +
                         strDuplicates + ") and shouldn't be used for Primary Key/Index comparison method."),
                    Icon::Warning);
    return;
  }
  if (stopped()) return;
  lblInfo[1].setText(std::string(uniqueLabel) + " Done");
  prbProgressBar.setValue(100);
  lngEnd = KeyValidationEnd::Valid;
  host.messageBox("Fields selection is valid - data stored in selected fields is unique and doesn't contain nulls.",
                  Icon::Information);
}

std::string frmCompareDataValidation::tableForNulls() const {
  // A listed name is a table's only in the default schema.
  const std::string strListed = AddSquareBrackets(fields_.strTable);
  const bool blnByName = fields_.strExtName == strListed || fields_.strExtName == "[dbo]." + strListed;
  return blnByName ? fields_.strTable : fields_.strExtName;
}

void frmCompareDataValidation::CheckForNulls(std::string& strField, bool& blnNullsFound, bool& blnOK) {
  blnNullsFound = false;
  blnOK = trap(program_, inFrmCompareDataValidation, "CheckForNulls", false, [&] {
    const ReadWatch reads(program_);
    for (std::size_t i = 0; i < fields_.arrFields.size() && NamesKey(fields_.arrFields[i]); ++i) {
      if (ColumnCanContainNulls(fields_.arrColDefs[i])) {
        blnNullsFound = NullExistsInColumn(program_, server_, fields_.strDb, tableForNulls(), fields_.arrFields[i]);
        // What couldn't be asked says nothing about the field.
        if (reads.failed()) return false;
      }
      if (blnNullsFound) {
        strField = fields_.arrFields[i];
        return true;
      }
      showAndYield();
    }
    return true;
  });
}

std::string frmCompareDataValidation::BuildColumnNamesString() const {
  std::vector<std::string> names;
  for (const Field& field : taken_) names.push_back(field.strName);
  return joined(names, ", ");
}

void frmCompareDataValidation::CheckForDuplications(std::string& strDuplicates, bool& blnDuplicates, bool& blnOK) {
  const PointerScope pointer(program_.host, Pointer::Hourglass);
  strDuplicates.clear();
  blnDuplicates = false;
  prbProgressBar.setValue(0);
  prbProgressBar.setVisible(true);
  blnOK = trap(program_, inFrmCompareDataValidation, "CheckForDuplications", false, [&] {
    const bool blnHasKey = NamesKey(fields_.arrFields[0]);
    if (fields_.lngRecs < 2 || !blnHasKey) return true;
    // An identity column tells the records apart whatever else is in the key.
    if (std::any_of(taken_.begin(), taken_.end(), [](const Field& field) { return ColumnIsIdentity(field.strColDef); }))
      return true;
    return scan(strDuplicates, blnDuplicates);
  });
}

// The result is blnOK of CheckForDuplications, here and below.
bool frmCompareDataValidation::scan(std::string& strDuplicates, bool& blnDuplicates) {
  ConnectionPtr connection;
  if (!ADO_Connection_Open(program_, connection, server_, fields_.strDb)) {
    program_.host.messageBox("Cannot connect to database " + fields_.strDb + " - aborting.", Icon::Warning);
    return false;
  }
  // Between the records the connection is asked for their number, so they are fetched whole.
  const CursorScope cursor(program_, adUseClient);
  SqlText strSql = "SELECT ";
  for (const Field& field : taken_)
    strSql << (&field == taken_.data() ? SqlText() : SqlText(", ")) << inBrackets(field.strName);
  strSql << " FROM " << asName(fields_.strExtName);
  RecordsetPtr rs;
  const bool blnFetched = GetAdoRS_Conn(program_, connection, server_, adCmdText, strSql, rs) != -1;
  program_.host.doEvents();
  bool blnOK = blnFetched;
  if (blnFetched && !stopped() && hasRecords(rs)) blnOK = scanRecords(connection, *rs, strDuplicates, blnDuplicates);
  rs.reset();
  connection->Close();
  return blnOK;
}

// The last record has no other behind it: who shares its values was found by then.
bool frmCompareDataValidation::scanRecords(const ConnectionPtr& connection, Recordset& rs, std::string& strDuplicates,
                                           bool& blnDuplicates) {
  rs.MoveFirst();
  for (std::int32_t lngRec = 1; lngRec < fields_.lngRecs && !rs.Eof(); ++lngRec, rs.MoveNext()) {
    std::vector<std::string> values;
    for (std::size_t i = 0; i < taken_.size(); ++i) {
      if (rs.Fields(i).IsNull()) throw RuntimeError(errorNumber::invalidUseOfNull, "Invalid use of Null");
      values.push_back(rs.Fields(i).Text());
    }
    showRecord(lngRec, values);
    if (stopped()) return true;
    if (!AreFieldsDuplicated(connection, values, blnDuplicates)) {
      if (!stopped())
        program_.host.messageBox("Database connection problem; cannot determine if the fields are unique.",
                                 Icon::Warning);
      return false;
    }
    if (blnDuplicates) {
      strDuplicates = joined(values, ",");
      return true;
    }
  }
  return true;
}

void frmCompareDataValidation::showRecord(std::int32_t lngRec, const std::vector<std::string>& values) {
  const std::int64_t now = program_.host.ticks();
  const bool blnDue = lngRec == 1 || now - yieldTicks_ >= millisecondsPerYield;
  if (blnDue) {
    yieldTicks_ = now;
    for (std::size_t i = 0; i < values.size(); ++i) lblDebug[i].setText(values[i]);
  }
  UpdateDisplay(program_, *this, lngRec, fields_.lngRecs, lblCurRec, prbProgressBar, blnDue);
}

// False when the query failed, which the query layer has told, or when it doesn't even find the record that it was made
// for: the values' texts aren't what the server compares then, and nothing is known of duplicates.
bool frmCompareDataValidation::AreFieldsDuplicated(const ConnectionPtr& connection,
                                                   const std::vector<std::string>& values, bool& blnDuplicates) {
  SqlText strSql = "SELECT COUNT(*) AS RecsCount FROM ";
  strSql << asName(fields_.strExtName);
  for (std::size_t i = 0; i < values.size(); ++i)
    strSql << (i == 0 ? SqlText(" WHERE ") : SqlText(" AND ")) << inBrackets(taken_[i].strName) << " = "
           << inQuotes(values[i]);
  RecordsetPtr rs;
  if (GetAdoRS_Conn(program_, connection, server_, adCmdText, strSql, rs) == -1 || !hasRecords(rs)) return false;
  const std::int64_t lngRecs = integerOf(rs->Fields(0).cell);
  blnDuplicates = lngRecs > 1;
  return lngRecs > 0;
}

}  // namespace qrel
