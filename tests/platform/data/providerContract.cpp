#include "tests/platform/data/providerContract.h"

#include <chrono>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/error.h"

namespace qrel {

const char* const contractScript = R"sql(
CREATE TABLE Kinds (
  Id int NOT NULL PRIMARY KEY, Flag bit NULL, Tiny tinyint NULL, Small smallint NULL, Big bigint NULL,
  Amount decimal(18,4) NULL, Huge decimal(38,0) NULL, Price money NULL, Ratio float NULL, Born datetime NULL,
  Midnight datetime NULL, Exact datetime2 NULL, Mark uniqueidentifier NULL, Bytes varbinary(20) NULL,
  Name nvarchar(50) NULL, Code char(5) NULL, Doc nvarchar(max) NULL)
GO
INSERT INTO Kinds VALUES (1, 1, 255, -32768, 9223372036854775807, -12.5, 12345678901234567890123456789012345678, 1234.5,
  0.1, '2020-02-29 13:05:06.500', '20200229', '2020-02-29 13:05:06.1234567', '0123abcd-0000-0000-0000-00000000000a',
  0x0FFF00, N'O''Brien é中😀', 'ab', REPLICATE(CAST(N'0123456789' AS nvarchar(max)), 2000))
INSERT INTO Kinds (Id) VALUES (2)
GO
CREATE TABLE Numbers (N int NOT NULL PRIMARY KEY)
GO
INSERT INTO Numbers VALUES (1),(2),(3),(4),(5),(6),(7),(8),(9),(10),(11),(12)
GO
CREATE TABLE Nobody (N int NOT NULL)
)sql";

std::shared_ptr<Connection> ProviderContract::connect(const std::string& database) {
  auto connection = std::make_shared<Connection>(harness_->dataAccess());
  connection->ConnectionString = harness_->connectionString(database);
  connection->Open();
  return connection;
}

Recordset ProviderContract::open(const std::string& sql, int location, std::size_t cacheSize) {
  Command command;
  command.ActiveConnection = connect();
  command.CommandText = sql;
  Recordset rs;
  rs.CursorLocation = location;
  rs.CacheSize = cacheSize;
  rs.Open(command);
  return rs;
}

std::int32_t ProviderContract::queryError(const std::string& sql, int timeoutSeconds) {
  Command command;
  command.ActiveConnection = connect();
  command.CommandText = sql;
  command.CommandTimeout = timeoutSeconds;
  Recordset rs;
  try {
    rs.Open(command);
    while (!rs.Eof()) rs.MoveNext();
  } catch (const DataError& error) {
    EXPECT_EQ(error.sql, sql);
    EXPECT_FALSE(error.description.empty());
    return error.number;
  }
  return 0;
}

