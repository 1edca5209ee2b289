// The windows that save a process and choose one, through a person's hands.
#include <cerrno>

#include "platform/fileFaults.h"
#include "platform/files.h"
#include "process/frmSaveCompRun.h"
#include "tests/process/savedProcesses.h"

namespace qrel {
namespace {

class SavingWindows : public SavedProcesses {
 protected:
  void store(const std::string& called, std::int32_t count = 0) {
    tSavedProcess process;
    process.strName = called;
    process.lngSelCountSource = process.lngSelCountTarget = count;
    process.arrSource = process.arrTarget = {"x"};
    ASSERT_TRUE(SaveComparisonProcess(program, process));
  }
  // Opens the window that saves for a person who does this.
  void showSaving(const tSavedProcess& process, const std::function<void(frmSaveComparison&)>& person) {
    test.host.windows.push_back([person](Form& form) { person(dynamic_cast<frmSaveComparison&>(form)); });
    frmSaveComparison(program).ShowUp(process, saved, name);
  }
  // The name that is chosen by a person who does this.
  std::string showChoosing(const std::function<void(frmSaveCompRun&)>& person) {
    test.host.windows.push_back([person](Form& form) { person(dynamic_cast<frmSaveCompRun&>(form)); });
    return frmSaveCompRun(program).ShowUp();
  }

