// The report window through its buttons, and the files it writes.
#include "report/frmReport.h"

#include <algorithm>

#include "app/Workspace.h"
#include "app/modRegistry.h"
#include "platform/error.h"
#include "platform/files.h"
#include "process/modSavedProcess.h"
#include "report/modCopyToFile.h"
#include "tests/process/savedProcesses.h"
#include "tests/support.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

// A report window and saved processes in a folder of their own.
class Report : public ::testing::Test {
 protected:
  Report() {
    fs::create_directory(folder());
    fs::current_path(folder());
    test.program.main.gstrDataPath = folder().string() + "/";
    test.program.main.gstrCompsIni = path("qrel_comps.ini");
    test.program.report.gstrReportText = "  Source: x\r\nend";
    input.strTitle = "Comparison Report";
    input.strServer1 = "S1";
    input.lngCompType = 1;
  }
  ~Report() override { fs::current_path(before_); }

  fs::path folder() const { return test.folder.path() / "data"; }
  std::string path(const std::string& name) const { return (folder() / name).string(); }
  // Opens the window for a person who does this.
  void show(const std::function<void(frmReport&)>& person) {
    test.host.windows.push_back([person](Form& form) { person(dynamic_cast<frmReport&>(form)); });
    frmReport(test.program).ShowUp(input);
  }
  // A person who saves as "mine", or leaves the window that would.
  void save(frmReport& window, bool really = true) {
    test.host.windows.push_front(really ? personSavesAs("mine") : personCancels);
    window.cmdSave.personClicks();
  }
  // What is recorded of the process.
  std::string recorded() {
    const tSavedProcess process = GetSavedProcessDetails(test.program, "mine");
    return fs::path(process.strExportFilePath).filename().string() + (process.blnPrint ? " printed" : "");
  }

  TestProgram test;
  tReportInput input;

 private:
  fs::path before_ = fs::current_path();
};

constexpr const char* written = "Source: x\r\nend\r\n";

TEST_F(Report, ShowsTheTextAndCopiesIt) {
  SaveSettingDWord(test.store, HKEY_CURRENT_USER, "Software\\Qrel\\TXText", "PageWidth", 30000);
  SaveSettingDWord(test.store, HKEY_CURRENT_USER, "Software\\Qrel\\TXText", "PageHeight", 100);
  show([&](frmReport& window) {
    EXPECT_EQ(window.caption, "Comparison Report");
    EXPECT_EQ(window.txtReport.text(), "  Source: x\nend");
    EXPECT_EQ(window.txtReport.pageWidth, 30000);
    EXPECT_EQ(window.txtReport.pageHeight, 15840) << "too small a page is raised";
    window.cmdCopyClip.personClicks();
    window.personPressesEsc();
    EXPECT_TRUE(window.closed());
  });
  EXPECT_EQ(test.host.clipboard, std::string("  ") + written);
}

TEST_F(Report, SavesWhatItIsAbout) {
  input.strServer2 = "S2";
  input.strDb1 = "D1";
  input.strDb2 = "D2";
  input.strTable1 = "T1";
  input.strTable2 = "T2";
  input.lngCompSubType = 30;
  input.lngCompSubSubType = 40;
  input.strEncObjTypes = "1,0,0,0,0,0,0,0";
  input.lngSelCountTarget = 2;
  input.arrSource = {"left over"};
  input.arrTarget = {"a", "b"};
  input.lngObjId1 = 5;
  input.strExportPath = "not this";
  show([&](frmReport& window) { save(window); });
  const std::string bytes = files::readWholeFile(path("qrel_comps.ini"));
  EXPECT_EQ(bytes.substr(bytes.find("CompType")),
            "CompType=1\r\nCompSubType=30\r\nCompSubSubType=40\r\nEncObjTypes=1,0,0,0,0,0,0,0\r\nCompMethod=-1\r\n"
            "ServerName1=S1\r\nServerName2=S2\r\nDbName1=D1\r\nDbName2=D2\r\nTableName1=T1\r\nTableName2=T2\r\n"
            "ExportFilePath=\r\nExportType=0\r\nId=1\r\nSelCompCountSource=0\r\nSelCompCountTarget=2\r\n"
            "Print=False\r\nObjId1=5\r\nObjId2=0\r\nCSVWrapInQuot=False\r\nAutoClose=False\r\n");
  EXPECT_FALSE(files::exists(path("qrel_001_src.txt")));
  EXPECT_EQ(files::readWholeFile(path("qrel_001_tgt.txt")), "a\r\nb\r\n");
}

