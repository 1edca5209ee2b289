// The console's commands as a person calls them: output, messages, exit codes.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "tests/console/consoleTest.h"
#include "tests/embedded/folderState.h"
#include "tests/support.h"

namespace qrel {
namespace {

using Commands = ConsoleTest;

TEST_F(Commands, LoadListAndPrint) {
  const std::string script =
      file("s.sql", "CREATE TABLE b (x int)\nGO\nCREATE TABLE a (y int NOT NULL)\nINSERT a VALUES (1),(2)\n");
  ASSERT_EQ(run({"load", "S/D", script}), 0) << err;
  EXPECT_NE(out.find("rows                         2\n"), std::string::npos) << out;
  EXPECT_EQ(run({"databases", "S"}), 0);
  EXPECT_EQ(out, "D\nmaster\n");
  EXPECT_EQ(run({"objects", "S/D", "--type", "tables"}), 0);
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 2);
  EXPECT_TRUE(out.starts_with("a\t")) << out;
  EXPECT_EQ(std::count(out.begin(), out.end(), '\t'), 6) << "name, date, id, type";
  EXPECT_TRUE(out.ends_with("\ttable\n")) << out;
  EXPECT_EQ(run({"text", "S/D", "--type", "tables", "A"}), 0);
  EXPECT_EQ(out, "[y] [int] NOT NULL\n") << "and nothing else";
  EXPECT_EQ(run({"text", script, "--type", "tables", "b"}), 0);
  EXPECT_EQ(out, "[x] [int] NULL\n");
}

// Settings too: the first start alone writes where it ran.
TEST_F(Commands, ReadingLeavesEveryFileAsItIs) {
  const std::string script = file("s.sql",
                                  "CREATE TABLE t (a int, b varchar(9))\nINSERT t VALUES (1, 'x')\nGO\n"
                                  "CREATE PROCEDURE [x'; drop table t; --] AS SELECT 1\nGO\n"
                                  "CREATE PROCEDURE [y'; drop database B; --] AS SELECT 1\n");
  for (const char* database : {"S/A", "S/B"}) ASSERT_EQ(run({"load", database, script}), 0) << err;
  const auto before = stateOf(folder.path());
  const std::vector<std::string> commands[] = {
      {"servers"},
      {"databases", "S"},
      {"objects", "S/A"},
      {"text", "S/A", "--type", "tables", "t"},
      {"text", "S/A", "--type", "procedures", "x'; drop table t; --"},
      {"compare", "S/A", "S/B", "--types", "procedures"},
      {"compare", "S/A", "S/B", "--types", "all", "--details"},
      {"compare", "S/A", "S/B", "--type", "tables", "--object", "t"},
      {"data", "S/A", "S/B", "--table", "t", "--key", "a"},
      {"script", "S/A", "--type", "tables", "t"},
      {"script", "S/A", "S/B", "--table", "t"},
      {"references", "S/A", "--all"},
      {"references", "S/A", "--all", "--sure"},
      {"options"},
  };
  for (const auto& command : commands) {
    run(command);
    EXPECT_EQ(stateOf(folder.path()), before) << command.front() << ": " << err;
  }
}

TEST_F(Commands, TellWhatIsWrongAndEndWithTheRightCode) {
  const std::string good = file("good.sql", "CREATE TABLE t (a int)");
  const std::string odd = file("odd.sql", "CREATE TABLE t (a int)\nFROBNICATE the table\n");
  ASSERT_EQ(run({"load", "S/D", good}), 0) << err;
  struct Case {
    std::vector<std::string> arguments;
    int code;
    std::string message;
  };
  const Case cases[] = {
      {{}, 2, "Usage: qrel"},
      {{"comapre", "S/D", "S/D"}, 2, "qrel: \"comapre\" is no command; did you mean \"compare\"?"},
      {{"--set", "CaseSensitive=0", "servers", "ad", "x"},
       2,
       "\"servers ad\" is no command; did you mean \"servers add\"?"},
      {{"zzzzzzzz"}, 2, "qrel: \"zzzzzzzz\" is no command. \"qrel"},
      {{"compare", "S/D"}, 2, "qrel: TARGET is required\n\"qrel compare --help\""},
      {{"options", "CaseSensitiv"}, 2, "did you mean \"CaseSensitive\"?"},
      {{"options", "CaseSensitive", "perhaps"}, 2, "on or off"},
      {{"options", "Count", "7"}, 2, "qrel servers add"},
      {{"compare", "S/D", "S/D", "--object", "t"}, 2, "--type"},
      {{"objects", "S/D", "--type", "sheep"}, 2, "\"sheep\" is no type"},
      {{"objects", "justaname"}, 2, "neither SERVER/DATABASE nor"},
      {{"objects", "S/D", "--set", "Nonsense=1"}, 2, "qrel options"},
      {{"objects", "S/D", "--set", "CaseSensitive=perhaps"}, 2, "on or off"},
      {{"objects", "missing.sql"}, 3, "\"missing.sql\": no such file or folder."},
      {{"objects", "./x"}, 3, "\"./x\": no such file or folder."},
      {{"objects", "a/b"}, 3, "\"a/b\": no such file or folder, and there is no server \"a\""},
      {{"load", "S/D", "missing.sql"}, 3, "missing.sql"},
      {{"databases", "Nowhere"}, 3, "qrel load"},
      {{"objects", "S/Nothing"}, 3, "Cannot open database \"Nothing\""},
      {{"text", "S/D", "--type", "tables", "nothere"}, 3, "There is no table \"nothere\" in S/D."},
      {{"compare", "S/D", "S/Nothing"}, 3, "Cannot open database"},
      {{"load", "S/E", odd}, 4, "odd.sql:2: skipped: FROBNICATE the table"},
      {{"load", "S/E", file("esc.sql", "DROP TABLE [\x1B[31m\xE2\x80\xAEx]"), "--add"}, 4, "'\\x1B[31m\\u202Ex'"},
      {{"load", "S/E", good, "--version", "9."}, 2, "--version \"9.\": expected one to four numbers"},
      {{"load", "S/E", good, "--version", "x"}, 2, "--version \"x\""},
      {{"load", "S/E", good, "--version=-1"}, 2, "--version \"-1\""},
      {{"load", "S/E", good, "--version", ""}, 2, "--version \"\""},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(run(each.arguments), each.code) << each.message << '\n' << err;
    EXPECT_TRUE(told(each.message)) << each.message << "\nbut: " << err;
  }
  std::ofstream(folder.path() / "servers" / "S" / "D.mdf", std::ios::binary) << std::string(8192, 'x');
  EXPECT_EQ(run({"objects", "S/D"}), 3);
  EXPECT_TRUE(told("D.mdf")) << err;
}

TEST_F(Commands, ASideIsAFolderWithAllThatIsInIt) {
  std::filesystem::create_directories(folder.path() / "scripts" / "deep" / "er");
  file("scripts/a.sql", "CREATE TABLE a (x int)");
  file("scripts/deep/er/b.sql", "CREATE TABLE b (x int)");
  file("scripts/deep/notes.txt", "");
  const std::string scripts = (folder.path() / "scripts").string();
  EXPECT_EQ(run({"objects", scripts, "--type", "tables"}), 0) << err;
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 2) << out;
  EXPECT_TRUE(told("scripts: 1 file that is no .sql file was not read: deep/notes.txt.")) << err;
  EXPECT_EQ(run({"objects", scripts + "/.", "--type", "tables"}), 0) << err;
  std::filesystem::create_symlink("nowhere", folder.path() / "scripts" / "lost.sql");
  EXPECT_EQ(run({"compare", scripts, scripts, "--types", "tables"}), 4) << err;
}

