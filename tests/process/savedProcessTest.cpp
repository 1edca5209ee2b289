// The saved processes: the bytes of their file, ids, lists, what comes back of them, and what is left of a save that
// fails or is killed.
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <random>
#include <set>
#include <thread>

#include "db/mdlObjects.h"
#include "platform/error.h"
#include "platform/fileFaults.h"
#include "platform/files.h"
#include "tests/process/savedProcesses.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

class SavedProcess : public SavedProcesses {
 protected:
  std::string bytes(const std::string& file) const { return files::readWholeFile(path(file)); }
  void write(const std::string& text) { files::writeAtomically(program.main.gstrCompsIni, text); }
  bool there(const std::string& file) const { return files::exists(path(file)); }
  std::vector<std::string> names() {
    CheckList list("list");
    std::vector<std::string> arrNames;
    FillSavedProcessList(program, list, arrNames);
    EXPECT_EQ(list.count(), arrNames.size());
    return arrNames;
  }
  // The error report that the next error opens.
  void expectReport() {
    test.host.windows.push_back(
        [this](Form& form) { report = dynamic_cast<TextBox&>(*form.find("txtErrDesc")).text(); });
  }
  // A selective comparison under this name.
  static tSavedProcess selective(const std::string& name, std::vector<std::string> source,
                                 std::vector<std::string> target) {
    tSavedProcess process;
    process.strName = name;
    process.lngCompType = compStructure;
    process.lngCompSubType = compSelective;
    process.lngCompSubSubType = 40;
    process.strEncObjTypes = "0,1,0,0,0,0,0,0";
    process.strServer1 = "S1";
    process.strServer2 = "S2";
    process.strDb1 = "D1";
    process.strDb2 = "D2";
    process.lngSelCountSource = static_cast<std::int32_t>(source.size());
    process.lngSelCountTarget = static_cast<std::int32_t>(target.size());
    process.arrSource = std::move(source);
    process.arrTarget = std::move(target);
    return process;
  }
  bool save(const std::string& name) { return SaveComparisonProcess(program, selective(name, {}, {})); }

  std::string report;
};

TEST_F(SavedProcess, KeysStandInTheirOrderAndListsBesideThem) {
  tSavedProcess process = selective("Nightly é", {"GetA", "sales.GetÉ"}, {"GetA"});
  process.strTable1 = "T1";
  process.strTable2 = "T2";
  process.strExportFilePath = "/tmp/out.csv";
  process.lngExportType = exportCsv;
  process.lngObjId1 = 12;
  process.lngObjId2 = -3;
  process.blnPrint = process.blnAutoClose = true;
  ASSERT_TRUE(SaveComparisonProcess(program, process));
  EXPECT_EQ(bytes("qrel_comps.ini"),
            "[Nightly \xE9]\r\nName=Nightly \xE9\r\nCompType=1\r\nCompSubType=30\r\nCompSubSubType=40\r\n"
            "EncObjTypes=0,1,0,0,0,0,0,0\r\nCompMethod=-1\r\nServerName1=S1\r\nServerName2=S2\r\nDbName1=D1\r\n"
            "DbName2=D2\r\nTableName1=T1\r\nTableName2=T2\r\nExportFilePath=/tmp/out.csv\r\nExportType=2\r\nId=1\r\n"
            "SelCompCountSource=2\r\nSelCompCountTarget=1\r\nPrint=True\r\nObjId1=12\r\nObjId2=-3\r\n"
            "CSVWrapInQuot=False\r\nAutoClose=True\r\n");
  EXPECT_EQ(bytes("qrel_001_src.txt"), "GetA\r\nsales.Get\xC9\r\n");
  EXPECT_EQ(bytes("qrel_001_tgt.txt"), "GetA\r\n");

  const tSavedProcess read = GetSavedProcessDetails(program, "NIGHTLY É");
  EXPECT_EQ(read.strServer1 + read.strDb1 + read.strTable1 + "-" + read.strServer2 + read.strDb2 + read.strTable2,
            "S1D1T1-S2D2T2");
  EXPECT_EQ((std::vector{read.lngCompType, read.lngCompSubType, read.lngCompSubSubType, read.lngCompMethod, read.lngId,
                         read.lngObjId1, read.lngObjId2, read.lngExportType}),
            (std::vector<std::int32_t>{1, 30, 40, -1, 1, 12, -3, 2}));
  EXPECT_EQ(read.arrSource, process.arrSource);
  EXPECT_EQ(read.arrTarget, process.arrTarget);
  EXPECT_TRUE(read.blnPrint && read.blnAutoClose && !read.blnCSVWrapInQuot);
  EXPECT_EQ(test.host.pointer(), Pointer::Default);
  EXPECT_TRUE(test.host.boxes.empty());
}