TEST_F(Report, RecordsTheFirstFileAfterASave) {
  test.host.files = {path("a.txt"), "", path("b.txt"), path("c.txt")};
  show([&](frmReport& window) {
    window.cmdCopyToFile.personClicks();  // nothing saved yet
    save(window);
    save(window, false);                                              // takes nothing back
    for (int i = 0; i < 3; ++i) window.cmdCopyToFile.personClicks();  // the first one is cancelled
    window.cmdPrint.personClicks();
  });
  EXPECT_EQ(recorded(), "b.txt");
  EXPECT_EQ(test.host.boxes.size(), 2U) << "it was saved, it was recorded";
  EXPECT_EQ(files::readWholeFile(path("c.txt")), written);
  EXPECT_EQ(test.host.fileDialogs.front().defaultFile, path("Report.txt"));
  EXPECT_EQ(test.host.fileDialogs.front().title, "Specify Target File");
}

TEST_F(Report, RecordsThePrintingAfterASaveOnce) {
  show([&](frmReport& window) {
    window.cmdPrint.personClicks();
    save(window);
    test.host.boxes.clear();
    window.cmdPrint.personClicks();
    window.cmdPrint.personClicks();
  });
  EXPECT_EQ(recorded(), " printed");
  ASSERT_EQ(test.host.printed.size(), 3U);
  EXPECT_EQ(test.host.printed[0].title, "Quorrel Report");
  EXPECT_EQ(test.host.printed[0].text, "  Source: x\nend");
  ASSERT_EQ(test.host.boxes.size(), 1U);
  EXPECT_EQ(test.host.boxes[0].icon, Icon::Information);
  EXPECT_EQ(
      test.host.boxes[0].text,
      "Printing info was added to the saved comparison process:\r\n\t- process name:\t'mine'\r\n\r\nNext time when "
      "this process is run, the program will automatically print final report on the default printer.");
}

TEST_F(Report, ASecondCommandIsInertWhileOneRuns) {
  frmReport window(test.program);
  const auto saveBadly = [&](Form&) {
    window.cmdPrint.personClicks();
    window.cmdCopyToFile.personClicks();
    window.cmdSave.personClicks();
    throw RuntimeError(75, "no room");
  };
  test.host.windows = {[&](Form&) { window.cmdSave.personClicks(); }, saveBadly, [](Form&) {}};
  window.ShowUp(input);
  EXPECT_TRUE(test.host.printed.empty());
  EXPECT_EQ(test.host.shown, (std::vector<std::string>{"frmReport", "frmSaveComparison", "frmErrorReport"}));
  window.cmdPrint.personClicks();
  EXPECT_EQ(test.host.printed.size(), 1U) << "an error ends the command";
}

TEST_F(Report, HasNoSaveButtonWithoutAComparison) {
  const auto saveButtonOf = [](bool& visible) {
    return [&visible](Form& form) { visible = form.find("cmdSave")->visible(); };
  };
  bool generic = true, usual = false;
  test.host.windows = {saveButtonOf(generic), saveButtonOf(usual)};
  frmReport window(test.program);
  window.ShowUp_Generic("References");
  EXPECT_EQ(window.caption, "References");
  window.ShowUp(input);
  EXPECT_FALSE(generic);
  EXPECT_TRUE(usual);
}

TEST_F(Report, ReplayWritesAndPrintsOnceAndRecordsNothing) {
  input.blnAuto = input.blnPrint = true;
  input.strExportPath = path("out.txt");
  show([&](frmReport& window) {
    EXPECT_EQ(files::readWholeFile(input.strExportPath), written);
    window.activate();
    EXPECT_EQ(test.host.printed.size(), 1U);
    EXPECT_FALSE(files::exists(path("qrel_comps.ini")));
    test.host.files = {path("asked.txt")};
    window.cmdCopyToFile.personClicks();  // from now on as usual
    save(window);
    window.cmdPrint.personClicks();
  });
  EXPECT_EQ(recorded(), " printed");
}

