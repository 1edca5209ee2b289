// Values in SQL: what stands where it belongs is sent as it is, what would get out of there is never sent.
#include "db/SqlText.h"

#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "db/modSchema.h"
#include "db/readFailures.h"
#include "platform/error.h"
#include "tests/support.h"

namespace qrel {
namespace {

std::string refusal(const SqlText& sql) {
  try {
    sql.text();
    return {};
  } catch (const DataError& error) {
    EXPECT_EQ(error.number, errorNumber::badSql);
    EXPECT_EQ(error.sql, sql.shown());
    return error.description;
  }
}

TEST(SqlText, PutsPiecesAndValuesInTheirOrder) {
  SqlText sql = "a = ";
  sql << inQuotes("x\ny%") << " b = " << inBrackets("c d[") << " " << 12 << " FROM " << asName("t") << " "
      << asName("[s].[t]") << " IN (" << asList("'a,b', 'it''s'") << ")";
  EXPECT_EQ(sql.text(), "a = 'x\ny%' b = [c d[] 12 FROM [t] [s].[t] IN ('a,b', 'it''s')");
  EXPECT_EQ((SqlText("FROM ") << asName("")).text(), "FROM ");
}

TEST(SqlText, RefusesWhatWouldEndItsPlace) {
  const std::string nul("a\0b", 3);
  const std::pair<SqlValue, const char*> cases[] = {
      {inQuotes("O'Brien"), "Incorrect syntax near 'Brien'."},
      {inQuotes("x'; drop table t"), "Incorrect syntax near ';'."},
      {inQuotes("it''s"), "Incorrect syntax near 's'."},
      {inQuotes("end'"), "Unclosed quotation mark after the character string 'end''."},
      {inQuotes(nul), "Unclosed quotation mark after the character string 'a'."},
      {inBrackets("a]; drop table t --"), "Incorrect syntax near ';'."},
      {inBrackets("a]]b"), "Incorrect syntax near ']'."},
      {inBrackets("a]"), "Unclosed quotation mark after the character string 'a]'."},
      {inBrackets(nul), "Unclosed quotation mark after the character string 'a'."},
      {asName("a].[b"), "Incorrect syntax near '.'."},
      {asName("[a].[b].[c]"), "Incorrect syntax near '['."},
      {asName("[a]x"), "Incorrect syntax near 'x'."},
      {asName("[a]; drop table [t]"), "Incorrect syntax near ';'."},
      {asName("[a"), "Unclosed quotation mark after the character string '[a'."},
      {asName("[a].t"), "Incorrect syntax near 't'."},
      {asList("'a') or (1=1"), "Incorrect syntax near ')'."},
      {asList("'a',"), "Unclosed quotation mark after the character string ''a','."},
      {asList("'a' 'b'"), "Incorrect syntax near 'b'."},
      {asList("'a','b"), "Unclosed quotation mark after the character string ''a','b'."},
      {asList("'a',b"), "Incorrect syntax near 'b'."},
  };
  for (const auto& [value, description] : cases) {
    EXPECT_EQ(refusal(SqlText("x = ") << value), description) << value.text;
    EXPECT_EQ(refusal(SqlText("x = ") << inQuotes("fine") << (SqlText() << value) << " y"), description)
        << "inside another";
  }
}

TEST(SqlText, ADatabaseNameStandsBareInExec) {
  for (const char* name : {"Db", "Db_1", "[my db]"}) EXPECT_EQ(refusal(SqlText::ofExec("EXEC", name)), "") << name;
  for (const char* name : {"Db; drop table t", "a b", "[a'b]", "[a]; x [b]", "a)"})
    EXPECT_NE(refusal(SqlText::ofExec("EXEC", name)), "") << name;
}

TEST(SqlText, ASpoiledQueryFailsAsTheServersErrorAndIsNoted) {
  TestProgram test;
  test.load("S", "Db", "CREATE SCHEMA a\nGO\nCREATE TABLE a.[b]]c] (x int)\nCREATE TABLE [x]].[y] (x int)");
  test.program.mdlData.gblnNoConnErrMsg = true;
  tServer server = TestProgram::server("S");
  RecordsetPtr rs;
  AdoExtras extras;
  EXPECT_EQ(GetAdoRS(test.program, server, adCmdText, SqlText("SELECT ") << inQuotes("a'b"), rs, "Db", &extras), -1);
  EXPECT_EQ(extras.errNumber, errorNumber::badSql);
  const auto& failures = test.program.state<ReadFailuresState>().arrFailures;
  ASSERT_EQ(failures.size(), 1u);
  EXPECT_EQ(failures[0].strServer + "|" + failures[0].strDb + "|" + failures[0].strDescription,
            "S|Db|Incorrect syntax near 'b'.");

  // A listed name that the missing brackets would turn into another's has no name at all.
  EXPECT_EQ(GetAdoRS(test.program, server, adCmdText, "SELECT id FROM sysobjects WHERE xtype = 'U'", rs, "Db"), 0);
  for (; !rs->Eof(); rs->MoveNext())
    for (const char* name : {"b]c", "x].[y", "[x"})
      EXPECT_EQ(GetExtendedObjectName(test.program, server, "Db", name, 50, integerOf(rs->Fields(0).cell)), "") << name;
  EXPECT_EQ(failures.size(), 7u);
  std::string name = "x].[y";
  EXPECT_EQ(GetNumberOfRecordsInTable(test.program, server, name, "Db"), -1);
  EXPECT_EQ(failures.size(), 8u);

  auto& filter = test.program.state<modSchemaState>();
  filter.gblnSchemaFilter[0] = true;
  filter.gstrSchemaFilter[0] = "dbo,a') or ('1'='1";
  EXPECT_NE(refusal(BuildObjSQLString(test.program, 50, true, "", "", 0)), "");
}

TEST(ReadFailures, AQuestionIsNoFailureButNoAnswerIs) {
  TestProgram test;
  test.load("S", "Db", "CREATE TABLE t (a int)");
  const tServer server = TestProgram::server("S");
  const auto& failures = test.program.state<ReadFailuresState>().arrFailures;
  EXPECT_FALSE(DbCheckSqlSelect(test.program, server, "Db", "SELECT x FROM t"));
  EXPECT_TRUE(failures.empty());
  EXPECT_FALSE(DbCheckSqlSelect(test.program, server, "Nowhere", "SELECT a FROM t"));
  EXPECT_EQ(failures.size(), 1u);
  EXPECT_EQ(GetServerVersion(test.program, TestProgram::server("None")), "");
  EXPECT_EQ(failures.size(), 2u);
}

}  // namespace
}  // namespace qrel
