// Records of tables compared from the command line: by what is given, by what is stored, and with what can go wrong.
#include <cstdlib>

#include "tests/console/consoleTest.h"
#include "tests/support.h"

namespace qrel {
namespace {

constexpr const char* recordSource = R"(
CREATE TABLE Item (Id int, Part nvarchar(10), Price decimal(9,2))
INSERT Item VALUES (1, N'bolt', 1), (2, N'nut', 2), (3, N'pin', 3)
CREATE TABLE Same (a int)
INSERT Same VALUES (1)
)";
constexpr const char* recordTarget = R"(
CREATE TABLE Item (Id int, Part nvarchar(10), Price decimal(9,2))
INSERT Item VALUES (3, N'pin', 3), (2, N'nut', 2.5), (4, N'line
end', NULL)
CREATE TABLE Same (a int)
INSERT Same VALUES (1)
CREATE TABLE Item2 (Nr int, Name nvarchar(10), Price decimal(9,2))
INSERT Item2 VALUES (3, N'pin', 3), (2, N'nut', 2), (1, N'bolt', 1)
)";

class DataCommand : public ConsoleTest {
 protected:
  void SetUp() override {
    load("S/A", recordSource);
    load("S/B", recordTarget);
  }
  int data(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"data", "S/A", "S/B"});
    return run(arguments);
  }
};

TEST_F(DataCommand, PairsByKeyOrByPosition) {
  EXPECT_EQ(data({"--table", "Item", "--key", "id"}), 1) << err;
  // 1 has no partner; 2 differs in its price; 4 is left over; the counts are equal.
  EXPECT_TRUE(printed("Comparison method: Primary Key \nSource PK: Id\nTarget PK: Id\n")) << out;
  EXPECT_TRUE(printed("first table: 3\nNumber of records in second table: 3\nNumber of different records: 2\n")) << out;
  EXPECT_TRUE(
      printed("Row               Id  Part       Price\n"
              "1    Source only  1   bolt       1.00\n"
              "2    Source       2   nut        *2.00\n"
              "2    Target       2   nut        *2.50\n"
              "1    Target only  4   line\\nend  Null\n"))
      << out;

  EXPECT_EQ(data({"--table", "Item", "--sort", "Id", "--set", "MaxRowsInDiffTable=2"}), 1) << err;
  EXPECT_TRUE(printed("Comparison method: Record by Record\n")) << out;
  EXPECT_TRUE(printed("Number of different records: 3\nOnly first 2 different records are shown\n")) << out;
  EXPECT_TRUE(told("There are 3 differences found by the program.")) << err;
}

TEST_F(DataCommand, TakesTheTargetsOwnNamesAndSeveralTables) {
  // The Target's columns have other names, so its own are taken.
  EXPECT_EQ(data({"--table", "Item", "--target-table", "Item2", "--key", "Id", "--target-key", "Nr"}), 0) << out << err;
  EXPECT_TRUE(printed("Target Table: Item2 (Database: B, Server: S)\nData stored in both tables is identical.\n"));
  EXPECT_EQ(data({"--table", "Same", "--table", "Item"}), 1);
  EXPECT_LT(out.find("Source Table: Same"), out.find("Source Table: Item"));
  EXPECT_EQ(data({"--table", "Same"}), 0);
}

TEST_F(DataCommand, UsesWhatIsStoredForTheTables) {
  std::string sections;
  for (const char* name : {"S.A.Item", "S.B.Item"})
    sections += "[" + std::string(name) + "]\r\nCompMethod=1\r\nCompKey=Id\r\nSecondaryCompKey=No Field\r\n";
  folder.write("qrel_tables_comps.ini", sections);
  folder.write("qrel_ignored_cols_data.ini", "[S.A.Item]\r\n0=Price\r\n");
  EXPECT_EQ(data({"--table", "Item"}), 1);
  EXPECT_TRUE(printed("Comparison method: Primary Key \nSource PK: Id\n")) << out;
  EXPECT_TRUE(printed("Ignored Column: Price\n")) << out;
  EXPECT_FALSE(printed("2.50")) << "the prices don't count";
  EXPECT_EQ(data({"--table", "Item", "--offset", "1"}), 1);
  EXPECT_TRUE(printed("Comparison method: Record by Record\n")) << "what is given stands before what is stored";
}

TEST_F(DataCommand, TellsWhatIsWrong) {
  struct Case {
    std::vector<std::string> arguments;
    int code;
    std::string words;
  };
  for (const Case& each : std::vector<Case>{
           {{"--table", "Same", "--table", "Nowhere"}, 3, "There is no table \"Nowhere\" in S/A."},
           {{"--table", "Item", "--key", "Nr"}, 2, "There is no column \"Nr\" to compare by in table Item of S/A."},
           {{"--table", "Item", "--sort", "Id,Part,Price,Id"}, 2, "names more than three columns"},
           {{"--table", "Item", "--table", "Same", "--target-table", "Item2"}, 2, "one --table only"},
           {{"--table", "Item", "--offset", "0"}, 2, "--offset"},
           {{}, 2, "--table, --tables or --all is required"}}) {
    EXPECT_EQ(data(each.arguments), each.code) << each.words;
    EXPECT_TRUE(told(each.words)) << err;
    EXPECT_EQ(out, "");
  }
  // An offset behind the end leaves nothing to read.
  EXPECT_EQ(data({"--table", "Item", "--offset", "9"}), 3);
  EXPECT_TRUE(told("Error occured while comparing records.")) << err;
  EXPECT_TRUE(told("the data of Item and Item couldn't be compared")) << err;
}

TEST_F(DataCommand, LongRowsAreShownByValueAndSameColumnsLeftOut) {
  EXPECT_EQ(data({"--table", "Item", "--key", "Id", "--vertical"}), 1);
  EXPECT_TRUE(printed("Row 2  Source\n  Id     2\n  Part   nut\n* Price  2.00\n\nRow 2  Target\n")) << out;
  EXPECT_EQ(data({"--table", "Item", "--key", "Id", "--vertical", "--only-differing"}), 1);
  EXPECT_TRUE(printed("Row 1  Source only\n  Id     1\n  Price  1.00\n\nRow 2  Source\n  Id     2\n* Price  2.00\n"))
      << out;
  EXPECT_EQ(data({"--table", "Item", "--key", "Id", "--only-differing"}), 1);
  EXPECT_TRUE(printed("Row               Id  Price\n1    Source only  1   1.00\n2    Source       2   *2.00\n")) << out;
}

TEST_F(DataCommand, APrimaryKeyThatWasNotUsedIsNamed) {
  ASSERT_EQ(run({"load", "S/K",
                 folder
                     .write("k.sql",
                            "CREATE TABLE K (a int NOT NULL, [b b] int NOT NULL, c int, "
                            "CONSTRAINT pkK PRIMARY KEY (a, [b b]))\n"
                            "INSERT K VALUES (1, 2, 3)\n")
                     .string()}),
            0);
  ASSERT_EQ(run({"load", "S/L",
                 folder
                     .write("l.sql",
                            "CREATE TABLE K (a int, [b b] int, c int)\n"
                            "INSERT K VALUES (1, 2, 4)\n")
                     .string()}),
            0);
  EXPECT_EQ(run({"data", "S/K", "S/L", "--table", "K"}), 1);
  EXPECT_TRUE(told("qrel: K was compared by position. It has a primary key: --key a,b b compares by it.\n")) << err;
  EXPECT_EQ(run({"data", "S/K", "S/L", "--table", "K", "--key", "a,b b"}), 1);
  EXPECT_EQ(err, "");
}

}  // namespace
}  // namespace qrel
