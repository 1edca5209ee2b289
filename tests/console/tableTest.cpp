// One table from the command line: its records, and its values counted.
#include <cstdlib>
#include <fstream>

#include "tests/console/runQrel.h"
#include "tests/support.h"

namespace qrel {
namespace {

class TableCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("QREL_HOME", folder.path().c_str(), 1);
    ASSERT_EQ(run({"load", "S/A",
                   folder
                       .write("a.sql",
                              "CREATE TABLE t (a int, b nvarchar(10))\nCREATE TABLE none (a int)\n"
                              "INSERT t VALUES (1, N'x'), (2, NULL), (3, N'x'), (4, N'a\tb')")
                       .string()}),
              0)
        << err;
  }
  void TearDown() override { unsetenv("QREL_HOME"); }

  int run(const std::vector<std::string>& arguments) {
    const QrelRun result = runQrel(arguments);
    out = result.out;
    err = result.err;
    return result.code;
  }
  std::string file(const char* name) const {
    std::ifstream stream(folder.path() / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  TemporaryFolder folder;
  std::string out, err;
};

TEST_F(TableCommands, RecordsArePrintedOrWritten) {
  EXPECT_EQ(run({"view", "S/A", "--table", "t"}), 0) << err;
  EXPECT_EQ(out, "Row\ta\tb\n1\t1\tx\n2\t2\tNull\n3\t3\tx\n4\t4\ta\\tb\n");
  EXPECT_EQ(run({"view", "S/A", "--table", "T", "--rows", "2"}), 0) << err;
  EXPECT_EQ(out, "Row\ta\tb\n1\t1\tx\n2\t2\tNull\n");
  EXPECT_EQ(run({"view", "S/A", "--table", "t", "--rows", "3", "--csv", (folder.path() / "t.csv").string()}), 0) << err;
  EXPECT_EQ(out, "");
  EXPECT_EQ(file("t.csv"), "Row,a,b\r\n1,1,x\r\n2,2,Null\r\n3,3,x\r\n");
  EXPECT_EQ(run({"view", "S/A", "--table", "t", "--html", (folder.path() / "t.htm").string()}), 0) << err;
  EXPECT_NE(file("t.htm").find("<TD BGCOLOR = FFFFFF><FONT COLOR = 000000>&nbsp x &nbsp</TD>"), std::string::npos);
}

TEST_F(TableCommands, ValuesAreCounted) {
  EXPECT_EQ(run({"analyze", "S/A", "--table", "t", "--csv", (folder.path() / "t.csv").string()}), 0) << err;
  const std::string ofA = "a\tint\t4 unique values\n  1\t1\n  1\t2\n  1\t3\n  1\t4\n\n";
  EXPECT_EQ(out, ofA + "b\tnvarchar (10)\t3 unique values\n  2\tx\n  1\tNull\n  1\ta\\tb\n");
  EXPECT_NE(file("t.csv").find("\r\nb,nvarchar (10),3,x,2,Null,1,a\tb,1,,"), std::string::npos) << file("t.csv");
  EXPECT_EQ(run({"analyze", "S/A", "--table", "t", "--rows", "3", "--least"}), 0) << err;
  EXPECT_NE(out.find("b\tnvarchar (10)\t2 unique values\n  1\tNull\n  2\tx\n"), std::string::npos) << out;
}

TEST_F(TableCommands, WhatCantBeShownIsTold) {
  for (const char* command : {"view", "analyze"}) {
    EXPECT_EQ(run({command, "S/A", "--table", "none"}), 0) << err;
    EXPECT_EQ(out, "");
    EXPECT_NE(err.find("doesn't contain any data."), std::string::npos) << err;
    EXPECT_EQ(run({command, "S/A", "--table", "gone"}), 3);
    EXPECT_EQ(run({command, "S/A", "--table", "t", "--rows", "0"}), 2);
    EXPECT_EQ(run({command, "S/A", "--table", "t", "--csv", "a", "--html", "b"}), 2);
    EXPECT_EQ(run({command, "S/A", "--table", "t", "--csv", "/no/such/folder/a.csv"}), 3);
  }
}

}  // namespace
}  // namespace qrel