// The statements of a published script in their summary: what became of each is one of five things.
TEST_F(Commands, TheSummaryAddsUp) {
  const std::string script =
      file("s.sql",
           "CREATE TABLE t (a int)\nINSERT t VALUES (1)\nFROBNICATE\nDROP TABLE none\nGO\n"
           "IF 1 = 1 INSERT t VALUES (2) ELSE INSERT t VALUES (3)\nGO 2\nPRINT 'x'\n:on error exit\n");
  EXPECT_EQ(run({"load", "S/D", script}), 4);
  std::map<std::string, long> summary;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);)
    summary[line.substr(0, line.find_last_of(' ') + 1).substr(0, 20)] = std::stol(line.substr(20));
  const auto count = [&](std::string name) { return summary[name + std::string(20 - name.size(), ' ')]; };
  EXPECT_EQ(count("statements"), 9) << out;
  EXPECT_EQ(count("  made"), 1) << out;
  EXPECT_EQ(count("  ran"), 5) << "the IF and the branch that it takes, twice: " << out;
  EXPECT_EQ(count("  without effect"), 1) << out;
  EXPECT_EQ(count("  skipped"), 1) << out;
  EXPECT_EQ(count("  refused"), 1) << out;
}

TEST_F(Commands, NamesMayHaveTheirSchemaBracketsAndAnyCase) {
  load("S/A",
       "CREATE SCHEMA s\nGO\nCREATE VIEW dbo.V AS SELECT 1 a\nGO\nCREATE TABLE t (a int)\nCREATE TABLE s.t (b int)");
  load("S/B", "CREATE VIEW dbo.V AS SELECT 2 a\nGO\nCREATE VIEW [a.b] AS SELECT 1 a");
  for (const char* name : {"V", "v", "dbo.v", "[V]", "[dbo].[V]"}) {
    EXPECT_EQ(run({"compare", "S/A", "S/B", "--types", "views", "--only", name}), 1) << name << err;
    EXPECT_TRUE(printed("List of views which differ:\n\tV\n")) << name << out;
    EXPECT_EQ(run({"text", "S/A", "--type", "views", name}), 0) << name << err;
  }
  EXPECT_EQ(run({"text", "S/A", "--type", "tables", "[s].[t]"}), 0) << err;
  EXPECT_TRUE(printed("[b] [int]")) << out;
  EXPECT_EQ(run({"text", "S/B", "--type", "views", "a.b"}), 0) << "a point in a name: " << err;
  EXPECT_EQ(run({"text", "S/B", "--type", "views", "s.V"}), 3) << out;
  EXPECT_EQ(run({"compare", "S/A", "S/B", "--only", "V", "--only", "nothere"}), 3) << out;
  EXPECT_TRUE(told("There is no object \"nothere\" in S/A or S/B.")) << err;
}

