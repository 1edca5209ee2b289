// Saved processes on the console: saved by a comparison, listed, run again with nobody there, removed.
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "platform/files.h"
#include "tests/console/consoleTest.h"
#include "tests/support.h"

namespace qrel {
namespace {

constexpr const char* savedSource = R"(
CREATE TABLE Item (Id int NOT NULL, Part nvarchar(30))
INSERT Item VALUES (1, N'bolt'), (2, N'5" <b>, "x"')
GO
CREATE PROCEDURE GetA AS SELECT 1
)";
constexpr const char* savedTarget = R"(
CREATE TABLE Item (Id int NOT NULL, Part nvarchar(30))
INSERT Item VALUES (1, N'bolt'), (2, N'nut')
GO
CREATE PROCEDURE GetA AS SELECT 2
)";

class ProcessCommands : public ConsoleTest {
 protected:
  void SetUp() override {
    load("S/A", savedSource);
    load("S/B", savedTarget);
  }
};

// A report as it is printed, without the line that every run writes anew.
std::string timeless(std::string text) { return std::regex_replace(text, std::regex("Time Elapsed: [0-9:]*"), ""); }

TEST_F(ProcessCommands, ARunPrintsWhatTheComparisonPrinted) {
  const std::vector<std::string> sides{"S/A", "S/B"};
  struct Case {
    std::vector<std::string> words;
    const char* listed;  // kind and sides, as "processes" lists them
  };
  const Case cases[] = {
      {{"compare", "--types", "all"}, "Meta-Data Comparison, All\tS/A\tS/B\t"},
      {{"compare", "--types", "procedures", "--details"}, "Meta-Data Comparison, Bulk, Details\tS/A\tS/B\t"},
      {{"compare", "--types", "tables", "--only", "Item"}, "Meta-Data Comparison, Selective, Simple\tS/A\tS/B\t"},
      {{"compare", "--type", "procedures", "--object", "GetA"},
       "Meta-Data Comparison, Individual\tS/A/GetA\tS/B/GetA\t"},
      {{"data", "--table", "Item", "--key", "Id"}, "Data Comparison, Single Table\tS/A/Item\tS/B/Item\t"},
      {{"data", "--tables", "Item"}, "Data Comparison, Selective\tS/A\tS/B\t"},
      {{"data", "--all"}, "Data Comparison, All\tS/A\tS/B\t"},
  };
  int id = 0;
  for (const Case& each : cases) {
    SCOPED_TRACE(each.listed);
    const std::string name = "p" + std::to_string(++id);
    std::vector<std::string> words = each.words;
    words.insert(words.begin() + 1, sides.begin(), sides.end());
    words.insert(words.end(), {"--save", name});
    const int code = run(words);
    const std::string first = timeless(out);
    EXPECT_TRUE(told("saved as process \"" + name + "\" with the id " + std::to_string(id))) << err;
    ASSERT_EQ(run({"processes"}), 0);
    EXPECT_TRUE(printed(std::to_string(id) + "\t" + name + "\t" + each.listed)) << out;
    EXPECT_EQ(run({"run", name}), code) << err;
    // The marked lines of a pair, and the heads of a table's differences, are the console's own.
    const std::string second = timeless(out);
    EXPECT_NE(first.find(second), std::string::npos) << second << "\nin\n" << first;
    EXPECT_TRUE(std::regex_search(
        err, std::regex("(^|\n)\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d qrel: process \"" + name + "\" has ended: ")))
        << err;
  }
}

TEST_F(ProcessCommands, TheStoredFileIsWrittenAndAnotherForOneRun) {
  ASSERT_EQ(run({"data", "S/A", "S/B", "--table", "Item", "--key", "Id", "--save", "d", "--csv", path("d.csv")}), 1)
      << err;
  const std::string csv = "Row,Id,Part\r\n1,2,5\" <b>, \"x\"\r\n1,2,nut\r\n";
  EXPECT_EQ(files::readWholeFile(path("d.csv")), csv);
  std::filesystem::remove(path("d.csv"));
  EXPECT_EQ(run({"run", "1"}), 1) << err;
  EXPECT_EQ(files::readWholeFile(path("d.csv")), csv);
  EXPECT_EQ(run({"run", "d", "--export", path("once.htm")}), 1) << err;
  EXPECT_NE(files::readWholeFile(path("once.htm")).find("&nbsp 5\" <b>, \"x\" &nbsp"), std::string::npos);
  EXPECT_EQ(run({"run", "d", "--format", "report"}), 2);
  EXPECT_EQ(run({"data", "S/A", "S/B", "--table", "Item", "--key", "Id", "--csv", path("q.csv"), "--rfc4180"}), 1)
      << err;
  EXPECT_EQ(files::readWholeFile(path("q.csv")), "Row,Id,Part\r\n1,2,\"5\"\" <b>, \"\"x\"\"\"\r\n1,2,nut\r\n");

  ASSERT_EQ(run({"compare", "S/A", "S/B", "--types", "tables", "--save", "r", "--report", path("r.txt")}), 0) << err;
  std::filesystem::remove(path("r.txt"));
  EXPECT_EQ(run({"run", "R"}), 0) << err;
  EXPECT_NE(files::readWholeFile(path("r.txt")).find("identical"), std::string::npos);
  EXPECT_EQ(run({"run", "r", "--export", path("no/r.txt")}), 4) << "the file can't be written";
}

