#include "ui/tools/frmOptions.h"

#include <algorithm>
#include <optional>

#include "app/modRegistry.h"
#include "app/trap.h"
#include "platform/data/connection.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* inFrmOptions = "frmOptions";
constexpr std::int32_t leastRows = 10, leastCacheSize = 1;

// The number that a text begins with, thousands separators left out; the largest one where it is beyond 32 bits.
std::int32_t numberIn(const std::string& strText) {
  try {
    return numericPrefix(replaceAll(trimBlanks(strText), ",", ""));
  } catch (const RuntimeError&) {
    return INT32_MAX;
  }
}

// Seconds; nothing for a text that is no such number.
std::optional<std::int32_t> timeoutIn(const std::string& strText) {
  const std::string strDigits = replaceAll(trimBlanks(strText), ",", "");
  if (strDigits.empty() || !std::all_of(strDigits.begin(), strDigits.end(), isDigit)) return std::nullopt;
  try {
    return numericPrefix(strDigits);
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
}

}  // namespace

const std::vector<frmOptions::Flag>& frmOptions::flags() {
  using F = frmOptions;
  static const std::vector<Flag> table = {
      {&F::chkAutoConnect, "AutoConnect", "&Connect to the servers when the program starts"},
      {&F::chkCaseSensitive, "CaseSensitive", "&Case sensitive comparisons of structures"},
      {&F::chkDataCaseSensitive, "DataCaseSensitive", "&Case sensitive comparisons of data"},
      {&F::chkIgnoreWhitespaces, "IgnoreWhitespace", "&Ignore blanks, tabs and line ends"},
      {&F::chkIgnoreComments, "IgnoreComments", "&Ignore comments"},
      {&F::chkIgnoreIndexes, "IgnoreIndexes", "&Ignore indexes of tables"},
      {&F::chkIgnoreSysObjects, "IgnoreSysObjects", "&Ignore system objects"},
      {&F::chkDataComp, "ShowDataCompOpt", "&Display 'Data Comparison Options' before comparing data"},
      {&F::chkPreserveDbSel, "PreserveDbSel", "Select the &database that was used last"},
      {&F::chkIgnoreColSeq, "IgnoreColSeq", "&Ignore the order of columns"},
      {&F::chkAutoSelTargetObj, "AutoSelTargetObj", "Se&lecting an object in Source selects its namesake in Target"},
      {&F::chkAnalyzeConstraints, "AnalyzeConstraints", "&Treat Constraints as a separate object type"},
      {&F::chkAutoSaveSchemas, "AutoSaveSchemas", "Save the displayed schemas &automatically"},
      {&F::chkFilterOfflineDbs, "FilterOfflineDbs", "&Filter offline databases"},
  };
  return table;
}

frmOptions::frmOptions(Program& program) : Form(inFrmOptions), program_(program) {
  registerControls();
  wireEvents();
}

void frmOptions::registerControls() {
  for (Control* control : std::initializer_list<Control*>{&TreeViewIcons, &lblPage, &lblHelp}) add(*control);
  for (Control& page : fraPage) add(page);
  for (const Flag& flag : flags()) add(this->*flag.box);
  for (OptionButton& option : optCurLoc) add(option);
  for (Control* control :
       std::initializer_list<Control*>{&txtMaxRows, &txtCacheSize, &txtTimeout, &chkPromptToSave, &cmdSave, &cmdCancel})
    add(*control);
  OptionButton::group({&optCurLoc[0], &optCurLoc[1]});
  txtTimeout.numeric = true;
  chkPromptToSave.setEnabled(false);
  cmdSave.isDefault = true;
  cmdCancel.isCancel = true;
}

void frmOptions::wireEvents() {
  const auto noteChange = [this] { changed_ = true; };
  for (const Flag& flag : flags()) (this->*flag.box).onClick = noteChange;
  for (OptionButton& option : optCurLoc) option.onClick = noteChange;
  for (TextBox* box : {&txtMaxRows, &txtCacheSize, &txtTimeout}) box->onChange = noteChange;
  TreeViewIcons.onClick = [this] { TreeViewIcons_NodeClick(); };
  cmdSave.onClick = [this] { cmdSave_Click(); };
  cmdCancel.onClick = [this] {
    if (closeRequested()) close();
  };
}

bool frmOptions::ShowUp() {
  return trap(program_, inFrmOptions, "ShowUp", false, [&] {
    saved_ = false;
    program_.host.showModal(*this);
    return saved_;
  });
}

void frmOptions::load() {
  LoadData();
  LoadCaptions();
  PositionPages();
  changed_ = false;
}

void frmOptions::LoadData() {
  trap(program_, inFrmOptions, "LoadData", [&] {
    for (const Flag& flag : flags()) (this->*flag.box).setChecked(ReadFlag(program_, flag.strSetting));
    chkPromptToSave.setChecked(ReadFlag(program_, "PromptToSave"));
    optCurLoc[ReadFlag(program_, "CursorConnectionUseServer") ? 0 : 1].choose();
    const std::pair<TextBox*, const char*> numbers[] = {
        {&txtMaxRows, "MaxRowsInDiffTable"}, {&txtCacheSize, "CacheSize"}, {&txtTimeout, "Timeout"}};
    for (const auto& [box, strSetting] : numbers) box->setText(std::to_string(ReadNumber(program_, strSetting)));
  });
}

