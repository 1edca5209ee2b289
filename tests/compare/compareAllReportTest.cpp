// The report of a whole-database comparison, type by type.
#include "db/mdlQueryCode.h"
#include "tests/compare/compareAllFixture.h"

namespace qrel {
namespace {

using CompareAllReports = CompareAllTest;

// One letter is one object; a capital is the same object with another content.
std::string procedures(const std::string& letters) {
  std::string script;
  for (const char letter : letters)
    script += procedure(lowerCase(std::string(1, letter)), letter < 'a' ? "SELECT 2" : "SELECT 1");
  return script;
}

std::string tableList(const std::string& letters) {
  std::string script;
  for (const char letter : letters)
    script += "CREATE TABLE " + lowerCase(std::string(1, letter)) + (letter < 'a' ? " (n bigint)\n" : " (n int)\n");
  return script;
}

TEST_F(CompareAllReports, SentencesFollowWhatWasFound) {
  struct Case {
    const char* source;
    const char* target;
    const char* procedures;
    const char* tables;
    long counts[3];  // different, only in Source, only in Target
  };
  const Case cases[] = {
      {"", "", "There are no @ in Source database.\nThere are no @ in Target database.", nullptr, {0, 0, 0}},
      {"a", "", "There is 1 # in Source database.\nThere are no @ in Target database.\n", nullptr, {0, 1, 0}},
      {"", "ab", "There are no @ in Source database.\nThere are 2 @ in Target database.\n", nullptr, {0, 0, 2}},
      {"a",
       "a",
       "There is 1 # in Source database.\nThere is 1 # in Target database.\nAll @ in both databases are identical.",
       "There is 1 # in Source database.\nThere is 1 # in Target database.\n"
       "The structure of all tables in both databases is identical.",
       {0, 0, 0}},
      {"ab",
       "a",
       "There are 2 @ in Source database.\nThere is 1 # in Target database.\n"
       "List of @ which exist in Source database but not in Target database:\n\tb\n\t(1 #)\n"
       "All @ in both databases are identical.",
       "There are 2 @ in Source database.\nThere is 1 # in Target database.\n"
       "List of @ which exist in Source database but not in Target database:\n\tb\n\t(1 #)\n"
       "The structure of all tables in both databases is identical.",
       {0, 1, 0}},
      {"a",
       "abc",
       "There is 1 # in Source database.\nThere are 3 @ in Target database.\n"
       "List of @ which exist in Target database but not in Source database:\n\tb\n\tc\n\t(2 @)\n"
       "One # [a] has identical structure in both databases.",
       nullptr,
       {0, 0, 2}},
      {"a",
       "A",
       "There is 1 # in Source database.\nThere is 1 # in Target database.\nList of @ which differ:\n\ta\n\t(1 #)\n"
       "There are no @ which are identical in both databases.",
       "There is 1 # in Source database.\nThere is 1 # in Target database.\nList of @ which differ:\n\ta\n\t(1 #)\n"
       "There are no tables which have identical structure in both databases.",
       {1, 0, 0}},
      {"abcdef",
       "abCDg",
       "There are 6 @ in Source database.\nThere are 5 @ in Target database.\n"
       "List of @ which differ:\n\tc\n\td\n\t(2 @)\n"
       "List of @ which exist in Source database but not in Target database:\n\te\n\tf\n\t(2 @)\n"
       "List of @ which exist in Target database but not in Source database:\n\tg\n\t(1 #)\n"
       "All 2 remaining @ are identical:\n\ta\n\tb",
       "There are 6 @ in Source database.\nThere are 5 @ in Target database.\n"
       "List of @ which differ:\n\tc\n\td\n\t(2 @)\n"
       "List of @ which exist in Source database but not in Target database:\n\te\n\tf\n\t(2 @)\n"
       "List of @ which exist in Target database but not in Source database:\n\tg\n\t(1 #)\n"
       "All 2 remaining tables have identical structures:\n\ta\n\tb",
       {2, 2, 1}},
  };
  const auto worded = [](std::string text, const std::string& plural) {
    return replaceAll(replaceAll(text, "@", plural), "#", plural.substr(0, plural.size() - 1));
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(std::string(each.source) + " and " + each.target);
    load(procedures(each.source), procedures(each.target));
    EXPECT_EQ(section(objProcedures), "Comparison of procedures\n" + worded(each.procedures, "procedures"));
    load(tableList(each.source), tableList(each.target));
    const char* ofTables = each.tables ? each.tables : each.procedures;
    EXPECT_EQ(section(objTables), "Comparison of tables\n" + worded(ofTables, "tables"));
    const long counts[] = {state().lngDifferent, state().lngSourceOnly, state().lngTargetOnly};
    for (int i = 0; i < 3; ++i) EXPECT_EQ(counts[i], each.counts[i]) << i;
    EXPECT_TRUE(state().arrUnreadable.empty());
  }
}

// The verdict of one pair, with all settings off but those named.
TEST_F(CompareAllReports, VerdictFollowsTypeAndSettings) {
  enum Setting { none = 0, anyCase = 1, whitespace = 2, comments = 4, order = 8 };
  struct Case {
    long type;
    int settings;
    const char* source;
    const char* target;
    bool identical;
  };
  const char* const proc = "CREATE PROCEDURE p AS SELECT 1";
  const Case cases[] = {
      {objProcedures, none, proc, "CREATE PROCEDURE p AS  SELECT 1", false},
      {objProcedures, whitespace, proc, "CREATE PROCEDURE p AS  SELECT 1", true},
      {objProcedures, whitespace, proc, "CREATE PROCEDURE p AS SELECT 1 --x", false},
      {objProcedures, whitespace | comments, proc, "CREATE PROCEDURE p AS SELECT 1 --x", true},
      {objProcedures, anyCase, proc, "CREATE PROCEDURE P AS SELECT 1", false},
      {objProcedures, anyCase | whitespace, proc, "CREATE PROCEDURE P AS SELECT 1", true},
      // A pair compared alone may differ in its owner, and in the order of its lines; here neither is forgiven.
      {objProcedures, whitespace, proc, "CREATE PROCEDURE dbo.p AS SELECT 1", false},
      {objProcedures, order, "CREATE PROCEDURE p AS\nSELECT 1\nSELECT 2\n;",
       "CREATE PROCEDURE p AS\nSELECT 2\nSELECT 1\n;", false},
      {objViews, none, "CREATE VIEW dbo.v AS SELECT 1 AS a", "CREATE VIEW [v] AS SELECT 1 AS a", true},
      {objViews, none, "CREATE VIEW dbo.v AS SELECT 1 AS a", "CREATE VIEW [v] AS SELECT 2 AS a", false},
      {objTables, none, "CREATE TABLE t (a int, b int, c int)", "CREATE TABLE t (b int, a int, c int)", false},
      {objTables, order, "CREATE TABLE t (a int, b int, c int)", "CREATE TABLE t (b int, a int, c int)", true},
      {objTables, order, "CREATE TABLE t (a int, b int, c int)", "CREATE TABLE t (b int, a bit, c int)", false},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(std::string(each.source) + " | " + each.target + " | " + std::to_string(each.settings));
    program.settings.CaseSensitive = !(each.settings & anyCase);
    program.settings.IgnoreWhitespace = each.settings & whitespace;
    program.settings.IgnoreComments = each.settings & comments;
    program.settings.IgnoreColSeq = each.settings & order;
    load(each.source, each.target);
    section(each.type);
    EXPECT_EQ(state().lngDifferent, each.identical ? 0 : 1);
    EXPECT_EQ(state().lngSourceOnly + state().lngTargetOnly, 0);
  }
}

TEST_F(CompareAllReports, OtherTypesAreFetchedAndLookedUpTheirWay) {
  const std::string common =
      "CREATE TABLE p (a int NOT NULL CONSTRAINT pk_p PRIMARY KEY)\nCREATE TABLE c (x int, y int)\n"
      "ALTER TABLE c ADD CONSTRAINT fk_same FOREIGN KEY (x) REFERENCES p (a)\n";
  load(common +
           "ALTER TABLE c ADD CONSTRAINT fk_moved FOREIGN KEY (x) REFERENCES p (a)\nGO\nCREATE TRIGGER tr ON c FOR "
           "INSERT AS PRINT 1",
       common +
           "ALTER TABLE c ADD CONSTRAINT fk_moved FOREIGN KEY (y) REFERENCES p (a)\n"
           "ALTER TABLE c ADD CONSTRAINT fk_new FOREIGN KEY (y) REFERENCES p (a)\nGO\nCREATE TRIGGER tr ON c FOR "
           "INSERT AS PRINT 1");
  EXPECT_EQ(section(objRelationships),
            "Comparison of relationships\nThere are 2 relationships in Source database.\n"
            "There are 3 relationships in Target database.\nList of relationships which differ:\n\tfk_moved\n"
            "\t(1 relationship)\nList of relationships which exist in Target database but not in Source database:\n"
            "\tfk_new\n\t(1 relationship)\nOne relationship [fk_same] has identical structure in both databases.");
  EXPECT_EQ(section(objTriggers),
            "Comparison of triggers\nThere is 1 trigger in Source database.\nThere is 1 trigger in Target database.\n"
            "All triggers in both databases are identical.");
  program.settings.AnalyzeConstraints = true;
  EXPECT_EQ(section(objConstraints),
            "Comparison of constraints\nThere is 1 constraint in Source database.\n"
            "There is 1 constraint in Target database.\nAll constraints in both databases are identical.");
}

TEST_F(CompareAllReports, SelectionTakesNamesOfEitherSide) {
  load(procedures("abc"), procedures("aBCd"));
  const std::string head =
      "Selective comparison of procedures\n\n1 objects selected in Source database\n"
      "1 objects selected in Target database\n\n";
  const ObjectSelection aAndB{1, 1, {"a"}, {"b"}};
  EXPECT_EQ(section(objProcedures, &aAndB), head +
                                                "List of procedures which differ:\n\tb\n\t(1 procedure)\n"
                                                "One procedure [a] has identical structure in both databases.");
  const ObjectSelection onlyA{1, 1, {"a"}, {"a"}};
  EXPECT_EQ(section(objProcedures, &onlyA), head + "All selected procedures in both databases are identical.");
  const ObjectSelection otherCase{1, 1, {"A"}, {"D"}};
  EXPECT_EQ(section(objProcedures, &otherCase), head + "All selected procedures in both databases are identical.")
      << "nothing has these names, so nothing is compared";
  EXPECT_FALSE(ProceedWithThisObject("a", true, SelectedNames({1, 0, {"a"}, {}})));
  load(tableList("a"), tableList("aB"));
  EXPECT_EQ(section(objTables, &onlyA), replaceAll(head, "procedures", "tables") +
                                            "The structure of all selected tables in both databases is identical.");
}

TEST_F(CompareAllReports, SelectionsGoByTheListedNameThenByTheBareOne) {
  const std::string schema = "CREATE SCHEMA s\nGO\n";
  const std::string source = schema + "CREATE TABLE t (a int)\nCREATE TABLE s.t (a int)";
  const std::string target = schema + "CREATE TABLE t (a bit)\nCREATE TABLE s.t (a bit)";
  const std::tuple<const char*, const char*, long> cases[] = {
      {"s.t", "\ts.t\n\t(1 table)\n", 1}, {"t", "\tdbo.t\n\ts.t\n\t(2 tables)\n", 2}, {"r.t", "are identical", 0}};
  for (const auto& [name, found, count] : cases) {
    const ObjectSelection selection{1, 1, {name}, {name}};
    load(source, target);
    const std::string text = section(objTables, &selection, true);
    EXPECT_NE(text.find(count == 0 ? "is identical." : found), std::string::npos) << text;
    EXPECT_EQ(state().lngDifferent, count) << name;
    EXPECT_EQ(text.find("\n1. t\n") != std::string::npos, count > 0) << "details name it without its schema: " << text;
    load(source, schema);
    section(objTables, &selection);
    EXPECT_EQ(state().lngSourceOnly, count) << name;
  }
}

TEST_F(CompareAllReports, IgnoredColumnsGoByListedNames) {
  const std::string both = "CREATE SCHEMA s\nGO\nCREATE TABLE t (a int, x int)\nCREATE TABLE s.t (a int, x int)";
  load(both, replaceAll(both, "x int", "x bit"));
  program.state<IgnoredColumnsSource>().lookUp = [](IgnoredList, const tServer&, const std::string&,
                                                    const std::string& table) {
    return table == "s.t" ? std::vector<std::string>{"x"} : std::vector<std::string>{};
  };
  const std::string text = section(objTables);
  EXPECT_NE(text.find("which differ:\n\tdbo.t\n\t(1 table)\n"), std::string::npos) << text;
  EXPECT_NE(text.find("One table [s.t (some columns ignored"), std::string::npos) << text;
}

TEST_F(CompareAllReports, DetailsFollowTheSummary) {
  load(procedures("ab"), procedures("AB"));
  const auto differences = [](const std::string& name) {
    return "Differences in Source:\nCREATE PROCEDURE " + name +
           " AS SELECT 1\n\nDifferences in Target:\nCREATE PROCEDURE " + name + " AS SELECT 2\n\n";
  };
  const std::string simple = section(objProcedures);
  EXPECT_TRUE(simple.ends_with("\nThere are no procedures which are identical in both databases.")) << simple;
  EXPECT_EQ(section(objProcedures, nullptr, true),
            simple + "\n" + std::string(43, '=') +
                "\n\nDetailed list of differences between compared procedures\n\n1. a\n\n" + differences("a") +
                "\n2. b\n\n" + differences("b"));
}

TEST_F(CompareAllReports, IgnoredColumnsAreTold) {
  program.state<IgnoredColumnsSource>().lookUp = [](IgnoredList, const tServer&, const std::string& database,
                                                    const std::string& table) {
    return database == "A" && table == "t" ? std::vector<std::string>{"x"} : std::vector<std::string>{};
  };
  load("CREATE TABLE t (a int, x int)", "CREATE TABLE t (a int)");
  EXPECT_TRUE(section(objTables).ends_with(
      "\nThe structure of all tables in both databases is identical. (Some columns were ignored "
      "during comparison.)"));
  load("CREATE TABLE t (a int, x int)", "CREATE TABLE t (a int)\nCREATE TABLE u (a int)");
  EXPECT_TRUE(section(objTables).ends_with(
      "\nOne table [t (some columns ignored during comparison)] has identical structure in both databases."));
  for (const char* database : {"A", "B"}) {
    program.state<IgnoredColumnsSource>().lookUp = [=](IgnoredList, const tServer&, const std::string& strDb,
                                                       const std::string&) {
      return strDb == database ? std::vector<std::string>{"x"} : std::vector<std::string>{};
    };
    load("CREATE TABLE t (a int, x int)", "CREATE TABLE t (a bit, x int)");
    EXPECT_NE(section(objTables).find("\tt (some columns ignored during comparison)\n\t(1 table)"), std::string::npos)
        << "one side's list is enough: " << database;
  }
}

TEST_F(CompareAllReports, TablesMeetTheNamesakeInTheirSchemaFromVersion9On) {
  const std::string schemas = "CREATE SCHEMA s\nGO\nCREATE SCHEMA r\nGO\n";
  const std::string one = schemas + "CREATE TABLE s.t (a int, b int, c int)",
                    other = schemas + "CREATE TABLE r.t (a int, b int, c int)";
  const std::string counts =
      "Comparison of tables\nThere is 1 table in Source database.\nThere is 1 table in Target database.\n";
  load(one, other);
  EXPECT_EQ(section(objTables),
            counts +
                "List of tables which exist in Source database but not in Target database:\n\tt\n\t(1 table)\n"
                "List of tables which exist in Target database but not in Source database:\n\tt\n\t(1 table)\n"
                "There are no tables which have identical structure in both databases.");
  load(one, other, "8.00.2039");
  EXPECT_EQ(section(objTables), counts + "The structure of all tables in both databases is identical.");
  load(one, schemas + "CREATE TABLE r.t (b int, a int, c int)", "8.00.2039");
  EXPECT_EQ(section(objTables), counts +
                                    "List of tables which differ:\n\tt\n\t(1 table)\n"
                                    "There are no tables which have identical structure in both databases.")
      << "the order of columns counts where the other table's id isn't looked up";

  load(one + "\nCREATE TABLE t (a int)", schemas + "CREATE TABLE s.t (a int)\nCREATE TABLE t (a int)");
  EXPECT_EQ(section(objTables),
            "Comparison of tables\nThere are 2 tables in Source database.\nThere are 2 tables in Target database.\n"
            "List of tables which differ:\n\ts.t\n\t(1 table)\n"
            "One table [dbo.t] has identical structure in both databases.");
  load("CREATE TABLE t (a int)", "CREATE TABLE T (a int)");
  EXPECT_EQ(section(objTables), counts + "The structure of all tables in both databases is identical.")
      << "the server finds a namesake in another case";

  long lngOtherId = 7;
  bool blnProceed = false;
  auto& [source, target] = program.main.gtypSelServ;
  EXPECT_TRUE(
      CompareAll_CheckForDuplicateNames(program, objViews, source, "t", "A", target, "B", 0, lngOtherId, blnProceed));
  EXPECT_TRUE(blnProceed && lngOtherId == 0);
  EXPECT_FALSE(
      CompareAll_CheckForDuplicateNames(program, objTables, source, "t", "A", target, "B", 0, lngOtherId, blnProceed))
      << "without an id there is no schema to look for";
}

TEST_F(CompareAllReports, OtherTypesWithOneNameInTwoSchemasAreMissedInTheTargetPass) {
  const std::string views =
      "CREATE SCHEMA s\nGO\nCREATE VIEW v AS SELECT 1 AS a\nGO\nCREATE VIEW s.v AS SELECT 2 AS a\nGO\n";
  load(views, views);
  EXPECT_EQ(section(objViews),
            "Comparison of views\nThere are 2 views in Source database.\nThere are 2 views in Target database.\n"
            "List of views which exist in Target database but not in Source database:\n\tdbo.v\n\ts.v\n\t(2 views)\n"
            "All 2 remaining views are identical:\n\tdbo.v\n\ts.v");
  program.settings.IgnoreComments = false;
  load("CREATE FUNCTION f() /* a VIEW dbo.x */ RETURNS int AS BEGIN RETURN 1 END",
       "CREATE FUNCTION f() /* a VIEW x */ RETURNS int AS BEGIN RETURN 1 END");
  EXPECT_NE(section(objFunctions).find("which differ:\n\tf\n"), std::string::npos) << "no view's header";
}

TEST_F(CompareAllReports, ObjectsWithoutTextAreNoted) {
  const std::string hidden = "CREATE PROCEDURE h WITH ENCRYPTION AS SELECT 1\nGO\n";
  const auto noted = [this] {
    std::string list;
    for (const UnreadableObject& each : state().arrUnreadable)
      list += std::to_string(each.side) + " " + std::to_string(each.lngType) + " " + each.strName + "; ";
    return list;
  };
  const std::string counts =
      "Comparison of procedures\nThere are 2 procedures in Source database.\nThere are 2 procedures in Target "
      "database.\n";
  load(procedures("a") + hidden, procedures("a") + hidden);
  EXPECT_EQ(section(objProcedures),
            counts +
                "List of procedures which exist in Source database but not in Target database:\n\th\n"
                "\t(1 procedure)\nAll procedures in both databases are identical.");
  EXPECT_EQ(noted(), "0 10 h; 1 10 h; ");
  load(procedures("a") + hidden, procedures("ah"));
  EXPECT_EQ(section(objProcedures), counts +
                                        "List of procedures which differ:\n\th\n\t(1 procedure)\n"
                                        "One procedure [a] has identical structure in both databases.");
  EXPECT_EQ(noted(), "0 10 h; ");
  load(procedures("ax"), procedures("a") + hidden);
  section(objProcedures);
  EXPECT_EQ(noted(), "") << "the text of an object on one side only is not asked for";
}

}  // namespace
}  // namespace qrel
