// The main window: two panels with a server, a database, an object list and a text pane each, and one object type for
// both. Side 0 is Source, side 1 is Target everywhere; what a command reads of the panels is in `workspace`.
//
// Nothing is disabled by the state of the panels: each action checks its preconditions when it runs. Two guards keep
// events out while the window itself acts: a control's tag "OFF" (its own event is ignored) and workspace.mblnBusy.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "app/Program.h"
#include "app/Workspace.h"
#include "platform/controls/form.h"
#include "ui/commandTable.h"
#include "ui/mainCompare.h"
#include "ui/markedLines.h"

namespace qrel {

struct ObjectVerdict;
struct tSavedProcess;

// What the main window asks of its face. A step that isn't set does nothing.
struct MainWindowSteps {
  std::function<void()> ApplySmallScreenLayout;  // on a screen of 640 by 480 pixels
  std::function<void()> SetSplitterHeight;
  std::function<void()> CloseOtherWindows;
};

enum ConnectImage : int { imageConnected = 3, imageConnecting = 4, imageIdle = 5 };
enum HelpTopic : long { helpIndex = 10, helpSupport = 230 };
enum FilterType : long { filterSchema = 1, filterOwner = 2 };

// What a check has found selected; empty or 0 as far as it didn't get.
struct CheckedObject {
  std::string strDb;
  long enmType = 0;
  std::string strTable;  // without its schema
  long lngId = 0;
  std::string strExtended;  // as the program's own SQL names it
};

class frmMain : public Form {
 public:
  explicit frmMain(Program& program, MainWindowSteps steps = {});

  Workspace workspace;
  std::array<OptionButton, 7> optType;  // a second way to choose the type; no face shows them beside cmbType
  ImageButton cmdConnect{"cmdConnect"};
  Button cmdCompare{"cmdCompare"};
  Button cmdCompareAll{"cmdCompareAll"};
  Button cmdCompData{"cmdCompData"};
  Button cmdDebugScript{"cmdDebugScript"};  // visible in debug mode alone
  Button cmdHelp{"cmdHelp"};
  std::array<Button, 2> cmdCopyClip;
  std::array<Button, 2> cmdCopyToFile;
  std::array<Button, 2> cmdViewData;
  std::array<Button, 2> cmdAnalyzeData;
  std::array<Button, 2> cmdDbInfo;
  std::array<Button, 2> cmdFind;
  std::array<Button, 2> srtFiltering;  // visible while its panel is filtered; a click removes the filters
  std::array<Button, 2> cmdFilterBySchema;
  std::array<Button, 2> cmdFilterByOwner;  // never visible
  std::array<Button, 2> cmdNonExistent;    // never visible
  Label lblSource{"lblSource"};
  Label lblTarget{"lblTarget"};
  Label lblStatus{"lblStatus"};  // the status bar's pane: the tip of the control under the pointer or with the focus
  CheckBox chkScrollTogether{"chkScrollTogether"};  // both panes show the same place of two marked texts
  CheckBox chkAligned{"chkAligned"};  // two marked texts stand side by side line by line; kept between runs
  std::array<Label, 5> lblMark;       // what the colours of marked lines mean, each on its colour
  std::array<Label, 2> lblCount;      // how many objects a side's list has, and how many of them are shown
  std::array<TextBox, 2> txtFilter;   // only objects with this in their name are shown
  CommandBars barCommands{"barCommands"};

  bool mblnActivated = false;  // the first activation has been handled
  long mlngPopupPanel = 0;     // the context menu's panel; -1 once one has closed
  long mlngClickedPane = 0;    // the pane that scripts and references are asked for: 1 Source, 2 Target, 0 none
  std::string helpFile;

  // The window's life.
  void load() override;
  void activate() override;
  // A comparison that runs is stopped.
  bool closeRequested() override;
  void unload() override;

  // The commands (mainCommands.cpp).
  void InitializeMenus();
  // Empty but for the command that connects.
  std::string GetTooltipTextForMenuItem(long lngId) const;
  // What every menu ends in. Nothing happens before the first activation and while the window is busy; the window is
  // busy for the length of the command.
  void CommandBars_Execute(long lngId);
  // Runs the guard and the action of a command; an id without one does nothing.
  void ExecuteAction(long lngId);
  // A mouse button went up over pane Index; the right one (2) opens the context menu.
  void txtTXProc_MouseUp(int Index, int Button);
  void RefreshPopupPanel();
  // Scripts into an embedded server: from the menu, or files dropped on a panel, which then shows what was loaded
  // (Index -1: none does). mainLoad.cpp.
  void MenuLoadScripts(const std::vector<std::string>& paths, int Index);
  // The dialog for the table of the context menu's pane; both panes must show one.
  void MenuPopUpIgnoreColumns();
  void MenuListIgnoredColumns(long enmList);