TEST_F(Report, PrintingInAReplayEndsWhatWasSavedBefore) {
  // Saves as soon as the text is there, before the window acts by itself.
  struct Saver : ControlObserver {
    explicit Saver(std::function<void()> personSaves) : save(std::move(personSaves)) {}
    void controlChanged(Control& control) override {
      if (!dynamic_cast<TextPane&>(control).text().empty()) save();
    }
    std::function<void()> save;
  };
  input.blnAuto = input.blnPrint = true;
  frmReport window(test.program);
  Saver saver([&] { save(window); });
  window.txtReport.observer = &saver;
  test.host.windows.push_back([&](Form&) { window.cmdPrint.personClicks(); });
  window.ShowUp(input);
  EXPECT_EQ(test.host.printed.size(), 2U);
  EXPECT_EQ(recorded(), "") << "no printing is recorded";
}

TEST_F(Report, ReplayGoesOnToPrintWhenTheFileCannotBeWritten) {
  input.blnAuto = input.blnPrint = true;
  input.strExportPath = path("missing/out.txt");
  test.program.main.gblnCloseAfterRun = true;
  std::string problem;
  test.host.windows.push_back([&](Form& form) { problem = dynamic_cast<TextBox&>(*form.find("txtErrDesc")).text(); });
  show([](frmReport&) { ADD_FAILURE() << "the window closes by itself"; });
  EXPECT_NE(problem.find("(mdlMain:CopyToFile)"), std::string::npos) << problem;
  EXPECT_EQ(test.host.printed.size(), 1U);
}

TEST_F(Report, ClosingRemovesTemporaryFilesOfTheCurrentFolder) {
  fs::create_directory("folder.tmp");
  for (const char* name : {"a.tmp", "B.TMP", ".hidden.tmp", "tmp", "a.tmp.txt", "folder.tmp/a.tmp"})
    test.folder.write("data/" + std::string(name), "x");
  show([](frmReport& window) {
    EXPECT_TRUE(files::exists("a.tmp"));
    window.cmdExit.personClicks();
  });
  std::vector<std::string> left;
  for (const auto& entry : fs::recursive_directory_iterator(".")) left.push_back(entry.path().filename().string());
  std::sort(left.begin(), left.end());
  EXPECT_EQ(left, (std::vector<std::string>{".hidden.tmp", "a.tmp", "a.tmp.txt", "folder.tmp", "tmp"}));
}

TEST_F(Report, CopyToFileNeedsATextAndATarget) {
  std::string chosen = "old";
  EXPECT_FALSE(CopyToFile(test.program, "   ", "Report", chosen, ""));
  EXPECT_TRUE(test.host.fileDialogs.empty());
  EXPECT_EQ(chosen, "");
  test.host.files = {""};
  EXPECT_FALSE(CopyToFile(test.program, "x", "Report", chosen, ""));
  test.folder.write("data/r.txt", "a longer text that was there");
  EXPECT_TRUE(CopyToFile(test.program, " x\ty ", "Report", chosen, path("r.txt")));
  EXPECT_EQ(chosen, path("r.txt"));
  EXPECT_EQ(files::readWholeFile(chosen), "x\ty");
}

TEST_F(Report, CopiesAPaneOnlyForASelectedObject) {
  Workspace workspace;
  workspace.txtTXProc[1].setText("CREATE VIEW v");
  CopyObjectToClipboard(test.program, workspace, 1);
  CopyObjectToFile(test.program, workspace, 1);
  ASSERT_EQ(test.host.boxes.size(), 2U);
  EXPECT_EQ(test.host.boxes[1].title + ": " + test.host.boxes[1].text, "Cannot Copy: There is nothing to copy.");
  workspace.pvlSqlObj[1].add("other");
  workspace.pvlSqlObj[1].select(workspace.pvlSqlObj[1].add("v"));
  test.host.files = {path("v.sql")};
  CopyObjectToClipboard(test.program, workspace, 1);
  CopyObjectToFile(test.program, workspace, 1);
  EXPECT_EQ(test.host.clipboard, "CREATE VIEW v\r\n");
  EXPECT_EQ(test.host.fileDialogs.at(0).defaultFile, path("v.txt"));
  EXPECT_EQ(files::readWholeFile(path("v.sql")), "CREATE VIEW v\r\n");
}

}  // namespace
}  // namespace qrel
