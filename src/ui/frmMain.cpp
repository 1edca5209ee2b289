#include "ui/frmMain.h"

#include <utility>

#include "app/mdlMain.h"
#include "app/modTextPane.h"
#include "app/settings.h"
#include "app/trap.h"
#include "compare/all/CompareAllControls.h"
#include "compare/structure/modMarkDifferences.h"
#include "db/mdlObjects.h"
#include "db/mdlServers.h"
#include "db/modSchema.h"

namespace qrel {

namespace {

template <class Step, class... Args>
void run(const Step& step, Args... args) {
  if (step) step(args...);
}

std::array<Button, 2> buttonPair(const char* name) {
  const std::string text(name);
  return {Button(text + "(0)"), Button(text + "(1)")};
}

std::array<OptionButton, 7> typeButtons() {
  return {OptionButton("optType(0)"), OptionButton("optType(1)"), OptionButton("optType(2)"),
          OptionButton("optType(3)"), OptionButton("optType(4)"), OptionButton("optType(5)"),
          OptionButton("optType(6)")};
}

}  // namespace

frmMain::frmMain(Program& program, MainWindowSteps steps)
    : Form("frmMain"),
      optType(typeButtons()),
      cmdCopyClip(buttonPair("cmdCopyClip")),
      cmdCopyToFile(buttonPair("cmdCopyToFile")),
      cmdViewData(buttonPair("cmdViewData")),
      cmdAnalyzeData(buttonPair("cmdAnalyzeData")),
      cmdDbInfo(buttonPair("cmdDbInfo")),
      cmdFind(buttonPair("cmdFind")),
      srtFiltering(buttonPair("srtFiltering")),
      cmdFilterBySchema(buttonPair("cmdFilterBySchema")),
      cmdFilterByOwner(buttonPair("cmdFilterByOwner")),
      cmdNonExistent(buttonPair("cmdNonExistent")),
      lblMark(controlArray<Label, 5>("lblMark")),
      lblCount(controlArray<Label, 2>("lblCount")),
      txtFilter(controlArray<TextBox, 2>("txtFilter")),
      program_(program),
      steps_(std::move(steps)),
      compare_(program, *this),
      commands_(MainCommands()) {
  registerControls();
  setUpControls();
  wireEvents();
  wireCommands();
  wireTips();
  wireLists();
}

void frmMain::registerControls() {
  add(workspace.cmbType);
  for (OptionButton& button : optType) add(button);
  add(cmdConnect);
  add(cmdCompare);
  add(cmdCompareAll);
  add(cmdCompData);
  add(cmdDebugScript);
  add(cmdHelp);
  add(lblSource);
  add(lblTarget);
  const auto addPair = [this](auto& pair) {
    for (auto& control : pair) add(control);
  };
  addPair(workspace.cmbServer);
  addPair(workspace.pvlDb);
  addPair(workspace.cmbOwners);
  addPair(workspace.pvlSqlObj);
  addPair(workspace.txtTXProc);
  addPair(cmdCopyClip);
  addPair(cmdCopyToFile);
  addPair(cmdViewData);
  addPair(cmdAnalyzeData);
  addPair(cmdDbInfo);
  addPair(cmdFind);
  addPair(srtFiltering);
  addPair(cmdFilterBySchema);
  addPair(cmdFilterByOwner);
  addPair(cmdNonExistent);
  addPair(lblCount);
  addPair(txtFilter);
  addPair(lblMark);
  add(chkScrollTogether);
  add(chkAligned);
  add(lblStatus);
  add(barCommands);
}

void frmMain::setUpControls() {
  caption = programName;
  constexpr std::array<const char*, 7> types = {"Tables",   "Procedures",    "Functions",  "Views",
                                                "Triggers", "Relationships", "Constraints"};
  std::vector<OptionButton*> group;
  for (std::size_t i = 0; i < optType.size(); ++i) {
    optType[i].setText(types[i]);
    group.push_back(&optType[i]);
  }
  OptionButton::group(group);
  for (OptionButton& button : optType) button.shown = false;
  workspace.cmbType.setToolTip("Select object type (F6)");
  cmdConnect.setToolTip("Connect to the server (F5)");
  cmdCompare.setToolTip("Compare selected tables (F7)");
  cmdCompareAll.setToolTip("Compare all objects (F8)");
  cmdCompData.setToolTip("Compare data in selected tables  (F9)");
  cmdDebugScript.setToolTip("Generate Update Script");
  cmdDebugScript.setVisible(false);
  lblStatus.setVisible(false);
  cmdHelp.setToolTip("Display Help file (F1)");
  chkScrollTogether.setToolTip("Scroll both panes together when differences are marked");
  chkScrollTogether.setChecked(true);
  chkAligned.setToolTip("Lines that belong together stand side by side when differences are marked");
  chkAligned.setChecked(ReadFlag(program_, "AlignedView"));
  constexpr std::array<std::pair<std::int32_t, const char*>, 5> legend{{{markChanged, "Changed"},
                                                                        {markOnlyInSource, "Only in Source"},
                                                                        {markOnlyInTarget, "Only in Target"},
                                                                        {markUnchanged, "Not changed"},
                                                                        {markNone, "NA"}}};
  for (std::size_t i = 0; i < legend.size(); ++i) {
    lblMark[i].backColour = GetMarkColor(legend[i].first);
    lblMark[i].setText(legend[i].second);
  }
  lblSource.setText("Source");
  lblTarget.setText("Target");
  const std::string strCopy = "Copy selected object structure to the ";
  for (std::size_t side = 0; side < 2; ++side) {
    cmdCopyClip[side].setToolTip(strCopy + "clipboard (Alt + " + (side == 0 ? "O)" : "Y)"));
    cmdCopyToFile[side].setToolTip(strCopy + "file (Alt + " + (side == 0 ? "P)" : "I)"));
    cmdViewData[side].setToolTip(std::string("View data stored in selected table (Alt + ") + (side == 0 ? "V)" : "W)"));
    cmdDbInfo[side].setToolTip(std::string("Database information (F1") + (side == 0 ? "0)" : "1)"));
    cmdFind[side].setToolTip(std::string("Find an object in the ") + (side == 0 ? "Source" : "Target") + " database");
    txtFilter[side].placeholder = "Filter (Ctrl+L)";
    srtFiltering[side].setVisible(false);
    for (Button* button : {&cmdFilterByOwner[side], &cmdNonExistent[side]}) {
      button->setVisible(false);
      button->shown = false;
    }
    workspace.txtTXProc[side].readOnly = true;
    workspace.pvlSqlObj[side].columnWidths = {1, 0, 0};  // the date and the id aren't shown
  }
}

void frmMain::wireEvents() {
  workspace.cmbType.onClick = [this] { cmbType_Click(); };
  cmdConnect.onClick = [this] { cmdConnect_Click(); };
  cmdCompare.onClick = [this] { cmdCompare_Click(); };
  cmdCompareAll.onClick = [this] { cmdCompareAll_Click(); };
  cmdCompData.onClick = [this] { cmdCompData_Click(); };
  cmdHelp.onClick = [this] { ShowHelp(helpIndex); };
  cmdDebugScript.onClick = [this] { cmdDebugScript_Click(); };
  for (int i = 0; i < static_cast<int>(optType.size()); ++i)
    optType[static_cast<std::size_t>(i)].onClick = [this, i] { optType_Click(i); };
  for (int Index = 0; Index < 2; ++Index) {
    const auto side = static_cast<std::size_t>(Index);
    // Clearing a combo's choice is no choice.
    workspace.cmbServer[side].onClick = [this, side, Index] {
      if (workspace.cmbServer[side].selected() >= 0) cmbServer_Click(Index);
    };
    workspace.cmbOwners[side].onClick = [this, side, Index] {
      if (workspace.cmbOwners[side].selected() >= 0) cmbOwners_Click(Index);
    };
    cmdNonExistent[side].onClick = [this, Index] { cmdNonExistent_Click(Index); };
    workspace.pvlDb[side].onClick = [this, Index] { pvlDb_Click(Index); };
    workspace.pvlSqlObj[side].onClick = [this, side, Index] {
      pvlSqlObj_SelectChange(Index, workspace.pvlSqlObj[side].firstSelected());
    };
    workspace.pvlSqlObj[side].onRowEvent = [this, Index](int shift) { pvlSqlObj_RowEvent(Index, shift); };
    cmdDbInfo[side].onClick = [this, Index] { cmdDbInfo_Click(Index); };
    cmdFind[side].onClick = [this, Index] { cmdFind_Click(Index); };
    cmdCopyClip[side].onClick = [this, Index] { cmdCopyClip_Click(Index); };
    cmdCopyToFile[side].onClick = [this, Index] { cmdCopyToFile_Click(Index); };
    cmdViewData[side].onClick = [this, Index] { cmdViewData_Click(Index); };
    cmdAnalyzeData[side].onClick = [this, Index] { cmdAnalyzeData_Click(Index); };
    srtFiltering[side].onClick = [this, Index] { srtFiltering_Click(Index); };
    cmdFilterBySchema[side].onClick = [this, Index] { cmdFilterBySchema_Click(Index); };
    cmdFilterByOwner[side].onClick = [this, Index] { cmdFilterByOwner_Click(Index); };
  }
}

void frmMain::fillControls() {
  for (TextPane& pane : workspace.txtTXProc) InitializeTXTextControl(program_, pane);
  InitSelectedServers(program_);
  FillObjectTypes(program_, workspace.cmbType);
  refillServers();
  cmdConnect.setImage(imageIdle);
  cmdDebugScript.setVisible(program_.main.gblnDebugMode);
  helpFile = program_.main.gstrAppPath + "qrel.chm";
}

void frmMain::load() {
  trap(program_, "frmMain", "Form_Load", [&] {
    program_.host.setPointer(Pointer::Hourglass);
    const Screen screen = program_.host.screen();
    if (screen.width == 640 && screen.height == 480) run(steps_.ApplySmallScreenLayout);
    fillControls();
    if (ReadFlag(program_, "AutoConnect")) {
      if (!CheckMdac(program_)) return;
      InitializeDisplay(true);
    }
    showOwners();
    lblStatus.setVisible(true);
    InitializeMenus();
    for (int Index = 0; Index < 2; ++Index) ClearFilters(program_, Index);
    Filtering_UpdateDisplay(filterOwner);
    Filtering_UpdateDisplay(filterSchema);
  });
}

void frmMain::activate() {
  if (mblnActivated) return;
  trap(program_, "frmMain", "Form_Activate", [&] {
    mblnActivated = true;
    program_.host.setPointer(Pointer::Default);
    if (ReadNumber(program_, "ShowTipOfDay") == 1) ShowTip();
    run(steps_.SetSplitterHeight);
    if (!ServerInfoSet()) return;
    const std::int32_t lngId = program_.main.glngRunSavedCompId;
    if (lngId > 0 && CheckMdac(program_)) RunSavedProcess(lngId);
  });
}

void frmMain::unload() {
  lblStatus.setVisible(false);
  run(steps_.CloseOtherWindows);
}

}  // namespace qrel
