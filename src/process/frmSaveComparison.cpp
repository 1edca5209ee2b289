#include "process/frmSaveComparison.h"

#include <algorithm>
#include <utility>

#include "app/modDates.h"
#include "app/trap.h"
#include "platform/text.h"

namespace qrel {

namespace {

// "Nov 24, 2026 - Customers"
std::string defaultName(const Program& program, const std::string& strSourceObject) {
  const LocalTime now = program.host.now();
  return LongToDateString(now.year * 10000 + now.month * 100 + now.day, false, false, false) + " - " + strSourceObject;
}

// Whether the processes' file, a line per name in the 8-bit code page, gives the name back as it is.
bool canBeKept(const std::string& strName) {
  const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
  return std::none_of(strName.begin(), strName.end(), isControl) && fromCodePage(toCodePage(strName)) == strName;
}

}  // namespace

std::string WhyNoProcessName(const std::string& strName) {
  if (strName.empty()) return "Please enter a name for comparison process.";
  const std::string strInvalid = "Invalid character(s) in comparison process' name.\r\n\r\n";
  if (strName.find_first_of("[]") != std::string::npos) return strInvalid + "Square brackets - [ ] - are not allowed.";
  if (!canBeKept(strName))
    return strInvalid +
           "Tabs, line breaks and characters outside of the Western code page (Windows-1252) are not allowed.";
  return {};
}

frmSaveComparison::frmSaveComparison(Program& program) : Form("frmSaveComparison"), program_(program) {
  for (Control* control :
       std::initializer_list<Control*>{&lstServers, &txtProcessName, &optPrint, &chkAutoClose, &cmdOK, &cmdCancel})
    add(*control);
  caption = "Save Comparison Process";
  lstServers.shown = false;
  cmdOK.isDefault = true;
  cmdOK.onClick = [this] { trap(program_, "frmSaveComparison", "cmdOK_Click", [&] { ok(); }); };
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { close(); };
}

void frmSaveComparison::ShowUp(tSavedProcess process, bool& blnSaved, std::string& strSavedName) {
  process_ = std::move(process);
  saved_ = false;
  FillSavedProcessList(program_, lstServers, names_);
  txtProcessName.setText(defaultName(program_, process_.strTable1));
  reopen();
  program_.host.showModal(*this);
  if (!saved_) return;
  blnSaved = true;
  strSavedName = process_.strName;
}

void frmSaveComparison::activate() { txtProcessName.setFocus(true); }

void frmSaveComparison::ok() {
  const std::string strName(trimBlanks(txtProcessName.text()));
  if (accepts(strName))
    save(strName);
  else
    txtProcessName.setFocus(true);
}

bool frmSaveComparison::accepts(const std::string& strName) {
  if (const std::string strProblem = WhyNoProcessName(strName); !strProblem.empty()) {
    program_.host.messageBox(strProblem);
    return false;
  }
  if (std::find(names_.begin(), names_.end(), strName) == names_.end()) return true;
  return program_.host.messageBox(
             "Comparison process with name " + strName + " already exists.\r\n\r\nDo you want to overwrite it?",
             Icon::Question, "Overwrite Comparison Process", Buttons::YesNo) == Answer::Yes;
}

void frmSaveComparison::save(const std::string& strName) {
  process_.strName = strName;
  process_.strExportFilePath.clear();
  process_.lngExportType = exportNone;
  process_.blnPrint = optPrint.checked();
  process_.blnAutoClose = chkAutoClose.checked();
  saved_ = SaveComparisonProcess(program_, process_);
  program_.host.messageBox(
      saved_ ? "Comparison process saved successfully.\r\n\r\nIf you want to include automatic exporting in your saved "
               "comparison process, please export the results now. The program will add exporting info to saved "
               "comparison process."
             : "Comparison process not saved.");
  close();
}

}  // namespace qrel