TEST_F(SavedProcess, AnIdIsTheSmallestThatNoProcessHas) {
  EXPECT_EQ(GetNextSavedProcessId(program), 1);
  for (const char* name : {"a", "b", "c", "d", "e"}) ASSERT_TRUE(save(name));
  EXPECT_EQ(GetSavedProcessId(program, "C"), 3);
  DeleteSavedProcess(program, "c");
  EXPECT_EQ(names(), (std::vector<std::string>{"a", "b", "d", "e"}));
  ASSERT_TRUE(save("f"));
  EXPECT_EQ(GetSavedProcessNameById(program, 3), "f");
  EXPECT_EQ(GetSavedProcessNameById(program, 9), "");
  EXPECT_EQ(GetSavedProcessId(program, ""), 0);
  EXPECT_EQ(GetSavedProcessCount(program), 5);

  write("[x]\r\nId=2\r\n[y]\r\nId=99999999999\r\n[z]\r\nId= 2nd\r\n[none]\r\n");
  EXPECT_EQ(GetSavedProcessNameById(program, 2), "x") << "the first counts";
  EXPECT_EQ(GetNextSavedProcessId(program), 1) << "a damaged id keeps nobody from saving";
  EXPECT_EQ(GetSavedProcessId(program, "z"), 2);
}

TEST_F(SavedProcess, OneThatIsSavedOverGetsAnotherIdAndItsOldListsStay) {
  ASSERT_TRUE(SaveComparisonProcess(program, selective("Mine", {"a"}, {"b"})));
  ASSERT_TRUE(SaveComparisonProcess(program, selective("MINE", {"c", "d"}, {})));
  EXPECT_EQ(names(), std::vector<std::string>{"Mine"}) << "names are found without case";
  const tSavedProcess read = GetSavedProcessDetails(program, "mine");
  EXPECT_EQ(read.lngId, 2);
  EXPECT_EQ(read.arrSource, (std::vector<std::string>{"c", "d"}));
  EXPECT_EQ(read.arrTarget, std::vector<std::string>{});
  EXPECT_TRUE(there("qrel_001_src.txt") && there("qrel_001_tgt.txt") && !there("qrel_002_tgt.txt"));
  ASSERT_TRUE(SaveComparisonProcess(program, selective("mine", {}, {})));
  EXPECT_EQ(GetSavedProcessId(program, "mine"), 1);
  EXPECT_FALSE(there("qrel_001_src.txt")) << "what was left behind is not its own";
  EXPECT_TRUE(boxes().empty());
}

TEST_F(SavedProcess, ListsAreThoseOfTheSectionThatWasRead) {
  ASSERT_TRUE(SaveComparisonProcess(program, selective("p", {"a"}, {"a"})));
  // Another program saves over it twice as soon as its list is asked for, so that the id is the same again.
  bool asked = false;
  const files::FaultScope meanwhile([&](files::Operation, const fs::path& file) {
    if (file.filename() != "qrel_001_src.txt" || std::exchange(asked, true)) return 0;
    for (const char* name : {"b", "c"}) {
      tSavedProcess process = selective("p", {name}, {name});
      process.strDb1 = name;
      EXPECT_TRUE(SaveComparisonProcess(program, process));
    }
    return 0;
  });
  const tSavedProcess read = GetSavedProcessDetails(program, "p");
  EXPECT_EQ(std::to_string(read.lngId) + read.strDb1 + read.arrSource.at(0) + read.arrTarget.at(0), "1ccc");
}

