// The options: pages, validation, saving, the question at closing, and what the main window does afterwards.
#include <map>

#include "app/settings.h"
#include "platform/data/connection.h"
#include "tests/ui/mainWindow.h"
#include "ui/tools/frmOptions.h"

namespace qrel {
namespace {

class OptionsTest : public testing::Test, public MainWindow {
 protected:
  // What a person does in the window; true when it was saved.
  bool inOptions(const std::function<void(frmOptions&)>& act) {
    host.windows.push_back([&](Form& shown) { act(dynamic_cast<frmOptions&>(shown)); });
    return frmOptions(program).ShowUp();
  }
  std::int32_t stored(const char* name) { return ReadNumber(program, name); }
  static void choosePage(frmOptions& window, const std::string& group, const std::string& page) {
    for (int node = 0; node < static_cast<int>(window.TreeViewIcons.count()); ++node)
      if (window.TreeViewIcons.text(node) == page && window.TreeViewIcons.parent(node) >= 0 &&
          window.TreeViewIcons.text(window.TreeViewIcons.parent(node)) == group)
        return window.TreeViewIcons.select(node);
    FAIL() << page;
  }
};

TEST_F(OptionsTest, APageShowsItsOwnControlsAndText) {
  EXPECT_FALSE(inOptions([](frmOptions& window) {
    std::string tree;
    for (int node = 0; node < static_cast<int>(window.TreeViewIcons.count()); ++node)
      tree += (window.TreeViewIcons.parent(node) < 0 ? "|" : ",") + window.TreeViewIcons.text(node);
    EXPECT_EQ(tree,
              "|General,Filter Offline Databases,Timeout|Schema Comparisons,Columns Order,Analyze Constraints,Auto "
              "Save,Ignore System objects,Ignore Indexes,Ignore Comments,Whitespace,Case Sensitivity|Data "
              "Comparisons,Comparison Options,Rows to Display,Cache Size,Cursor Location,Case Sensitivity");
    const auto visiblePages = [&] {
      std::vector<std::size_t> pages;
      for (std::size_t page = 0; page < window.fraPage.size(); ++page)
        if (window.fraPage[page].visible()) pages.push_back(page);
      return pages;
    };
    choosePage(window, "Data Comparisons", "Case Sensitivity");
    EXPECT_EQ(visiblePages(), std::vector<std::size_t>{pageDataCaseSensitivity});
    EXPECT_EQ(window.lblHelp.text().find("Term 'case sensitivity' describes a program's ability"), 0U);
    choosePage(window, "General", "Timeout");
    EXPECT_EQ(visiblePages(), std::vector<std::size_t>{pageTimeout});
    EXPECT_NE(window.lblHelp.text().find("Default is 30.\r\n\r\nSometimes due to delays"), std::string::npos);
    window.TreeViewIcons.select(0);
    EXPECT_EQ(visiblePages(), std::vector<std::size_t>{pageTimeout}) << "a group has no page";
    choosePage(window, "Schema Comparisons", "Whitespace");
    EXPECT_EQ(window.lblHelp.text(), "");
  }));
}

TEST_F(OptionsTest, SavingWritesEverySettingAndItsWorkingCopy) {
  EXPECT_TRUE(inOptions([](frmOptions& window) {
    window.chkAutoConnect.personSets(true);
    window.txtMaxRows.personTypes("1,000");
    window.chkCaseSensitive.personSets(false);
    window.chkIgnoreIndexes.personSets(true);
    window.optCurLoc[1].choose();
    window.txtCacheSize.personTypes("7");
    window.chkDataComp.personSets(false);
    window.chkPreserveDbSel.personSets(false);
    window.chkAutoSelTargetObj.personSets(true);
    window.chkFilterOfflineDbs.personSets(true);
    window.txtTimeout.personTypes("0");
    window.cmdSave.personClicks();
  }));
  const std::map<const char*, std::int32_t> expected = {
      {"AutoConnect", 1},       {"MaxRowsInDiffTable", 1000},     {"CaseSensitive", 0},
      {"DataCaseSensitive", 1}, {"IgnoreWhitespace", 1},          {"IgnoreComments", 1},
      {"IgnoreIndexes", 1},     {"CursorConnectionUseServer", 0}, {"CacheSize", 7},
      {"IgnoreSysObjects", 1},  {"ShowDataCompOpt", 0},           {"PreserveDbSel", 0},
      {"IgnoreColSeq", 1},      {"AutoSelTargetObj", 1},          {"AnalyzeConstraints", 0},
      {"AutoSaveSchemas", 0},   {"FilterOfflineDbs", 1},          {"Timeout", 0}};
  for (const auto& [name, value] : expected) EXPECT_EQ(stored(name), value) << name;
  EXPECT_FALSE(program.settings.CaseSensitive);
  EXPECT_TRUE(program.settings.FilterOfflineDbs && program.settings.AutoSelTargetObj);
  EXPECT_EQ(program.settings.glngMaxRowsInDiffTable, 1000);
  EXPECT_EQ(program.settings.glngCursorLocation, adUseClient);
  EXPECT_EQ(program.settings.Timeout, 0);
}

TEST_F(OptionsTest, NumbersThatAreTooSmallAreRaisedAndAWrongTimeoutIsLeft) {
  const struct {
    const char *rows, *cache, *timeout;
    std::int32_t savedRows, savedCache, savedTimeout;
    std::size_t boxes;
  } cases[] = {{"10", "1", "0", 10, 1, 0, 0},
               {"9", "1", "45", 10, 1, 45, 1},
               {"x", "0", "", 10, 1, 30, 3},
               {"", "-4", "12", 10, 1, 12, 2},
               {"99999999999", "2", "99999999999", INT32_MAX, 2, 30, 1},
               {"20", "3", "-5", 20, 3, 5, 0}};
  for (const auto& each : cases) {
    set("Timeout", 30);
    host.boxes.clear();
    EXPECT_TRUE(inOptions([&](frmOptions& window) {
      window.txtMaxRows.personTypes(each.rows);
      window.txtCacheSize.personTypes(each.cache);
      window.txtTimeout.personTypes(each.timeout);
      window.cmdSave.personClicks();
    })) << each.rows;
    EXPECT_EQ(stored("MaxRowsInDiffTable"), each.savedRows) << each.rows;
    EXPECT_EQ(stored("CacheSize"), each.savedCache) << each.cache;
    EXPECT_EQ(stored("Timeout"), each.savedTimeout) << each.timeout;
    EXPECT_EQ(host.boxes.size(), each.boxes) << each.rows;
    if (each.savedTimeout != 30) continue;
    EXPECT_EQ(host.boxes.back().text, "Timeout value is not valid and will be not changed.");
    EXPECT_EQ(host.boxes.back().title, "Changes Not Saved");
  }
}

TEST_F(OptionsTest, ClosingAsksForUnsavedChanges) {
  EXPECT_FALSE(inOptions([](frmOptions& window) {
    choosePage(window, "Data Comparisons", "Cache Size");
    window.cmdCancel.personClicks();
    EXPECT_TRUE(window.closed());
  }));
  host.answers = {Answer::Cancel, Answer::No};
  EXPECT_FALSE(inOptions([](frmOptions& window) {
    window.chkIgnoreComments.personSets(false);
    window.personPressesEsc();
    EXPECT_FALSE(window.closed());
    window.personPressesEsc();
    EXPECT_TRUE(window.closed());
  }));
  EXPECT_EQ(host.boxes.back().text, "Do you wish to save your changes?");
  EXPECT_TRUE(program.settings.IgnoreComments);
  host.answers = {Answer::Yes};
  EXPECT_TRUE(inOptions([](frmOptions& window) {
    window.optCurLoc[1].choose();
    EXPECT_TRUE(window.closeRequested());
  }));
  EXPECT_EQ(stored("CursorConnectionUseServer"), 0);
}

TEST_F(OptionsTest, TheMainWindowFollowsWhatWasChanged) {
  makeServers();
  connect();
  chooseDb(0, "Shop");
  chooseType(objProcedures);
  host.boxes.clear();
  const auto change = [&](const std::function<void(frmOptions&)>& act) {
    host.boxes.clear();
    host.windows.push_back([&](Form& shown) {
      auto& window = dynamic_cast<frmOptions&>(shown);
      act(window);
      window.cmdSave.personClicks();
    });
    form.barCommands.personChooses(513);
    std::string texts;
    for (const auto& box : host.boxes) texts += box.text.substr(0, box.text.find('\r')) + "|";
    return texts;
  };
  EXPECT_EQ(change([](frmOptions& window) { window.txtCacheSize.personTypes("9"); }), "") << "server-side";
  EXPECT_EQ(change([](frmOptions& window) {
              window.optCurLoc[1].choose();
              window.txtCacheSize.personTypes("11");
              window.chkAnalyzeConstraints.personSets(true);
            }),
            "Cursor location setting was changed.|Cache Size setting was changed.|Setting 'Treat Constraints as a "
            "separate object type' changed.|");
  EXPECT_EQ(work.cmbType.row(work.cmbType.count() - 1), "Constraints");
  EXPECT_EQ(work.objectType(), objTables);
  EXPECT_EQ(objects(0), "*Customers Orders Rates ");
  EXPECT_EQ(form.cmdCompare.toolTip(), "Compare selected tables (F7)");
  EXPECT_FALSE(work.mblnBusy);

  // The setting can't be changed in the window, but may be while it is open.
  EXPECT_EQ(change([&](frmOptions&) { set("ShowOwners", 1); }), "");
  EXPECT_TRUE(work.cmbOwners[1].visible());
  EXPECT_EQ(work.cmbOwners[0].text(), "All Owners");
}

}  // namespace
}  // namespace qrel