void frmOptions::LoadCaptions() {
  trap(program_, inFrmOptions, "LoadCaptions", [&] {
    caption = "Options";
    for (const Flag& flag : flags()) (this->*flag.box).setText(flag.strCaption);
    chkPromptToSave.setText("Prompt to save comparisons");
    chkPromptToSave.setToolTip("Kept as it is; nothing depends on it");
    optCurLoc[0].setText("S&erver side");
    optCurLoc[1].setText("C&lient side");
  });
}

void frmOptions::PositionPages() {
  trap(program_, inFrmOptions, "PositionPages", [&] {
    TreeViewIcons.tag = "OFF";
    TreeViewIcons.clear();
    pageOfNode_.clear();
    int group = Tree::none;
    for (std::size_t page = 0; page < optionsPageCount; ++page) {
      const OptionsPage& each = OptionsPages()[page];
      if (group == Tree::none || TreeViewIcons.text(group) != each.strGroup) {
        group = TreeViewIcons.add(Tree::none, each.strGroup);
        TreeViewIcons.setExpanded(group, true);
        pageOfNode_.push_back(-1);
      }
      TreeViewIcons.add(group, each.strTitle);
      pageOfNode_.push_back(static_cast<int>(page));
      fraPage[page].setVisible(false);
    }
    TreeViewIcons.tag.clear();
    TreeViewIcons.select(
        static_cast<int>(std::find_if(pageOfNode_.begin(), pageOfNode_.end(), [](int page) { return page >= 0; }) -
                         pageOfNode_.begin()));
  });
}

bool frmOptions::IsSelectionValid(int node) const {
  return node >= 0 && static_cast<std::size_t>(node) < pageOfNode_.size() &&
         pageOfNode_[static_cast<std::size_t>(node)] >= 0;
}

void frmOptions::TreeViewIcons_NodeClick() {
  trap(program_, inFrmOptions, "TreeViewIcons_NodeClick", [&] {
    const int node = TreeViewIcons.selected();
    if (IsSelectionValid(node)) LoadPage(node);
  });
}

void frmOptions::LoadPage(int node) {
  trap(program_, inFrmOptions, "LoadPage", [&] {
    const auto page = static_cast<std::size_t>(pageOfNode_.at(static_cast<std::size_t>(node)));
    for (std::size_t each = 0; each < fraPage.size(); ++each) fraPage[each].setVisible(each == page);
    lblPage.setText(OptionsPages()[page].strTitle);
    lblHelp.setText(OptionsPages()[page].strHelp);
  });
}

bool frmOptions::ValidateData() {
  return trap(program_, inFrmOptions, "ValidateData", false, [&] {
    const auto raise = [&](TextBox& box, std::int32_t lngLeast, const std::string& strWhat, Icon icon) {
      if (numberIn(box.text()) >= lngLeast) return;
      const std::string strLeast = std::to_string(lngLeast);
      program_.host.messageBox(strWhat + " cannot be smaller than " + strLeast +
                                   ".\r\n\r\nProgram will reset this value to " + strLeast + ".",
                               icon);
      box.setText(strLeast);
    };
    raise(txtMaxRows, leastRows, "Maximum number of rows displayed in differences table", Icon::Warning);
    raise(txtCacheSize, leastCacheSize, "Cache Size", Icon::None);
    return true;
  });
}

std::vector<frmOptions::Written> frmOptions::valuesToSave() {
  std::vector<Written> values;
  const auto put = [&](const char* strSetting, std::int32_t lngValue) {
    values.push_back({findSetting(strSetting), lngValue});
  };
  // Numbers stand between the flags in the order of saving.
  for (const Flag& flag : flags()) {
    put(flag.strSetting, (this->*flag.box).checked() ? 1 : 0);
    if (flag.box == &frmOptions::chkAutoConnect) put("MaxRowsInDiffTable", numberIn(txtMaxRows.text()));
    if (flag.box != &frmOptions::chkIgnoreIndexes) continue;
    put("CursorConnectionUseServer", optCurLoc[0].chosen() ? 1 : 0);
    put("CacheSize", numberIn(txtCacheSize.text()));
  }
  if (const auto timeout = timeoutIn(txtTimeout.text()))
    put("Timeout", *timeout);
  else
    program_.host.messageBox("Timeout value is not valid and will be not changed.", Icon::Warning, "Changes Not Saved");
  return values;
}

bool frmOptions::SaveData() {
  return trap(program_, inFrmOptions, "SaveData", false, [&] {
    const std::vector<Written> values = valuesToSave();
    KeyStore::Change change(program_.store);
    for (const auto& [setting, lngValue] : values)
      SaveSettingDWord(program_.store, HKEY_CURRENT_USER, settingKey(*setting), setting->name, lngValue);
    change.commit();
    for (const auto& [setting, lngValue] : values) applySetting(program_, *setting, lngValue);
    return true;
  });
}

void frmOptions::cmdSave_Click() {
  trapAlone(program_, mblnBusy_, inFrmOptions, "cmdSave_Click", [&] {
    if (!ValidateData() || !SaveData()) return;
    changed_ = false;
    saved_ = true;
    close();
  });
}

bool frmOptions::closeRequested() {
  if (!changed_) return true;
  switch (program_.host.messageBox("Do you wish to save your changes?", Icon::Question, "", Buttons::YesNoCancel)) {
    case Answer::Yes:
      cmdSave_Click();
      return closed();
    case Answer::No:
      changed_ = false;
      return true;
    default:
      return false;
  }
}

}  // namespace qrel