TEST_F(SavedProcess, WhatIsReadIsTakenAsItStands) {
  const std::string cut(254, 'p');
  write(
      "[old]\r\nCompType= 1 \r\nEncObjTypes=1,0,0,0,0,0\r\nCompMethod=-1x\r\nPrint=tRUE\r\nAutoClose=yes\r\n"
      "ExportFilePath=" +
      cut + "q\r\nObjId1=-5\r\n");
  const tSavedProcess read = GetSavedProcessDetails(program, "Old");
  EXPECT_EQ(read.lngCompType, 1);
  EXPECT_EQ(read.lngCompSubType, 0);
  EXPECT_EQ(read.lngCompMethod, -1);
  EXPECT_EQ(read.lngObjId1, -5);
  EXPECT_EQ(read.strEncObjTypes, "1,0,0,0,0,0");
  EXPECT_EQ(read.strExportFilePath, cut);
  EXPECT_TRUE(read.blnPrint && !read.blnAutoClose);
  const tSavedProcess unknown = GetSavedProcessDetails(program, "unknown");
  EXPECT_EQ(unknown.lngCompType * 10 + unknown.lngCompMethod, 0) << "a missing number is 0";
  const tSavedProcess nothing = GetSavedProcessDetails(program, "");
  EXPECT_EQ(nothing.lngCompType + nothing.lngCompMethod, -2);

  write("[a]\r\nCompType=1\r\nId=3000000000\r\n");
  expectReport();
  EXPECT_EQ(GetSavedProcessDetails(program, "a").lngCompType, -1);
  EXPECT_NE(report.find("(modSavedProcess:GetSavedProcessDetails)"), std::string::npos) << report;
}

TEST_F(SavedProcess, ListsThatLackLinesAreToldWithTargetsCount) {
  ASSERT_TRUE(SaveComparisonProcess(program, selective("p", {"a\nb", "c"}, {"d"})));
  EXPECT_EQ(GetSavedProcessDetails(program, "p").arrSource, (std::vector<std::string>{"a", "b", "c"}));
  auto shown = boxes();
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].title, "Inconsistent Data");
  EXPECT_EQ(shown[0].icon, Icon::Warning);
  EXPECT_EQ(shown[0].text,
            "Inconsistent data while retrieving details of saved comparison process.\r\n\r\nComparison Id: "
            "1\r\n\r\nSource objects count: 1\r\nSource objects in file: 3");
  fs::remove(path("qrel_001_src.txt"));
  files::writeAtomically(path("qrel_001_tgt.txt"), "d\r\n\r\nlast");
  const tSavedProcess read = GetSavedProcessDetails(program, "p");
  EXPECT_TRUE(read.arrSource.empty());
  EXPECT_EQ(read.arrTarget, (std::vector<std::string>{"d", "", "last"}));
  EXPECT_EQ(read.lngSelCountSource, 2);
  shown = boxes();
  ASSERT_EQ(shown.size(), 2U);
  EXPECT_TRUE(shown[0].text.ends_with("Source objects count: 1\r\nSource objects in file: 0"));
  EXPECT_TRUE(shown[1].text.ends_with("Target objects count: 1\r\nTarget objects in file: 3"));
}

TEST_F(SavedProcess, EveryNameInAListComesBackAsItWas) {
  const std::vector<std::vector<std::string>> lists = {
      {"é", " blanks ", "€", "\"q\""}, {"表", "é"}, {"ï»¿x"}, {"", "a\tb", ""}, {"\xC3\x83\xC2\xA9"}};
  const std::string folder = program.main.gstrDataPath;
  std::vector<std::string> read;
  for (const auto& list : lists)
    for (const bool source : {true, false}) {
      ArraySaveToFile(program, list, 1000, folder, 1, source);
      EXPECT_EQ(ArrayReadFromFile(program, read, 1000, folder, source), static_cast<std::int32_t>(list.size()));
      EXPECT_EQ(read, list);
    }
  EXPECT_TRUE(there("qrel_1000_tgt.txt"));
  ArraySaveToFile(program, {"x"}, 1000, folder, 0, true);
  EXPECT_EQ(ArrayReadFromFile(program, read, 1000, folder, true), 0);
  EXPECT_TRUE(read.empty());
  ArraySaveToFile(program, {"x"}, 1, path("missing/"), 1, true);
  const std::string told = lastBox();
  EXPECT_TRUE(told.starts_with("Error in Sub ArraySaveToFile, error nr ") && told.ends_with(").")) << told;
}

