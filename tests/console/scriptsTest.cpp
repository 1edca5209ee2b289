// "qrel script" and "qrel references" as a person calls them.
#include <cstdlib>

#include "tests/console/runQrel.h"
#include "tests/support.h"

namespace qrel {
namespace {

class ConsoleScripts : public ::testing::Test {
 protected:
  void SetUp() override { setenv("QREL_HOME", folder.path().c_str(), 1); }
  void TearDown() override { unsetenv("QREL_HOME"); }

  int run(const std::vector<std::string>& arguments) {
    const QrelRun result = runQrel(arguments);
    out = result.out;
    err = result.err;
    return result.code;
  }
  std::string file(const std::string& name, const std::string& content) { return folder.write(name, content).string(); }
  bool told(const std::string& text) const { return err.find(text) != std::string::npos; }

  TemporaryFolder folder;
  std::string out, err;
};

TEST_F(ConsoleScripts, ACreateScriptMakesTheSameAgain) {
  const std::string all = file("all.sql",
                               "CREATE TABLE Orders (Id int IDENTITY(5,2) NOT NULL CONSTRAINT PK_Orders PRIMARY KEY,\n"
                               "  Note varchar(9) NULL CONSTRAINT DF_Note DEFAULT ('x'), Paid decimal(9,2) NULL)\nGO\n"
                               "CREATE VIEW Notes AS SELECT Note FROM Orders\nGO\n"
                               "CREATE PROCEDURE GetNotes @a int AS SELECT Note FROM Notes -- all\nGO\n"
                               "CREATE FUNCTION Twice (@a int) RETURNS int AS BEGIN RETURN 2 * @a END\nGO\n"
                               "CREATE TRIGGER Told ON Orders FOR INSERT AS PRINT 'x'\nGO\n");
  ASSERT_EQ(run({"load", "S/A", all}), 0) << err;
  std::string scripts;
  for (const auto& [type, name] : {std::pair("tables", "orders"),
                                   {"views", "Notes"},
                                   {"procedures", "GetNotes"},
                                   {"functions", "Twice"},
                                   {"triggers", "Told"}}) {
    ASSERT_EQ(run({"script", "S/A", "--type", type, name}), 0) << name << err;
    scripts += out + "GO\r\n";
  }
  const std::string again = file("again.sql", scripts);
  ASSERT_EQ(run({"load", "S/B", again}), 0) << out << err << scripts;
  EXPECT_EQ(run({"compare", "S/A", "S/B", "--types", "all"}), 0) << out;
  EXPECT_EQ(run({"load", "S/A", again}), 2) << "it holds objects";
  EXPECT_EQ(run({"load", "S/A", again, "--add"}), 0) << "over what is there: it is dropped first\n" << out << err;
  EXPECT_EQ(run({"compare", "S/A", "S/B", "--types", "all"}), 0) << out;
}

TEST_F(ConsoleScripts, WhatCanNotBeScriptedIsTold) {
  const std::string all = file("all.sql",
                               "CREATE PROCEDURE Secret WITH ENCRYPTION AS SELECT 1\nGO\n"
                               "CREATE PROCEDURE [x'; DROP TABLE t --] AS SELECT 1\nGO\n"
                               "CREATE TABLE [a.b] (c int)\n");
  ASSERT_EQ(run({"load", "S/A", all}), 0) << err;
  EXPECT_EQ(run({"script", "S/A", "--type", "procedures", "Secret"}), 4);
  EXPECT_EQ(out, "") << "it would be dropped and not made again";
  EXPECT_EQ(run({"script", "S/A", "--type", "procedures", "x'; DROP TABLE t --"}), 3);
  EXPECT_EQ(out, "");
  EXPECT_EQ(run({"script", "S/A", "--type", "tables", "a.b"}), 3);
  EXPECT_EQ(run({"script", "S/A", "--type", "procedures", "Gone"}), 3);
  EXPECT_EQ(run({"script", "S/A", "--type", "constraints", "x"}), 2);
  EXPECT_EQ(run({"script", "S/A", "x"}), 2);
  EXPECT_EQ(run({"script", "S/A", "x", "--type", "tables", "--table", "t"}), 2);
}

TEST_F(ConsoleScripts, AnUpdateScriptIsADraft) {
  const std::string key = "CREATE TABLE t (Id int NOT NULL CONSTRAINT PK_t PRIMARY KEY, a int NULL)\n";
  const std::string a = file("a.sql", key + "ALTER TABLE t ADD b bit NULL\nCREATE INDEX IX_new ON t (a)");
  const std::string b = file("b.sql", key);
  EXPECT_EQ(run({"script", a, b, "--table", "t"}), 1) << err;
  EXPECT_EQ(out, "ALTER TABLE t ADD [b] [bit] NULL\r\n");
  EXPECT_TRUE(told("a draft, to be read before it is used")) << err;
  EXPECT_TRUE(told("only in Source: IX_new.")) << err;
  EXPECT_EQ(run({"script", b, b, "--table", "T"}), 0);
  EXPECT_EQ(out, "");
  EXPECT_TRUE(told("The selected tables are identical."));
  EXPECT_EQ(run({"script", file("c.sql", key + "CREATE INDEX IX_new ON t (a)"), b, "--table", "t"}), 1) << err;
  EXPECT_EQ(out, "") << "a new index alone is a difference, but nothing to script";
  EXPECT_EQ(run({"script", file("o.sql", "CREATE TABLE o (a int NULL, Id int NOT NULL CONSTRAINT PK_t PRIMARY KEY)"), b,
                 "--table", "o", "--target-table", "t"}),
            0);
  EXPECT_TRUE(told("there is nothing to script")) << err;
  // Target's changed index stands at a place where Source has none.
  const std::string d = file("d.sql", key + "CREATE INDEX IX_y ON t (Id)\nCREATE INDEX IX_a ON t (a)");
  const std::string e = file("e.sql", key + "CREATE INDEX IX_a ON t (Id)");
  EXPECT_EQ(run({"script", e, d, "--table", "t"}), 4);
  EXPECT_TRUE(told("There is no script")) << err;
  EXPECT_EQ(run({"script", a, b, "--table", "gone"}), 3);
}

TEST_F(ConsoleScripts, ReferencesOfOneOrAll) {
  const std::string all =
      file("all.sql",
           "CREATE TABLE orders (Id int)\nGO\nCREATE PROCEDURE a1 AS SELECT Id FROM orders\nGO\n"
           "CREATE PROCEDURE a2 AS SELECT * FROM gone\nGO\nCREATE VIEW v AS SELECT Id FROM orders\n");
  EXPECT_EQ(run({"references", all, "--type", "procedures", "A1"}), 1);
  EXPECT_EQ(out, "Procedure 'a1' contains following references to non-existent objects:\n\tid\n");
  EXPECT_EQ(run({"references", all, "--type", "procedures", "a1", "--sure"}), 0);
  EXPECT_EQ(out, "Procedure 'a1' doesn't contain any references to non-existent objects.\n");
  EXPECT_TRUE(told("left out are columns of any table")) << err;
  EXPECT_EQ(run({"references", all, "--all", "--sure"}), 1);
  EXPECT_EQ(out, "Procedure 'a2' contains following references to non-existent objects:\n\tgone\tline 1\n");
  EXPECT_EQ(run({"references", all, "--all", "--type", "views", "--sure"}), 0);
  EXPECT_EQ(out, "");
  EXPECT_EQ(run({"references", all, "--all"}), 1);
  EXPECT_NE(out.find("View 'v' contains"), std::string::npos) << out;
  for (const std::vector<std::string>& wrong : {std::vector<std::string>{"references", all},
                                                {"references", all, "a1"},
                                                {"references", all, "--all", "a1"},
                                                {"references", all, "--type", "tables", "orders"}})
    EXPECT_EQ(run(wrong), 2);
  EXPECT_EQ(run({"references", all, "--type", "procedures", "gone"}), 3);
  const std::string secret = file("s.sql", "CREATE PROCEDURE s WITH ENCRYPTION AS SELECT 1");
  EXPECT_EQ(run({"references", secret, "--all", "--sure"}), 4) << "what can't be read isn't free of them";
}

}  // namespace
}  // namespace qrel
