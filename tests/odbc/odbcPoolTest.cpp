// Connections are kept for a while: with fewer journeys the same is asked, and nobody is given a dead one.
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "platform/error.h"
#include "tests/odbc/odbcServer.h"

namespace qrel {
namespace {

constexpr const char* numbersScript =
    "CREATE TABLE Numbers (N int NOT NULL)\nGO\nINSERT INTO Numbers VALUES (1),(2),(3)";
constexpr const char* query = "SELECT N FROM Numbers";

std::size_t openFiles() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& each : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
  return count;
}

TEST(OdbcPool, OneConnectionServesManyQueries) {
  OdbcServer server(numbersScript);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(server.open(query, i % 2 == 0 ? adUseClient : adUseServer).RecordCount(), 3);
  EXPECT_EQ(server.tds->traffic().connections, 1);
  EXPECT_EQ(server.tds->traffic().roundTrips, 22);
  for (const tds::Request& request : server.tds->traffic().requests()) EXPECT_EQ(request.text, query);
  // What a command may have left behind meets nobody else.
  server.failure("SET NOCOUNT ON");
  server.failure(query);
  EXPECT_EQ(server.tds->traffic().connections, 2);
  // Another database, another login.
  EXPECT_THROW(server.connect(server.connectionString("shop", "Password=wrong;User ID=sa")), DataError);
  server.connect(server.connectionString("master"));
  EXPECT_EQ(server.tds->traffic().logins, 3);
}

TEST(OdbcPool, RowsThatNobodyReadsOnLetGoOfTheirConnection) {
  std::string script =
      "CREATE TABLE Many (N int NOT NULL, Letters nvarchar(4000))\nGO\nDECLARE @n int = 0\nWHILE @n < 1500 BEGIN\n"
      "SET @n = @n + 1 INSERT INTO Many VALUES (@n, REPLICATE(N'x', 3000))\nEND";
  OdbcServer server(script);
  const std::string sql = "SELECT * FROM Many ORDER BY N";
  {
    Command command;
    command.ActiveConnection = server.connect();
    command.CommandText = sql;
    Recordset first, second;
    first.CursorLocation = second.CursorLocation = adUseServer;
    first.CacheSize = second.CacheSize = 5;
    first.Open(command);
    second.Open(command);  // beside the first one, whose rows are still to come
    EXPECT_EQ(server.tds->traffic().connections, 2);
    EXPECT_EQ(first.RecordCount(), 1500);
    for (int i = 0; i < 800; ++i) first.MoveNext();
    EXPECT_EQ(first.Fields(0).Text() + second.Fields(0).Text(), "8011");
    first.MoveFirst();
    EXPECT_EQ(first.Fields(0).Text(), "1");
  }
  const auto before = server.tds->traffic().connections.load();
  EXPECT_EQ(server.open(sql).RecordCount(), 1500);
  EXPECT_EQ(server.tds->traffic().connections, before);
}

TEST(OdbcPool, ADeadConnectionIsFoundBeforeItIsUsed) {
  OdbcServer server(numbersScript);
  for (const int waiting : {0, 1100}) {
    server.failure(query);
    std::this_thread::sleep_for(std::chrono::milliseconds(waiting));
    server.tds->dropConnections();
    EXPECT_EQ(server.failure(query).number, 0) << waiting;
    EXPECT_EQ(server.failure("IF 1 = 1 SELECT 1").number, 0);
  }
  // Kept for a second at most.
  server.choices.keepSeconds = 1;
  server.open(query);
  std::this_thread::sleep_for(std::chrono::milliseconds(1300));
  EXPECT_EQ(server.tds->openConnections(), 0u);
  // A line that is lost is told; the connection's next command has a new one.
  auto connection = server.connect();
  server.tds->switches().cutAfterRows = 1;
  Command command;
  command.ActiveConnection = connection;
  command.CommandText = query;
  Recordset rs;
  EXPECT_THROW(rs.Open(command), DataError);
  server.tds->switches().cutAfterRows = -1;
  rs.Open(command);
  EXPECT_EQ(rs.RecordCount(), 3);
}

TEST(OdbcPool, NothingIsLeftOfConnections) {
  OdbcServer server(numbersScript);
  server.choices.keepSeconds = 0;
  server.failure(query);
  const std::size_t before = openFiles();
  for (int i = 0; i < 200; ++i) {
    if (i % 3 == 0) server.failure("SELECT * FROM Missing");
    server.failure(query, adUseServer);
  }
  EXPECT_LE(openFiles(), before + 4);  // the server's ends close a little later
  EXPECT_EQ(server.tds->traffic().connections, 1 + 200 + 67);
}

}  // namespace
}  // namespace qrel
