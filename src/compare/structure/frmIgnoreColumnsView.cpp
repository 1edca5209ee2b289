#include "compare/structure/frmIgnoreColumnsView.h"

#include "app/trap.h"
#include "compare/structure/modIgnoreColumns.h"
#include "platform/files.h"
#include "report/modCopyToFile.h"

namespace qrel {

namespace {
constexpr const char* inFrmIgnoreColumnsView = "frmIgnoreColumnsView";
}

frmIgnoreColumnsView::frmIgnoreColumnsView(Program& program) : Form(inFrmIgnoreColumnsView), program_(program) {
  for (Control* control : std::initializer_list<Control*>{&lblGen, &vsfGrid, &lblCount, &cmdCopyClip, &cmdCopyToFile,
                                                          &cmdSendToNotepad, &cmdExit})
    add(*control);
  vsfGrid.setColumnCount(4);
  std::size_t column = 0;
  for (const char* strHeading : {"Server", "Database", "Table", "Column"}) vsfGrid.setText(0, column++, strHeading);
  cmdCopyClip.onClick = [this] { copyToClipboard(); };
  cmdCopyToFile.onClick = [this] { copyToFile(); };
  cmdSendToNotepad.onClick = [this] { sendToNotepad(); };
  cmdExit.isCancel = true;
  cmdExit.onClick = [this] { close(); };
}

void frmIgnoreColumnsView::ShowUp(long enmList) {
  menmMode_ = enmList;
  const bool data = enmList == ignoredColsData;
  caption = data ? "Ignore Columns - Data Comparison" : "Ignore Columns - Structure Comparison";
  lblGen.setText(data ? "The columns listed below are ignored during data comparisons."
                      : "The columns listed below are ignored during structure comparisons.");
  program_.host.showModal(*this);
}

void frmIgnoreColumnsView::load() {
  std::vector<tIgnoredColumn> arrRecords;
  const std::int32_t lngCount = GetAllIgnoredColumns(program_, menmMode_, strListing_, arrRecords);
  ScreenWriteAllIgnoredCols(program_, vsfGrid, lblCount, arrRecords, lngCount);
}

void frmIgnoreColumnsView::copyToClipboard() {
  trap(program_, inFrmIgnoreColumnsView, "cmdCopyClip_Click", [&] {
    if (strListing_.empty())
      program_.host.messageBox("There is nothing to copy to the Clipboard.");
    else
      program_.host.setClipboardText(strListing_);
  });
}

void frmIgnoreColumnsView::copyToFile() {
  trap(program_, inFrmIgnoreColumnsView, "cmdCopyToFile_Click", [&] {
    std::string strPath;
    if (strListing_.empty())
      program_.host.messageBox("There is nothing to copy to file.");
    else
      CopyToFile(program_, strListing_, "Report", strPath, "");
  });
}

void frmIgnoreColumnsView::sendToNotepad() {
  trap(program_, inFrmIgnoreColumnsView, "cmdSendToNotepad_Click", [&] {
    const std::string strPath = program_.main.gstrDataPath + "qrel_ignored_columns.txt";
    files::writeAtomically(strPath, strListing_);
    if (!program_.host.openUrl(strPath))
      program_.host.messageBox("There is no program to open " + strPath + " with.", Icon::Warning);
  });
}

}  // namespace qrel