  bool saved = false;
  std::string name = "before";
};

TEST_F(SavingWindows, ANameIsTestedBeforeItIsSaved) {
  store("Old");
  store("a\tb");  // by hand: no name that the window takes
  test.host.time = {2026, 11, 4, 9, 0, 0};
  const std::string invalid = "Invalid character(s) in comparison process' name.\r\n\r\n";
  const std::string brackets = invalid + "Square brackets - [ ] - are not allowed.";
  const std::string others =
      invalid + "Tabs, line breaks and characters outside of the Western code page (Windows-1252) are not allowed.";
  const std::string before = files::readWholeFile(path("qrel_comps.ini"));
  tSavedProcess process;
  process.strTable1 = "sales.Orders";
  process.strExportFilePath = "old.csv";
  process.lngExportType = exportCsv;
  process.blnPrint = true;
  showSaving(process, [&](frmSaveComparison& window) {
    EXPECT_EQ(window.caption, "Save Comparison Process");
    EXPECT_EQ(window.txtProcessName.text(), "Nov 04, 2026 - sales.Orders");
    for (const auto& [typed, message] :
         {std::pair{std::string("   "), std::string("Please enter a name for comparison process.")},
          {"a[b", brackets},
          {"]", brackets},
          {"\xE8\xA1\xA8]", brackets},
          {"a\r\nId=7", others},
          {"a\tb", others},
          {std::string("a\0b", 3), others},
          {"\x7F", others},
          {"\xE8\xA1\xA8", others},
          {"a\xFF", others}}) {
      const std::size_t focused = window.txtProcessName.focusRequests();
      window.txtProcessName.personTypes(typed);
      window.personPressesEnter();
      EXPECT_EQ(lastBox(), message);
      EXPECT_EQ(window.txtProcessName.focusRequests(), focused + 1);
      EXPECT_FALSE(window.closed());
    }
    test.host.answers = {Answer::No};
    window.txtProcessName.personTypes(" Old ");
    window.cmdOK.personClicks();
    EXPECT_EQ(test.host.boxes.at(0).title, "Overwrite Comparison Process");
    EXPECT_EQ(lastBox(), "Comparison process with name Old already exists.\r\n\r\nDo you want to overwrite it?");
    EXPECT_FALSE(window.closed());
    EXPECT_EQ(files::readWholeFile(path("qrel_comps.ini")), before);
    window.chkAutoClose.personSets(true);
    window.txtProcessName.personTypes("  OLD ");  // another name, and the same section
    window.cmdOK.personClicks();
    EXPECT_TRUE(window.closed());
  });
  EXPECT_EQ(lastBox(),
            "Comparison process saved successfully.\r\n\r\nIf you want to include automatic exporting in your saved "
            "comparison process, please export the results now. The program will add exporting info to saved "
            "comparison process.");
  EXPECT_TRUE(saved);
  EXPECT_EQ(name, "OLD");
  EXPECT_EQ(GetSavedProcessCount(program), 2);
  const tSavedProcess stored = GetSavedProcessDetails(program, "Old");
  EXPECT_EQ(stored.strTable1 + "," + stored.strExportFilePath, "sales.Orders,");
  EXPECT_EQ(stored.lngExportType, exportNone);
  EXPECT_TRUE(stored.blnAutoClose && !stored.blnPrint) << "printing is what the window says";
}

// Every name that is taken is found again by just that name.
TEST_F(SavingWindows, ANameThatIsTakenComesBackAsItWas) {
  const std::vector<std::string> names = {"; no comment", "\"quoted\"",         "a=b", "é € ‰", "'", "\xC2\xA0x",
                                          "#1 \\ /",      std::string(300, 'n')};
  for (const std::string& each : names)
    showSaving({}, [&](frmSaveComparison& window) {
      window.txtProcessName.personTypes(each);
      window.optPrint.personSets(true);
      window.cmdOK.personClicks();
    });
  frmSaveCompRun window(program);
  test.host.windows.push_back([](Form&) {});
  EXPECT_EQ(window.ShowUp(), "");
  ASSERT_EQ(window.lstComps.count(), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(window.lstComps.cell(i, 0), names[i]);
    EXPECT_TRUE(GetSavedProcessDetails(program, names[i]).blnPrint) << names[i];
  }
}

TEST_F(SavingWindows, WhatIsNotSavedIsToldAndTakesNothingBack) {
  saved = true;
  showSaving({}, [](frmSaveComparison& window) { window.personPressesEsc(); });
  EXPECT_TRUE(saved && name == "before");
  saved = false;
  const files::FaultScope full([](files::Operation operation, const std::filesystem::path&) {
    return operation == files::Operation::Write ? ENOSPC : 0;
  });
  showSaving({}, [](frmSaveComparison& window) {
    window.cmdOK.personClicks();
    EXPECT_TRUE(window.closed());
  });
  ASSERT_EQ(test.host.boxes.size(), 2U);
  EXPECT_EQ(test.host.boxes[0].text, "Failed to save comparison's process name.");
  EXPECT_EQ(test.host.boxes[0].icon, Icon::Information);
  EXPECT_EQ(test.host.boxes[1].text, "Comparison process not saved.");
  EXPECT_TRUE(!saved && name == "before");
}

TEST_F(SavingWindows, AProcessIsChosenByItsRow) {
  for (const char* each : {"c", "a", "b"}) store(each);
  const std::string chosen = showChoosing([&](frmSaveCompRun& window) {
    EXPECT_EQ(window.caption, "Run Saved Comparison Process");
    window.personPressesEnter();
    EXPECT_EQ(lastBox(), "Please select the comparison process to be run.");
    window.cmdDelete.personClicks();
    EXPECT_EQ(lastBox(), "Please select the comparison process to be deleted.");
    window.lstComps.onMouseUp(2);
    window.lstComps.onMouseUp(1);
    EXPECT_TRUE(test.host.boxes.empty());
    EXPECT_FALSE(window.closed());
    window.lstComps.personSelects({1});
    window.lstComps.onMouseUp(1);
    window.lstComps.onMouseUp(2);
    EXPECT_TRUE(lastBox().starts_with("Comparison Process Name: a\r\nComparison Process Id: 2\r\n"));
    window.lstComps.onDoubleClick();
    EXPECT_TRUE(window.closed());
  });
  EXPECT_EQ(chosen, "a");
  EXPECT_EQ(showChoosing([](frmSaveCompRun& window) {
              window.lstComps.personSelects({0});
              window.cmdOK.personClicks();
            }),
            "c");
  EXPECT_EQ(showChoosing([](frmSaveCompRun& window) {
              window.lstComps.personSelects({0});
              window.personPressesEsc();
            }),
            "");
}

TEST_F(SavingWindows, DeletingAsksFirst) {
  for (const char* each : {"a", "b"}) store(each, 1);
  showChoosing([&](frmSaveCompRun& window) {
    window.lstComps.personSelects({0});
    test.host.answers = {Answer::No};
    window.cmdDelete.personClicks();
    EXPECT_EQ(test.host.boxes.at(0).title, "Confirm Process Deletion");
    EXPECT_EQ(lastBox(), "Are you sure you want to remove comparison process 'a' ?");
    EXPECT_EQ(window.lstComps.count(), 2U);
    test.host.answers = {Answer::Yes};
    window.cmdDelete.personClicks();
    ASSERT_EQ(window.lstComps.count(), 1U);
    EXPECT_EQ(window.lstComps.cell(0, 0), "b");
    EXPECT_FALSE(files::exists(path("qrel_001_src.txt")) || files::exists(path("qrel_001_tgt.txt")));

    // One that can't be removed is reported and stays; while the report stands, the other commands are inert.
    window.lstComps.personSelects({0});
    test.host.answers = {Answer::Yes};
    test.host.windows.push_back([&](Form&) {
      test.host.boxes.clear();
      window.cmdDelete.personClicks();
      window.lstComps.onMouseUp(2);
      window.cmdOK.personClicks();
      window.cmdCancel.personClicks();
      EXPECT_TRUE(test.host.boxes.empty() && !window.closed());
    });
    const files::FaultScope broken([](files::Operation operation, const std::filesystem::path&) {
      return operation == files::Operation::Rename ? EIO : 0;
    });
    window.cmdDelete.personClicks();
    EXPECT_EQ(test.host.shown.back(), "frmErrorReport");
    EXPECT_EQ(window.lstComps.count(), 1U);
  });
  EXPECT_EQ(GetSavedProcessDetails(program, "b").arrSource, std::vector<std::string>{"x"});
}

}  // namespace
}  // namespace qrel
