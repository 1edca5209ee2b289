// Lines that break, servers that keep silent, statements that are cancelled: what a client of ODBC meets then.
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/odbc/odbcClient.h"

#ifdef __SANITIZE_ADDRESS__
// What has been freed is kept for a while to find those who still use it: a little of it, or nothing could be said of
// memory here. Found by the sanitizer under this name.
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=8:thread_local_quarantine_size_kb=64"; }
#endif

namespace qrel {
namespace {

using std::chrono::milliseconds;

class TdsFaults : public TdsFixture {
 protected:
  void SetUp() override {
    load("CREATE TABLE D (N int NOT NULL)\nGO\nINSERT D VALUES (0), (1), (2), (3), (4), (5), (6), (7), (8), (9)");
    serve();
  }
  // 10 to this power rows of a number and a text.
  static std::string manyRows(int power) {
    std::string from = "D a1";
    for (int i = 2; i <= power; ++i) from += " CROSS JOIN D a" + std::to_string(i);
    return "SELECT a1.N, CAST('row' AS varchar(10)) AS T FROM " + from;
  }
  static milliseconds since(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - begin);
  }
};

TEST_F(TdsFaults, ConnectingFailsInItsOwnWay) {
  struct Case {
    const char* name;
    void (*set)(tds::Server& server, bool on);
    std::string errors;
  };
  const std::vector<Case> cases = {
      {"refused", [](tds::Server& server, bool on) { server.switches().refuseLogins = on; }, "42000 18456, 08001 0"},
      {"mute", [](tds::Server& server, bool on) { server.switches().mute = on; }, "HYT00 0, 08001 0"},
      {"encrypted", [](tds::Server& server, bool on) { server.switches().requireEncryption = on; }, "08001 0"},
      {"queue", [](tds::Server& server, bool on) { on ? server.fillQueue() : server.takeAgain(); },
       "08S01 20009, 08001 0"},
  };
  for (const Case& each : cases) {
    each.set(*server_, true);
    const auto begin = std::chrono::steady_clock::now();
    {
      OdbcClient client(connectionString(), 1);
      EXPECT_FALSE(client.connected) << each.name;
      EXPECT_NE(client.errors.find(each.errors), std::string::npos) << each.name << ": " << client.errors;
    }
    EXPECT_LT(since(begin), milliseconds(3000)) << each.name;
    each.set(*server_, false);
    EXPECT_TRUE(OdbcClient(connectionString()).connected) << "after " << each.name;
  }
  EXPECT_EQ(OdbcClient(connectionString("PWD=wrong;Database=shop;")).errors, "42000 18456, 08001 0");
  const OdbcClient missing(connectionString("PWD=secret;Database=nowhere;"));
  EXPECT_EQ(missing.errors, "42000 18456, 42000 4060, 08001 0");
  EXPECT_NE(missing.errorText.find("nowhere"), std::string::npos);
}

TEST_F(TdsFaults, ALineIsCutInTheMiddleOfARow) {
  server_->switches().cutAfterRows = 3;
  OdbcClient client(connectionString());
  EXPECT_EQ(client.run("SELECT N FROM D ORDER BY N"), SQL_SUCCESS);
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(client.fetch(), SQL_SUCCESS);
    EXPECT_EQ(client.text(1), std::to_string(i));
  }
  EXPECT_EQ(client.fetch(), SQL_ERROR);
  EXPECT_EQ(client.errors, "01000 20017");
  EXPECT_TRUE(client.dead());

  server_->switches().cutAfterRows = -1;
  OdbcClient idle(connectionString());
  server_->dropConnections();
  EXPECT_EQ(idle.run("SELECT N FROM D"), SQL_ERROR);
  EXPECT_TRUE(idle.dead());

  OdbcClient failing(connectionString());
  server_->switches().closeAfterError = true;
  server_->switches().failNext({.number = 823, .text = "The disk.", .severity = 24});
  EXPECT_EQ(failing.run("SELECT N FROM D"), SQL_ERROR);
  EXPECT_EQ(failing.errors, "42000 823");
}

