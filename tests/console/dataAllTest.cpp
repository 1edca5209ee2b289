// Many tables compared in one run, and keys tested, from the command line.
#include <cstdlib>

#include "platform/files.h"
#include "platform/text.h"
#include "tests/console/consoleTest.h"
#include "tests/support.h"

namespace qrel {
namespace {

constexpr const char* allOfSource = R"(
CREATE TABLE Item (Id int NOT NULL, Part nvarchar(10) NULL, Tag binary(2) NOT NULL)
INSERT Item VALUES (1, N'it''s', 0x0102), (2, N'nut', 0x0102), (3, N'pin', 0x0103)
CREATE TABLE Same (a int)
INSERT Same VALUES (1)
CREATE TABLE Gone (a int)
CREATE TABLE [Two.Parts] (a int)
)";
constexpr const char* allOfTarget = R"(
CREATE TABLE Item (Id int NOT NULL, Part nvarchar(10) NULL, Tag binary(2) NOT NULL)
INSERT Item VALUES (1, N'bolt', 0x0102), (1, NULL, 0x0102), (3, N'pin', 0x0103)
CREATE TABLE Same (a int)
INSERT Same VALUES (1)
CREATE TABLE Fresh (a int)
)";

class DataAllCommand : public ConsoleTest {
 protected:
  void SetUp() override {
    load("S/A", allOfSource);
    load("S/B", allOfTarget);
  }
  int data(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"data", "S/A", "S/B"});
    return run(arguments);
  }
};

TEST_F(DataAllCommand, OneReportOverAllTables) {
  const std::string report = (folder.path() / "report.txt").string();
  EXPECT_EQ(data({"--all", "--report", report}), 4) << err;
  EXPECT_EQ(out,
            "Comparison of databases\n\nSource database S.A\nTarget database S.B\n\nComparison of data in tables\n\n"
            "There are 4 tables in Source database.\nThere are 3 tables in Target database.\n\n"
            "List of tables which differ:\n\tItem - 2 different record(s)\n\t(1 table)\n"
            "List of tables which exist in Source database but not in Target database:\n\tGone\n\t(1 table)\n"
            "List of tables which exist in Target database but not in Source database:\n\tFresh\n\t(1 table)\n"
            "List of tables which could not be compared:\n\tTwo.Parts\n\t(1 table)\n"
            "One table [Same] has identical data in both databases.\n");
  EXPECT_EQ(replaceAll(files::readWholeFile(report), "\r\n", "\n") + "\n", out);
  EXPECT_NE(err.find("not compared: table Two.Parts: the point in its name"), std::string::npos) << err;
}

TEST_F(DataAllCommand, SomeTablesAndWhatTheirReportIsWorth) {
  struct Case {
    const char* tables;
    int code;
    const char* printed;
  };
  for (const Case& each :
       std::vector<Case>{{"Same", 0,
                          "\n1 objects selected in Source database\n1 objects selected in Target database\n\n"
                          "Data in all selected tables in both databases is identical.\n"},
                         {"same, ITEM", 1, "\tItem - 2 different record(s)\n"},
                         {"Gone,Same", 1,
                          "\n2 objects selected in Source database\n1 objects selected in Target database\n\n"
                          "List of tables which exist in Source database but not in Target database:\n\tGone\n"},
                         {"Fresh", 1, "exist in Target database but not in Source database:\n\tFresh\n"}}) {
    EXPECT_EQ(data({"--tables", each.tables}), each.code) << each.tables << err;
    EXPECT_NE(out.find(each.printed), std::string::npos) << each.tables << '\n' << out;
  }
  EXPECT_EQ(data({"--tables", "Same,Nowhere"}), 3);
  EXPECT_NE(err.find("There is no table \"Nowhere\" in S/A or S/B."), std::string::npos) << err;
}

TEST_F(DataAllCommand, AKeyIsTestedOnBothSides) {
  const std::string valid =
      "Fields selection is valid - data stored in selected fields is unique and doesn't contain nulls.\n";
  struct Case {
    std::vector<std::string> arguments;
    int code;
    std::string source, target;  // how the verdicts begin; empty: none
    std::string message;
  };
  for (const Case& each : std::vector<Case>{
           {{"--table", "item", "--key", "id"}, 1, valid, "Selected fields (Id) contain duplicate values (1) and", ""},
           {{"--table", "Same", "--key", "A"}, 0, valid, valid, ""},
           {{"--table", "Same", "--target-table", "Fresh", "--key", "a"},
            0,
            valid,
            "Table Fresh doesn't contain any",
            ""},
           {{"--table", "Item", "--key", "Id,Tag"}, 3, "", "", "cannot determine if the fields are unique."},
           {{"--table", "Item", "--key", "Part"}, 3, "", "Field Part contains Nulls", "cannot determine if the fields"},
           {{"--table", "Item", "--key", "Nr"}, 2, "", "", "There is no column \"Nr\""},
           {{"--table", "Same", "--table", "Item", "--key", "a"},
            2,
            "",
            "",
            "--validate goes with one --table only."}}) {
    std::vector<std::string> arguments = each.arguments;
    arguments.push_back("--validate");
    EXPECT_EQ(data(arguments), each.code) << err;
    SCOPED_TRACE(out + err);
    EXPECT_EQ(out.find("Source Table: ") != std::string::npos, !each.source.empty());
    EXPECT_EQ(out.find("Target Table: ") != std::string::npos, !each.target.empty());
    for (const std::string& part : {each.source, each.target})
      EXPECT_NE((part.empty() ? err : out).find(part.empty() ? "" : ", Server: S)\n" + part), std::string::npos);
    EXPECT_NE(err.find(each.message), std::string::npos);
  }
  EXPECT_FALSE(files::exists(folder.path() / "qrel_tables_comps.ini")) << "nothing is stored";
}

TEST_F(DataAllCommand, WhatGoesTogetherIsChecked) {
  for (const auto& [arguments, words] : std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"--all", "--key", "Id"}, "excludes"},
           {{"--all", "--tables", "Item"}, "excludes"},
           {{"--all", "--table", "Item"}, "excludes"},
           {{"--tables", "Item", "--validate"}, "excludes"},
           {{"--table", "Item", "--report", "x"}, "--report requires --tables or --all"},
           {{"--table", "Item", "--validate"}, "--validate requires --key"}}) {
    EXPECT_EQ(data(arguments), 2) << words;
    EXPECT_NE(err.find(words), std::string::npos) << err;
  }
}

}  // namespace
}  // namespace qrel