TEST_F(Commands, WhatALoadLeftOutIsKnownToLaterComparisons) {
  const std::string odd = file("odd.sql", "CREATE TABLE t (a int)\nFROBNICATE the table\n");
  const std::string good = file("good.sql", "CREATE TABLE t (a int)");
  const std::string other = file("other.sql", "CREATE TABLE t (b int)");
  ASSERT_EQ(run({"load", "S/Odd", odd}), 4);
  for (const std::string& side : {std::string("S/Odd"), odd}) {
    EXPECT_EQ(run({"compare", side, good}), 4) << side;
    EXPECT_EQ(run({"compare", side, good, "--allow-skipped"}), 0) << side << err;
    EXPECT_EQ(run({"compare", other, side, "--type", "tables", "--object", "t", "--allow-skipped"}), 1) << side << err;
    EXPECT_EQ(run({"data", side, good, "--table", "t"}), 4) << side;
  }
  ASSERT_EQ(run({"load", "S/Odd", file("more.sql", "CREATE TABLE u (a int)\nBOTHER u"), "--add"}), 4);
  EXPECT_EQ(run({"objects", "S/Odd"}), 4);
  EXPECT_TRUE(told("S/Odd lacks what its loads left out (statements skipped: 2, ")) << err;
  // What isn't a statement isn't allowed by the flag: here a file that couldn't be read.
  std::filesystem::create_directory(folder.path() / "part");
  file("part/a.sql", "CREATE TABLE t (a int)");
  std::filesystem::create_symlink("nowhere", folder.path() / "part" / "lost.sql");
  EXPECT_EQ(run({"compare", path("part"), good, "--allow-skipped"}), 4) << err;
  ASSERT_EQ(run({"load", "S/Odd", good, "--replace"}), 0) << err;
  EXPECT_EQ(run({"compare", "S/Odd", good}), 0) << err;
}

TEST_F(Commands, AFailedLoadLeavesTheDatabaseAsItWas) {
  const std::string first = file("first.sql", "CREATE TABLE t (a int)");
  ASSERT_EQ(run({"load", "S/D", first}), 0);
  EXPECT_EQ(run({"load", "S/D", first, (folder.path() / "missing.sql").string(), "--replace"}), 3);
  EXPECT_EQ(run({"text", "S/D", "--type", "tables", "t"}), 0) << err;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path() / "servers" / "S"))
    EXPECT_EQ(entry.path().string().find("loading"), std::string::npos) << entry.path();
}

TEST_F(Commands, ServersAreAddedAndRemoved) {
  ASSERT_EQ(run({"load", "Local/D", file("s.sql", "CREATE TABLE t (a int)")}), 0);
  EXPECT_EQ(run({"servers", "add", "Nowhere"}), 3);
  EXPECT_TRUE(told("Cannot connect to the server - server does not exist or access denied."));
  EXPECT_EQ(run({"servers", "add", "Local", "--database", "D"}), 0) << err;
  EXPECT_EQ(run({"servers"}), 0);
  EXPECT_TRUE(out.starts_with("Local\tWindows authentication\tD\t")) << out;
  EXPECT_EQ(run({"servers", "add", "LOCAL"}), 3);
  EXPECT_TRUE(told("This server is already added to the list."));
  EXPECT_EQ(run({"servers", "remove", "Local"}), 2) << "nobody to ask";
  EXPECT_TRUE(told("--yes")) << err;
  EXPECT_EQ(run({"servers", "remove", "Local", "--yes"}), 0) << err;
  EXPECT_EQ(run({"servers"}), 0);
  EXPECT_EQ(out, std::string("Local\tembedded\t\t") + defaultProductVersion + "\n");
}