TEST_F(SavedProcess, FlagsOfEarlierVersionsAreReadAsEight) {
  struct Case {
    const char* flags;
    const char* padded;
    int index;
    const char* names;
  };
  for (const Case& each :
       {Case{"1,0,0,0,0,0", "1,0,0,0,0,0,0,0", 0, "Tables"}, Case{"0,1,0,0,0,0,0", "0,1,0,0,0,0,0,0", 1, "Procedures"},
        Case{"0,0,0,0,0,1,1,0", "0,0,0,0,0,1,1,0", -1, "Relationships, Constraints"},
        Case{"0,0,1,1,1,0,0,1", "0,0,1,1,1,0,0,1", -1, "Functions, Views, Triggers, Permissions"},
        Case{"0,0,0,0,0,0,0,0", "0,0,0,0,0,0,0,0", -1, "N/A"}, Case{"1,0,0,0,0", "", -1, "N/A"},
        Case{"1;0,0,0,0,0,0,0", "", -1, "N/A"}, Case{"1,0,0,0,0,0,0,0,0", "", -1, "N/A"}, Case{"", "", -1, "N/A"}}) {
    EXPECT_EQ(PaddedObjectTypeFlags(each.flags), each.padded) << each.flags;
    EXPECT_EQ(ObjectTypeIndex(each.flags), each.index) << each.flags;
    EXPECT_EQ(GetObjectTypesText(each.flags), each.names) << each.flags;
  }
  const long types[] = {objTables,   objProcedures,    objFunctions,   objViews,
                        objTriggers, objRelationships, objConstraints, objPermissions};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(ObjectTypeIndex(ObjectTypeFlags(types[i])), i);
  EXPECT_EQ(ObjectTypeFlags(objConstraints), "0,0,0,0,0,0,1,0");
  EXPECT_EQ(ObjectTypeFlags(0), "0,0,0,0,0,0,0,0");
  EXPECT_EQ(ObjectTypeFlags(70), "");
}

TEST_F(SavedProcess, AnExportIsAddedAndTold) {
  ASSERT_TRUE(save("p"));
  RecordExportingResultsToTxtFile(program, "p", "/d/o.csv", exportCsv, true, compData);
  EXPECT_EQ(lastBox(),
            "Export info:\r\nExport File Path: /d/o.csv\r\nExport Type: Excel - Comma Separated Values (CSV) file\r\n"
            "Wrap up data in quotation marks: Yes\r\nwas added to the saved comparison process:\r\n'p'.\r\nNext time "
            "when this process is run, the program will automatically export data to the above file.");
  tSavedProcess read = GetSavedProcessDetails(program, "p");
  EXPECT_TRUE(read.strExportFilePath == "/d/o.csv" && read.lngExportType == exportCsv && read.blnCSVWrapInQuot);
  RecordExportingResultsToTxtFile(program, "p", "/d/o.txt", exportNone, false, compStructure);
  EXPECT_NE(lastBox().find("Path: /d/o.txt\r\nExport Type: N/A\r\nwas added to"), std::string::npos);
  EXPECT_TRUE(AddPrintInfoToSavedProcess(program, "p", true));
  read = GetSavedProcessDetails(program, "p");
  EXPECT_TRUE(read.blnPrint && !read.blnCSVWrapInQuot && read.lngExportType == exportNone);

  const std::string before = bytes("qrel_comps.ini");
  const files::FaultScope full([](files::Operation operation, const fs::path& file) {
    return operation == files::Operation::Write && file.string().find("qrel_comps") != std::string::npos ? ENOSPC : 0;
  });
  expectReport();
  RecordExportingResultsToTxtFile(program, "p", "/d/2", exportHtml, false, compStructure);
  EXPECT_NE(report.find("(modSavedProcess:AddExportInfoToSavedProcess)"), std::string::npos) << report;
  EXPECT_TRUE(boxes().empty()) << "nothing was added";
  EXPECT_EQ(bytes("qrel_comps.ini"), before);
}

