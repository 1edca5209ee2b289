// Reading ahead: the same answers and failures as without it, for whole runs and for single queries.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/data/recordset.h"
#include "platform/error.h"
#include "tests/support.h"

namespace qrel {
namespace {

constexpr const char* bench = "Provider=SQLOLEDB.1;Data Source=S;Initial Catalog=a;Integrated Security=SSPI";

std::string value(DataAccess& data, const std::string& sql, const char* connectionString = bench) {
  auto connection = std::make_shared<Connection>(data);
  connection->ConnectionString = connectionString;
  connection->Open();
  Command command;
  command.ActiveConnection = connection;
  command.CommandText = sql;
  Recordset rs;
  rs.Open(command);
  return rs.State() == adStateOpen && !rs.Eof() ? rs.Fields(0).Text() : "";
}

PrefetchHint hintOf(const std::string& sql, const char* connectionString = bench) {
  PrefetchHint hint;
  hint.connectionString = connectionString;
  hint.sql = sql;
  return hint;
}

// Until every thread has done what it was given.
std::unique_ptr<RowSource> taken(DataAccess& data, const std::string& sql) {
  CommandRequest request;
  request.text = sql;
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  return data.prefetcher().take(bench, request);
}

class Prefetch : public ::testing::Test, protected TestServers {
 protected:
  Prefetch() { load("S", "a", "CREATE TABLE t (n int, s varchar(9))\nGO\nINSERT INTO t VALUES (1, 'x'), (2, NULL)"); }
  const std::string query = "SELECT s, n FROM t ORDER BY n";
};

TEST_F(Prefetch, ResultIsGivenOnceAndOnlyToItsOwnQuery) {
  data.prefetch(hintOf(query));
  EXPECT_FALSE(data.prefetcher().knows(bench)) << "no state is held";
  const auto held = data.holdState();
  data.prefetch(hintOf(query));
  EXPECT_FALSE(taken(data, query + " "));
  auto rows = taken(data, query);
  ASSERT_TRUE(rows);
  EXPECT_EQ(rows->count(), 2);
  EXPECT_EQ(rows->columns()[0].typeName, "varchar");
  ColumnStore cells(rows->columns());
  EXPECT_EQ(rows->fetch(cells, 1), 1U);
  EXPECT_EQ(rows->fetch(cells, 9), 1U);
  EXPECT_EQ(textOf(cells.cell(0, 0)), "x");
  EXPECT_TRUE(cells.cell(0, 1).null);
  EXPECT_FALSE(taken(data, query));
}

TEST_F(Prefetch, FailuresAndWhatIsOldAreForgotten) {
  const auto held = data.holdState();
  data.prefetch(hintOf("SELECT * FROM missing"));
  EXPECT_FALSE(taken(data, "SELECT * FROM missing"));
  EXPECT_THROW(value(data, "SELECT * FROM missing"), DataError);
  data.prefetch(hintOf("UPDATE t SET n = 5"));
  data.prefetch(hintOf("SELECT n INTO u FROM t"));
  EXPECT_FALSE(data.prefetcher().knows(bench));
  data.prefetch(hintOf(query));
  value(data, "DECLARE @a int SET @a = 1");  // whatever isn't a query may change something
  EXPECT_FALSE(data.prefetcher().knows(bench));
  PrefetchHint next = hintOf(query);
  next.keepSteps = 1;
  data.prefetch(next);
  data.prefetcher().nextStep();
  EXPECT_TRUE(data.prefetcher().knows(bench));
  data.prefetcher().nextStep();
  EXPECT_FALSE(data.prefetcher().knows(bench));
  // A database that isn't there is refused in the words of the query itself.
  constexpr const char* nowhere = "Provider=SQLOLEDB.1;Data Source=S;Initial Catalog=none;Integrated Security=SSPI";
  data.prefetch(hintOf(query, nowhere));
  EXPECT_THROW(value(data, query, nowhere), DataError);
}

TEST_F(Prefetch, StopEndsWhatRunsAndLeavesNothingBehind) {
  std::string script = "CREATE TABLE many (n int)\nGO\n";
  for (int i = 0; i < 30; ++i) script += "INSERT INTO many VALUES (" + std::to_string(i) + ")\n";
  load("S", "b", script);
  constexpr const char* there = "Provider=SQLOLEDB.1;Data Source=S;Initial Catalog=b;Integrated Security=SSPI";
  const std::string forever = "SELECT COUNT(*) FROM many a, many b, many c, many d, many e, many f, many g";
  auto held = data.holdState();
  data.prefetch(hintOf(forever, there));
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  data.stopAsked = [] { return true; };
  try {
    value(data, forever, there);
    ADD_FAILURE() << "not stopped";
  } catch (const DataError& error) {
    EXPECT_EQ(error.number, errorNumber::cancelled);
    EXPECT_EQ(error.sql, forever);
  }
  data.stopAsked = {};
  data.prefetch(hintOf(forever, there));
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  const auto start = std::chrono::steady_clock::now();
  held.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));  // slow under sanitizers
  EXPECT_TRUE(servers.dropDatabase("S", "b"));
}

}  // namespace
}  // namespace qrel
