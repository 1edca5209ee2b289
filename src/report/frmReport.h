// The window that shows a comparison's report: copy it, write it to a file, print it, save the comparison.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/controls/form.h"
#include "platform/controls/textPane.h"

namespace qrel {

class Program;

// What a report is about, as the caller tells it and as a saved process stores it; 1 is Source, 2 Target. The report's
// text itself comes from the program's gstrReportText.
struct tReportInput {
  std::string strTitle;  // the window's caption
  std::string strServer1, strServer2;
  std::string strDb1, strDb2;
  std::string strTable1, strTable2;
  std::int32_t lngCompType = 0;
  std::int32_t lngCompSubType = 0;
  std::int32_t lngCompSubSubType = 0;
  std::string strEncObjTypes;       // "1,0,0,0,0,0,0,0"
  std::int32_t lngCompMethod = -1;  // -1: none
  bool blnAuto = false;             // part of a replay: export and print by itself
  std::string strExportPath;        // the file of a replay; empty: none
  std::int32_t lngSelCountSource = 0, lngSelCountTarget = 0;
  std::vector<std::string> arrSource,
      arrTarget;          // names of the compared objects; count only while their count is above 0
  bool blnPrint = false;  // a replay prints
  std::int32_t lngObjId1 = 0, lngObjId2 = 0;
};

class frmReport : public Form {
 public:
  explicit frmReport(Program& program);

  TextPane txtReport{"txtReport"};  // read-only
  Button cmdCopyClip{"cmdCopyClip"};
  Button cmdCopyToFile{"cmdCopyToFile"};
  Button cmdPrint{"cmdPrint"};
  Button cmdSave{"cmdSave"};
  Button cmdExit{"cmdExit"};

  // Set before ShowUp where lines name something that can be acted with. A person chose a line of the report (a double
  // click, Enter, the context menu), and whether that does anything with it.
  std::function<void(std::size_t line)> lineChosen;
  std::function<bool(std::size_t line)> canChoose;

  // Shows the report text and waits until the window is closed. With blnAuto the first activation writes it to the
  // export path and prints it, and closes the window when the program is to close after the run.
  void ShowUp(tReportInput input);
  // The same for a text that is no comparison: there is nothing to save.
  void ShowUp_Generic(const std::string& strTitle);

  void load() override;
  void activate() override;
  // Removes all "*.tmp" files of the current folder.
  void unload() override;

 private:
  void showModal(bool blnCanSave);
  void openMenu();
  void chooseLine(std::size_t line);
  void copyToFile();
  void save();
  void PrintReport();
  void recordPrinting();

  Program& program_;
  tReportInput input_;
  bool mblnAuto = false;
  bool mblnSaved = false;  // saved in this window, and no export or print recorded since
  std::string mstrSavedName;
  bool mblnBusy = false;
  bool mblnActivated = false;
};

}  // namespace qrel