  // The small tools (mainTools.cpp). The options, and what follows from those that were changed.
  void MenuToolsOptions();
  // The search for an object of a side's database; what was chosen is shown.
  void MenuToolsFindInDb(int Index);
  // Attaches a database file to the Source server and reloads both panels.
  void MenuToolsAttachDb();
  // What the selected database of a side holds.
  void cmdDbInfo_Click(int Index);
  void cmdFind_Click(int Index);
  void ShowTip();
  void ShowAbout();
  // Moves the pane of the open context menu to its first line that is marked as different.
  void VisualizeDifferences();
  // Opens the help at a topic.
  void ShowHelp(long topic);

  // Connecting and choosing (mainSelection.cpp).
  void cmdConnect_Click();
  // Clears and reloads both panels; without a server the dialog that adds one comes up instead. With pblnLoadMRUDb each
  // panel returns to the database it used last.
  void InitializeDisplay(bool pblnLoadMRUDb);
  // False when nothing can be connected to: see mdlServers.h. A server added in the dialog is shown at once.
  bool ServerInfoSet();
  // The commands that change the server list; after a change both panels go back to its first server.
  void MenuAddServer();
  void MenuRemoveServer();
  void cmbServer_Click(int Index);
  void pvlDb_Click(int Index);
  void cmbOwners_Click(int Index);
  void cmbType_Click();
  void optType_Click(int Index);
  // Lists the objects of a type, if it isn't the active one already; the busy flag stays as it is.
  void ShowObjectType(long type);
  // Reloads the object lists of the panels in the bit set `panels` (1 Source, 2 Target). The type comes from cmbType
  // (enmSource 10) or is that of optType(lngOptIndex) (enmSource 20). Nothing happens while the window is busy.
  void ObjectTypeChanged(long enmSource, long lngOptIndex, int panels);
  // A row of pvlSqlObj(Index) was chosen: its text is shown, and a Source object's namesake is selected in Target if
  // AutoSelTargetObj is set.
  void pvlSqlObj_SelectChange(int Index, int row);
  // A key or mouse event over a row; with Shift, Ctrl and Alt held (7) it tells what the list knows of the first
  // selected one.
  void pvlSqlObj_RowEvent(int Index, int shift);
  // The refresh commands: dead once a context menu has closed.
  void RefreshSourceTarget(int Index);
  // Reloads a panel's object list and returns to the object that was selected, if it is still there. Ends a busy state.
  void RefreshDisplayForPanel(int Index);

  // The checks (mainChecks.cpp). Each shows why not, and returns False.
  bool CanSearchForObject(int Index, CheckedObject& found);
  // enmAction 0: view, 1: analyze.
  bool CanViewAnalyzeData(long enmAction, int Index, CheckedObject& found);
  bool CanFilter(int Index, long penmFilterType, CheckedObject& found);
  // Procedures, functions or views must be the active type: for the script and reference commands.
  bool CanUseModules();
  // What is selected on a side: names are empty and the id is 0 for anything else than 0 and 1, and without a
  // selection.
  void GetNamesOfSelServerDbAndObject(int Index, std::string& strServer, std::string& strDb, std::string& strObject,
                                      long& lngObjId) const;

  // Finding one's way (mainMarks.cpp). The first, the next (1) or the previous (-1) marked block comes to the top of
  // both panes, seen from the lines that the carets are in; the status bar says which of how many it is.
  void ShowFirstMark();
  void MoveToMark(int step);
  // The pane that the pointer or the focus was in last asks for a text to search.
  void FindInPane();
  void FocusFilter();
  // Writes what the last whole-database run has found beside the listed objects of its types.
  void ShowObjectStates();
  // Selects an object of that run on the sides that have it, and compares the pair: its records after a run over data.
  void CompareObjectOfReport(const ObjectVerdict& verdict);

  // The filters (mainFilters.cpp).
  void cmdFilterBySchema_Click(int Index);
  void cmdFilterByOwner_Click(int Index);
  void srtFiltering_Click(int Index);
  // Shows which panels are filtered. penmFilterType selects the words of the tips: 1 schema, 2 owner.
  void Filtering_UpdateDisplay(long penmFilterType);

