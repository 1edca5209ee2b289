#include "ui/tools/frmGetDbInfo.h"

#include "app/modDates.h"
#include "app/settings.h"
#include "compare/all/modCompareAll.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "db/modSchema.h"
#include "platform/error.h"
#include "report/frmReport.h"

namespace qrel {

namespace {

constexpr std::array<long, 6> listedTypes = {objTables, objProcedures, objFunctions,
                                             objViews,  objTriggers,   objRelationships};
constexpr const char* twoLines = "\r\n\r\n";

std::string today(const Host& host) {
  const LocalTime now = host.now();
  return LongToDateString(now.year * 10000 + now.month * 100 + now.day, false, false, false);
}

std::string countSentence(std::int64_t count, const std::string& strPlural, const std::string& strDb) {
  const std::string strIn = " in " + strDb + " database.";
  if (count == 0) return "There are no " + strPlural + strIn;
  if (count == 1) return "There is 1 " + strPlural.substr(0, strPlural.size() - 1) + strIn;
  return "There are " + std::to_string(count) + " " + strPlural + strIn;
}

}  // namespace

frmGetDbInfo::frmGetDbInfo(Program& program) : Form("frmGetDbInfo"), program_(program) {
  for (Control* control :
       std::initializer_list<Control*>{&lblComparing, &lblObject, &lblTime, &txtTXProc, &tmrStatus, &cmdCancel})
    add(*control);
  for (Label& label : lblInfo) add(label);
  caption = "Database Information";
  txtTXProc.readOnly = true;
  cmdCancel.setText("Cancel");
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] {
    if (closeRequested()) close();
  };
  tmrStatus.onTick = [this] { lblTime.setText(ElapsedTime(program_, startTicks_)); };
}

void frmGetDbInfo::ShowUp(int Index, const std::string& strDb) {
  mlngIndex = Index;
  mstrDb = strDb;
  program_.host.showModal(*this);
}

void frmGetDbInfo::activate() {
  if (mblnActivated) return;
  mblnActivated = true;
  startTicks_ = program_.host.ticks();
  tmrStatus.setEnabled(true);
  try {
    GetDbInfo();
  } catch (const std::exception& error) {
    const ErrorInfo info = describeError(error);
    program_.host.messageBox("Error in Sub GetDbInfo, error nr " + std::to_string(info.number) + " (" +
                             info.description + ").");
  }
  tmrStatus.setEnabled(false);
  cmdCancel.setText("Close");
  if (mblnCancel) close();
}

bool frmGetDbInfo::closeRequested() {
  if (tmrStatus.enabled()) mblnCancel = true;
  return !tmrStatus.enabled();
}

std::string frmGetDbInfo::head() const {
  std::string text = today(program_.host) + twoLines + "Database: " + mstrDb + twoLines;
  auto& filters = program_.state<modSchemaState>();
  const auto side = static_cast<std::size_t>(mlngIndex);
  if (filters.gblnSchemaFilter[side])
    text += std::string("Applied filtering by ") + (side == 0 ? "Schema: " : "Target: ") +
            filters.gstrSchemaFilter[side] + twoLines;
  else if (filters.gblnOwnerFilter[side])
    text += "Applied filtering by Owner: " + filters.gstrOwnerFilter[side] + twoLines;
  return text;
}

std::string frmGetDbInfo::listOf(std::size_t typeIndex) {
  const long type = listedTypes[typeIndex];
  const std::string strPlural = GetObjectTypeName(type, false);
  tServer& server = program_.main.gtypSelServ[static_cast<std::size_t>(mlngIndex)];
  lblComparing.setText("Analyzing " + strPlural + "...");
  program_.host.doEvents();
  RecordsetPtr rs;
  const SqlText strSql = BuildObjSQLString(program_, type, program_.settings.IgnoreSysObjects, "", "", mlngIndex);
  if (GetAdoRS(program_, server, adCmdText, strSql, rs, mstrDb) == -1 || !rs) {
    // None were read, which doesn't mean that there are none.
    const std::string strUnread = "The " + strPlural + " of this database couldn't be read.";
    lblInfo[typeIndex].setText(strUnread);
    return strUnread + twoLines;
  }
  const std::int64_t count = rs->RecordCount();
  const std::string strLines = RecordsetToString(
      program_, [this] { return cancelled(); }, lblObject, rs, type, server, mstrDb, true);
  rs->Close();
  lblObject.setText(" ");
  lblComparing.setText(strPlural + " Finished");
  lblInfo[typeIndex].setText(countSentence(count, strPlural, mstrDb));
  if (count == 0) return "There are no " + strPlural + " in this database." + twoLines;
  return "List of " + strPlural + "\r\n" + strLines + "\r\n";
}

void frmGetDbInfo::GetDbInfo() {
  std::string text = head();
  for (std::size_t type = 0; type < listedTypes.size() && !cancelled(); ++type) text += listOf(type);
  tmrStatus.setEnabled(false);
  if (cancelled()) return;
  txtTXProc.setText(text);
  program_.report.gstrReportText = text;
  frmReport(program_).ShowUp_Generic("Database Information");
  program_.report.gstrReportText.clear();
}

}  // namespace qrel
