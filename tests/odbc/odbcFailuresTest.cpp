// What goes wrong on the road to a server: each is told with what to do, and no verdict rests on half of an answer.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "platform/error.h"
#include "tests/odbc/odbcServer.h"

namespace qrel {
namespace {

constexpr const char* rowsScript = R"sql(
CREATE TABLE Rows (N int NOT NULL PRIMARY KEY, Letters nvarchar(4000), Doc nvarchar(max))
GO
DECLARE @n int = 0
WHILE @n < 300 BEGIN
  SET @n = @n + 1
  INSERT INTO Rows VALUES (@n, REPLICATE(N'x', 1000), REPLICATE(N'y', 1000))
END
)sql";
constexpr const char* boundQuery = "SELECT N, Letters FROM Rows ORDER BY N";
constexpr const char* longQuery = "SELECT * FROM Rows ORDER BY N";
constexpr const char* neverEnding =
    "SELECT COUNT(*) FROM Rows a CROSS JOIN Rows b CROSS JOIN Rows c CROSS JOIN Rows d CROSS JOIN Rows e";

double secondsOf(const std::function<void()>& body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(OdbcFailures, AConnectionThatCannotBeHadSaysWhatToDo) {
  OdbcServer server("CREATE TABLE T (N int)");
  server.choices.loginSeconds = 1;
  const auto why = [&](const std::string& text) -> std::string {
    try {
      server.connect("Provider=SQLOLEDB.1;" + text);
    } catch (const DataError& error) {
      EXPECT_EQ(error.number, errorNumber::cannotConnect);
      EXPECT_EQ(error.description.find("s3cr;et"), std::string::npos) << error.description;
      return error.description;
    }
    return "connected";
  };
  const std::string at = "Data Source=" + server.name() + ";Encrypt=no;";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {at + "User ID=sa;Password=\"s3cr;et\"", "QREL_PASSWORD"},
      {at + "User ID=sa;Password=\"s3cr;et};\"", "FreeTDS can't take"},
      {at + "User ID=sa;Password=secret;Initial Catalog=Nowhere", "\"Nowhere\""},
      {at + "Integrated Security=SSPI", "kinit"},
      {"User ID=sa;Password=secret;Data Source=" + server.name(), "--trust-certificate"},
      {"User ID=sa;Password=secret;TrustServerCertificate=yes;Data Source=" + server.name(), "--encrypt no"},
      {"User ID=sa;Password=secret;Encrypt=strict;Data Source=" + server.name(), "Microsoft's driver 18"},
      {"User ID=sa;Password=secret;Encrypt=no;Data Source=no-such-host.invalid",
       "qrel load no-such-host.invalid/DATABASE FILE"},
      {"User ID=sa;Password=secret;Encrypt=no;Data Source=127.0.0.1,1", "firewall"},
      {"User ID=sa;Password=secret;Data Source=127.0.0.1,port", "a port from 1 to 65535"},
      {at + "User ID=sa;Password=secret;OdbcDriver=Nobody's", "\"FreeTDS\""},
      {at + "User ID=sa;Password=secret;OdbcDriver=/no/libtdsodbc.so", "can't be loaded"}};
  for (const auto& [text, words] : cases)
    EXPECT_NE(why(text).find(words), std::string::npos) << text << "\n" << why(text);
  server.choices.token = "token";
  EXPECT_NE(why(at + "Integrated Security=SSPI").find("QREL_TOKEN"), std::string::npos);
  for (const bool queueFull : {false, true}) {
    server.tds->switches().mute = !queueFull;
    if (queueFull) server.tds->fillQueue();
    const double seconds = secondsOf([&] {
      EXPECT_NE(why(at + "User ID=sa;Password=secret").find(queueFull ? "firewall" : "within 1 seconds"),
                std::string::npos);
    });
    EXPECT_LT(seconds, 4.0);
  }
  server.tds->takeAgain();
}

TEST(OdbcFailures, PasswordsOfAllLettersAreTaken) {
  for (const std::string password : {"a;b", "{", "ü中😀", "a}b", "x=y,z'\" \\", "{a}", "x;}"}) {
    OdbcServer server("CREATE TABLE T (N int)");
    server.tds =
        std::make_unique<tds::Server>(server.servers, tds::ServerOptions{.instance = "S", .password = password});
    EXPECT_NO_THROW(server.connect(
        server.connectionString("shop", "Password=" + ConnectionString::quoted(password) + ";User ID=sa")))
        << password;
  }
}

TEST(OdbcFailures, HalfAnAnswerIsNone) {
  OdbcServer server(rowsScript);
  for (const std::string sql : {boundQuery, longQuery}) {
    for (const int location : {adUseClient, adUseServer}) {
      for (const int rows : {0, 1, 150, 299}) {
        server.tds->switches().cutAfterRows = rows;
        const DataError error = server.failure(sql, location);
        EXPECT_EQ(error.number, errorNumber::cannotConnect) << rows;
        EXPECT_NE(error.description.find("was lost"), std::string::npos) << error.description;
      }
      server.tds->switches().cutAfterRows = -1;
      EXPECT_EQ(server.failure(sql, location).number, 0);
    }
  }
  server.tds->switches().countsFirst = 3;
  server.tds->switches().messageFirst = true;
  EXPECT_EQ(server.open(boundQuery).RecordCount(), 300);
}

TEST(OdbcFailures, TheServersNumbersBecomeThoseThatCallersTest) {
  OdbcServer server(rowsScript);
  const std::vector<std::tuple<int, int, std::int32_t, std::string>> cases = {
      {208, 16, errorNumber::invalidObjectName, "told"},
      {102, 15, errorNumber::badSql, "told"},
      {207, 16, errorNumber::badSql, "told"},
      {229, 14, errorNumber::permissionDenied, "VIEW DEFINITION"},
      {1205, 13, errorNumber::cannotConnect, "deadlock"},
      {1222, 16, errorNumber::timeout, "told"},
      {823, 24, errorNumber::cannotConnect, "told"}};
  for (const auto& [number, severity, expected, words] : cases) {
    server.tds->switches().failNext({number, "told", static_cast<std::uint8_t>(severity)});
    const DataError error = server.failure(boundQuery);
    EXPECT_EQ(error.number, expected) << number;
    EXPECT_NE(error.description.find(words), std::string::npos) << error.description;
    EXPECT_EQ(server.failure(boundQuery).number, 0) << "after " << number;
  }
}

// A server that says nothing, and one that doesn't even hear that it should stop.
TEST(OdbcFailures, TimeOutsAndStopsEndWhatRuns) {
  OdbcServer server(rowsScript);
  for (const bool deaf : {false, true}) {
    server.tds->switches().ignoreAttention = deaf;
    double seconds =
        secondsOf([&] { EXPECT_EQ(server.failure(neverEnding, adUseClient, 1).number, errorNumber::timeout); });
    EXPECT_GE(seconds, 0.9);
    EXPECT_LT(seconds, 6.0);
    int asked = 0;
    const auto here = std::this_thread::get_id();
    server.data.stopAsked = [&] {
      EXPECT_EQ(std::this_thread::get_id(), here);
      return ++asked > 20;
    };
    seconds =
        secondsOf([&] { EXPECT_EQ(server.failure(neverEnding, adUseClient, 30).number, errorNumber::cancelled); });
    EXPECT_LT(seconds, 6.0);
    server.data.stopAsked = {};
    server.tds->switches().ignoreAttention = false;
    EXPECT_EQ(server.failure(boundQuery).number, 0);
  }
}

}  // namespace
}  // namespace qrel