  // The comparisons (mainCompare.cpp). The buttons do nothing while the window is busy, and keep it busy;
  // for the selected pair its comparison does so.
  void cmdCompare_Click();
  void cmdCompareAll_Click();
  // One type; lngTypeIndex is its place in the order Tables, Procedures, Functions, Views, Triggers, Relationships,
  // Constraints, from 0.
  void CompStruct_BulkSel_SimpleDet_All(long lngTypeIndex, bool blnSelective, bool blnDetails);
  void CompareHighlightedSections();
  // The records of the two selected tables. Does nothing while the window is busy, and keeps it busy. With Shift held
  // the options are asked for even if that is switched off.
  void cmdCompData_Click();
  // Runs a saved process again; below 1 the person chooses it (replay.h).
  void RunSavedProcess(std::int32_t lngId);
  void RunProcess(const tSavedProcess& process);
  // The records of the two selected tables, for a person who sees a report of many.
  void CompareDataOfSelection();
  // The records of the tables that a person selects, and of all tables, in the databases of the panels.
  void MenuDataCompSelective();
  void DataCompareAll();
  void ShowColorSchema();
  // The text of a panel's pane.
  void cmdCopyClip_Click(int Index);
  void cmdCopyToFile_Click(int Index);
  // Puts the lines of two texts that were compared and differ side by side, if a person wants it (chkAligned): lines
  // that belong together on one height, under the options of the comparison. Marks and texts stay as they are.
  void AlignPanes();
  // Prints it as it is shown, with its colours, under strPrefix and the object's description. An empty pane is told
  // unless blnSilent is set.
  void PrintStructure(int Index, bool blnSilent, const std::string& strPrefix);

  // The records of the table that is selected on a side (mainData.cpp). The buttons do nothing while the window is
  // busy, and keep it busy.
  void cmdViewData_Click(int Index);
  void cmdAnalyzeData_Click(int Index);
  void MenuToolsDataAnalyzerTable(int Index);

  // Printing (mainPrint.cpp): the pane of the open context menu, both panes, and every pair of tables that differs.
  void MenuPopUpPrint();
  void MenuPopUpPrintSourceAndTarget();
  void CompareAndPrintAllTables();

  // Scripts and references (mainScripts.cpp). The CREATE statement of the clicked pane's object, in the report window.
  void MenuSqlCreate(int Index);
  void BuildSQLCreateStatement();
  // The words of a panel's text that name nothing in its database, in a box; a negative side is the clicked pane's.
  void cmdNonExistent_Click(int Index);
  void SearchRefToNonExistentObjects(long lngSide);
  // What would make the Target's table the Source's, in the report window. blnResult: see updateScript.h.
  void cmdDebugScript_Click();
  void Debug_GenerateUpdateScript(long enmObjectType, bool& blnResult);

 private:
  void registerControls();
  void wireEvents();
  void wireCommands();
  void wireTips();
  void wireLists();
  void showCount(std::size_t side);
  void showMark(std::size_t number);
  void showLoaded(const std::string& strServer, const std::string& strDb, int Index);
  void setUpControls();
  void fillControls();
  void clearPanel(std::size_t side);
  void refillServers();
  void clearPanelFilters(int Index);
  void showObjectTypeTips(long type);
  bool anyDatabaseIsSelected() const;
  void showOwners();
  void fillOwners();
  void refreshConnections();
  void offerObjectTypesAnew();
  void keepObjectsOfOwner(int Index, const std::string& strOwner);
  void followSelection();
  bool selectionIsEmpty(int Index) const;
  bool tablesAreActive(const std::string& strTitle);
  bool refuseType(const std::string& strText, const std::string& strTitle);
  void filterCommand(int Index, long penmFilterType);
  bool anyPaneHasText() const;
  std::vector<MenuItem> contextMenu() const;
  void scrollOtherPane(std::size_t side);
  void wireAlignment();
  std::string whyNoPrintRun() const;
  std::string paneText(int Index) const;
  bool databaseIsSelected(int Index);
  bool canScriptUpdate();

  Program& program_;
  MainWindowSteps steps_;
  MainCompare compare_;
  CommandTable commands_;
  bool filtering_ = false;          // a filter command is running
  std::size_t lastSide_ = 0;        // the panel that the pointer or the focus was in last
  std::vector<MarkedPlace> marks_;  // as last asked for
};

// Selects the row with exactly that text and raises the list's event. False, and no change, without such a row.
bool SelectRowByText(CheckList& list, const std::string& strText);
// Selects the row of that id and raises the list's event. False, and no change, without such a row.
bool SelectItemInPVListBoxById(CheckList& list, long lngId);
// The type of optType(lngOptIndex): 0 tables, 1 procedures, ... The last one, 6, gives 70, which is no type.
long OptionType(long lngOptIndex);

}  // namespace qrel