TEST_F(SavedProcess, PropertiesHaveAGroupForWhatThereIs) {
  tSavedProcess data;
  data.strName = "Data";
  data.lngCompType = compData;
  data.lngCompSubType = compDataSingle;
  data.lngCompMethod = 1;
  data.strServer1 = data.strServer2 = "S";
  data.strDb1 = data.strDb2 = "D";
  data.strTable1 = "T1";
  data.strTable2 = "T2";
  data.lngObjId2 = 7;
  data.blnCSVWrapInQuot = true;
  data.strExportFilePath = "o.csv";
  data.lngExportType = exportCsv;
  ASSERT_TRUE(SaveComparisonProcess(program, data));
  ShowSavedProcessProperties(program, "Data");
  EXPECT_EQ(test.host.boxes.at(0).title, "Properties");
  EXPECT_EQ(lastBox(),
            "Comparison Process Name: Data\r\nComparison Process Id: 1\r\n\r\nComparison Type: Data Comparison\r\n"
            "Comparison Sub Type: Single Table\r\nComparison Method: Primary Key\r\n\r\nSource: S.D.T1\r\nTarget: "
            "S.D.T2\r\n\r\nExport File Path: o.csv\r\nExport Type: Excel - Comma Separated Values (CSV) file\r\nWrap "
            "up data in quotation marks: Yes\r\n\r\nAutomatically print final report: No\r\n\r\nTarget Object Id: "
            "7\r\n\r\nAutomatically close the program after replaying the comparison: No");

  tSavedProcess many = selective("Many", std::vector<std::string>(1234, "x"), {});
  many.blnPrint = many.blnAutoClose = true;
  many.lngExportType = exportCsv;
  ASSERT_TRUE(SaveComparisonProcess(program, many));
  ShowSavedProcessProperties(program, "Many");
  EXPECT_EQ(lastBox(),
            "Comparison Process Name: Many\r\nComparison Process Id: 2\r\n\r\nComparison Type: Meta-Data Comparison"
            "\r\nComparison Sub Type: Selective\r\nComparison Sub Sub Type: Details\r\nObject Types: Procedures\r\n"
            "\r\nNumber of objects compared: 1,234\r\n\r\nSource: S1.D1\r\nTarget: S2.D2\r\n\r\nExport Type: Excel - "
            "Comma Separated Values (CSV) file\r\n\r\nAutomatically print final report: Yes\r\n\r\nAutomatically "
            "close the program after replaying the comparison: Yes");
  for (const auto& [subType, words] :
       {std::pair{10, "All"}, {20, "Bulk"}, {35, "Individual"}, {50, "Selective"}, {60, "All"}, {70, "N/A"}})
    EXPECT_EQ(GetCompSubTypeText(subType), words);
  EXPECT_EQ(GetCompTypeText(2) + GetCompSubSubTypeText(30) + GetCompSubSubTypeText(20) + GetCompMethodText(0) +
                GetCompMethodText(-1) + GetExportTypeText(1),
            "N/ASimpleDetailsRecord by RecordN/AHyper Text Markup Language (HTML) file");
}

// Every file operation of a save but its first look at the file fails once: the old process is there with its lists, or
// the new one where only what follows its last step failed, and it is told either way.
TEST_F(SavedProcess, ASaveThatFailsLeavesTheOldProcessOrTheNewOne) {
  ASSERT_TRUE(SaveComparisonProcess(program, selective("p", {"a"}, {"b"})));
  const std::string before = bytes("qrel_comps.ini");
  int told = 0, lists = 0, replaced = 0;
  for (int nth = 1, reads = 0;; ++nth, reads = 0) {
    bool saved = false;
    int calls = 0;
    {
      const files::FaultScope fault([&](files::Operation operation, const fs::path&) {
        reads += operation == files::Operation::Read;
        return reads > 1 && operation != files::Operation::Read && ++calls == nth ? EIO : 0;
      });
      saved = SaveComparisonProcess(program, selective("p", {"c", "d"}, {"e"}));
    }
    const std::int32_t id = GetSavedProcessDetails(program, "p").lngId;
    if (saved) break;
    const std::string text = lastBox();
    told += text == "Failed to save comparison's process name.";
    lists += text.starts_with("Error in Sub ArraySaveToFile, error nr ");
    ASSERT_EQ(told + lists, nth) << text;
    EXPECT_EQ(there("qrel_002_src.txt") || there("qrel_002_tgt.txt"), id == 2) << nth;
    replaced += id == 2;
    if (id == 1) {
      EXPECT_EQ(bytes("qrel_comps.ini"), before) << nth;
    } else {
      write(before);
      fs::remove(path("qrel_002_src.txt"));
      fs::remove(path("qrel_002_tgt.txt"));
    }
  }
  EXPECT_TRUE(told > 2 && lists > 2 && replaced == 1) << told << " " << lists << " " << replaced;

  // One that is no profile file is none that can't be written.
  write(std::string("[p]\r\nId=1\0", 11));
  expectReport();
  EXPECT_FALSE(save("q"));
  EXPECT_NE(report.find("(modSavedProcess:SaveComparisonProcess)"), std::string::npos) << report;
  EXPECT_TRUE(boxes().empty());
}