TEST_F(ProcessCommands, AListThatIsNotTheOneSavedMakesTheVerdictIncomplete) {
  ASSERT_EQ(run({"compare", "S/A", "S/B", "--types", "procedures", "--only", "GetA", "--save", "s"}), 1) << err;
  const std::string list = path("qrel_001_src.txt");
  ASSERT_EQ(files::readWholeFile(list), "GetA\r\n");
  EXPECT_EQ(run({"run", "s"}), 1);
  folder.write("qrel_001_src.txt", "GetA\r\nGetB\r\n");
  EXPECT_EQ(run({"run", "s"}), 4);
  std::filesystem::remove(list);
  EXPECT_EQ(run({"run", "s"}), 4) << "nothing selected is identical, and says nothing";
  EXPECT_TRUE(told("Inconsistent Data: ")) << err;
}

TEST_F(ProcessCommands, WhatIsGoneIsToldWithThree) {
  EXPECT_EQ(run({"run", "x"}), 3);
  EXPECT_TRUE(told("There is no saved process \"x\"")) << err;
  ASSERT_EQ(run({"compare", "S/A", "S/B", "--type", "procedures", "--object", "GetA", "--save", "p"}), 1);
  const std::string ini = path("qrel_comps.ini");
  const std::string stored = files::readWholeFile(ini);
  const auto changed = [&](const std::string& from, const std::string& to) {
    std::string text = stored;
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << text;
    folder.write("qrel_comps.ini", text.replace(at, from.size(), to));
    return run({"run", "p"});
  };
  EXPECT_EQ(changed("ServerName2=S", "ServerName2=T"), 3) << "never against another server than the one that is meant";
  EXPECT_TRUE(told("Server T of process \"p\" isn't in the list")) << err;
  EXPECT_TRUE(out.empty()) << out;
  EXPECT_EQ(changed("DbName2=B", "DbName2=C"), 3);
  EXPECT_TRUE(told("Cannot run saved process - SQL Server database C not found.")) << err;
  EXPECT_EQ(changed("TableName1=GetA", "TableName1=GetB"), 3);
  EXPECT_TRUE(told("Cannot run saved process - object GetB not found.")) << err;
}

TEST_F(ProcessCommands, ShowRemoveReplaceAndRefusals) {
  const std::vector<std::string> save{"compare", "S/A", "S/B", "--types", "tables", "--save", "n\"1"};
  ASSERT_EQ(run(save), 0) << err;
  EXPECT_EQ(run(save), 2) << "a process isn't overwritten by the way";
  EXPECT_EQ(run({"compare", "S/A", "S/B", "--types", "tables", "--save", "N\"1", "--replace"}), 0) << err;
  ASSERT_EQ(run({"processes", "--json"}), 0);
  EXPECT_TRUE(printed("\"name\": \"n\\\"1\"")) << out;
  ASSERT_EQ(run({"processes", "show", "n\"1"}), 0);
  EXPECT_TRUE(printed("Comparison Type: Meta-Data Comparison\nComparison Sub Type: Bulk\n")) << out;
  EXPECT_EQ(run({"processes", "remove", "n\"1"}), 0);
  EXPECT_EQ(run({"processes", "show", "n\"1"}), 3);
  EXPECT_EQ(run({"compare", "S/A", "S/B", "--save", "a[b"}), 2);
  EXPECT_TRUE(told("Square brackets")) << err;
  EXPECT_EQ(run({"compare", "S/A", path("b.sql"), "--save", "t"}), 2) << "a temporary database is gone tomorrow";
  EXPECT_EQ(run({"compare", "S/A", "S/B", "--details", "--save", "t"}), 2) << "no kind of process is that";
  EXPECT_EQ(run({"processes"}), 0);
  EXPECT_EQ(out, "") << "what was refused saved nothing";
}

}  // namespace
}  // namespace qrel