namespace {

TEST_P(ProviderContract, EveryTypeHasItsTextForm) {
  const std::vector<std::tuple<std::string, std::string, DataType, std::string>> columns = {
      {"Id", "int", DataType::Integer, "1"},
      {"Flag", "bit", DataType::Boolean, "True"},
      {"Tiny", "tinyint", DataType::Integer, "255"},
      {"Small", "smallint", DataType::Integer, "-32768"},
      {"Big", "bigint", DataType::Integer, "9223372036854775807"},
      {"Amount", "decimal", DataType::Decimal, "-12.5000"},
      {"Huge", "decimal", DataType::Decimal, "12345678901234567890123456789012345678"},
      {"Price", "money", DataType::Decimal, "1234.5000"},
      {"Ratio", "float", DataType::Double, "0.1"},
      {"Born", "datetime", DataType::Date, "2020-02-29 13:05:06.5"},
      {"Midnight", "datetime", DataType::Date, "2020-02-29"},
      {"Exact", "datetime2", DataType::Date, "2020-02-29 13:05:06.1234567"},
      {"Mark", "uniqueidentifier", DataType::Guid, "{0123ABCD-0000-0000-0000-00000000000A}"},
      {"Bytes", "varbinary", DataType::Binary, "0x0FFF00"},
      {"Name", "nvarchar", DataType::Text, "O'Brien é中😀"},
      {"Code", "char", DataType::Text, "ab   "}};
  Recordset rs = open("SELECT * FROM Kinds ORDER BY Id");
  ASSERT_EQ(rs.FieldCount(), columns.size() + 1);
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const auto& [name, typeName, type, text] = columns[i];
    EXPECT_EQ(rs.Column(i).name, name);
    EXPECT_EQ(rs.Column(i).typeName, typeName) << name;
    EXPECT_EQ(rs.Column(i).type, type) << name;
    EXPECT_EQ(rs.Fields(i).cell.type, type) << name;
    EXPECT_EQ(rs.Fields(i).Text(), text) << name;
  }
  EXPECT_EQ(rs.Column(5).precision, 18);
  EXPECT_EQ(rs.Column(5).scale, 4);
  const std::string document = rs.Fields("doc").Text();
  EXPECT_EQ(document.size(), 20'000u);
  EXPECT_EQ(document.substr(19'990), "0123456789");
  rs.MoveNext();
  for (std::size_t i = 1; i < rs.FieldCount(); ++i) EXPECT_TRUE(rs.Fields(i).IsNull()) << rs.Column(i).name;
}

TEST_P(ProviderContract, BothCursorsScrollAlike) {
  for (const auto& [location, cacheSize] :
       {std::pair<int, std::size_t>{adUseClient, 1}, {adUseServer, 1}, {adUseServer, 5}}) {
    Recordset rs = open("SELECT N FROM Numbers ORDER BY N DESC", location, cacheSize);
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(rs.RecordCount(), 12);
      for (int number = 12; number > 0; --number, rs.MoveNext()) {
        ASSERT_FALSE(rs.Eof());
        EXPECT_EQ(rs.Fields("n").Text(), std::to_string(number)) << location << " " << cacheSize;
      }
      EXPECT_TRUE(rs.Eof());
      rs.MoveFirst();
    }
    rs.MoveLast();
    EXPECT_EQ(rs.Fields(0).Text(), "1");
    rs.Find("N = 7", true);
    rs.Delete();
    EXPECT_EQ(rs.RecordCount(), 11);
    Recordset empty = open("SELECT N FROM Nobody", location, cacheSize);
    EXPECT_TRUE(empty.Bof() && empty.Eof());
    EXPECT_EQ(empty.RecordCount(), 0);
  }
}

// Rows are read after the connection's object is gone, and two record sets of one connection don't disturb each other.
TEST_P(ProviderContract, RecordSetsOutliveTheirConnection) {
  Recordset first;
  Recordset second;
  {
    Command command;
    command.ActiveConnection = connect();
    command.CommandText = "SELECT N FROM Numbers ORDER BY N";
    first.Open(command);
    command.CommandText = "SELECT N FROM Numbers ORDER BY N DESC";
    second.Open(command);
    command.ActiveConnection->Close();
  }
  for (int number = 1; number <= 12; ++number) {
    EXPECT_EQ(first.Fields(0).Text() + " " + second.Fields(0).Text(),
              std::to_string(number) + " " + std::to_string(13 - number));
    first.MoveNext();
    second.MoveNext();
  }
}

TEST_P(ProviderContract, ParametersGoInAndTheReturnValueComesBack) {
  const std::vector<std::tuple<int, Value, std::string>> cases = {
      {adInteger, Value::ofInteger(1), "SELECT Id FROM Kinds WHERE Id = ?"},
      {adVarWChar, Value::ofText("o'brien É中😀"), "SELECT Id FROM Kinds WHERE Name = ?"},
      {adDouble, Value::ofDouble(0.1), "SELECT Id FROM Kinds WHERE Ratio = ?"},
      {adBoolean, Value::ofBoolean(true), "SELECT Id FROM Kinds WHERE Flag = ?"}};
  for (const auto& [type, value, sql] : cases) {
    Command command;
    command.ActiveConnection = connect();
    command.CommandText = sql;
    command.Parameters.push_back({.Name = "Return", .Type = adInteger, .Direction = adParamReturnValue});
    command.Parameters.push_back({.Name = "p", .Type = type, .Direction = adParamInputOutput, .Value = value});
    Recordset rs;
    rs.Open(command);
    ASSERT_EQ(rs.State(), adStateOpen);
    ASSERT_FALSE(rs.Eof()) << sql;
    EXPECT_EQ(rs.Fields(0).Text(), "1");
    EXPECT_EQ(textOf(command.parameter("RETURN").Value.cell()), "0");
    EXPECT_EQ(textOf(command.parameter("p").Value.cell()), textOf(value.cell()));
  }
}

TEST_P(ProviderContract, ACommandWithoutAResultLeavesTheSetClosed) {
  Command command;
  command.ActiveConnection = connect();
  command.CommandText = "DECLARE @n int SET @n = 5";
  Recordset rs;
  rs.Open(command);
  EXPECT_EQ(rs.State(), adStateClosed);
  command.CommandText = "PRINT 'nothing'";
  command.Execute();
  EXPECT_TRUE(open("SELECT * FROM Nobody").Eof());
}

TEST_P(ProviderContract, ErrorsHaveTheirNumbers) {
  EXPECT_EQ(queryError("SELECT * FROM Missing"), errorNumber::invalidObjectName);
  EXPECT_EQ(queryError("SELECT * FROM [nobody's].[Numbers]"), errorNumber::invalidObjectName);
  EXPECT_EQ(queryError("SELEC * FROM Numbers"), errorNumber::badSql);
  EXPECT_EQ(queryError("SELECT Missing FROM Numbers"), errorNumber::badSql);
  EXPECT_EQ(queryError("SELECT N FROM Numbers WHERE"), errorNumber::badSql);
  try {
    connect("NoSuchDatabase");
    ADD_FAILURE() << "a missing database was opened";
  } catch (const DataError& error) {
    EXPECT_EQ(error.number, errorNumber::cannotConnect);
    EXPECT_NE(error.description.find("NoSuchDatabase"), std::string::npos) << error.description;
  }
}

// 12 to the power of 9 rows: nobody waits for that.
constexpr const char* endlessQuery =
    "SELECT COUNT(*) FROM Numbers a CROSS JOIN Numbers b CROSS JOIN Numbers c CROSS JOIN Numbers d CROSS JOIN Numbers "
    "e "
    "CROSS JOIN Numbers f CROSS JOIN Numbers g CROSS JOIN Numbers h CROSS JOIN Numbers i";

TEST_P(ProviderContract, ALongCommandTimesOut) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(queryError(endlessQuery, 1), errorNumber::timeout);
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_GE(elapsed, std::chrono::milliseconds(900));
  EXPECT_LT(elapsed, std::chrono::seconds(10));
  EXPECT_EQ(queryError("SELECT N FROM Numbers", 1), 0);
}

TEST_P(ProviderContract, AnotherThreadCanInterrupt) {
  Command command;
  command.ActiveConnection = connect();
  command.CommandText = endlessQuery;
  command.CommandTimeout = 60;
  std::thread other([connection = command.ActiveConnection] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    connection->Interrupt();
  });
  Recordset rs;
  EXPECT_THROW(rs.Open(command), DataError);
  other.join();
}

}  // namespace
}  // namespace qrel
