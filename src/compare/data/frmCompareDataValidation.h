// Tests whether the key fields of one table hold no Nulls and tell its records apart; the outcome is a message.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "app/Program.h"
#include "compare/all/CompareAllControls.h"
#include "compare/data/UpdateDisplay.h"
#include "db/mdlData.h"
#include "platform/controls/form.h"

namespace qrel {

// Key fields of one table that are to be tested.
struct KeyValidation {
  std::string strServer, strDb;
  std::string strExtName;  // the table as it stands in SQL
  std::string strTable;    // as it is listed
  long lngObjId = 0;
  std::int32_t lngRecs = 0;               // records of the table, at least 1
  std::array<std::string, 3> arrFields;   // noField or empty where there is none
  long lngSide = 0;                       // 0 Source, 1 Target
  std::array<std::string, 3> arrColDefs;  // the columns' lines in the table's text; empty for noField
};

enum class KeyValidationEnd : std::uint8_t {
  NotDone,  // stopped, or something couldn't be read or asked
  NoData,   // the table is empty
  Valid,
  Nulls,
  Duplicates,
};

struct KeyValidationState {
  KeyValidationEnd lngEnd = KeyValidationEnd::NotDone;  // of the last test
};

class frmCompareDataValidation : public Form, public ElapsedTimeWindow {
 public:
  explicit frmCompareDataValidation(Program& program);

  Label lblServer1{"lblServer1"}, lblDb1{"lblDb1"}, lblTable1{"lblTable1"}, lblRecsCount1{"lblRecsCount1"};
  Label lblCurRec{"lblCurRec"};
  Label lblTime{"lblTime"};                                            // elapsed, hh:mm:ss
  std::array<Label, 2> lblInfo = controlArray<Label, 2>("lblInfo");    // 0 Nulls, 1 unique values
  std::array<Label, 3> lblDebug = controlArray<Label, 3>("lblDebug");  // the values at work
  ProgressBar prbProgressBar{"prbProgressBar"};
  Button cmdCancel{"cmdCancel"};
  Button cmdOK{"cmdOK"};  // takes Enter and does nothing

  // Modal; tests at the first activation, shows the outcome in a box and closes. A side other than 0 and 1 is told in a
  // box and leaves the test without a server. Cancel sets gblnStopComparison, which neither this window nor the next
  // test clears: until the data of tables is compared or viewed again, a test ends silently at its first look at it.
  void ShowUp(const KeyValidation& fields);
  void ValidateFields();
  void UpdateTimeElapsed() override;
  const KeyValidation& fields() const { return fields_; }

  // The first field that holds Null. blnOK False: that couldn't be found out.
  void CheckForNulls(std::string& strField, bool& blnNullsFound, bool& blnOK);
  // strDuplicates: the values that come more than once. blnOK False: it couldn't be found out, which has been told.
  void CheckForDuplications(std::string& strDuplicates, bool& blnDuplicates, bool& blnOK);

  void load() override;
  void activate() override;
  // Esc and the close box end the test, but are no Cancel.
  bool closeRequested() override;

 private:
  // A field that takes part.
  struct Field {
    std::string strName;
    std::string strColDef;
  };

  bool stopped() const;
  std::string hint(const std::string& strMessage) const;
  void showAndYield();
  // The table's name for the query of Nulls.
  std::string tableForNulls() const;
  std::string BuildColumnNamesString() const;
  bool scan(std::string& strDuplicates, bool& blnDuplicates);
  bool scanRecords(const ConnectionPtr& connection, Recordset& rs, std::string& strDuplicates, bool& blnDuplicates);
  bool AreFieldsDuplicated(const ConnectionPtr& connection, const std::vector<std::string>& values,
                           bool& blnDuplicates);
  void showRecord(std::int32_t lngRec, const std::vector<std::string>& values);

  Program& program_;
  KeyValidation fields_;
  tServer server_;
  std::vector<Field> taken_;  // the fields that are chosen, in order
  std::int64_t startTicks_ = 0;
  std::int64_t yieldTicks_ = 0;
  bool activated_ = false;
  bool left_ = false;  // by Esc or the close box
};

// False when the column's line ends in NOT NULL.
bool ColumnCanContainNulls(const std::string& strColDef);
// Whether the column's line says that it is an identity column.
bool ColumnIsIdentity(const std::string& strColDef);

}  // namespace qrel