TEST_F(TdsFaults, AStatementIsCancelledWhereverItIs) {
  OdbcClient client(connectionString());
  // Rows stream: of these there are more than any memory holds.
  ASSERT_EQ(client.run(manyRows(12)), SQL_SUCCESS) << client.errorText;
  for (int i = 0; i < 20000; ++i) ASSERT_EQ(client.fetch(), SQL_SUCCESS);
  auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(SQLFreeStmt(client.statement, SQL_CLOSE), SQL_SUCCESS);
  EXPECT_EQ(server_->traffic().attentions, 1);
  // Before the first row, by another thread.
  std::thread other([&] {
    std::this_thread::sleep_for(milliseconds(200));
    SQLCancel(client.statement);
  });
  EXPECT_EQ(client.run("SELECT COUNT(*) FROM (" + manyRows(12) + ") AS t"), SQL_ERROR);
  other.join();
  EXPECT_EQ(client.errors, "HY008 0");
  EXPECT_LT(since(begin), milliseconds(2000));
  // By a time-out, and once more by one that the server doesn't care for.
  for (const bool ignored : {false, true}) {
    server_->switches().ignoreAttention = ignored;
    SQLSetStmtAttr(client.statement, SQL_ATTR_QUERY_TIMEOUT, reinterpret_cast<SQLPOINTER>(std::uintptr_t{1}), 0);
    begin = std::chrono::steady_clock::now();
    EXPECT_EQ(client.run("SELECT COUNT(*) FROM (" + manyRows(12) + ") AS t"), SQL_ERROR);
    EXPECT_EQ(client.errors, ignored ? "HYT00 0" : "HYT00 0, HY008 0");
    EXPECT_GE(since(begin), milliseconds(ignored ? 1900 : 900));
    EXPECT_LT(since(begin), milliseconds(4000));
    EXPECT_EQ(client.dead(), ignored);
    EXPECT_EQ(client.run("SELECT 1"), ignored ? SQL_ERROR : SQL_SUCCESS);
    EXPECT_EQ(client.rows(), ignored ? "" : "1");
  }
  server_->switches().ignoreAttention = false;
  // In the middle of rows, where the time-out is one of silence.
  OdbcClient stalled(connectionString());
  server_->switches().stallAfterRows = 3;
  SQLSetStmtAttr(stalled.statement, SQL_ATTR_QUERY_TIMEOUT, reinterpret_cast<SQLPOINTER>(std::uintptr_t{1}), 0);
  EXPECT_EQ(stalled.run("SELECT N FROM D ORDER BY N"), SQL_SUCCESS);
  EXPECT_EQ(stalled.rows(), "0 1 2");
  EXPECT_EQ(stalled.errors, "HYT00 0, HY008 0");
  server_->switches().stallAfterRows = -1;
  EXPECT_EQ(stalled.run("SELECT 1"), SQL_SUCCESS);
  OdbcClient silent(connectionString());
  server_->switches().muteAfterLogin = true;
  SQLSetStmtAttr(silent.statement, SQL_ATTR_QUERY_TIMEOUT, reinterpret_cast<SQLPOINTER>(std::uintptr_t{1}), 0);
  EXPECT_EQ(silent.run("SELECT 1"), SQL_ERROR);
  EXPECT_TRUE(silent.dead());
}

TEST_F(TdsFaults, EveryRoundTripTakesItsTime) {
  OdbcClient client(connectionString());
  EXPECT_EQ(server_->traffic().connections, 1);
  EXPECT_EQ(server_->traffic().roundTrips, 2);
  server_->switches().latencyMilliseconds = 100;
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(client.run("SELECT N FROM D"), SQL_SUCCESS);
    while (client.fetch() == SQL_SUCCESS) {
    }
  }
  EXPECT_GE(since(begin), milliseconds(300));
  EXPECT_EQ(server_->traffic().roundTrips, 5);
  EXPECT_EQ(server_->traffic().requests().size(), 3u);
}

std::int64_t residentKilobytes() {
  std::int64_t total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * 4;
}

// What is held doesn't grow with the rows. (The sanitizer keeps little of what is freed in this program, see below.)
TEST_F(TdsFaults, AMillionRowsTakeNoMoreMemoryThanAFew) {
  OdbcClient client(connectionString());
  ASSERT_EQ(client.run(manyRows(6)), SQL_SUCCESS);
  std::int64_t before = 0;
  int rows = 0;
  for (; client.fetch() == SQL_SUCCESS; ++rows)
    if (rows == 100'000) before = residentKilobytes();
  EXPECT_EQ(rows, 1'000'000);
  RecordProperty("growth_kilobytes", static_cast<int>(residentKilobytes() - before));
  EXPECT_LT(residentKilobytes() - before, 16'000);
}

// Whatever its connections do: idle, in an endless statement, sending rows that nobody reads, waiting in the queue.
TEST_F(TdsFaults, TheServerEndsAtOnce) {
  OdbcClient idle(connectionString());
  OdbcClient reading(connectionString());
  OdbcClient counting(connectionString());
  ASSERT_EQ(reading.run(manyRows(12)), SQL_SUCCESS);
  std::thread endless([&] { counting.run("SELECT COUNT(*) FROM (" + manyRows(12) + ") AS t"); });
  std::this_thread::sleep_for(milliseconds(200));
  server_->switches().ignoreAttention = true;
  EXPECT_EQ(server_->openConnections(), 3u);
  const auto begin = std::chrono::steady_clock::now();
  server_->stop();
  EXPECT_LT(since(begin), milliseconds(100));
  endless.join();
  EXPECT_TRUE(counting.dead());
}

TEST_F(TdsFaults, ConnectionsDontDisturbEachOther) {
  std::vector<std::thread> threads;
  std::atomic<int> right = 0;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 3; ++round) {
        OdbcClient client(connectionString());
        if (client.run("SELECT N FROM D ORDER BY N") == SQL_SUCCESS && client.rows() == "0 1 2 3 4 5 6 7 8 9") ++right;
      }
    });
  }
  for (std::thread& each : threads) each.join();
  EXPECT_EQ(right, 12);
  EXPECT_EQ(server_->traffic().logins, 12);
}

}  // namespace
}  // namespace qrel

// Read by the address sanitizer at the start: freed memory that it holds back would look like memory that grows.
extern "C" const char* __asan_default_options();  // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __asan_default_options() {
  return "quarantine_size_mb=4";
}  // NOLINT(bugprone-reserved-identifier)
