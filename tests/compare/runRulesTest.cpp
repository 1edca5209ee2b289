// What a run over whole databases takes up, leaves out and looks up on the other side.
#include "platform/files.h"
#include "tests/compare/compareAllFixture.h"

namespace qrel {
namespace {

class RunRules : public CompareAllTest {
 protected:
  // The objects of a selective run's section that are told, without its head and its last sentence.
  std::string told(long type, const ObjectSelection& selection) {
    const std::string text = section(type, &selection);
    const std::size_t begin = text.find("\n\n", text.find("objects selected in Target database"));
    EXPECT_NE(begin, std::string::npos) << text;
    std::string names;
    for (std::size_t at = text.find("\n\t", begin); at != std::string::npos; at = text.find("\n\t", at + 1))
      names += (names.empty() ? "" : " ") + text.substr(at + 2, text.find('\n', at + 1) - at - 2);
    return names;
  }
};

TEST_F(RunRules, ASelectionIsOfNamesAsListedOrBare) {
  load(
      "CREATE SCHEMA s\nGO\nCREATE TABLE t (a int)\nCREATE TABLE s.t (a int)\nCREATE TABLE u (a int)\nCREATE TABLE "
      "s.only (a int)",
      "CREATE SCHEMA s\nGO\nCREATE TABLE t (a bit)\nCREATE TABLE s.t (a bit)\nCREATE TABLE u (a bit)\nCREATE TABLE "
      "s.only (a bit)\nCREATE TABLE w (a int)\nCREATE TABLE s.w (a int)");
  struct Case {
    std::vector<std::string> source, target;
    const char* told;
  };
  const Case cases[] = {
      {{"s.t"}, {"s.t"}, "s.t (1 table)"},
      {{"dbo.t"}, {"u"}, "dbo.t u (2 tables)"},
      {{"t"}, {"t"}, "dbo.t s.t (2 tables)"},
      {{"only"}, {"only"}, "only (1 table)"},
      {{"s.only"}, {"x.u"}, ""},  // neither is listed so, and no bare name is like them
      {{"u"}, {"s.w"}, "u (1 table) s.w (1 table)"},
      {{"u"}, {"w"}, "u (1 table) dbo.w s.w (2 tables)"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.source[0] + " and " + each.target[0]);
    EXPECT_EQ(told(objTables, {1, 1, each.source, each.target}), each.told);
  }
}

TEST_F(RunRules, ASelectiveHeadCountsEachSide) {
  load(procedure("a") + procedure("b"), procedure("a") + procedure("b"));
  const ObjectSelection selection{2, 3, {"a", "b"}, {"a", "b", "c"}};
  EXPECT_EQ(section(objProcedures, &selection),
            "Selective comparison of procedures\n\n2 objects selected in Source database\n3 objects selected in Target "
            "database\n\nAll selected procedures in both databases are identical.");
}

// An object that Target alone has is found missing in Source by what Source itself says of it.
TEST_F(RunRules, TheTargetPassLooksIntoSource) {
  const std::string common =
      "CREATE TABLE p (a int NOT NULL CONSTRAINT pk_p PRIMARY KEY)\nCREATE TABLE c (x int NOT NULL, y int NOT NULL)\n"
      "ALTER TABLE c ADD CONSTRAINT fk_same FOREIGN KEY (x) REFERENCES p (a)\nGO\n";
  load(common, common +
                   "ALTER TABLE c ADD CONSTRAINT fk_new FOREIGN KEY (y) REFERENCES p (a)\n"
                   "ALTER TABLE c ADD CONSTRAINT pk_new PRIMARY KEY CLUSTERED (x)\n"
                   "CREATE TABLE more (a int)\nGO\nCREATE TRIGGER tr ON c FOR INSERT AS PRINT 1\nGO\n");
  program.settings.AnalyzeConstraints = true;
  const auto of = [&](long type, const std::string& plural, const char* same, const char* fresh) {
    const std::string singular = plural.substr(0, plural.size() - 1);
    EXPECT_EQ(section(type), "Comparison of " + plural + "\nThere is 1 " + singular +
                                 " in Source database.\nThere are 2 " + plural + " in Target database.\nList of " +
                                 plural + " which exist in Target database but not in Source database:\n\t" + fresh +
                                 "\n\t(1 " + singular + ")\nOne " + singular + " [" + same +
                                 "] has identical structure in both databases.");
  };
  of(objRelationships, "relationships", "fk_same", "fk_new");
  of(objConstraints, "constraints", "pk_p", "pk_new");
  EXPECT_EQ(state().lngTargetOnly, 1);
  load(common + "ALTER TABLE c ADD CONSTRAINT pk_new PRIMARY KEY CLUSTERED (x)", common);
  EXPECT_TRUE(section(objConstraints)
                  .ends_with("\n\tpk_new\n\t(1 constraint)\nAll constraints in both databases are "
                             "identical."));
}

TEST_F(RunRules, TheLogOfARunStandsAlone) {
  load(procedure("a"), procedure("a"));
  const auto log = test.folder.write("ErrorLog.txt", "of the run before\r\n");
  databases[1] = "Nowhere";
  test.host.windows = {leaveAlone, leaveAlone};
  CompStruct_BulkSel_SimpleDet_All(program, *this, 1, false, false);
  EXPECT_TRUE(files::exists(log)) << "a run that couldn't begin leaves it";
  program.main.gblnDebugMode = true;
  section(objProcedures);
  const std::string text = files::readWholeFile(log);
  EXPECT_EQ(text.find("of the run before"), std::string::npos);
  EXPECT_NE(text.find("Begin LoadObjects, pstrDbName = A\r\n"), std::string::npos) << text;
  program.main.gblnDebugMode = false;
  section(objProcedures);
  EXPECT_FALSE(files::exists(log));
}

TEST_F(RunRules, NamesakesAreSoughtWhenBothServersHaveSchemas) {
  load("CREATE TABLE t (a int)", "CREATE SCHEMA s\nGO\nCREATE TABLE s.t (a int)");
  RecordsetPtr rs;
  auto& [source, target] = program.main.gtypSelServ;
  GetAdoRS(program, source, adCmdText, "SELECT id FROM sysobjects WHERE name = 't'", rs, "A");
  const long id = integerOf(rs->Fields(0).cell);
  struct Case {
    const char* source;
    const char* target;
    bool proceeds;
  };
  const char* const old = "8.00.2039";
  const char* const first = "9.00.1399.06";
  const Case cases[] = {{old, old, true},
                        {old, defaultProductVersion, true},
                        {defaultProductVersion, old, true},
                        {first, old, true},
                        {old, first, true},
                        {first, defaultProductVersion, false},
                        {defaultProductVersion, first, false},
                        {first, first, false},
                        {defaultProductVersion, defaultProductVersion, false}};
  for (const Case& each : cases) {
    SCOPED_TRACE(std::string(each.source) + " and " + each.target);
    source = TestProgram::server("S", each.source);
    target = TestProgram::server("S", each.target);
    long lngOtherId = 7;
    bool blnProceed = !each.proceeds;
    EXPECT_TRUE(CompareAll_CheckForDuplicateNames(program, objTables, source, "dbo.t", "A", target, "B", id, lngOtherId,
                                                  blnProceed));
    EXPECT_EQ(blnProceed, each.proceeds);
    EXPECT_EQ(lngOtherId, 0);
  }
}

}  // namespace
}  // namespace qrel
