#include "process/frmSaveCompRun.h"

#include "app/trap.h"
#include "process/modSavedProcess.h"

namespace qrel {

namespace {
constexpr const char* inFrmSaveCompRun = "frmSaveCompRun";
constexpr int rightButton = 2;
}  // namespace

frmSaveCompRun::frmSaveCompRun(Program& program) : Form(inFrmSaveCompRun), program_(program) {
  for (Control* control : std::initializer_list<Control*>{&lstComps, &cmdOK, &cmdDelete, &cmdCancel}) add(*control);
  caption = "Run Saved Comparison Process";
  cmdOK.isDefault = true;
  cmdOK.onClick = [this] { trapAlone(program_, busy_, inFrmSaveCompRun, "cmdOK_Click", [&] { run(); }); };
  lstComps.onDoubleClick = cmdOK.onClick;
  lstComps.onMouseUp = [this](int button) {
    if (button != rightButton) return;
    trapAlone(program_, busy_, inFrmSaveCompRun, "lstComps_MouseUp", [&] { showProperties(); });
  };
  cmdDelete.onClick = [this] { trapAlone(program_, busy_, inFrmSaveCompRun, "cmdDelete_Click", [&] { remove(); }); };
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { trapAlone(program_, busy_, inFrmSaveCompRun, "cmdCancel_Click", [&] { close(); }); };
}

std::string frmSaveCompRun::ShowUp() {
  chosen_.clear();
  fill();
  reopen();
  program_.host.showModal(*this);
  return chosen_;
}

void frmSaveCompRun::fill() { FillSavedProcessList(program_, lstComps, names_); }

std::string frmSaveCompRun::selectedFor(const std::string& strDone) {
  const int row = lstComps.firstSelected();
  if (row >= 0) return names_[static_cast<std::size_t>(row)];
  program_.host.messageBox("Please select the comparison process to be " + strDone + ".");
  lstComps.setFocus();
  return {};
}

void frmSaveCompRun::run() {
  chosen_ = selectedFor("run");
  if (!chosen_.empty()) close();
}

void frmSaveCompRun::remove() {
  const std::string strName = selectedFor("deleted");
  if (strName.empty()) return;
  const Answer answer =
      program_.host.messageBox("Are you sure you want to remove comparison process '" + strName + "' ?", Icon::Question,
                               "Confirm Process Deletion", Buttons::YesNo);
  if (answer != Answer::Yes) return;
  trap(program_, inFrmSaveCompRun, "cmdDelete_Click", [&] { DeleteSavedProcess(program_, strName); });
  fill();
}

void frmSaveCompRun::showProperties() {
  const int row = lstComps.firstSelected();
  if (row >= 0) ShowSavedProcessProperties(program_, names_[static_cast<std::size_t>(row)]);
}

}  // namespace qrel