TEST_F(Commands, APairIsComparedWithItsMarks) {
  const std::string source = file("a.sql", "CREATE PROCEDURE dbo.p AS\r\n  SELECT 1\r\n  SELECT 2\r\n");
  const std::string target = file("b.sql", "CREATE PROCEDURE p AS\r\n  SELECT 1\r\n  SELECT 2\r\n");
  const std::string other = file("c.sql", "CREATE PROCEDURE dbo.p AS\r\n  SELECT 1\r\n  SELECT 3\r\n  SELECT 2\r\n");
  const std::vector<std::string> object = {"--type", "procedures", "--object", "p"};
  const auto compare = [&](const std::string& a, const std::string& b) {
    std::vector<std::string> arguments = {"compare", a, b};
    arguments.insert(arguments.end(), object.begin(), object.end());
    return run(arguments);
  };
  EXPECT_EQ(compare(source, target), 0) << out;
  EXPECT_TRUE(
      out.find("The selected procedures are identical.\n\nPlease note that option 'Ignore Columns Order' is set "
               "ON.\n") != std::string::npos)
      << out;
  EXPECT_EQ(compare(source, other), 1) << err;
  EXPECT_TRUE(
      out.ends_with("The selected procedures are different.\n\n"
                    "Source:\n  CREATE PROCEDURE dbo.p AS\n    SELECT 1\n    SELECT 2\n\n"
                    "Target:\n  CREATE PROCEDURE dbo.p AS\n    SELECT 1\n+   SELECT 3\n    SELECT 2\n"))
      << out;
}

TEST_F(Commands, ColoursComeWhereTheyAreWanted) {
  load("S/A", "CREATE TABLE t (a int)");
  load("S/B", "CREATE TABLE t (b int)");
  std::vector<std::string> pair = {"compare", "S/A", "S/B", "--type", "tables", "--object", "t"};
  EXPECT_EQ(run(pair), 1);
  const std::string plain = out;
  EXPECT_EQ(out.find('\033'), std::string::npos) << "no terminal";
  pair.insert(pair.end(), {"--color", "always"});
  setenv("NO_COLOR", "1", 1);
  EXPECT_EQ(run(pair), 1);
  unsetenv("NO_COLOR");
  EXPECT_TRUE(printed("\033[31m- [a] [int] NULL\033[0m")) << "what is asked for outranks NO_COLOR: " << out;
  pair.back() = "never";
  EXPECT_EQ(run(pair), 1);
  EXPECT_EQ(out, plain);
}

TEST_F(Commands, AnOptionIsChangedForGood) {
  EXPECT_EQ(run({"options", "casesensitive", "off"}), 0) << err;
  EXPECT_EQ(run({"options", "CaseSensitive"}), 0);
  EXPECT_TRUE(out.starts_with("CaseSensitive\t0\t")) << out;
  EXPECT_EQ(run({"options", "OdbcDriver", "Mine"}), 0) << err;
  EXPECT_EQ(run({"options", "OdbcDriver"}), 0);
  EXPECT_TRUE(out.starts_with("OdbcDriver\tMine\t")) << out;
}

TEST_F(Commands, ATextEndsItsLastLine) {
  load("S/A", "CREATE PROCEDURE p AS\r\nSELECT 1");
  EXPECT_EQ(run({"text", "S/A", "--type", "procedures", "p"}), 0);
  EXPECT_EQ(out, "CREATE PROCEDURE p AS\nSELECT 1\n");
  EXPECT_EQ(run({"text", "S/A", "--type", "procedures", "p", "--crlf"}), 0);
  EXPECT_EQ(out, "CREATE PROCEDURE p AS\r\nSELECT 1\r\n");
}

