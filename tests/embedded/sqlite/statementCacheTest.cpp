// Queries that differ by their literals share a prepared statement and nothing else.
#include "embedded/sqlite/statementCache.h"

#include <gtest/gtest.h>

#include "platform/data/recordset.h"
#include "tests/embedded/embeddedServer.h"
#include "tests/support.h"

namespace qrel {
namespace {

TEST(LiftLiterals, TakesTextsAndComparedNumbersOnly) {
  const auto lifted = [](const char* sql) {
    const tsql::LiftedQuery query = tsql::liftLiterals(sql);
    std::string text = query.sql;
    for (const Value& value : query.literals) text += "|" + textOf(value.cell());
    return text;
  };
  const std::pair<const char*, const char*> cases[] = {
      {"select a from t where b = 'x' and c = 12", "select a from t where b = :q1 and c = :q2|x|12"},
      {"select 'it''s :q1' where \"a'b\" = ''", "select :q1 where \"a'b\" = :q2|it's :q1|"},
      {"select a limit 5", "select a limit 5"},
      {"select a where b = -5 or c = 1.5 or d = 7e2", "select a where b = -5 or c = 1.5 or d = 7e2"},
      {"select a where b = x'0A'", "select a where b = x'0A'"},
      {"select a = 1 group by 'x'", "select a = 1 group by 'x'"},
      {"select * from t where a = 1", "select * from t where a = 1"},
      {"select count(*) from t where a = 1", "select count(*) from t where a = :q1|1"},
  };
  for (const auto& [sql, expected] : cases) EXPECT_EQ(lifted(sql), expected);
}

TEST(LiftLiterals, LeavesLongListsAsTheyAre) {
  std::string sql = "select a where b in (''";
  for (int i = 0; i < 1000; ++i) sql += ", 'k'";
  sql += ") and c = 1";
  const tsql::LiftedQuery query = tsql::liftLiterals(sql);
  EXPECT_FALSE(query.reusable);
  EXPECT_EQ(query.sql, sql);
  EXPECT_TRUE(query.literals.empty());
}

TEST(StatementCache, GivesEachQueryItsOwnRows) {
  TestProgram test;
  test.load("S", "D", "CREATE TABLE t (n int, s varchar(20))\nINSERT t VALUES (1, 'one'), (2, 'it''s'), (3, ':q1')");
  auto connection = std::make_shared<Connection>(test.data);
  connection->ConnectionString = "Provider=SQLOLEDB.1;Data Source=S;Initial Catalog=D";
  connection->CursorLocation = adUseServer;
  connection->Open();
  const auto open = [&](const std::string& sql) {
    Command command;
    command.ActiveConnection = connection;
    command.CommandText = sql;
    Recordset rs;
    rs.Open(command);
    return rs;
  };
  Recordset first = open("SELECT s, 'k' AS k FROM t WHERE n = 1");
  Recordset second = open("SELECT s, 'l' AS k FROM t WHERE n = 2");
  EXPECT_EQ(first.Fields("s").Text() + first.Fields("k").Text(), "onek");
  EXPECT_EQ(second.Fields("s").Text() + second.Fields("k").Text(), "it'sl");
  first.Close();
  second.Close();
  EXPECT_EQ(open("SELECT s, 'm' AS k FROM t WHERE n = 3").Fields("s").Text(), ":q1");
  EXPECT_EQ(integerOf(open("SELECT n FROM t WHERE s = 'IT''S'").Fields("n").cell), 2) << "case doesn't count";
  EXPECT_EQ(integerOf(open("SELECT n FROM t WHERE s = ':q1'").Fields("n").cell), 3);
  EXPECT_TRUE(open("SELECT n FROM t WHERE s = 'none'").Eof());
  EXPECT_EQ(open("SELECT n FROM t WHERE s = 'none' OR n = 1").RecordCount(), 1);
}

TEST(StatementCache, FollowsATableThatChanges) {
  EmbeddedServer server;
  const char* query = "SELECT a FROM t WHERE a = '5'";
  server.load("CREATE TABLE t (A int)\nINSERT t VALUES (5)");
  const auto column = [&] { return server.connect()->execute({query, 30, {}}).rows->columns().at(0); };
  EXPECT_EQ(column().type, DataType::Integer);
  server.load("DROP TABLE t\nCREATE TABLE t (a varchar(9))\nINSERT t VALUES ('5')");
  EXPECT_EQ(column().type, DataType::Text);
  EXPECT_EQ(server.line(query), "5");
}

}  // namespace
}  // namespace qrel