// Another program saves over a process, again and again, and is killed: before each of its file operations, and at any
// moment. The nth save's lists belong to its ServerName1.
class KilledSave : public SavedProcess {
 protected:
  static tSavedProcess nth(int n) {
    const std::string mark = std::to_string(n);
    tSavedProcess process = selective("p", std::vector<std::string>(static_cast<std::size_t>(n % 7), "s" + mark),
                                      std::vector<std::string>(static_cast<std::size_t>(n % 3), "t" + mark));
    process.strServer1 = process.strServer2 = mark;
    return process;
  }
  // The number of the save that is there, whole.
  int stored() {
    const tSavedProcess read = GetSavedProcessDetails(program, "p");
    const int n = std::atoi(read.strServer1.c_str());
    EXPECT_EQ(read.strServer2, read.strServer1);
    EXPECT_EQ(read.arrSource, nth(n).arrSource);
    EXPECT_EQ(read.arrTarget, nth(n).arrTarget);
    EXPECT_TRUE(boxes().empty());
    return n;
  }
  // A program that does this, and how it ended.
  static int end(
      const std::function<void()>& act, const std::function<void(pid_t)>& meanwhile = [](pid_t) {}) {
    const pid_t child = fork();
    if (child == 0) {
      act();
      _exit(0);
    }
    meanwhile(child);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
  }
};

TEST_F(KilledSave, LeavesTheOldProcessOrTheNewOneAtEachOperation) {
  ASSERT_TRUE(SaveComparisonProcess(program, nth(4)));
  int last = 1;
  std::set<int> seen;
  for (int status = SIGKILL; status != 0; ++last) {
    ASSERT_TRUE(SaveComparisonProcess(program, nth(4)));
    status = end([&] {
      int calls = 0;
      const files::FaultScope kill(
          [&](files::Operation, const fs::path&) { return ++calls == last ? raise(SIGKILL) : 0; });
      if (!SaveComparisonProcess(program, nth(5))) _exit(1);
    });
    ASSERT_TRUE(status == 0 || WIFSIGNALED(status)) << last;
    seen.insert(stored());
  }
  EXPECT_GT(last, 15);
  EXPECT_EQ(seen, (std::set<int>{4, 5}));
  for (const auto& entry : fs::directory_iterator(test.folder.path()))
    EXPECT_NE(entry.path().extension(), ".tmp") << entry.path() << " was left behind";
}

TEST_F(KilledSave, LeavesTheOldProcessOrTheNewOneAtAnyMoment) {
  std::mt19937 random(7);
  ASSERT_TRUE(SaveComparisonProcess(program, nth(1)));
  int last = 1;
  for (int kill = 0; kill < 60; ++kill) {
    const int status = end(
        [&] {
          for (int n = last; SaveComparisonProcess(program, nth(n)); ++n)
            ;
        },
        [&](pid_t child) {
          std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
          ::kill(child, SIGKILL);
        });
    ASSERT_TRUE(WIFSIGNALED(status)) << "a save failed";
    last = stored();
    ASSERT_FALSE(HasFailure());
  }
}

// Programs that save at the same time get ids of their own.
TEST_F(SavedProcess, TwoProgramsNeverTakeOneId) {
  std::vector<pid_t> children;
  for (const std::string prefix : {"a", "b"}) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      bool saved = true;
      for (int i = 0; i < 12; ++i) {
        const std::string name = prefix + std::to_string(i);
        saved = SaveComparisonProcess(program, selective(name, {name}, {name})) && saved;
      }
      _exit(saved ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  std::set<std::int32_t> ids;
  for (const std::string& name : names()) {
    const tSavedProcess read = GetSavedProcessDetails(program, name);
    EXPECT_EQ(read.arrSource, std::vector<std::string>{name});
    ids.insert(read.lngId);
  }
  EXPECT_EQ(ids.size(), 24U);
  EXPECT_EQ(*ids.rbegin(), 24);
}

}  // namespace
}  // namespace qrel
