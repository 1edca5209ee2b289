#include "ui/tools/frmAbout.h"

namespace qrel {

frmAbout::frmAbout(Program& program) : Form("frmAbout"), program_(program) {
  for (Control* control : std::initializer_list<Control*>{&lblTitle, &lblVersion, &lblDescription, &lblFolders, &cmdOK})
    add(*control);
  caption = std::string("About ") + programName;
  lblTitle.setText(programName);
  lblVersion.setText(std::string("Version ") + programVersion + ", build " + std::to_string(programBuild));
  lblDescription.setText("Compares two SQL Server databases and says what differs.");
  lblFolders.setText("Program: " + program.main.gstrAppPath + "\r\nSaved comparisons: " + program.main.gstrCompsIni);
  cmdOK.isDefault = cmdOK.isCancel = true;
  cmdOK.onClick = [this] { close(); };
}

void frmAbout::ShowUp() { program_.host.showModal(*this); }

}  // namespace qrel
