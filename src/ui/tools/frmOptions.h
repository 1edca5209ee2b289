// The options: the settings on pages that are chosen from a tree.
#pragma once

#include <array>

#include "app/Program.h"
#include "app/settings.h"
#include "compare/all/CompareAllControls.h"
#include "platform/controls/form.h"
#include "platform/controls/tree.h"
#include "ui/tools/optionsPages.h"

namespace qrel {

class frmOptions : public Form {
 public:
  explicit frmOptions(Program& program);

  Tree TreeViewIcons{"TreeViewIcons"};  // groups with their pages below them
  Label lblPage{"lblPage"};             // the page's title
  // One frame for each page, of which that of the chosen page is visible.
  std::array<Control, optionsPageCount> fraPage = controlArray<Control, optionsPageCount>("fraPage");
  Label lblHelp{"lblHelp"};  // the page's text; empty on pages that have none

  CheckBox chkAutoConnect{"chkAutoConnect"};
  TextBox txtMaxRows{"txtMaxRows"};
  CheckBox chkCaseSensitive{"chkCaseSensitive"};
  CheckBox chkDataCaseSensitive{"chkDataCaseSensitive"};
  CheckBox chkIgnoreWhitespaces{"chkIgnoreWhitespaces"};
  CheckBox chkIgnoreComments{"chkIgnoreComments"};
  CheckBox chkIgnoreIndexes{"chkIgnoreIndexes"};
  std::array<OptionButton, 2> optCurLoc = controlArray<OptionButton, 2>("optCurLoc");  // 0 server side, 1 client side
  TextBox txtCacheSize{"txtCacheSize"};
  CheckBox chkIgnoreSysObjects{"chkIgnoreSysObjects"};
  CheckBox chkDataComp{"chkDataComp"};
  CheckBox chkPreserveDbSel{"chkPreserveDbSel"};
  CheckBox chkIgnoreColSeq{"chkIgnoreColSeq"};
  CheckBox chkAutoSelTargetObj{"chkAutoSelTargetObj"};
  CheckBox chkAnalyzeConstraints{"chkAnalyzeConstraints"};
  CheckBox chkAutoSaveSchemas{"chkAutoSaveSchemas"};
  CheckBox chkFilterOfflineDbs{"chkFilterOfflineDbs"};
  TextBox txtTimeout{"txtTimeout"};             // seconds
  CheckBox chkPromptToSave{"chkPromptToSave"};  // shows PromptToSave, which nothing writes

  Button cmdSave{"cmdSave"};
  Button cmdCancel{"cmdCancel"};

  // Modal. True when the settings were saved.
  bool ShowUp();

  void load() override;
  // With unsaved changes it asks whether to save them.
  bool closeRequested() override;

  // Raises numbers that are too small to what they must be, with a message each, and accepts them.
  bool ValidateData();
  // Writes all settings in one change and their working copies after it. A timeout that is none is told and stays as it
  // was. False after a report, and nothing is changed, when they can't be kept.
  bool SaveData();

 private:
  // A check box and the flag behind it.
  struct Flag {
    CheckBox frmOptions::*box;
    const char* strSetting;
    const char* strCaption;
  };
  static const std::vector<Flag>& flags();
  struct Written {
    const Setting* setting;
    std::int32_t lngValue;
  };

  void registerControls();
  void wireEvents();
  void LoadData();
  void LoadCaptions();
  // Shows no page and fills the tree; all pages lie at one place.
  void PositionPages();
  void TreeViewIcons_NodeClick();
  // Whether a node is a page; a group has none of its own.
  bool IsSelectionValid(int node) const;
  void LoadPage(int node);
  void cmdSave_Click();
  std::vector<Written> valuesToSave();

  Program& program_;
  bool changed_ = false;
  bool saved_ = false;
  bool mblnBusy_ = false;
  std::vector<int> pageOfNode_;  // by node; -1 for a group
};

}  // namespace qrel