TEST_F(Commands, AReportFileHasItsOwnLineEnds) {
  const std::string script = file("s.sql", "CREATE TABLE t (a int)");
  const std::string path = (folder.path() / "r.txt").string();
  EXPECT_EQ(run({"compare", script, script, "--types", "tables", "--report", path}), 0) << err;
  std::ifstream stream(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  EXPECT_TRUE(text.starts_with("Comparison of databases\r\n\r\nSource database ")) << text;
  EXPECT_EQ(run({"compare", script, script, "--report", "/proc/none/r.txt"}), 3);
  EXPECT_TRUE(told("/proc/none/r.txt")) << err;
}

TEST_F(ConsoleTest, OnePairInTwoColumns) {
  load("S/A", "CREATE TABLE t (a int NOT NULL, c varchar(10))");
  load("S/B", "CREATE TABLE t (a int NOT NULL, b int NOT NULL, c varchar(20))");
  setenv("COLUMNS", "60", 1);
  const int code = run({"compare", "S/A", "S/B", "--type", "tables", "--object", "t", "--aligned"});
  unsetenv("COLUMNS");
  EXPECT_EQ(code, 1) << err;
  EXPECT_TRUE(
      printed("\n[a] [int] NOT NULL             [a] [int] NOT NULL\n"
              "                             + [b] [int] NOT NULL\n"
              "[c] [varchar] (10) NULL      ~ [c] [varchar] (20) NULL\n"))
      << out;
  EXPECT_EQ(run({"compare", "S/A", "S/B", "--aligned"}), 2);
}

std::string bytesOfFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

TEST_F(Commands, ARunInBriefAndForABuildServer) {
  const std::string source =
      file("a.sql", "CREATE TABLE [a<&\"b] (x int)\nCREATE TABLE same (x int)\nCREATE TABLE s (x int)");
  const std::string target = file("b.sql", "CREATE TABLE [a<&\"b] (y int)\nCREATE TABLE same (x int)\nFROBNICATE");
  const std::string junit = path("junit.xml");
  EXPECT_EQ(run({"compare", source, target, "--types", "tables", "--brief", "--junit", junit, "--allow-skipped"}), 1);
  EXPECT_EQ(out,
            "different\ttable\ta<&\"b\nonly in Source\ttable\ts\n"
            "1 different, 1 only in Source, 0 only in Target, 0 not compared, 1 identical\n");
  EXPECT_NE(bytesOfFile(junit).find("tests=\"3\" failures=\"2\" errors=\"0\""), std::string::npos)
      << bytesOfFile(junit);
  EXPECT_EQ(run({"compare", source, target, "--types", "tables", "-q", "--junit", junit}), 4);
  EXPECT_EQ(out, "");
  EXPECT_NE(bytesOfFile(junit).find("tests=\"4\" failures=\"2\" errors=\"1\""), std::string::npos) << "not whole";
  const std::string read =
      "python3 -c \"import sys, xml.etree.ElementTree as e; r = e.parse(sys.argv[1]).getroot(); "
      "sys.exit(r[0][0].get('name') != 'a<&\\\"b')\" " +
      junit;
  EXPECT_EQ(std::system(read.c_str()), 0);
  EXPECT_EQ(run({"compare", source, source, "--junit", "/proc/none/junit.xml"}), 3) << err;
  EXPECT_EQ(run({"compare", source, target, "--types", "tables", "--no-time"}), 4);
  EXPECT_FALSE(printed("Time Elapsed")) << out;
  EXPECT_EQ(run({"data", source, target, "--table", "same", "--brief"}), 2) << err;
}

TEST_F(Commands, APatchMakesTheTargetOfTheSource) {
  std::string lines[2] = {"CREATE PROCEDURE p AS\n", "CREATE PROCEDURE p AS\n"};
  for (int number = 1; number <= 40; ++number) {
    const std::string line = "SELECT " + std::to_string(number) + "\n";
    if (number != 20) lines[0] += line;
    if (number != 5 && number != 40) lines[1] += number == 30 ? "SELECT 'x'\n" : line;
  }
  load("S/A", lines[0]);
  load("S/B", lines[1]);
  for (const char* side : {"A", "B"}) {
    EXPECT_EQ(run({"text", std::string("S/") + side, "--type", "procedures", "p"}), 0);
    file(side, out);
  }
  for (const char* context : {"0", "3"}) {
    EXPECT_EQ(
        run({"compare", "S/A", "S/B", "--type", "procedures", "--object", "p", "--unified", "--context", context}), 1)
        << err;
    file("p.patch", out);
    const std::string apply = "cd " + folder.path().string() + " && patch -s -o made A p.patch && cmp made B";
    EXPECT_EQ(std::system(apply.c_str()), 0) << out;
  }
  EXPECT_TRUE(out.starts_with("--- S/A/p\n+++ S/B/p\n@@ -3,7 +3,6 @@\n SELECT 2\n")) << out;
}

}  // namespace
}  // namespace qrel
